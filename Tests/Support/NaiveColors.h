// SPDX-License-Identifier: Apache-2.0
// What effects on the colours of RGB images give, pixel by pixel.
#pragma once

#include <QVEffects/QVEffectsBlend.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "Naive.h"

namespace test {

using Rgb = std::array<float, 3>;

inline constexpr Form kRgbForms[] = {{8, 3, 0},  {8, 4, 1},  {16, 3, 0},
                                     {16, 4, 1}, {32, 3, 0}, {32, 4, 1}};
inline constexpr QVRect kColorBounds = {-3, 5, 301, 6};  // longer than a strip

inline constexpr QVRect kPixel = {0, 0, 1, 1};

using ColorRun = std::function<int(__QVImage* src, __QVImage* dst, QVRect rect)>;
/// From samples on their own scale to values on that scale; `unit` and `max` are the scale.
using ColorFormula = std::function<Rgb(Rgb samples, float unit, float max)>;

/// A formula on colours from 0 to 1.
inline ColorFormula OnUnit(std::function<Rgb(Rgb)> formula) {
  return [formula](Rgb s, float unit, float max) {
    const Rgb c = formula({s[0] * unit, s[1] * unit, s[2] * unit});
    return Rgb{c[0] * max, c[1] * max, c[2] * max};
  };
}

/// Runs on all forms and expects each pixel of dst to be what the formula makes of that of src:
/// exactly, but for the sign of a zero or a NaN.
inline void ExpectColors(const ColorRun& run, const ColorFormula& formula) {
  for (const Form form : kRgbForms) {
    SCOPED_TRACE(testing::Message() << form);
    const auto [depth, planes, transparency] = form;
    TestImage src(kColorBounds, form, Residency::kMemory, 1);
    TestImage dst(kColorBounds, form, Residency::kMemory, 2);
    const TestImage before(kColorBounds, form, Residency::kMemory, 2);
    const QVRect rect = {1, 8, 400, 2};
    ASSERT_EQ(run(src, dst, rect), kQVStatusSuccess);
    for (int y = kColorBounds.y; y < kColorBounds.y + kColorBounds.height; y++) {
      for (int x = kColorBounds.x; x < kColorBounds.x + kColorBounds.width; x++) {
        Pixel want = NearestPixel(Contains(rect, x, y) ? src : before, x, y);
        const Pixel got = NearestPixel(dst, x, y);
        if (Contains(rect, x, y)) {
          const Rgb out = formula(
              {GetSample(want, 0, depth), GetSample(want, 1, depth), GetSample(want, 2, depth)},
              UnitScale(depth), FullScale(depth));
          for (int p = 0; p < 3; p++) SetSample(want, p, depth, out[p]);
        }
        for (int p = 0; p < planes; p++) {
          const float a = GetSample(want, p, depth), b = GetSample(got, p, depth);
          ASSERT_TRUE(a == b || (std::isnan(a) && std::isnan(b)))
              << a << ' ' << b << " at " << x << ',' << y << ',' << p;
        }
      }
    }
  }
}

/// What an effect makes of a single float pixel in place.
inline Rgb Becomes(Rgb color, const std::function<int(__QVImage*)>& run) {
  TestImage image(kPixel, {32, 3, 0});
  std::memcpy(image.Address(0, 0), color.data(), sizeof color);
  EXPECT_EQ(run(image), kQVStatusSuccess);
  std::memcpy(color.data(), image.Address(0, 0), sizeof color);
  return color;
}

/// What a mode makes of single colours, by blending two images.
inline Rgb Blended(QVBlendMode mode, Rgb upper, Rgb lower) {
  static TestImage a(kPixel, {32, 3, 0}), b(kPixel, {32, 3, 0}), r(kPixel, {32, 3, 0});
  std::memcpy(a.Address(0, 0), upper.data(), sizeof upper);
  std::memcpy(b.Address(0, 0), lower.data(), sizeof lower);
  EXPECT_EQ(QVEffectsBlendImages(a, b, r, kPixel, mode), kQVStatusSuccess);
  Rgb result;
  std::memcpy(result.data(), r.Address(0, 0), sizeof result);
  return result;
}

inline float PlainLuma(Rgb c) { return 0.299f * c[0] + 0.587f * c[1] + 0.114f * c[2]; }

#define QV_MODE_CODE(constant, code, name) kQVBlendMode##constant,
inline constexpr QVBlendMode kAllModes[] = {QV_BLEND_MODES(QV_MODE_CODE)};
#undef QV_MODE_CODE

}  // namespace test
