// SPDX-License-Identifier: Apache-2.0
// Measurement and gradient fills against their definitions, pixel by pixel.
#include <QVEffects/QVEffectsMeasure.h>
#include <QVEffects/QVEffectsMutex.h>
#include <gmock/gmock.h>

#include <climits>
#include <cmath>
#include <set>
#include <thread>

#include "CaughtLog.h"
#include "Naive.h"
#include "TestImage.h"
#include "Utils/QVEffectsUtils.h"

namespace {

using test::Form;
using test::FullScale;
using test::GetSample;
using test::Pixel;
using test::Residency;
using test::SampleAt;
using test::TestImage;
using test::UnitScale;
using testing::ElementsAre;

constexpr QVRect kBounds = {-3, 5, 19, 11};
constexpr QVRect kRects[] = {kBounds, {2, 7, 9, 4}, {-8, 1, 40, 30}, {30, 40, 5, 6}, {2, 7, 0, 4}};

void ForEachPixel(QVRect rect, auto&& f) {
  for (int y = rect.y; y < rect.y + rect.height; y++) {
    for (int x = rect.x; x < rect.x + rect.width; x++) f(x, y);
  }
}

struct Statistics {
  std::array<float, 4> means, deviations;
  bool operator==(const Statistics&) const = default;
};
constexpr Statistics kUntouched = {{9, 9, 9, 9}, {8, 8, 8, 8}};

Statistics NaiveStatistics(const TestImage& image, QVRect rect) {
  const auto [depth, planes, transparency] = image.GetForm();
  double sums[4] = {}, squares[4] = {};
  int64_t count = 0;
  ForEachPixel(rect, [&](int x, int y) {
    if (transparency && !(SampleAt(image, x, y, planes - 1) > 0)) return;
    float values[4] = {};
    for (int c = 0; c < planes - transparency; c++) values[c] = SampleAt(image, x, y, c);
    if (planes >= 3) values[3] = values[2] * 0.114f + (values[1] * 0.587f + values[0] * 0.299f);
    for (int s = 0; s < 4; s++) {
      const double value = values[s];
      sums[s] += value;
      squares[s] += value * value;
    }
    count++;
  });
  Statistics result = kUntouched;
  if (count == 0) return result;
  const auto k = static_cast<double>(UnitScale(depth)), n = static_cast<double>(count);
  for (int s = 0; s < 4; s++) {
    const auto mean = static_cast<float>(sums[s] * k / n);
    const double variance = squares[s] * k * k / n - static_cast<double>(mean * mean);
    result.means[s] = mean;
    result.deviations[s] = static_cast<float>(std::sqrt(std::max(variance, 0.0)));
  }
  return result;
}

Statistics StatisticsOf(const TestImage& image, QVRect rect) {
  Statistics result = kUntouched;
  EXPECT_EQ(QVEffectsAnalyzeImage(image, rect, result.means.data(), result.deviations.data()),
            kQVStatusSuccess);
  return result;
}

TEST(Measure, StatisticsAreExact) {
  for (const Form form : test::kForms) {
    for (const Residency residency : {Residency::kMemory, Residency::kCallbacks}) {
      const TestImage image(kBounds, form, residency);
      for (const QVRect rect : kRects) {
        EXPECT_TRUE(StatisticsOf(image, rect) == NaiveStatistics(image, rect)) << form;
      }
      EXPECT_EQ(image.BadCalls(), 0);
    }
  }
  // Past 2^53 a sum of integers depends on its order.
  TestImage large({0, 0, 3000, 1200}, {16, 1, 0});
  ForEachPixel(large.Bounds(), [&](int x, int y) { large.At<uint16_t>(x, y, 0) |= 0xe000; });
  EXPECT_TRUE(StatisticsOf(large, large.Bounds()) == NaiveStatistics(large, large.Bounds()));
  // No pixel counts.
  TestImage clear({0, 0, 1, 1}, {8, 2, 1});
  clear.At<uint8_t>(0, 0, 1) = 0;
  EXPECT_TRUE(StatisticsOf(clear, clear.Bounds()) == kUntouched);
}

struct Average {
  std::array<float, 3> color;
  float weight;
  bool operator==(const Average&) const = default;
};

Average NaiveAverage(const TestImage& image, const TestImage* mask, QVRect rect) {
  const auto [depth, planes, transparency] = image.GetForm();
  const float full = FullScale(depth), maskFull = FullScale(mask ? mask->GetForm().depth : 8);
  const bool isInverted = mask && QVImageGetType(*mask) == kQVImageTypeInvertedMask;
  double colors[3] = {}, weight = 0;
  ForEachPixel(rect, [&](int x, int y) {
    const float m = mask ? SampleAt(*mask, x, y, 0) : maskFull;
    const float alpha = transparency ? SampleAt(image, x, y, planes - 1) : full;
    const double w = static_cast<double>(isInverted ? maskFull - m : m) * alpha;
    for (int c = 0; c < planes - transparency; c++) colors[c] += SampleAt(image, x, y, c) * w;
    weight += w;
  });
  Average result = {{9, 9, 9}, static_cast<float>(weight / (static_cast<double>(maskFull) * full))};
  for (int c = 0; c < planes - transparency; c++) {
    result.color[c] = weight > 0 ? static_cast<float>(colors[c] / (full * weight)) : 0.0f;
  }
  return result;
}

Average AverageOf(const TestImage& image, __QVImage* mask, QVRect rect) {
  Average result = {{9, 9, 9}, 9};
  EXPECT_EQ(QVEffectsGetAvgColor(image, mask, rect, result.color.data(), &result.weight),
            kQVStatusSuccess);
  return result;
}

// No mask, and masks of each depth, both ways up.
void ForEachMask(auto&& f) {
  f(nullptr);
  for (const int depth : {8, 16, 32}) {
    TestImage mask({0, 4, 9, 20}, {depth, 1, 0}, Residency::kMemory, 7);
    f(&mask);
    QVImageSetType(mask, kQVImageTypeInvertedMask);
    f(&mask);
  }
}

__QVImage* ImageOf(const TestImage* image) {
  return image ? static_cast<__QVImage*>(*image) : nullptr;
}

const QVImageCallbacks kFailing = {
    [](void*, QVRect, int, int, void*, int) { return 77; },
    [](void*, QVRect, int, int, const void*, int) { return 78; },
    nullptr,
};

qv::ImageRef FailingImage(QVRect bounds, int planes) {
  qv::ImageRef image;
  EXPECT_EQ(QVImageCreateWithCallbacks(bounds, 8, planes, planes > 2 ? 2 : 1, 0, &kFailing, nullptr,
                                       image.Receive()),
            kQVStatusSuccess);
  return image;
}

TEST(Measure, AveragesAreExact) {
  for (const Form form : test::kForms) {
    const TestImage image(kBounds, form);
    for (const QVRect rect : kRects) {
      ForEachMask([&](const TestImage* mask) {
        EXPECT_TRUE(AverageOf(image, ImageOf(mask), rect) == NaiveAverage(image, mask, rect))
            << form << " under " << (mask ? mask->GetForm().depth : 0) << " at " << rect.x;
      });
    }
    // A row of a mask that can't be had counts like no mask.
    const qv::ImageRef failing = FailingImage(kBounds, 1);
    EXPECT_TRUE(AverageOf(image, failing, kBounds) == NaiveAverage(image, nullptr, kBounds));
    EXPECT_EQ(QVEffectsGetAvgColor(image, nullptr, kBounds, nullptr, nullptr), kQVStatusSuccess);
  }
}

// Pixels outside count; past a number of them rows can't be had, rather than being waited for.
TEST(Measure, FarRectanglesEndSoon) {
  constexpr QVRect kFar[] = {{0, 0, INT_MAX, INT_MAX},
                             {0, 0, 1, INT_MAX},
                             {INT_MIN, 0, INT_MAX, 1},
                             {INT_MAX - 9, INT_MAX - 9, INT_MAX, INT_MAX}};
  for (const Form form : test::kForms) {
    const TestImage image(kBounds, form);
    for (const QVRect rect : kFar) {
      float values[4], weights[4];
      test::CaughtLog log;
      const bool few = form.transparency || rect.x == INT_MAX - 9;
      const int expected = few ? kQVStatusSuccess : kQVStatusBadArgument;
      EXPECT_EQ(QVEffectsAnalyzeImage(image, rect, values, weights), expected) << form;
      EXPECT_EQ(QVEffectsGetAvgColor(image, nullptr, rect, values, weights), expected) << form;
      EXPECT_EQ(log.events.size(), few ? 0u : 2u);
    }
  }
}

TEST(Measure, IndexColors) {
  std::set<std::vector<float>> colors;
  float rgb[3];
  for (unsigned index = 0; index < 32; index++) {
    EXPECT_EQ(QVEffectsGetColorForIndex(index, rgb), kQVStatusSuccess);
    colors.insert({rgb, rgb + 3});
  }
  EXPECT_EQ(colors.size(), 31u);  // 27 is 0 again
  EXPECT_EQ(QVEffectsGetColorForIndex(11, rgb), kQVStatusSuccess);
  EXPECT_THAT(rgb, ElementsAre(1, 0, 0.5f));
  for (const unsigned index : {32u, UINT_MAX}) {
    EXPECT_EQ(QVEffectsGetColorForIndex(index, rgb), kQVStatusBadArgument);
    EXPECT_THAT(rgb, ElementsAre(0, 0, 0));
  }
}

TEST(Measure, GradientsAreExact) {
  constexpr float kFirst[] = {0.9f, 0.2f, 0.55f, 0.75f}, kSecond[] = {0.1f, 1.0f, 0.0f, 0.3f};
  for (const Form form : test::kForms) {
    for (const QVRect rect : kRects) {
      for (const float* second : {kSecond, static_cast<const float*>(nullptr)}) {
        ForEachMask([&](const TestImage* mask) {
          TestImage dst(kBounds, form);
          const float max = FullScale(form.depth);
          const auto expected = test::Changed(dst, rect, [&](int x, int y) {
            const float m = mask ? test::MaskCount(*mask, x, y) : 1;
            Pixel pixel = {};
            for (int p = 0; p < form.planes; p++) {
              const bool isColor = p < form.planes - form.transparency;
              const float a = kFirst[p] * max;
              const float b = second ? second[p] * max : (isColor ? a : 0.0f);
              test::SetSample(pixel, p, form.depth, mask ? b * (1.0f - m) + a * m : a);
            }
            return pixel;
          });
          EXPECT_EQ(QVEffectsFillGradient(dst, rect, ImageOf(mask), kFirst, second),
                    kQVStatusSuccess);
          EXPECT_TRUE(dst.Bytes() == expected) << form << " at " << rect.x;
        });
      }
    }
  }
}

// The deviation that follows from the mean of samples and of squares as they are stored.
float NaiveDeviation(const TestImage& src, int x, int y, int plane, int radius) {
  const int depth = src.GetForm().depth;
  double sum = 0, squares = 0;
  ForEachPixel(QVRectOutset({x, y, 1, 1}, radius), [&](int nearX, int nearY) {
    const double sample = SampleAt(src, nearX, nearY, plane);
    sum += sample;
    squares +=
        depth == 32 ? static_cast<double>(static_cast<float>(sample * sample)) : sample * sample;
  });
  const float scale = 1.0f / static_cast<float>((2 * radius + 1) * (2 * radius + 1));
  float mean = static_cast<float>(sum) * scale, meanSquare = static_cast<float>(squares) * scale;
  if (depth == 32) return std::sqrt(std::max(meanSquare - mean * mean, 0.0f));
  const auto m = static_cast<uint64_t>(mean + 0.5f), t = static_cast<uint64_t>(meanSquare + 0.5f);
  return t < m * m ? 0.0f : std::sqrt(static_cast<float>(t - m * m));
}

TEST(Measure, VarianceIsThatOfTheWindow) {
  for (const Form form : test::kForms) {
    for (const QVRect rect : {kRects[0], kRects[1], kRects[2]}) {
      for (const int radius : {0, 1, 4}) {
        TestImage src(kBounds, form), dst(kBounds, form, Residency::kMemory, 2);
        ASSERT_EQ(QVEffectsVariance(src, dst, rect, radius), kQVStatusSuccess);
        ForEachPixel(QVRectIntersect(rect, kBounds), [&](int x, int y) {
          for (int plane = 0; plane < form.planes - form.transparency; plane++) {
            Pixel expected = {};
            test::SetSample(expected, plane, form.depth, NaiveDeviation(src, x, y, plane, radius));
            ASSERT_NEAR(SampleAt(dst, x, y, plane), GetSample(expected, plane, form.depth),
                        form.depth == 32 ? 2e-6 : 0)
                << form << ", radius " << radius << " at " << x << ", " << y;
          }
        });
      }
    }
  }
}

// Rounding may leave a mean square below the squared mean.
TEST(Measure, VarianceOfWhite) {
  TestImage flat({0, 0, 9, 9}, {16, 3, 0}), result({0, 0, 9, 9}, {16, 3, 0});
  std::ranges::fill(flat.Bytes(), std::byte{0xff});
  ASSERT_EQ(QVEffectsVariance(flat, result, flat.Bounds(), 2), kQVStatusSuccess);
  ForEachPixel(flat.Bounds(), [&](int x, int y) { EXPECT_LE(result.At<uint16_t>(x, y, 1), 16); });
}

TEST(Measure, RefuseWhatDoesNotFit) {
  TestImage rgb(kBounds, {8, 3, 0}), gray(kBounds, {8, 1, 0}), two(kBounds, {8, 2, 0}),
      six(kBounds, {8, 6, 0}), seven(kBounds, {8, 7, 0}), wide(kBounds, {16, 3, 0});
  float four[4] = {}, other[8] = {};
  const struct {
    int status, expected;
  } calls[] = {
      {QVEffectsAnalyzeImage(two, kBounds, four, other), kQVStatusUnsupported},
      {QVEffectsAnalyzeImage(nullptr, kBounds, four, other), kQVStatusBadArgument},
      {QVEffectsAnalyzeImage(rgb, kBounds, nullptr, other), kQVStatusBadArgument},
      {QVEffectsAnalyzeImage(rgb, kBounds, four, nullptr), kQVStatusBadArgument},
      {QVEffectsGetAvgColor(nullptr, gray, kBounds, four, other), kQVStatusBadArgument},
      {QVEffectsGetAvgColor(six, gray, kBounds, four, other), kQVStatusUnsupported},
      {QVEffectsGetAvgColor(rgb, two, kBounds, four, other), kQVStatusUnsupported},
      {QVEffectsGetColorForIndex(1, nullptr), kQVStatusBadArgument},
      {QVEffectsFillGradient(rgb, kBounds, gray, nullptr, four), kQVStatusBadArgument},
      {QVEffectsFillGradient(rgb, kBounds, two, four, four), kQVStatusUnsupportedOlder},
      {QVEffectsFillGradient(seven, kBounds, gray, other, other), kQVStatusUnsupported},
      {QVEffectsVariance(six, wide, kBounds, 0), kQVStatusUnsupported},
  };
  for (const auto& call : calls) EXPECT_EQ(call.status, call.expected) << &call - calls;

  const qv::ImageRef failing = FailingImage(kBounds, 3), mask = FailingImage(kBounds, 1);
  test::CaughtLog log;
  EXPECT_EQ(QVEffectsAnalyzeImage(failing, kBounds, four, other), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsGetAvgColor(failing, mask, kBounds, four, other), kQVStatusBadArgument);
  EXPECT_EQ(log.events.size(), 2u);
  // What the blur within answers is logged there and here.
  EXPECT_EQ(QVEffectsVariance(failing, rgb, kBounds, 1), kQVStatusUnknown2);
  ASSERT_EQ(log.events.size(), 4u);
  EXPECT_EQ(log.events[3].code, kQVStatusUnknown2);
  EXPECT_EQ(log.events[3].path, "Source/Common/QVEffects/QVEffectsVariance");
  EXPECT_THAT(four, testing::Each(0));
  // Rows of a mask that can't be had leave the first colour.
  const float white[] = {1, 1, 1};
  EXPECT_EQ(QVEffectsFillGradient(rgb, kBounds, mask, white, four), 0);
  EXPECT_EQ(rgb.At<uint8_t>(kBounds.x, kBounds.y, 1), 255);
}

TEST(Mutex, LetsOneAtATime) {
  QVEffectsMutex mutex;
  int count = 0;
  const auto work = [&] {
    for (int i = 0; i < 20000; i++) {
      mutex.Lock();
      count++;
      mutex.Unlock();
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(count, 40000);
}

}  // namespace
