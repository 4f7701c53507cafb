// SPDX-License-Identifier: Apache-2.0
// Copy, fill and invert against their definitions, pixel by pixel.
#include <QVEffects/QVEffectsBasics.h>
#include <gmock/gmock.h>

#include <bit>
#include <climits>
#include <limits>

#include "Naive.h"
#include "TestImage.h"
#include "Utils/QVEffectsUtils.h"

namespace {

using test::Form;
using test::FullScale;
using test::NearestPixel;
using test::Pixel;
using test::PutPixel;
using test::Residency;
using test::TestImage;

// One colour sample a plane up to five.
constexpr float kColor[] = {0.5f, 0.0f, 1.0f, 0.25f, 0.2f};

struct Effect {
  const char* name;
  int (*run)(__QVImage* src, __QVImage* dst, QVRect rect);
  float (*result)(float sample, int plane, Form form);
};

const Effect kEffects[] = {
    {"copy", QVEffectsCopyImage, [](float sample, int, Form) { return sample; }},
    {"invert", QVEffectsInvert,
     [](float sample, int plane, Form form) {
  return plane < form.planes - form.transparency ? FullScale(form.depth) - sample : sample;
}},
    {"fill",
     [](__QVImage*, __QVImage* dst, QVRect rect) { return QVEffectsFillColor(dst, rect, kColor); },
     [](float, int plane, Form form) { return kColor[plane] * FullScale(form.depth); }},
};

TEST(Basics, AreExactWhereverTheRectangleLies) {
  constexpr int kBillion = 1000000000;
  const struct {
    QVRect src, dst, rect;
  } places[] = {
      {{-3, 5, 9, 7}, {-3, 5, 9, 7}, {-1, 6, 5, 3}},
      {{0, 0, 4, 3}, {-5, -6, 15, 14}, {-4, -6, 12, 14}},
      {{50, 60, 2, 2}, {1, 1, 6, 5}, {0, 0, 9, 9}},
      {{1, 1, 17, 13}, {4, 3, 5, 5}, {3, 2, 6, 20}},
      {{0, 0, 5, 5}, {-2, 0, 9, 5}, {-kBillion, -kBillion, 2 * kBillion, 2 * kBillion}},
      {{0, 0, 3000, 2}, {0, 0, 3000, 2}, {1, 0, 2998, 2}},  // rows longer than a chunk
  };
  std::vector<Form> forms(std::begin(test::kForms), std::end(test::kForms));
  forms.insert(forms.end(), {{8, 5, 1}, {16, 4, 0}, {32, 5, 1}, {32, 2, 0}});
  for (const Effect& effect : kEffects) {
    for (const Form form : forms) {
      for (const auto& [from, to, rect] : places) {
        SCOPED_TRACE(testing::Message() << effect.name << ' ' << form << " from " << from.x);
        TestImage src(from, form, Residency::kMemory, 2), dst(to, form, Residency::kMemory, 3);
        const auto expected = test::Changed(dst, rect, [&](int x, int y) {
          Pixel pixel = NearestPixel(src, x, y);
          for (int p = 0; p < form.planes; p++) {
            const float sample = test::GetSample(pixel, p, form.depth);
            test::SetSample(pixel, p, form.depth, effect.result(sample, p, form));
          }
          return pixel;
        });
        EXPECT_EQ(effect.run(src, dst, rect), kQVStatusSuccess);
        EXPECT_TRUE(dst.Bytes() == expected);
      }
    }
  }
}

TEST(Basics, TwoImagesMayShareMemory) {
  for (const Form form : {Form{8, 3, 0}, Form{16, 4, 1}, Form{32, 2, 1}}) {
    TestImage image({0, 0, 3000, 5}, form), expected({0, 0, 3000, 5}, form);
    qv::ImageRef alias;
    ASSERT_EQ(QVImageCreateWithBuffer(image.Bounds(), form.depth, form.planes, form.ColorSpace(),
                                      form.transparency, image.Address(0, 0), image.Stride(),
                                      alias.Receive()),
              kQVStatusSuccess);
    EXPECT_EQ(QVEffectsInvert(expected, expected, {7, 1, 2990, 3}), kQVStatusSuccess);
    EXPECT_EQ(QVEffectsInvert(image, alias, {7, 1, 2990, 3}), kQVStatusSuccess);
    EXPECT_TRUE(image.Bytes() == expected.Bytes());
    EXPECT_EQ(QVEffectsCopyImage(alias, image, {0, 0, 3000, 5}), kQVStatusSuccess);
    EXPECT_TRUE(image.Bytes() == expected.Bytes());
  }
}

TEST(Basics, RefuseWhatDoesNotFit) {
  constexpr QVRect kRect = {0, 0, 4, 4};
  TestImage rgb(kRect, {8, 3, 0}), rgba(kRect, {8, 4, 1}), deep(kRect, {16, 3, 0});
  const std::vector<std::byte> before = rgb.Bytes();
  for (const QVRect rect : {kRect, QVRect{0, 0, 0, 0}}) {
    for (const auto effect : {QVEffectsInvert, QVEffectsCopyImage}) {
      EXPECT_EQ(effect(nullptr, rgb, rect), kQVStatusBadArgument);
      EXPECT_EQ(effect(rgb, nullptr, rect), kQVStatusBadArgument);
    }
    EXPECT_EQ(QVEffectsFillColor(nullptr, rect, kColor), kQVStatusBadArgument);
    EXPECT_EQ(QVEffectsFillColor(rgb, rect, nullptr), kQVStatusBadArgument);
  }
  for (const auto effect : {QVEffectsInvert, QVEffectsCopyImage}) {
    EXPECT_EQ(effect(rgba, rgb, kRect), kQVStatusUnsupported);
    EXPECT_EQ(effect(deep, rgb, kRect), kQVStatusUnsupported);
  }
  EXPECT_TRUE(rgb.Bytes() == before);
}

TEST(Basics, FillHoldsColorsToTheRange) {
  constexpr float kWild[] = {-0.5f, 2.0f, std::numeric_limits<float>::quiet_NaN(),
                             std::numeric_limits<float>::infinity(), -1e30f};
  constexpr bool kFull[] = {false, true, false, true, false};
  TestImage bytes({0, 0, 3, 2}, {8, 5, 1}), words({0, 0, 3, 2}, {16, 5, 1}),
      floats({0, 0, 3, 2}, {32, 5, 1});
  for (__QVImage* image : {static_cast<__QVImage*>(bytes), static_cast<__QVImage*>(words),
                           static_cast<__QVImage*>(floats)}) {
    EXPECT_EQ(QVEffectsFillColor(image, {0, 0, 3, 2}, kWild), kQVStatusSuccess);
  }
  for (int i = 0; i < 3 * 2 * 5; i++) {
    const int x = i / 5 % 3, y = i / 15, p = i % 5;
    EXPECT_EQ(bytes.At<uint8_t>(x, y, p), kFull[p] ? 255 : 0);
    EXPECT_EQ(words.At<uint16_t>(x, y, p), kFull[p] ? 65535 : 0);
    EXPECT_EQ(floats.At<uint32_t>(x, y, p), std::bit_cast<uint32_t>(kWild[p]));
  }
}

TEST(ImageHelpers, CreateImageNoCopyTakesTheModelsForm) {
  TestImage model({-7, 3, 4, 5}, {16, 4, 1});
  const QVRect other = {1, -2, 9, 8}, impossible = {0, 0, -1, 1};
  for (const QVRect* rect : {static_cast<const QVRect*>(nullptr), &other}) {
    qv::ImageRef made;
    ASSERT_EQ(CreateImageNoCopy(model, made.Receive(), rect), kQVStatusSuccess);
    EXPECT_EQ(MakeVRect(QVImageGetBounds(made)), MakeVRect(rect ? other : model.Bounds()));
    EXPECT_EQ(
        (Form{QVImageGetDepth(made), QVImageGetNumPlanes(made), QVImageGetTransparency(made)}),
        model.GetForm());
    EXPECT_EQ(QVImageGetColorSpaceType(made), kQVColorSpaceRGB);
    EXPECT_EQ(QVImageGetDataSourceType(made), 1);
  }
  qv::ImageRef none;
  EXPECT_EQ(CreateImageNoCopy(model, none.Receive(), &impossible), kQVStatusBadArgument);
  EXPECT_EQ(static_cast<__QVImage*>(none), nullptr);
}

TEST(ImageHelpers, CopyImageMovesByTheOffset) {
  const struct {
    VRect rect;
    QVPoint offset;
  } cases[] = {{{-2, 1, 6, 8}, {9, -5}},
               {{1, 1, 3, 3}, {10, -3}},
               {{0, 0, 5, 5}, {0, 0}},
               {{-500, -500, 500, 500}, {3, 3}},
               {{2, 2, 2, 9}, {9, -5}},
               {{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, {INT_MAX, INT_MIN}},
               {{0, 0, 5, 5}, {INT_MIN, INT_MAX}}};
  for (const Form form : test::kForms) {
    for (const auto& c : cases) {
      for (const auto residency : {Residency::kMemory, Residency::kCallbacks}) {
        SCOPED_TRACE(testing::Message() << form << ' ' << residency << " by " << c.offset.x);
        TestImage src({0, 0, 6, 5}, form, residency, 2), dst({10, -3, 7, 6}, form, residency, 3);
        std::vector<std::byte> expected = dst.Bytes();
        for (int y = -3; y < 3; y++) {
          for (int x = 10; x < 17; x++) {
            const int64_t fromX = int64_t{x} - c.offset.x, fromY = int64_t{y} - c.offset.y;
            if (fromX >= c.rect.left && fromX < c.rect.right && fromY >= c.rect.top &&
                fromY < c.rect.bottom) {
              PutPixel(expected, dst, x, y, NearestPixel(src, fromX, fromY));
            }
          }
        }
        EXPECT_EQ(CopyImage(src, dst, c.rect, c.offset), kQVStatusSuccess);
        EXPECT_TRUE(dst.Bytes() == expected);
      }
    }
  }
  // In place it doesn't even look; elsewhere within one image it copies.
  TestImage image({0, 0, 8, 2}, {8, 1, 0}, Residency::kCallbacks);
  EXPECT_EQ(CopyImage(image, image, {0, 0, 2, 8}, {0, 0}), kQVStatusSuccess);
  EXPECT_EQ(image.Reads() + image.Writes(), 0);
  EXPECT_EQ(CopyImage(image, image, {0, 0, 2, 4}, {4, 0}), kQVStatusSuccess);
  for (int i = 0; i < 8; i++) {
    EXPECT_EQ(image.At<uint8_t>(4 + i % 4, i / 4, 0), image.At<uint8_t>(i % 4, i / 4, 0));
  }
}

}  // namespace
