// SPDX-License-Identifier: Apache-2.0
// Black and white against its definitions, sample by sample.
#include <QVEffects/QVEffects.h>
#include <gmock/gmock.h>

#include <cmath>

#include "Catalog.h"
#include "CaughtLog.h"
#include "NaiveColors.h"

namespace {

using test::ExpectMapped;
using test::Form;
using test::FullScale;
using test::Residency;
using test::TestImage;

std::vector<Form> Forms(int leastColors) {
  std::vector<Form> forms = {{8, 2, 0}, {8, 5, 1}, {16, 3, 1}, {16, 5, 0}, {32, 6, 1}};
  forms.insert(forms.end(), std::begin(test::kForms), std::end(test::kForms));
  std::erase_if(forms, [=](Form form) { return form.planes - form.transparency < leastColors; });
  return forms;
}

TEST(BlackAndWhite, LumaAndMean) {
  const auto blackWhite = [](int mode) {
    return [mode](auto src, auto dst, QVRect rect) {
      return QVEffectsBlackWhite(src, dst, rect, mode);
    };
  };
  for (const Form form : Forms(1)) {
    const float max = FullScale(form.depth);
    ExpectMapped(form, blackWhite(kQVBlackWhiteLuma), [max](float* s, int colors, int, int) {
      const float g = colors > 1 ? s[1] / max : 0, b = colors > 2 ? s[2] / max : 0;
      std::fill_n(s, colors, (0.299f * (s[0] / max) + 0.587f * g + 0.114f * b) * max);
    }, 6);
    ExpectMapped(form, blackWhite(kQVBlackWhiteMean), [](float* s, int colors, int, int) {
      float sum = 0;
      for (int c = 0; c < colors; c++) sum += s[c];
      std::fill_n(s, colors, sum / static_cast<float>(colors));
    }, 6);
    // Another mode leaves an opaque image alone, and copies a transparent one.
    ExpectMapped(form, blackWhite(2), [](float*, int, int, int) {}, 0);
  }
  // All 16-bit samples are divided by full scale as by a division.
  TestImage all({0, 0, 256, 256}, {16, 1, 0});
  for (int i = 0; i < 65536; i++) all.At<uint16_t>(i % 256, i / 256, 0) = static_cast<uint16_t>(i);
  ASSERT_EQ(QVEffectsBlackWhite(all, all, all.Bounds(), kQVBlackWhiteLuma), kQVStatusSuccess);
  for (int i = 0; i < 65536; i++) {
    const float luma = 0.299f * (static_cast<float>(i) / 65535.0f) * 65535.0f;
    ASSERT_EQ(all.At<uint16_t>(i % 256, i / 256, 0), static_cast<int>(luma + 0.5f)) << i;
  }
}

float Clamp(float value, float max, bool toZero) {
  if (value > max) return max;
  if (toZero && value < 0) return 0;
  return !toZero && value < -max ? -max : value;
}

TEST(BlackAndWhite, MixesChannels) {
  constexpr float k[9] = {0.5f, -1.5f, 2.5f, 0.1f, 0.2f, 0.6f, -3.0f, 1.0f, 1.75f};
  for (const Form form : Forms(3)) {
    const float max = FullScale(form.depth);
    ExpectMapped(form, [&](auto src, auto dst, QVRect rect) {
      return QVEffectsChannelMixer(src, dst, rect, k[0], k[1], k[2], k[3], k[4], k[5], k[6], k[7],
                                   k[8]);
    }, [&](float* s, int, int, int) {
      float mixed[3];
      for (int c = 0; c < 3; c++) {
        float sum = 0;
        for (int i = 0; i < 3; i++) sum += Clamp(s[i] * k[c * 3 + i], max, false);
        mixed[c] = Clamp(sum, max, true);
      }
      std::copy_n(mixed, 3, s);
    });
  }
}

TEST(BlackAndWhite, FiltersColors) {
  const auto filtered = [](float r, float g, float b) {
    const float sum = r + g + b;
    return [weights = test::Rgb{r / sum, g / sum, b / sum}](float* s, int colors, int, int) {
      const int count = std::min(colors, 3);
      float gray = s[0] * weights[0];
      for (int c = 1; c < count; c++) gray += s[c] * weights[c];
      std::fill_n(s, count, gray);
    };
  };
  constexpr float kHue = 0.4f;
  const float hsb[] = {kHue, 1, 1};
  float rgb[3];
  HSB2RGB(hsb, rgb);
  for (const Form form : Forms(1)) {
    ExpectMapped(form, [](auto src, auto dst, QVRect rect) {
      return QVEffectsColorFilter(src, dst, rect, 0.9f, 0.3f, -0.1f);
    }, filtered(0.9f, 0.3f, -0.1f));
    ExpectMapped(form, [](auto src, auto dst, QVRect rect) {
      return QVEffectsBlackAndWhiteWithColorFilter(src, dst, rect, kHue);
    }, filtered(rgb[0], rgb[1], rgb[2]));
  }
}

struct Film {
  float hue, contrast, grainAmount, toneAmount;
  test::Rgb tone;
};

// All combinations of contrast, grain and tone; grain of each depth, also smaller than a tile. The
// tile repeats, and stays where it is whatever the rectangle.
TEST(BlackAndWhite, Film) {
  constexpr Film kFilms[] = {
      {0.2f, 0, 0, 0, {}},
      {0.4f, 0.6f, 0, 0, {}},
      {0.7f, 0, 0.5f, 0, {}},
      {0.1f, -0.7f, 0.8f, 0, {}},
      {0.3f, 0, 0, 0.6f, {0.9f, 0.5f, 0.2f}},
      {0.8f, -0.4f, 0, 1, {0.1f, 0.3f, 0.95f}},
      {0.5f, 0, 0.4f, 0.5f, {0.5f, 0.5f, 0.5f}},
      {0.1f, 0.9f, 0.3f, 0.7f, {0.0f, 1.0f, 1.0f}},
  };
  for (const Form form : Forms(3)) {
    if (form.ColorSpace() != kQVColorSpaceRGB) continue;
    for (const Film& film : kFilms) {
      for (const int depth : {8, 16, 32}) {
        const QVRect bounds = depth == 16 ? QVRect{4, -7, 20, 26} : QVRect{0, 0, 256, 256};
        TestImage grain(bounds, {depth, 1, 0},
                        depth == 32 ? Residency::kCallbacks : Residency::kMemory, 7);
        const float max = FullScale(form.depth);
        const float hsb[] = {film.hue, 1, 1};
        float w[3];
        HSB2RGB(hsb, w);
        const float sum = w[0] + w[1] + w[2];
        for (float& weight : w) weight = weight / sum / max;
        ExpectMapped(form, [&](auto src, auto dst, QVRect rect) {
          return QVEffectsBlackAndWhite(src, dst, rect, grain,
                                        film.toneAmount > 0 ? film.tone.data() : nullptr, film.hue,
                                        film.contrast, film.grainAmount, film.toneAmount);
        }, [&](float* s, int, int x, int y) {
          float gray = w[0] * s[0] + w[1] * s[1] + w[2] * s[2];
          if (film.contrast != 0) gray = test::WithMidtones(gray, film.contrast);
          if (film.grainAmount > 0) {
            const float n = test::GetSample(test::NearestPixel(grain, x & 255, y & 255), 0, depth) *
                            test::UnitScale(depth);
            const float f = gray < 0.5f ? 2 * n * gray : 2 * (gray + n - n * gray) - 1;
            gray = f * film.grainAmount + gray * (1 - film.grainAmount);
          }
          const auto [tone, share, white] = test::ToneGray(film.tone, gray);
          const float by = film.toneAmount;
          for (int c = 0; c < 3; c++) {
            const float toned = tone[c] * share * by + gray * (1 - by) + white * by;
            s[c] = (by > 0 ? toned : gray) * max;
          }
        });
      }
    }
  }
}

void Split(const float* c, double* parts) {
  const float m = std::min({c[0], c[1], c[2]}), r = c[0] - m, g = c[1] - m, b = c[2] - m;
  const float yellow = std::min(r, g), cyan = std::min(g, b), magenta = std::min(b, r);
  const float all[] = {r - std::max(yellow, magenta),
                       yellow,
                       g - std::max(cyan, yellow),
                       cyan,
                       b - std::max(magenta, cyan),
                       magenta,
                       m};
  std::copy_n(all, 7, parts);
}

TEST(BlackAndWhite, ColorResponse) {
  constexpr float kResponse[] = {0.5f, -0.3f, 0.9f, -1.0f, 0.2f, 0.7f}, kNone[6] = {};
  constexpr float kFilter[] = {0.8f, 0.5f, 0.3f};
  for (const Form form : Forms(3)) {
    if (form.ColorSpace() != kQVColorSpaceRGB) continue;
    const float max = FullScale(form.depth);
    const float half = form.depth == 8 ? 128 : (form.depth == 16 ? 32768 : 0.5f);
    for (const float* response : {kResponse, kNone}) {
      for (const float* filter : {kFilter, static_cast<const float*>(nullptr)}) {
        ExpectMapped(form, [&](auto src, auto dst, QVRect rect) {
          return QVEffectsBlackAndWhiteColorResponse(src, dst, rect, filter, response);
        }, [&](float* s, int, int, int) {
          for (int c = 0; filter && c < 3; c++) {
            const float v = s[c], f = filter[c];
            s[c] = v < half ? 2 * v * f : 2 * (f * max + v - v * f) - max;
          }
          double parts[7];
          Split(s, parts);
          float sum = 0.299f * s[0] + 0.587f * s[1] + 0.114f * s[2];
          for (int k = 0; k < 6; k++) sum = sum + static_cast<float>(parts[k]) * response[k];
          std::fill_n(s, 3, Clamp(sum, max, true));
        });
      }
    }
  }
}

// Against two passes in double precision.
TEST(BlackAndWhite, AutoMixture) {
  constexpr double kLuma[] = {0.299, 0.886, 0.587, 0.701, 0.114, 0.413};
  for (const Form form : {Form{8, 3, 0}, {16, 4, 1}, {32, 3, 0}, {32, 4, 1}}) {
    SCOPED_TRACE(testing::Message() << form);
    constexpr QVRect kLong = {-3, 5, 301, 23};
    TestImage image(kLong, form, Residency::kCallbacks, 3);
    double mean[8] = {}, square[7] = {};
    for (int i = 0; i < kLong.width * kLong.height; i++) {
      float rgb[3];
      for (int c = 0; c < 3; c++) {
        rgb[c] = static_cast<float>(image.Value(-3 + i % 301, 5 + i / 301, c));
      }
      double parts[7];
      Split(rgb, parts);
      for (int k = 0; k < 7; k++) mean[k] += parts[k] / (301 * 23);
      for (int k = 0; k < 7; k++) square[k] += parts[k] * parts[k] / (301 * 23);
      mean[7] += (0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2]) / (301 * 23);
    }
    double weights[6], weighted = 0;
    for (int k = 0; k < 6; k++) {
      weights[k] = kLuma[k] * std::sqrt(square[k] - mean[k] * mean[k]);
      weighted += mean[k] * weights[k];
    }
    float response[6];
    ASSERT_EQ(QVEffectsBlackAndWhiteColorResponseGetAutoMixture(image, response), 0);
    for (int k = 0; k < 6; k++) {
      EXPECT_NEAR(response[k], weights[k] * (mean[7] - mean[6]) / weighted - kLuma[k], 1e-5) << k;
    }
  }
}

// One colour has no spread: its weights are only scaled, here by 1. Gray, and nothing, have none.
TEST(BlackAndWhite, AutoMixtureOfOneColor) {
  for (const test::Rgb& color : {test::Rgb{0.7f, 0.3f, 0.1f}, {0.37f, 0.81f, 0.93f}}) {
    TestImage image({0, 0, 301, 23}, {32, 3, 0});
    ASSERT_EQ(QVEffectsFillColor(image, image.Bounds(), color.data()), kQVStatusSuccess);
    float response[6];
    ASSERT_EQ(QVEffectsBlackAndWhiteColorResponseGetAutoMixture(image, response), 0);
    for (const float weight : response) EXPECT_NEAR(weight, 0, 1e-5);
  }
  TestImage gray({0, 0, 9, 9}, {8, 3, 0}), nothing({0, 0, 0, 9}, {8, 3, 0});
  std::ranges::fill(gray.Bytes(), std::byte{77});
  for (__QVImage* image : {static_cast<__QVImage*>(gray), static_cast<__QVImage*>(nothing)}) {
    float response[6];
    ASSERT_EQ(QVEffectsBlackAndWhiteColorResponseGetAutoMixture(image, response), 0);
    EXPECT_THAT(response, testing::ElementsAre(-0.299f, -0.88600004f, -0.587f, -0.701f,
                                               -0.11399996f, -0.41299996f));
  }
}

// The mean gray stays where nothing is held to the range.
TEST(BlackAndWhite, AutoRowKeepsTheMean) {
  TestImage image({0, 0, 64, 64}, {32, 3, 0});
  double before = 0, after = 0;
  for (int i = 0; i < 64 * 64; i++) {
    const float x = static_cast<float>(i % 64) / 640, y = static_cast<float>(i / 64) / 320;
    const test::Rgb rgb = {0.3f + x, 0.4f + y, 0.5f - x / 2};
    std::memcpy(image.Address(i % 64, i / 64), rgb.data(), sizeof rgb);
    before += static_cast<double>(test::PlainLuma(rgb));
  }
  const catalog::Effect* effect = catalog::Find("black-and-white-auto");
  ASSERT_TRUE(effect);
  ASSERT_EQ(effect->run({image, image, image.Bounds(), {}}), kQVStatusSuccess);
  for (int i = 0; i < 64 * 64; i++) after += image.Value(i % 64, i / 64, 1);
  EXPECT_NEAR(after / before, 1, 1e-4);
}

TEST(BlackAndWhite, FurtherPlanes) {
  static constexpr float kNone[6] = {};
  const test::ColorRun runs[] = {[](auto s, auto d, QVRect r) {
    return QVEffectsBlackWhite(s, d, r, 2);
  }, [](auto s, auto d, QVRect r) {
    return QVEffectsChannelMixer(s, d, r, 1, 0, 0, 0, 1, 0, 0, 0, 1);
  }, [](auto s, auto d, QVRect r) {
    return QVEffectsColorFilter(s, d, r, 1, 1, 1);
  }, [](auto s, auto d, QVRect r) {
    return QVEffectsBlackAndWhite(s, d, r, nullptr, nullptr, 0, 0, 0, 0);
  }, [](auto s, auto d, QVRect r) {
    return QVEffectsBlackAndWhiteColorResponse(s, d, r, nullptr, kNone);
  }};
  for (const auto& run : runs) EXPECT_EQ(test::OwnersOfFourth(run), "dsds") << &run - runs;
}

TEST(BlackAndWhite, Refuses) {
  static constexpr QVRect kBounds = {-3, 5, 37, 23};
  TestImage rgb(kBounds, {8, 3, 0}), gray(kBounds, {8, 1, 0}), deep(kBounds, {16, 3, 0});
  TestImage two({0, 0, 256, 256}, {8, 2, 1});
  const float three[3] = {}, six[6] = {};
  float mixture[6];
  const auto film = [](__QVImage* src, __QVImage* dst, __QVImage* grain, float amount) {
    return QVEffectsBlackAndWhite(src, dst, kBounds, grain, nullptr, 0, 0, amount, 0);
  };
  EXPECT_THAT((std::array{film(gray, gray, nullptr, 0), film(rgb, deep, nullptr, 0),
                          film(rgb, rgb, two, 0.5f), QVEffectsBlackWhite(rgb, deep, kBounds, 0),
                          QVEffectsBlackAndWhiteColorResponse(gray, gray, kBounds, three, six)}),
              testing::Each(kQVStatusUnsupported));
  EXPECT_EQ(film(rgb, rgb, two, 0), kQVStatusSuccess) << "grain that isn't looked at";
  for (const auto& [src, dst] : {std::pair<__QVImage*, __QVImage*>{nullptr, rgb}, {rgb, nullptr}}) {
    EXPECT_THAT((std::array{QVEffectsBlackWhite(src, dst, kBounds, 0),
                            QVEffectsChannelMixer(src, dst, kBounds, 1, 0, 0, 0, 1, 0, 0, 0, 1),
                            QVEffectsColorFilter(src, dst, kBounds, 1, 1, 1),
                            QVEffectsBlackAndWhiteWithColorFilter(src, dst, kBounds, 0),
                            film(src, dst, nullptr, 0),
                            QVEffectsBlackAndWhiteColorResponse(src, dst, kBounds, three, six)}),
                testing::Each(kQVStatusBadArgument));
  }
  EXPECT_EQ(QVEffectsBlackAndWhiteColorResponse(rgb, rgb, kBounds, three, nullptr),
            kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsBlackAndWhiteColorResponseGetAutoMixture(rgb, nullptr), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsBlackAndWhiteColorResponseGetAutoMixture(gray, mixture),
            kQVStatusUnsupportedOlder);
  EXPECT_EQ(QVEffectsBlackAndWhiteColorResponseGetAutoMixture(nullptr, mixture),
            kQVStatusBadArgument);
  const test::CaughtLog log;
  TestImage empty({0, 0, 0, 4}, {8, 1, 0});
  EXPECT_EQ(film(rgb, rgb, empty, 1), kQVStatusBadArgument);
  EXPECT_EQ(log.events.size(), 1u);

  // A filter of no colour gives black, not something undefined.
  EXPECT_EQ(QVEffectsColorFilter(rgb, rgb, kBounds, 0, 0, 0), kQVStatusSuccess);
  EXPECT_EQ(rgb.Value(0, 10, 1), 0);
}

}  // namespace
