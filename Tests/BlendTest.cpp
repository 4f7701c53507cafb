// SPDX-License-Identifier: Apache-2.0
// Blend modes and image blending, against a plain definition of one pixel.
#include <QVEffects/QVEffects.h>
#include <gmock/gmock.h>

#include <limits>
#include <memory>

#include "NaiveColors.h"
#include "Utils/BlendModes.h"

namespace {

using test::Form;
using test::Pixel;
using test::Residency;
using test::Rgb;
using test::TestImage;

// One sample of a mode, written as plainly as it is defined.
float PlainSample(QVBlendMode mode, float a, float b) {
  switch (mode) {
    case kQVBlendModeNormal: return a;
    case kQVBlendModeMultiply: return a * b;
    case kQVBlendModeDarken: return std::min(a, b);
    case kQVBlendModeLighten: return std::max(a, b);
    case kQVBlendModeDifference:
      if (a > b) return a - b;
      return b - a;
    case kQVBlendModeScreen: return (a + b) - a * b;
    case kQVBlendModeOverlay:
      if (b < 0.5f) return b * (a + a);
      return 2 * ((b + a) - b * a) - 1;
    case kQVBlendModeHardLight:
      if (a < 0.5f) return (a + a) * b;
      return 2 * ((a + b) - a * b) - 1;
    case kQVBlendModeSoftLight: return ((1 - b) * (a + a) + b) * b;
    case kQVBlendModeExclusion: return a * -2 * b + (a + b);
    case kQVBlendModeLinearBurn: return std::max(a + b - 1, 0.0f);
    case kQVBlendModeLinearDodge: return std::min(a + b, 1.0f);
    case kQVBlendModeLinearLight: return std::min(std::max(a + a + b - 1, 0.0f), 1.0f);
    case kQVBlendModeHardMix:
      if (a + b > 1) return 1;
      return b >= 1 ? 1 : 0;
    case kQVBlendModeSubtract: return std::max(b - a, 0.0f);
    case kQVBlendModeDivide:
      if (a > 0) return std::min(b / a, 1.0f);
      return b > 0 ? 1 : 0;
    case kQVBlendModeColorBurn:
      if (a > 0) return std::max((b - 1) / a + 1, 0.0f);
      return b >= 1 ? 1 : 0;
    case kQVBlendModeColorDodge:
      if (a < 1) return std::min(b / (1 - a), 1.0f);
      return b > 0 ? 1 : 0;
    case kQVBlendModeVividLight:
      if (a <= 0) return 0;
      if (a < 0.5f) return std::max((b - 1) / (a + a) + 1, 0.0f);
      if (a < 1) return std::min(b / (2 - (a + a)), 1.0f);
      return 1;
    case kQVBlendModePinLight:
      if (a < 0.5f) return std::min(a + a, b);
      return std::max(a + a - 1, b);
    default: return std::numeric_limits<float>::quiet_NaN();
  }
}

using Slots = std::array<float, 6>;

bool IsWholeColor(QVBlendMode mode) { return std::isnan(PlainSample(mode, 0.25f, 0.5f)); }

float LeftToRight(const Slots& c) { return 0.299f * c[0] + 0.587f * c[1] + 0.114f * c[2]; }

void PlainMode(QVBlendMode mode, const Slots& a, const Slots& b, Slots& r, int colors) {
  if (!IsWholeColor(mode)) {
    for (int c = 0; c < colors; c++) r[c] = PlainSample(mode, a[c], b[c]);
    return;
  }
  if (mode == kQVBlendModeLighterColor || mode == kQVBlendModeDarkerColor) {
    const float ya = LeftToRight(a), yb = LeftToRight(b);
    const bool takeA = mode == kQVBlendModeLighterColor ? ya > yb : ya < yb;
    for (int c = 0; c < 3; c++) r[c] = takeA ? a[c] : b[c];
    return;
  }
  float upper[3], lower[3];
  RGB2LCH(a.data(), upper);
  RGB2LCH(b.data(), lower);
  if (mode == kQVBlendModeHue) {
    lower[2] = upper[2];
    if (upper[1] <= 0) lower[1] = 0;
  } else if (mode == kQVBlendModeSaturation) {
    if (lower[1] > 0) lower[1] = upper[1];
  } else if (mode == kQVBlendModeColor) {
    lower[1] = upper[1];
    lower[2] = upper[2];
  } else {
    lower[0] = upper[0];
  }
  LCH2RGB(lower, r.data());
}

// A layer as the plain definition reads it.
struct Layer {
  TestImage* image;
  float opacity;
  TestImage* mask;
};

float Sample(const Pixel& pixel, int plane, int depth) {
  return test::GetSample(pixel, plane, depth) * test::UnitScale(depth);
}

// Fills the slots of a layer at a place, and gives its coverage.
float Take(const Layer& layer, int x, int y, int colors, Slots& slots) {
  slots[colors] = 1;
  const Form form = layer.image->GetForm();
  const Pixel pixel = test::NearestPixel(*layer.image, x, y);
  for (int c = 0; c < form.planes; c++) slots[c] = Sample(pixel, c, form.depth);
  float factor = 1;
  if (layer.mask && test::Contains(layer.mask->Bounds(), x, y)) {
    factor = Sample(test::NearestPixel(*layer.mask, x, y), 0, layer.mask->GetForm().depth);
    if (QVImageGetType(*layer.mask) == kQVImageTypeInvertedMask) factor = 1 - factor;
  }
  return slots[colors] * layer.opacity * factor;
}

void PlainBlend(const Layer& a, const Layer& b, TestImage& dst, QVBlendMode mode, QVRect rect) {
  const auto [depth, planes, transparency] = dst.GetForm();
  const int colors = planes - transparency;
  const float max = test::FullScale(depth);
  const QVRect seen = QVRectIntersect(rect, dst.Bounds());
  Slots upper = {}, lower = {}, mixed = {};
  for (int y = seen.y; y < seen.y + seen.height; y++) {
    for (int x = seen.x; x < seen.x + seen.width; x++) {
      const float ca = Take(a, x, y, colors, upper), cb = Take(b, x, y, colors, lower);
      PlainMode(mode, upper, lower, mixed, colors);
      const float c = ca + cb - ca * cb;
      Pixel pixel = {};
      for (int i = 0; i < colors; i++) {
        const float sum =
            lower[i] * (1 - ca) * cb + (mixed[i] * ca * cb + upper[i] * ca * (1 - cb));
        test::SetSample(pixel, i, depth, c > 0 ? sum * max / c : mixed[i] * max);
      }
      if (transparency) test::SetSample(pixel, colors, depth, c * max);
      test::PutPixel(dst.Bytes(), dst, x, y, pixel);
    }
  }
}

// Samples within 0 to 1 (test images go beyond it in float).
void HoldToRange(TestImage& image) {
  if (image.GetForm().depth != 32) return;
  const QVRect r = image.Bounds();
  for (int y = r.y; y < r.y + r.height; y++) {
    for (int x = r.x; x < r.x + r.width; x++) {
      for (int c = 0; c < image.GetForm().planes; c++) {
        float& sample = image.At<float>(x, y, c);
        sample = std::clamp(sample, 0.0f, 1.0f);
      }
    }
  }
}

constexpr QVRect kBounds = {-3, 5, 270, 4};
constexpr QVRect kShifted = {7, 4, 255, 3};  // a layer that ends inside the rectangle
constexpr QVRect kRect = {-5, 4, 268, 4};

struct Layout {
  int a, aTransparency, b, bTransparency, dst, dstTransparency;
};
constexpr Layout kLayouts[] = {{3, 0, 3, 0, 3, 0}, {4, 1, 3, 0, 4, 1}, {3, 0, 4, 1, 4, 1},
                               {4, 1, 4, 1, 4, 1}, {4, 1, 4, 1, 3, 0}, {2, 1, 4, 1, 4, 1},
                               {2, 1, 1, 0, 2, 1}, {1, 0, 1, 0, 1, 0}, {5, 0, 6, 1, 6, 1}};

// Which masks there are, which are inverted, and their form.
struct Masks {
  bool a, b, invertA, invertB;
  Form form;
};
constexpr Masks kMasks[] = {{false, false, false, false, {8, 1, 0}},
                            {true, false, false, false, {8, 2, 1}},
                            {false, true, false, true, {32, 1, 0}},
                            {true, true, true, false, {16, 3, 0}},
                            {true, true, false, false, {32, 1, 0}}};

std::unique_ptr<TestImage> MakeMask(bool wanted, bool inverted, Form form, unsigned seed) {
  if (!wanted) return nullptr;
  auto mask = std::make_unique<TestImage>(QVRect{3, 5, 100, 2}, form, Residency::kMemory, seed);
  HoldToRange(*mask);
  if (inverted) QVImageSetType(*mask, kQVImageTypeInvertedMask);
  return mask;
}

TEST(Blend, EveryModeDepthAndLayoutAgreesWithThePlainDefinition) {
  for (const QVBlendMode mode : test::kAllModes) {
    for (const int depth : {8, 16, 32}) {
      for (const Layout& layout : kLayouts) {
        for (const Masks& masks : kMasks) {
          SCOPED_TRACE(testing::Message()
                       << "mode " << mode << " at " << depth << " bits, planes " << layout.a << ", "
                       << layout.b << " to " << layout.dst << ", masks " << masks.a << masks.b);
          TestImage a(kBounds, {depth, layout.a, layout.aTransparency}, Residency::kMemory, 1);
          TestImage b(kShifted, {depth, layout.b, layout.bTransparency}, Residency::kMemory, 2);
          const Form form = {depth, layout.dst, layout.dstTransparency};
          TestImage dst(kBounds, form, Residency::kMemory, 3),
              plain(kBounds, form, Residency::kMemory, 3);
          HoldToRange(a);
          HoldToRange(b);
          const auto maskOfA = MakeMask(masks.a, masks.invertA, masks.form, 4);
          const auto maskOfB = MakeMask(masks.b, masks.invertB, masks.form, 5);
          const auto image = [](const auto& mask) -> __QVImage* {
            return mask ? static_cast<__QVImage*>(*mask) : nullptr;
          };
          PlainBlend({&a, 0.75f, maskOfA.get()}, {&b, 0.9f, maskOfB.get()}, plain, mode, kRect);
          ASSERT_EQ(QVEffectsBlendImagesWithOpacitiesAndMasks(a, 0.75f, image(maskOfA), b, 0.9f,
                                                              image(maskOfB), dst, mode, kRect),
                    kQVStatusSuccess);
          ASSERT_EQ(dst.Bytes(), plain.Bytes());

          PlainBlend({&a, 1, nullptr}, {&b, 1, nullptr}, plain, mode, kBounds);
          ASSERT_EQ(QVEffectsBlendImages(a, b, dst, kBounds, mode), kQVStatusSuccess);
          ASSERT_EQ(dst.Bytes(), plain.Bytes());
        }
      }
    }
  }
}

// That dst may be the lower layer is seen elsewhere.
TEST(Blend, WorksOverTheUpperLayer) {
  constexpr Form kForm = {16, 4, 1};
  TestImage a(kBounds, kForm), b(kBounds, kForm, Residency::kMemory, 2), expected(kBounds, kForm);
  ASSERT_EQ(QVEffectsBlendImages(a, b, expected, kBounds, kQVBlendModeOverlay), 0);
  for (const Residency residency : {Residency::kMemory, Residency::kCallbacks}) {
    TestImage upper(kBounds, kForm, residency);
    ASSERT_EQ(QVEffectsBlendImages(upper, b, upper, kBounds, kQVBlendModeOverlay), 0);
    EXPECT_EQ(upper.Bytes(), expected.Bytes()) << residency;
  }
}

// Values by hand, at the edges of the formulas.
TEST(Blend, EdgesOfFormulas) {
  const struct {
    QVBlendMode mode;
    float a, b, r;
  } cases[] = {
      {kQVBlendModeOverlay, 0.25f, 0.5f, 0.25f},
      {kQVBlendModeHardLight, 0.5f, 0.25f, 0.25f},
      {kQVBlendModeSoftLight, 0.5f, 0.25f, 0.25f},
      {kQVBlendModeDivide, 0, 0, 0},
      {kQVBlendModeDivide, 0, 0.1f, 1},
      {kQVBlendModeColorDodge, 1, 0, 0},
      {kQVBlendModeColorBurn, 0, 1, 1},
      {kQVBlendModeColorBurn, 0, 0.99f, 0},
      {kQVBlendModeHardMix, 0.25f, 0.75f, 0},
      {kQVBlendModeHardMix, 0, 1, 1},
      {kQVBlendModeVividLight, 0, 1, 0},
      {kQVBlendModeVividLight, 1, 0, 1},
      {kQVBlendModeSubtract, 0.25f, 0.75f, 0.5f},
      {kQVBlendModeLinearLight, 0.75f, 0.25f, 0.75f},
      {kQVBlendModePinLight, 0.25f, 0.75f, 0.5f},
      {kQVBlendModePinLight, 0.75f, 0.25f, 0.5f},
  };
  for (const auto& [mode, a, b, r] : cases) {
    EXPECT_THAT(test::Blended(mode, {a, a, a}, {b, b, b}), testing::Each(r))
        << std::hex << mode << " of " << a << ", " << b;
  }
}

// Modes of the whole colour by what they mean.
TEST(Blend, WholeColors) {
  constexpr Rgb kGray = {0.5f, 0.5f, 0.5f}, kRed = {1, 0, 0}, kBlue = {0, 0, 1};
  constexpr Rgb kGrayOfRed = {0.299f, 0.299f, 0.299f};
  const struct {
    QVBlendMode mode;
    Rgb a, b, r;
  } cases[] = {
      {kQVBlendModeHue, kGray, kRed, kGrayOfRed},    // a gray of the lower luma
      {kQVBlendModeSaturation, kRed, kGray, kGray},  // gray stays gray
      {kQVBlendModeLighterColor, kRed, kBlue, kRed},
      {kQVBlendModeDarkerColor, kRed, kBlue, kBlue},
      {kQVBlendModeLuminosity, kRed, kGray, kGrayOfRed},
      {kQVBlendModeColor, kGray, kRed, kGrayOfRed},
  };
  for (const auto& [mode, a, b, r] : cases) {
    EXPECT_THAT(test::Blended(mode, a, b), testing::Pointwise(testing::FloatNear(1e-6f), r))
        << std::hex << mode;
  }
}

TEST(Blend, CodesAndReverseForms) {
  for (const QVBlendMode mode : test::kAllModes) {
    EXPECT_FALSE(IsReverseBlendMode(mode)) << mode;
    const QVBlendMode reverse = QVEffectsGetReverseBlendMode(mode);
    EXPECT_EQ(static_cast<unsigned>(reverse), static_cast<unsigned>(mode) & ~0x20000000u);
    EXPECT_TRUE(IsReverseBlendMode(reverse));
    EXPECT_EQ(GetNonReverseBlendMode(reverse), mode);
  }
  EXPECT_EQ(QVEffectsGetReverseBlendMode(kQVBlendModeNormal), 0x4E6F726D);
  EXPECT_TRUE(IsReverseBlendMode(kQVBlendModeNone));
}

TEST(Blend, Refusals) {
  TestImage a(kBounds, {8, 4, 1}), b(kBounds, {8, 3, 0}), dst(kBounds, {8, 4, 1}),
      deep(kBounds, {16, 4, 1});
  TestImage mask8(kBounds, {8, 1, 0}), mask16(kBounds, {16, 1, 0}), wide(kBounds, {8, 7, 0}),
      six(kBounds, {8, 6, 0});
  const auto blend = [](__QVImage* upper, __QVImage* lower, __QVImage* to, int mode,
                        __QVImage* upperMask = nullptr, __QVImage* lowerMask = nullptr) {
    return QVEffectsBlendImagesWithOpacitiesAndMasks(upper, 1, upperMask, lower, 1, lowerMask, to,
                                                     static_cast<QVBlendMode>(mode), kRect);
  };
  const auto before = dst.Bytes();
  for (const int mode : {0, 1, 0x4E6F726D, -1}) EXPECT_EQ(blend(a, b, dst, mode), 1005) << mode;
  constexpr int kNormal = kQVBlendModeNormal;
  for (const auto& [bad, status] :
       {std::pair<__QVImage*, int>{nullptr, 1005}, {deep, 1020}, {wide, 1020}}) {
    EXPECT_EQ(blend(bad, b, dst, kNormal), status);
    EXPECT_EQ(blend(a, bad, dst, kNormal), status);
    EXPECT_EQ(blend(a, b, bad, kNormal), status);
  }
  EXPECT_EQ(blend(a, b, six, kNormal), 1020);
  EXPECT_EQ(blend(a, b, dst, kNormal, mask8, mask16), 1020);
  EXPECT_EQ(blend(a, b, dst, kNormal, wide), 1020);
  EXPECT_EQ(dst.Bytes(), before);
  EXPECT_EQ(blend(a, b, dst, kNormal, mask16), 0);
}

// A NaN stays in its pixel.
TEST(Blend, NaNStaysInItsPixel) {
  for (const QVBlendMode mode : test::kAllModes) {
    constexpr Form kForm = {32, 4, 1};
    TestImage a(kBounds, kForm), b(kBounds, kForm, Residency::kMemory, 2);
    TestImage clean(kBounds, kForm), dst(kBounds, kForm);
    HoldToRange(a);
    HoldToRange(b);
    ASSERT_EQ(QVEffectsBlendImages(a, b, clean, kBounds, mode), 0);
    a.At<float>(20, 6, 1) = std::numeric_limits<float>::quiet_NaN();
    ASSERT_EQ(QVEffectsBlendImages(a, b, dst, kBounds, mode), 0);
    std::memcpy(dst.Address(20, 6), clean.Address(20, 6), 16);
    EXPECT_EQ(dst.Bytes(), clean.Bytes()) << mode;
  }
}

}  // namespace
