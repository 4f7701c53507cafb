// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {
namespace {

// Another picture over this one.
int Blend(__QVImage* src, __QVImage* dst, QVRect rect, __QVImage* with, QVBlendMode mode,
          float opacity, __QVImage* mask) {
  return QVEffectsBlendImagesWithOpacitiesAndMasks(with, opacity, mask, src, 1, nullptr, dst, mode,
                                                   rect);
}

}  // namespace

Family Blending() {
  return {
      {
          {"blend",
           "QVEffectsBlendImagesWithOpacitiesAndMasks",
           Bind(Blend),
           "Lays another picture over this one.",
           InPlace::Yes,
           kPixelwise,
           {ImageOf("with", Kind::Layer, "the picture laid over"),
            ChoiceOf(
                "mode", kBlendModes, kQVBlendModeNormal, kQVBlendModeOverlay,
                "how the colours combine; hue to luminosity, lighter-color and darker-color are "
                "for RGB"),
            NumberOf("opacity", "", 0, 1, 0, 1, "how much of the picture laid over is seen"),
            ImageOf("mask", Kind::Mask, "where it is seen, by the first sample: white is wholly")},
           kNeedsNothing,
           Transparency::Set},
      },
      {
          {"QVEffectsBlendImages",
           "QVEffectsBlendImagesWithOpacitiesAndMasks at opacity 1 without masks"},
          {"QVEffectsGetReverseBlendMode", "answers about a mode and touches no image"},
      }};
}

}  // namespace catalog
