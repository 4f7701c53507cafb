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

/// Above and below the image its first and last row go on, without transparency; they are kept once
/// each. So a window takes no more rows than the image has, but for two.
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
        mSlots(std::clamp<int64_t>(rows, 1, MostRows())),
        mRows(mStride * mSlots) {}

  /// How many of the rows y to `last` are the same row.
  int64_t Repeats(int64_t y, int64_t last) const {
    if (y >= mSource.bounds.bottom) return last - y + 1;
    return std::clamp<int64_t>(mSource.bounds.top - y, 1, last - y + 1);
  }

  /// Row y. Rows are asked for from top to bottom; one stays until the window has left it.
  const T* Row(int64_t y) {
    const int64_t row = std::clamp<int64_t>(y, First(), int64_t{mSource.bounds.bottom});
    if (mIsFresh) mNext = row;
    mIsFresh = false;
    for (; mNext <= row; mNext++) {
      Read(VRect::Held(mNext), Slot(mNext));
    }
    return Slot(row);
  }

 private:
  // What lies beside the image goes on with the colours at the row's ends, and transparency 0. A
  // row that is kept as it is is read as far as the image goes and put in its place at once; all
  // else is up to the accessor.
  void Read(int row, T* to) {
    const VRect inside = mSource.RowToRect(row, mLeft, mWidth).Intersect(mSource.bounds);
    const bool isWhole = mMake || inside.IsEmpty();
    const int first = isWhole ? mLeft : inside.left;
    const int pixels = isWhole ? mWidth : inside.right - inside.left;
    const void* samples = Required(mSource.ReadRow(row, first, pixels), mWhere);
    if (mMake) return mMake(samples, to);

    const ptrdiff_t planes = mSource.colBytes / static_cast<ptrdiff_t>(sizeof(T));
    const ptrdiff_t colors = mSource.colorBytes / static_cast<ptrdiff_t>(sizeof(T));
    T* const begin = to + (first - mLeft) * planes;
    T* const end = begin + pixels * planes;
    std::memcpy(begin, samples, pixels * planes * sizeof(T));
    const auto extend = [&](T* pixel, const T* from) {
      for (ptrdiff_t c = 0; c < planes; c++) pixel[c] = c < colors ? from[c] : T{0};
    };
    for (T* pixel = to; pixel < begin; pixel += planes) extend(pixel, begin);
    for (T* pixel = end; pixel < to + mSamples; pixel += planes) extend(pixel, end - planes);
  }

  static int InRange(int64_t value, Where where) {
    if (VRect::Held(value) != value) Fail(kQVStatusBadArgument, where);
    return static_cast<int>(value);
  }
  // The row above the image stands for all there, as the one below it does.
  int64_t First() const { return int64_t{mSource.bounds.top} - 1; }
  int64_t MostRows() const { return mSource.bounds.bottom - First() + 1; }
  T* Slot(int64_t row) { return mRows.Get() + (row - First()) % mSlots * mStride; }

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
