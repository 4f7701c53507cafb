// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "Rows.h"

namespace catalog {
namespace {

constexpr int kAllZones = 6;
constexpr Choice kZones[] = {{"red", 0},  {"yellow", 1},  {"green", 2},      {"cyan", 3},
                             {"blue", 4}, {"magenta", 5}, {"all", kAllZones}};

int ApplyWithMask(__QVImage* src, __QVImage* dst, QVRect rect, __QVImage* with, float amount,
                  __QVImage* mask) {
  return QVEffectsApplyEffectWithMask(src, with, mask, dst, rect, amount);
}

// The same weights for one zone or all.
int ApplyInZones(__QVImage* src, __QVImage* dst, QVRect rect, __QVImage* with, int zone, float mix,
                 float brightness, float contrast, __QVImage* mask) {
  float weights[3][kAllZones] = {};
  for (int i = 0; i < kAllZones; i++) {
    if (zone != i && zone != kAllZones) continue;
    weights[0][i] = mix;
    weights[1][i] = brightness;
    weights[2][i] = contrast;
  }
  return QVEffectsApplyEffectInZones(src, with, mask, dst, rect, weights[0], weights[1],
                                     weights[2]);
}

int Mix(__QVImage* src, __QVImage* dst, QVRect rect, __QVImage* with, float weight,
        float otherWeight) {
  return QVEffectsMixImages(src, with, dst, rect, weight, otherWeight);
}

int Flatten(__QVImage* src, __QVImage* dst, QVRect rect) {
  const int status = QVEffectsCopyImage(src, dst, rect);
  return status == kQVStatusSuccess ? QVEffectsMakeCompositeImage(dst, rect) : status;
}

int ScaleValues(__QVImage* src, __QVImage* dst, QVRect rect, float factor, float pivot) {
  if (!src) return kQVStatusBadArgument;
  const auto planes = static_cast<size_t>(std::max(QVImageGetNumPlanes(src), 0));
  std::vector<float> factors(planes, factor), pivots(planes, pivot);
  if (QVImageGetTransparency(src) == 1) factors.back() = 1;
  return QVEffectsMultiplyValues(src, dst, rect, factors.data(), pivots.data());
}

Parameter With(std::string_view help) { return ImageOf("with", Kind::Picture, help); }

Parameter Push() {
  return ImageOf("mask", Kind::Mask,
                 "pushes towards the other picture (white) or away (black), mid gray is neutral");
}

}  // namespace

Family Masks() {
  return {
      {
          {"apply-in-zones",
           "QVEffectsApplyEffectInZones",
           Bind(ApplyInZones),
           "Mixes in another picture by the colour of this one, and changes brightness there.",
           InPlace::Yes,
           NoReach,
           {With("the picture mixed in, by a half where nothing else is asked"),
            ChoiceOf("zone", kZones, kAllZones, 0, "the colours that the weights hold for"),
            NumberOf("mix", "", -1, 1, 0, 1, "more of the other picture above 0, less below"),
            NumberOf("brightness", "", -1, 1, 0, 0.3, "darker below 0, lighter above"),
            NumberOf("contrast", "", -1, 1, 0, 0.3, "of the midtones"), Push()},
           kNeedsRGB},
          {"apply-with-mask",
           "QVEffectsApplyEffectWithMask",
           Bind(ApplyWithMask),
           "Mixes in another picture where a mask says, transparency included.",
           InPlace::Yes,
           NoReach,
           {With("the picture mixed in"),
            NumberOf("amount", "", 0, 2, 0, 1, "1 is an even mix, 2 the other picture alone"),
            Push()},
           kNeedsNothing,
           Transparency::Set},
          {"flatten", "QVEffectsMakeCompositeImage", Bind(Flatten),
           "Lays a transparent picture on white; its transparency stays.", InPlace::Yes, NoReach},
          {"mix",
           "QVEffectsMixImages",
           Bind(Mix),
           "Sums two pictures, transparency included.",
           InPlace::Yes,
           kPixelwise,
           {With("the other picture"), NumberOf("weight", "", 0, 1, 1, 0.5, "of this picture"),
            NumberOf("other-weight", "", 0, 1, 0, 0.5, "of the other picture")},
           kNeedsNothing,
           Transparency::Set},
          {"scale-values",
           "QVEffectsMultiplyValues",
           Bind(ScaleValues),
           "Moves colours away from a level or towards it.",
           InPlace::Yes,
           kPixelwise,
           {NumberOf("factor", "", 0, 4, 1, 1.5, "how far; below 1 towards the level"),
            NumberOf("pivot", "", 0, 1, 0.5, 0.5, "the level")},
           kNeedsNothing,
           Transparency::Set},
      },
      {
          {"QVEffectsGetColorComponents", "works on a single colour"},
          {"QVEffectsMultiplyMasks", "works on masks alone"},
          {"QVEffectsFindMaskBounds", "measures a mask and writes no image"},
      }};
}

}  // namespace catalog
