// SPDX-License-Identifier: Apache-2.0
// What effects on the colours of RGB images give, pixel by pixel.
#pragma once

#include <QVEffects/QVEffectsBlend.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>

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

/// Whose fourth sample a pixel of dst holds after a run, s or d, where neither image has
/// transparency, dst has, src has, and both have.
inline std::string OwnersOfFourth(const ColorRun& run) {
  std::string owners;
  for (const auto& [ofSrc, ofDst] : {std::pair{0, 0}, {0, 1}, {1, 0}, {1, 1}}) {
    uint8_t from[4] = {200, 100, 50, 's'}, to[4] = {1, 1, 1, 'd'};
    __QVImage *src = nullptr, *dst = nullptr;
    QVImageCreateWithBuffer(kPixel, 8, 4, kQVColorSpaceRGB, ofSrc, from, 4, &src);
    QVImageCreateWithBuffer(kPixel, 8, 4, kQVColorSpaceRGB, ofDst, to, 4, &dst);
    EXPECT_EQ(run(src, dst, kPixel), kQVStatusSuccess);
    owners += static_cast<char>(to[3]);
    QVImageRelease(src);
    QVImageRelease(dst);
  }
  return owners;
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

/// Luma and chroma by the definition: the sums from blue to red.
inline float Luma(Rgb c) { return c[2] * 0.114f + (c[1] * 0.587f + c[0] * 0.299f); }

inline Rgb ToYcc(Rgb c) {
  return {Luma(c), c[2] * 0.5f + (c[1] * -0.331264f + c[0] * -0.168736f) + 0.5f,
          c[2] * -0.081312f + (c[1] * -0.418688f + c[0] * 0.5f) + 0.5f};
}

inline Rgb FromYcc(Rgb ycc) {
  const float y = ycc[0], cb = ycc[1] - 0.5f, cr = ycc[2] - 0.5f;
  return {std::clamp(cr * 1.402f + y, 0.0f, 1.0f),
          std::clamp(cr * -0.714136f + (cb * -0.344136f + y), 0.0f, 1.0f),
          std::clamp(cb * 1.772f + y, 0.0f, 1.0f)};
}

/// What the tone model of the toner and of film makes of a gray: the colour less its gray, times
/// `share`, plus `white`.
struct TonedGray {
  Rgb color = {1, 1, 1};
  float share = 1, white = 0;
};

inline TonedGray ToneGray(const Rgb& color, float y) {
  const float lo = std::min({color[0], color[1], color[2]});
  const float hi = std::max({color[0], color[1], color[2]});
  TonedGray toned;
  float luma = 1, span = 1, inverse = 0;
  if (lo < hi) {
    toned.color = {color[0] - lo, color[1] - lo, color[2] - lo};
    luma = PlainLuma(toned.color);
    span = hi - lo;
    inverse = 1 / (span - luma);
  }
  if (y <= luma) {
    toned.share = y * (1 / luma);
  } else if (y - luma > 1 - span) {
    toned.share = (1 - y) * inverse;
    toned.white = 1 - span * toned.share;
  } else {
    toned.white = y - luma;
  }
  return toned;
}

#define QV_MODE_CODE(constant, code, name) kQVBlendMode##constant,
inline constexpr QVBlendMode kAllModes[] = {QV_BLEND_MODES(QV_MODE_CODE)};
#undef QV_MODE_CODE

}  // namespace test
