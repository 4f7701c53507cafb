// SPDX-License-Identifier: Apache-2.0
// Brightness and contrast against their definitions, sample by sample.
#include <QVEffects/QVEffectsBrightness.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "Naive.h"
#include "TestImage.h"

namespace {

using test::Brightened;
using test::Form;
using test::Pixel;
using test::Residency;
using test::TestImage;
using test::WithMidtones;

constexpr QVRect kBounds = {-3, 5, 37, 23};
constexpr QVRect kMaskBounds = {-1, 4, 30, 22};

float WithContrast(float x, float c) {
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

float Contrasted(float x, float b, float c) {
  return c > 0 ? WithContrast(Brightened(x, b), c) : Brightened(WithContrast(x, c), b);
}

float MidtoneAlt(float x, float p) {
  if (p < -1) return WithContrast(WithMidtones(x, -2), p + 1);
  return p > 1 ? WithContrast(WithMidtones(x, 2), p - 1) : WithMidtones(x, p + p);
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
}, QVEffectsBrightnessContrastMakeCurves, Contrasted,
     [](float x, float m, float b, float c) { return Contrasted(x, b * m, c * m); }},
    {"brightness and midtone contrast",
     [](auto src, auto dst, auto mask, QVRect rect, float b, float c) {
  return mask ? QVEffectsBrightnessMidtoneContrastWithMask(src, dst, mask, rect, b, c)
              : QVEffectsBrightnessMidtoneContrast(src, dst, rect, b, c);
}, QVEffectsBrightnessMidtoneContrastMakeCurves,
     [](float x, float b, float c) { return Brightened(WithMidtones(x, c), b); },
     [](float x, float m, float b, float c) { return Brightened(WithMidtones(x, c * m), b * m); }},
    {"brightness",
     [](auto src, auto dst, auto mask, QVRect rect, float b, float) {
  return QVEffectsBrightnessWithMask(src, dst, rect, mask, b);
},
     [](int planes, float* curves, float b, float) {
  return QVEffectsBrightnessAltMakeCurves(planes, curves, b);
}, [](float x, float b, float) { return Brightened(x, b); },
     [](float x, float g, float b, float) { return Gain(Brightened(x, b), g); }, true},
    {"midtone contrast",
     [](auto src, auto dst, auto, QVRect rect, float, float c) {
  return QVEffectsMidtoneContrast(src, dst, rect, c);
},
     [](int planes, float* curves, float, float c) {
  return QVEffectsMidtoneContrastMakeCurves(planes, curves, c);
}, [](float x, float, float c) { return WithMidtones(x, c); }, nullptr},
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
  if (!isBipolar) return test::MaskCount(mask, x, y);
  const int depth = mask.GetForm().depth;
  const float s = test::SampleAt(mask, x, y, 0);
  const bool isInverted = QVImageGetType(mask) == kQVImageTypeInvertedMask;
  const float raw = isInverted ? test::FullScale(depth) - s : s;
  return raw * (depth == 8 ? 0.007874016f : (depth == 16 ? 3.0638195e-05f : 2.007874f)) - 1;
}

// @param mask may be null; one without pixels counts as absent.
void ExpectAdjusted(const Effect& effect, const TestImage& src, const TestImage* mask,
                    const TestImage& dst, QVRect rect, float b, float c) {
  const auto [depth, planes, transparency] = src.GetForm();
  const bool isMasked = mask && mask->Bounds().width > 0;
  SCOPED_TRACE(testing::Message() << effect.name << ' ' << src.GetForm() << ' ' << b << ' ' << c
                                  << (isMasked ? " masked" : ""));
  const std::vector<std::byte> expected = test::Changed(dst, rect, [&](int x, int y) {
    Pixel pixel = test::NearestPixel(src, x, y);
    for (int p = 0; p < planes - transparency; p++) {
      const float in = test::GetSample(pixel, p, depth) * test::UnitScale(depth);
      const float out = isMasked ? effect.masked(in, Count(*mask, x, y, effect.isBipolar), b, c)
                                 : effect.plain(in, b, c);
      test::SetSample(pixel, p, depth, out * test::FullScale(depth));
    }
    return pixel;
  });
  __QVImage* maskImage = mask ? static_cast<__QVImage*>(*mask) : nullptr;
  ASSERT_EQ(effect.run(src, dst, maskImage, rect, b, c), kQVStatusSuccess);
  if (depth != 32) {
    EXPECT_TRUE(dst.Bytes() == expected);
    return;
  }
  // Roots of what is below 0 are NaN, of either sign.
  const QVRect bounds = dst.Bounds();
  for (int y = 0; y < bounds.height; y++) {
    for (int i = 0; i < bounds.width * planes; i++) {
      const ptrdiff_t at = y * ptrdiff_t{dst.Stride()} + i * 4;
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
        TestImage src(kBounds, form), dst(kBounds, form, Residency::kMemory, 2);
        const QVRect rect = {2, 9, 60, 8};
        ExpectAdjusted(effect, src, nullptr, dst, rect, b, c);
        if (!effect.masked) continue;
        for (const QVRect maskBounds : {kMaskBounds, QVRect{0, 0, 0, 0}}) {
          for (const int type : {0, int{kQVImageTypeInvertedMask}}) {
            TestImage mask(maskBounds, {form.depth, 1, 0}, Residency::kMemory, 3);
            QVImageSetType(mask, type);
            ExpectAdjusted(effect, src, &mask, dst, rect, b, c);
          }
        }
      }
    }
  }
}

// Large images take another way to the same bits.
TEST(Brightness, IsExactOnLargeImages) {
  constexpr QVRect kLarge = {0, 0, 601, 500};
  TestImage src(kLarge, {16, 3, 0}), dst(kLarge, {16, 3, 0}, Residency::kMemory, 2);
  ExpectAdjusted(kEffects[0], src, nullptr, dst, kLarge, 0.2f, -0.5f);
}

TEST(Brightness, CurvesDoTheSame) {
  for (const Effect& effect : kEffects) {
    for (const auto& [b, c] : kParameters) {
      std::vector<float> curves(768);
      ASSERT_EQ(effect.makeCurves(3, curves.data(), b, c), kQVStatusSuccess);
      for (int i = 0; i < 768; i++) {
        ASSERT_EQ(curves[i], effect.plain(static_cast<float>(i % 256) / 255.0f, b, c))
            << effect.name << ' ' << i;
      }
    }
  }
}

TEST(Brightness, RefusesMasksThatDoNotFit) {
  TestImage src(kBounds, {8, 3, 0}), dst(kBounds, {8, 3, 0});
  TestImage deep(kBounds, {16, 1, 0}), wide(kBounds, {8, 3, 0});
  TestImage many(kBounds, {8, 7, 0}), mask(kBounds, {8, 1, 0});
  for (const Effect& effect : kEffects) {
    EXPECT_EQ(effect.run(many, dst, nullptr, kBounds, 0.5f, 0.5f), kQVStatusUnsupported);
    EXPECT_EQ(effect.makeCurves(1, nullptr, 0, 0), kQVStatusBadArgument);
    EXPECT_EQ(effect.makeCurves(0, nullptr, 0, 0), kQVStatusSuccess);
    if (!effect.masked) continue;
    EXPECT_EQ(effect.run(src, dst, deep, kBounds, 0.5f, 0.5f), kQVStatusUnsupported);
    EXPECT_EQ(effect.run(src, dst, wide, kBounds, 0.5f, 0.5f), kQVStatusUnsupported);
    EXPECT_EQ(effect.run(many, many, mask, kBounds, 0.5f, 0.5f), kQVStatusUnsupported);
  }
}

}  // namespace
