// SPDX-License-Identifier: Apache-2.0
// How effects read masks: strip by strip as floats, those of the inverted type upside down.
#pragma once

#include "Strips.h"

namespace qv {

inline bool IsInverted(__QVImage* mask) {
  return mask && QVImageGetType(mask) == kQVImageTypeInvertedMask;
}

/// Whether the mask is absent or one of the image's depth.
inline bool IsMaskFor(__QVImage* image, __QVImage* mask) {
  return !mask || (QVImageGetDepth(mask) == QVImageGetDepth(image) &&
                   QVImageGetNumPlanes(mask) == 1 && IsPacked(mask));
}

/// A sample s, on whatever scale it was loaded, counts as s * sign + offset.
struct MaskSense {
  float sign = 1.0f, offset = 0.0f;

  /// @param mask  may be null.
  /// @param white what full scale is on that scale.
  explicit MaskSense(__QVImage* mask, float white = 1.0f) {
    if (!IsInverted(mask)) return;
    sign = -1.0f;
    offset = white;
  }
  float operator()(float s) const { return s * sign + offset; }
};

/// Loads what pixels of a mask count as into the strip's first plane.
inline void LoadMask(LoadStrip load, const void* row, int planes, int pixels, MaskSense sense,
                     Strip& strip) {
  load(row, planes, pixels, strip);
  float* counts = strip[0];
  for (int i = 0; i < pixels; i++) counts[i] = sense(counts[i]);
}

}  // namespace qv
