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
// Longer than a strip or a tile, and over the borders of tiles.
inline constexpr QVRect kColorBounds = {-20, -4, 301, 6};
inline constexpr QVRect kColorRect = {-15, -1, 400, 2};

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

/// What becomes of a pixel's colour samples, on their own scale.
using SampleFormula = std::function<void(float* samples, int colors, int x, int y)>;

/// Makes of dst what a run over kColorRect should, at most so many colours by the formula. Other
/// planes are those of src where there is transparency, else they stay.
inline void MapColors(const TestImage& src, TestImage& dst, const SampleFormula& formula,
                      int most = 3) {
  const auto [depth, planes, transparency] = src.GetForm();
  const int colors = planes - transparency;
  for (int y = kColorBounds.y; y < kColorBounds.y + kColorBounds.height; y++) {
    for (int x = kColorBounds.x; x < kColorBounds.x + kColorBounds.width; x++) {
      if (!Contains(kColorRect, x, y)) continue;
      const Pixel from = NearestPixel(src, x, y);
      Pixel pixel = transparency ? from : NearestPixel(dst, x, y);
      float samples[6] = {};
      for (int c = 0; c < colors; c++) samples[c] = GetSample(from, c, depth);
      formula(samples, colors, x, y);
      for (int c = 0; c < std::min(colors, most); c++) SetSample(pixel, c, depth, samples[c]);
      PutPixel(dst.Bytes(), dst, x, y, pixel);
    }
  }
}

/// Expects dst to be what MapColors() makes, to the bit.
inline void ExpectMapped(Form form, const ColorRun& run, const SampleFormula& formula,
                         int most = 3) {
  SCOPED_TRACE(testing::Message() << form);
  TestImage src(kColorBounds, form, Residency::kMemory, 1);
  TestImage dst(kColorBounds, form, Residency::kMemory, 2);
  TestImage want(kColorBounds, form, Residency::kMemory, 2);
  MapColors(src, want, formula, most);
  ASSERT_EQ(run(src, dst, kColorRect), kQVStatusSuccess);
  EXPECT_TRUE(dst.Bytes() == want.Bytes());
}

/// Runs on all forms and expects each pixel of dst to be what the formula makes of that of src:
/// exactly, but for the sign of a zero or a NaN.
inline void ExpectColors(const ColorRun& run, const ColorFormula& formula) {
  for (const Form form : kRgbForms) {
    SCOPED_TRACE(testing::Message() << form);
    TestImage src(kColorBounds, form, Residency::kMemory, 1);
    TestImage dst(kColorBounds, form, Residency::kMemory, 2);
    TestImage want(kColorBounds, form, Residency::kMemory, 2);
    MapColors(src, want, [&](float* s, int, int, int) {
      const Rgb out = formula({s[0], s[1], s[2]}, UnitScale(form.depth), FullScale(form.depth));
      std::copy_n(out.data(), 3, s);
    });
    ASSERT_EQ(run(src, dst, kColorRect), kQVStatusSuccess);
    for (int y = kColorBounds.y; y < kColorBounds.y + kColorBounds.height; y++) {
      for (int x = kColorBounds.x; x < kColorBounds.x + kColorBounds.width; x++) {
        for (int p = 0; p < form.planes; p++) {
          const double a = want.Value(x, y, p), b = dst.Value(x, y, p);
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

/// Luma and chroma by the definition.
inline Rgb ToYcc(Rgb c) {
  return {PlainLuma(c), c[2] * 0.5f + (c[1] * -0.331264f + c[0] * -0.168736f) + 0.5f,
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
