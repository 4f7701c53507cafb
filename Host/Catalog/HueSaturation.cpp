// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {
namespace {

Parameter HueOf(double good) {
  return NumberOf("hue", "turns", -1, 1, 0, good, "how far hues turn: 0.5 is the opposite hue");
}

Parameter SaturationOf(double good) {
  return NumberOf("saturation", "", -1, 1, 0, good, "paler below 0, more colourful above");
}

}  // namespace

Family HueSaturations() {
  return {{
      {"desaturate",
       FUNCTION(QVEffectsDesaturate),
       "Lays each pixel's luma over it as a gray.",
       InPlace::Yes,
       kPixelwise,
       {ChoiceOf("mode", kBlendModes, kQVBlendModeNormal, kQVBlendModeNormal,
                 "how the gray combines with the colour"),
        NumberOf("amount", "", 0, 1, 0, 1, "how much of the result is seen")},
       kNeedsRGB},
      {"hue-saturation",
       FUNCTION(QVEffectsHueSaturationBrightness),
       "Turns the hue and changes saturation and brightness, black stays.",
       InPlace::Yes,
       kPixelwise,
       {HueOf(0.1), SaturationOf(0.2),
        NumberOf("brightness", "", -1, 1, 0, 0.1, "darker below 0, lighter above")},
       kNeedsRGB},
      {"hue-saturation-lightness",
       FUNCTION(QVEffectsHueSaturationLightness),
       "Turns the hue and changes saturation and lightness, black and white stay.",
       InPlace::Yes,
       kPixelwise,
       {HueOf(0.1), SaturationOf(0.2),
        NumberOf("lightness", "", -1, 1, 0, 0.1, "darker below 0, lighter above")},
       kNeedsRGB},
      {"vibrance",
       FUNCTION(QVEffectsVibrance),
       "Makes pale colours more colourful, or paler; the sum of the components stays if it can.",
       InPlace::Yes,
       kPixelwise,
       {NumberOf("amount", "", -1, 1, 0, 0.5, "paler below 0, more colourful above")},
       kNeedsRGB},
  }};
}

}  // namespace catalog
