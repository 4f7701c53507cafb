// SPDX-License-Identifier: Apache-2.0
// Brightness on its own: an RGB image reduced to a gray one, and new brightness put back under old
// colours.
#pragma once

#include <QVCore9/QVCore9.h>

#include "ColorMath.h"
#include "VRect.h"

/// The depth of a gray image.
enum GrayFormat { kGrayAsSource = 0, kGray8 = 1, kGray16 = 2, kGray32 = 4 };

/// How much each component counts.
enum GrayMethod { kGrayLuma = 0, kGrayMean = 1 };

/// Makes a gray image of a part of an RGB image: one plane, no transparency, data source 1. Around
/// the source it goes on with the colours at its edges. Integer samples are rounded to nearest and
/// held to the range.
/// @param source the first three planes are read.
/// @param result receives the image with one reference, or null on failure.
/// @param rect   its bounds.
/// @param format see GrayFormat.
/// @param method see GrayMethod.
/// @return 0; kQVStatusBadArgument for another method, null or a row that can't be had;
///         kQVStatusUnsupported for another format or an image that isn't RGB, has fewer than three
///         planes or isn't of 8, 16 or 32 bits; the status of QVImageCreateWithParams2().
QVEFFECTS_API int CreateGrayScaleImage(__QVImage* source, __QVImage*& result, VRect rect,
                                       int format, int method);

/// Gives each pixel the brightness of a gray image and the chroma of source. A component that
/// leaves 0 to 1 is held there, which shifts the hue. Planes after the third are those of source.
/// @param source,destination the same depth and planes, three colour planes at least; may be the
///                           same image.
/// @param luminosity         one plane of the same depth.
/// @return 0; kQVStatusUnsupported for images that aren't so; kQVStatusBadArgument for null or a
///         row that can't be had.
QVEFFECTS_API int ApplyLuminosity(__QVImage* source, __QVImage* destination, __QVImage* luminosity,
                                  VRect rect);

namespace qv {

/// Luma and the two chroma differences, which are 0.5 for grays, by the matrix of JPEG.
inline Color3 RgbToYcc(Color3 rgb) {
  return {Luma(rgb.x, rgb.y, rgb.z),
          rgb.z * 0.5f + (rgb.y * -0.331264f + rgb.x * -0.168736f) + 0.5f,
          rgb.z * -0.081312f + (rgb.y * -0.418688f + rgb.x * 0.5f) + 0.5f};
}

/// Held to 0 to 1; NaN stays.
inline float HeldToUnit(float v) { return v < 0.0f ? 0.0f : (v > 1.0f ? 1.0f : v); }

inline Color3 YccToRgb(Color3 ycc) {
  const float cb = ycc.y - 0.5f, cr = ycc.z - 0.5f;
  return {HeldToUnit(cr * 1.402f + ycc.x), HeldToUnit(cr * -0.714136f + (cb * -0.344136f + ycc.x)),
          HeldToUnit(cb * 1.772f + ycc.x)};
}

}  // namespace qv
