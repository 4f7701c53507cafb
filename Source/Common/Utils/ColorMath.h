// SPDX-License-Identifier: Apache-2.0
// The formulas of colour: conversions, and changes of saturation, brightness and vibrance. What
// they mean is told in QVEffectsColor.h. They are pure and free of tables and float-to-integer
// conversions: any input, NaN included, is defined. All but XYZ and Lab, which call pow, are free
// of branches too: a loop over separate rows of components is vectorised from x86-64-v2 on.
#pragma once

#include <algorithm>
#include <cmath>

namespace qv {

/// Three components in the order of their form: R, G, B; hue, saturation, brightness; L, a, b; ...
struct Color3 {
  float x, y, z;
};

inline Color3 ColorAt(const float* c) { return {c[0], c[1], c[2]}; }

/// Luma by Rec. 601, of floats or vectors of them.
template <class Value>
Value Luma(Value r, Value g, Value b) {
  return b * 0.114f + (g * 0.587f + r * 0.299f);
}

// Which component is the largest or the smallest decides about hue. Of equal ones the first is the
// largest and the last the smallest. These return the value of just that one: zeros keep their
// sign.

inline float Largest(Color3 c) { return std::max(std::max(c.x, c.y), c.z); }
inline float Smallest(Color3 c) { return std::min(c.z, std::min(c.y, c.x)); }

/// The order of the components. Each condition comes from few comparisons: with AVX-512, joining
/// comparisons costs as much as making them.
struct Order {
  float upper, lower, blue;  // The upper and the lower one of red and green.
  bool greenOverRed, blueOverUpper, blueOverLower;

  explicit Order(Color3 c)
      : upper(std::max(c.x, c.y)),
        lower(std::min(c.y, c.x)),
        blue(c.z),
        greenOverRed(c.y > c.x),
        blueOverUpper(blue > upper),
        blueOverLower(blue > lower) {}

  bool RedIsLargest() const { return !greenOverRed & !blueOverUpper; }
  bool GreenIsLargest() const { return greenOverRed & !blueOverUpper; }
  bool BlueIsLargest() const { return blueOverUpper; }
  bool RedIsSmallest() const { return greenOverRed & blueOverLower; }
  bool GreenIsSmallest() const { return !greenOverRed & blueOverLower; }
  bool BlueIsSmallest() const { return !blueOverLower; }

  /// Whether the middle one comes before the largest in the circle of red, green and blue, rather
  /// than after it. Each exchange of two neighbours in the order turns this round.
  bool RunsBackward() const { return greenOverRed ^ blueOverUpper ^ blueOverLower; }

  float Middle() const { return blueOverUpper ? upper : (blueOverLower ? blue : lower); }

  /// The value for the component that is the largest.
  float OfLargest(float ofRed, float ofGreen, float ofBlue) const {
    return blueOverUpper ? ofBlue : (greenOverRed ? ofGreen : ofRed);
  }

  /// A value for each component by its rank.
  Color3 Ranked(float largest, float middle, float smallest) const {
    return {RedIsLargest() ? largest : (RedIsSmallest() ? smallest : middle),
            GreenIsLargest() ? largest : (GreenIsSmallest() ? smallest : middle),
            BlueIsLargest() ? largest : (BlueIsSmallest() ? smallest : middle)};
  }
};

// ---- Luma, chroma, hue

inline Color3 RgbToLch(Color3 rgb) {
  const Order o(rgb);
  const float smallest = Smallest(rgb);
  const float chroma = Largest(rgb) - smallest;
  const float t = (o.Middle() - smallest) / chroma;
  // The largest component names a corner of the circle; the middle one tells how far it is to the
  // next corner (forward) or to the one before (backward).
  const bool backward = o.RunsBackward();
  const float corner = o.OfLargest(backward ? 6.0f : 0.0f, 2.0f, 4.0f);
  const float hue = (corner + (backward ? -t : t)) / 6.0f;
  return {Luma(rgb.x, rgb.y, rgb.z), chroma, chroma > 0.0f ? hue : 0.0f};
}

inline Color3 LchToRgb(Color3 lch) {
  const float luma = lch.x, chroma = lch.y, h = lch.z * 6.0f;
  const float f = h - std::trunc(h);
  const float rising = f * chroma, falling = (1.0f - f) * chroma;
  // A chain of single comparisons, as in Order. What lies outside 1 to 6 is as between 0 and 1.
  float r = h >= 1.0f ? falling : chroma;
  r = h >= 2.0f ? 0.0f : r;
  r = h >= 4.0f ? rising : r;
  r = h >= 5.0f ? chroma : r;
  float g = h >= 1.0f ? chroma : rising;
  g = h >= 3.0f ? falling : g;
  g = h >= 4.0f ? 0.0f : g;
  g = h >= 6.0f ? rising : g;
  float b = h >= 2.0f ? rising : 0.0f;
  b = h >= 3.0f ? chroma : b;
  b = h >= 5.0f ? falling : b;
  b = h >= 6.0f ? 0.0f : b;

  const float pure = Luma(r, g, b);
  const bool black = luma <= 0.0f, darken = pure >= luma;
  const float lift = luma - pure;
  // Chroma gives way, but for gray with luma above 1: there the steps would divide by 0.
  const bool over = (lift + chroma > 1.0f) & (chroma != pure);
  const float ratio = (darken ? luma : 1.0f - luma) / (darken ? pure : chroma - pure);
  const float lightScale = over ? ratio : 1.0f;
  const float lightOffset = over ? 1.0f - chroma * ratio : lift;
  const float scale = black ? 0.0f : (darken ? ratio : lightScale);
  const float offset = (!darken & !black) ? lightOffset : 0.0f;
  return {r * scale + offset, g * scale + offset, b * scale + offset};
}

// ---- Hue, saturation and brightness or lightness

/// Hue from the largest component and the difference of the two others; d is largest - smallest.
inline float HueOf(Color3 rgb, float d) {
  const Order o(rgb);
  const float corner = o.OfLargest(0.0f, 0.33333334f, 0.6666667f);
  const float difference = o.OfLargest(rgb.y - rgb.z, rgb.z - rgb.x, rgb.x - rgb.y);
  const float hue = corner + difference / (d > 0.0f ? 6.0f * d : 1.0f);
  return hue < 0.0f ? hue + 1.0f : hue;
}

/// The RGB colour of a hue: one component is `top`, one `low`, and one `low` plus a part of `span`.
inline Color3 ColorOfHue(float hue, float top, float low, float span) {
  const float h = hue * 6.0f;
  // 2 * pair is the even one of trunc(h) and trunc(h) + 1, found without sums that would round
  // where h is huge. f lies from -1 up to 1, unless the hue is below -1/6.
  const float pair = std::ceil(std::trunc(h) * 0.5f);
  const float f = h - 2.0f * pair;
  // Modulo 3, right up to hues of a million.
  const float corner = pair - 3.0f * std::floor(pair * 0.33333334f);
  const float side = span * std::abs(f) + low;
  const float next = f < 0.0f ? low : side;
  const float prev = f < 0.0f ? side : low;
  const bool red = corner == 0.0f, green = corner == 1.0f;
  return {red ? top : (green ? prev : next), red ? next : (green ? top : prev),
          red ? prev : (green ? next : top)};
}

inline Color3 RgbToHsb(Color3 rgb) {
  const float largest = Largest(rgb);
  const float d = largest - Smallest(rgb);
  return {HueOf(rgb, d), largest <= 0.0f ? 0.0f : d / largest, largest};
}

inline Color3 HsbToRgb(Color3 hsb) {
  const float low = (1.0f - hsb.y) * hsb.z;
  return ColorOfHue(hsb.x, hsb.z, low, hsb.z - low);
}

inline Color3 RgbToHsl(Color3 rgb) {
  const float largest = Largest(rgb), smallest = Smallest(rgb);
  const float d = largest - smallest;
  const float lightness = (largest + smallest) * 0.5f;
  const double room = 1.0 - std::abs(2.0 * static_cast<double>(lightness) - 1.0);
  const auto saturation = static_cast<float>(static_cast<double>(d) / room);
  const bool none = (lightness >= 1.0f) | (lightness <= 0.0f);
  return {HueOf(rgb, d), none ? 0.0f : saturation, lightness};
}

inline Color3 HslToRgb(Color3 hsl) {
  const auto lightness = static_cast<double>(hsl.z), saturation = static_cast<double>(hsl.y);
  const double room = 1.0 - std::abs(2.0 * lightness - 1.0);
  const auto low = static_cast<float>(lightness + saturation * (room * -0.5));
  const float top = 2.0f * hsl.z - low;
  return ColorOfHue(hsl.x, top, low, top - low);
}

inline Color3 RgbToHsbGlsl(Color3 rgb) {
  const float a = std::min(rgb.y, rgb.z), c = std::max(rgb.y, rgb.z);
  const float e = std::min(rgb.x, c), x = std::max(c, rgb.x);
  const float d = x - std::min(a, e);
  const bool blueOverGreen = rgb.z > rgb.y;
  const float k =
      c > rgb.x ? (blueOverGreen ? 0.6666667f : -0.33333334f) : (blueOverGreen ? -1.0f : 0.0f);
  return {std::abs((e - a) / (6.0f * d + 1e-10f) + k), d / (1e-10f + x), x};
}

inline Color3 HsbToRgbGlsl(Color3 hsb) {
  const auto component = [hsb](float offset) {
    const float u = hsb.x + offset;
    const double turn = static_cast<double>(u) - static_cast<double>(std::floor(u));
    const auto p = static_cast<float>(std::abs(turn * 6.0 - 3.0));
    const float q = std::min(std::max(p - 1.0f, 0.0f), 1.0f);
    return (q * hsb.y + (1.0f - hsb.y)) * hsb.z;
  };
  return {component(1.0f), component(0.6666667f), component(0.33333334f)};
}

// ---- XYZ and Lab

inline float DecodeGamma(float c) {
  if (!(c > 0.04045f)) return c * 0.07739938f;
  const float base = (c + 0.055f) * 0.94786733f;
  return static_cast<float>(std::pow(static_cast<double>(base), 2.4000000953674316));
}

inline float EncodeGamma(float c) {
  if (!(c > 0.0031308f)) return c * 12.92f;
  const double power = std::pow(static_cast<double>(c), 0.4166666567325592);
  return static_cast<float>(power * 1.0549999475479126 - 0.054999999701976776);
}

inline Color3 RgbToXyz(Color3 rgb) {
  const float r = DecodeGamma(rgb.x), g = DecodeGamma(rgb.y), b = DecodeGamma(rgb.z);
  return {0.032516852f * b + (0.14020835f * g + 0.8272748f * r),
          8.57e-5f * b + (0.7118741f * g + 0.2880402f * r), b};
}

inline Color3 XyzToRgb(Color3 xyz) {
  const float r = -0.042177994f * xyz.z + (-0.25560752f * xyz.y + 1.2977855f * xyz.x);
  const float g = 0.016945772f * xyz.z + (1.5081673f * xyz.y + -0.52511305f * xyz.x);
  return {EncodeGamma(r), EncodeGamma(g), EncodeGamma(xyz.z)};
}

/// The cube root that Lab is made of, a straight line near black.
inline float LabRoot(float t) {
  if (!(t > 0.008856452f)) return t * 7.787037f + 0.13793103f;
  return static_cast<float>(std::pow(static_cast<double>(t), 0.3333333432674408));
}

inline float LabCube(float t) {
  return t > 0.20689656f ? t * t * t : (t - 0.13793103f) * 0.12841855f;
}

inline Color3 RgbToLab(Color3 rgb) {
  const Color3 xyz = RgbToXyz(rgb);
  const float fx = LabRoot(xyz.x), fy = LabRoot(xyz.y), fz = LabRoot(xyz.z);
  const float u = fx - fy, v = fy - fz;
  return {1.16f * fy - 0.16f, u * (u > 0.0f ? 1.721703290939331f : 1.3390840291976929f) + 0.5f,
          v * (v > 0.0f ? 0.5800192356109619f : 0.5804493427276611f) + 0.5f};
}

inline Color3 LabToRgb(Color3 lab) {
  const float fy = (lab.x * 100.0f + 16.0f) * 0.00862069f;
  const float u = lab.y - 0.5f, v = lab.z - 0.5f;
  const float fx = u * (u > 0.0f ? 0.5808202028274536f : 0.7467790842056274f) + fy;
  const float fz = fy - v * (v > 0.0f ? 1.7240808010101318f : 1.7228032350540161f);
  return XyzToRgb({LabCube(fx), LabCube(fy), LabCube(fz)});
}

// ---- Changes

/// What the distances to the largest component are multiplied with. Held where the smallest becomes
/// 0. Meaningless, and to be ignored, unless largest > smallest.
inline float SaturationFactor(float largest, float smallest, float amount) {
  return std::min(largest / (largest - smallest), amount + 1.0f);
}

inline Color3 WithSaturation(Color3 rgb, float amount) {
  const float largest = Largest(rgb), smallest = Smallest(rgb);
  const float k = SaturationFactor(largest, smallest, amount);
  const bool colored = largest > smallest;
  return {colored ? (rgb.x - largest) * k + largest : rgb.x,
          colored ? (rgb.y - largest) * k + largest : rgb.y,
          colored ? (rgb.z - largest) * k + largest : rgb.z};
}

/// The curvature s of brightness: v becomes v / ((1 - s) * v + s).
inline float BrightnessCurvature(float amount) {
  const float t = amount + amount;
  return t > 0.0f ? 1.0f / (t + 1.0f) : 1.0f - t;
}

inline float OnBrightnessCurve(float v, float s) { return v / ((1.0f - s) * v + s); }

/// What a colour with this largest component is multiplied with.
inline float BrightnessFactor(float largest, float amount) {
  const float bright = OnBrightnessCurve(largest, BrightnessCurvature(amount));
  const float k = std::min(1.0f / largest, bright * (1.0f / largest));
  return largest > 0.0f ? k : 1.0f;
}

inline Color3 WithBrightness(Color3 rgb, float amount) {
  const float k = BrightnessFactor(Largest(rgb), amount);
  return {rgb.x * k, rgb.y * k, rgb.z * k};
}

inline Color3 WithSaturationBrightness(Color3 rgb, float saturation, float brightness) {
  const float factor = BrightnessFactor(Largest(rgb), brightness);
  const Color3 c = WithSaturation(rgb, saturation);
  return {c.x * factor, c.y * factor, c.z * factor};
}

inline Color3 WithHueSaturationBrightness(Color3 hsb, float hue, float saturation,
                                          float brightness) {
  const float x = hue + hsb.x;
  return {x - std::floor(x), std::min((saturation + 1.0f) * hsb.y, 1.0f),
          OnBrightnessCurve(hsb.z, BrightnessCurvature(brightness))};
}

inline Color3 WithVibrance(Color3 rgb, float amount) {
  const Order o(rgb);
  const float largest = Largest(rgb), smallest = Smallest(rgb);
  const bool gray = smallest >= largest;

  const float center = (largest + smallest) * 0.5f;
  const Color3 pale = {rgb.x + (rgb.x - center) * amount, rgb.y + (rgb.y - center) * amount,
                       rgb.z + (rgb.z - center) * amount};

  const float d = largest - smallest;
  const float e = std::min(0.5f * d, std::min(smallest, 1.0f - largest)) * amount;
  const float top = largest + e, low = smallest - e;
  const Color3 vivid = o.Ranked(top, top - (largest - o.Middle()) * (top - low) / d, low);

  const bool less = amount < 0.0f;
  return {gray ? rgb.x : (less ? pale.x : vivid.x), gray ? rgb.y : (less ? pale.y : vivid.y),
          gray ? rgb.z : (less ? pale.z : vivid.z)};
}

inline Color3 WithVibrance2(Color3 rgb, float amount) {
  const float largest = Largest(rgb);
  const float d = largest - Smallest(rgb);
  const float k = amount + 1.0f - d / largest * amount;
  const Color3 n = {largest - (largest - rgb.x) * k, largest - (largest - rgb.y) * k,
                    largest - (largest - rgb.z) * k};
  const float s = std::min(1.0f / Largest(n), (rgb.x + rgb.y + rgb.z) / (n.x + n.y + n.z));
  const bool same = (amount == 0.0f) | (d <= 0.0f);
  return {same ? rgb.x : n.x * s, same ? rgb.y : n.y * s, same ? rgb.z : n.z * s};
}

// ---- Luma and chroma differences (QVEffectsConvert.h tells of them)

/// Luma and the two chroma differences, which are 0.5 for grays, by the matrix of JPEG.
inline Color3 RgbToYcc(Color3 rgb) {
  return {Luma(rgb.x, rgb.y, rgb.z),
          rgb.z * 0.5f + (rgb.y * -0.331264f + rgb.x * -0.168736f) + 0.5f,
          rgb.z * -0.081312f + (rgb.y * -0.418688f + rgb.x * 0.5f) + 0.5f};
}

/// Held to 0 to 1; NaN stays.
inline float HeldToUnit(float v) { return v < 0.0f ? 0.0f : (v > 1.0f ? 1.0f : v); }

inline Color3 YccToRgb(Color3 ycc) {
  const float cb = ycc.y - 0.5f, cr = ycc.z - 0.5f;
  return {HeldToUnit(cr * 1.402f + ycc.x), HeldToUnit(cr * -0.714136f + (cb * -0.344136f + ycc.x)),
          HeldToUnit(cb * 1.772f + ycc.x)};
}

// ---- Zones of colour

inline constexpr int kZones = 6;

/// How much of red, yellow, green, cyan, blue and magenta a colour holds beside gray: at most two
/// of them are above 0.
struct Zones {
  float weights[kZones];
  float gray;

  explicit Zones(Color3 rgb) : gray(std::min(std::min(rgb.x, rgb.y), rgb.z)) {
    const float r = rgb.x - gray, g = rgb.y - gray, b = rgb.z - gray;
    const float yellow = std::min(g, r), cyan = std::min(b, g), magenta = std::min(r, b);
    weights[0] = r - std::max(yellow, magenta);
    weights[1] = yellow;
    weights[2] = g - std::max(cyan, yellow);
    weights[3] = cyan;
    weights[4] = b - std::max(magenta, cyan);
    weights[5] = magenta;
  }

  float Weighted(const float* by) const {
    float sum = by[0] * weights[0];
    for (int i = 1; i < kZones; i++) sum = sum + by[i] * weights[i];
    return sum;
  }
};

}  // namespace qv
