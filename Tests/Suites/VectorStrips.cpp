// SPDX-License-Identifier: Apache-2.0
// Vector code of our own against the formula of a sample.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <span>
#include <vector>

#include "Utils/Strips.h"

namespace {

using qv::Strip;

constexpr int kCounts[] = {0, 1, 7, 8, 9, 23, 24, 31, 255, 256};

template <class T>
void ExpectLoadsAndStores(int planes) {
  constexpr float kMax = qv::Sample<T>::kMax;
  std::mt19937 random(planes);
  // From an odd place of a vector on.
  std::vector<T> all(static_cast<size_t>(planes) * qv::kStripPixels + 1);
  for (T& sample : all) sample = static_cast<T>(random());
  const std::span<const T> row = std::span(all).subspan(1);
  Strip values;
  const float odd[] = {std::numeric_limits<float>::quiet_NaN(),
                       std::numeric_limits<float>::infinity(),
                       -std::numeric_limits<float>::infinity(),
                       3e9f,
                       -3e9f,
                       1e20f,
                       -1e20f,
                       kMax,
                       kMax + 0.5f,
                       -0.5f,
                       -0.51f,
                       0.49999997f};
  for (int c = 0; c < planes; c++) {
    for (int i = 0; i < qv::kStripPixels; i++) {
      values[c][i] = std::uniform_real_distribution(-0.1f * kMax, 1.1f * kMax)(random);
    }
    for (size_t k = 0; k < std::size(odd); k++)
      values[c][17 * k + 5 * static_cast<size_t>(c)] = odd[k];
  }

  for (const int pixels : kCounts) {
    Strip unit, asIs;
    qv::LoadSamples<T>(row.data(), planes, pixels, unit);
    qv::LoadUnscaled<T>(row.data(), planes, pixels, asIs);
    std::vector<T> target(all.size(), 7);
    const std::span<T> stored = std::span(target).subspan(1);
    qv::StoreSamples<T>(stored.data(), planes, pixels, values);
    for (int c = 0; c < planes; c++) {
      for (int i = 0; i < qv::kStripPixels; i++) {
        const bool isIn = i < pixels;
        const size_t at = static_cast<size_t>(i * planes + c);
        ASSERT_EQ(unit[c][i], isIn ? qv::ToUnit(row[at]) : 0.0f) << planes << " " << pixels;
        ASSERT_EQ(asIs[c][i], isIn ? static_cast<float>(row[at]) : 0.0f) << planes << " " << pixels;
        ASSERT_EQ(stored[at], isIn ? qv::Rounded<T>(values[c][i]) : T{7})
            << planes << " " << pixels << ": " << values[c][i];
      }
    }
  }
}

TEST(Strips, TakeSamplesThereAndBackInEveryLayout) {
  for (int planes = 1; planes <= qv::kStripPlanes; planes++) {
    ExpectLoadsAndStores<uchar>(planes);
    ExpectLoadsAndStores<ushort>(planes);
  }
}

}  // namespace
