// SPDX-License-Identifier: Apache-2.0
// Gray images and luminosity against their definitions, pixel by pixel.
#include <gmock/gmock.h>

#include <climits>
#include <cmath>

#include "CaughtLog.h"
#include "NaiveColors.h"
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
  const float sum = method == kGrayMean ? r + g + b : test::PlainLuma({r, g, b});
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
  test::Rgb rgb;
  for (int c = 0; c < 3; c++) rgb[c] = GetSample(pixel, c, depth) * unit;
  test::Rgb ycc = test::ToYcc(rgb);
  ycc[0] = luminosity * unit;
  rgb = test::FromYcc(ycc);
  for (int c = 0; c < 3; c++) SetSample(pixel, c, depth, rgb[c] * FullScale(depth));
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
  // In place long rows are worked in several parts.
  constexpr QVRect kLong = {0, 0, 5000, 2};
  TestImage image(kLong, {16, 4, 1});
  const TestImage light(kLong, {16, 1, 0}, Residency::kMemory, 4);
  ExpectLit(image, image, light, MakeVRect(kLong));
}

// ---- Failures

TEST(GrayImages, RefuseWhatDoesNotFit) {
  TestImage rgb(kBounds, {8, 3, 0}), rgba(kBounds, {8, 4, 1}), deep(kBounds, {16, 3, 0}),
      gray(kBounds, {8, 2, 1}), light(kBounds, {8, 1, 0}), deepLight(kBounds, {16, 1, 0});
  const TestImage twoColors(kBounds, {8, 3, 1});
  const std::vector<std::byte> before = rgb.Bytes();
  const qv::ImageRef few = RgbView(twoColors);  // transparency isn't blue
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
}

}  // namespace
