// SPDX-License-Identifier: Apache-2.0
#include "OutputFile.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "Error.h"

namespace qvfx {
namespace {

namespace fs = std::filesystem;

constexpr int kEndingSignals[] = {SIGHUP, SIGINT, SIGTERM};

// For the signal handler, which may not look at anything that isn't there yet.
char gTemporaryName[4096];

extern "C" void RemoveAndEnd(int signal) {
  unlink(gTemporaryName);
  raise(signal);  // the action is the default one again
}

[[noreturn]] void FailWriting(const std::string& path, int error) {
  throw Failure(Exit::Output, path + ": can't be written: " + std::strerror(error));
}

// A new file beside the target, gone with the object unless it is moved to its place.
class TemporaryFile {
 public:
  /// @param name the target as messages call it.
  TemporaryFile(const fs::path& target, const std::string& name) : mTarget(target), mName(name) {
    for (int attempt = 0; mFile < 0; ++attempt) {
      const std::string own =
          ".qvfx-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
      mTemporary = (target.parent_path() / own).string();
      if (mTemporary.size() >= sizeof gTemporaryName) FailWriting(name, ENAMETOOLONG);
      mFile = open(mTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (mFile < 0 && errno != EEXIST) FailWriting(name, errno);
    }
    std::memcpy(gTemporaryName, mTemporary.c_str(), mTemporary.size() + 1);
    HandleSignals(true);
  }

  ~TemporaryFile() {
    if (mFile >= 0) close(mFile);
    if (!mMoved) unlink(mTemporary.c_str());
    HandleSignals(false);
  }

  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  void Write(std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
      const ssize_t count = write(mFile, bytes.data(), bytes.size());
      if (count < 0 && errno != EINTR) FailWriting(mName, errno);
      bytes = bytes.subspan(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
  }

  // Some file systems report a full disk only now.
  void MoveToTarget() {
    if (fsync(mFile) != 0 && errno != EINVAL) FailWriting(mName, errno);
    if (close(std::exchange(mFile, -1)) != 0) FailWriting(mName, errno);
    if (std::rename(mTemporary.c_str(), mTarget.c_str()) != 0) FailWriting(mName, errno);
    mMoved = true;
  }

 private:
  static void HandleSignals(bool on) {
    struct sigaction action = {};
    for (const int signal : kEndingSignals) {
      sigaction(signal, nullptr, &action);
      const auto from = on ? SIG_DFL : RemoveAndEnd;
      if (action.sa_handler != from) continue;  // one that the caller ignores stays ignored
      action.sa_handler = on ? RemoveAndEnd : SIG_DFL;
      action.sa_flags = static_cast<int>(SA_RESETHAND);
      sigaction(signal, &action, nullptr);
    }
  }

  fs::path mTarget;
  std::string mName;
  std::string mTemporary;
  int mFile = -1;
  bool mMoved = false;
};

// Where the bytes go: behind links, and only to what is or can be a plain file.
fs::path ResolveTarget(const std::string& path) {
  std::error_code error;
  const fs::path target = fs::weakly_canonical(fs::absolute(path), error);
  if (error) FailWriting(path, error.value());
  const auto status = fs::status(target, error);
  if (fs::is_directory(status)) throw Failure(Exit::Output, path + ": is a directory");
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    throw Failure(Exit::Output, path + ": isn't a regular file");
  }
  return target;
}

}  // namespace

void WriteFile(const std::string& path, std::span<const unsigned char> bytes) {
  TemporaryFile file(ResolveTarget(path), path);
  file.Write(bytes);
  file.MoveToTarget();
}

}  // namespace qvfx
