// SPDX-License-Identifier: Apache-2.0
// Masked application and the plain operations beside it against their definitions.
#include <QVEffects/QVEffectsMask.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include "Naive.h"
#include "TestImage.h"

namespace {

using test::Form;
using test::FullScale;
using test::GetSample;
using test::NearestPixel;
using test::Pixel;
using test::Residency;
using test::SampleAt;
using test::SetSample;
using test::TestImage;
using test::UnitScale;

constexpr QVRect kBounds = {-3, 5, 37, 23};
constexpr QVRect kOther = {-1, 4, 30, 22};
constexpr QVRect kRect = {2, 9, 60, 12};
constexpr float kNeutral = 0.49803922f;

float Unit(float v) { return v < 0 ? 0 : (v > 1 ? 1 : v); }

// Compares dst after a call with what each pixel of kRect should be, by the images before it.
void ExpectPixels(const TestImage& dst, const std::function<int()>& run,
                  const std::function<Pixel(int x, int y)>& pixel) {
  const auto expected = test::Changed(dst, kRect, pixel);
  ASSERT_EQ(run(), kQVStatusSuccess);
  EXPECT_TRUE(dst.Bytes() == expected);
}

// The same by samples, on their own scale.
void ExpectSamples(const TestImage& dst, const std::function<int()>& run,
                   const std::function<float(int x, int y, int plane)>& sample) {
  const Form form = dst.GetForm();
  ExpectPixels(dst, run, [&](int x, int y) {
    Pixel pixel = {};
    for (int p = 0; p < form.planes; p++) SetSample(pixel, p, form.depth, sample(x, y, p));
    return pixel;
  });
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
      ExpectSamples(dst, [&] {
        return QVEffectsApplyEffectWithMask(base, effect, ImageOf(mask), dst, kRect, amount);
      }, [&](int x, int y, int p) {
        const float h = amount * 0.5f;
        const float t = mask ? Unit(test::MaskCount(*mask, x, y) - kNeutral + h) : h;
        return SampleAt(effect, x, y, p) * t + SampleAt(base, x, y, p) * (1 - t);
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

TEST(ApplyMask, MixesByZonesOfColor) {
  const float mix[] = {1, -0.5f, 0.25f, 0.75f, -1, 0.5f};
  const float brightness[] = {0.5f, -0.25f, 0, 0.3f, -0.7f, 0.2f};
  const float contrast[] = {-0.3f, 0.6f, 0.1f, -0.2f, 0.4f, 0};
  WithImages([&](TestImage& base, TestImage& effect, TestImage* mask, TestImage& dst) {
    const int depth = base.GetForm().depth;
    if (base.GetForm().planes < 3) return;
    ExpectPixels(dst, [&] {
      return QVEffectsApplyEffectInZones(base, effect, ImageOf(mask), dst, kRect, mix, brightness,
                                         contrast);
    }, [&](int x, int y) {
      Pixel pixel = NearestPixel(base, x, y);
      float rgb[3], c[3];
      for (int p = 0; p < 3; p++) rgb[p] = GetSample(pixel, p, depth) * UnitScale(depth);
      const auto zones = Zones(rgb);
      const float m = mask ? test::MaskCount(*mask, x, y) : kNeutral;
      const float t = Unit(Sum(mix, zones) * 0.5f + m);
      for (int p = 0; p < 3; p++) {
        c[p] = SampleAt(effect, x, y, p) * UnitScale(depth) * t + rgb[p] * (1 - t);
      }
      const float luma = c[0] * 0.299f + c[1] * 0.587f + c[2] * 0.114f;
      const float cb = c[0] * -0.168736f + c[1] * -0.331264f + c[2] * 0.5f + 0.5f - 0.5f;
      const float cr = c[0] * 0.5f + c[1] * -0.418688f + c[2] * -0.081312f + 0.5f - 0.5f;
      const float bright = test::Brightened(luma, Sum(brightness, zones));
      const float lit = test::WithMidtones(bright, Sum(contrast, zones));
      const float out[] = {cr * 1.402f + lit, cr * -0.714136f + (cb * -0.344136f + lit),
                           cb * 1.772f + lit};
      for (int p = 0; p < 3; p++) SetSample(pixel, p, depth, Unit(out[p]) * FullScale(depth));
      return pixel;
    });
  });
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
    const auto run = [&] { return QVEffectsMixImages(base, effect, dst, kRect, 0.3f, 0.6f); };
    ExpectSamples(dst, run, [&](int x, int y, int p) {
      const float v = SampleAt(effect, x, y, p) * 0.6f + SampleAt(base, x, y, p) * 0.3f;
      return dst.GetForm().depth == 32 ? Unit(v) : v;
    });
  });
}

TEST(ApplyMask, ScalesAboutPivots) {
  const float factors[] = {2, 0, -0.5f, 1}, pivots[] = {0.5f, 0.3f, 0.8f, 0};
  WithImages([&](TestImage& base, TestImage&, TestImage*, TestImage& dst) {
    const int depth = base.GetForm().depth;
    const auto run = [&] { return QVEffectsMultiplyValues(base, dst, kRect, factors, pivots); };
    ExpectSamples(dst, run, [&](int x, int y, int p) {
      const float exact = pivots[p] * FullScale(depth);
      const float pivot = depth == 32 ? exact : std::floor(exact + 0.5f);
      const float v = pivot + (SampleAt(base, x, y, p) - pivot) * factors[p];
      return depth == 32 ? Unit(v) : v;
    });
  });
}

TEST(ApplyMask, FlattensOnWhite) {
  WithImages([&](TestImage& base, TestImage&, TestImage*, TestImage&) {
    const auto [depth, planes, transparency] = base.GetForm();
    const float max = FullScale(depth), unit = UnitScale(depth);
    const int last = transparency ? planes - 1 : -1;
    const auto run = [&] { return QVEffectsMakeCompositeImage(base, kRect); };
    ExpectSamples(base, run, [&](int x, int y, int p) {
      const float s = SampleAt(base, x, y, p);
      if (last < 0 || p == last) return s;
      const float a = SampleAt(base, x, y, last) * unit;
      return s * a + (1 - a) * max;
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
        const auto run = [&] { return QVEffectsMultiplyMasks(array, dst, kRect); };
        ExpectSamples(dst, run, [&](int x, int y, int) {
          float p = 1;
          for (const TestImage* mask : set) p = p * test::MaskCount(*mask, x, y);
          return (type == 0 ? p : 1 - p) * FullScale(depth);
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
        const float empty = isInverted ? FullScale(depth) : 0;
        const auto bytes = test::Changed(mask, mask.Bounds(), [&](int x, int y) {
          const bool isSet =
              std::ranges::any_of(c.set, [&](const QVPoint& at) { return at.x == x && at.y == y; });
          const float set = isInverted ? empty - 0.75f : 0.75f;
          Pixel pixel = {};
          SetSample(pixel, 0, depth, isSet ? set : empty);
          return pixel;
        });
        std::ranges::copy(bytes, mask.Bytes().begin());
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
      {zones(rgb, rgb, deepMask, rgb), kQVStatusUnsupported},
      {zones(gray, gray, nullptr, gray), kQVStatusUnsupported},
      {zones(gray, rgb, nullptr, rgb), kQVStatusUnsupported},
      {QVEffectsApplyEffectInZones(rgb, rgb, nullptr, rgb, kRect, w, nullptr, w),
       kQVStatusBadArgument},
      {apply(rgb, deep, nullptr, rgb), kQVStatusUnsupported},
      {apply(rgb, gray, nullptr, rgb), kQVStatusUnsupported},
      {apply(rgb, rgb, rgb, rgb), kQVStatusUnsupported},
      {apply(many, many, nullptr, many), kQVStatusUnsupported},
      {QVEffectsMixImages(rgb, deep, rgb, kRect, 1, 0), kQVStatusUnsupported},
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
