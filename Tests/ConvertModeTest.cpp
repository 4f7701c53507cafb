// SPDX-License-Identifier: Apache-2.0
// Conversions of images against those of single colours, and those against what they stand for.
#include <QVEffects/QVEffectsColor.h>
#include <QVEffects/QVEffectsConvert.h>
#include <gmock/gmock.h>

#include <climits>
#include <cmath>

#include "CaughtLog.h"
#include "Naive.h"
#include "TestImage.h"
#include "Utils/QVEffectsUtils.h"

namespace {

using test::Form;
using test::GetSample;
using test::NearestPixel;
using test::Pixel;
using test::Residency;
using test::SetSample;
using test::TestImage;

constexpr int kFromColors[] = {3, 3, 3, 3, 3, 3, 3, 1, 3};
constexpr int kToColors[] = {3, 3, 3, 3, 3, 3, 1, 3, 1};

float Luma(const float* c) { return c[2] * 0.114f + (c[1] * 0.587f + c[0] * 0.299f); }

void ToYcc(const float* c, float* ycc) {
  ycc[0] = Luma(c);
  ycc[1] = c[2] * 0.5f + (c[1] * -0.331264f + c[0] * -0.168736f) + 0.5f;
  ycc[2] = c[2] * -0.081312f + (c[1] * -0.418688f + c[0] * 0.5f) + 0.5f;
}

void FromYcc(const float* ycc, float* c) {
  const float cb = ycc[1] - 0.5f, cr = ycc[2] - 0.5f;
  c[0] = std::clamp(cr * 1.402f + ycc[0], 0.0f, 1.0f);
  c[1] = std::clamp(cr * -0.714136f + (cb * -0.344136f + ycc[0]), 0.0f, 1.0f);
  c[2] = std::clamp(cb * 1.772f + ycc[0], 0.0f, 1.0f);
}

using Formula = void (*)(const float*, float*);
constexpr Formula kFormulas[] = {RGB2HSB, HSB2RGB, RGB2HSL, HSL2RGB, ToYcc, FromYcc};

// One pixel by the definition.
Pixel Converted(const Pixel& source, Form from, Form to, unsigned mode) {
  const int depth = from.depth;
  const float max = test::FullScale(depth), unit = test::UnitScale(depth);
  float in[5], out[3];
  for (int p = 0; p < from.planes; p++) in[p] = GetSample(source, p, depth);
  const float alpha = from.transparency ? in[from.planes - 1] : max;
  const float a = from.transparency ? alpha * unit : 1.0f;
  if (mode < 6) {
    const float c[] = {in[0] * unit, in[1] * unit, in[2] * unit};
    kFormulas[mode](c, out);
    for (float& v : out) v *= max;
  } else if (mode == 7) {
    out[0] = out[1] = out[2] = in[0];
  } else {
    out[0] = mode == 6 ? Luma(in) : (1.0f - a) * max + Luma(in) * a;
  }
  Pixel result = {};
  for (int p = 0; p < kToColors[mode]; p++) SetSample(result, p, depth, out[p]);
  if (to.transparency) SetSample(result, to.planes - 1, depth, alpha);
  return result;
}

// Runs a mode and compares every byte; dst may be src.
void ExpectExact(TestImage& src, TestImage& dst, QVRect rect, unsigned mode) {
  SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << src.GetForm() << " to "
                                  << dst.GetForm() << " at " << rect.x);
  std::vector<std::byte> expected = dst.Bytes();
  const QVRect b = dst.Bounds();
  for (int y = b.y; y < b.y + b.height; y++) {
    for (int x = b.x; x < b.x + b.width; x++) {
      if (!test::Contains(rect, x, y)) continue;
      const Pixel source = NearestPixel(src, x, y);
      PutPixel(expected, dst, x, y, Converted(source, src.GetForm(), dst.GetForm(), mode));
    }
  }
  EXPECT_EQ(QVEffectsConvertImageMode(src, dst, rect, mode), kQVStatusSuccess);
  EXPECT_TRUE(dst.Bytes() == expected);
  EXPECT_EQ(src.BadCalls() + dst.BadCalls(), 0);
}

TEST(ConvertMode, IsExactInEveryForm) {
  constexpr QVRect kRects[] = {
      {-3, 5, 300, 3}, {1, 6, 267, 1}, {-9, 2, 400, 5}, {3, 5, 0, 2}, {INT_MIN, 6, INT_MAX, 9}};
  for (int i = 0; i < 3 * 9 * 2 * 2 * 2; i++) {
    const int depth = 8 << i / 72, mode = i / 8 % 9, fromAlpha = i / 4 % 2, toAlpha = i / 2 % 2;
    const Residency residency = i % 2 ? Residency::kCallbacks : Residency::kMemory;
    const Form from = {depth, kFromColors[mode] + fromAlpha, fromAlpha};
    const Form to = {depth, kToColors[mode] + toAlpha, toAlpha};
    for (const QVRect rect : kRects) {
      TestImage src({-3, 5, 300, 3}, from, residency, 2);
      TestImage dst({-5, 4, 290, 5}, to, residency, 3);
      ExpectExact(src, dst, rect, mode);
      if (from == to) ExpectExact(src, src, rect, mode);
    }
  }
}

// There and back, for 8-bit colours on a grid with the ends.
TEST(ConvertMode, ComesBack) {
  constexpr int kSteps = 18, kCount = kSteps * kSteps * kSteps;
  for (const auto& [mode, tolerance] : {std::pair{0u, 6}, {2u, 9}, {4u, 2}}) {
    TestImage image({0, 0, kCount, 1}, {8, 3, 0});
    const auto grid = [](int i, int p) {
      return 15 * (p == 0 ? i / kSteps / kSteps : (p == 1 ? i / kSteps % kSteps : i % kSteps));
    };
    for (int i = 0; i < kCount * 3; i++) {
      image.At<uint8_t>(i / 3, 0, i % 3) = static_cast<uint8_t>(grid(i / 3, i % 3));
    }
    for (unsigned back = 0; back < 2; back++) {
      ASSERT_EQ(QVEffectsConvertImageMode(image, image, image.Bounds(), mode + back), 0);
      for (int i = 0; back == 0 && mode == 4 && i < kCount; i += kSteps * kSteps + kSteps + 1) {
        EXPECT_TRUE(image.At<uint8_t>(i, 0, 1) == 128 && image.At<uint8_t>(i, 0, 2) == 128);
      }
    }
    for (int i = 0; i < kCount; i++) {
      const bool gray = grid(i, 0) == grid(i, 1) && grid(i, 1) == grid(i, 2);
      for (int p = 0; p < 3; p++) {
        ASSERT_NEAR(image.At<uint8_t>(i, 0, p), grid(i, p), gray && mode < 4 ? 0 : tolerance)
            << "mode " << mode << " at " << i;
      }
    }
  }
}

TEST(ConvertMode, GivesKnownSamples) {
  const struct {
    unsigned mode;
    std::vector<uint8_t> from, to;  // of two or four samples the last is transparency
  } cases[] = {
      {0, {255, 0, 0}, {0, 255, 255, 255}},
      {0, {0, 0, 200, 9}, {170, 255, 200, 9}},
      {2, {0, 255, 0}, {85, 255, 128}},
      {4, {255, 255, 255, 7}, {255, 128, 128}},
      {5, {255, 128, 255}, {255, 164, 255}},
      {5, {0, 0, 0}, {0, 135, 0}},
      {6, {10, 20, 30}, {18, 255}},
      {7, {77, 3}, {77, 77, 77, 3}},
      {8, {10, 20, 30, 0}, {255}},
      {8, {0, 0, 0, 51}, {204, 51}},
      {8, {10, 20, 30}, {18}},
  };
  const auto form = [](const std::vector<uint8_t>& pixel) {
    const int planes = static_cast<int>(pixel.size());
    return Form{8, planes, planes % 2 == 0};
  };
  for (const auto& c : cases) {
    TestImage src({0, 0, 1, 1}, form(c.from)), dst({0, 0, 1, 1}, form(c.to));
    std::memcpy(src.Address(0, 0), c.from.data(), c.from.size());
    ASSERT_EQ(QVEffectsConvertImageMode(src, dst, {0, 0, 1, 1}, c.mode), 0);
    for (size_t p = 0; p < c.to.size(); p++) {
      EXPECT_EQ(dst.At<uint8_t>(0, 0, static_cast<int>(p)), c.to[p]) << "mode " << c.mode;
    }
  }
}

// Near white, rounding takes the saturation of a colour in range past full scale.
TEST(ConvertMode, HoldsWhatRoundingTakesOut) {
  TestImage src({0, 0, 2, 1}, {16, 3, 0}), dst({0, 0, 2, 1}, {16, 3, 0});
  constexpr uint16_t kColors[2][3] = {{65529, 65382, 65535}, {65262, 65535, 65535}};
  std::memcpy(src.Address(0, 0), kColors, sizeof kColors);
  ASSERT_EQ(QVEffectsConvertImageMode(src, dst, {0, 0, 2, 1}, kQVColorModeRGBToHSL), 0);
  EXPECT_EQ(dst.At<uint16_t>(0, 0, 1), 65535);
  EXPECT_EQ(dst.At<uint16_t>(1, 0, 1), 65535);
}

TEST(ConvertMode, RefusesWhatDoesNotFit) {
  constexpr QVRect kRect = {0, 0, 5, 2};
  constexpr Form kForms[] = {{8, 1, 0}, {8, 2, 1}, {8, 3, 0},  {8, 4, 1},  {8, 2, 0},
                             {8, 4, 0}, {8, 5, 1}, {16, 3, 0}, {16, 1, 0}, {32, 4, 1}};
  test::CaughtLog log;
  for (unsigned mode = 0; mode < 9; mode++) {
    for (const Form from : kForms) {
      TestImage src(kRect, from);
      for (const Form to : kForms) {
        TestImage dst(kRect, to);
        const bool fits = from.planes - from.transparency == kFromColors[mode] &&
                          to.planes - to.transparency == kToColors[mode] && from.depth == to.depth;
        const std::vector<std::byte> before = dst.Bytes();
        EXPECT_EQ(QVEffectsConvertImageMode(src, dst, kRect, mode), fits ? 0 : kQVStatusUnsupported)
            << mode << ": " << from << " to " << to;
        EXPECT_TRUE(fits || dst.Bytes() == before);
      }
      EXPECT_EQ(QVEffectsConvertImageMode(src, nullptr, kRect, mode), kQVStatusBadArgument);
      EXPECT_EQ(QVEffectsConvertImageMode(nullptr, src, kRect, mode), kQVStatusBadArgument);
      EXPECT_EQ(QVEffectsConvertImageMode(src, src, kRect, mode ? UINT_MAX - mode : 9),
                kQVStatusBadArgument);
    }
  }
  EXPECT_TRUE(log.events.empty());
}

TEST(ConvertMode, RowsThatCannotBeHadAreAnUnknownFailure) {
  const QVImageCallbacks failing = {[](void*, QVRect, int, int, void*, int) {
    return 77;
  }, [](void*, QVRect, int, int, const void*, int) { return 78; }, nullptr};
  qv::ImageRef src;
  ASSERT_EQ(QVImageCreateWithCallbacks({0, 0, 4, 4}, 8, 3, 2, 0, &failing, nullptr, src.Receive()),
            0);
  TestImage dst({0, 0, 4, 4}, {8, 3, 0});
  test::CaughtLog log;
  EXPECT_EQ(QVEffectsConvertImageMode(src, dst, {0, 0, 4, 4}, 0), kQVStatusUnknown);
  ASSERT_EQ(log.events.size(), 1u);
  EXPECT_EQ(log.events[0].code, kQVStatusBadArgument);
  EXPECT_EQ(log.events[0].path, "Source/Common/QVEffects/QVEffectsConvertImageMode");
}

TEST(ConvertMode, ConvertsSingleColors) {
  using testing::NanSensitiveFloatEq;
  for (const auto& color : {std::array{0.25f, 0.5f, 0.75f},
                            {1, 1, 1},
                            {0, 0, 0},
                            {0.9f, 0.1f, 0.4f},
                            {1, 0, 0.01f},
                            {-0.5f, 1.5f, NAN}}) {
    for (unsigned mode = 0; mode < 10; mode++) {
      std::array<float, 3> out = {}, inPlace = color, expected = {};
      const int status = mode < 6 ? kQVStatusSuccess : kQVStatusBadArgument;
      EXPECT_EQ(QVEffectsConvertColorMode(color.data(), out.data(), mode), status);
      EXPECT_EQ(QVEffectsConvertColorMode(inPlace.data(), inPlace.data(), mode), status);
      if (mode < 6) kFormulas[mode](color.data(), expected.data());
      const auto& unchanged = mode < 6 ? expected : color;
      for (int i = 0; i < 3; i++) {
        EXPECT_THAT(out[i], NanSensitiveFloatEq(expected[i])) << "mode " << mode;
        EXPECT_THAT(inPlace[i], NanSensitiveFloatEq(unchanged[i])) << "mode " << mode;
      }
    }
  }
  float color[] = {0.25f, 0.5f, 0.75f};
  EXPECT_EQ(QVEffectsConvertColorMode(nullptr, color, 0), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsConvertColorMode(color, nullptr, 0), kQVStatusBadArgument);
}

}  // namespace
