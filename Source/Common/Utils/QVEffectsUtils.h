// SPDX-License-Identifier: Apache-2.0
// What effects do with whole images: intermediate images and copies.
#pragma once

#include <QVCore9/QVCore9.h>

#include <utility>

#include "VRect.h"

/// An image of the model's depth, planes, colour space and transparency, data source 1; samples
/// undefined.
/// @param result receives it with one reference.
/// @param rect   its bounds; null takes the model's.
/// @return the status of QVImageCreateWithParams2().
QVEFFECTS_API int CreateImageNoCopy(__QVImage* model, __QVImage** result, const QVRect* rect);

/// Copies a rectangle of src to where `offset` moves it in dst. A copy of an image onto itself in
/// place does nothing; other overlaps within one image aren't handled.
/// @return 0; kQVStatusUnsupported for images that differ in bytes a pixel; kQVStatusBadArgument
/// for
///         null or a rectangle that can't be had.
QVEFFECTS_API int CopyImage(__QVImage* src, __QVImage* dst, VRect rect, QVPoint offset);

namespace qv {

/// Holds one reference to an image and drops it on every path.
class ImageRef {
 public:
  ImageRef() = default;
  ImageRef(ImageRef&& other) noexcept : mImage(std::exchange(other.mImage, nullptr)) {}
  ImageRef& operator=(ImageRef&& other) noexcept {
    std::swap(mImage, other.mImage);
    return *this;
  }
  ~ImageRef() { Release(); }

  operator __QVImage*() const { return mImage; }

  /// For a function that hands out an image with one reference; the image held goes first.
  __QVImage** Receive() {
    Release();
    return &mImage;
  }

  /// The image and its reference, for someone else to hold.
  __QVImage* Detach() { return std::exchange(mImage, nullptr); }

 private:
  void Release() {
    if (mImage) QVImageRelease(std::exchange(mImage, nullptr));
  }

  __QVImage* mImage = nullptr;
};

}  // namespace qv
