// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {
namespace {

std::vector<Parameter> Parameters() {
  return {IntegerOf("radius", "px", 0, 100, 0, 8, "from the centre of the window to its sides"),
          NumberOf("threshold", "", 0, 1, 0, 0.1,
                   "how far values may lie apart and still be mixed, as a part of full scale"),
          NumberOf("amount", "", 0, 1, 0, 1, "how much of the blur is mixed in")};
}

}  // namespace

Family SurfaceBlur() {
  return {{
              {"surface-blur",
               FUNCTION(QVEffectsSurfaceBlur),
               "Smooths areas and keeps edges.",
               InPlace::Yes,
               {"radius", kReachIsHard | kReachRounds},
               Parameters()},
              {"surface-blur-luminosity",
               FUNCTION(QVEffectsSurfaceBlurLuminosity),
               "Smooths the brightness of areas, keeps edges and colours.",
               InPlace::Yes,
               {Radius, kReachIsHard | kReachRounds},
               Parameters(),
               kNeedsRGB},
          },
          {
              {"QVEffectsSurfaceBlurWithOffset",
               "QVEffectsSurfaceBlur that writes at another place than it reads"},
          }};
}

}  // namespace catalog
