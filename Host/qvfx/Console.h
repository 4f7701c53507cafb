// SPDX-License-Identifier: Apache-2.0
// What goes to standard error.
#pragma once

#include <string>
#include <string_view>

#include "Error.h"

namespace qvfx {

struct Console {
  bool quiet = false;    // no warnings, no progress
  bool verbose = false;  // failures of effects name the source line
};

/// Writes "qvfx: text" as one line, whatever the text holds.
void PrintLine(std::string text);

/// Tells of something that doesn't stop the command.
void Warn(const Console& console, const std::string& text);

/// Keeps standard error shut for as long as it lives: some image libraries write there themselves
/// what they also report.
class SilentStandardError {
 public:
  SilentStandardError();
  ~SilentStandardError();
  SilentStandardError(const SilentStandardError&) = delete;
  SilentStandardError& operator=(const SilentStandardError&) = delete;
};

/// Lives while a library may end the process, as a JPEG encoder does: then a line is printed and
/// the process ends with the exit code. One at a time.
class ExitGuard {
 public:
  ExitGuard(Exit exit, const std::string& text);
  ~ExitGuard();
  ExitGuard(const ExitGuard&) = delete;
  ExitGuard& operator=(const ExitGuard&) = delete;
};

/// A bar on standard error while it is a terminal; gone when the object goes.
class Progress {
 public:
  Progress(const Console& console, std::size_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Step(std::string_view name);

 private:
  bool mVisible;
  std::size_t mTotal;
  std::size_t mStep = 0;
};

}  // namespace qvfx
