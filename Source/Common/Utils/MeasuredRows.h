// SPDX-License-Identifier: Apache-2.0
// The rows of a rectangle that is measured, of which a host may ask anything.
#pragma once

#include <algorithm>
#include <cstdint>

#include "Failure.h"
#include "QVImageAccess.h"

namespace qv {

/// Below this doubles hold every integer: sums of integers don't depend on their order.
inline constexpr double kExactIntegers = 9007199254740992.0;

/// The part of a rectangle that counts: pixels outside an image with transparency don't, as they
/// have none. Where they do count they are few enough for a call to end soon, or can't be had.
inline VRect MeasuredRect(__QVImage* image, QVRect qvRect, Where where) {
  constexpr int64_t kMostOutside = int64_t{1} << 26;
  const auto pixels = [](const VRect& rect) {
    return int64_t{rect.right - rect.left} * (int64_t{rect.bottom} - rect.top);
  };
  const VRect rect = MakeVRect(qvRect);
  const VRect inside = rect.Intersect(MakeVRect(QVImageGetBounds(image)));
  if (QVImageGetTransparency(image) > 0) return inside;
  if (pixels(rect) - pixels(inside) > kMostOutside) Fail(kQVStatusBadArgument, where);
  return rect;
}

/// Rows from top to bottom. Above and below an image without transparency its first and last row go
/// on; they are read once.
class MeasuredRows {
 public:
  /// @param left,width pixels of each row.
  MeasuredRows(__QVImage* image, int left, int width)
      : mImage(image, nullptr),
        mLeft(left),
        mWidth(width),
        mGoesOn(image && QVImageGetTransparency(image) == 0 && !mImage.bounds.IsEmpty()) {}

  /// Row y, valid until the next call; null when it can't be had.
  const void* Row(int y) {
    if (mGoesOn) y = std::clamp(y, mImage.bounds.top, mImage.bounds.bottom - 1);
    if (!mSamples || y != mRow) mSamples = mImage.ReadRow(y, mLeft, mWidth);
    mRow = y;
    return mSamples;
  }

 private:
  QVImageAccess mImage;
  int mLeft, mWidth;
  bool mGoesOn;
  int mRow = 0;
  const void* mSamples = nullptr;
};

}  // namespace qv
