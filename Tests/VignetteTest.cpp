// SPDX-License-Identifier: Apache-2.0
// Vignettes: their shapes against values worked by hand, their colours against image blending.
#include <QVEffects/QVEffects.h>
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "NaiveColors.h"

namespace {

using test::Form;
using test::FullScale;
using test::GetSample;
using test::Residency;
using test::TestImage;
using test::UnitScale;

constexpr Form kRGBA = {32, 4, 1}, kRGB = {32, 3, 0};
constexpr QVRect kBounds = {-3, 5, 37, 23};
constexpr QVRect kOther = {-1, 4, 30, 22};
constexpr QVRect kRect = {2, 9, 60, 6};

using Function = decltype(&QVEffectsVignette);

struct Shape {
  float size, softness, shape, centerX = 0.5f, centerY = 0.5f;

  int operator()(Function f, __QVImage* src, __QVImage* dst, QVRect rect, float amount,
                 QVBlendMode mode = kQVBlendModeNormal) const {
    return f(src, dst, rect, centerX, centerY, amount, size, softness, shape, mode);
  }
};

float Step(int index) {
  const float t = static_cast<float>(index) / 199;
  return t * t * (3 - t * 2);
}

TEST(Vignette, LayersHaveTheirShape) {
  struct Case {
    int width, height;
    Shape shape;
    std::vector<int> points;  // x, y and the step of the transition there
  };
  const Case cases[] = {
      // An ellipse of radii 51 and 31: a transition from 20 to 41 short pixels from the centre.
      {100, 60, {0.5f, 0.5f, 0.5f}, {50, 30, 0, 80, 30, 0,  0,  30, 98, 50, 0,
                                     98, 50, 8, 22, 20, 10, 69, 0,  0,  199}},
      {60, 100, {0.5f, 0.5f, 0.5f}, {30, 80, 0, 30, 0, 98, 0, 50, 98, 10, 20, 69}},
      {100, 60, {0.5f, 0.5f, 0.5f, 0.75f, 0.25f}, {75, 15, 0, 25, 15, 98, 75, 45, 98}},
      // A circle.
      {100, 60, {0.5f, 0.25f, 1}, {50, 30, 0, 99, 30, 186, 50, 0, 0, 75, 10, 9, 0, 0, 199}},
      // An ellipse cut at the long sides.
      {100,
       40,
       {0.8f, 0.5f, 0.4f},
       {20, 20, 0, 90, 20, 6, 50, 0, 72, 60, 4, 25, 50, 2, 48, 99, 20, 48}},
      // Boxes: edges, then corners.
      {100, 80, {0.5f, 0.5f, 0.25f}, {50, 40, 0,  16,  12, 0,  0,  40, 45, 50, 0, 45, 50, 4,
                                      7,  99, 79, 115, 94, 74, 48, 94, 5,  41, 6, 6,  21}},
      {80, 100, {0, 0.5f, 0.1f}, {40, 50, 0,  0, 50, 156, 40, 0, 156, 79, 50, 171, 40, 99, 171,
                                  8,  50, 43, 0, 0,  199, 6,  6, 117, 74, 95, 167, 5,  95, 158}},
      // Sides below 2 pixels are all transition.
      {7, 1, {0.5f, 0.5f, 0.5f}, {0, 0, 100, 6, 0, 100}},
      {1, 1, {1, 1, 0}, {0, 0, 100}},
  };
  for (const auto& [width, height, shape, points] : cases) {
    for (const float level : {0.0f, 0.25f, 0.5f, 1.0f}) {
      TestImage image({0, 0, width, height}, kRGBA);
      ASSERT_EQ(shape(QVEffectsVignette, image, image, image.Bounds(), level), kQVStatusSuccess);
      for (size_t i = 0; i < points.size(); i += 3) {
        const int x = points[i], y = points[i + 1];
        SCOPED_TRACE(testing::Message() << width << " x " << height << " at " << x << ", " << y);
        EXPECT_EQ(image.At<float>(x, y, 3), std::abs(level - 0.5f) * Step(points[i + 2]) * 2);
        EXPECT_EQ(image.At<float>(x, y, 0), level);
      }
    }
  }
}

TEST(Vignette, StrengthsInTheImageHaveTheirShape) {
  struct Case {
    Shape shape;
    std::vector<double> points;  // x, y and how far along the transition they are
  };
  const double root2 = std::sqrt(2.0), mean = std::sqrt(1700.0);
  const Case cases[] = {
      // An ellipse of radii 50 and 30, from half to one and a half of them.
      {{0.5f, 0.5f, 0},
       {50, 30, 0, 25, 30, 0, 10, 30, 0.3, 0, 30, 0.5, 50, 0, 0.5, 50, 54, 0.3, 0, 0, root2 - 0.5}},
      {{0.5f, 0.5f, 0, 0.25f, 0.75f}, {25, 45, 0, 75, 45, 0.5, 25, 15, 0.5}},
      // A circle of the radii's quadratic mean.
      {{0.5f, 0.5f, 1}, {50, 30, 0, 0, 30, 50 / mean - 0.5, 50, 0, 30 / mean - 0.5}},
      // A box of half sides 35 and 15 with an edge of 2 pixels.
      {{0, 0.5f, -1},
       {50, 30, 0, 85, 30, 0, 86, 30, 0.5, 87, 30, 1, 14, 45, 0.5, 50, 14, 0.5, 86, 46, root2 / 2}},
      // One of 15 and 0 with corners of radius 15.
      {{0, 0.5f, -0.5f}, {60, 30, 0, 74, 30, 0.1, 80, 30, 0.5, 71, 38, 1 / 6.0, 50, 15, 0.5}},
      // No radius: the edge of 2 pixels that is left.
      {{-0.5f, 0.5f, 0}, {50, 30, 0.5, 51, 30, 1, 0, 0, 1}},
  };
  for (const auto& [shape, points] : cases) {
    TestImage image({0, 0, 100, 60}, kRGB);
    const float black[3] = {};
    ASSERT_EQ(QVEffectsFillColor(image, image.Bounds(), black), kQVStatusSuccess);
    ASSERT_EQ(shape(QVEffectsVignetteIn, image, image, image.Bounds(), 0.8f), kQVStatusSuccess);
    for (size_t i = 0; i < points.size(); i += 3) {
      const int x = static_cast<int>(points[i]), y = static_cast<int>(points[i + 1]);
      const double t = points[i + 2], strength = 0.8 * (t * t * t * (t * (6 * t - 15) + 10));
      EXPECT_NEAR(image.At<float>(x, y, 1), strength, 2e-6)
          << "shape " << shape.shape << " at " << x << ", " << y;
    }
  }
}

// Compares a vignette of src over kRect with what each sample should be: expected(pixel of src, its
// colours blended with a gray, x, y, plane), on a scale from 0 to 1.
template <class F>
void ExpectSamples(Function f, const Shape& shape, Form form, float amount, float gray,
                   QVBlendMode mode, F&& expected) {
  SCOPED_TRACE(testing::Message() << form << " mode " << mode << " amount " << amount);
  TestImage src(kOther, form, Residency::kMemory, 1), dst(kBounds, form, Residency::kMemory, 2);
  ASSERT_EQ(shape(f, src, dst, kRect, amount, mode), kQVStatusSuccess);
  for (int y = kRect.y; y < kRect.y + kRect.height; y++) {
    for (int x = kRect.x; x < kBounds.x + kBounds.width; x++) {
      const test::Pixel from = test::NearestPixel(src, x, y), got = test::NearestPixel(dst, x, y);
      test::Rgb colors = {};
      for (int p = 0; p < form.planes - form.transparency; p++) {
        colors[p] = GetSample(from, p, form.depth) * UnitScale(form.depth);
      }
      const test::Rgb blended = test::Blended(mode, {gray, gray, gray}, colors);
      test::Pixel pixel = {};
      for (int p = 0; p < form.planes; p++) {
        const float value = expected(from, blended, x, y, p);
        test::SetSample(pixel, p, form.depth, value * FullScale(form.depth));
        ASSERT_EQ(GetSample(got, p, form.depth), GetSample(pixel, p, form.depth))
            << x << ", " << y << ", plane " << p;
      }
    }
  }
}

bool Takes(QVBlendMode mode, Form form) {
  constexpr QVBlendMode kWholeColor[] = {kQVBlendModeHue,          kQVBlendModeSaturation,
                                         kQVBlendModeColor,        kQVBlendModeLuminosity,
                                         kQVBlendModeLighterColor, kQVBlendModeDarkerColor};
  return form.ColorSpace() == kQVColorSpaceRGB ||
         std::ranges::find(kWholeColor, mode) == std::end(kWholeColor);
}

// The bounds of dst make the shape; a source that isn't there takes the vignette's colour.
TEST(Vignette, LayersTakeAllModes) {
  constexpr Shape kShape = {0.2f, 0.3f, 0.3f};
  TestImage steps(kBounds, kRGBA);
  ASSERT_EQ(kShape(QVEffectsVignette, steps, steps, kBounds, 0), kQVStatusSuccess);
  for (const Form form : test::kForms) {
    for (const QVBlendMode mode : test::kAllModes) {
      if (!Takes(mode, form)) continue;
      for (const float level : {0.0f, 0.3f, 1.0f}) {
        ExpectSamples(QVEffectsVignette, kShape, form, level, level, mode,
                      [&](const test::Pixel& from, const test::Rgb& blended, int x, int y, int p) {
          const int colors = form.planes - form.transparency;
          if (p == colors) return 2 * (std::abs(level - 0.5f) * steps.At<float>(x, y, 3));
          if (mode == kQVBlendModeNormal) return level;
          const float there = GetSample(from, colors, form.depth) * UnitScale(form.depth);
          return form.transparency ? blended[p] * there + level * (1 - there) : blended[p];
        });
      }
    }
  }
}

// The bounds of src make the shape.
TEST(Vignette, ImagesTakeAllModes) {
  constexpr Shape kShape = {0.1f, 0.6f, -0.3f};
  for (const float amount : {-0.7f, 0.0f, 1.0f}) {
    TestImage strengths(kBounds, kRGB), black(kOther, kRGB);
    const float zeros[3] = {};
    ASSERT_EQ(QVEffectsFillColor(black, kOther, zeros), kQVStatusSuccess);
    ASSERT_EQ(kShape(QVEffectsVignetteIn, black, strengths, kBounds, std::abs(amount)),
              kQVStatusSuccess);
    for (const Form form : test::kForms) {
      for (const QVBlendMode mode : test::kAllModes) {
        if (!Takes(mode, form)) continue;
        ExpectSamples(QVEffectsVignetteIn, kShape, form, amount, amount > 0 ? 1 : 0, mode,
                      [&](const test::Pixel& from, const test::Rgb& blended, int x, int y, int p) {
          const float sample = GetSample(from, p, form.depth) * UnitScale(form.depth);
          if (p == form.planes - form.transparency) return sample;
          const float m = strengths.At<float>(x, y, 0);
          return blended[p] * m + sample * (1 - m);
        });
      }
    }
  }
}

TEST(Vignette, AnswersBadArguments) {
  constexpr Shape kShape = {0.5f, 0.5f, 0.5f};
  constexpr auto kReverse = static_cast<QVBlendMode>(0x4E6F726D);
  TestImage src(kBounds, kRGBA), dst(kBounds, kRGBA), other(kBounds, kRGB);
  const std::vector<std::byte> before = dst.Bytes();
  for (const Function f : {QVEffectsVignette, QVEffectsVignetteIn}) {
    for (const QVBlendMode mode : {kQVBlendModeNone, kReverse, static_cast<QVBlendMode>(~0U)}) {
      EXPECT_EQ(kShape(f, src, dst, kBounds, 0, mode), kQVStatusBadArgument);
    }
    EXPECT_EQ(kShape(f, src, nullptr, kBounds, 0), kQVStatusBadArgument);
    EXPECT_EQ(kShape(f, nullptr, dst, kBounds, 0), kQVStatusBadArgument);
    EXPECT_EQ(kShape(f, other, dst, kBounds, 0), kQVStatusUnsupported);
  }
  EXPECT_EQ(dst.Bytes(), before);

  TestImage unread(kBounds, kRGBA, Residency::kCallbacks);
  EXPECT_EQ(kShape(QVEffectsVignette, unread, dst, kBounds, 0), kQVStatusSuccess);
  EXPECT_EQ(unread.Reads(), 0);
}

// Whatever the sides and the parameters, strengths are numbers from none to full.
TEST(Vignette, HasStrengthsOnAllSizes) {
  constexpr float kWild[] = {0, 0.2f, 0.5f, 1, -0.5f, -1, 1.7f, -40, 1e30f, -3e38f};
  for (const auto [width, height] : {QVPoint{0, 0}, {1, 1}, {1, 9}, {9, 1}, {2, 3}, {60, 10}}) {
    for (const float shape : kWild) {
      for (const float size : kWild) {
        for (const float softness : kWild) {
          TestImage image({0, 0, width, height}, kRGBA), black({0, 0, width, height}, kRGB);
          const float zeros[3] = {};
          ASSERT_EQ(QVEffectsFillColor(black, black.Bounds(), zeros), kQVStatusSuccess);
          const Shape s = {size, softness, shape, size, softness};
          ASSERT_EQ(s(QVEffectsVignette, image, image, image.Bounds(), 1), kQVStatusSuccess);
          ASSERT_EQ(s(QVEffectsVignetteIn, black, black, black.Bounds(), 1), kQVStatusSuccess);
          for (int y = 0; y < height; y++) {
            for (int x = 0; x < width; x++) {
              const float layer = image.At<float>(x, y, 3), strength = black.At<float>(x, y, 0);
              ASSERT_TRUE(layer >= 0 && layer <= 1 && strength >= 0 && strength <= 1.000001f)
                  << width << " x " << height << ", " << shape << ", " << size << ", " << softness;
            }
          }
        }
      }
    }
  }

  // A circle so large that floats next to its edge are 4 pixels apart.
  TestImage far({0, 0, 64, 8}, kRGBA);
  constexpr Shape kLarge = {2.5e6f, 0, 1, -1056115.81f};
  ASSERT_EQ(kLarge(QVEffectsVignette, far, far, far.Bounds(), 0), kQVStatusSuccess);
  for (int x = 1; x < 64; x++) ASSERT_GE(far.At<float>(x, 4, 3), far.At<float>(x - 1, 4, 3)) << x;
  EXPECT_EQ(far.At<float>(0, 4, 3), 0);
  EXPECT_EQ(far.At<float>(63, 4, 3), 1);
}

TEST(Vignette, IsNoneWhereAParameterIsNoNumber) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const float wild : {kInfinity, -kInfinity, NAN}) {
    for (int i = 0; i < 6; i++) {
      float p[] = {0.5f, 0.5f, 1, 0.1f, 0.5f, -0.3f};
      p[i] = wild;
      const Shape shape = {p[3], p[4], p[5], p[0], p[1]};
      TestImage image(kBounds, {16, 4, 1}), layer(kBounds, kRGBA);
      const std::vector<std::byte> before = image.Bytes();
      ASSERT_EQ(shape(QVEffectsVignetteIn, image, image, kBounds, p[2]), kQVStatusSuccess);
      EXPECT_EQ(image.Bytes(), before) << wild << " as " << i;
      ASSERT_EQ(shape(QVEffectsVignette, layer, layer, kBounds, p[2]), kQVStatusSuccess);
      for (int x = kBounds.x; x < kBounds.x + kBounds.width; x++) {
        ASSERT_EQ(layer.At<float>(x, 5, 3), 0) << wild << " as " << i;
        ASSERT_EQ(layer.At<float>(x, 5, 0), i == 2 ? 0.5f : 1) << wild;
      }
    }
  }
}

// In modes of the whole colour a fourth plane of a layer is that of src; in the image it's dst's.
TEST(Vignette, FurtherPlanes) {
  const auto owners = [](Function f, Shape shape, QVBlendMode mode) {
    return test::OwnersOfFourth(
        [=](auto src, auto dst, QVRect rect) { return shape(f, src, dst, rect, 1, mode); });
  };
  constexpr Shape kFull = {-0.5f, 0, 0, -9}, kClear = {100, 0, 0};
  for (const Shape& shape : {kFull, kClear}) {
    EXPECT_EQ(owners(QVEffectsVignetteIn, shape, kQVBlendModeNormal), "dsds");
  }
  EXPECT_EQ(owners(QVEffectsVignette, kFull, kQVBlendModeDarkerColor)[0], 's');

  // In every strip of a row.
  constexpr QVRect kRow = {0, 0, 300, 1};
  std::vector<uint8_t> samples(kRow.width * 4, 70);
  __QVImage* image = nullptr;
  QVImageCreateWithBuffer(kRow, 8, 4, kQVColorSpaceRGB, 0, samples.data(), kRow.width * 4, &image);
  EXPECT_EQ(kFull(QVEffectsVignette, image, image, kRow, 0, kQVBlendModeDarkerColor), 0);
  for (size_t i = 0; i < samples.size(); i++) ASSERT_EQ(samples[i], i % 4 == 3 ? 70 : 0) << i;
  QVImageRelease(image);
}

}  // namespace
