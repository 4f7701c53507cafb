// SPDX-License-Identifier: Apache-2.0
#include "BlendModes.h"

#include <algorithm>
#include <iterator>

#include "ColorMath.h"

namespace {

constexpr unsigned kForwardBit = 0x20000000;

float Smaller(float a, float b) { return a < b ? a : b; }
float Larger(float a, float b) { return a > b ? a : b; }

// A mode of each colour sample alone.
template <auto formula>
void EachSample(const qv::Strip& a, const qv::Strip& b, qv::Strip& r, int colors, int pixels) {
  const int count = qv::WholeVectors(pixels);
  for (int c = 0; c < colors; c++) {
    const float* __restrict upper = a[c];
    const float* __restrict lower = b[c];
    float* __restrict result = r[c];
    for (int i = 0; i < count; i++) result[i] = formula(upper[i], lower[i]);
  }
}

// A mode of the whole colour, made of the first three samples.
template <auto formula>
void WholeColor(const qv::Strip& a, const qv::Strip& b, qv::Strip& r, int, int pixels) {
  const int count = qv::WholeVectors(pixels);
  for (int i = 0; i < count; i++) {
    const qv::Color3 result =
        formula(qv::Color3{a[0][i], a[1][i], a[2][i]}, qv::Color3{b[0][i], b[1][i], b[2][i]});
    r[0][i] = result.x;
    r[1][i] = result.y;
    r[2][i] = result.z;
  }
}

// The second colour of a mode of luma, chroma and hue, changed by the first.
template <auto change>
void LumaChromaHue(const qv::Strip& a, const qv::Strip& b, qv::Strip& r, int colors, int pixels) {
  WholeColor<[](qv::Color3 upper, qv::Color3 lower) {
    return qv::LchToRgb(change(qv::RgbToLch(upper), qv::RgbToLch(lower)));
  }>(a, b, r, colors, pixels);
}

float LeftToRightLuma(qv::Color3 c) { return 0.299f * c.x + 0.587f * c.y + 0.114f * c.z; }

qv::Color3 Choose(bool takeA, qv::Color3 a, qv::Color3 b) {
  return {takeA ? a.x : b.x, takeA ? a.y : b.y, takeA ? a.z : b.z};
}

// ---- Formulas of some length; the others stand in the table

float Overlay(float a, float b) { return b < 0.5f ? b * (a + a) : 2.0f * ((b + a) - b * a) - 1.0f; }

float HardLight(float a, float b) {
  return a < 0.5f ? (a + a) * b : 2.0f * ((a + b) - a * b) - 1.0f;
}

float LinearLight(float a, float b) {
  const float sum = a + a + b - 1.0f;
  return Smaller(Larger(sum, 0.0f), 1.0f);
}

float Divide(float a, float b) {
  const float limit = b > 0.0f ? 1.0f : 0.0f;
  return a > 0.0f ? Smaller(b / a, 1.0f) : limit;
}

float ColorBurn(float a, float b) {
  const float limit = b >= 1.0f ? 1.0f : 0.0f;
  return a > 0.0f ? Larger((b - 1.0f) / a + 1.0f, 0.0f) : limit;
}

float ColorDodge(float a, float b) {
  const float limit = b > 0.0f ? 1.0f : 0.0f;
  return a < 1.0f ? Smaller(b / (1.0f - a), 1.0f) : limit;
}

float VividLight(float a, float b) {
  const bool burns = a < 0.5f;
  const float quotient = (burns ? b - 1.0f : b) / (burns ? a + a : 2.0f - (a + a));
  const float light = burns ? Larger(quotient + 1.0f, 0.0f) : Smaller(quotient, 1.0f);
  return a <= 0.0f ? 0.0f : (a < 1.0f ? light : 1.0f);
}

float PinLight(float a, float b) { return a < 0.5f ? Smaller(a + a, b) : Larger(a + a - 1.0f, b); }

// ---- The table: a and b are samples or colours of the upper and the lower layer. (GCC takes a
// bare > for the end of the template's arguments.)

using Float = float;
using Color = qv::Color3;

struct Mode {
  QVBlendMode code;
  qv::BlendStrip blend;
};

constexpr Mode kModes[] = {
    {kQVBlendModeNormal, EachSample<[](Float a, Float) { return a; }>},
    {kQVBlendModeMultiply, EachSample<[](Float a, Float b) { return a * b; }>},
    {kQVBlendModeDarken, EachSample<Smaller>},
    {kQVBlendModeLighten, EachSample<Larger>},
    {kQVBlendModeDifference, EachSample<[](Float a, Float b) { return (a > b) ? a - b : b - a; }>},
    {kQVBlendModeScreen, EachSample<[](Float a, Float b) { return (a + b) - a * b; }>},
    {kQVBlendModeOverlay, EachSample<Overlay>},
    {kQVBlendModeSoftLight,
     EachSample<[](Float a, Float b) { return ((1.0f - b) * (a + a) + b) * b; }>},
    {kQVBlendModeHardLight, EachSample<HardLight>},
    {kQVBlendModeExclusion, EachSample<[](Float a, Float b) { return a * -2.0f * b + (a + b); }>},
    {kQVBlendModeHue,
     LumaChromaHue<[](Color a, Color b) { return Color{b.x, a.y <= 0.0f ? 0.0f : b.y, a.z}; }>},
    {kQVBlendModeSaturation,
     LumaChromaHue<[](Color a, Color b) { return Color{b.x, (b.y > 0.0f) ? a.y : b.y, b.z}; }>},
    {kQVBlendModeColor, LumaChromaHue<[](Color a, Color b) { return Color{b.x, a.y, a.z}; }>},
    {kQVBlendModeLuminosity, LumaChromaHue<[](Color a, Color b) { return Color{a.x, b.y, b.z}; }>},
    {kQVBlendModeLinearBurn,
     EachSample<[](Float a, Float b) { return Larger(a + b - 1.0f, 0.0f); }>},
    {kQVBlendModeLinearDodge, EachSample<[](Float a, Float b) { return Smaller(a + b, 1.0f); }>},
    {kQVBlendModeLinearLight, EachSample<LinearLight>},
    {kQVBlendModeHardMix,
     EachSample<[](Float a, Float b) { return ((a + b > 1.0f) | (b >= 1.0f)) ? 1.0f : 0.0f; }>},
    {kQVBlendModeSubtract, EachSample<[](Float a, Float b) { return Larger(b - a, 0.0f); }>},
    {kQVBlendModeDivide, EachSample<Divide>},
    {kQVBlendModeLighterColor, WholeColor<[](Color a, Color b) {
  return Choose((LeftToRightLuma(a) > LeftToRightLuma(b)), a, b);
}>},
    {kQVBlendModeDarkerColor, WholeColor<[](Color a, Color b) {
  return Choose(LeftToRightLuma(a) < LeftToRightLuma(b), a, b);
}>},
    {kQVBlendModeColorBurn, EachSample<ColorBurn>},
    {kQVBlendModeColorDodge, EachSample<ColorDodge>},
    {kQVBlendModeVividLight, EachSample<VividLight>},
    {kQVBlendModePinLight, EachSample<PinLight>},
};

constexpr const Mode* Find(QVBlendMode mode) {
  return std::ranges::find(kModes, mode, &Mode::code);
}

bool IsOfWholeColor(QVBlendMode mode) {
  return mode == kQVBlendModeHue || mode == kQVBlendModeSaturation || mode == kQVBlendModeColor ||
         mode == kQVBlendModeLuminosity || mode == kQVBlendModeLighterColor ||
         mode == kQVBlendModeDarkerColor;
}

// Each mode of the list has its row.
#define QV_HAS_ROW(constant, code, name) \
  static_assert(Find(kQVBlendMode##constant) != std::end(kModes));
QV_BLEND_MODES(QV_HAS_ROW)
#undef QV_HAS_ROW

QVBlendMode WithBits(QVBlendMode mode, unsigned cleared, unsigned set) {
  return static_cast<QVBlendMode>((static_cast<unsigned>(mode) & ~cleared) | set);
}

}  // namespace

qv::BlendStrip qv::FindBlendStrip(QVBlendMode mode) {
  const Mode* found = Find(mode);
  return found == std::end(kModes) ? nullptr : found->blend;
}

qv::BlendStrip qv::FindSampleBlendStrip(QVBlendMode mode) {
  return IsOfWholeColor(mode) ? nullptr : FindBlendStrip(mode);
}

QVBlendMode QVEffectsGetReverseBlendMode(QVBlendMode mode) {
  return WithBits(mode, kForwardBit, 0);
}

QVBlendMode GetNonReverseBlendMode(QVBlendMode mode) { return WithBits(mode, 0, kForwardBit); }

bool IsReverseBlendMode(QVBlendMode mode) {
  return (static_cast<unsigned>(mode) & kForwardBit) == 0;
}
