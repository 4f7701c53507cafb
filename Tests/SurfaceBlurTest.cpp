// SPDX-License-Identifier: Apache-2.0
// Surface blur against a plain walk over all rows of all windows, bit for bit.
#include <QVEffects/QVEffectsBlur.h>
#include <QVEffects/QVEffectsSurfaceBlur.h>
#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>

#include "CaughtLog.h"
#include "Naive.h"
#include "TestImage.h"
#include "Utils/QVEffectsUtils.h"

namespace {

using test::Form;
using test::FullScale;
using test::NearestPixel;
using test::Pixel;
using test::SampleAt;
using test::TestImage;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

template <class Sum>
struct Bins {
  std::array<Sum, 8> sums = {};
  std::array<unsigned, 8> counts = {};

  // `count` is 1 to add a sample or bins, -1 to take them away.
  void Add(float sample, int bin, int count) {
    sums[bin] += static_cast<Sum>(count) * static_cast<Sum>(sample);
    counts[bin] += count;
  }
  void Add(const Bins& other, int count) {
    for (int b = 0; b < 8; b++) {
      sums[b] += static_cast<Sum>(count) * other.sums[b];
      counts[b] += count * other.counts[b];
    }
  }
};

struct Settings {
  int radius;
  float threshold, amount;
  QVPoint offset = {0, 0};
  int bins = 8;
};

int BinOf(float sample, int depth, int bins) {
  const int coarse = bins == 4;
  if (depth == 8) return static_cast<int>(sample) >> (5 + coarse);
  if (depth == 16) return static_cast<int>(sample) >> (13 + coarse);
  const float scaled = sample * (coarse ? 3.9999959f : 7.9999919f);
  return static_cast<int>(std::min(std::max(scaled, 0.0f), bins - 1.0f));
}

// A row's histograms: the first one's samples are added, then it is moved from pixel to pixel.
template <class Sum>
std::vector<Bins<Sum>> RowBins(const TestImage& src, QVRect rect, int y, int plane,
                               const Settings& settings) {
  const int radius = settings.radius;
  std::vector<Bins<Sum>> row(rect.width);
  const auto change = [&](Bins<Sum>& bins, int x, int count) {
    const float sample = SampleAt(src, x, y, plane);
    bins.Add(sample, BinOf(sample, src.GetForm().depth, settings.bins), count);
  };
  for (int x = rect.x - radius; x <= rect.x + radius; x++) change(row[0], x, 1);
  for (int i = 1; i < rect.width; i++) {
    row[i] = row[i - 1];
    change(row[i], rect.x + i - 1 - radius, -1);
    change(row[i], rect.x + i + radius, 1);
  }
  return row;
}

template <class Sum>
float Blurred(const Bins<Sum>& bins, float p, int depth, const Settings& settings) {
  const float inverse = 1.0f / (settings.threshold * 2.5f * FullScale(depth));
  float num = 0, den = 0;
  for (int b = 0; b < 8; b++) {
    const auto sum = static_cast<float>(bins.sums[b]), count = static_cast<float>(bins.counts[b]);
    const float mean = sum / std::max(1.0f, count);
    const float weight = std::max(0.0f, 1.0f - std::abs(mean - p) * inverse);
    num += sum * weight;
    den += weight * count;
  }
  if (!(den > 0)) return p;
  return p * (1.0f - settings.amount) + num / den * settings.amount;
}

// What dst is expected to be; rect lies anywhere.
template <class Sum>
std::vector<std::byte> Expected(const TestImage& src, const TestImage& dst, QVRect rect,
                                const Settings& settings) {
  std::vector<std::byte> bytes = dst.Bytes();
  const auto [depth, planes, transparency] = src.GetForm();
  const int radius = settings.radius;
  const QVPoint offset = settings.offset;
  // Sums start at the first column that isn't dropped.
  const QVRect b = dst.Bounds();
  rect = QVRectIntersect(rect, {b.x + offset.x, b.y + offset.y, b.width, b.height});
  for (int plane = 0; plane < planes; plane++) {
    std::vector<std::vector<Bins<Sum>>> rows;
    for (int y = rect.y - radius; y < rect.y + rect.height + radius; y++) {
      rows.push_back(RowBins<Sum>(src, rect, y, plane, settings));
    }
    for (int i = 0; i < rect.width; i++) {
      Bins<Sum> window;
      for (int j = 0; j < 2 * radius; j++) window.Add(rows[j][i], 1);
      for (int j = 0; j < rect.height; j++) {
        const int x = rect.x + i, y = rect.y + j;
        const float p = SampleAt(src, x, y, plane);
        window.Add(rows[j + 2 * radius][i], 1);
        const bool isColor = plane < planes - transparency;
        Pixel pixel = {};
        test::SetSample(pixel, 0, depth, isColor ? Blurred(window, p, depth, settings) : p);
        auto* at = bytes.data() + (dst.Address(x - offset.x, y - offset.y) - dst.Bytes().data());
        std::memcpy(at + plane * depth / 8, pixel.data(), depth / 8);
        window.Add(rows[j][i], -1);
      }
    }
  }
  return bytes;
}

std::vector<std::byte> Expected(const TestImage& src, const TestImage& dst, QVRect rect,
                                const Settings& settings) {
  return src.GetForm().depth == 32 ? Expected<float>(src, dst, rect, settings)
                                   : Expected<uint64_t>(src, dst, rect, settings);
}

struct Case {
  QVRect bounds, rect;
  Settings settings;
  int depth = 0;  // for white images of one plane only, one pixel of which is darker
};

const Case kCases[] = {
    {{-3, 5, 37, 23}, {-3, 5, 37, 23}, {1, 0.1f, 1}},
    {{-3, 5, 37, 23}, {2, 9, 19, 8}, {4, 0.2f, 0.5f}},
    {{-3, 5, 37, 23}, {-9, 20, 70, 30}, {3, 0.05f, 1}},
    {{-3, 5, 37, 23}, {-3, 5, 37, 23}, {50, 0.3f, 1}},
    {{-3, 5, 37, 23}, {-3, 5, 37, 23}, {2, 0.1f, 1, {-4, 7}}},
    {{0, 0, 530, 3}, {0, 0, 530, 3}, {5, 10, 1}},
    {{0, 0, 1, 1}, {0, 0, 1, 1}, {1, 0.1f, 1}},
    {{0, 0, 17, 1}, {0, 0, 17, 1}, {20, 0.1f, 1.5f}},
    // Where 16-bit sums leave 31 bits, and 32.
    {{0, 0, 3, 3}, {0, 0, 3, 3}, {90, 0.1f, 1}, 16},
    {{0, 0, 3, 3}, {0, 0, 3, 3}, {91, 0.1f, 1}, 16},
    {{0, 0, 3, 3}, {0, 0, 3, 3}, {128, 0.1f, 1}, 16},
    // The same for 8 bits.
    {{0, 0, 3, 3}, {0, 0, 3, 3}, {1450, 0.1f, 1}, 8},
    {{0, 0, 3, 3}, {0, 0, 3, 3}, {1451, 0.1f, 1}, 8},
    {{0, 0, 3, 3}, {0, 0, 3, 3}, {2052, 0.1f, 1}, 8},
};

TEST(SurfaceBlur, IsExactAtAllDepths) {
  for (const Case& each : kCases) {
    for (const Form& form : test::kForms) {
      if (each.depth != 0 && form != Form{each.depth, 1, 0}) continue;
      const auto& [radius, threshold, amount, offset, bins] = each.settings;
      SCOPED_TRACE(testing::Message() << form << " at radius " << radius);
      TestImage src(each.bounds, form), dst(each.bounds, form, test::Residency::kMemory, 2);
      if (each.depth != 0) {
        std::ranges::fill(src.Bytes(), std::byte{0xFF});
        *src.Address(1, 1) = std::byte{0xF0};
      }
      const auto expected = Expected(src, dst, each.rect, each.settings);
      ASSERT_EQ(
          QVEffectsSurfaceBlurWithOffset(src, dst, each.rect, radius, threshold, amount, offset),
          kQVStatusSuccess);
      EXPECT_EQ(dst.Bytes(), expected);
    }
  }
}

// A pixel darker than the white around it becomes white up to the largest radius.
TEST(SurfaceBlur, RadiiEndWhereCountsDo) {
  for (const int depth : {8, 16, 32}) {
    SCOPED_TRACE(depth);
    TestImage image({0, 0, 3, 3}, {depth, 1, 0});
    for (int i = 0; i < 9; i++) {
      Pixel pixel = {};
      test::SetSample(pixel, 0, depth, FullScale(depth) * (i == 4 ? 0.95f : 1));
      PutPixel(image.Bytes(), image, i % 3, i / 3, pixel);
    }
    EXPECT_EQ(QVEffectsSurfaceBlur(image, image, image.Bounds(), 32768, 0.1f, 1), -108);
    ASSERT_EQ(QVEffectsSurfaceBlur(image, image, image.Bounds(), 32767, 0.1f, 1), 0);
    EXPECT_NEAR(image.Value(1, 1, 0), 1, 1e-3);
  }
}

// What asks for nothing copies.
TEST(SurfaceBlur, CopiesWhenNothingIsAsked) {
  constexpr Settings kNothing[] = {{0, 0.1f, 1}, {-5, 0.1f, 1},    {5, 0, 1},    {5, -1, 1},
                                   {5, 0.1f, 0}, {5, 0.1f, -0.5f}, {5, kNaN, 1}, {5, 0.1f, kNaN}};
  for (const auto& [radius, threshold, amount, offset, bins] : kNothing) {
    TestImage src({0, 0, 9, 7}, {32, 4, 1}), dst({-2, 3, 9, 7}, {32, 4, 1});
    ASSERT_EQ(
        QVEffectsSurfaceBlurWithOffset(src, dst, {0, 0, 9, 7}, radius, threshold, amount, {2, -3}),
        kQVStatusSuccess);
    EXPECT_EQ(dst.Bytes(), src.Bytes());
  }
}

TEST(SurfaceBlur, ValuesByHand) {
  const struct {
    std::vector<uint8_t> row;
    int radius;
    float threshold;
    int x, blurred;
  } cases[] = {
      {{10, 20, 100}, 1, 0.1f, 1, 15},  // the mean of 10 and 20; 100 is too far away
      // The mean of its own bin is too far from 31, so that it stays.
      {{0, 0, 0, 31, 0, 0, 0}, 3, 0.01f, 3, 31},
      // Any distance counts.
      {{0, 0, 0, 90, 0, 0, 0}, 3, kInfinity, 3, 13},
  };
  for (const auto& [row, radius, threshold, x, blurred] : cases) {
    TestImage image({0, 0, static_cast<int>(row.size()), 1}, {8, 1, 0});
    std::memcpy(image.Address(0, 0), row.data(), row.size());
    EXPECT_EQ(QVEffectsSurfaceBlur(image, image, image.Bounds(), radius, threshold, 1), 0);
    EXPECT_EQ(image.At<uint8_t>(x, 0, 0), blurred);
  }
}

constexpr QVRect kBase = {2, 9, 19, 8};

TEST(SurfaceBlur, LuminosityIsThatOfTheBlurredGray) {
  constexpr int kRadius = 4;
  for (const Form& form : {Form{8, 3, 0}, Form{16, 4, 1}, Form{32, 3, 0}}) {
    SCOPED_TRACE(form);
    TestImage src({-3, 5, 37, 23}, form), dst({-3, 5, 37, 23}, form), expected(dst.Bounds(), form);
    qv::ImageRef gray;
    const VRect rect = MakeVRect(kBase), read = MakeVRect(QVRectOutset(kBase, kRadius));
    ASSERT_EQ(CreateGrayScaleImage(src, *gray.Receive(), read, kGrayAsSource, kGrayLuma), 0);
    ASSERT_EQ(QVEffectsSurfaceBlur(gray, gray, kBase, kRadius, 0.2f, 0.9f), 0);
    ASSERT_EQ(ApplyLuminosity(src, expected, gray, rect), 0);
    ASSERT_EQ(QVEffectsSurfaceBlurLuminosity(src, dst, kBase, kRadius, 0.2f, 0.9f), 0);
    EXPECT_EQ(dst.Bytes(), expected.Bytes());
    // No gray image is made around nothing.
    for (const QVRect& empty : {QVRect{0, 9, 0, 8}, QVRect{100, 9, 5, 5}}) {
      EXPECT_EQ(QVEffectsSurfaceBlurLuminosity(src, dst, empty, 1 << 30, 0.2f, 1), 0);
    }
    EXPECT_EQ(dst.Bytes(), expected.Bytes());
  }
}

// The gray image, blurred around the rectangle as far as the Gaussian blur reads.
void ExpectBase(const TestImage& src, float radius, int planeBytes, int bins) {
  const int depth = planeBytes > 0 ? planeBytes * 8 : src.GetForm().depth;
  const int whole = std::max(SufaceBlurredGrayScaleImageGetOutset(radius) - 3, 0);
  const QVRect blurred = QVRectOutset(kBase, 3), read = QVRectOutset(blurred, whole);
  TestImage gray(read, {depth, 1, 0}), expected(read, {depth, 1, 0}), found(kBase, {depth, 1, 0});
  const bool isGray = src.GetForm().planes == 1;
  const auto readAll = [](__QVImage* image, const TestImage& to) {
    const QVRect rect = to.Bounds();
    return QVImageRead2(image, rect, 0, -1, to.Address(rect.x, rect.y), to.Stride(), 0);
  };
  qv::ImageRef made, base;
  if (!isGray) {
    ASSERT_EQ(
        CreateGrayScaleImage(src, *made.Receive(), MakeVRect(read), std::max(planeBytes, 0), 1), 0);
    ASSERT_EQ(readAll(made, gray), 0);
  }
  const Settings settings = {whole, 0.125f, 1, {0, 0}, bins};
  std::ranges::copy(Expected(isGray ? src : gray, expected, blurred, settings),
                    expected.Bytes().begin());
  ASSERT_EQ(QVEffectsGaussianBlur(expected, expected, kBase, 1), 0);

  ASSERT_EQ(SufaceBlurredGrayScaleImageCreate(src, *base.Receive(), kBase, radius, planeBytes, -1,
                                              1, bins == 4),
            0);
  EXPECT_EQ(QVImageGetDataSourceType(base), 1);
  ASSERT_EQ(readAll(base, found), 0);
  const auto asExpected = [&](int x, int y) { return NearestPixel(expected, x, y); };
  EXPECT_TRUE(found.Bytes() == test::Changed(found, kBase, asExpected));
}

TEST(SurfaceBlur, MakesGrayBases) {
  struct {
    Form form;
    float radius;
    int planeBytes;
  } constexpr kBases[] = {{{8, 3, 0}, 4.5f, 0},  {{8, 4, 1}, 2.4f, 2}, {{16, 3, 0}, 6, -1},
                          {{32, 4, 1}, 3, 2},    {{32, 3, 0}, 3, 4},   {{8, 1, 0}, 5, 0},
                          {{16, 1, 0}, 2.6f, 2}, {{32, 1, 0}, 7, 0},   {{8, 3, 0}, -9, 1}};
  for (const auto& [form, radius, planeBytes] : kBases) {
    for (const int bins : {8, 4}) {
      SCOPED_TRACE(testing::Message() << form << " at radius " << radius << ", bins " << bins);
      ExpectBase(TestImage({-3, 5, 37, 23}, form), radius, planeBytes, bins);
    }
  }
}

// Each failing step says where.
TEST(SurfaceBlur, LogsFailures) {
  TestImage gray(kBase, {8, 1, 0}), color(kBase, {8, 3, 0}), deep(kBase, {16, 3, 0});
  qv::ImageRef base;
  const auto create = [&](__QVImage* src, int planeBytes, int grayMode, int useFourBins) {
    return SufaceBlurredGrayScaleImageCreate(src, *base.Receive(), kBase, 2, planeBytes, 0.1f,
                                             grayMode, useFourBins);
  };
  const struct {
    int line, status;
    std::function<int()> run;
  } kFailures[] = {
      {433, 1020, [&] { return QVEffectsSurfaceBlurLuminosity(gray, gray, kBase, 2, 0.1f, 1); }},
      {437, 1020, [&] { return QVEffectsSurfaceBlurLuminosity(color, deep, kBase, 2, 0.1f, 1); }},
      {493, 1020, [&] { return create(gray, 3, 0, 0); }},
      {497, 1005, [&] { return create(color, 1, 2, 0); }},
      {505, 1020, [&] { return create(gray, 2, 0, 1); }},
      {507, 1020, [&] { return create(gray, 4, 0, 0); }},
  };
  for (const auto& [line, status, run] : kFailures) {
    test::CaughtLog log;
    EXPECT_EQ(run(), status) << line;
    ASSERT_EQ(log.events.size(), 1u) << line;
    EXPECT_EQ(log.events[0].code, status);
    EXPECT_EQ(log.events[0].path, "Source/Common/QVEffects/QVEffectsSurfaceBlur");
    EXPECT_EQ(log.events[0].line, line);
  }
}

TEST(SurfaceBlur, BaseOutsetIsDefined) {
  EXPECT_EQ(SufaceBlurredGrayScaleImageGetOutset(0.49999997f), 3);
  EXPECT_EQ(SufaceBlurredGrayScaleImageGetOutset(2.5f), 6);
  EXPECT_EQ(SufaceBlurredGrayScaleImageGetOutset(kInfinity), std::numeric_limits<int>::max());
}

}  // namespace
