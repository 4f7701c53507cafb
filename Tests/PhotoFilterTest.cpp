// SPDX-License-Identifier: Apache-2.0
// Photo filter against its definition, sample by sample.
#include <QVEffects/QVEffectsColor.h>
#include <QVEffects/QVEffectsPhotoFilter.h>
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "Naive.h"
#include "TestImage.h"

namespace {

using test::Form;
using test::Pixel;
using test::Residency;
using test::TestImage;

constexpr QVRect kBounds = {-3, 5, 301, 23};
constexpr QVRect kRect = {2, 1, 600, 18};
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
  for (const Form form :
       {Form{8, 3, 0}, {8, 4, 1}, {16, 3, 0}, {16, 4, 1}, {32, 3, 0}, {32, 4, 1}}) {
    const float max = test::FullScale(form.depth);
    for (const Filter& f : kFilters) {
      SCOPED_TRACE(testing::Message() << form << " filter " << &f - kFilters);
      TestImage src(kBounds, form, Residency::kMemory, 1),
          dst(kBounds, form, Residency::kMemory, 2);
      std::vector<std::byte> expected = dst.Bytes();
      for (int y = 5; y < 28; y++) {
        for (int x = -3; x < 298; x++) {
          if (!test::Contains(kRect, x, y)) continue;
          Pixel pixel = test::NearestPixel(src, x, y);
          float c[3];
          for (int i = 0; i < 3; i++) {
            c[i] = test::GetSample(pixel, i, form.depth) * test::UnitScale(form.depth);
          }
          if (f.saturation != 0) Saturation(c, f.saturation);
          const bool both = f.type == 2 || f.type == 4;
          const float t = f.type == 0 ? 1 : Position(f, x, y);
          const float o = f.type == 0 ? f.amountA
                          : both      ? t * f.amountA + (1 - t) * f.amountB
                                      : t * f.amountA;
          for (int i = 0; i < 3; i++) {
            const float k = f.contrast;
            const float v = ((-2 * k * c[i] + 3 * k) * c[i] + (1 - k)) * c[i];
            const float b = Blend(f.mode, both ? kA[i] * t + kB[i] * (1 - t) : kA[i], v);
            test::SetSample(pixel, i, form.depth, v * (max - o * max) + b * (o * max));
          }
          test::PutPixel(expected, dst, x, y, pixel);
        }
      }
      ASSERT_EQ(RunFilter(src, dst, kRect, f), kQVStatusSuccess);
      EXPECT_TRUE(dst.Bytes() == expected);
    }
  }
}

// A solid filter at amount 1 is a flat picture blended over, in every mode.
TEST(PhotoFilter, TakesAllModes) {
#define CODE(constant, code, name) kQVBlendMode##constant,
  for (const QVBlendMode mode : {QV_BLEND_MODES(CODE)}) {
    TestImage src(kBounds, {8, 3, 0}), flat(kBounds, {8, 3, 0});
    TestImage dst(kBounds, {8, 3, 0}, Residency::kMemory, 2),
        blended(kBounds, {8, 3, 0}, Residency::kMemory, 2);
    constexpr uint8_t kColor[] = {230, 90, 10};
    float color[3];
    for (int c = 0; c < 3; c++) {
      color[c] = static_cast<float>(kColor[c]) * test::UnitScale(8);
      for (int i = 0; i < 301 * 23; i++) flat.At<uint8_t>(-3 + i % 301, 5 + i / 301, c) = kColor[c];
    }
    ASSERT_EQ(QVEffectsBlendImages(flat, src, blended, kBounds, mode), kQVStatusSuccess);
    ASSERT_EQ(
        QVEffectsPhotoFilter(src, dst, kBounds, 0, mode, 0, 0, {}, 0, 0, color, 1, nullptr, 0),
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

// Planes after the third are the destination's own, and the source's where there is transparency.
TEST(PhotoFilter, FurtherPlanes) {
  for (const auto& [planes, transparency, status] :
       {std::tuple{4, 0, 0}, {5, 1, 0}, {6, 0, 0}, {7, 0, 1020}}) {
    constexpr int kPixels = 300;
    std::vector<uint8_t> from(kPixels * planes, 70), to(kPixels * planes, 9);
    __QVImage *src = nullptr, *dst = nullptr;
    for (const auto& [samples, image] : {std::pair{&from, &src}, {&to, &dst}}) {
      ASSERT_EQ(QVImageCreateWithBuffer({0, 0, kPixels, 1}, 8, planes, kQVColorSpaceRGB,
                                        transparency, samples->data(), kPixels * planes, image),
                kQVStatusSuccess);
    }
    const float white[] = {1, 1, 1};
    EXPECT_EQ(QVEffectsPhotoFilter(src, dst, {0, 0, kPixels, 1}, 1, kQVBlendModeNormal, 0, 0,
                                   {270, 0}, 0, 0, white, 1, nullptr, 0),
              status);
    for (int i = 0; i < kPixels * planes && status == 0; i++) {
      const int color = i / planes < 270 ? 70 : (i / planes > 270 ? 255 : 163);
      ASSERT_EQ(to[i], i % planes < 3 ? color : (transparency ? 70 : 9)) << i;
    }
    QVImageRelease(src);
    QVImageRelease(dst);
  }
}

TEST(PhotoFilter, Refuses) {
  TestImage rgb(kBounds, {8, 3, 0}), gray(kBounds, {8, 1, 0}), deep(kBounds, {16, 3, 0});
  const std::vector<std::byte> before = rgb.Bytes();
  const auto run = [](__QVImage* src, __QVImage* dst, int type, unsigned mode, const float* a) {
    return QVEffectsPhotoFilter(src, dst, kBounds, type, static_cast<QVBlendMode>(mode), 0, 0, {},
                                0, 1, a, 1, nullptr, 0);
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
