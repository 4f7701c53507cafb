// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string>

namespace qvfx {

/// A file in memory that a library can write to by its name.
class MemoryFile {
 public:
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string Path() const;

  /// What was written, valid as long as the object; throws when a limit on file sizes cut it off,
  /// the one thing that makes a write to it fail.
  std::span<const unsigned char> Bytes() const;

 private:
  int mFile;
  mutable std::span<unsigned char> mMapped;
};

}  // namespace qvfx
