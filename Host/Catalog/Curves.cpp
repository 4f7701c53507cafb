// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include "Rows.h"

namespace catalog {

Family Curves() {
  return {{
              {"apply-curves",
               FUNCTION(QVEffectsApplyCurvesWithAmount),
               "Maps the levels of every colour plane along a curve.",
               InPlace::Yes,
               kPixelwise,
               {CurveOf("curve", {{0, 0}, {0.25f, 0.2f}, {0.75f, 0.85f}, {1, 1}},
                        "what levels become, from black (0) to white (1): points x,y:x,y..., "
                        "joined smoothly"),
                NumberOf("amount", "", 0, 1, 0, 1, "how much of the result is seen")}},
          },
          {
              {"QVEffectsApplyCurves", "QVEffectsApplyCurvesWithAmount at amount 1"},
              {"QVEffectsInitCurves", "makes a curve and touches no image"},
              {"QVEffectsConcatCurves", "joins curves and touches no image"},
              {"QVEffectsResizeCurve", "resamples a curve and touches no image"},
          }};
}

// Monotone cubic interpolation after Fritsch and Carlson (1980), with the tangents' harmonic mean
// of Fritsch and Butland (1984).
std::vector<float> CurveLevels(const Curve& curve) {
  const size_t pieces = curve.size() - 1;
  std::vector<double> slope(pieces), tangent(curve.size());
  for (size_t i = 0; i < pieces; i++) {
    slope[i] = (double{curve[i + 1][1]} - curve[i][1]) / (double{curve[i + 1][0]} - curve[i][0]);
  }
  tangent.front() = slope.front();
  tangent.back() = slope.back();
  for (size_t i = 1; i < pieces; i++) {
    const double product = slope[i - 1] * slope[i];
    tangent[i] = product > 0 ? 2 * product / (slope[i - 1] + slope[i]) : 0;
  }

  std::vector<float> levels(256);
  for (size_t l = 0; l < levels.size(); l++) {
    const float level = static_cast<float>(l) / 255.0f;
    const auto after = std::ranges::upper_bound(curve, level, {}, [](auto& p) { return p[0]; });
    if (after == curve.begin() || after == curve.end()) {
      levels[l] = after == curve.begin() ? curve.front()[1] : curve.back()[1];
      continue;
    }
    const auto i = static_cast<size_t>(after - curve.begin()) - 1;
    const double width = double{curve[i + 1][0]} - curve[i][0];
    const double t = (double{level} - curve[i][0]) / width, u = 1 - t;
    levels[l] = static_cast<float>(
        u * u * (1 + 2 * t) * curve[i][1] + u * u * t * width * tangent[i] +
        t * t * (1 + 2 * u) * curve[i + 1][1] - t * t * u * width * tangent[i + 1]);
  }
  return levels;
}

}  // namespace catalog
