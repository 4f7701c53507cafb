// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {
namespace {

Parameter RadiusOf(double good) {
  return IntegerOf("radius", "px", 0, 100, 0, good, "how far around each pixel to look");
}

}  // namespace

Family MedianFilters() {
  return {{
      {"median",
       FUNCTION(QVEffectsMedian),
       "Replaces every sample by the median of those around it.",
       InPlace::Yes,
       {"radius", kReachIsHard},
       {RadiusOf(3)},
       kNeedsInteger},
      {"dust-and-scratch",
       FUNCTION(QVEffectsDustAndScratch),
       "Replaces samples by the median around them where they differ much from it.",
       InPlace::Yes,
       "radius",
       {RadiusOf(4),
        NumberOf("threshold", "", 0, 1, 1, 0.1, "the least difference, of full scale")},
       kNeedsInteger},
  }};
}

}  // namespace catalog
