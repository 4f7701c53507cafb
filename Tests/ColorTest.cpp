// SPDX-License-Identifier: Apache-2.0
// Colour mathematics against literal transcriptions with indices, bit by bit, and against the
// textbook in double.
#include <QVEffects/QVEffectsColor.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "Utils/ColorMath.h"

namespace {

using Color = std::array<float, 3>;
using Exact = std::array<double, 3>;
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

void ExpectNear(Color actual, Exact expected, double tolerance, Color from) {
  for (int i = 0; i < 3; i++)
    ASSERT_NEAR(actual[i], expected[i], tolerance) << i << " of " << Text(from);
}

Exact Widen(Color c) { return {c[0], c[1], c[2]}; }

// Colours with many ties and steps up to the ends, then random ones from `low` to `high`.
std::vector<Color> Colors(float low, float high) {
  std::vector<Color> colors;
  const float steps[] = {-0.0f, 0,     1e-6f,  0.04f, 0.2f, 1 / 3.0f, 0.5f,
                         0.6f,  0.75f, 0.999f, 1,     low,  high};
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

// The sign of a zero is left out.
TEST(Color, IsTheDefinitionBitByBit) {
  const struct {
    const char* name;
    Conversion actual;
    Color (*expected)(Color);
  } cases[] = {
      {"RGB2LCH", RGB2LCH, NaiveLch},     {"RGB2HSB", RGB2HSB, NaiveHsb},
      {"RGB2HSL", RGB2HSL, NaiveHsl},     {"LCH2RGB", LCH2RGB, NaiveFromLch},
      {"HSB2RGB", HSB2RGB, NaiveFromHsb}, {"HSL2RGB", HSL2RGB, NaiveFromHsl},
  };
  for (const auto& test : cases) {
    for (const auto& [low, high] : {std::pair(0.0f, 1.0f), {-0.5f, 1.5f}, {-2000.0f, 2000.0f}}) {
      for (const Color c : Colors(low, high)) {
        // Not a number by the definition: gray above white.
        if (test.actual == LCH2RGB && c[1] == 0 && c[0] > 1) continue;
        ASSERT_EQ(Apply(test.actual, c), test.expected(c)) << test.name << " of " << Text(c);
      }
    }
  }
}

// ---- The textbook, in double

// Hue as an angle in the hexagon, by the position of the colour among the six corners.
double TextbookHue(Exact c) {
  const auto [low, high] = std::minmax({c[0], c[1], c[2]});
  const double d = high - low;
  if (d == 0) return 0;
  if (high == c[0]) return std::fmod((c[1] - c[2]) / d + 6, 6) / 6;
  return (high == c[1] ? (c[2] - c[0]) / d + 2 : (c[0] - c[1]) / d + 4) / 6;
}

// The colour of a hue with components from 0 to 1.
Exact PureColor(double hue) {
  Exact c;
  for (int i = 0; i < 3; i++) {
    const double away = std::fabs(std::remainder(hue - i / 3.0, 1.0)) * 6;
    c[i] = std::clamp(2 - away, 0.0, 1.0);
  }
  return c;
}

Exact FromHsb(double hue, double saturation, double brightness) {
  Exact c = PureColor(hue);
  for (double& x : c) x = brightness * (1 - saturation + saturation * x);
  return c;
}

double Curve(double v, double amount) {
  const double s = amount > 0 ? 1 / (2 * amount + 1) : 1 - 2 * amount;
  return v / ((1 - s) * v + s);
}

double DecodeSRGB(double c) { return c > 0.04045 ? std::pow((c + 0.055) / 1.055, 2.4) : c / 12.92; }

Exact TextbookLab(Exact c) {
  for (double& x : c) x = DecodeSRGB(x);
  const auto f = [](double t) {
    return t > 216 / 24389.0 ? std::cbrt(t) : 841 / 108.0 * t + 4 / 29.0;
  };
  const double fx = f(0.8272748 * c[0] + 0.14020835 * c[1] + 0.032516852 * c[2]);
  const double fy = f(0.2880402 * c[0] + 0.7118741 * c[1] + 8.57e-5 * c[2]), fz = f(c[2]);
  const double a = fx - fy, b = fy - fz;
  return {1.16 * fy - 0.16, a * (a > 0 ? 1.7217033 : 1.339084) + 0.5,
          b * (b > 0 ? 0.5800192 : 0.58044934) + 0.5};
}

TEST(Color, AgreesWithTheTextbook) {
  for (const Color c : Colors(0, 1)) {
    const Exact x = Widen(c);
    const auto [low, high] = std::minmax({x[0], x[1], x[2]});
    const double d = high - low, hue = TextbookHue(x), l = (high + low) / 2;
    const double s = high > 0 ? d / high : 0;
    const double sl = l > 0 && l < 1 ? d / (1 - std::fabs(2 * l - 1)) : 0;
    const double luma = 0.299 * x[0] + 0.587 * x[1] + 0.114 * x[2];
    EXPECT_NEAR(qv::Luma(c[0], c[1], c[2]), luma, 3e-7);
    ExpectNear(Apply(RGB2LCH, c), {luma, d, hue}, 3e-7, c);
    ExpectNear(Apply(RGB2HSB, c), {hue, s, high}, 3e-7, c);
    // Near white, lightness is rounded to a part of the room that is left.
    ExpectNear(Apply(RGB2HSL, c), {hue, sl, l}, 3e-7 + 1e-7 / std::max(1 - l, 1e-6), c);
    if (high > 1e-3) {
      const double nearGray = d > 1e-5 ? 3e-7 : 1e-4;
      ExpectNear(Apply(RGB2HSB_GLSL, c), {hue, s, high}, nearGray, c);
    }
    ExpectNear(Apply(RGB2Lab, c), TextbookLab(x), 2e-6, c);
    ExpectNear(Apply(HSB2RGB, c), FromHsb(x[0], x[1], x[2]), 1e-6, c);
    ExpectNear(Apply(HSB2RGB_GLSL, c), FromHsb(x[0], x[1], x[2]), 2e-6, c);
    const double width = x[1] * (1 - std::fabs(2 * x[2] - 1));
    Exact ofHsl = PureColor(x[0]);
    for (double& v : ofHsl) v = x[2] + width * (v - 0.5);
    ExpectNear(Apply(HSL2RGB, c), ofHsl, 1e-6, c);
    for (const float amount : {-1.0f, -0.3f, 0.0f, 0.4f, 3.0f}) {
      const double more = std::min(s * (1 + double(amount)), 1.0), bright = Curve(high, amount);
      ExpectNear(Apply(Saturation, c, amount), FromHsb(hue, more, high), 1e-6, c);
      ExpectNear(Apply(Brightness, c, amount), FromHsb(hue, s, bright), 1e-6, c);
      ExpectNear(Apply(SaturationBrightness, c, amount, -amount),
                 FromHsb(hue, more, Curve(high, -amount)), 1e-6, c);
      ExpectNear(Apply(HueSaturationBrightness, c, amount, amount, amount),
                 {amount + c[0] - std::floor(amount + c[0]), std::min((1 + amount) * x[1], 1.0),
                  Curve(x[2], amount)},
                 1e-6, c);
      // Away from the middle of the largest and the smallest, as far as the room allows.
      const double room = std::min({d / 2, low, 1 - high});
      const double stretch = amount < 0 || d == 0 ? amount : 2 * room / d * std::min(amount, 1.0f);
      Exact vivid = x;
      if (d > 0)
        for (double& v : vivid) v += (v - l) * stretch;
      ExpectNear(Apply(Vibrance, c, std::min(amount, 1.0f)), vivid, 1e-6, c);
      // Hue stays, and the sum of the components unless the largest would pass 1.
      const double part = s * (1 + std::min(amount, 1.0f) * (1 - s));
      const Exact n = FromHsb(hue, part, high);
      const double gain = d > 0 ? (x[0] + x[1] + x[2]) / (n[0] + n[1] + n[2]) : 1;
      ExpectNear(Apply(Vibrance2, c, std::min(amount, 1.0f)),
                 FromHsb(hue, part, std::min(1.0, high * gain)), 2e-6, c);
    }
    if (HasFatalFailure()) return;
  }
}

TEST(Color, ComesBack) {
  const struct {
    Conversion there, back;
    double tolerance;
  } pairs[] = {{RGB2LCH, LCH2RGB, 1e-6}, {RGB2HSB, HSB2RGB, 1e-6},
               {RGB2HSL, HSL2RGB, 1e-6}, {RGB2HSB_GLSL, HSB2RGB_GLSL, 2e-6},
               {RGB2XYZ, XYZ2RGB, 2e-6}, {RGB2Lab, Lab2RGB, 5e-6}};
  for (const auto& pair : pairs) {
    for (const Color c : Colors(0, 1))
      ExpectNear(Apply(pair.back, Apply(pair.there, c)), Widen(c), pair.tolerance, c);
  }
}

TEST(Color, KeepsLumaAndStaysInRange) {
  for (const Color lch : Colors(0, 1)) {
    const Color rgb = Apply(LCH2RGB, lch);
    for (const float c : rgb) ASSERT_TRUE(c > -1e-6f && c < 1 + 1e-6f) << Text(lch);
    const Color back = Apply(RGB2LCH, rgb);
    ASSERT_NEAR(back[0], lch[0], 1e-6) << Text(lch);
    ASSERT_LE(back[1], lch[1] + 1e-6) << Text(lch);
    const float turn = back[1] > 0.1f ? std::remainder(back[2] - lch[2], 1.0f) : 0;
    ASSERT_NEAR(turn, 0, 1e-5) << Text(lch);
  }
}

// Values of the definitions worked out by hand.
TEST(Color, HasTheseValues) {
  constexpr float kThird = 0.33333334f;
  EXPECT_EQ(Apply(RGB2LCH, {0.5f, 0.5f, 0.5f}), (Color{0.5f, 0, 0}));
  EXPECT_EQ(Apply(LCH2RGB, {0.25f, 0, 0.7f}), (Color{0.25f, 0.25f, 0.25f}));
  EXPECT_EQ(Apply(LCH2RGB, {1.5f, 0, 0.7f}), (Color{1.5f, 1.5f, 1.5f}));
  EXPECT_EQ(Apply(LCH2RGB, {0, 1, 0.3f}), (Color{0, 0, 0}));
  EXPECT_EQ(Apply(LCH2RGB, {-1, 1, 0.3f}), (Color{0, 0, 0}));
  EXPECT_EQ(Apply(LCH2RGB, {0.299f, 1, 1}), (Color{1, 0, 0}));
  EXPECT_EQ(Apply(RGB2HSB, {0.5f, 0.5f, 0.5f}), (Color{0, 0, 0.5f}));
  EXPECT_EQ(Apply(RGB2HSB, {0, 0, 0}), (Color{0, 0, 0}));
  EXPECT_EQ(Apply(RGB2HSB, {0, 0, 1}), (Color{0.6666667f, 1, 1}));
  EXPECT_EQ(Apply(RGB2HSB, {1, 0, 1}), (Color{-1 / 6.0f + 1, 1, 1}));
  EXPECT_EQ(Apply(HSB2RGB, {1, 1, 0.5f}), (Color{0.5f, 0, 0}));
  EXPECT_EQ(Apply(HSB2RGB, {kThird, 1, 1}), (Color{0, 1, 0}));
  EXPECT_EQ(Apply(HSL2RGB, {1, 1, 0.25f}), (Color{0.5f, 0, 0}));
  EXPECT_EQ(Apply(RGB2HSL, {1, 1, 1}), (Color{0, 0, 1}));
  // 0.6666667 * 6 is 4 in single precision.
  EXPECT_EQ(Apply(HSB2RGB_GLSL, {-1, 1, 0.5f}), (Color{0.5f, 0x1p-24f, 0}));
  EXPECT_EQ(Apply(Saturation, {1, 0.5f, 0.25f}, -1), (Color{1, 1, 1}));
  EXPECT_EQ(Apply(Saturation, {1, 0.5f, 0.25f}, 0), (Color{1, 0.5f, 0.25f}));
  EXPECT_EQ(Apply(Saturation, {1, 0.75f, 0.5f}, 9), (Color{1, 0.5f, 0}));
  EXPECT_EQ(Apply(Saturation, {2, 2, 2}, 9), (Color{2, 2, 2}));
  EXPECT_EQ(Apply(Brightness, {0.5f, 0.25f, 0}, 0), (Color{0.5f, 0.25f, 0}));
  EXPECT_EQ(Apply(Brightness, {0.5f, 0.25f, 0}, 0.5f),
            (Color{0.5f * (4 / 3.0f), 0.25f * (4 / 3.0f), 0}));
  EXPECT_EQ(Apply(Brightness, {2, 1, 0}, 0), (Color{1, 0.5f, 0}));
  EXPECT_EQ(Apply(Brightness, {0, -1, -2}, 0.5f), (Color{0, -1, -2}));
  EXPECT_EQ(Apply(SaturationBrightness, {0.5f, 0.25f, 0.25f}, 1, -0.5f), (Color{kThird, 0, 0}));
  EXPECT_EQ(Apply(HueSaturationBrightness, {0.75f, 0.75f, 0.5f}, 0.5f, 1, 0.5f),
            (Color{0.25f, 1, 0.5f / 0.75f}));
  EXPECT_EQ(Apply(Vibrance, {0.25f, 0.75f, 0.5f}, 1), (Color{0, 1, 0.5f}));
  EXPECT_EQ(Apply(Vibrance, {0.25f, 0.75f, 0.5f}, -1), (Color{0.5f, 0.5f, 0.5f}));
  EXPECT_EQ(Apply(Vibrance2, {0.5f, 0.25f, 0.25f}, -1), (Color{0.4f, 0.3f, 0.3f}));
  EXPECT_EQ(Apply(Vibrance, {2, 2, 2}, 1), (Color{2, 2, 2}));
  EXPECT_EQ(Apply(Vibrance2, {0, 0, 0}, 1), (Color{0, 0, 0}));
  ExpectNear(Apply(RGB2Lab, {1, 1, 1}), {1, 0.5, 0.5}, 1e-6, {});
  const Color gray = Apply(Lab2RGB, {0.5f, 0.5f, 0.5f});
  // L* = 50 is 0.18419 of light.
  ExpectNear(gray, {0.46633, 0.46633, 0.46633}, 1e-4, {});
}

TEST(Color, IsDefinedForAnyFloat) {
  constexpr float kInf = std::numeric_limits<float>::infinity(), kNan = NAN;
  const float hostile[] = {kNan,    -kNan,  kInf,  -kInf, FLT_MAX, -FLT_MAX, 3e9f, -3e9f,
                           FLT_MIN, 1e-45f, -0.0f, 0,     0.5f,    1,        2};
  const Conversion conversions[] = {RGB2LCH,      LCH2RGB,      RGB2HSB, HSB2RGB, RGB2HSL, HSL2RGB,
                                    RGB2HSB_GLSL, HSB2RGB_GLSL, RGB2XYZ, XYZ2RGB, RGB2Lab, Lab2RGB};
  float sum = 0;
  for (const float x : hostile) {
    for (const float y : hostile) {
      for (const float z : hostile) {
        const Color c = {x, y, z};
        for (const Conversion conversion : conversions) sum += Apply(conversion, c)[0];
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

// Laws of radiation that the formula isn't made from.
TEST(Color, RadiatesLikeABlackBody) {
  constexpr double kBoltzmann = 1.3806504e-23, kLight = 299792458.0;
  for (const double temperature : {300.0, 2856.0, 6504.0, 20000.0}) {
    // Wien: the peak. Stefan and Boltzmann: the total. Rayleigh and Jeans: long waves.
    double peak = 0, most = 0, total = 0;
    const double step = 1e-4;
    for (int i = 0; i < 115000; i++) {
      const double t = 1e-5 * std::exp(step * i);
      const double radiance = BlackBodyRadiation(t / temperature, temperature);
      if (radiance > most) most = radiance, peak = t;
      total += radiance * step * t / temperature;
    }
    EXPECT_NEAR(peak / 2.8977685e-3, 1, 2e-4);
    EXPECT_NEAR(total / (5.6704e-8 * std::pow(temperature, 4) / std::numbers::pi), 1, 1e-3);
    const double wavelength = 1000 / temperature;
    const double classical = 2 * kLight * kBoltzmann * temperature / std::pow(wavelength, 4);
    EXPECT_NEAR(BlackBodyRadiation(wavelength, temperature) / classical, 1, 1e-4);
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

TEST(Color, NoiseIsUniform) {
  constexpr int kCount = 65536;
  EXPECT_THAT(std::vector(gRandom, gRandom + 8),
              testing::ElementsAre(56880, 6955, 5945, 27744, 21540, 5224, 53899, 41390));
  std::array<double, 256> high = {}, low = {};
  double sum = 0, squares = 0;
  // Neighbours in a row, a column and on the diagonals of the tile.
  const int lags[] = {1, 2, 3, 255, 256, 257, 512};
  std::array<double, std::size(lags)> products = {};
  for (int i = 0; i < kCount; i++) {
    const double v = gRandom[i] - 32767.5;
    sum += v;
    squares += v * v;
    high[gRandom[i] >> 8]++;
    low[gRandom[i] & 255]++;
    for (size_t k = 0; k < std::size(lags); k++)
      products[k] += v * (gRandom[(i + lags[k]) % kCount] - 32767.5);
  }
  // Each bound is four standard deviations of even chance.
  const double variance = 65536.0 * 65536.0 / 12;
  EXPECT_NEAR(sum / kCount, 0, 4 * std::sqrt(variance / kCount));
  EXPECT_NEAR(squares / kCount / variance, 1, 4 * std::sqrt(0.8 / kCount));
  for (const double product : products) EXPECT_NEAR(product / squares, 0, 4 / std::sqrt(kCount));
  for (const auto& counts : {high, low}) {
    double chiSquare = 0;
    for (const double count : counts) chiSquare += (count - 256) * (count - 256) / 256;
    EXPECT_NEAR(chiSquare, 255, 4 * std::sqrt(2 * 255));
  }
}

}  // namespace
