// SPDX-License-Identifier: Apache-2.0
// Curves against their definition, sample by sample.
#include <QVEffects/QVEffectsCurves.h>
#include <gmock/gmock.h>

#include <cmath>
#include <random>

#include "Naive.h"
#include "TestImage.h"

namespace {

using test::Form;
using test::Pixel;
using test::Residency;
using test::TestImage;

constexpr QVRect kBounds = {-3, 5, 37, 23};

std::vector<float> RandomCurves(int planes) {
  std::mt19937 random(7);
  std::vector<float> curves(static_cast<size_t>(planes) * 256);
  for (float& entry : curves) entry = static_cast<float>(random() >> 8) / 16777215.0f;
  return curves;
}

float Mapped(float s, int depth, const float* curve, float amount) {
  float v;
  if (depth == 8) {
    v = curve[static_cast<int>(s)];
  } else {
    const float t = s * (depth == 16 ? 0.0038910506f : 255.0f);
    const int i = !(t > 0) ? 0 : (t >= 254 ? 254 : static_cast<int>(t));
    const float f = t - static_cast<float>(i);
    v = f * curve[i + 1] + (1 - f) * curve[i];
  }
  const float max = test::FullScale(depth);
  return amount >= 1 ? v * max : s * (1 - amount) + v * (amount * max);
}

void ExpectMapped(const TestImage& src, const TestImage& dst, QVRect rect, float amount,
                  bool alike = false) {
  const auto [depth, planes, transparency] = src.GetForm();
  SCOPED_TRACE(testing::Message() << src.GetForm() << " amount " << amount);
  std::vector<float> curves = RandomCurves(planes);
  for (size_t i = 256; alike && i < curves.size(); i++) curves[i] = curves[i - 256];
  const std::vector<std::byte> expected = test::Changed(dst, rect, [&](int x, int y) {
    Pixel pixel = NearestPixel(src, x, y);
    for (int p = 0; p < planes - transparency; p++) {
      const float sample = test::GetSample(pixel, p, depth);
      test::SetSample(pixel, p, depth, Mapped(sample, depth, curves.data() + p * 256, amount));
    }
    return pixel;
  });
  ASSERT_EQ(QVEffectsApplyCurvesWithAmount(src, dst, rect, curves.data(), amount), 0);
  EXPECT_TRUE(dst.Bytes() == expected);
}

TEST(Curves, AreExact) {
  std::vector<Form> forms(std::begin(test::kForms), std::end(test::kForms));
  forms.insert(forms.end(), {{8, 5, 1}, {16, 6, 0}, {32, 5, 1}, {16, 10, 0}});
  for (const Form form : forms) {
    for (const float amount : {1.0f, 0.5f, 0.003f, 7.0f}) {
      for (const QVRect rect : {kBounds, QVRect{2, 9, 60, 8}, {-9, -9, 20, 20}}) {
        TestImage src(kBounds, form), dst(kBounds, form, Residency::kMemory, 2);
        ExpectMapped(src, dst, rect, amount);
      }
    }
  }
}

// Large 16-bit images take another way to the same bits.
TEST(Curves, AreExactOnLargeImages) {
  for (const Form form : {Form{16, 1, 0}, {16, 3, 0}, {16, 4, 1}, {16, 5, 1}}) {
    for (const float amount : {1.0f, 0.3f}) {
      TestImage src({0, 0, 601, 500}, form, Residency::kMemory, 1);
      ExpectMapped(src, src, {0, 0, 601, 500}, amount);
      ExpectMapped(src, src, {0, 0, 601, 500}, amount, true);
    }
  }
}

TEST(Curves, NaNStays) {
  const std::vector<float> curve(256, 1.0f);
  TestImage image({0, 0, 1, 1}, {32, 1, 0});
  image.At<float>(0, 0, 0) = std::nanf("");
  EXPECT_EQ(QVEffectsApplyCurves(image, image, {0, 0, 1, 1}, curve.data()), 0);
  EXPECT_TRUE(std::isnan(image.At<float>(0, 0, 0)));
}

TEST(Curves, OfNothingAndBadOnes) {
  const Form form = {16, 4, 1};
  TestImage src(kBounds, form), dst(kBounds, form, Residency::kMemory, 2);
  for (const float amount : {0.0f, -1.0f}) {
    EXPECT_EQ(QVEffectsApplyCurvesWithAmount(src, dst, kBounds, nullptr, amount), 0);
    for (int x = -3; x < 34; x++) EXPECT_EQ(NearestPixel(dst, x, 9), NearestPixel(src, x, 9));
  }
  std::vector<float> curves(768);
  TestImage other(kBounds, {16, 3, 0});
  EXPECT_EQ(QVEffectsApplyCurves(src, dst, kBounds, nullptr), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsApplyCurves(src, other, kBounds, curves.data()), kQVStatusUnsupported);
  EXPECT_EQ(QVEffectsInitCurves(1, nullptr), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsInitCurves(-1, nullptr), kQVStatusSuccess);
  EXPECT_EQ(QVEffectsConcatCurves(1, curves.data(), nullptr, curves.data()), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsConcatCurves(0, nullptr, nullptr, nullptr), kQVStatusSuccess);
  EXPECT_EQ(QVEffectsResizeCurve(0, curves.data(), 2, curves.data()), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsResizeCurve(2, curves.data(), 0, curves.data()), kQVStatusBadArgument);
}

TEST(Curves, Identity) {
  std::vector<float> curves(768), joined(768);
  ASSERT_EQ(QVEffectsInitCurves(3, curves.data()), 0);
  EXPECT_EQ(curves[256 + 51], 51.0f / 255.0f);
  EXPECT_EQ(curves[767], 1.0f);
  const std::vector<float> other = RandomCurves(3);
  ASSERT_EQ(QVEffectsConcatCurves(3, other.data(), curves.data(), joined.data()), 0);
  EXPECT_THAT(joined, testing::Pointwise(testing::FloatNear(1e-6f), other));
  ASSERT_EQ(QVEffectsConcatCurves(3, curves.data(), other.data(), joined.data()), 0);
  EXPECT_THAT(joined, testing::Pointwise(testing::FloatNear(1e-4f), other));
}

TEST(Curves, JoinBetweenLevelsAndBeyond) {
  std::vector<float> first(256, 0.0f), second(256), joined(256);
  for (int l = 0; l < 256; l++) second[l] = static_cast<float>(l * l) / 65025.0f;
  first[0] = 0.5f;             // position 127.5
  first[1] = 256.0f / 255.0f;  // along the last segment
  first[2] = -1.0f / 255.0f;   // along the first
  ASSERT_EQ(QVEffectsConcatCurves(1, first.data(), second.data(), joined.data()), 0);
  EXPECT_FLOAT_EQ(joined[0], (second[127] + second[128]) / 2);
  EXPECT_FLOAT_EQ(joined[1], second[255] + (second[255] - second[254]));
  EXPECT_FLOAT_EQ(joined[2], -second[1]);
}

TEST(Curves, Resize) {
  const float input[] = {0.25f, 0.5f, 1.0f, 0.0f, 0.125f};
  struct Case {
    int from, to;
    std::vector<float> result;
  };
  const Case cases[] = {{3, 5, {0.25f, 0.375f, 0.5f, 0.75f, 1.0f}},
                        {5, 3, {0.25f, 1.0f, 0.125f}},
                        {5, 2, {0.25f, 0.125f}},
                        {5, 1, {0.125f}},
                        {1, 3, {0.25f, 0.25f, 0.25f}},
                        {2, 2, {0.25f, 0.5f}}};
  for (const Case& c : cases) {
    std::vector<float> output(c.to);
    ASSERT_EQ(QVEffectsResizeCurve(c.from, input, c.to, output.data()), 0);
    EXPECT_EQ(output, c.result) << c.from << " to " << c.to;
  }
  // Steps that round up don't lead past the end.
  const std::vector<float> curve = RandomCurves(1);
  for (int length = 257; length < 5000; length += 7) {
    std::vector<float> output(length);
    ASSERT_EQ(QVEffectsResizeCurve(256, curve.data(), length, output.data()), 0);
    EXPECT_EQ(output.front(), curve.front());
    EXPECT_EQ(output.back(), curve.back());
    EXPECT_THAT(output, testing::Each(testing::AllOf(testing::Ge(-1e-3f), testing::Le(1.001f))));
  }
}

}  // namespace
