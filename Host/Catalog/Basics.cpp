// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {

Family Basics() {
  return {{
              {"copy", FUNCTION(QVEffectsCopyImage), "Copies the rectangle as it is.", InPlace::Yes,
               kPixelwise},
              {"fill-color",
               FUNCTION(QVEffectsFillColor),
               "Fills the rectangle with one colour, transparency included.",
               InPlace::Yes,
               kPixelwise,
               {ColorOf("color", {0.85f, 0.45f, 0.15f, 1}, "what to fill with")},
               kNeedsNothing,
               Transparency::Set},
              {"invert", FUNCTION(QVEffectsInvert), "Turns every colour into its complement.",
               InPlace::Yes, kPixelwise},
          },
          {{"QVEffectsGetOutset", "answers about an effect and touches no image"}}};
}

}  // namespace catalog
