// SPDX-License-Identifier: Apache-2.0
// Hue, saturation, vibrance and desaturation against the functions on single colours, whose tests
// are elsewhere.
#include <QVEffects/QVEffects.h>
#include <gmock/gmock.h>

#include "CaughtLog.h"
#include "NaiveColors.h"

namespace {

using test::kPixel;
using test::Rgb;
using test::TestImage;

using Convert = void (*)(const float*, float*);

Rgb Turned(Rgb rgb, float h, float s, float b, Convert there, Convert back) {
  Rgb hsb, out;
  there(rgb.data(), hsb.data());
  HueSaturationBrightness(hsb.data(), h, s, b);
  back(hsb.data(), out.data());
  return out;
}

TEST(HueSaturation, IsExact) {
  for (const auto& [h, s, b] : {Rgb{0.3f, 0.4f, -0.2f},
                                {-1, 0, 0},
                                {0, 0, 0.5f},
                                {0, -0.6f, 0},
                                {0, 5, 0},
                                {0, 0.4f, -0.7f}}) {
    SCOPED_TRACE(testing::Message() << h << ' ' << s << ' ' << b);
    test::ExpectColors([&](auto src, auto dst, QVRect rect) {
      return QVEffectsHueSaturationBrightness(src, dst, rect, h, s, b);
    }, test::OnUnit([&](Rgb c) {
      if (h != 0) return Turned(c, h, s, b, RGB2HSB, HSB2RGB);
      if (s == 0) {
        Brightness(c.data(), b);
      } else if (b == 0) {
        Saturation(c.data(), s);
      } else {
        SaturationBrightness(c.data(), s, b);
      }
      return c;
    }));
    test::ExpectColors([&](auto src, auto dst, QVRect rect) {
      return QVEffectsHueSaturationLightness(src, dst, rect, h, s, b);
    }, test::OnUnit([&](Rgb c) { return Turned(c, h, s, b, RGB2HSL, HSL2RGB); }));
    test::ExpectColors([&](auto src, auto dst, QVRect rect) {
      return QVEffectsVibrance(src, dst, rect, s - h);
    }, test::OnUnit([&](Rgb c) {
      Vibrance2(c.data(), s - h);
      return c;
    }));
  }
}

TEST(Desaturate, IsExactInEveryMode) {
  for (const QVBlendMode mode : test::kAllModes) {
    for (const float amount : {0.3f, 1.5f, -1.0f}) {
      SCOPED_TRACE(testing::Message() << std::hex << mode << ' ' << amount);
      test::ExpectColors([&](auto src, auto dst, QVRect rect) {
        return QVEffectsDesaturate(src, dst, rect, mode, amount);
      }, [&](Rgb s, float unit, float max) {
        if (amount <= 0) return s;
        if (mode == kQVBlendModeNormal && amount >= 1) {
          const float gray = test::PlainLuma(s);
          return Rgb{gray, gray, gray};
        }
        const Rgb base = {s[0] * unit, s[1] * unit, s[2] * unit};
        const float gray = test::PlainLuma(base);
        Rgb out = test::Blended(mode, {gray, gray, gray}, base);
        for (int c = 0; c < 3; c++) out[c] = (out[c] * amount + base[c] * (1 - amount)) * max;
        return out;
      });
    }
  }
}

TEST(HueSaturation, RefusesOtherImages) {
  TestImage gray(kPixel, {8, 1, 0}), rgb(kPixel, {8, 3, 0}), deep(kPixel, {16, 3, 0});
  const auto unknown = static_cast<QVBlendMode>(0x4E6F726D);
  const auto before = rgb.Bytes();
  test::CaughtLog log;
  const auto statuses = [](__QVImage* src, __QVImage* dst) {
    std::vector<int> all;
    for (const float by : {0.5f, 0.0f}) {  // at 0 a copy is made
      all.push_back(QVEffectsVibrance(src, dst, kPixel, by));
      all.push_back(QVEffectsHueSaturationBrightness(src, dst, kPixel, by, 0, 0));
      all.push_back(QVEffectsHueSaturationLightness(src, dst, kPixel, by, 0, 0));
      all.push_back(QVEffectsDesaturate(src, dst, kPixel, kQVBlendModeNormal, by));
    }
    return all;
  };
  EXPECT_THAT(statuses(gray, rgb), testing::Each(kQVStatusUnsupported));
  EXPECT_THAT(statuses(gray, gray), testing::Each(kQVStatusUnsupported));
  EXPECT_THAT(statuses(deep, rgb), testing::Each(kQVStatusUnsupported));
  EXPECT_THAT(statuses(rgb, nullptr), testing::Each(kQVStatusBadArgument));
  EXPECT_THAT(statuses(nullptr, rgb), testing::Each(kQVStatusBadArgument));
  EXPECT_EQ(QVEffectsDesaturate(rgb, rgb, kPixel, unknown, 1), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsDesaturate(rgb, rgb, kPixel, unknown, 0), kQVStatusSuccess);
  EXPECT_EQ(rgb.Bytes(), before);
  EXPECT_TRUE(log.events.empty());
}

// Those of src where it has transparency, where all is copied, and where gray is laid over.
TEST(HueSaturation, FurtherPlanes) {
  for (const float amount : {1.0f, 0.5f, 0.0f}) {
    const test::ColorRun runs[] = {[=](auto s, auto d, QVRect r) {
      return QVEffectsVibrance(s, d, r, amount);
    }, [=](auto s, auto d, QVRect r) {
      return QVEffectsHueSaturationBrightness(s, d, r, 0, amount, 0);
    }, [=](auto s, auto d, QVRect r) {
      return QVEffectsHueSaturationLightness(s, d, r, amount, 0, 0);
    }, [=](auto s, auto d, QVRect r) {
      return QVEffectsDesaturate(s, d, r, kQVBlendModeNormal, amount);
    }};
    for (const auto& run : runs) {
      const bool isCopied = amount == 0 || &run == &runs[3];
      EXPECT_EQ(test::OwnersOfFourth(run), isCopied ? "ssss" : "ddss") << &run - runs;
    }
  }
}

}  // namespace
