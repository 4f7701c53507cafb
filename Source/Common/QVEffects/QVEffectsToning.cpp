// SPDX-License-Identifier: Apache-2.0
// Toning: colours that are chosen take the place of the picture's own, driven by its luma.
#include <QVEffects/QVEffectsToning.h>

#include "Utils/ColorStrips.h"
#include "Utils/QVEffectsUtils.h"
#include "Utils/ToneCurves.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsToning";
constexpr const char* kColorizeSource = "Source/Common/QVEffects/QVEffectsColorize";

using qv::Color3;
using qv::Stretch;
using qv::Strip;

// ---- Toner

auto Toned(qv::Tone tone, float amount) {
  return [=](Strip& strip, Stretch at) {
    const float ofPixel = 1.0f - amount, ofTone = amount * at.max;
    const int count = qv::WholeVectors(at.pixels);
    float* __restrict x = strip[0];
    float* __restrict y = strip[1];
    float* __restrict z = strip[2];
    for (int i = 0; i < count; i++) {
      const auto [strength, white] = tone.At(qv::Luma(x[i], y[i], z[i]) * at.toUnit);
      x[i] = x[i] * ofPixel + (tone.color.x * strength + white) * ofTone;
      y[i] = y[i] * ofPixel + (tone.color.y * strength + white) * ofTone;
      z[i] = z[i] * ofPixel + (tone.color.z * strength + white) * ofTone;
    }
  };
}

// ---- Gradients

struct Gradient {
  const float* shadowColor;
  const float* highlightColor;
  float balance;
  float shadowAmount, highlightAmount;
  QVBlendMode mode;
};

// Calls f with the curve that the balance bends luma along.
template <class F>
void WithBalance(float balance, F&& f) {
  const float p = 2.0f * balance - 1.0f;
  p <= 0.0f ? f(qv::HangingCurve(p)) : f(qv::RisingCurve(p));
}

// The gradient in place of the picture.
template <class Curve>
auto DirectGradient(const Gradient& gradient, Curve curve) {
  return [shadow = qv::ColorAt(gradient.shadowColor),
          highlight = qv::ColorAt(gradient.highlightColor), curve](Strip& strip, Stretch at) {
    const int count = qv::WholeVectors(at.pixels);
    float* __restrict x = strip[0];
    float* __restrict y = strip[1];
    float* __restrict z = strip[2];
    for (int i = 0; i < count; i++) {
      const float light = curve(qv::Luma(x[i], y[i], z[i]) * at.toUnit) * at.max;
      const float dark = at.max - light;
      x[i] = shadow.x * dark + highlight.x * light;
      y[i] = shadow.y * dark + highlight.y * light;
      z[i] = shadow.z * dark + highlight.z * light;
    }
  };
}

struct ColorOver : qv::ColorsOver {
  ColorOver(qv::BlendStrip aBlend, const float* color, float amount) : ColorsOver(aBlend) {
    for (int c = 0; c < 3; c++) std::ranges::fill(top.planes[c], color[c]);
    std::ranges::fill(opacity, amount);
  }

  void operator()(Strip& strip, Stretch at) {
    Begin(strip, at);
    End(strip, at);
  }
};

template <class Curve>
struct GradientOver : qv::ColorsOver {
  Gradient gradient;
  Curve curve;

  GradientOver(qv::BlendStrip aBlend, const Gradient& aGradient, Curve aCurve)
      : ColorsOver(aBlend), gradient(aGradient), curve(aCurve) {}

  void operator()(Strip& strip, Stretch at) {
    Begin(strip, at);
    const int count = qv::WholeVectors(at.pixels);
    // Copies, so that the loops know them apart from what they write.
    const Curve bend = curve;
    const float ofLight = gradient.highlightAmount, ofDark = gradient.shadowAmount;
    alignas(64) float light[qv::kStripPixels];
    for (int i = 0; i < count; i++) {
      light[i] = bend(qv::Luma(base[0][i], base[1][i], base[2][i]));
    }
    for (int i = 0; i < count; i++) {
      opacity[i] = light[i] * ofLight + (1.0f - light[i]) * ofDark;
    }
    for (int c = 0; c < 3; c++) {
      const float shadow = gradient.shadowColor[c], highlight = gradient.highlightColor[c];
      float* __restrict color = top[c];
      for (int i = 0; i < count; i++) color[i] = shadow * (1.0f - light[i]) + highlight * light[i];
    }
    End(strip, at);
  }
};

// ---- Calls

template <class T, class Stage>
void Walk(__QVImage* src, __QVImage* dst, VRect rect, Stage stage) {
  qv::WalkColors<T>(kSource, src, dst, rect, qv::WithTransparency(dst), stage);
}

template <class T>
int GradientMap(__QVImage* src, __QVImage* dst, VRect rect, const Gradient& g) {
  const qv::BlendStrip blend = qv::FindBlendStrip(g.mode);
  if (!blend) return kQVStatusBadArgument;
  if (!qv::CanWalkColors(src, dst)) return kQVStatusUnsupported;
  if (g.shadowAmount >= 1.0f && g.highlightAmount >= 1.0f && g.mode == kQVBlendModeNormal) {
    WithBalance(g.balance, [&](auto curve) { Walk<T>(src, dst, rect, DirectGradient(g, curve)); });
  } else if (g.shadowColor == g.highlightColor && g.shadowAmount == g.highlightAmount) {
    Walk<T>(src, dst, rect, ColorOver(blend, g.shadowColor, g.shadowAmount));
  } else {
    WithBalance(g.balance,
                [&](auto curve) { Walk<T>(src, dst, rect, GradientOver(blend, g, curve)); });
  }
  return kQVStatusSuccess;
}

uchar Solarized(uchar s) { return static_cast<uchar>(s >= 128 ? 255 - s : s); }
ushort Solarized(ushort s) { return static_cast<ushort>(s >= 32768 ? 65535 - s : s); }
float Solarized(float s) { return s > 0.5f ? 1.0f - s : s; }

}  // namespace

int QVEffectsColorize(__QVImage* src, __QVImage* dst, QVRect rect, float hue, float saturation,
                      float lightness) {
  if (!src || !dst) return kQVStatusBadArgument;
  return qv::Guard(kColorizeSource, kQVStatusUnknown, [&] {
    if (QVImageGetColorSpaceType(src) != kQVColorSpaceRGB) {
      qv::Fail(kQVStatusUnsupported, {kColorizeSource, 83});
    }
    const int bytes = QVImageGetPlaneBytes(src);
    if (bytes != 1 && bytes != 2 && bytes != 4) {
      qv::Fail(kQVStatusUnsupported, {kColorizeSource, 78});
    }
    return qv::DispatchDepth(bytes * 8, [&]<class T>() -> int {
      if (!qv::CanWalkColors(src, dst)) return kQVStatusUnsupported;
      const float kept = 1.0f - std::abs(lightness), lift = lightness > 0.0f ? lightness : 0.0f;
      qv::WalkColors<T>(kColorizeSource, src, dst, MakeVRect(rect), qv::WithTransparency(src),
                        qv::ChangeColors([=](Color3 rgb) {
        return qv::HslToRgb({hue, saturation, qv::RgbToHsl(rgb).z * kept + lift});
      }));
      return kQVStatusSuccess;
    });
  });
}

int QVEffectsAddToner(__QVImage* src, __QVImage* dst, QVRect rect, const float* color,
                      float amount) {
  if (!src || !dst || !color) return kQVStatusBadArgument;
  if (QVImageGetColorSpaceType(dst) != kQVColorSpaceRGB) return kQVStatusUnsupported;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(dst), [&]<class T>() -> int {
      if (!qv::CanWalkColors(src, dst)) return kQVStatusUnsupported;
      Walk<T>(src, dst, MakeVRect(rect), Toned(qv::Tone(qv::ColorAt(color)), amount));
      return kQVStatusSuccess;
    });
  });
}

int QVEffectsSolarize(__QVImage* src, __QVImage* dst, QVRect rect) {
  if (!src || !dst) return kQVStatusBadArgument;
  const int depth = QVImageGetDepth(src);
  if (depth != 8 && depth != 16 && depth != 32) return kQVStatusUnsupportedOlder;
  return qv::MapColorSamples(kSource, src, dst, rect, [](auto s) { return Solarized(s); });
}

int QVEffectsSplitTone(__QVImage* src, __QVImage* dst, QVRect rect, const float* shadowColor,
                       const float* highlightColor, QVBlendMode mode, float shadowAmount,
                       float highlightAmount, float balance) {
  if (!src || !dst || !shadowColor || !highlightColor) return kQVStatusBadArgument;
  if (shadowAmount <= 0.0f && highlightAmount <= 0.0f) {
    return CopyImage(src, dst, MakeVRect(rect), QVPointMake(0, 0));
  }
  if (QVImageGetColorSpaceType(src) != kQVColorSpaceRGB) return kQVStatusUnsupported;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(src) * 8, [&]<class T>() -> int {
      return GradientMap<T>(
          src, dst, MakeVRect(rect),
          {shadowColor, highlightColor, balance, shadowAmount, highlightAmount, mode});
    });
  });
}

int QVEffectsDuotone(__QVImage* src, __QVImage* dst, QVRect rect, const float* shadowColor,
                     const float* highlightColor, QVBlendMode mode, float balance, float amount) {
  return QVEffectsSplitTone(src, dst, rect, shadowColor, highlightColor, mode, amount, amount,
                            balance);
}

int QVEffectsGradientMap(__QVImage* src, __QVImage* dst, QVRect rect, const float* shadowColor,
                         const float* highlightColor, float balance) {
  return QVEffectsSplitTone(src, dst, rect, shadowColor, highlightColor, kQVBlendModeNormal, 1.0f,
                            1.0f, balance);
}
