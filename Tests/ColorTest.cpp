// SPDX-License-Identifier: Apache-2.0
// Colour mathematics against literal transcriptions of the definitions, bit by bit.
#include <QVEffects/QVEffectsColor.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Color = std::array<float, 3>;
using Conversion = void (*)(const float* in, float* out);

Color Apply(Conversion conversion, Color c) {
  Color out;
  conversion(c.data(), out.data());
  return out;
}

template <class... Amounts>
Color Apply(void (*change)(float*, Amounts...), Color c, std::type_identity_t<Amounts>... amounts) {
  change(c.data(), amounts...);
  return c;
}

std::string Text(Color c) { return testing::PrintToString(c); }

// Equal to the bit, the sign of a zero included where `signs` is set. What is not a number by the
// definition may be anything.
testing::AssertionResult Same(Color actual, Color expected, bool signs) {
  if (std::isnan(expected[0] + expected[1] + expected[2])) return testing::AssertionSuccess();
  using Bits = std::array<uint32_t, 3>;
  if (signs ? std::bit_cast<Bits>(actual) == std::bit_cast<Bits>(expected) : actual == expected)
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << Text(actual) << " is not " << Text(expected);
}

void ExpectNear(Color actual, std::array<double, 3> expected, double tolerance) {
  for (int i = 0; i < 3; i++) EXPECT_NEAR(actual[i], expected[i], tolerance) << i;
}

// Colours with many ties, corners and ends, then random ones from `low` to `high`.
std::vector<Color> Colors(float low, float high) {
  std::vector<Color> colors;
  const float steps[] = {-0.0f,    0,        1e-6f,  0.04f, 1 / 6.0f, 1 / 3.0f, 0.5f,
                         2 / 3.0f, 5 / 6.0f, 0.999f, 1,     low,      high};
  for (const float r : steps)
    for (const float g : steps)
      for (const float b : steps) colors.push_back({r, g, b});
  std::mt19937 random(1);
  std::uniform_real_distribution<float> component(low, high);
  for (int i = 0; i < 20000; i++)
    colors.push_back({component(random), component(random), component(random)});
  return colors;
}

// ---- The definitions with indices. Of equal components the first is the largest, the last the
// smallest.

int LargestIndex(Color c) { return int(std::max_element(c.begin(), c.end()) - c.begin()); }
int SmallestIndex(Color c) { return 2 - int(std::min_element(c.rbegin(), c.rend()) - c.rbegin()); }

Color NaiveLch(Color c) {
  const int M = LargestIndex(c), m = SmallestIndex(c), mid = 3 - M - m;
  const float chroma = c[M] - c[m];
  float hue = 0;
  if (chroma > 0) {
    const float t = (c[mid] - c[m]) / chroma;
    hue = float(2 * M) + ((M == 2 && mid == 0) || mid > M ? t : -t);
    if (M == 0 && mid == 2) hue = 6 - t;
    hue = hue / 6;
  }
  return {c[2] * 0.114f + (c[1] * 0.587f + c[0] * 0.299f), chroma, hue};
}

Color NaiveFromLch(Color lch) {
  const float L = lch[0], h = lch[2] * 6;
  float C = lch[1];
  const int i = int(h);
  const float f = h - float(i);
  Color c = {C, f * C, 0};
  if (i == 1) c = {(1 - f) * C, C, 0};
  if (i == 2) c = {0, C, f * C};
  if (i == 3) c = {0, (1 - f) * C, C};
  if (i == 4) c = {f * C, 0, C};
  if (i == 5) c = {C, 0, (1 - f) * C};
  float scale = 0, offset = 0;
  if (!(L <= 0)) {
    const float p = 0.114f * c[2] + (0.587f * c[1] + 0.299f * c[0]);
    if (p >= L) {
      scale = L / p;
    } else {
      offset = L - p;
      scale = 1;
      if (offset + C > 1) {
        scale = (1 - L) / (C - p);
        C = C * scale;
        offset = 1 - C;
      }
    }
  }
  for (float& component : c) component = component * scale + offset;
  return c;
}

float NaiveHue(Color c) {
  const int M = LargestIndex(c), next = (M + 1) % 3, prev = (M + 2) % 3;
  const float d = c[M] - c[SmallestIndex(c)];
  const float h = float(M) * 0.33333334f + (c[next] - c[prev]) / (d > 0 ? 6 * d : 1);
  return h < 0 ? h + 1 : h;
}

Color NaiveHsb(Color c) {
  const float largest = c[LargestIndex(c)], d = largest - c[SmallestIndex(c)];
  return {NaiveHue(c), largest <= 0 ? 0 : d / largest, largest};
}

Color NaiveHsl(Color c) {
  const float largest = c[LargestIndex(c)], smallest = c[SmallestIndex(c)];
  const float l = (largest + smallest) * 0.5f;
  const double room = 1 - std::fabs(2 * double(l) - 1);
  return {NaiveHue(c), l >= 1 || l <= 0 ? 0 : float(double(largest - smallest) / room), l};
}

Color NaiveFromHue(float hue, float top, float low, float span) {
  const float h = hue * 6;
  const int n = int(h) + 1;
  const float f = h - float(n & ~1);
  const int A = ((n >> 1) % 3 + 3) % 3, B = (A + 1) % 3, C = 3 - A - B;
  Color out;
  out[A] = top;
  out[B] = f < 0 ? low : span * f + low;
  out[C] = f < 0 ? low - span * f : low;
  return out;
}

Color NaiveFromHsb(Color c) {
  const float low = (1 - c[1]) * c[2];
  return NaiveFromHue(c[0], c[2], low, c[2] - low);
}

Color NaiveFromHsl(Color c) {
  const double l = double(c[2]);
  const float low = float(l + double(c[1]) * ((1 - std::fabs(2 * l - 1)) * -0.5));
  return NaiveFromHue(c[0], 2 * c[2] - low, low, 2 * c[2] - low - low);
}

Color NaiveHsbGlsl(Color c) {
  const float R = c[0], G = c[1], B = c[2];
  const float a = std::min(G, B), b = std::max(G, B), e = std::min(R, b), x = std::max(b, R);
  const float d = x - std::min(a, e);
  const float second = b <= R ? -1.0f : 2 / 3.0f, first = b <= R ? 0 : -1 / 3.0f;
  const float hue = std::fabs((e - a) / (6 * d + 1e-10f) + (B <= G ? first : second));
  return {hue, d / (1e-10f + x), x};
}

Color NaiveFromHsbGlsl(Color c) {
  const float offsets[] = {1, 0.6666667f, 0.33333334f};
  Color out;
  for (int i = 0; i < 3; i++) {
    const double u = double(c[0] + offsets[i]);
    const float p = float(std::fabs((u - std::floor(u)) * 6 - 3));
    out[i] = (std::clamp(p - 1, 0.0f, 1.0f) * c[1] + (1 - c[1])) * c[2];
  }
  return out;
}

Color NaiveXyz(Color c) {
  for (float& v : c) {
    const double power = std::pow(double((v + 0.055f) * 0.94786733f), 2.4000000953674316);
    v = v > 0.04045f ? float(power) : v * 0.07739938f;
  }
  return {0.032516852f * c[2] + (0.14020835f * c[1] + 0.8272748f * c[0]),
          8.57e-5f * c[2] + (0.7118741f * c[1] + 0.2880402f * c[0]), c[2]};
}

Color NaiveFromXyz(Color c) {
  const float X = c[0], Y = c[1], Z = c[2];
  c[0] = -0.042177994f * Z + (-0.25560752f * Y + 1.2977855f * X);
  c[1] = 0.016945772f * Z + (1.5081673f * Y + -0.52511305f * X);
  for (float& v : c) {
    const double power = std::pow(double(v), 0.4166666567325592);
    v = v > 0.0031308f ? float(power * 1.0549999475479126 - 0.054999999701976776) : v * 12.92f;
  }
  return c;
}

Color NaiveLab(Color c) {
  Color f = NaiveXyz(c);
  for (float& t : f) {
    const double power = std::pow(double(t), 0.3333333432674408);
    t = t > 0.008856452f ? float(power) : t * 7.787037f + 0.13793103f;
  }
  const float u = f[0] - f[1], v = f[1] - f[2];
  return {1.16f * f[1] - 0.16f, u * float(u > 0 ? 1.721703290939331 : 1.3390840291976929) + 0.5f,
          v * float(v > 0 ? 0.5800192356109619 : 0.5804493427276611) + 0.5f};
}

Color NaiveFromLab(Color c) {
  const float fy = (c[0] * 100 + 16) * 0.00862069f, u = c[1] - 0.5f, v = c[2] - 0.5f;
  const float fx = u * float(u > 0 ? 0.5808202028274536 : 0.7467790842056274) + fy;
  Color out = {fx, fy, fy - v * float(v > 0 ? 1.7240808010101318 : 1.7228032350540161)};
  for (float& t : out) t = t > 0.20689656f ? t * t * t : (t - 0.13793103f) * 0.12841855f;
  return NaiveFromXyz(out);
}

Color Scaled(Color c, float by) { return {c[0] * by, c[1] * by, c[2] * by}; }

Color NaiveSaturation(Color c, float amount) {
  const float mx = c[LargestIndex(c)], mn = c[SmallestIndex(c)];
  if (mx > mn)
    for (float& v : c) v = (v - mx) * std::min(mx / (mx - mn), amount + 1) + mx;
  return c;
}

float NaiveCurvature(float amount) {
  const float t = amount + amount;
  return t > 0 ? 1 / (t + 1) : 1 - t;
}

float NaiveFactor(float mx, float amount) {
  const float s = NaiveCurvature(amount);
  return mx <= 0 ? 1 : std::min(1 / mx, (mx / ((1 - s) * mx + s)) * (1 / mx));
}

Color NaiveBrightness(Color c, float amount) {
  return Scaled(c, NaiveFactor(c[LargestIndex(c)], amount));
}

Color NaiveSaturationBrightness(Color c, float saturation, float brightness) {
  return Scaled(NaiveSaturation(c, saturation), NaiveFactor(c[LargestIndex(c)], brightness));
}

Color NaiveHueSaturationBrightness(Color c, float hue, float saturation, float brightness) {
  const float x = hue + c[0], s = NaiveCurvature(brightness);
  return {x - std::floor(x), std::min((saturation + 1) * c[1], 1.0f), c[2] / ((1 - s) * c[2] + s)};
}

Color NaiveVibrance(Color c, float amount) {
  const int M = LargestIndex(c), m = SmallestIndex(c), mid = 3 - M - m;
  const float mx = c[M], mn = c[m], d = mx - mn;
  if (mn >= mx) return c;
  if (amount < 0) {
    for (float& v : c) v = v + (v - (mx + mn) * 0.5f) * amount;
    return c;
  }
  const float e = std::min(0.5f * d, std::min(mn, 1 - mx)) * amount;
  c[m] = mn - e;
  c[M] = mx + e;
  c[mid] = c[M] - (mx - c[mid]) * (c[M] - c[m]) / d;
  return c;
}

Color NaiveVibrance2(Color c, float amount) {
  const float mx = c[LargestIndex(c)], d = mx - c[SmallestIndex(c)];
  if (amount == 0 || d <= 0) return c;
  const float k = amount + 1 - (d / mx) * amount, sum = c[0] + c[1] + c[2];
  for (float& v : c) v = mx - (mx - v) * k;
  return Scaled(c, std::min(1 / c[LargestIndex(c)], sum / (c[0] + c[1] + c[2])));
}

constexpr std::pair<float, float> kRanges[] = {{0, 1}, {-0.5f, 1.5f}, {-2000, 2000}};

constexpr struct {
  const char* name;
  Conversion actual;
  Color (*expected)(Color);
  bool signs = true;
} kConversions[] = {
    {"RGB2LCH", RGB2LCH, NaiveLch},
    {"LCH2RGB", LCH2RGB, NaiveFromLch},
    {"RGB2HSB", RGB2HSB, NaiveHsb},
    {"HSB2RGB", HSB2RGB, NaiveFromHsb, false},
    {"RGB2HSL", RGB2HSL, NaiveHsl},
    {"HSL2RGB", HSL2RGB, NaiveFromHsl, false},
    {"RGB2HSB_GLSL", RGB2HSB_GLSL, NaiveHsbGlsl, false},
    {"HSB2RGB_GLSL", HSB2RGB_GLSL, NaiveFromHsbGlsl},
    {"RGB2XYZ", RGB2XYZ, NaiveXyz},
    {"XYZ2RGB", XYZ2RGB, NaiveFromXyz},
    {"RGB2Lab", RGB2Lab, NaiveLab},
    {"Lab2RGB", Lab2RGB, NaiveFromLab},
};

TEST(Color, ConversionsAreTheirDefinitionsBitByBit) {
  for (const auto& [low, high] : kRanges) {
    for (const Color c : Colors(low, high)) {
      for (const auto& test : kConversions)
        ASSERT_TRUE(Same(Apply(test.actual, c), test.expected(c), test.signs))
            << test.name << " of " << Text(c);
    }
  }
}

TEST(Color, ChangesAreTheirDefinitionsBitByBit) {
  for (const auto& [low, high] : kRanges) {
    for (const Color c : Colors(low, high)) {
      for (const float a : {-1.0f, -0.3f, -0.0f, 0.0f, 0.4f, 1.0f, 3.0f}) {
        const float b = 0.5f - a, h = a * 2;
        const struct {
          const char* name;
          Color actual, expected;
        } changes[] = {
            {"Saturation", Apply(Saturation, c, a), NaiveSaturation(c, a)},
            {"Brightness", Apply(Brightness, c, a), NaiveBrightness(c, a)},
            {"Vibrance", Apply(Vibrance, c, a), NaiveVibrance(c, a)},
            {"Vibrance2", Apply(Vibrance2, c, a), NaiveVibrance2(c, a)},
            {"SaturationBrightness", Apply(SaturationBrightness, c, a, b),
             NaiveSaturationBrightness(c, a, b)},
            {"HueSaturationBrightness", Apply(HueSaturationBrightness, c, h, a, b),
             NaiveHueSaturationBrightness(c, h, a, b)},
        };
        for (const auto& change : changes)
          ASSERT_TRUE(Same(change.actual, change.expected, false))
              << change.name << " of " << Text(c) << " by " << a;
      }
    }
  }
}

// Values worked out by hand.
TEST(Color, HasTheseValues) {
  constexpr float kThird = 0.33333334f;
  // Nothing gives way where luma is above 1 without chroma, or just that of the pure colour.
  EXPECT_EQ(Apply(LCH2RGB, {1.5f, 0, 0.7f}), (Color{1.5f, 1.5f, 1.5f}));
  EXPECT_EQ(Apply(LCH2RGB, {0.598f, 2, 1}), (Color{2, 0, 0}));
  EXPECT_EQ(Apply(RGB2HSB, {1, 0, 1}), (Color{-1 / 6.0f + 1, 1, 1}));
  EXPECT_EQ(Apply(HSB2RGB, {kThird, 1, 1}), (Color{0, 1, 0}));
  EXPECT_EQ(Apply(RGB2HSL, {0.75f, 0.25f, 0.25f}), (Color{0, 0.5f, 0.5f}));
  EXPECT_EQ(Apply(HSL2RGB, {0.5f, 1, 0.5f}), (Color{0, 1, 1}));
  EXPECT_EQ(Apply(HueSaturationBrightness, {0.75f, 0.25f, 0.5f}, 0.5f, 1, 0.5f),
            (Color{0.25f, 0.5f, 2 / 3.0f}));
  EXPECT_EQ(Apply(Saturation, {1, 0.75f, 0.5f}, 9), (Color{1, 0.5f, 0}));
  EXPECT_EQ(Apply(Brightness, {0.5f, 0.25f, 0}, 0.5f),
            (Color{0.5f * (4 / 3.0f), 0.25f * (4 / 3.0f), 0}));
  EXPECT_EQ(Apply(SaturationBrightness, {0.5f, 0.25f, 0.25f}, 1, -0.5f), (Color{kThird, 0, 0}));
  EXPECT_EQ(Apply(Vibrance, {0.25f, 0.75f, 0.5f}, 1), (Color{0, 1, 0.5f}));
  EXPECT_EQ(Apply(Vibrance2, {0.5f, 0.25f, 0.25f}, -1), (Color{0.4f, 0.3f, 0.3f}));
  ExpectNear(Apply(RGB2Lab, {1, 1, 1}), {1, 0.5, 0.5}, 1e-6);
  // L* = 50 is 0.18419 of light.
  ExpectNear(Apply(Lab2RGB, {0.5f, 0.5f, 0.5f}), {0.46633, 0.46633, 0.46633}, 1e-4);
}

TEST(Color, IsDefinedForAnyFloat) {
  constexpr float kInf = std::numeric_limits<float>::infinity(), kNan = NAN;
  const float hostile[] = {kNan,    -kNan,  kInf,  -kInf, FLT_MAX, -FLT_MAX, 3e9f, -3e9f,
                           FLT_MIN, 1e-45f, -0.0f, 0,     0.5f,    1,        2};
  float sum = 0;
  for (const float x : hostile) {
    for (const float y : hostile) {
      for (const float z : hostile) {
        const Color c = {x, y, z};
        for (const auto& each : kConversions) sum += Apply(each.actual, c)[0];
        for (const float amount : hostile) {
          for (const auto change : {Saturation, Brightness, Vibrance, Vibrance2})
            sum += Apply(change, c, amount)[0];
          sum += Apply(SaturationBrightness, c, amount, amount)[0];
          sum += Apply(HueSaturationBrightness, c, amount, amount, amount)[0];
        }
      }
    }
    // A finite hue gives a colour, however far round the circle.
    if (!(std::abs(x) < 1e38f)) continue;
    for (const Color rgb :
         {Apply(HSB2RGB, {std::abs(x), 0.5f, 0.5f}), Apply(HSL2RGB, {std::abs(x), 0.5f, 0.5f}),
          Apply(LCH2RGB, {0.5f, 0.5f, x}), Apply(HSB2RGB_GLSL, {x, 0.5f, 0.5f})}) {
      for (const float v : rgb) EXPECT_TRUE(v >= 0 && v <= 1) << x << ": " << Text(rgb);
    }
  }
  EXPECT_TRUE(std::isnan(sum));
}

TEST(Color, RadiatesLikeABlackBody) {
  constexpr double kBoltzmann = 1.3806504e-23, kPlanck = 6.62606896e-34, kLight = 299792458.0;
  for (const double temperature : {300.0, 2856.0, 6504.0, 20000.0}) {
    for (const double wavelength : {1e-7, 5.5e-7, 1e-5, 1e-3}) {
      const double energy = kPlanck * kLight / wavelength;
      const double photons = 1 / std::expm1(energy / (kBoltzmann * temperature));
      const double expected = 2 * kLight * energy * photons / std::pow(wavelength, 4);
      EXPECT_NEAR(BlackBodyRadiation(wavelength, temperature) / expected, 1, 1e-11);
    }
  }
}

TEST(Color, RandomSequenceBeginsAgain) {
  for (int i = 0; i < 2; i++) {
    RandomReset();
    EXPECT_EQ(Random(), 0xFBFF5385u);
    EXPECT_EQ(Random(), 0x84CCC6F5u);
  }
}

TEST(Color, NoiseRepeatsEvery256) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(gRandom);
  for (int y = 0; y < 256; y++) {
    for (int x = 0; x < 256; x++) {
      const int far = (x * 7 - y) * 256, i = y * 256 + x;
      ASSERT_EQ(RandomReproducible<unsigned char>(x + far, y - far), bytes[i]);
      ASSERT_EQ(RandomReproducible<float>(x - far, y + far), gRandom[i] * 1.5259022e-5f);
    }
  }
  EXPECT_EQ(RandomReproducible<float>(INT32_MIN, INT32_MAX), RandomReproducible<float>(0, 255));
}

TEST(Color, NoiseIsThis) {
  uint64_t hash = 0;
  for (const unsigned short v : gRandom) hash = (hash ^ v) * 0x100000001B3;
  EXPECT_EQ(hash, 3851186741337794859u);
}

}  // namespace
