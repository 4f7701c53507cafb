// SPDX-License-Identifier: Apache-2.0
// How a command ends.
#pragma once

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace qvfx {

enum class Exit { Done = 0, Usage = 2, Input = 3, Output = 4, Effect = 5 };

/// Ends the command; the text is the one line that the user sees.
class Failure : public std::runtime_error {
 public:
  Failure(Exit exit, const std::string& text) : std::runtime_error(text), mExit(exit) {}
  Exit Code() const { return mExit; }

 private:
  Exit mExit;
};

/// Runs a stage of the command; whatever a library throws in it becomes the stage's failure.
template <class Function>
auto InStage(Exit exit, const std::string& name, Function function) {
  try {
    return function();
  } catch (const Failure&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw Failure(exit, name + ": out of memory");
  } catch (const std::exception& error) {
    throw Failure(exit, name + ": " + error.what());
  }
}

}  // namespace qvfx
