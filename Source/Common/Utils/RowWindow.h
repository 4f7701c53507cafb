// SPDX-License-Identifier: Apache-2.0
// The rows of an image that a neighbourhood covers on its way down: each is read once and kept as
// long as it's needed, so that the image may be written behind the neighbourhood.
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>

#include "Buffer.h"
#include "Failure.h"
#include "QVImageAccess.h"

namespace qv {

/// Makes a row of the window from the image's pixels.
template <class T>
using MakeRow = std::function<void(const void* pixels, T* row)>;

/// Above and below the image its first and last row go on; they are kept once. So a window takes at
/// most the memory of the image, however high it is.
template <class T>
class RowWindow {
 public:
  /// Samples that may be read past the end of a row: whole vectors needn't stop short of it.
  static constexpr int kSlack = 64;

  /// Rows as they are.
  /// @param image pixels of samples of type T, packed.
  /// @param left  where each row starts, inside the image or not.
  /// @param width pixels of a row.
  /// @param rows  how many rows the window covers.
  /// @param where what a row that can't be had is logged as.
  RowWindow(__QVImage* image, int64_t left, int64_t width, int64_t rows, Where where)
      : RowWindow(image, left, width, rows, where, width * QVImageGetNumPlanes(image), nullptr) {}

  /// Rows of so many `samples` that `make` makes of the image's.
  RowWindow(__QVImage* image, int64_t left, int64_t width, int64_t rows, Where where,
            int64_t samples, MakeRow<T> make)
      : mSource(image, nullptr),
        mWhere(where),
        mMake(std::move(make)),
        mLeft(InRange(left, where)),
        mWidth(InRange(width, where)),
        mSamples(samples),
        mStride((mSamples + kSlack + 63) / 64 * 64),
        mSlots(std::clamp<int64_t>(rows, 1, std::max(Height(), int64_t{1}))),
        mRows(mStride * mSlots) {}

  /// How many of the rows y to `last` are the same row.
  int64_t Repeats(int64_t y, int64_t last) const {
    const int64_t end = int64_t{mSource.bounds.bottom} - 1;
    if (y >= end) return last - y + 1;
    return std::clamp<int64_t>(mSource.bounds.top - y + 1, 1, last - y + 1);
  }

  /// Row y. Rows are asked for from top to bottom; one stays until the window has left it.
  const T* Row(int64_t y) {
    const int64_t last = int64_t{mSource.bounds.bottom} - 1;
    const int64_t row = std::max<int64_t>(std::min(y, last), mSource.bounds.top);
    if (mIsFresh) mNext = row;
    mIsFresh = false;
    for (; mNext <= row; mNext++) {
      const void* pixels =
          Required(mSource.ReadRow(static_cast<int>(mNext), mLeft, mWidth), mWhere);
      if (mMake) {
        mMake(pixels, Slot(mNext));
      } else {
        std::memcpy(Slot(mNext), pixels, mSamples * sizeof(T));
      }
    }
    return Slot(row);
  }

 private:
  static int InRange(int64_t value, Where where) {
    if (VRect::Held(value) != value) Fail(kQVStatusBadArgument, where);
    return static_cast<int>(value);
  }
  int64_t Height() const { return int64_t{mSource.bounds.bottom} - mSource.bounds.top; }
  T* Slot(int64_t row) { return mRows.Get() + (row - mSource.bounds.top) % mSlots * mStride; }

  QVImageAccess mSource;
  Where mWhere;
  MakeRow<T> mMake;
  int mLeft, mWidth;
  int64_t mSamples, mStride, mSlots;
  Buffer<T> mRows;
  bool mIsFresh = true;
  int64_t mNext = 0;  // the row that is read next
};

}  // namespace qv
