// SPDX-License-Identifier: Apache-2.0
#include "Console.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace qvfx {
namespace {

constexpr std::size_t kBarWidth = 24;
constexpr char kClearLine[] = "\r\033[K";

bool IsControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }

// Standard error while it is shut, else -1.
int gSavedError = -1;

// What to end with if the process exits now; 0 for nothing.
int gGuardCode = 0;
std::string gGuardText;

void RestoreStandardError() {
  if (gSavedError < 0) return;
  dup2(gSavedError, STDERR_FILENO);
  close(std::exchange(gSavedError, -1));
}

void EndGuarded() {
  if (gGuardCode == 0) return;
  RestoreStandardError();
  PrintLine(gGuardText);
  _exit(gGuardCode);
}

}  // namespace

void PrintLine(std::string text) {
  while (!text.empty() && IsControl(text.back())) text.pop_back();
  for (char& c : text) {
    if (IsControl(c)) c = ' ';
  }
  std::fprintf(stderr, "qvfx: %s\n", text.c_str());
}

void Warn(const Console& console, const std::string& text) {
  if (!console.quiet) PrintLine(text);
}

SilentStandardError::SilentStandardError() {
  gSavedError = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (gSavedError >= 0 && nowhere >= 0) dup2(nowhere, STDERR_FILENO);
  if (nowhere >= 0) close(nowhere);
}

SilentStandardError::~SilentStandardError() { RestoreStandardError(); }

ExitGuard::ExitGuard(Exit exit, const std::string& text) {
  [[maybe_unused]] static const int registered = std::atexit(EndGuarded);
  gGuardCode = static_cast<int>(exit);
  gGuardText = text;
}

ExitGuard::~ExitGuard() { gGuardCode = 0; }

Progress::Progress(const Console& console, std::size_t total)
    : mVisible(!console.quiet && total > 0 && isatty(STDERR_FILENO) == 1), mTotal(total) {}

Progress::~Progress() {
  if (mVisible) std::fputs(kClearLine, stderr);
}

void Progress::Step(std::string_view name) {
  ++mStep;
  if (!mVisible) return;
  const std::size_t filled = (mStep - 1) * kBarWidth / mTotal;
  const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
  std::fprintf(stderr, "%s[%s] %zu/%zu %.*s", kClearLine, bar.c_str(), mStep, mTotal,
               static_cast<int>(name.size()), name.data());
  std::fflush(stderr);
}

}  // namespace qvfx
