// SPDX-License-Identifier: Apache-2.0
// Medians against sorted windows.
#include <QVEffects/QVEffectsMedian.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "Naive.h"

namespace {

using test::Form;
using test::NearestPixel;
using test::Pixel;
using test::SampleAt;
using test::TestImage;

constexpr QVRect kBounds = {-3, 5, 41, 13};
constexpr Form kIntegerForms[] = {{8, 1, 0},  {8, 3, 0},  {8, 4, 0},  {8, 4, 1},  {8, 28, 0},
                                  {16, 1, 0}, {16, 3, 0}, {16, 4, 0}, {16, 4, 1}, {16, 14, 0}};

float MedianAt(const TestImage& image, int x, int y, int plane, int radius) {
  std::vector<float> samples;
  for (int dy = -radius; dy <= radius; dy++) {
    for (int dx = -radius; dx <= radius; dx++) {
      samples.push_back(SampleAt(image, x + dx, y + dy, plane));
    }
  }
  const auto middle = samples.begin() + static_cast<ptrdiff_t>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  return *middle;
}

// What dst becomes: medians where they differ by `least` from src, whose samples stay elsewhere.
std::vector<std::byte> Expected(const TestImage& src, const TestImage& dst, QVRect rect, int radius,
                                float least) {
  const Form form = src.GetForm();
  return test::Changed(dst, rect, [&](int x, int y) {
    Pixel pixel = NearestPixel(src, x, y);
    for (int c = 0; c < form.planes - form.transparency; c++) {
      const float median = MedianAt(src, x, y, c, radius);
      if (std::abs(median - SampleAt(src, x, y, c)) < least) continue;
      test::SetSample(pixel, c, form.depth, median);
    }
    return pixel;
  });
}

void ExpectMedians(const TestImage& src, const TestImage& dst, QVRect rect, int radius) {
  const auto expected = Expected(src, dst, rect, radius, 0);
  ASSERT_EQ(QVEffectsMedian(src, dst, rect, radius), kQVStatusSuccess);
  ASSERT_TRUE(dst.Bytes() == expected)
      << src.GetForm() << " to " << dst.GetForm() << ", radius " << radius;
}

// Fewer values, so that many samples are the same, and gradients, so that windows differ.
void Soften(TestImage& image) {
  const QVRect b = image.Bounds();
  for (int y = b.y; y < b.y + b.height; y++) {
    for (int x = b.x; x < b.x + b.width; x++) {
      for (int c = 0; c < image.GetForm().planes; c++) {
        if (image.GetForm().depth == 8) {
          image.At<uint8_t>(x, y, c) = (image.At<uint8_t>(x, y, c) % 8) + 3 * x + 9;
        } else {
          image.At<uint16_t>(x, y, c) = (image.At<uint16_t>(x, y, c) % 8) + 900 * y + 3 * x;
        }
      }
    }
  }
}

// Every network, the histograms that follow, windows of more than 65535 samples, and pixels of so
// many planes that no strip holds a window; the rectangle goes past three edges, and dst past src.
// Where they have four planes, either src or dst has transparency.
TEST(Median, IsTheMiddleOfTheSortedWindow) {
  constexpr QVRect kLarger = {-6, 1, 46, 19}, kRect = {-9, -2, 31, 25};
  for (const Form form : kIntegerForms) {
    const Form other = {form.depth, form.planes, form.planes == 4 ? 1 - form.transparency : 0};
    for (const int radius : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 25, 70, 127, 128}) {
      if (form.planes > 1 && radius > 10) continue;
      if (form.planes > 4 && radius > 1 && radius != 6) continue;
      for (const bool isSoft : {false, true}) {
        TestImage src(kBounds, form), dst(kLarger, other, test::Residency::kMemory, 2);
        if (isSoft) Soften(src);
        ExpectMedians(src, dst, radius > 10 ? QVRect{30, 12, 9, 4} : kRect, radius);
      }
    }
  }
}

// Rows and columns that are worked in parts.
TEST(Median, OfWideAndHighImages) {
  for (const QVRect bounds : {QVRect{0, 0, 700, 2}, {0, 0, 3, 150}}) {
    for (const int depth : {8, 16}) {
      for (const int radius : {1, 5, 7}) {
        TestImage src(bounds, {depth, 3, 0}), dst(bounds, {depth, 3, 0});
        ExpectMedians(src, dst, bounds, radius);
      }
    }
  }
}

TEST(Median, ReachesFarBeyondTheImage) {
  for (const int depth : {8, 16}) {
    TestImage src({0, 0, 3, 2}, {depth, 1, 0}), dst(src.Bounds(), src.GetForm());
    for (int x = 0; x < 3; x++) {
      for (int y = 0; y < 2; y++) std::memset(src.Address(x, y), 10 * x + y, depth / 8);
    }
    // The outer columns, in them the rows, take half of the window but for the one in the middle.
    ASSERT_EQ(QVEffectsMedian(src, dst, src.Bounds(), 32767), kQVStatusSuccess);
    const int scale = depth == 8 ? 1 : 257;
    EXPECT_EQ(SampleAt(dst, 0, 0, 0), 1 * scale);
    EXPECT_EQ(SampleAt(dst, 1, 1, 0), 11 * scale);
    EXPECT_EQ(SampleAt(dst, 2, 0, 0), 20 * scale);
  }
}

// A difference of exactly the rounded threshold takes the median.
TEST(DustAndScratch, TakesMediansFromTheThresholdOn) {
  struct Case {
    float threshold;
    float least8, least16;
  };
  constexpr Case kCases[] = {{0.0f, 0, 0},
                             {-3.0f, 0, 0},
                             {NAN, 0, 0},
                             {0.00195f, 0, 128},
                             {0.00197f, 1, 129},
                             {0.1f, 26, 6554},
                             {0.99999994f, 255, 65535}};
  for (const Case& each : kCases) {
    for (const Form form : {Form{8, 4, 1}, {16, 3, 0}}) {
      TestImage src(kBounds, form), dst(kBounds, form, test::Residency::kMemory, 2);
      const float least = form.depth == 8 ? each.least8 : each.least16;
      // Flat but for specks at, above and below the threshold.
      for (int y = 5; y < 18; y++) {
        for (int x = 5; x < 23; x++) {
          const bool isSpeck = x % 2 == 0 && y == 8;
          Pixel pixel = NearestPixel(src, x, y);
          test::SetSample(pixel, 1, form.depth, isSpeck ? 19 + least + x / 2 % 3 : 20);
          PutPixel(src.Bytes(), src, x, y, pixel);
        }
      }
      const auto expected = Expected(src, dst, kBounds, 1, least);
      ASSERT_EQ(QVEffectsDustAndScratch(src, dst, kBounds, 1, each.threshold), kQVStatusSuccess);
      EXPECT_TRUE(dst.Bytes() == expected) << form << ", threshold " << each.threshold;
    }
  }
}

TEST(Median, StatusOfOddArguments) {
  TestImage bytes(kBounds, {8, 3, 0}), floats(kBounds, {32, 3, 0}), gray(kBounds, {8, 1, 0});
  for (const int radius : {32768, INT_MAX}) {
    EXPECT_EQ(QVEffectsMedian(bytes, bytes, kBounds, radius), kQVStatusBadArgument);
    EXPECT_EQ(QVEffectsMedian(floats, floats, kBounds, radius), kQVStatusBadArgument);
  }
  EXPECT_EQ(QVEffectsMedian(floats, floats, kBounds, 1), kQVStatusUnsupported);
  EXPECT_EQ(QVEffectsMedian(bytes, gray, kBounds, 1), kQVStatusUnsupported);

  constexpr std::pair<int, float> kNothing[] = {
      {0, 0.0f}, {-1, 0.0f}, {INT_MIN, 0.0f}, {40000, 1.0f}, {40000, INFINITY}};
  for (const auto& [radius, threshold] : kNothing) {
    TestImage dst(kBounds, floats.GetForm(), test::Residency::kMemory, 2);
    const auto expected = Expected(floats, dst, kBounds, 0, 0);
    EXPECT_EQ(QVEffectsDustAndScratch(floats, dst, kBounds, radius, threshold), kQVStatusSuccess);
    EXPECT_TRUE(dst.Bytes() == expected) << "a copy";
  }
}

}  // namespace
