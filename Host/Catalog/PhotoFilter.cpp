// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {
namespace {

constexpr Choice kTypes[] = {
    {"solid", kQVPhotoFilterSolid},
    {"linear", kQVPhotoFilterLinear},
    {"linear-two-colors", kQVPhotoFilterLinearBoth},
    {"round", kQVPhotoFilterRound},
    {"round-two-colors", kQVPhotoFilterRoundBoth},
};

int PhotoFilter(__QVImage* src, __QVImage* dst, QVRect rect, int type, QVBlendMode mode,
                float saturation, float contrast, float centerX, float centerY, float angleOrRadius,
                float width, const float* colorA, float amountA, const float* colorB,
                float amountB) {
  return QVEffectsPhotoFilter(src, dst, rect, type, mode, saturation, contrast, {centerX, centerY},
                              angleOrRadius, width, colorA, amountA, colorB, amountB);
}

}  // namespace

Family PhotoFilters() {
  return {{
      {"photo-filter",
       "QVEffectsPhotoFilter",
       Bind(PhotoFilter),
       "Imitates a coloured glass before the lens, solid or graduated.",
       InPlace::Yes,
       kPixelwise,
       {ChoiceOf("type", kTypes, kQVPhotoFilterSolid, kQVPhotoFilterSolid, "the filter's shape"),
        ChoiceOf("mode", kBlendModes, kQVBlendModeNormal, kQVBlendModeMultiply,
                 "how it is laid over the picture"),
        NumberOf("saturation", "", -1, 1, 0, 0.2, "change of the picture's saturation"),
        NumberOf("contrast", "", 0, 1, 0, 0.2, "more contrast in the picture"),
        NumberOf("center-x", "px", -100000, 100000, 0, 0,
                 "where the line or circle has its centre"),
        NumberOf("center-y", "px", -100000, 100000, 0, 0, "the same, downwards"),
        NumberOf("angle-or-radius", "", -360, 100000, 0, 90,
                 "degrees that a linear filter leads to (90 is down), or pixels of a round one"),
        NumberOf("width", "px", 0, 100000, 100, 100, "half the length of the transition"),
        ColorOf("color-a", {0.93f, 0.54f, 0, 1}, "the first colour"),
        NumberOf("amount-a", "", 0, 1, 0, 0.4, "how much of it"),
        ColorOf("color-b", {0, 0.42f, 0.9f, 1}, "the second colour, of filters of two"),
        NumberOf("amount-b", "", 0, 1, 0, 0.4, "how much of it")},
       kNeedsRGB},
  }};
}

}  // namespace catalog
