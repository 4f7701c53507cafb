// SPDX-License-Identifier: Apache-2.0
// The rows of an image that a neighbourhood covers on its way down: each is read once and kept as
// long as it's needed, so that the image may be written behind the neighbourhood.
#pragma once

#include <algorithm>

#include "Buffer.h"
#include "Failure.h"
#include "QVImageAccess.h"

namespace qv {

/// Above and below the image its first and last row go on; they are kept once. So a window takes at
/// most the memory of the image, however high it is.
template <class T>
class RowWindow {
 public:
  /// Samples that may be read past the end of a row: whole vectors needn't stop short of it.
  static constexpr int kSlack = 64;

  /// @param image pixels of `planes` samples of type T, packed.
  /// @param left  where each row starts, inside the image or not.
  /// @param width pixels of a row.
  /// @param rows  how many rows the window covers.
  /// @param where what a row that can't be had is logged as.
  RowWindow(__QVImage* image, int64_t left, int64_t width, int64_t rows, Where where)
      : mSource(image, nullptr),
        mWhere(where),
        mLeft(VRect::Held(left)),
        mWidth(VRect::Held(width)),
        mSamples(int64_t{mWidth} * QVImageGetNumPlanes(image)),
        mStride((mSamples + kSlack + 63) / 64 * 64),
        mSlots(std::clamp<int64_t>(rows, 1, std::max(Height(), int64_t{1}))),
        mRows(mStride * mSlots) {
    if (mLeft != left || mWidth != width) Fail(kQVStatusBadArgument, where);
  }

  /// Row y. Rows are asked for from top to bottom; one stays until the window has left it.
  const T* Row(int64_t y) {
    const int64_t last = int64_t{mSource.bounds.bottom} - 1;
    const int64_t row = std::max<int64_t>(std::min(y, last), mSource.bounds.top);
    if (mIsFresh) mNext = row;
    mIsFresh = false;
    for (; mNext <= row; mNext++) {
      Read(static_cast<int>(mNext), Slot(mNext));
    }
    return Slot(row);
  }

 private:
  // The row goes on with the colours at its ends, and transparency 0. It is read as far as the
  // image goes and put in its place at once; where it lies wholly beside, that is up to the
  // accessor.
  void Read(int row, T* to) {
    const int64_t right = int64_t{mLeft} + mWidth;
    int64_t first = std::max(mLeft, mSource.bounds.left);
    int64_t end = std::min<int64_t>(right, mSource.bounds.right);
    if (first >= end) {
      first = mLeft;
      end = right;
    }
    const void* samples =
        mSource.ReadRow(row, static_cast<int>(first), static_cast<int>(end - first));
    const ptrdiff_t planes = mSource.colBytes / static_cast<ptrdiff_t>(sizeof(T));
    const ptrdiff_t colors = mSource.colorBytes / static_cast<ptrdiff_t>(sizeof(T));
    T* const begin = to + (first - mLeft) * planes;
    T* const last = to + (end - 1 - mLeft) * planes;
    std::memcpy(begin, Required(samples, mWhere), (end - first) * planes * sizeof(T));
    const auto extend = [&](T* pixel, const T* from) {
      for (ptrdiff_t c = 0; c < planes; c++) pixel[c] = c < colors ? from[c] : T{0};
    };
    for (T* pixel = to; pixel < begin; pixel += planes) extend(pixel, begin);
    for (T* pixel = last + planes; pixel < to + mSamples; pixel += planes) extend(pixel, last);
  }

  int64_t Height() const { return int64_t{mSource.bounds.bottom} - mSource.bounds.top; }
  T* Slot(int64_t row) { return mRows.Get() + (row - mSource.bounds.top) % mSlots * mStride; }

  QVImageAccess mSource;
  Where mWhere;
  int mLeft, mWidth;
  int64_t mSamples, mStride, mSlots;
  Buffer<T> mRows;
  bool mIsFresh = true;
  int64_t mNext = 0;  // the row that is read next
};

}  // namespace qv
