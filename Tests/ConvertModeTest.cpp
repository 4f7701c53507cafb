// SPDX-License-Identifier: Apache-2.0
// Conversions of images against those of single colours, and those against what they stand for.
#include <QVEffects/QVEffectsColor.h>
#include <QVEffects/QVEffectsConvert.h>
#include <gmock/gmock.h>

#include <climits>
#include <cmath>

#include "CaughtLog.h"
#include "NaiveColors.h"

namespace {

using test::Form;
using test::GetSample;
using test::Pixel;
using test::Residency;
using test::Rgb;
using test::SetSample;
using test::TestImage;

constexpr int kFromColors[] = {3, 3, 3, 3, 3, 3, 3, 1, 3};
constexpr int kToColors[] = {3, 3, 3, 3, 3, 3, 1, 3, 1};

template <void (*convert)(const float*, float*)>
Rgb By(Rgb color) {
  Rgb out;
  convert(color.data(), out.data());
  return out;
}

using Formula = Rgb (*)(Rgb);
constexpr Formula kFormulas[] = {By<RGB2HSB>, By<HSB2RGB>, By<RGB2HSL>,
                                 By<HSL2RGB>, test::ToYcc, test::FromYcc};

// One pixel by the definition.
Pixel Converted(const Pixel& source, Form from, Form to, unsigned mode) {
  const int depth = from.depth;
  const float max = test::FullScale(depth), unit = test::UnitScale(depth);
  const Rgb in = {GetSample(source, 0, depth), GetSample(source, 1, depth),
                  GetSample(source, 2, depth)};
  const float alpha = from.transparency ? GetSample(source, from.planes - 1, depth) : max;
  const float a = from.transparency ? alpha * unit : 1.0f;
  Rgb out = {test::PlainLuma(in), 0, 0};
  if (mode < 6) {
    out = kFormulas[mode]({in[0] * unit, in[1] * unit, in[2] * unit});
    for (float& v : out) v *= max;
  }
  if (mode == 7) out.fill(in[0]);
  if (mode == 8) out[0] = (1.0f - a) * max + out[0] * a;
  Pixel result = {};
  for (int p = 0; p < kToColors[mode]; p++) SetSample(result, p, depth, out[p]);
  if (to.transparency) SetSample(result, to.planes - 1, depth, alpha);
  return result;
}

// Rows longer than a strip, and than those of src.
TEST(ConvertMode, IsExactInEveryForm) {
  for (int i = 0; i < 3 * 9 * 2 * 2; i++) {
    const int depth = 8 << i / 36, mode = i / 4 % 9, fromAlpha = i / 2 % 2, toAlpha = i % 2;
    const Form from = {depth, kFromColors[mode] + fromAlpha, fromAlpha};
    const Form to = {depth, kToColors[mode] + toAlpha, toAlpha};
    SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << from << " to " << to);
    TestImage src({-3, 5, 300, 3}, from, Residency::kMemory, 2);
    TestImage dst({-5, 4, 290, 5}, to, Residency::kMemory, 3);
    const auto expected = test::Changed(dst, dst.Bounds(), [&](int x, int y) {
      return Converted(NearestPixel(src, x, y), from, to, mode);
    });
    EXPECT_EQ(QVEffectsConvertImageMode(src, dst, {-9, 2, 400, 9}, mode), kQVStatusSuccess);
    EXPECT_TRUE(dst.Bytes() == expected);
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

TEST(ConvertMode, ConvertsSingleColors) {
  using testing::NanSensitiveFloatEq;
  using testing::Pointwise;
  for (const Rgb& color :
       {Rgb{0.25f, 0.5f, 0.75f}, {1, 1, 1}, {0.9f, 0.1f, 0.4f}, {-0.5f, 1.5f, NAN}}) {
    for (unsigned mode = 0; mode < 10; mode++) {
      SCOPED_TRACE(mode);
      const bool converts = mode < 6;
      const int status = converts ? kQVStatusSuccess : kQVStatusBadArgument;
      const Rgb expected = converts ? kFormulas[mode](color) : Rgb{};
      Rgb out = {}, inPlace = color;
      EXPECT_EQ(QVEffectsConvertColorMode(color.data(), out.data(), mode), status);
      EXPECT_EQ(QVEffectsConvertColorMode(inPlace.data(), inPlace.data(), mode), status);
      EXPECT_THAT(out, Pointwise(NanSensitiveFloatEq(), expected));
      EXPECT_THAT(inPlace, Pointwise(NanSensitiveFloatEq(), converts ? expected : color));
    }
  }
  float color[] = {0.25f, 0.5f, 0.75f};
  EXPECT_EQ(QVEffectsConvertColorMode(nullptr, color, 0), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsConvertColorMode(color, nullptr, 0), kQVStatusBadArgument);
}

}  // namespace
