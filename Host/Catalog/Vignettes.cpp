// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {
namespace {

// A vignette fits the image's bounds: a tile has another.
int FitsImage(std::span<const Value>) { return kWholeImage; }

// Those that both vignettes have; the third number, its shape and what is good differ.
std::vector<Parameter> Parameters(Parameter third, double size, Parameter shape, double mode) {
  return {NumberOf("center-x", "", 0, 1, 0.5, 0.5, "the centre, of the width"),
          NumberOf("center-y", "", 0, 1, 0.5, 0.5, "the centre, of the height"),
          std::move(third),
          NumberOf("size", "", 0, 1, 1, size, "how far the clear middle reaches"),
          NumberOf("softness", "", 0, 1, 0, 0.7, "how wide the transition is"),
          std::move(shape),
          ChoiceOf("mode", kBlendModes, kQVBlendModeNormal, mode,
                   "how the colours combine; hue to luminosity, lighter-color and darker-color are "
                   "for RGB")};
}

}  // namespace

Family Vignettes() {
  return {{
      {"vignette",
       FUNCTION(QVEffectsVignette),
       "Makes a vignette as a layer: its transparency is the vignette's strength.",
       InPlace::Yes,
       {FitsImage, kReachFitsBounds},
       Parameters(NumberOf("level", "", 0, 1, 0.5, 0.1,
                           "the layer's gray, the stronger the further from 0.5"),
                  0.5, NumberOf("shape", "", 0, 1, 0.5, 0.5, "box (0), ellipse (0.5), circle (1)"),
                  kQVBlendModeMultiply),
       kNeedsNothing,
       Transparency::Set},
      {"vignette-in",
       FUNCTION(QVEffectsVignetteIn),
       "Darkens or lightens towards the edges.",
       InPlace::Yes,
       {FitsImage, kReachFitsBounds},
       Parameters(NumberOf("amount", "", -1, 1, 0, -0.7, "darker below 0, lighter above"), 0.4,
                  NumberOf("shape", "", -1, 1, 0, 0, "box (-1), ellipse (0), circle (1)"),
                  kQVBlendModeNormal)},
  }};
}

}  // namespace catalog
