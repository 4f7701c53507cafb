// SPDX-License-Identifier: Apache-2.0
// The three sample types: their scale, and how they become floats from 0 to 1 and back.
#pragma once

#include <type_traits>

using uchar = unsigned char;
using ushort = unsigned short;

namespace qv {

/// A sample type: full scale, and what a sample is multiplied with to become a float. Multiplying
/// with the rounded reciprocal isn't the same as dividing.
template <class T>
struct Sample;

template <>
struct Sample<uchar> {
  static constexpr float kMax = 255.0f;
  static constexpr float kToUnit = 1.0f / 255.0f;
};

template <>
struct Sample<ushort> {
  static constexpr float kMax = 65535.0f;
  static constexpr float kToUnit = 1.0f / 65535.0f;
};

template <>
struct Sample<float> {
  static constexpr float kMax = 1.0f;
  static constexpr float kToUnit = 1.0f;
};

/// A sample as a float from 0 to 1.
template <class T>
float ToUnit(T sample) {
  if constexpr (std::is_floating_point_v<T>) {
    return sample;
  } else {
    return static_cast<float>(sample) * Sample<T>::kToUnit;
  }
}

/// Truncates a value on the scale of T. What doesn't fit is held to the range; NaN becomes 0.
template <class T>
T Truncate(float value) {
  value = value > 0.0f ? value : 0.0f;
  value = value < Sample<T>::kMax ? value : Sample<T>::kMax;
  return static_cast<T>(static_cast<int>(value));
}

/// The sample of a value on its own scale: an integer rounded to nearest, half up; a float as it
/// is.
template <class T>
T Rounded(float value) {
  if constexpr (std::is_floating_point_v<T>) {
    return value;
  } else {
    return Truncate<T>(value + 0.5f);
  }
}

/// The sample of a float from 0 to 1.
template <class T>
T FromUnit(float value) {
  return Rounded<T>(value * Sample<T>::kMax);
}

}  // namespace qv
