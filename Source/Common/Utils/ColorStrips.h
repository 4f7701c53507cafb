// SPDX-License-Identifier: Apache-2.0
// Effects on the colours of RGB images: rows are worked in strips, the first three planes change,
// the others are carried over.
#pragma once

#include "BlendModes.h"
#include "ColorMath.h"
#include "Strips.h"

namespace qv {

/// From samples to 0 to 1 and back. Stages take it as a value: they exist once for all depths.
struct UnitScale {
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

struct Nothing {
  void operator()() const {}
};

/// Walks a rectangle of src and dst, images of the same pixels of type T that strips can hold.
/// @param stage stage(strip, pixels, scale): changes planes, which hold samples on their own scale;
///              the first three alone where further ones stay.
/// @param begin called before each row.
template <class T, class Stage, class Begin = Nothing>
void WalkColors(Where where, __QVImage* src, __QVImage* dst, VRect rect, FurtherPlanes further,
                Stage&& stage, Begin begin = {}) {
  constexpr UnitScale kScale = {Sample<T>::kToUnit, Sample<T>::kMax};
  const int planes = QVImageGetNumPlanes(dst);
  const bool keeps = further == FurtherPlanes::kOfDst && planes > 3;
  Strip strip;
  WalkRows(where, {ToRead(src), keeps ? ToReadWrite(dst) : ToWrite(dst)}, rect,
           [&](void** rows, int width, RowCopier& copier) {
    begin();
    EachStrip(width, [&](int64_t x, int pixels) {
      const int64_t first = x * planes;
      LoadUnscaled<T>(static_cast<const T*>(rows[0]) + first, planes, pixels, strip);
      stage(strip, pixels, kScale);
      T* out = static_cast<T*>(rows[1]) + first;
      if (keeps) LoadFurther(out, planes, pixels, strip);
      StoreSamples<T>(copier, out, planes, pixels, strip);
    });
  });
}

/// A stage that takes each colour from 0 to 1 through a formula.
/// @param formula Color3 formula(Color3).
template <class Formula>
auto ChangeColors(Formula formula) {
  return [formula](Strip& strip, int pixels, UnitScale scale) {
    const int count = WholeVectors(pixels);
    float* __restrict x = strip[0];
    float* __restrict y = strip[1];
    float* __restrict z = strip[2];
    for (int i = 0; i < count; i++) {
      const Color3 c =
          formula(Color3{x[i] * scale.toUnit, y[i] * scale.toUnit, z[i] * scale.toUnit});
      x[i] = c.x * scale.max;
      y[i] = c.y * scale.max;
      z[i] = c.z * scale.max;
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

  void Begin(const Strip& strip, int pixels, UnitScale scale) {
    const int count = WholeVectors(pixels);
    for (int c = 0; c < 3; c++) {
      for (int i = 0; i < count; i++) base[c][i] = strip[c][i] * scale.toUnit;
    }
  }

  void End(Strip& strip, int pixels, UnitScale scale) {
    const int count = WholeVectors(pixels);
    blend(top, base, mixed, 3, pixels);
    for (int c = 0; c < 3; c++) {
      for (int i = 0; i < count; i++) {
        const float sum = mixed[c][i] * opacity[i] + base[c][i] * (1.0f - opacity[i]);
        strip[c][i] = sum * scale.max;
      }
    }
  }
};

}  // namespace qv
