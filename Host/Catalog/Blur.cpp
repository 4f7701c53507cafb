// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <vector>

#include "Rows.h"

namespace catalog {
namespace {

Parameter AmountOfBlur() {
  return NumberOf("amount", "", 0, 1, 0, 1, "how much of the blur is taken");
}

// The modes that blurs take, with the names of the others' reverse forms after them.
std::span<const Choice> BlurModes() {
  static const std::vector<Choice> modes = [] {
    constexpr QVBlendMode kOfWholeColor[] = {kQVBlendModeHue,          kQVBlendModeSaturation,
                                             kQVBlendModeColor,        kQVBlendModeLuminosity,
                                             kQVBlendModeLighterColor, kQVBlendModeDarkerColor};
    std::vector<Choice> all;
    for (const Choice& mode : kBlendModes) {
      if (std::ranges::find(kOfWholeColor, mode.value) == std::end(kOfWholeColor)) {
        all.push_back(mode);
      }
    }
#define REVERSE(constant, name) \
  {name, static_cast<double>(QVEffectsGetReverseBlendMode(kQVBlendMode##constant))}
    static const Choice kReversed[] = {
        REVERSE(ColorDodge, "color-dodge-reverse"), REVERSE(Divide, "divide-reverse"),
        REVERSE(Subtract, "subtract-reverse"),      REVERSE(HardLight, "hard-light-reverse"),
        REVERSE(HardMix, "hard-mix-reverse"),       REVERSE(ColorBurn, "color-burn-reverse"),
        REVERSE(Overlay, "overlay-reverse"),        REVERSE(LinearLight, "linear-light-reverse"),
        REVERSE(SoftLight, "soft-light-reverse"),   REVERSE(VividLight, "vivid-light-reverse"),
    };
#undef REVERSE
    all.insert(all.end(), std::begin(kReversed), std::end(kReversed));
    return all;
  }();
  return modes;
}

int BoxBlur(__QVImage* src, __QVImage* dst, QVRect rect, int radius, float amount) {
  return QVEffectsBoxBlurWithOffsetAndAmount(src, dst, rect, radius, {0, 0}, amount);
}

}  // namespace

Family Blur() {
  return {
      {
          {"box-blur",
           "QVEffectsBoxBlurWithOffsetAndAmount",
           Bind(BoxBlur),
           "Blurs by the mean of a square.",
           InPlace::Yes,
           {"radius", kReachIsHard},
           {IntegerOf("radius", "px", 0, 200, 0, 5, "pixels on each side of the middle one"),
            AmountOfBlur()},
           kNeedsNothing,
           Transparency::Kept,
           0,
           kQVStatusUnknown2,
           kQVStatusBadArgument},
          {"gaussian-blur",
           FUNCTION(QVEffectsGaussianBlurWithAmountAndMode),
           "Blurs by a Gaussian.",
           InPlace::Yes,
           "radius",
           {NumberOf("radius", "px", 0, 250, 0, 3,
                     "standard deviation; from 10 on three box blurs take the Gaussian's place"),
            AmountOfBlur(),
            ChoiceOf("mode", BlurModes(), kQVBlendModeNormal, kQVBlendModeNormal,
                     "how the blurred picture goes over this one")},
           kNeedsNothing,
           Transparency::Kept,
           0,
           kQVStatusBadArgument,
           kQVStatusUnknown2},
          {"triangular-blur",
           FUNCTION(QVEffectsTriangularBlur),
           "Blurs by a tent, smoother than a box and as fast.",
           InPlace::Yes,
           {Radius, kReachIsHard},
           {IntegerOf("radius", "px", 0, 200, 0, 5, "pixels on each side of the middle one")}},
      },
      {
          {"QVEffectsBoxBlur", "QVEffectsBoxBlurWithOffsetAndAmount at amount 1"},
          {"QVEffectsBoxBlurWithOffset", "QVEffectsBoxBlurWithOffsetAndAmount at amount 1"},
          {"QVEffectsBoxBlurWithAmount", "QVEffectsBoxBlurWithOffsetAndAmount of other boxes"},
          {"QVEffectsBoxBlurInt", "works on images of integers that hosts don't hold"},
          {"QVEffectsGaussianBlur", "QVEffectsGaussianBlurWithAmountAndMode at amount 1"},
          {"QVEffectsGaussianBlurWithAmount",
           "QVEffectsGaussianBlurWithAmountAndMode in normal mode"},
          {"QVEffectsGaussianBlurTrue", "one side of QVEffectsGaussianBlurWithAmountAndMode"},
          {"QVEffectsGaussianBlurTrueWithAmount",
           "one side of QVEffectsGaussianBlurWithAmountAndMode"},
          {"QVEffectsGaussianBlurTrueWithAmountAndMode",
           "one side of QVEffectsGaussianBlurWithAmountAndMode"},
          {"QVEffectsGaussianBlurFast", "one side of QVEffectsGaussianBlurWithAmountAndMode"},
          {"QVEffectsGaussianBlurFastWithAmount",
           "one side of QVEffectsGaussianBlurWithAmountAndMode"},
          {"QVEffectsGaussianBlurFastWithAmountAndMode",
           "one side of QVEffectsGaussianBlurWithAmountAndMode"},
      }};
}

}  // namespace catalog
