// SPDX-License-Identifier: Apache-2.0
// Vector code of our own against the formula of a sample.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "Utils/Strips.h"

namespace {

using qv::Strip;

constexpr int kCounts[] = {0, 1, 7, 8, 9, 23, 24, 31, 255, 256};

template <class T>
void ExpectLoadsAndStores(int planes) {
  constexpr float kMax = qv::Sample<T>::kMax;
  std::mt19937 random(planes);
  std::vector<T> row(static_cast<size_t>(planes) * qv::kStripPixels);
  for (T& sample : row) sample = static_cast<T>(random());
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
    for (const float value : odd) values[c][random() % qv::kStripPixels] = value;
  }

  for (const int pixels : kCounts) {
    Strip unit, asIs;
    qv::LoadSamples<T>(row.data(), planes, pixels, unit);
    qv::LoadUnscaled<T>(row.data(), planes, pixels, asIs);
    std::vector<T> stored(row.size(), 7);
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
#ifdef __AVX2__
  if (!__builtin_cpu_supports("avx2")) GTEST_SKIP() << "compiled for AVX2";
#endif
  for (int planes = 1; planes <= qv::kStripPlanes; planes++) {
    ExpectLoadsAndStores<uchar>(planes);
    ExpectLoadsAndStores<ushort>(planes);
  }
}

}  // namespace
