// SPDX-License-Identifier: Apache-2.0
// Working storage of an effect.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

namespace qv {

/// Samples, 0 at first, from the start of a cache line; std::bad_alloc when they can't be had.
template <class T>
class Buffer {
 public:
  explicit Buffer(int64_t count) {
    constexpr int64_t kMost = std::numeric_limits<ptrdiff_t>::max() / sizeof(T) - kLine;
    if (count < 0 || count > kMost) throw std::bad_alloc();
    size_t bytes = static_cast<size_t>(count) * sizeof(T) + kLine;
    // The system gives large blocks cleared, page by page as they are used.
    mBlock = std::calloc(bytes, 1);
    if (!mBlock) throw std::bad_alloc();
    void* start = mBlock;
    mSamples = static_cast<T*>(std::align(kLine, bytes - kLine, start, bytes));
  }
  ~Buffer() { std::free(mBlock); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  T* Get() { return mSamples; }
  const T* Get() const { return mSamples; }

 private:
  static constexpr size_t kLine = 64;
  void* mBlock;
  T* mSamples;
};

}  // namespace qv
