// SPDX-License-Identifier: Apache-2.0
// How far effects read: the reaches that several of them have. Radii may be anything; a reach is 0
// to INT_MAX, and 0 of NaN.
#pragma once

#include <algorithm>

#include "GaussianKernel.h"
#include "VRect.h"

namespace qv {

/// Of kernels with the radius rounded to nearest.
inline int RoundedOutset(float radius) {
  return std::max(TruncateToInt(static_cast<double>(radius) + 0.5), 0);
}

/// Of the true Gaussian blur.
inline int TrueGaussianOutset(float radius) { return std::max(GaussianRadius(radius), 0); }

/// Of the fast Gaussian blur.
inline int FastGaussianOutset(float radius) {
  const GaussianBoxes boxes(radius > 0.0f ? radius : 0.0f);
  return VRect::Held(boxes.first + 2 * int64_t{boxes.other});
}

/// Of the Gaussian blur that is the true one below a radius of 10 and the fast one from there on.
inline int GaussianOutset(float radius) {
  return radius < 10.0f ? TrueGaussianOutset(radius) : FastGaussianOutset(radius);
}

}  // namespace qv
