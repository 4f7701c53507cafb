// SPDX-License-Identifier: Apache-2.0
// Masked application and the plain operations beside it against their definitions.
#include <QVEffects/QVEffectsMask.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include "Naive.h"
#include "TestImage.h"

namespace {

using test::Form;
using test::FullScale;
using test::GetSample;
using test::NearestPixel;
using test::Pixel;
using test::Residency;
using test::SetSample;
using test::TestImage;
using test::UnitScale;

constexpr QVRect kBounds = {-3, 5, 37, 23};
constexpr QVRect kOther = {-1, 4, 30, 22};
constexpr QVRect kRect = {2, 9, 60, 12};
constexpr float kNeutral = 0.49803922f;

float Unit(float v) { return v < 0 ? 0 : (v > 1 ? 1 : v); }

// What a mask's pixel counts as.
float Count(const TestImage& mask, int x, int y) {
  const int depth = mask.GetForm().depth;
  const float m = GetSample(NearestPixel(mask, x, y), 0, depth) * UnitScale(depth);
  return QVImageGetType(mask) == kQVImageTypeInvertedMask ? 1 - m : m;
}

// Compares dst after a call with what each pixel of kRect should be.
void ExpectPixels(TestImage& dst, const std::function<int()>& run,
                  const std::function<Pixel(int x, int y)>& pixel) {
  std::vector<std::byte> expected = dst.Bytes();
  for (int y = kBounds.y; y < kBounds.y + kBounds.height; y++) {
    for (int x = kBounds.x; x < kBounds.x + kBounds.width; x++) {
      if (test::Contains(kRect, x, y)) PutPixel(expected, dst, x, y, pixel(x, y));
    }
  }
  ASSERT_EQ(run(), kQVStatusSuccess);
  EXPECT_TRUE(dst.Bytes() == expected);
}

// Calls f(base, effect, mask or null, dst) for each form and kind of mask.
template <class F>
void WithImages(F&& f) {
  for (const Form form : test::kForms) {
    for (const int mask : {-1, 0, int{kQVImageTypeInvertedMask}}) {
      SCOPED_TRACE(testing::Message() << form << " mask " << mask);
      TestImage base(kBounds, form, Residency::kMemory, 1), effect(kOther, form);
      TestImage dst(kBounds, form, Residency::kMemory, 3);
      TestImage image(kOther, {form.depth, 1, 0}, Residency::kMemory, 4);
      if (mask >= 0) QVImageSetType(image, mask);
      f(base, effect, mask < 0 ? nullptr : &image, dst);
    }
  }
}

__QVImage* ImageOf(const TestImage* image) {
  return image ? static_cast<__QVImage*>(*image) : nullptr;
}

TEST(ApplyMask, MixesWhereTheMaskSays) {
  for (const float amount : {0.0f, 0.3f, 1.0f, 2.0f}) {
    WithImages([&](TestImage& base, TestImage& effect, TestImage* mask, TestImage& dst) {
      const auto [depth, planes, transparency] = base.GetForm();
      ExpectPixels(dst, [&] {
        return QVEffectsApplyEffectWithMask(base, effect, ImageOf(mask), dst, kRect, amount);
      }, [&](int x, int y) {
        const float h = amount * 0.5f;
        const float t = mask ? Unit(Count(*mask, x, y) - kNeutral + h) : h;
        const Pixel b = NearestPixel(base, x, y), e = NearestPixel(effect, x, y);
        Pixel mixed = {};
        for (int p = 0; p < planes; p++) {
          const float v = GetSample(e, p, depth) * t + GetSample(b, p, depth) * (1 - t);
          SetSample(mixed, p, depth, v);
        }
        return mixed;
      });
    });
  }
}

std::array<float, 6> Zones(const float* rgb) {
  const float c = std::min({rgb[0], rgb[1], rgb[2]});
  const float r = rgb[0] - c, g = rgb[1] - c, b = rgb[2] - c;
  const float yellow = std::min(g, r), cyan = std::min(b, g), magenta = std::min(r, b);
  return {r - std::max(yellow, magenta), yellow, g - std::max(cyan, yellow), cyan,
          b - std::max(magenta, cyan),   magenta};
}

float Sum(const float* by, const std::array<float, 6>& zones) {
  float sum = 0;
  for (int i = 0; i < 6; i++) sum += by[i] * zones[i];
  return sum;
}

float Brightness(float x, float b) {
  const float t = b + b, k = t > 0 ? 1 / (t + 1) : 1 - t;
  return x / ((1 - k) * x + k);
}

float Midtone(float x, float p) {
  const float m = p >= 0 ? p + 1 : 1 / (1 - p), a = (1 - m) + (1 - m), q = (m - 1) * 4;
  const float y = 1 - x;
  return x < 0.5f ? (a * x + q * x * x + 1) * x : 1 - (a * y + q * y * y + 1) * y;
}

TEST(ApplyMask, MixesByZonesOfColor) {
  const float weights[][6] = {{1, -0.5f, 0.25f, 0.75f, -1, 0.5f},
                              {0.5f, -0.25f, 0, 0.3f, -0.7f, 0.2f},
                              {-0.3f, 0.6f, 0.1f, -0.2f, 0.4f, 0},
                              {0, 0, 0, 0, 0, 0}};
  for (const bool neutral : {false, true}) {
    const float* mix = weights[neutral ? 3 : 0];
    const float* brightness = weights[neutral ? 3 : 1];
    const float* contrast = weights[neutral ? 3 : 2];
    WithImages([&](TestImage& base, TestImage& effect, TestImage* mask, TestImage& dst) {
      const int depth = base.GetForm().depth, planes = base.GetForm().planes;
      const auto run = [&] {
        return QVEffectsApplyEffectInZones(base, effect, ImageOf(mask), dst, kRect, mix, brightness,
                                           contrast);
      };
      if (planes < 3) {
        EXPECT_EQ(run(), kQVStatusUnsupported);
        return;
      }
      ExpectPixels(dst, run, [&](int x, int y) {
        Pixel pixel = NearestPixel(base, x, y);
        const Pixel over = NearestPixel(effect, x, y);
        float rgb[3], c[3];
        for (int p = 0; p < 3; p++) rgb[p] = GetSample(pixel, p, depth) * UnitScale(depth);
        const auto zones = Zones(rgb);
        const float m = mask ? Count(*mask, x, y) : kNeutral;
        const float t = Unit(Sum(mix, zones) * 0.5f + m);
        for (int p = 0; p < 3; p++) {
          c[p] = GetSample(over, p, depth) * UnitScale(depth) * t + rgb[p] * (1 - t);
        }
        const float luma = c[0] * 0.299f + c[1] * 0.587f + c[2] * 0.114f;
        const float cb = c[0] * -0.168736f + c[1] * -0.331264f + c[2] * 0.5f + 0.5f - 0.5f;
        const float cr = c[0] * 0.5f + c[1] * -0.418688f + c[2] * -0.081312f + 0.5f - 0.5f;
        const float lit = Midtone(Brightness(luma, Sum(brightness, zones)), Sum(contrast, zones));
        const float out[] = {cr * 1.402f + lit, cr * -0.714136f + (cb * -0.344136f + lit),
                             cb * 1.772f + lit};
        for (int p = 0; p < 3; p++) SetSample(pixel, p, depth, Unit(out[p]) * FullScale(depth));
        return pixel;
      });
    });
  }
}

TEST(ApplyMask, ZonesOfAColor) {
  using testing::ElementsAre;
  const auto zones = [](float r, float g, float b) {
    const float rgb[] = {r, g, b};
    std::array<float, 6> weights;
    EXPECT_EQ(QVEffectsGetColorComponents(rgb, weights.data()), kQVStatusSuccess);
    return weights;
  };
  EXPECT_THAT(zones(1, 0, 0), ElementsAre(1, 0, 0, 0, 0, 0));
  EXPECT_THAT(zones(1, 0.5f, 0), ElementsAre(0.5f, 0.5f, 0, 0, 0, 0));
  EXPECT_THAT(zones(1, 1, 0), ElementsAre(0, 1, 0, 0, 0, 0));
  EXPECT_THAT(zones(0.7f, 0.7f, 0.7f), ElementsAre(0, 0, 0, 0, 0, 0));
  EXPECT_THAT(zones(0.25f, 0.5f, 1), ElementsAre(0, 0, 0, 0.25f, 0.5f, 0));
  EXPECT_EQ(QVEffectsGetColorComponents(nullptr, nullptr), kQVStatusBadArgument);
}

TEST(ApplyMask, SumsImages) {
  WithImages([&](TestImage& base, TestImage& effect, TestImage*, TestImage& dst) {
    const int depth = base.GetForm().depth, planes = base.GetForm().planes;
    ExpectPixels(dst, [&] { return QVEffectsMixImages(base, effect, dst, kRect, 0.3f, 0.6f); },
                 [&](int x, int y) {
      const Pixel a = NearestPixel(base, x, y), b = NearestPixel(effect, x, y);
      Pixel sum = {};
      for (int p = 0; p < planes; p++) {
        const float v = GetSample(b, p, depth) * 0.6f + GetSample(a, p, depth) * 0.3f;
        SetSample(sum, p, depth, depth == 32 ? Unit(v) : v);
      }
      return sum;
    });
  });
}

TEST(ApplyMask, ScalesAboutPivots) {
  const float factors[] = {2, 0, -0.5f, 1}, pivots[] = {0.5f, 0.3f, 0.8f, 0};
  WithImages([&](TestImage& base, TestImage&, TestImage*, TestImage& dst) {
    const int depth = base.GetForm().depth, planes = base.GetForm().planes;
    ExpectPixels(dst, [&] { return QVEffectsMultiplyValues(base, dst, kRect, factors, pivots); },
                 [&](int x, int y) {
      Pixel pixel = NearestPixel(base, x, y);
      for (int p = 0; p < planes; p++) {
        const float exact = pivots[p] * FullScale(depth);
        const float pivot = depth == 32 ? exact : std::floor(exact + 0.5f);
        const float v = pivot + (GetSample(pixel, p, depth) - pivot) * factors[p];
        SetSample(pixel, p, depth, depth == 32 ? Unit(v) : v);
      }
      return pixel;
    });
  });
}

TEST(ApplyMask, FlattensOnWhite) {
  WithImages([&](TestImage& base, TestImage&, TestImage*, TestImage&) {
    const int depth = base.GetForm().depth, planes = base.GetForm().planes;
    const TestImage before(kBounds, base.GetForm(), Residency::kMemory, 1);
    ExpectPixels(base, [&] { return QVEffectsMakeCompositeImage(base, kRect); }, [&](int x, int y) {
      Pixel pixel = NearestPixel(before, x, y);
      if (base.GetForm().transparency == 0) return pixel;
      const float a = GetSample(pixel, planes - 1, depth) * UnitScale(depth);
      for (int p = 0; p < planes - 1; p++) {
        SetSample(pixel, p, depth, GetSample(pixel, p, depth) * a + (1 - a) * FullScale(depth));
      }
      return pixel;
    });
  });
}

// An array of images that holds no references.
CFMutableArrayRef ArrayOf(const std::vector<__QVImage*>& images) {
  const CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, nullptr);
  for (__QVImage* image : images) CFArrayAppendValue(array, image);
  return array;
}

TEST(ApplyMask, MultipliesMasks) {
  for (const int depth : {8, 16, 32}) {
    const Form form = {depth, 1, 0};
    TestImage a(kBounds, form), b(kOther, form, Residency::kCallbacks, 2), c(kBounds, form);
    TestImage none({0, 0, 0, 0}, form);
    QVImageSetType(b, kQVImageTypeInvertedMask);
    const std::vector<std::vector<const TestImage*>> sets = {{}, {&a}, {&b}, {&a, &b, &c, &b}};
    for (const auto& set : sets) {
      for (const int type : {0, int{kQVImageTypeInvertedMask}}) {
        TestImage dst(kBounds, form, Residency::kMemory, 5);
        QVImageSetType(dst, type);
        std::vector<__QVImage*> images = {none, nullptr};  // which count as 1
        for (const TestImage* mask : set) images.push_back(*mask);
        const CFMutableArrayRef array = ArrayOf(images);
        ExpectPixels(dst, [&] { return QVEffectsMultiplyMasks(array, dst, kRect); },
                     [&](int x, int y) {
          float p = 1;
          for (const TestImage* mask : set) p = p * Count(*mask, x, y);
          Pixel pixel = {};
          SetSample(pixel, 0, depth, (type == 0 ? p : 1 - p) * FullScale(depth));
          return pixel;
        });
        CFRelease(array);
      }
    }
  }
}

TEST(ApplyMask, FindsBounds) {
  struct Case {
    std::vector<QVPoint> set;
    QVRect bounds;
  };
  const Case cases[] = {{{}, {0, 0, 0, 0}},
                        {{{100, 9}}, {100, 9, 1, 1}},
                        {{{-3, 5}, {176, 27}}, {-3, 5, 180, 23}},
                        {{{50, 20}, {60, 7}, {55, 21}}, {50, 7, 11, 15}}};
  for (const int depth : {8, 16, 32}) {
    for (const bool isInverted : {false, true}) {
      for (const Case& c : cases) {
        TestImage mask({-3, 5, 180, 23}, {depth, 1, 0});
        const auto put = [&](int x, int y, float v) {
          Pixel pixel = {};
          SetSample(pixel, 0, depth, v);
          std::memcpy(mask.Address(x, y), pixel.data(), depth / 8);
        };
        const float empty = isInverted ? FullScale(depth) : 0;
        for (int y = 5; y < 28; y++) {
          for (int x = -3; x < 177; x++) put(x, y, empty);
        }
        for (const QVPoint& at : c.set) put(at.x, at.y, isInverted ? empty - 0.75f : 0.75f);
        if (isInverted) QVImageSetType(mask, kQVImageTypeInvertedMask);
        QVRect found = {9, 9, 9, 9};
        ASSERT_EQ(QVEffectsFindMaskBounds(mask, &found), kQVStatusSuccess);
        EXPECT_EQ(std::tie(found.x, found.y, found.width, found.height),
                  std::tie(c.bounds.x, c.bounds.y, c.bounds.width, c.bounds.height))
            << depth << ' ' << isInverted;
      }
    }
  }
  TestImage floats({0, 0, 3, 1}, {32, 1, 0});
  for (int x = 0; x < 3; x++) floats.At<float>(x, 0, 0) = x == 1 ? std::nanf("") : -1.0f;
  QVRect found;
  ASSERT_EQ(QVEffectsFindMaskBounds(floats, &found), kQVStatusSuccess);
  EXPECT_EQ(found.width, 0) << "only what is above 0 counts";
}

TEST(ApplyMask, RefusesWhatDoesNotFit) {
  TestImage rgb(kBounds, {8, 3, 0}), deep(kBounds, {16, 3, 0}), gray(kBounds, {8, 1, 0});
  TestImage deepMask(kBounds, {16, 1, 0}), many(kBounds, {8, 8, 1});
  const float w[8] = {};
  const auto zones = [&](__QVImage* a, __QVImage* b, __QVImage* mask, __QVImage* dst) {
    return QVEffectsApplyEffectInZones(a, b, mask, dst, kRect, w, w, w);
  };
  const auto apply = [&](__QVImage* a, __QVImage* b, __QVImage* mask, __QVImage* dst) {
    return QVEffectsApplyEffectWithMask(a, b, mask, dst, kRect, 1);
  };
  const CFMutableArrayRef one = ArrayOf({gray}), deepOne = ArrayOf({deepMask}),
                          wide = ArrayOf({rgb});
  QVRect bounds = {1, 2, 3, 4};
  const struct {
    int status, expected;
  } calls[] = {
      {zones(rgb, rgb, nullptr, nullptr), kQVStatusBadArgument},
      {zones(rgb, rgb, deepMask, rgb), kQVStatusUnsupported},
      {zones(gray, gray, nullptr, gray), kQVStatusUnsupported},
      {zones(gray, rgb, nullptr, rgb), kQVStatusUnsupported},
      {QVEffectsApplyEffectInZones(rgb, rgb, nullptr, rgb, kRect, w, nullptr, w),
       kQVStatusBadArgument},
      {apply(nullptr, rgb, nullptr, rgb), kQVStatusBadArgument},
      {apply(rgb, nullptr, nullptr, rgb), kQVStatusBadArgument},
      {apply(rgb, deep, nullptr, rgb), kQVStatusUnsupported},
      {apply(rgb, gray, nullptr, rgb), kQVStatusUnsupported},
      {apply(rgb, rgb, rgb, rgb), kQVStatusUnsupported},
      {apply(many, many, nullptr, many), kQVStatusUnsupported},
      {QVEffectsMixImages(rgb, deep, rgb, kRect, 1, 0), kQVStatusUnsupported},
      {QVEffectsMixImages(rgb, rgb, nullptr, kRect, 1, 0), kQVStatusBadArgument},
      {QVEffectsMultiplyMasks(nullptr, gray, kRect), kQVStatusBadArgument},
      {QVEffectsMultiplyMasks(one, nullptr, kRect), kQVStatusBadArgument},
      {QVEffectsMultiplyMasks(deepOne, gray, kRect), kQVStatusUnsupported},
      {QVEffectsMultiplyMasks(wide, gray, kRect), kQVStatusUnsupported},
      {QVEffectsMultiplyMasks(one, rgb, kRect), kQVStatusUnsupported},
      {QVEffectsFindMaskBounds(nullptr, &bounds), kQVStatusBadArgument},
      {QVEffectsFindMaskBounds(gray, nullptr), kQVStatusBadArgument},
      {QVEffectsFindMaskBounds(rgb, &bounds), kQVStatusUnsupported},
      {QVEffectsMakeCompositeImage(nullptr, kRect), kQVStatusBadArgument},
      {QVEffectsMakeCompositeImage(many, kRect), kQVStatusUnsupported},
      {QVEffectsMultiplyValues(rgb, rgb, kRect, w, nullptr), kQVStatusBadArgument},
      {QVEffectsMultiplyValues(rgb, deep, kRect, w, w), kQVStatusUnsupported},
  };
  for (const auto& call : calls) EXPECT_EQ(call.status, call.expected) << &call - calls;
  for (const CFMutableArrayRef array : {one, deepOne, wide}) CFRelease(array);
  EXPECT_EQ(bounds.width, 3);
}

}  // namespace
