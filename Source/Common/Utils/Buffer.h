// SPDX-License-Identifier: Apache-2.0
// Working storage of an effect.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace qv {

/// Samples, 0 at first, from the start of a cache line; std::bad_alloc when they can't be had.
template <class T>
class Buffer {
 public:
  explicit Buffer(int64_t count) {
    constexpr int64_t kMost = std::numeric_limits<ptrdiff_t>::max() / sizeof(T);
    if (count < 0 || count > kMost) throw std::bad_alloc();
    const size_t bytes = static_cast<size_t>(count) * sizeof(T);
    mSamples = static_cast<T*>(::operator new(bytes, kLine));
    std::memset(static_cast<void*>(mSamples), 0, bytes);
  }
  ~Buffer() { ::operator delete(mSamples, kLine); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  T* Get() { return mSamples; }
  const T* Get() const { return mSamples; }

 private:
  static constexpr std::align_val_t kLine{64};
  T* mSamples;
};

}  // namespace qv
