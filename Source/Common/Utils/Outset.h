// SPDX-License-Identifier: Apache-2.0
// How far effects read: the reaches that several of them have. Radii may be anything; a reach is 0
// to INT_MAX, and 0 of NaN.
#pragma once

#include <QVCore9/QVExport.h>

#include <algorithm>
#include <limits>

namespace qv {

/// A reach in whole pixels, truncated.
inline int WholePixels(double reach) {
  constexpr double kMost = std::numeric_limits<int>::max();
  return reach > 0.0 ? static_cast<int>(std::min(reach, kMost)) : 0;
}

/// Of kernels with the radius rounded to nearest.
inline int RoundedOutset(float radius) { return WholePixels(static_cast<double>(radius) + 0.5); }

/// Of Gaussian kernels, cut off where they no longer count.
QVEFFECTS_API int TrueGaussianOutset(float radius);

/// Of three boxes in a row that come close to a Gaussian.
QVEFFECTS_API int FastGaussianOutset(float radius);

/// Of the Gaussian blur that is a true one below a radius of 10 and a fast one from there on.
QVEFFECTS_API int GaussianOutset(float radius);

}  // namespace qv
