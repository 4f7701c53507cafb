// SPDX-License-Identifier: Apache-2.0
// Medians against sorted windows.
#include <QVEffects/QVEffectsMedian.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "Naive.h"

namespace {

using test::Form;
using test::GetSample;
using test::NearestPixel;
using test::Pixel;
using test::TestImage;

constexpr QVRect kBounds = {-3, 5, 41, 13};
constexpr Form kIntegerForms[] = {{8, 1, 0},  {8, 3, 0},  {8, 4, 1},  {8, 28, 0},
                                  {16, 1, 0}, {16, 3, 0}, {16, 4, 1}, {16, 14, 0}};

float MedianAt(const TestImage& image, int x, int y, int plane, int radius) {
  std::vector<float> samples;
  for (int dy = -radius; dy <= radius; dy++) {
    for (int dx = -radius; dx <= radius; dx++) {
      const Pixel pixel = NearestPixel(image, x + dx, y + dy);
      samples.push_back(GetSample(pixel, plane, image.GetForm().depth));
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
  std::vector<std::byte> bytes = dst.Bytes();
  const QVRect part = QVRectIntersect(rect, dst.Bounds());
  for (int y = part.y; y < part.y + part.height; y++) {
    for (int x = part.x; x < part.x + part.width; x++) {
      Pixel pixel = NearestPixel(src, x, y);
      for (int c = 0; c < form.planes - form.transparency; c++) {
        const float median = MedianAt(src, x, y, c, radius);
        if (std::abs(median - GetSample(pixel, c, form.depth)) < least) continue;
        test::SetSample(pixel, c, form.depth, median);
      }
      PutPixel(bytes, dst, x, y, pixel);
    }
  }
  return bytes;
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
TEST(Median, IsTheMiddleOfTheSortedWindow) {
  constexpr QVRect kLarger = {-6, 1, 46, 19}, kRect = {-9, -2, 31, 25};
  for (const Form form : kIntegerForms) {
    for (const int radius : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 25, 70, 127, 128}) {
      if (form.planes > 1 && radius > 10) continue;
      if (form.planes > 4 && radius > 1 && radius != 6) continue;
      for (const bool isSoft : {false, true}) {
        TestImage src(kBounds, form);
        if (isSoft) Soften(src);
        const QVRect rect = radius > 10 ? QVRect{30, 12, 9, 4} : kRect;
        TestImage dst(kLarger, form, test::Residency::kMemory, 2);
        const auto expected = Expected(src, dst, rect, radius, 0);
        ASSERT_EQ(QVEffectsMedian(src, dst, rect, radius), kQVStatusSuccess);
        ASSERT_TRUE(dst.Bytes() == expected) << form << ", radius " << radius << ", " << isSoft;
      }
    }
  }
}

TEST(Median, TakesTransparencyFromTheSource) {
  constexpr QVRect kWide = {-9, 3, 53, 17};
  for (const int depth : {8, 16}) {
    for (const int transparency : {0, 1}) {
      for (const int radius : {2, 7}) {
        TestImage src(kBounds, {depth, 4, transparency});
        TestImage dst(kWide, {depth, 4, 1 - transparency}, test::Residency::kMemory, 2);
        const auto expected = Expected(src, dst, kWide, radius, 0);
        ASSERT_EQ(QVEffectsMedian(src, dst, kWide, radius), kQVStatusSuccess);
        ASSERT_TRUE(dst.Bytes() == expected)
            << src.GetForm() << " to " << dst.GetForm() << ", radius " << radius;
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
        const auto expected = Expected(src, dst, bounds, radius, 0);
        ASSERT_EQ(QVEffectsMedian(src, dst, bounds, radius), kQVStatusSuccess);
        ASSERT_TRUE(dst.Bytes() == expected) << depth << " bits, radius " << radius;
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
    EXPECT_EQ(dst.Value(0, 0, 0) * test::FullScale(depth), 1 * scale);
    EXPECT_EQ(dst.Value(1, 1, 0) * test::FullScale(depth), 11 * scale);
    EXPECT_EQ(dst.Value(2, 0, 0) * test::FullScale(depth), 20 * scale);
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
      TestImage src(kBounds, form);
      TestImage dst(kBounds, form, test::Residency::kMemory, 2);
      const float least = form.depth == 8 ? each.least8 : each.least16;
      // Flat but for specks at, above and below the threshold.
      for (int i = 0; i < 9; i++) {
        for (int y = 5; y < 18; y++) {
          for (int x = 4; x < 30; x++) {
            const bool isSpeck = x == 6 + 2 * i && y == 8;
            const int value = 20 + (isSpeck ? static_cast<int>(least) - 1 + i % 3 : 0);
            if (x != 6 + 2 * i && x != 5 + 2 * i) continue;
            if (form.depth == 8) src.At<uint8_t>(x, y, 1) = value > 255 ? 255 : value;
            if (form.depth == 16) src.At<uint16_t>(x, y, 1) = value > 65535 ? 65535 : value;
          }
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
  TestImage to(kBounds, {8, 3, 0}, test::Residency::kMemory, 2);
  for (const int radius : {32768, 40000, INT_MAX}) {
    EXPECT_EQ(QVEffectsMedian(bytes, to, kBounds, radius), kQVStatusBadArgument);
    EXPECT_EQ(QVEffectsMedian(floats, floats, kBounds, radius), kQVStatusBadArgument);
  }
  EXPECT_EQ(QVEffectsMedian(bytes, nullptr, kBounds, 1), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsMedian(floats, floats, kBounds, 1), kQVStatusUnsupported);
  EXPECT_EQ(QVEffectsMedian(bytes, gray, kBounds, 1), kQVStatusUnsupported);

  const auto copied = [](const TestImage& src, auto&& run) {
    TestImage dst(kBounds, src.GetForm(), test::Residency::kMemory, 2);
    const auto expected = Expected(src, dst, kBounds, 0, 0);
    return run(dst) == kQVStatusSuccess && dst.Bytes() == expected;
  };
  for (const int radius : {0, -1, INT_MIN}) {
    EXPECT_TRUE(
        copied(floats, [&](auto& dst) { return QVEffectsMedian(floats, dst, kBounds, radius); }));
  }
  for (const float threshold : {1.0f, INFINITY}) {
    EXPECT_TRUE(copied(floats, [&](auto& dst) {
      return QVEffectsDustAndScratch(floats, dst, kBounds, 40000, threshold);
    }));
  }
}

}  // namespace
