// SPDX-License-Identifier: Apache-2.0
#include "MemoryFile.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace qvfx {
namespace {

// How far before the limit a file may end whose next write failed: no encoder's buffer is larger.
constexpr rlim_t kLargestWrite = 1 << 16;

[[noreturn]] void Fail(int error) { throw std::system_error(error, std::generic_category()); }

bool IsAtLimit(std::size_t size) {
  rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  return limit.rlim_cur != RLIM_INFINITY && size + kLargestWrite > limit.rlim_cur;
}

}  // namespace

MemoryFile::MemoryFile() : mFile(memfd_create("qvfx", MFD_CLOEXEC)) {
  if (mFile < 0) Fail(errno);
}

MemoryFile::~MemoryFile() {
  if (!mMapped.empty()) munmap(mMapped.data(), mMapped.size());
  close(mFile);
}

std::string MemoryFile::Path() const { return "/proc/self/fd/" + std::to_string(mFile); }

std::span<const unsigned char> MemoryFile::Bytes() const {
  struct stat status = {};
  if (fstat(mFile, &status) != 0) Fail(errno);
  const auto size = static_cast<std::size_t>(status.st_size);
  if (IsAtLimit(size)) Fail(EFBIG);
  void* const address = mmap(nullptr, size, PROT_READ, MAP_SHARED, mFile, 0);
  if (address == MAP_FAILED) Fail(errno);
  mMapped = {static_cast<unsigned char*>(address), size};
  return mMapped;
}

}  // namespace qvfx
