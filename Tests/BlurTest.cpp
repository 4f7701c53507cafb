// SPDX-License-Identifier: Apache-2.0
#include <QVEffects/QVEffectsBlur.h>
#include <gmock/gmock.h>

#include <cmath>
#include <functional>

#include "CaughtLog.h"
#include "NaiveColors.h"
#include "Utils/QVEffectsDspLib.h"
#include "Utils/VRect.h"

namespace {

using test::Form;
using test::Pixel;
using test::Residency;
using test::SampleAt;
using test::TestImage;

constexpr QVRect kBounds = {-3, 5, 17, 11};
constexpr QVRect kRects[] = {kBounds, {1, 8, 6, 3}, {-7, 3, 12, 9}};

// The weighted sum around a pixel. Integers come out exact.
using Weight = std::function<double(int dx, int dy)>;
double WindowSum(const TestImage& image, int x, int y, int plane, VRect box, const Weight& weight) {
  double sum = 0;
  for (int dy = box.top; dy <= box.bottom; dy++) {
    for (int dx = box.left; dx <= box.right; dx++) {
      sum += weight(dx, dy) * SampleAt(image, int64_t{x} + dx, int64_t{y} + dy, plane);
    }
  }
  return sum;
}

using Blur = std::function<int(__QVImage* src, __QVImage* dst, QVRect rect)>;
// What the sample of a plane must be.
using Expected = std::function<double(const TestImage& src, int x, int y, int plane)>;

// Compares colour inside the rectangle.
void ExpectBlur(const Form& form, QVRect rect, const Blur& blur, const Expected& expected,
                double slack) {
  TestImage src(kBounds, form), dst(kBounds, form, Residency::kMemory, 2);
  ASSERT_EQ(blur(src, dst, rect), kQVStatusSuccess);
  const QVRect inside = QVRectIntersect(rect, kBounds);
  for (int y = inside.y; y < inside.y + inside.height; y++) {
    for (int x = inside.x; x < inside.x + inside.width; x++) {
      for (int plane = 0; plane < form.planes - form.transparency; plane++) {
        ASSERT_NEAR(SampleAt(dst, x, y, plane), expected(src, x, y, plane), slack)
            << x << ", " << y << ", plane " << plane;
      }
    }
  }
}

// Integers are exact.
double SlackOf(const Form& form) { return form.depth == 32 ? 2e-6 : 0; }

float Stored(float value, int depth) {
  Pixel pixel = {};
  test::SetSample(pixel, 0, depth, value);
  return test::GetSample(pixel, 0, depth);
}

Expected BoxOf(VRect box, float amount) {
  const auto count = static_cast<float>((box.right - box.left + 1) * (box.bottom - box.top + 1));
  const float scale = (1.0f / count) * amount;
  return [=](const TestImage& src, int x, int y, int plane) {
    const double sum = WindowSum(src, x, y, plane, box, [](int, int) { return 1.0; });
    const float rest = SampleAt(src, x, y, plane) * (1.0f - amount);
    return Stored(rest + static_cast<float>(sum) * scale, src.GetForm().depth);
  };
}

// Squares about the pixel, then boxes beside it, of one row or one column; up to five planes.
TEST(BoxBlur, IsTheMeanOfTheWindow) {
  constexpr VRect kBoxes[] = {{-1, -1, 1, 1}, {-3, -3, 3, 3}, {-12, -12, 12, 12}, {0, -4, 0, 4},
                              {-3, 0, 3, 0},  {2, 3, 4, 9},   {-5, -6, -2, -6},   {0, 0, 0, 0}};
  std::vector<Form> forms(std::begin(test::kForms), std::end(test::kForms));
  forms.insert(forms.end(), {{16, 5, 0}, {32, 5, 1}});
  for (const Form& form : forms) {
    for (const VRect& box : kBoxes) {
      const bool isSquare = box.left < 0 && box.left == box.top && box.left == -box.right;
      for (const float amount : {1.0f, 0.75f}) {
        const auto blur = [&](__QVImage* src, __QVImage* dst, QVRect rect) {
          return isSquare ? QVEffectsBoxBlurWithOffsetAndAmount(src, dst, rect, box.right, {0, 0},
                                                                amount)
                          : QVEffectsBoxBlurWithAmount(src, dst, rect, box.left, box.right, box.top,
                                                       box.bottom, amount);
        };
        for (const QVRect& rect : kRects) {
          SCOPED_TRACE(testing::Message() << form << ", left " << box.left);
          ExpectBlur(form, rect, blur, BoxOf(box, amount), SlackOf(form));
        }
      }
    }
  }
}

// Sums beyond 32 bits, and boxes much larger than the image.
TEST(BoxBlur, SumsAnyNumberOfSamples) {
  for (const auto& [form, height, radius] : {std::tuple{Form{8, 1, 0}, 4500, 2051},
                                             {Form{8, 1, 0}, 4500, 2052},
                                             {Form{8, 3, 0}, 9, 100000},
                                             {Form{16, 1, 0}, 300, 127},
                                             {Form{16, 1, 0}, 300, 128},
                                             {Form{16, 4, 1}, 300, 90},
                                             {Form{16, 2, 1}, 9, 30000}}) {
    SCOPED_TRACE(testing::Message() << form << ", radius " << radius);
    const QVRect bounds = {0, 0, 3, height};
    TestImage src(bounds, form), dst(bounds, form, Residency::kMemory, 2);
    ASSERT_EQ(QVEffectsBoxBlur(src, dst, {1, 2, 1, 1}, radius), 0);
    // The first and the last column go on to the left and right.
    const auto pixels = static_cast<float>((2 * int64_t{radius} + 1) * (2 * int64_t{radius} + 1));
    for (int plane = 0; plane < form.planes - form.transparency; plane++) {
      int64_t sum = 0;
      for (int y = 2 - radius; y <= 2 + radius; y++) {
        const auto at = [&](int x) { return static_cast<int64_t>(SampleAt(src, x, y, plane)); };
        sum += at(0) * radius + at(1) + at(2) * radius;
      }
      const float mean = static_cast<float>(sum) * (1.0f / pixels);
      EXPECT_EQ(SampleAt(dst, 1, 2, plane), std::floor(mean + 0.5f));
    }
  }
}

TEST(BoxBlur, SumsImagesOfIntegers) {
  const Form form = {32, 3, 0};
  TestImage src(kBounds, form), dst(kBounds, form, Residency::kMemory, 2);
  for (int y = 5; y < 16; y++) {
    for (int x = -3; x < 14; x++) src.At<uint32_t>(x, y, 0) = 0xffffffff;
  }
  ASSERT_EQ(QVEffectsBoxBlurInt(src, dst, {2, 8, 5, 4}, -1, 2, -2, 1), 0);
  for (int plane = 0; plane < 3; plane++) {
    uint64_t sum = 0;
    for (int y = 7; y <= 10; y++) {
      for (int x = 3; x <= 6; x++) sum += src.At<uint32_t>(x, y, plane);
    }
    const float mean = static_cast<float>(sum) * (1.0f / 16.0f) + 0.5f;
    const uint32_t expected = mean < 4294967296.0f ? static_cast<uint32_t>(mean) : 0xffffffff;
    EXPECT_EQ(dst.At<uint32_t>(4, 9, plane), expected);
  }
}

TEST(BoxBlur, WritesAtTheOffset) {
  const Form form = {8, 4, 1};
  TestImage src(kBounds, form), whole(kBounds, form, Residency::kMemory, 2);
  TestImage dst({0, 0, 17, 11}, form, Residency::kCallbacks, 3);
  ASSERT_EQ(QVEffectsBoxBlur(src, whole, kBounds, 2), 0);
  ASSERT_EQ(QVEffectsBoxBlurWithOffset(src, dst, kBounds, 2, {-3, 5}), 0);
  for (int y = 0; y < 11; y++) {
    EXPECT_EQ(std::memcmp(dst.Address(0, y), whole.Address(-3, y + 5), 17 * 4), 0) << y;
  }
  ASSERT_EQ(QVEffectsBoxBlurWithOffset(src, dst, kBounds, 0, {-3, 5}), 0);
  EXPECT_EQ(std::memcmp(dst.Address(0, 4), src.Address(-3, 9), 17 * 4), 0);
}

TEST(BoxBlur, WorksInPlaceBeneathABoxAbove) {
  for (const auto residency : {Residency::kMemory, Residency::kCallbacks}) {
    TestImage src(kBounds, {8, 3, 0}, residency), dst(kBounds, {8, 3, 0});
    ASSERT_EQ(QVEffectsBoxBlurWithAmount(src, dst, kBounds, -1, 1, -3, -1, 1), 0);
    ASSERT_EQ(QVEffectsBoxBlurWithAmount(src, src, kBounds, -1, 1, -3, -1, 1), 0);
    EXPECT_EQ(src.Bytes(), dst.Bytes());
  }
}

// Above, below and beside the source.
TEST(Blurs, AreEmptyOutsideTheSource) {
  for (const Form& form : {Form{8, 4, 1}, {16, 2, 1}, {32, 4, 1}}) {
    TestImage src({0, 0, 7, 5}, form), dst({-2, -3, 11, 11}, form, Residency::kMemory, 2);
    const QVRect all = dst.Bounds();
    const std::function<int()> blurs[] = {
        [&] { return QVEffectsBoxBlur(src, dst, all, 2); },
        [&] { return QVEffectsTriangularBlur(src, dst, all, 2); },
        [&] { return QVEffectsGaussianBlur(src, dst, all, 2); },
        [&] { return QVEffectsGaussianBlur(src, dst, all, 12); },     // three boxes
        [&] { return QVEffectsGaussianBlurFast(src, dst, all, 1); },  // one box
    };
    for (const auto& blur : blurs) {
      ASSERT_EQ(blur(), 0);
      for (const auto& [x, y] : {std::pair{3, -1}, {3, 5}, {3, 7}, {-1, 2}, {8, 2}, {-2, -3}}) {
        EXPECT_EQ(dst.Value(x, y, form.planes - 1), 0) << &blur - blurs << " at " << x << ", " << y;
      }
      EXPECT_EQ(dst.Value(3, 4, form.planes - 1), src.Value(3, 4, form.planes - 1));
    }
  }
}

TEST(BoxBlur, Refuses) {
  TestImage src(kBounds, {8, 3, 0}), dst(kBounds, {8, 3, 0}, Residency::kMemory, 2);
  const auto before = dst.Bytes();
  EXPECT_EQ(QVEffectsBoxBlurWithAmount(src, dst, kBounds, 2, 1, 0, 0, 1), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsBoxBlurWithAmount(src, dst, kBounds, 0, 0, 0, -1, 1), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsBoxBlur(src, dst, kBounds, 2147483647), kQVStatusUnknown2);
  EXPECT_EQ(QVEffectsBoxBlurWithAmount(src, dst, kBounds, -2147483647 - 1, 2147483647, 0, 0, 1),
            kQVStatusUnknown2);
  EXPECT_EQ(dst.Bytes(), before);
}

TEST(BoxBlur, LogsAMissingRow) {
  test::CaughtLog log;
  TestImage none({0, 0, 0, 0}, {8, 3, 0}), dst(kBounds, {8, 3, 0});
  EXPECT_EQ(QVEffectsBoxBlur(none, dst, kBounds, 2), kQVStatusUnknown2);
  ASSERT_EQ(log.events.size(), 1u);
  EXPECT_EQ(log.events[0].code, kQVStatusBadArgument);
  EXPECT_EQ(log.events[0].path, "Source/Common/QVEffects/QVEffectsBoxBlur");
  EXPECT_EQ(log.events[0].line, 107);
}

// ---- Triangular

// Among the radii are those at which sums pass 31 bits.
TEST(TriangularBlur, IsTheTentOfTheWindow) {
  const auto expectTent = [](const Form& form, QVRect rect, int radius) {
    SCOPED_TRACE(testing::Message() << form << ", radius " << radius);
    const float line = 1.0f / static_cast<float>((radius + 1) * (radius + 1));
    const auto blur = [&](__QVImage* src, __QVImage* dst, QVRect part) {
      return QVEffectsTriangularBlur(src, dst, part, radius);
    };
    const auto tent = [&](const TestImage& src, int x, int y, int plane) {
      const VRect box = {-radius, -radius, radius, radius};
      const double sum = WindowSum(src, x, y, plane, box, [&](int dx, int dy) {
        return static_cast<double>(radius + 1 - std::abs(dx)) * (radius + 1 - std::abs(dy));
      });
      return Stored(static_cast<float>(sum) * (line * line), form.depth);
    };
    ExpectBlur(form, rect, blur, tent, SlackOf(form));
  };
  for (const Form& form : test::kForms) {
    for (const QVRect& rect : kRects) {
      for (const int radius : {0, 1, 4, 12}) expectTent(form, rect, radius);
    }
  }
  constexpr QVRect kFew = {1, 8, 2, 2};
  expectTent({8, 3, 0}, kFew, 53);
  expectTent({8, 5, 1}, kFew, 65);
  expectTent({16, 1, 0}, kFew, 13);
  expectTent({16, 4, 1}, kFew, 40);
}

TEST(TriangularBlur, HoldsItsLargestRadius) {
  constexpr QVRect kAll = {0, 0, 3, 2};
  TestImage src(kAll, {16, 1, 0}), dst(kAll, {16, 1, 0}, Residency::kMemory, 2);
  std::ranges::fill(src.Bytes(), std::byte{0xff});
  EXPECT_EQ(QVEffectsTriangularBlur(src, dst, kAll, 3000), 0);
  EXPECT_EQ(dst.At<uint16_t>(1, 1, 0), 65535);
  EXPECT_EQ(QVEffectsTriangularBlur(src, dst, kAll, 3001), kQVStatusBadArgument);
  EXPECT_EQ(QVEffectsTriangularBlur(src, dst, kAll, -5), 0);
  EXPECT_EQ(dst.At<uint16_t>(0, 0, 0), 65535);
}

// ---- Gaussian

// Against a convolution in double: a sample lies half a step from it, or less.
TEST(GaussianBlur, IsTheConvolution) {
  for (const float sigma : {0.2f, 0.7f, 1.3f, 5.0f}) {
    const int radius = static_cast<int>(sigma * 2.5f + 0.5f);
    const auto weight = [&](int dx, int dy) {
      return std::exp(-(dx * dx + dy * dy) / (2.0 * sigma * sigma));
    };
    double total = 0;
    for (int dy = -radius; dy <= radius; dy++) {
      for (int dx = -radius; dx <= radius; dx++) total += weight(dx, dy);
    }
    const auto blur = [&](__QVImage* src, __QVImage* dst, QVRect rect) {
      return QVEffectsGaussianBlurWithAmount(src, dst, rect, sigma, 0.75f);
    };
    const auto convolution = [&](const TestImage& src, int x, int y, int plane) {
      const VRect box = {-radius, -radius, radius, radius};
      const double blurred = WindowSum(src, x, y, plane, box, weight) / total;
      return SampleAt(src, x, y, plane) * 0.25 + blurred * 0.75;
    };
    for (const Form& form : test::kForms) {
      const double slack = form.depth == 32 ? 3e-6 : 0.5 + 1e-6 * test::FullScale(form.depth);
      for (const QVRect& rect : kRects) {
        SCOPED_TRACE(testing::Message() << form << ", sigma " << sigma);
        ExpectBlur(form, rect, blur, convolution, slack);
      }
    }
  }
}

// Three boxes, one after the other, each on what the last one made of a wider rectangle.
TEST(GaussianBlur, IsThreeBoxesWhenFast) {
  // 3 (radius / 1.1)^2 - 2 k^2: radius 10 takes radii of 9, 9 and 9, 4 of 5, 3 and 3.
  for (const auto& [radius, first, other] : {std::tuple{10.0f, 9, 9}, {4.0f, 5, 3}, {1.0f, 2, 0}}) {
    for (const Form& form : test::kForms) {
      const QVRect wide = QVRectOutset(kBounds, 2 * other);
      TestImage src(kBounds, form), dst(kBounds, form, Residency::kMemory, 2);
      TestImage expected(kBounds, form, Residency::kMemory, 2), middle(wide, form);
      ASSERT_EQ(QVEffectsBoxBlur(src, middle, wide, first), 0);
      ASSERT_EQ(QVEffectsBoxBlur(middle, middle, QVRectOutset(kBounds, other), other), 0);
      ASSERT_EQ(QVEffectsBoxBlur(middle, expected, kBounds, other), 0);
      ASSERT_EQ(QVEffectsGaussianBlurFast(src, dst, kBounds, radius), 0);
      EXPECT_TRUE(dst.Bytes() == expected.Bytes()) << form << ", radius " << radius;
    }
  }
}

// Each mode is that of a blend of the blurred picture over its source.
TEST(GaussianBlur, TakesModes) {
  const test::CaughtLog silence;
  constexpr Form kFloats = {32, 3, 0};
  TestImage src(kBounds, kFloats), blurred(kBounds, kFloats), blended(kBounds, kFloats),
      dst(kBounds, kFloats);
  for (const auto& [blur, radius] : {std::pair{&QVEffectsGaussianBlurTrueWithAmountAndMode, 2.0f},
                                     {&QVEffectsGaussianBlurFastWithAmountAndMode, 5.0f}}) {
    ASSERT_EQ(blur(src, blurred, kBounds, radius, 1, kQVBlendModeNormal), 0);
    int taken = 0;
    for (const QVBlendMode plain : test::kAllModes) {
      for (const bool reverse : {false, true}) {
        const auto mode = reverse ? QVEffectsGetReverseBlendMode(plain) : plain;
        const int status = blur(src, dst, kBounds, radius, 0.75f, mode);
        if (status != 0) {
          EXPECT_EQ(status, kQVStatusBadArgument);
          continue;
        }
        taken++;
        ASSERT_EQ(QVEffectsBlendImages(reverse ? src : blurred, reverse ? blurred : src, blended,
                                       kBounds, plain),
                  0);
        for (int x = -3; x < 14; x++) {
          const float share = blended.At<float>(x, 9, 1) * 0.75f;
          ASSERT_FLOAT_EQ(dst.At<float>(x, 9, 1), src.At<float>(x, 9, 1) * 0.25f + share)
              << plain << reverse << " at " << x;
        }
      }
    }
    EXPECT_EQ(taken, 30);
  }
}

// Integers are blended from 0 to 1, as floats are.
TEST(GaussianBlur, BlendsIntegersFrom0To1) {
  for (const Form& form : {Form{8, 4, 1}, {16, 4, 1}}) {
    const float max = test::FullScale(form.depth);
    TestImage src(kBounds, form), dst(kBounds, form);
    TestImage floats(kBounds, {32, 4, 1}), result(kBounds, {32, 4, 1});
    for (int y = 5; y < 16; y++) {
      for (int x = -3; x < 14; x++) {
        for (int p = 0; p < 4; p++) floats.At<float>(x, y, p) = SampleAt(src, x, y, p) / max;
      }
    }
    for (const float radius : {2.0f, 12.0f}) {
      for (const auto mode :
           {kQVBlendModeOverlay, QVEffectsGetReverseBlendMode(kQVBlendModeSoftLight)}) {
        ASSERT_EQ(QVEffectsGaussianBlurWithAmountAndMode(src, dst, kBounds, radius, 0.6f, mode), 0);
        ASSERT_EQ(
            QVEffectsGaussianBlurWithAmountAndMode(floats, result, kBounds, radius, 0.6f, mode), 0);
        for (int x = -3; x < 14; x++) {
          // The fast blur of integers rounds its first two boxes.
          ASSERT_NEAR(SampleAt(dst, x, 8, 2), result.At<float>(x, 8, 2) * max,
                      radius < 10 ? 0.51 : 2.5);
        }
      }
    }
  }
}

TEST(GaussianBlur, AnswersWhatItCannotDo) {
  test::CaughtLog log;
  TestImage src(kBounds, {8, 3, 0}), dst(kBounds, {8, 3, 0}, Residency::kMemory, 2);
  const auto before = dst.Bytes();
  EXPECT_EQ(QVEffectsGaussianBlurWithAmountAndMode(src, dst, kBounds, 3, 1, kQVBlendModeHue), 1005);
  EXPECT_TRUE(log.events.empty());
  EXPECT_EQ(QVEffectsGaussianBlurWithAmountAndMode(src, dst, kBounds, 30, 1, kQVBlendModeHue),
            1005);
  ASSERT_EQ(log.events.size(), 1u);
  EXPECT_EQ(log.events[0].path, "Source/Common/QVEffects/QVEffectsBoxBlur");
  EXPECT_EQ(log.events[0].line, 293);
  EXPECT_NE(QVEffectsGaussianBlurFast(src, dst, kBounds, 1e30f), 0);
  EXPECT_NE(QVEffectsGaussianBlurTrue(src, dst, kBounds, 1e30f), 0);
  EXPECT_EQ(dst.Bytes(), before);
  // A copy, whatever the mode.
  EXPECT_EQ(
      QVEffectsGaussianBlurTrueWithAmountAndMode(src, dst, kBounds, 0.19f, 1, kQVBlendModeHue), 0);
  EXPECT_EQ(dst.At<uint8_t>(3, 9, 1), src.At<uint8_t>(3, 9, 1));
  EXPECT_EQ(QVEffectsGaussianBlurFast(src, dst, kBounds, NAN), 0);
}

// ---- Vectors

TEST(DspLib, SumsInItsOrder) {
  // 16 lanes: in the first, 1 is lost in 2^24, and the 1 of the last element counts.
  float a[35], b[35];
  std::fill_n(a, 35, 1.0f);
  std::fill_n(b, 35, 0.0f);
  b[0] = 16777216.0f;
  b[16] = 1.0f;
  b[8] = -16777216.0f;
  b[34] = 3.0f;
  EXPECT_EQ(QVEffectsDspLib::dot(a, b, 35), 3.0f);
  EXPECT_EQ(QVEffectsDspLib::dot(a, b, 0), 0.0f);
  // Four lanes: elements 0, 8 and 16 follow each other in the first.
  const float* vectors[] = {b, a, b + 1, a + 1};
  float out[4];
  QVEffectsDspLib::dot4(a, vectors, out, 34);
  EXPECT_THAT(out, testing::ElementsAre(1.0f, 34.0f, -16777216.0f + 1.0f + 3.0f, 34.0f));
  // Every processor that runs this has SSE2 and is in 64-bit mode.
#ifdef __x86_64__
  EXPECT_EQ(QVEffectsDspLib::GetCPUCaps() & (1ull << 2 | 1ull << 30), 1ull << 2 | 1ull << 30);
#endif
  void* p = QVEffectsDspLib::alloc(64);
  EXPECT_THAT(std::vector<char>(static_cast<char*>(p), static_cast<char*>(p) + 64),
              testing::Each(0));
  QVEffectsDspLib::free(p);
  QVEffectsDspLib::free(nullptr);
}

}  // namespace
