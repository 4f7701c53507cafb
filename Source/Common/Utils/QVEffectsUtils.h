// SPDX-License-Identifier: Apache-2.0
// What effects do with whole images: intermediate images, copies, and brightness on its own.
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

/// The depth of a gray image.
enum GrayFormat { kGrayAsSource = 0, kGray8 = 1, kGray16 = 2, kGray32 = 4 };

/// How much each component counts.
enum GrayMethod { kGrayLuma = 0, kGrayMean = 1 };

/// Makes a gray image of a part of an RGB image: one plane, no transparency, data source 1. Around
/// the source it goes on with the colours at its edges. Integer samples are rounded to nearest and
/// held to the range.
/// @param source three colour planes at least; the first three are read.
/// @param result receives the image with one reference, or null on failure.
/// @param rect   its bounds.
/// @param format see GrayFormat.
/// @param method see GrayMethod.
/// @return 0; kQVStatusBadArgument for another method, null or a row that can't be had;
///         kQVStatusUnsupported for another format or an image that isn't RGB, has fewer than three
///         colour planes or isn't of 8, 16 or 32 bits; the status of QVImageCreateWithParams2().
QVEFFECTS_API int CreateGrayScaleImage(__QVImage* source, __QVImage*& result, VRect rect,
                                       int format, int method);

/// Gives each pixel the brightness of a gray image and the chroma of source. A component that
/// leaves 0 to 1 is held there, which shifts the hue; integers are rounded to nearest. Planes after
/// the third, transparency among them, are those of source.
/// @param source,destination the same depth and planes, three colour planes at least; may be the
///                           same image.
/// @param luminosity         one plane of the same depth.
/// @param rect               what to work on; outside source and luminosity their edges go on, what
///                           falls outside destination is dropped.
/// @return 0; kQVStatusUnsupported for images that aren't so; kQVStatusBadArgument for null or a
///         row that can't be had.
QVEFFECTS_API int ApplyLuminosity(__QVImage* source, __QVImage* destination, __QVImage* luminosity,
                                  VRect rect);

namespace qv {

/// What takes the place of an effect that does nothing: pixel (x, y) of the rectangle goes to
/// (x - offset.x, y - offset.y) of dst, where the effect would have put it.
/// @return as CopyImage().
int CopyTo(__QVImage* src, __QVImage* dst, QVRect rect, QVPoint offset);

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
