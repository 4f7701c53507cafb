// SPDX-License-Identifier: Apache-2.0
// Photo filter against its definition, sample by sample.
#include <QVEffects/QVEffects.h>
#include <gmock/gmock.h>

#include <cmath>

#include "NaiveColors.h"

namespace {

using test::TestImage;

constexpr float kA[] = {0.9f, 0.5f, 0.1f}, kB[] = {0.2f, 0.4f, 0.8f};

struct Filter {
  int type;
  QVBlendMode mode;
  float saturation, contrast;
  QVPointF center;
  float angleOrRadius, width, amountA, amountB;
};

int RunFilter(__QVImage* src, __QVImage* dst, QVRect rect, const Filter& f) {
  const float* b = f.type == 2 || f.type == 4 ? kB : nullptr;
  return QVEffectsPhotoFilter(src, dst, rect, f.type, f.mode, f.saturation, f.contrast, f.center,
                              f.angleOrRadius, f.width, kA, f.amountA, b, f.amountB);
}

float Position(const Filter& f, int x, int y) {
  const float dx = static_cast<float>(x) - f.center.x, dy = static_cast<float>(y) - f.center.y;
  float t;
  if (f.type <= 2) {
    const double a = static_cast<double>(f.angleOrRadius) * 3.1415927 / 180;
    const auto cx = static_cast<float>(std::cos(a) / static_cast<double>(f.width));
    const auto cy = static_cast<float>(std::sin(a) / static_cast<double>(f.width));
    t = (dx * cx + dy * cy) * 0.5f + 0.5f;
  } else {
    t = (std::sqrt(dx * dx + dy * dy) - f.angleOrRadius) * (1 / f.width) * 0.5f + 0.5f;
  }
  return t < 0 ? 0 : (t > 1 ? 1 : t);
}

float Blend(QVBlendMode mode, float upper, float lower) {
  if (mode == kQVBlendModeNormal) return upper;
  return mode == kQVBlendModeMultiply ? upper * lower : std::min(upper, lower);
}

TEST(PhotoFilter, IsExact) {
  constexpr Filter kFilters[] = {
      {0, kQVBlendModeNormal, 0, 0, {}, 0, 0, 0.3f, 0},
      {0, kQVBlendModeMultiply, 0.4f, 0.7f, {}, 0, 0, 1, 0},
      {1, kQVBlendModeNormal, 0, 0.5f, {40, 9}, 30, 25, 0.6f, 0},
      {1, kQVBlendModeDarken, -0.5f, 0, {100, 12}, 200, -60, 1, 0},
      {2, kQVBlendModeMultiply, 0.3f, 1, {140.5f, 9.25f}, -75, 8, 0.8f, 0.2f},
      {3, kQVBlendModeNormal, 0, 0, {120, 15}, 50, 30, 0.7f, 0},
      {3, kQVBlendModeMultiply, 0.9f, 0.2f, {60, 40}, 0, 90, 0.7f, 0},
      {4, kQVBlendModeDarken, -1, 0.6f, {-20, 0}, 200, 45, 0.4f, 0.9f},
  };
  for (const test::Form form : test::kRgbForms) {
    const float unit = test::UnitScale(form.depth), max = test::FullScale(form.depth);
    for (const Filter& f : kFilters) {
      SCOPED_TRACE(testing::Message() << "filter " << &f - kFilters);
      test::ExpectMapped(form, [&](auto src, auto dst, QVRect rect) {
        return RunFilter(src, dst, rect, f);
      }, [&](float* c, int, int x, int y) {
        for (int i = 0; i < 3; i++) c[i] *= unit;
        if (f.saturation != 0) Saturation(c, f.saturation);
        const bool both = f.type == 2 || f.type == 4;
        const float t = f.type == 0 ? 1 : Position(f, x, y);
        const float o = t * f.amountA + (both ? (1 - t) * f.amountB : 0);
        for (int i = 0; i < 3; i++) {
          const float k = f.contrast;
          const float v = ((-2 * k * c[i] + 3 * k) * c[i] + (1 - k)) * c[i];
          const float b = Blend(f.mode, both ? kA[i] * t + kB[i] * (1 - t) : kA[i], v);
          c[i] = v * (max - o * max) + b * (o * max);
        }
      });
    }
  }
}

// A solid filter at amount 1 is a flat picture blended over, in every mode.
TEST(PhotoFilter, TakesAllModes) {
  const float unit = test::UnitScale(8), color[] = {230 * unit, 90 * unit, 10 * unit};
  for (const QVBlendMode mode : test::kAllModes) {
    TestImage src(test::kColorBounds, {8, 3, 0}), flat(test::kColorBounds, {8, 3, 0});
    TestImage dst(test::kColorBounds, {8, 3, 0}), blended(test::kColorBounds, {8, 3, 0});
    ASSERT_EQ(QVEffectsFillColor(flat, flat.Bounds(), color), kQVStatusSuccess);
    ASSERT_EQ(QVEffectsBlendImages(flat, src, blended, src.Bounds(), mode), kQVStatusSuccess);
    ASSERT_EQ(
        QVEffectsPhotoFilter(src, dst, src.Bounds(), 0, mode, 0, 0, {}, 0, 0, color, 1, nullptr, 0),
        kQVStatusSuccess);
    EXPECT_TRUE(dst.Bytes() == blended.Bytes()) << mode;
  }
}

// A width of 0 is a hard edge, in any direction and at any radius.
TEST(PhotoFilter, HardEdges) {
  const float white[] = {1, 1, 1};
  for (const float width : {0.0f, -0.0f, 1e-42f, -1e-30f, std::nanf("")}) {
    TestImage black({-20, -20, 41, 41}, {32, 3, 0}), dst({-20, -20, 41, 41}, {32, 3, 0});
    std::ranges::fill(black.Bytes(), std::byte{0});
    const auto at = [&](int x, int y) { return dst.Value(x, y, 1); };
    for (const int quarter : {0, 1, 2, 3}) {
      const float angle = static_cast<float>(quarter) * 90;
      ASSERT_EQ(QVEffectsPhotoFilter(black, dst, black.Bounds(), 1, kQVBlendModeNormal, 0, 0,
                                     {3, 3}, angle, width, white, 1, nullptr, 0),
                0);
      for (int away = -17; away <= 17; away++) {
        const int along = quarter < 2 ? away : -away;
        const double got = quarter % 2 ? at(-20, 3 + along) : at(3 + along, -20);
        const int side = width < 0 ? -away : away;
        ASSERT_EQ(got, side < 0 ? 0 : (side > 0 ? 1 : 0.5)) << angle << ' ' << away;
      }
    }
    ASSERT_EQ(QVEffectsPhotoFilter(black, dst, black.Bounds(), 3, kQVBlendModeNormal, 0, 0, {0, 0},
                                   5, width, white, 1, nullptr, 0),
              0);
    EXPECT_EQ(at(3, 4), 0.5);
    EXPECT_EQ(at(3, 3), width < 0);
    EXPECT_EQ(at(-4, 4), !(width < 0));
  }
}

TEST(PhotoFilter, FurtherPlanes) {
  const auto run = [](auto src, auto dst, QVRect rect) {
    return QVEffectsPhotoFilter(src, dst, rect, 0, kQVBlendModeNormal, 0, 0, {}, 0, 0, kA, 1,
                                nullptr, 0);
  };
  EXPECT_EQ(test::OwnersOfFourth(run), "dsds");
  uint8_t samples[7] = {};
  __QVImage* wide = nullptr;
  QVImageCreateWithBuffer(test::kPixel, 8, 7, kQVColorSpaceRGB, 0, samples, 7, &wide);
  EXPECT_EQ(run(wide, wide, test::kPixel), kQVStatusUnsupported);
  QVImageRelease(wide);
}

TEST(PhotoFilter, Refuses) {
  using test::kPixel;
  TestImage rgb(kPixel, {8, 3, 0}), gray(kPixel, {8, 1, 0}), deep(kPixel, {16, 3, 0});
  const std::vector<std::byte> before = rgb.Bytes();
  const auto run = [](__QVImage* src, __QVImage* dst, int type, unsigned mode, const float* a) {
    return QVEffectsPhotoFilter(src, dst, kPixel, type, static_cast<QVBlendMode>(mode), 0, 0, {}, 0,
                                1, a, 1, nullptr, 0);
  };
  constexpr unsigned kNormal = kQVBlendModeNormal;
  EXPECT_EQ(run(rgb, rgb, 0, 0, kA), kQVStatusBadArgument);
  EXPECT_EQ(run(rgb, rgb, 0, kNormal & ~0x20000000u, kA), kQVStatusBadArgument) << "reverse";
  EXPECT_EQ(run(rgb, rgb, -1, kNormal, kA), kQVStatusBadArgument);
  EXPECT_EQ(run(rgb, rgb, 5, kNormal, kA), kQVStatusBadArgument);
  EXPECT_EQ(run(rgb, rgb, 0, kNormal, nullptr), kQVStatusBadArgument);
  EXPECT_EQ(run(rgb, rgb, 2, kNormal, kA), kQVStatusBadArgument) << "no second colour";
  EXPECT_EQ(run(gray, gray, 5, 0, kA), kQVStatusBadArgument) << "the mode comes first";
  EXPECT_EQ(run(gray, gray, 5, kNormal, kA), kQVStatusUnsupported) << "the type comes last";
  EXPECT_EQ(run(rgb, deep, 0, kNormal, kA), kQVStatusUnsupported);
  EXPECT_TRUE(rgb.Bytes() == before);
}

}  // namespace
