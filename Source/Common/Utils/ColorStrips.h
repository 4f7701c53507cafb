// SPDX-License-Identifier: Apache-2.0
// Effects on the colours of RGB images: rows are worked in strips, the first three planes change,
// the others are carried over.
#pragma once

#include "BlendModes.h"
#include "ColorMath.h"
#include "Strips.h"

namespace qv {

/// What a strip holds: pixels from (x, y) of an image on. `toUnit` and `max` take its samples to 0
/// to 1 and back: stages exist once for all depths.
struct Stretch {
  int x, y, pixels;
  float toUnit, max;
};

/// What becomes of the planes after the third: they stay, or they are those of src.
enum class FurtherPlanes { kOfDst, kOfSrc };

/// Transparency is carried over, and further colours with it; without it they stay.
/// @param asked the image, src or dst, that is asked for transparency.
inline FurtherPlanes WithTransparency(__QVImage* asked) {
  return QVImageGetTransparency(asked) == 0 ? FurtherPlanes::kOfDst : FurtherPlanes::kOfSrc;
}

inline int Colors(__QVImage* image) {
  return QVImageGetNumPlanes(image) - QVImageGetTransparency(image);
}

/// Whether pixels of src and dst are alike, of three colour samples or more, and strips can hold
/// them.
inline bool CanWalkColors(__QVImage* src, __QVImage* dst) {
  return HaveSamePixels(src, dst) && FitsPlanes(dst) && Colors(src) >= 3 && Colors(dst) >= 3;
}

/// Loads the planes after the third.
template <class T>
void LoadFurther(const T* row, int planes, int pixels, Strip& strip) {
  for (int c = 3; c < planes; c++) {
    for (int i = 0; i < pixels; i++) strip[c][i] = static_cast<float>(row[i * planes + c]);
  }
}

/// Walks a rectangle of src and dst, images of the same pixels of type T that strips can hold.
/// @param stage stage(strip, stretch): changes planes, which hold samples on their own scale; the
///              first three alone where further ones stay.
template <class T, class Stage>
void WalkColors(Where where, __QVImage* src, __QVImage* dst, VRect rect, FurtherPlanes further,
                Stage&& stage) {
  const int planes = QVImageGetNumPlanes(dst);
  const bool keeps = further == FurtherPlanes::kOfDst && planes > 3;
  Strip strip;
  WalkRows(where, {ToRead(src), keeps ? ToReadWrite(dst) : ToWrite(dst)}, rect,
           [&](const WalkedRow& row) {
    EachStrip(row.pixels, [&](int64_t x, int pixels) {
      const int64_t first = x * planes;
      LoadUnscaled<T>(row.Of<T>(0) + first, planes, pixels, strip);
      stage(strip, Stretch{static_cast<int>(row.left + x), row.y, pixels, Sample<T>::kToUnit,
                           Sample<T>::kMax});
      T* out = row.Of<T>(1) + first;
      if (keeps) LoadFurther(out, planes, pixels, strip);
      StoreSamples<T>(row.copier, out, planes, pixels, strip);
    });
  });
}

/// A stage that takes each colour from 0 to 1 through a formula.
/// @param formula Color3 formula(Color3).
template <class Formula>
auto ChangeColors(Formula formula) {
  return [formula](Strip& strip, Stretch at) {
    const int count = WholeVectors(at.pixels);
    float* __restrict x = strip[0];
    float* __restrict y = strip[1];
    float* __restrict z = strip[2];
    for (int i = 0; i < count; i++) {
      const Color3 c = formula(Color3{x[i] * at.toUnit, y[i] * at.toUnit, z[i] * at.toUnit});
      x[i] = c.x * at.max;
      y[i] = c.y * at.max;
      z[i] = c.z * at.max;
    }
  };
}

/// Stages that lay a colour over each pixel by a mode: Begin() takes the pixels, then `top` and
/// `opacity` are filled, then End() hands out the result.
struct ColorsOver {
  BlendStrip blend;
  Strip base = {}, top = {}, mixed = {};  // from 0 to 1
  alignas(64) float opacity[kStripPixels] = {};

  explicit ColorsOver(BlendStrip aBlend) : blend(aBlend) {}

  void Begin(const Strip& strip, Stretch at) {
    const int count = WholeVectors(at.pixels);
    for (int c = 0; c < 3; c++) {
      for (int i = 0; i < count; i++) base[c][i] = strip[c][i] * at.toUnit;
    }
  }

  void End(Strip& strip, Stretch at) {
    const int count = WholeVectors(at.pixels);
    blend(top, base, mixed, 3, at.pixels);
    for (int c = 0; c < 3; c++) {
      for (int i = 0; i < count; i++) {
        const float sum = mixed[c][i] * opacity[i] + base[c][i] * (1.0f - opacity[i]);
        strip[c][i] = sum * at.max;
      }
    }
  }
};

}  // namespace qv
