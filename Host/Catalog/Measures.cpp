// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {

Family Measures() {
  return {
      {
          {"fill-gradient",
           FUNCTION(QVEffectsFillGradient),
           "Fills the rectangle with two colours, mixed by a mask.",
           InPlace::Yes,
           kPixelwise,
           {ImageOf("mask", Kind::Mask, "white takes the first colour, black the second"),
            ColorOf("color1", {0.85f, 0.45f, 0.15f, 1}, "where the mask is white, or without one"),
            ColorOf("color2", {0.1f, 0.2f, 0.45f, 1}, "where the mask is black")},
           kNeedsNothing,
           Transparency::Set},
          {"variance",
           FUNCTION(QVEffectsVariance),
           "Shows edges and texture by the standard deviation over a square.",
           InPlace::No,
           {Radius, kReachIsHard | kReachRounds},
           {IntegerOf("radius", "px", 0, 200, 0, 5, "pixels on each side of the middle one")},
           kNeedsNothing,
           Transparency::Kept,
           0,
           kQVStatusUnknown2,
           kQVStatusBadArgument},
      },
      {
          {"QVEffectsAnalyzeImage", "tells numbers and makes no picture"},
          {"QVEffectsGetAvgColor", "tells numbers and makes no picture"},
          {"QVEffectsGetColorForIndex", "tells a colour and touches no image"},
      }};
}

}  // namespace catalog
