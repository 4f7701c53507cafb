// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "Rows.h"

namespace catalog {
namespace {

// One colour for both ends lies over all pixels alike. The colours are of dst's planes.
int SplitTone(__QVImage* src, __QVImage* dst, QVRect rect, const float* shadow,
              const float* highlight, QVBlendMode mode, float shadowAmount, float highlightAmount,
              float balance) {
  const bool isColor = QVImageGetNumPlanes(dst) >= 3;
  if (isColor && std::equal(shadow, shadow + 3, highlight)) highlight = shadow;
  return QVEffectsSplitTone(src, dst, rect, shadow, highlight, mode, shadowAmount, highlightAmount,
                            balance);
}

int Duotone(__QVImage* src, __QVImage* dst, QVRect rect, const float* shadow,
            const float* highlight, QVBlendMode mode, float balance, float amount) {
  return SplitTone(src, dst, rect, shadow, highlight, mode, amount, amount, balance);
}

Parameter Shadow(Color good) { return ColorOf("shadow", good, "the colour at black"); }
Parameter Highlight(Color good) { return ColorOf("highlight", good, "the colour at white"); }

Parameter Mode(double good) {
  return ChoiceOf("mode", kBlendModes, kQVBlendModeNormal, good,
                  "how the gradient combines with the picture");
}

Parameter Balance() {
  return NumberOf("balance", "", 0, 1, 0.5, 0.5, "more of the shadow colour below 0.5, less above");
}

Parameter AmountOf(std::string_view name, double good, std::string_view help) {
  return NumberOf(name, "", 0, 1, 0, good, help);
}

constexpr Color kNight = {0.1f, 0.1f, 0.35f, 1}, kSand = {1, 0.9f, 0.7f, 1};
constexpr Color kTeal = {0.1f, 0.4f, 0.5f, 1}, kOrange = {1, 0.7f, 0.4f, 1};

}  // namespace

Family Tonings() {
  return {{
      {"add-toner",
       FUNCTION(QVEffectsAddToner),
       "Tints with a colour that follows luma, black and white stay.",
       InPlace::Yes,
       kPixelwise,
       {ColorOf("color", {0.7f, 0.5f, 0.3f, 1}, "the tint; a gray one makes the picture gray"),
        AmountOf("amount", 1, "how much of the result is seen")},
       kNeedsRGB},
      {"colorize",
       FUNCTION(QVEffectsColorize),
       "Gives all pixels one hue and saturation.",
       InPlace::Yes,
       NoReach,
       {NumberOf("hue", "turns", 0, 1, 0, 0.58, "0 red, 1/3 green, 2/3 blue"),
        NumberOf("saturation", "", 0, 1, 0, 0.4, "gray at 0"),
        NumberOf("lightness", "", -1, 1, 0, 0, "towards black below 0, towards white above")},
       kNeedsRGB},
      {"duotone",
       "QVEffectsDuotone",
       Bind(Duotone),
       "Lays a gradient between two colours over the picture, by its luma.",
       InPlace::Yes,
       kPixelwise,
       {Shadow(kNight), Highlight(kSand), Mode(kQVBlendModeNormal), Balance(),
        AmountOf("amount", 0.8, "how much of the result is seen")},
       kNeedsRGB},
      {"gradient-map",
       FUNCTION(QVEffectsGradientMap),
       "Replaces the picture's colours by a gradient between two, by its luma.",
       InPlace::Yes,
       kPixelwise,
       {Shadow(kNight), Highlight(kSand), Balance()},
       kNeedsRGB},
      {"solarize", FUNCTION(QVEffectsSolarize),
       "Turns the upper half of the tones round, white becomes black.", InPlace::Yes, kPixelwise},
      {"split-tone",
       "QVEffectsSplitTone",
       Bind(SplitTone),
       "Tones shadows and highlights, each with a colour and an amount.",
       InPlace::Yes,
       kPixelwise,
       {Shadow(kTeal), Highlight(kOrange), Mode(kQVBlendModeSoftLight),
        AmountOf("shadow-amount", 0.8, "how much is seen at black"),
        AmountOf("highlight-amount", 0.6, "how much is seen at white"), Balance()},
       kNeedsRGB},
  }};
}

}  // namespace catalog
