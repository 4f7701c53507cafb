// SPDX-License-Identifier: Apache-2.0
// Toning against its definitions, pixel by pixel.
#include <QVEffects/QVEffects.h>
#include <gmock/gmock.h>

#include "CaughtLog.h"
#include "NaiveColors.h"

namespace {

using test::kPixel;
using test::Rgb;
using test::TestImage;

constexpr Rgb kShadow = {0.1f, 0.25f, 0.6f}, kHighlight = {1, 0.8f, 0.3f};

float Bent(float y, float balance) {
  const float p = 2 * balance - 1;
  if (p <= 0) {
    const float k = 1 / (1 - p);
    return k * y + (1 - k) * y * y;
  }
  const float k = 1 / (1 + p);
  const double root = std::sqrt(static_cast<double>(y * (4 * (1 - k)) + k * k));
  return static_cast<float>((root - static_cast<double>(k)) / static_cast<double>(2 * (1 - k)));
}

// Over the pixel by a mode, as unit values.
Rgb Over(QVBlendMode mode, Rgb top, Rgb base, float opacity) {
  Rgb out = test::Blended(mode, top, base);
  for (int c = 0; c < 3; c++) out[c] = out[c] * opacity + base[c] * (1 - opacity);
  return out;
}

Rgb GradientOver(QVBlendMode mode, Rgb base, float shadowAmount, float highlightAmount,
                 float balance, const Rgb& highlight = kHighlight) {
  const float y = Bent(test::PlainLuma(base), balance), u = 1 - y;
  Rgb top;
  for (int c = 0; c < 3; c++) top[c] = kShadow[c] * u + highlight[c] * y;
  return Over(mode, top, base, y * highlightAmount + u * shadowAmount);
}

TEST(SplitTone, IsExactInEveryMode) {
  for (const QVBlendMode mode : test::kAllModes) {
    SCOPED_TRACE(testing::Message() << std::hex << mode);
    const float balance = mode % 2 ? 0.8f : 0.3f;
    // Neither one array for both colours nor equal amounts alone make one colour.
    for (const auto& [highlight, ofShadow] :
         {std::pair{&kHighlight, 0.9f}, {&kShadow, 0.9f}, {&kHighlight, 0.4f}}) {
      test::ExpectColors([&](auto src, auto dst, QVRect rect) {
        return QVEffectsSplitTone(src, dst, rect, kShadow.data(), highlight->data(), mode, ofShadow,
                                  0.4f, balance);
      }, test::OnUnit([&](Rgb base) {
        return GradientOver(mode, base, ofShadow, 0.4f, balance, *highlight);
      }));
    }
    test::ExpectColors([&](auto src, auto dst, QVRect rect) {
      return QVEffectsDuotone(src, dst, rect, kShadow.data(), kShadow.data(), mode, balance, 0.7f);
    }, test::OnUnit([&](Rgb base) { return Over(mode, kShadow, base, 0.7f); }));
  }
}

// The gradient alone is on the scale of the samples; every other combination isn't.
TEST(GradientMap, IsExact) {
  for (const float balance : {0.5f, 0.2f, 0.9f, 0.0f, 1.0f}) {
    SCOPED_TRACE(testing::Message() << balance);
    const auto direct = [&](Rgb s, float unit, float max) {
      const float pos = Bent(test::PlainLuma(s) * unit, balance) * max;
      Rgb out;
      for (int c = 0; c < 3; c++) out[c] = kShadow[c] * (max - pos) + kHighlight[c] * pos;
      return out;
    };
    test::ExpectColors([&](auto src, auto dst, QVRect rect) {
      return QVEffectsGradientMap(src, dst, rect, kShadow.data(), kHighlight.data(), balance);
    }, direct);
    test::ExpectColors([&](auto src, auto dst, QVRect rect) {
      return QVEffectsDuotone(src, dst, rect, kShadow.data(), kHighlight.data(), kQVBlendModeNormal,
                              balance, 1.25f);
    }, direct);
    // One amount below 1 doesn't make a gradient alone.
    test::ExpectColors([&](auto src, auto dst, QVRect rect) {
      return QVEffectsSplitTone(src, dst, rect, kShadow.data(), kHighlight.data(),
                                kQVBlendModeNormal, 0, 1, balance);
    }, test::OnUnit([&](Rgb base) {
      return GradientOver(kQVBlendModeNormal, base, 0, 1, balance);
    }));
  }
}

Rgb Toned(Rgb s, float unit, float max, const Rgb& color, float amount) {
  const auto [tone, share, white] = test::ToneGray(color, test::PlainLuma(s) * unit);
  Rgb out;
  for (int c = 0; c < 3; c++) {
    out[c] = s[c] * (1 - amount) + (tone[c] * share + white) * (amount * max);
  }
  return out;
}

TEST(Toning, ColorsAreExact) {
  for (const Rgb color :
       {Rgb{0.7f, 0.5f, 0.3f}, {0, 1, 0}, {0.2f, 0.2f, 0.9f}, {0.4f, 0.4f, 0.4f}}) {
    for (const float amount : {1.0f, 0.6f}) {
      test::ExpectColors([&](auto src, auto dst, QVRect rect) {
        return QVEffectsAddToner(src, dst, rect, color.data(), amount);
      }, [&](Rgb s, float unit, float max) { return Toned(s, unit, max, color, amount); });
    }
    const float lightness = color[0] - 0.5f;
    test::ExpectColors([&](auto src, auto dst, QVRect rect) {
      return QVEffectsColorize(src, dst, rect, color[1], color[2], lightness);
    }, test::OnUnit([&](Rgb c) {
      Rgb hsl, out;
      RGB2HSL(c.data(), hsl.data());
      const float lift = lightness > 0 ? lightness : 0;
      hsl = {color[1], color[2], hsl[2] * (1 - std::abs(lightness)) + lift};
      HSL2RGB(hsl.data(), out.data());
      return out;
    }));
  }
}

TEST(Toning, ValuesByHand) {
  static constexpr Rgb kRed = {1, 0, 0}, kGray = {0.4f, 0.4f, 0.4f};
  const auto tone = [](const Rgb& color) {
    return [&](__QVImage* i) { return QVEffectsAddToner(i, i, kPixel, color.data(), 1); };
  };
  const auto colorize = [](float h, float s, float l) {
    return [=](__QVImage* i) { return QVEffectsColorize(i, i, kPixel, h, s, l); };
  };
  const auto map = [](float balance) {
    return [=](__QVImage* i) {
      return QVEffectsGradientMap(i, i, kPixel, kShadow.data(), kHighlight.data(), balance);
    };
  };
  const struct {
    Rgb from;
    std::function<int(__QVImage*)> run;
    Rgb to;
  } kCases[] = {
      {{0.2f, 0.7f, 0.3f}, colorize(0.5f, 0.4f, 1), {1, 1, 1}},
      {{0.4f, 0.6f, 0.5f}, colorize(2.0f / 3, 1, 0), {0, 0, 1}},
      {{0.4f, 0.6f, 0.5f}, colorize(0, 0.5f, 0.5f), {0.875f, 0.625f, 0.625f}},
      // Red's luma is 0.299: half of it, then on the way to white.
      {{0.1495f, 0.1495f, 0.1495f}, tone(kRed), {0.5f, 0, 0}},
      {{0.6495f, 0.6495f, 0.6495f}, tone(kRed), {1, 0.5f, 0.5f}},
      {{0.8f, 0.4f, 0.2f}, tone(kGray), {0.4968f, 0.4968f, 0.4968f}},
      {{1, 1, 1}, map(0.9f), kHighlight},
      {{0.5f, 0.5f, 0.5f}, map(0.5f), {0.55f, 0.525f, 0.45f}},
      // Luma 0.5 is bent to 0.375 at one end, and the other end bends 0.375 to 0.5.
      {{0.5f, 0.5f, 0.5f}, map(0), {0.4375f, 0.45625f, 0.4875f}},
      {{0.375f, 0.375f, 0.375f}, map(1), {0.55f, 0.525f, 0.45f}},
  };
  for (const auto& each : kCases) {
    const Rgb got = test::Becomes(each.from, each.run);
    EXPECT_THAT(got, testing::Pointwise(testing::FloatNear(2e-6f), each.to)) << &each - kCases;
  }
}

TEST(Toning, SolarizeTurnsTheUpperHalfRound) {
  const struct {
    int depth;
    float from, to;
  } kCases[] = {{8, 127, 127},          {8, 128, 127},       {8, 255, 0},       {8, 0, 0},
                {16, 32767, 32767},     {16, 32768, 32767},  {16, 65535, 0},    {32, 0.5f, 0.5f},
                {32, 0.5625f, 0.4375f}, {32, 1.25f, -0.25f}, {32, -0.5f, -0.5f}};
  for (const auto& [depth, from, to] : kCases) {
    for (const int planes : {2, 4}) {
      TestImage image(kPixel, {depth, planes, 1});
      test::Pixel pixel = {};
      for (int p = 0; p < planes; p++) test::SetSample(pixel, p, depth, from);
      std::memcpy(image.Address(0, 0), pixel.data(), image.GetForm().ColBytes());
      ASSERT_EQ(QVEffectsSolarize(image, image, kPixel), kQVStatusSuccess);
      const test::Pixel got = test::NearestPixel(image, 0, 0);
      for (int p = 0; p < planes; p++) {
        EXPECT_EQ(test::GetSample(got, p, depth), p == planes - 1 ? from : to) << depth;
      }
    }
  }
}

TEST(Toning, FurtherPlanes) {
  const auto duotone = [](const Rgb& highlight, float amount) {
    return [&highlight, amount](auto s, auto d, QVRect r) {
      return QVEffectsDuotone(s, d, r, kShadow.data(), highlight.data(), kQVBlendModeNormal, 0.5f,
                              amount);
    };
  };
  const auto colorize = [](auto s, auto d, QVRect r) {
    return QVEffectsColorize(s, d, r, 0.5f, 0.5f, 0);
  };
  const auto addToner = [](auto s, auto d, QVRect r) {
    return QVEffectsAddToner(s, d, r, kShadow.data(), 0);
  };
  const struct {
    test::ColorRun run;
    const char* owners;
  } kCases[] = {{colorize, "ddss"},
                {addToner, "dsds"},
                {QVEffectsSolarize, "ssss"},
                {duotone(kHighlight, 1), "dsds"},
                {duotone(kHighlight, 0.5f), "dsds"},
                {duotone(kShadow, 0.5f), "dsds"},
                {duotone(kHighlight, 0), "ssss"}};
  for (const auto& [run, owners] : kCases) EXPECT_EQ(test::OwnersOfFourth(run), owners);
}

TEST(Toning, RefusesOtherImages) {
  TestImage gray(kPixel, {8, 1, 0}), rgb(kPixel, {8, 3, 0}), deep(kPixel, {16, 3, 0});
  const auto before = rgb.Bytes();
  const auto statuses = [](__QVImage* src, __QVImage* dst, const float* color) {
    constexpr QVBlendMode kMode = kQVBlendModeScreen;
    return std::array{
        QVEffectsAddToner(src, dst, kPixel, color, 1),
        QVEffectsSplitTone(src, dst, kPixel, color, kShadow.data(), kMode, 0, 0.5f, 0.5f),
        QVEffectsDuotone(src, dst, kPixel, kShadow.data(), color, kMode, 0.5f, 0.5f),
        QVEffectsGradientMap(src, dst, kPixel, color, color, 0.5f)};
  };
  const float* color = kHighlight.data();
  const auto unknown = static_cast<QVBlendMode>(0x4E6F726D);
  test::CaughtLog log;
  EXPECT_THAT(statuses(gray, gray, color), testing::Each(kQVStatusUnsupported));
  EXPECT_THAT(statuses(deep, rgb, color), testing::Each(kQVStatusUnsupported));
  EXPECT_THAT(statuses(rgb, rgb, nullptr), testing::Each(kQVStatusBadArgument));
  for (const auto& [src, dst] : {std::pair<__QVImage*, __QVImage*>{nullptr, rgb}, {rgb, nullptr}}) {
    EXPECT_THAT(statuses(src, dst, color), testing::Each(kQVStatusBadArgument));
    EXPECT_EQ(QVEffectsSolarize(src, dst, kPixel), kQVStatusBadArgument);
    EXPECT_EQ(QVEffectsColorize(src, dst, kPixel, 0, 0, 0), kQVStatusBadArgument);
  }
  EXPECT_EQ(QVEffectsDuotone(rgb, rgb, kPixel, color, color, unknown, 0.5f, 1),
            kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsDuotone(rgb, rgb, kPixel, color, color, unknown, 0.5f, 0), kQVStatusSuccess);
  EXPECT_EQ(QVEffectsSolarize(deep, rgb, kPixel), kQVStatusUnsupported);
  EXPECT_TRUE(log.events.empty());
  EXPECT_EQ(QVEffectsColorize(gray, rgb, kPixel, 0, 0, 0), kQVStatusUnsupported);
  ASSERT_EQ(log.events.size(), 1u);
  EXPECT_EQ(log.events[0].code, kQVStatusUnsupported);
  EXPECT_EQ(log.events[0].path, "Source/Common/QVEffects/QVEffectsColorize");
  EXPECT_EQ(log.events[0].line, 83);
  EXPECT_EQ(rgb.Bytes(), before);
}

}  // namespace
