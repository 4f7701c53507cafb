// SPDX-License-Identifier: Apache-2.0
// Gray images and luminosity against their definitions, pixel by pixel.
#include <gmock/gmock.h>

#include <climits>
#include <cmath>
#include <functional>

#include "CaughtLog.h"
#include "Naive.h"
#include "TestImage.h"
#include "Utils/QVEffectsUtils.h"

namespace {

using test::Form;
using test::FullScale;
using test::GetSample;
using test::NearestPixel;
using test::Pixel;
using test::Residency;
using test::SetSample;
using test::TestImage;

constexpr Residency kResidencies[] = {Residency::kMemory, Residency::kCallbacks};
constexpr QVRect kBounds = {-3, 5, 37, 9};
constexpr VRect kRects[] = {{5, -3, 14, 34}, {7, 1, 9, 20}, {2, -9, 12, 40}, {90, 90, 92, 95}};
constexpr Form kColorForms[] = {{8, 3, 0},  {8, 4, 1},  {8, 4, 0},  {16, 3, 0}, {16, 4, 1},
                                {16, 5, 1}, {32, 3, 0}, {32, 4, 1}, {32, 7, 0}};

// Factors by method, depth of the source and depth of the gray image.
constexpr float kFactors[2][3][3] = {
    {{1, 257, 0.003921569f}, {0.0038910506f, 1, 1.5259022e-05f}, {255, 65535, 1}},
    {{0.33333334f, 85.666664f, 0.0013071896f},
     {0.0012970169f, 0.33333334f, 5.0863405e-06f},
     {85, 21845, 0.33333334f}}};

Pixel Gray(const Pixel& p, int from, int to, int method) {
  const float r = GetSample(p, 0, from), g = GetSample(p, 1, from), b = GetSample(p, 2, from);
  const float sum = method == kGrayMean ? r + g + b : b * 0.114f + (g * 0.587f + r * 0.299f);
  Pixel gray = {};
  SetSample(gray, 0, to, sum * kFactors[method][from / 16][to / 16]);
  return gray;
}

// An image over the same samples that says it is RGB, whatever its planes.
qv::ImageRef RgbView(const TestImage& image) {
  const Form form = image.GetForm();
  const QVRect b = image.Bounds();
  qv::ImageRef view;
  EXPECT_EQ(QVImageCreateWithBuffer(b, form.depth, form.planes, kQVColorSpaceRGB, form.transparency,
                                    image.Address(b.x, b.y), image.Stride(), view.Receive()),
            kQVStatusSuccess);
  return view;
}

void ExpectGray(const TestImage& src, __QVImage* image, VRect rect, int format, int method) {
  constexpr int kDepthOfFormat[] = {0, 8, 16, 0, 32};
  const int from = src.GetForm().depth, to = format ? kDepthOfFormat[format] : from;
  qv::ImageRef gray;
  ASSERT_EQ(CreateGrayScaleImage(image, *gray.Receive(), rect, format, method), 0);
  EXPECT_EQ(MakeVRect(QVImageGetBounds(gray)), rect);
  EXPECT_EQ((Form{QVImageGetDepth(gray), QVImageGetNumPlanes(gray), QVImageGetTransparency(gray)}),
            (Form{to, 1, 0}));
  EXPECT_EQ(QVImageGetColorSpaceType(gray), kQVColorSpaceGray);
  EXPECT_EQ(QVImageGetDataSourceType(gray), 1);
  for (int y = rect.top; y < rect.bottom; y++) {
    for (int x = rect.left; x < rect.right; x++) {
      Pixel pixel = {};
      ASSERT_EQ(QVImageRead2(gray, {x, y, 1, 1}, 0, -1, pixel.data(), -1, 0), 0);
      ASSERT_EQ(pixel, Gray(NearestPixel(src, x, y), from, to, method)) << x << ", " << y;
    }
  }
}

TEST(GrayImages, AreExactAtAllDepths) {
  for (const Form form : kColorForms) {
    for (const Residency residency : kResidencies) {
      const TestImage src(kBounds, form, residency);
      const qv::ImageRef view = RgbView(src);
      __QVImage* image = form.ColorSpace() == kQVColorSpaceRGB ? src : view;
      for (const int format : {kGrayAsSource, kGray8, kGray16, kGray32}) {
        for (const int method : {kGrayLuma, kGrayMean}) {
          SCOPED_TRACE(testing::Message() << form << residency << format << method);
          for (const VRect rect : kRects) ExpectGray(src, image, rect, format, method);
        }
      }
    }
  }
}

TEST(GrayImages, KeepWhiteAndHoldWildFloats) {
  TestImage floats({0, 0, 3, 1}, {32, 3, 0}), bytes({0, 0, 3, 1}, {8, 3, 0}),
      words({0, 0, 3, 1}, {16, 3, 0});
  constexpr float kWild[] = {1, 1, 1, NAN, -INFINITY, 2, 3e38f, 3e38f, 3e38f};
  std::memcpy(floats.Address(0, 0), kWild, sizeof kWild);
  for (TestImage* src : {&bytes, &words, &floats}) {
    if (src != &floats) QVImageFill(*src, INT_MAX);
    for (const int method : {kGrayLuma, kGrayMean}) {
      for (const int depth : {8, 16, 32}) {
        qv::ImageRef gray;
        ASSERT_EQ(CreateGrayScaleImage(*src, *gray.Receive(), {0, 0, 1, 3}, depth / 8, method), 0);
        Pixel pixels = {};
        ASSERT_EQ(QVImageRead2(gray, {0, 0, 3, 1}, 0, -1, pixels.data(), -1, 0), 0);
        EXPECT_FLOAT_EQ(GetSample(pixels, 0, depth), FullScale(depth)) << method;
        if (src != &floats || depth == 32) continue;
        EXPECT_EQ(GetSample(pixels, 1, depth), 0);
        EXPECT_EQ(GetSample(pixels, 2, depth), FullScale(depth));
      }
    }
  }
}

// ---- Luminosity

Pixel Lit(Pixel pixel, float luminosity, int depth) {
  const float unit = test::UnitScale(depth);
  const float r = GetSample(pixel, 0, depth) * unit, g = GetSample(pixel, 1, depth) * unit,
              b = GetSample(pixel, 2, depth) * unit, y = luminosity * unit;
  const float cb = b * 0.5f + (g * -0.331264f + r * -0.168736f) + 0.5f - 0.5f;
  const float cr = b * -0.081312f + (g * -0.418688f + r * 0.5f) + 0.5f - 0.5f;
  const float rgb[] = {cr * 1.402f + y, cr * -0.714136f + (cb * -0.344136f + y), cb * 1.772f + y};
  for (int c = 0; c < 3; c++) {
    SetSample(pixel, c, depth, std::clamp(rgb[c], 0.0f, 1.0f) * FullScale(depth));
  }
  return pixel;
}

void ExpectLit(TestImage& src, TestImage& dst, const TestImage& light, VRect rect) {
  std::vector<std::byte> expected = dst.Bytes();
  const VRect inside = rect.Intersect(MakeVRect(dst.Bounds()));
  for (int y = inside.top; y < inside.bottom; y++) {
    for (int x = inside.left; x < inside.right; x++) {
      const int depth = src.GetForm().depth;
      const float lit = GetSample(NearestPixel(light, x, y), 0, depth);
      PutPixel(expected, dst, x, y, Lit(NearestPixel(src, x, y), lit, depth));
    }
  }
  EXPECT_EQ(ApplyLuminosity(src, dst, light, rect), kQVStatusSuccess);
  EXPECT_TRUE(dst.Bytes() == expected);
  EXPECT_EQ(src.BadCalls() + dst.BadCalls() + light.BadCalls(), 0);
}

TEST(Luminosity, IsExactWhereverTheRectangleLies) {
  for (const Form form : kColorForms) {
    for (const Residency residency : kResidencies) {
      for (const VRect rect : kRects) {
        SCOPED_TRACE(testing::Message() << form << ' ' << residency << " at " << rect.left);
        TestImage src(kBounds, form, residency, 2), dst({-5, 3, 43, 10}, form, residency, 3);
        const TestImage light({0, 6, 9, 5}, {form.depth, 1, 0}, residency, 4);
        ExpectLit(src, dst, light, rect);
        ExpectLit(src, src, light, rect);
      }
    }
  }
}

// In place long rows are worked in several parts.
TEST(Luminosity, OfItsOwnLumaLeavesAnImage) {
  constexpr VRect kAll = {0, 0, 2, 5000};
  for (const auto& [form, tolerance] : {std::pair{Form{8, 3, 0}, 1.001 / 255},  //
                                        {Form{16, 4, 1}, 1.01 / 65535}}) {
    TestImage image({0, 0, 5000, 2}, form), before({0, 0, 5000, 2}, form);
    qv::ImageRef luma;
    ASSERT_EQ(CreateGrayScaleImage(image, *luma.Receive(), kAll, 0, 0), 0);
    ASSERT_EQ(ApplyLuminosity(image, image, luma, kAll), 0);
    for (int i = 0; i < 5000 * 2 * form.planes; i++) {
      const int p = i % form.planes, x = i / form.planes % 5000, y = i / form.planes / 5000;
      ASSERT_NEAR(image.Value(x, y, p), before.Value(x, y, p), tolerance) << form << x;
    }
  }
}

// ---- Failures

TEST(GrayImages, RefuseWhatDoesNotFit) {
  TestImage rgb(kBounds, {8, 3, 0}), rgba(kBounds, {8, 4, 1}), deep(kBounds, {16, 3, 0}),
      gray(kBounds, {8, 2, 1}), light(kBounds, {8, 1, 0}), deepLight(kBounds, {16, 1, 0});
  const std::vector<std::byte> before = rgb.Bytes();
  const qv::ImageRef few = RgbView(gray);
  const struct {
    __QVImage* source;
    int format, method, status;
  } creations[] = {{rgb, 0, 2, 1005},     {rgb, 0, -1, 1005}, {gray, 3, 2, 1005},
                   {nullptr, 0, 0, 1005}, {gray, 0, 0, 1020}, {few, 0, 1, 1020},
                   {rgb, 3, 0, 1020},     {rgb, 5, 0, 1020},  {rgb, -1, 1, 1020}};
  const struct {
    __QVImage *source, *destination, *luminosity;
    int status;
  } uses[] = {{nullptr, rgb, light, 1005}, {rgb, nullptr, light, 1005}, {rgb, rgb, nullptr, 1005},
              {rgba, rgb, light, 1020},    {rgb, rgba, light, 1020},    {deep, rgb, light, 1020},
              {gray, gray, light, 1020},   {rgb, rgb, deepLight, 1020}, {rgb, rgb, gray, 1020}};
  test::CaughtLog log;
  for (const auto& c : creations) {
    __QVImage* result = rgb;
    EXPECT_EQ(CreateGrayScaleImage(c.source, result, kRects[0], c.format, c.method), c.status);
    EXPECT_EQ(result, nullptr);
  }
  for (const auto& c : uses) {
    EXPECT_EQ(ApplyLuminosity(c.source, c.destination, c.luminosity, kRects[0]), c.status);
  }
  EXPECT_TRUE(log.events.empty());
  EXPECT_TRUE(rgb.Bytes() == before);

  // Transparency isn't blue.
  qv::ImageRef twoColors;
  ASSERT_EQ(
      QVImageCreateWithParams2({0, 0, 4, 4}, 8, 3, kQVColorSpaceRGB, 1, 0, twoColors.Receive()),
      kQVStatusSuccess);
  __QVImage* gotten = rgb;
  EXPECT_EQ(CreateGrayScaleImage(twoColors, gotten, kRects[0], kGrayAsSource, kGrayLuma), 1020);
  // Edges further apart than an int holds.
  EXPECT_EQ(CreateGrayScaleImage(rgb, gotten, {INT_MIN, 0, INT_MAX, 0}, kGrayAsSource, kGrayLuma),
            1005);
  EXPECT_EQ(gotten, nullptr);
}

TEST(GrayImages, FailuresAreLoggedOnce) {
  const QVImageCallbacks failing = {[](void*, QVRect, int, int, void*, int) {
    return 77;
  }, [](void*, QVRect, int, int, const void*, int) { return 78; }, nullptr};
  qv::ImageRef unreadable;
  ASSERT_EQ(
      QVImageCreateWithCallbacks(kBounds, 8, 3, 2, 0, &failing, nullptr, unreadable.Receive()), 0);
  const TestImage rgb(kBounds, {8, 3, 0}), light(kBounds, {8, 1, 0});
  __QVImage* result = rgb;
  const auto gray = [&](__QVImage* source, VRect rect) {
    return CreateGrayScaleImage(source, result, rect, 0, 0);
  };
  const std::function<int()> failures[] = {
      [&] { return gray(rgb, {0, 5, 4, 1}); },                          // inside out
      [&] { return gray(rgb, {INT_MIN, INT_MIN, INT_MAX, INT_MAX}); },  // no image is so large
      [&] { return gray(unreadable, kRects[0]); },
      [&] { return ApplyLuminosity(unreadable, rgb, light, kRects[0]); },
  };
  for (const auto& failure : failures) {
    test::CaughtLog log;
    EXPECT_EQ(failure(), kQVStatusBadArgument);
    EXPECT_EQ(result, nullptr);
    ASSERT_EQ(log.events.size(), 1u);
    EXPECT_EQ(log.events[0].code, kQVStatusBadArgument);
    EXPECT_EQ(log.events[0].path, "Source/Common/Utils/QVEffectsUtils");
  }
}

}  // namespace
