// SPDX-License-Identifier: Apache-2.0
// The outset query. That its answers are right for the effects is a suite over the catalog.
#include <QVEffects/QVEffects.h>
#include <gtest/gtest.h>

#include <climits>
#include <limits>

#include "Utils/Outset.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

int Ask(auto* function, float radius) {
  return QVEffectsGetOutset(reinterpret_cast<void*>(function), radius);
}

TEST(Outset, Query) {
  for (const float radius : {0.0f, 9.0f, -5.0f, kNaN, kInfinity}) {
    EXPECT_EQ(Ask(QVEffectsInvert, radius), 0);
    EXPECT_EQ(Ask(QVEffectsGetAvgColor, radius), 0);
    EXPECT_EQ(Ask(QVEffectsBlendImages, radius), 0);
    EXPECT_EQ(Ask(QVEffectsGetOutset, radius), -1);
    EXPECT_EQ(QVEffectsGetOutset(nullptr, radius), -1);
  }
}

TEST(Outset, QueryOfBlurs) {
  EXPECT_EQ(Ask(QVEffectsBoxBlur, 5), 5);
  EXPECT_EQ(Ask(QVEffectsBoxBlurInt, 5.5f), 6);
  EXPECT_EQ(Ask(QVEffectsGaussianBlur, 9.9f), 25);
  EXPECT_EQ(Ask(QVEffectsGaussianBlur, 10), 27);
  EXPECT_EQ(Ask(QVEffectsGaussianBlurFastWithAmount, 9.9f), 27);
  EXPECT_EQ(Ask(QVEffectsGaussianBlurTrue, 10), 25);
  EXPECT_EQ(Ask(QVEffectsBoxBlurWithAmount, 5), -1);  // its box may lie anywhere
}

TEST(Outset, Forms) {
  const struct {
    float radius;
    int rounded, gaussian, fast;
  } cases[] = {
      {0, 0, 0, 0},
      {-3, 0, 0, 0},
      {kNaN, 0, 0, 0},
      {0.5f, 1, 1, 1},       // 0.4545: sqrt(0.62)
      {1.0f, 1, 3, 2},       // 0.909: sqrt(2.479)
      {9.9f, 10, 25, 27},    // 9: sqrt(243 - 162) is 9
      {10, 10, 27, 27},      // 9.0909: sqrt(247.9 - 162) is 9.27
      {100, 100, 273, 273},  // 90.909: sqrt(24793 - 16200) is 92.7
      {3e9f, INT_MAX, INT_MAX, INT_MAX},
      {kInfinity, INT_MAX, INT_MAX, INT_MAX},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(qv::RoundedOutset(c.radius), c.rounded) << c.radius;
    EXPECT_EQ(qv::GaussianOutset(c.radius), c.gaussian) << c.radius;
    EXPECT_EQ(qv::FastGaussianOutset(c.radius), c.fast) << c.radius;
  }
}

}  // namespace
