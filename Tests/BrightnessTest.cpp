// SPDX-License-Identifier: Apache-2.0
// Brightness and contrast against their definitions, sample by sample.
#include <QVEffects/QVEffectsBrightness.h>
#include <QVEffects/QVEffectsCurves.h>
#include <gmock/gmock.h>

#include <cmath>
#include <functional>

#include "Naive.h"
#include "TestImage.h"

namespace {

using test::Form;
using test::Pixel;
using test::Residency;
using test::TestImage;

constexpr QVRect kBounds = {-3, 5, 37, 23};
constexpr QVRect kMaskBounds = {-1, 4, 30, 22};

float B(float x, float b) {
  const float t = b + b;
  const float k = t > 0 ? 1 / (t + 1) : 1 - t;
  return x / ((1 - k) * x + k);
}

float S(float x, float c) {
  if (c >= 0) {
    if (x < 0.5f) return (1 - c) * x + (c + c) * x * x;
    const float y = 1 - x;
    return 1 - (y * (1 - c) + (c + c) * y * y);
  }
  const float d = c + 1, e = -2 * c;
  const auto inverse = [d, e](float z) {
    const double root = std::sqrt(static_cast<double>((4 * e) * z + d * d));
    return static_cast<float>(root - static_cast<double>(d)) / (e + e);
  };
  return x < 0.5f ? inverse(x) : 1 - inverse(1 - x);
}

float M(float x, float p) {
  const float m = p >= 0 ? p + 1 : 1 / (1 - p);
  const float a = (1 - m) + (1 - m), q = (m - 1) * 4;
  if (x < 0.5f) return (a * x + q * x * x + 1) * x;
  const float y = 1 - x;
  return 1 - (a * y + q * y * y + 1) * y;
}

float MidtoneAlt(float x, float p) {
  if (p < -1) return S(M(x, -2), p + 1);
  return p > 1 ? S(M(x, 2), p - 1) : M(x, p + p);
}

float Gain(float y, float g) {
  const float v = g > 0 ? y * (g + 1) : y + g * 0.5f;
  return v < 0 ? 0 : (v > 1 ? 1 : v);
}

// An effect: how it's called, what it makes of x without a mask and with one (by m or g).
struct Effect {
  const char* name;
  std::function<int(__QVImage*, __QVImage*, __QVImage*, QVRect, float, float)> run;
  std::function<int(int, float*, float, float)> makeCurves;
  float (*plain)(float x, float b, float c);
  float (*masked)(float x, float m, float b, float c);
  bool isBipolar = false;
};

const Effect kEffects[] = {
    {"brightness and contrast",
     [](auto src, auto dst, auto mask, QVRect rect, float b, float c) {
  return mask ? QVEffectsBrightnessContrastWithMask(src, dst, mask, rect, b, c)
              : QVEffectsBrightnessContrast(src, dst, rect, b, c);
}, QVEffectsBrightnessContrastMakeCurves,
     [](float x, float b, float c) { return c > 0 ? S(B(x, b), c) : B(S(x, c), b); },
     [](float x, float m, float b, float c) {
  return c * m > 0 ? S(B(x, b * m), c * m) : B(S(x, c * m), b * m);
}},
    {"brightness and midtone contrast",
     [](auto src, auto dst, auto mask, QVRect rect, float b, float c) {
  return mask ? QVEffectsBrightnessMidtoneContrastWithMask(src, dst, mask, rect, b, c)
              : QVEffectsBrightnessMidtoneContrast(src, dst, rect, b, c);
}, QVEffectsBrightnessMidtoneContrastMakeCurves,
     [](float x, float b, float c) { return B(M(x, c), b); },
     [](float x, float m, float b, float c) { return B(M(x, c * m), b * m); }},
    {"brightness",
     [](auto src, auto dst, auto mask, QVRect rect, float b, float) {
  return QVEffectsBrightnessWithMask(src, dst, rect, mask, b);
},
     [](int planes, float* curves, float b, float) {
  return QVEffectsBrightnessAltMakeCurves(planes, curves, b);
}, [](float x, float b, float) { return B(x, b); },
     [](float x, float g, float b, float) { return Gain(B(x, b), g); }, true},
    {"midtone contrast",
     [](auto src, auto dst, auto, QVRect rect, float, float c) {
  return QVEffectsMidtoneContrast(src, dst, rect, c);
},
     [](int planes, float* curves, float, float c) {
  return QVEffectsMidtoneContrastMakeCurves(planes, curves, c);
}, [](float x, float, float c) { return M(x, c); }, nullptr},
    {"midtone contrast alt",
     [](auto src, auto dst, auto mask, QVRect rect, float, float c) {
  return QVEffectsMidtoneContrastAltWithMask(src, dst, rect, mask, c + c);
},
     [](int planes, float* curves, float, float c) {
  return QVEffectsMidtoneContrastAltMakeCurves(planes, curves, c + c);
}, [](float x, float, float c) { return MidtoneAlt(x, c + c); },
     [](float x, float g, float, float c) { return MidtoneAlt(x, g + (c + c)); }, true},
};

constexpr float kParameters[][2] = {{0.3f, 0.4f},  {-0.5f, 0.9f}, {0.25f, -0.6f},
                                    {-0.4f, 0.0f}, {0.0f, 0.0f},  {1.0f, -1.0f}};

// What a mask's pixel counts as.
float Count(const TestImage& mask, int x, int y, bool isBipolar) {
  const int depth = mask.GetForm().depth;
  const float s = test::GetSample(test::NearestPixel(mask, x, y), 0, depth);
  const bool isInverted = QVImageGetType(mask) == kQVImageTypeInvertedMask;
  if (!isBipolar) {
    const float m = s * test::UnitScale(depth);
    return isInverted ? 1 - m : m;
  }
  const float raw = isInverted ? test::FullScale(depth) - s : s;
  return raw * (depth == 8 ? 0.007874016f : (depth == 16 ? 3.0638195e-05f : 2.007874f)) - 1;
}

void ExpectAdjusted(const Effect& effect, TestImage& src, const TestImage* mask, TestImage& dst,
                    QVRect rect, float b, float c) {
  const auto [depth, planes, transparency] = src.GetForm();
  SCOPED_TRACE(testing::Message() << effect.name << ' ' << src.GetForm() << ' ' << b << ' ' << c
                                  << (mask ? " masked" : ""));
  std::vector<std::byte> expected = dst.Bytes();
  const QVRect bounds = dst.Bounds();
  for (int y = bounds.y; y < bounds.y + bounds.height; y++) {
    for (int x = bounds.x; x < bounds.x + bounds.width; x++) {
      if (!test::Contains(rect, x, y)) continue;
      Pixel pixel = test::NearestPixel(src, x, y);
      for (int p = 0; p < planes - transparency; p++) {
        const float in = test::GetSample(pixel, p, depth) * test::UnitScale(depth);
        const float out = mask ? effect.masked(in, Count(*mask, x, y, effect.isBipolar), b, c)
                               : effect.plain(in, b, c);
        test::SetSample(pixel, p, depth, out * test::FullScale(depth));
      }
      test::PutPixel(expected, dst, x, y, pixel);
    }
  }
  __QVImage* maskImage = mask ? static_cast<__QVImage*>(*mask) : nullptr;
  ASSERT_EQ(effect.run(src, dst, maskImage, rect, b, c), kQVStatusSuccess);
  if (depth != 32) {
    EXPECT_TRUE(dst.Bytes() == expected);
    return;
  }
  // Roots of what is below 0 are NaN, of either sign.
  for (int y = bounds.y; y < bounds.y + bounds.height; y++) {
    for (int i = 0; i < bounds.width * planes; i++) {
      const ptrdiff_t at = (y - bounds.y) * ptrdiff_t{dst.Stride()} + i * 4;
      float want, got;
      std::memcpy(&want, expected.data() + at, 4);
      std::memcpy(&got, dst.Bytes().data() + at, 4);
      ASSERT_TRUE(want == got || (std::isnan(want) && std::isnan(got))) << y << ' ' << i;
    }
  }
}

TEST(Brightness, IsExact) {
  for (const Effect& effect : kEffects) {
    for (const Form form : test::kForms) {
      for (const auto& [b, c] : kParameters) {
        TestImage src(kBounds, form, Residency::kMemory, 1);
        TestImage dst(kBounds, form, Residency::kMemory, 2);
        const QVRect rect = {2, 9, 60, 8};
        ExpectAdjusted(effect, src, nullptr, dst, rect, b, c);
        if (!effect.masked) continue;
        for (const int type : {0, int{kQVImageTypeInvertedMask}}) {
          TestImage mask(kMaskBounds, {form.depth, 1, 0}, Residency::kMemory, 3);
          QVImageSetType(mask, type);
          ExpectAdjusted(effect, src, &mask, dst, rect, b, c);
        }
      }
    }
  }
}

// Large images take another way to the same bits.
TEST(Brightness, IsExactOnLargeImages) {
  TestImage src({0, 0, 601, 500}, {16, 3, 0}, Residency::kMemory, 1);
  TestImage dst({0, 0, 601, 500}, {16, 3, 0}, Residency::kMemory, 2);
  ExpectAdjusted(kEffects[0], src, nullptr, dst, {0, 0, 601, 500}, 0.2f, -0.5f);
}

// The made curves do what the effects do: exactly at their levels, and between two of them with a
// result between theirs.
TEST(Brightness, CurvesDoTheSame) {
  for (const Effect& effect : kEffects) {
    for (const auto& [b, c] : kParameters) {
      std::vector<float> curves(768);
      ASSERT_EQ(effect.makeCurves(3, curves.data(), b, c), kQVStatusSuccess);
      for (int i = 0; i < 768; i++) {
        ASSERT_EQ(curves[i], effect.plain(static_cast<float>(i % 256) / 255.0f, b, c))
            << effect.name << ' ' << i;
      }
      for (const Form form : {Form{8, 3, 0}, {16, 4, 1}, {32, 3, 0}}) {
        TestImage src(kBounds, form, Residency::kMemory, 1);
        TestImage direct(kBounds, form), byCurves(kBounds, form);
        ASSERT_EQ(effect.run(src, direct, nullptr, kBounds, b, c), kQVStatusSuccess);
        ASSERT_EQ(QVEffectsApplyCurves(src, byCurves, kBounds, curves.data()), kQVStatusSuccess);
        for (int y = 5; y < 28; y++) {
          for (int x = -3; x < 34; x++) {
            const double in = src.Value(x, y, 0);
            if (in < 0 || in > 1) continue;
            const auto level = static_cast<int>(std::min(in * 255, 254.0));
            const double rounding = form.depth == 8 ? 1.01 / 255 : 1e-4;
            for (const TestImage* image : {&direct, &byCurves}) {
              ASSERT_GE(image->Value(x, y, 0), curves[level] - rounding)
                  << effect.name << ' ' << form << ' ' << b << ' ' << c << " at " << in;
              ASSERT_LE(image->Value(x, y, 0), curves[level + 1] + rounding)
                  << effect.name << ' ' << form << ' ' << b << ' ' << c << " at " << in;
            }
          }
        }
      }
    }
  }
}

TEST(Brightness, ValuesByHand) {
  float curves[256];
  ASSERT_EQ(QVEffectsBrightnessAltMakeCurves(1, curves, 1), kQVStatusSuccess);
  EXPECT_EQ(curves[0], 0.0f);
  EXPECT_NEAR(curves[51], 0.2 / (2.0 / 3 * 0.2 + 1.0 / 3), 1e-6);
  EXPECT_EQ(curves[255], 1.0f);
  TestImage half({0, 0, 1, 1}, {32, 1, 0});
  const auto halfBecomes = [&](const auto& run) {
    half.At<float>(0, 0, 0) = 0.5f;
    EXPECT_EQ(run(half), kQVStatusSuccess);
    return half.At<float>(0, 0, 0);
  };
  const QVRect all = {0, 0, 1, 1};
  EXPECT_FLOAT_EQ(
      halfBecomes([&](__QVImage* i) { return QVEffectsBrightnessContrast(i, i, all, 1, 0); }),
      0.75f);
  EXPECT_FLOAT_EQ(
      halfBecomes([&](__QVImage* i) { return QVEffectsBrightnessContrast(i, i, all, -0.5f, 0); }),
      1.0f / 3);
  for (const float c : {-1.0f, -0.3f, 0.0f, 0.8f}) {
    EXPECT_FLOAT_EQ(
        halfBecomes([&](__QVImage* i) { return QVEffectsBrightnessContrast(i, i, all, 0, c); }),
        0.5f)
        << c;
  }
  // The bipolar mask: 127 is neutral, 255 nearly doubles, 0 takes off a half.
  TestImage image({0, 0, 3, 1}, {8, 1, 0}), mask({0, 0, 3, 1}, {8, 1, 0});
  for (int x = 0; x < 3; x++) {
    image.At<uint8_t>(x, 0, 0) = 100;
    mask.At<uint8_t>(x, 0, 0) = static_cast<uint8_t>(x == 0 ? 127 : (x == 1 ? 255 : 0));
  }
  ASSERT_EQ(QVEffectsBrightnessWithMask(image, image, {0, 0, 3, 1}, mask, 0), kQVStatusSuccess);
  EXPECT_EQ(image.At<uint8_t>(0, 0, 0), 100);
  EXPECT_EQ(image.At<uint8_t>(1, 0, 0), 201);
  EXPECT_EQ(image.At<uint8_t>(2, 0, 0), 0);
}

TEST(Brightness, RefusesMasksThatDoNotFit) {
  TestImage src(kBounds, {8, 3, 0}), dst(kBounds, {8, 3, 0});
  TestImage deep(kBounds, {16, 1, 0}), wide(kBounds, {8, 3, 0});
  TestImage many(kBounds, {8, 7, 0}), mask(kBounds, {8, 1, 0});
  for (const Effect& effect : kEffects) {
    EXPECT_EQ(effect.run(nullptr, dst, nullptr, kBounds, 0.5f, 0.5f), kQVStatusBadArgument);
    EXPECT_EQ(effect.run(many, dst, nullptr, kBounds, 0.5f, 0.5f), kQVStatusUnsupported);
    EXPECT_EQ(effect.makeCurves(1, nullptr, 0, 0), kQVStatusBadArgument);
    EXPECT_EQ(effect.makeCurves(0, nullptr, 0, 0), kQVStatusSuccess);
    if (!effect.masked) continue;
    EXPECT_EQ(effect.run(src, dst, deep, kBounds, 0.5f, 0.5f), kQVStatusUnsupported);
    EXPECT_EQ(effect.run(src, dst, wide, kBounds, 0.5f, 0.5f), kQVStatusUnsupported);
    EXPECT_EQ(effect.run(many, many, mask, kBounds, 0.5f, 0.5f), kQVStatusUnsupported);
  }
}

// A mask without pixels has no rows: it counts as absent, whatever is asked.
TEST(Brightness, MasksWithoutRowsAreAbsent) {
  for (const Effect& effect : kEffects) {
    for (const Form form : {Form{8, 3, 0}, {16, 4, 1}, {32, 3, 0}}) {
      TestImage src(kBounds, form), dst(kBounds, form), plain(kBounds, form);
      TestImage mask({0, 0, 0, 0}, {form.depth, 1, 0});
      ASSERT_EQ(effect.run(src, plain, nullptr, kBounds, 0.3f, -0.7f), kQVStatusSuccess);
      ASSERT_EQ(effect.run(src, dst, mask, kBounds, 0.3f, -0.7f), kQVStatusSuccess);
      EXPECT_TRUE(dst.Bytes() == plain.Bytes()) << effect.name << form;
    }
  }
}

}  // namespace
