// SPDX-License-Identifier: Apache-2.0
// The reach of the two Gaussian blurs, and the kernel of the true one.
#pragma once

#include <QVCore9/QVExport.h>

#include <cmath>
#include <limits>

namespace qv {

/// Truncates a double; NaN becomes 0, what doesn't fit is held to the range.
inline int TruncateToInt(double value) {
  constexpr double kMax = std::numeric_limits<int>::max();
  value = value > -kMax ? value : (value <= -kMax ? -kMax : 0.0);
  return static_cast<int>(value < kMax ? value : kMax);
}

/// Taps on each side of the middle of a Gaussian kernel: 2.5 sigma, rounded.
inline int GaussianRadius(float sigma) {
  return TruncateToInt(static_cast<double>(2.5f * sigma) + 0.5);
}

/// The radii of three boxes that together have the variance of a Gaussian of sigma radius / 1.1:
/// first^2 + 2 other^2 is about 3 sigma^2.
struct GaussianBoxes {
  int first;
  int other;  // of the second and the third

  explicit GaussianBoxes(float radius) {
    const float sigma = radius / 1.1f;
    other = TruncateToInt(static_cast<double>(sigma));
    const auto k = static_cast<float>(other);
    const float square = 3.0f * sigma * sigma + (-2.0f * k) * k;
    first = TruncateToInt(std::sqrt(static_cast<double>(square)) + 0.5);
  }
};

}  // namespace qv

/// The weights of a Gaussian from -R to R, R being qv::GaussianRadius(sigma); they add up to 1.
/// @param filter receives an array for the caller to delete[], or null.
/// @param size   receives the number of weights, 2 R + 1.
/// @return 0, or kQVStatusUnknown3 when memory is short or R is below 0 or above 2^29.
QVEFFECTS_API int _CreateGauusianFilter(float sigma, float*& filter, int& size);
