// SPDX-License-Identifier: Apache-2.0
// Brightness, contrast and midtone contrast, over images with and without a mask and as curves.
#include <QVEffects/QVEffectsBrightness.h>

#include "Utils/ColorMath.h"
#include "Utils/LookUp.h"
#include "Utils/Masks.h"
#include "Utils/QVEffectsUtils.h"
#include "Utils/ToneCurves.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsBrightnessContrast";

using qv::BrightnessCurve;
using qv::ContrastCurve;
using qv::FlatteningCurve;
using qv::MidtoneCurve;
using qv::Strip;

// ---- Tones: what becomes of a sample. Taking contrast back costs a root in double precision:
// tones that may do it have a form that can't.

// Contrast comes after brightness, but is taken back before it.
template <bool kFlattens>
struct BrightnessContrast {
  float c;
  BrightnessCurve brighter;
  ContrastCurve steeper;
  FlatteningCurve flatter;

  BrightnessContrast(float brightness, float contrast)
      : c(contrast), brighter(brightness), steeper(contrast), flatter(contrast) {}
  float operator()(float x) const {
    float first = steeper(x);
    if constexpr (kFlattens) first = c < 0.0f ? flatter(x) : first;
    const float bright = brighter(c > 0.0f ? x : first);
    return c > 0.0f ? steeper(bright) : bright;
  }
};

struct BrightnessMidtone {
  BrightnessCurve brighter;
  MidtoneCurve midtone;

  BrightnessMidtone(float brightness, float contrast) : brighter(brightness), midtone(contrast) {}
  float operator()(float x) const { return brighter(midtone(x)); }
};

// Then lightens by the factor 1 + gain, or darkens by half of a gain below 0.
struct BrightnessGain {
  BrightnessCurve brighter;
  float gain;

  float operator()(float x) const {
    const float y = brighter(x);
    return qv::HeldToUnit(gain > 0.0f ? y * (gain + 1.0f) : y + gain * 0.5f);
  }
};

// Past 1 either way midtone contrast grows no more, and contrast takes over.
template <bool kFlattens>
struct MidtoneAlt {
  float c;
  MidtoneCurve midtone;
  ContrastCurve steeper;
  FlatteningCurve flatter;

  explicit MidtoneAlt(float p)
      : c(p < -1.0f ? p + 1.0f : (p > 1.0f ? p - 1.0f : 0.0f)),
        midtone(p < -1.0f ? -2.0f : (p > 1.0f ? 2.0f : p + p)),
        steeper(c),
        flatter(c) {}
  float operator()(float x) const {
    const float v = midtone(x);
    float changed = steeper(v);
    if constexpr (kFlattens) changed = c < 0.0f ? flatter(v) : changed;
    return c != 0.0f ? changed : v;
  }
};

// ---- Effects: the tone of a pixel by what its mask counts as, and the one without a mask. A plain
// mask counts as 0 to 1, a bipolar one as -1 to 1 and a little more.

struct BrightnessContrastEffect {
  static constexpr bool kIsBipolar = false;
  float brightness, contrast;

  bool Flattens(float m = 1.0f) const { return contrast * m < 0.0f; }
  template <bool kFlattens>
  auto Tone(float m = 1.0f) const {
    return BrightnessContrast<kFlattens>(brightness * m, contrast * m);
  }
};

struct BrightnessMidtoneEffect {
  static constexpr bool kIsBipolar = false;
  float brightness, contrast;

  bool Flattens(float = 1.0f) const { return false; }
  template <bool>
  auto Tone(float m = 1.0f) const {
    return BrightnessMidtone(brightness * m, contrast * m);
  }
};

struct BrightnessEffect {
  static constexpr bool kIsBipolar = true;
  float amount;

  bool Flattens(float = 0.0f) const { return false; }
  template <bool>
  auto Tone(float m) const {
    return BrightnessGain{BrightnessCurve(amount), m};
  }
  template <bool>
  auto Tone() const {
    return BrightnessCurve(amount);
  }
};

struct MidtoneEffect {
  static constexpr bool kIsBipolar = false;
  float amount;

  bool Flattens(float = 1.0f) const { return false; }
  template <bool>
  auto Tone(float m = 1.0f) const {
    return MidtoneCurve(amount * m);
  }
};

struct MidtoneAltEffect {
  static constexpr bool kIsBipolar = true;
  float amount;

  bool Flattens(float m = 0.0f) const { return m + amount < -1.0f; }
  template <bool kFlattens>
  auto Tone(float m = 0.0f) const {
    return MidtoneAlt<kFlattens>(m + amount);
  }
};

// ---- Rows

// Calls f with whether contrast is taken back, known to the compiler.
template <class F>
void WithForm(bool flattens, F&& f) {
  flattens ? f(std::true_type()) : f(std::false_type());
}

// What a raw sample of a bipolar mask is multiplied with, before 1 is taken off.
template <class T>
constexpr float kBipolar = 2.007874f;
template <>
constexpr float kBipolar<uchar> = 0.007874016f;
template <>
constexpr float kBipolar<ushort> = 3.0638195e-05f;

template <class T, class Effect>
struct MaskedRow {
  const Effect& effect;
  qv::MaskSense sense;
  int planes, colors;
  Strip strip = {}, mask = {};

  MaskedRow(const Effect& anEffect, __QVImage* image, __QVImage* aMask)
      : effect(anEffect),
        sense(aMask, Effect::kIsBipolar ? qv::Sample<T>::kMax : 1.0f),
        planes(QVImageGetNumPlanes(image)),
        colors(planes - QVImageGetTransparency(image)) {}

  void operator()(const T* in, const T* maskRow, T* out, int pixels, qv::RowCopier& copier) {
    qv::EachStrip(pixels, [&](int64_t x, int count) {
      const int64_t first = x * planes;
      qv::LoadUnscaled<T>(in + first, planes, count, strip);
      const bool flattens = LoadMask(maskRow + x, count);
      WithForm(flattens, [&](auto form) {
        if (colors == 3) return Change<3, form>(0, count);
        for (int c = 0; c < colors; c++) Change<1, form>(c, count);
      });
      qv::StoreSamples<T>(copier, out + first, planes, count, strip);
    });
  }

 private:
  // Whether the mask has some pixel's contrast taken back.
  bool LoadMask(const T* row, int pixels) {
    const qv::LoadStrip load = Effect::kIsBipolar ? qv::LoadUnscaled<T> : qv::LoadSamples<T>;
    qv::LoadMask(load, row, 1, pixels, sense, mask);
    float* m = mask[0];
    if (Effect::kIsBipolar) {
      for (int i = 0; i < pixels; i++) m[i] = m[i] * kBipolar<T> - 1.0f;
    }
    bool flattens = false;
    for (int i = 0; i < pixels; i++) flattens |= effect.Flattens(m[i]);
    return flattens;
  }

  template <int kColors, bool kFlattens>
  void Change(int first, int pixels) {
    const Effect fixed = effect;
    const float* __restrict m = mask[0];
    float* __restrict samples = strip[first];
    for (int i = 0; i < pixels; i++) {
      const auto tone = fixed.template Tone<kFlattens>(m[i]);
      for (int c = 0; c < kColors; c++) {
        float& sample = samples[c * qv::kStripPixels + i];
        sample = tone(sample * qv::Sample<T>::kToUnit) * qv::Sample<T>::kMax;
      }
    }
  }
};

// Walks with a row function for where there is no mask.
template <class T, class Effect, class Plain>
void WalkWith(Plain& plain, __QVImage* src, __QVImage* dst, __QVImage* mask, VRect rect,
              const Effect& effect) {
  MaskedRow<T, Effect> masked(effect, src, mask);
  qv::DispatchLayout(QVImageGetNumPlanes(src), QVImageGetTransparency(src), [&](auto layout) {
    qv::WalkRows(kSource, {qv::ToRead(src), qv::ToWrite(dst), qv::ToReadIfThere(mask)}, rect,
                 [&](const qv::WalkedRow& row) {
      const T* maskRow = row.Of<const T>(2);
      maskRow ? masked(row.Of<const T>(0), maskRow, row.Of<T>(1), row.pixels, row.copier)
              : qv::MapRow<T>(row, layout, plain);
    });
  });
}

// At 8 bits a table is faster than all tones, at 16 bits than those with a root.
template <class T, class Effect>
void AdjustRows(__QVImage* src, __QVImage* dst, __QVImage* mask, VRect rect, const Effect& effect) {
  WithForm(effect.Flattens(), [&](auto form) {
    const auto map = [tone = effect.template Tone<form>()](T sample) {
      return qv::FromUnit<T>(tone(qv::ToUnit(sample)));
    };
    if constexpr (sizeof(T) == 1 || (sizeof(T) == 2 && form)) {
      if (!mask && qv::IsWorthTables<T>(dst, rect, 1)) {
        const qv::LookUp<T> plain(1, [&](int, T* table) {
          for (int s = 0; s < qv::LookUp<T>::kSamples; s++) table[s] = map(static_cast<T>(s));
        });
        return WalkWith<T>(plain, src, dst, mask, rect, effect);
      }
    }
    const auto plain = qv::ColorSamples(map);
    WalkWith<T>(plain, src, dst, mask, rect, effect);
  });
}

// ---- Calls

template <class Effect>
int Adjust(__QVImage* src, __QVImage* dst, __QVImage* mask, QVRect rect, Effect effect) {
  if (!src || !dst) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(src), [&]<class T>() -> int {
      if (!qv::HaveSamePixels(src, dst) || !qv::IsMaskFor(src, mask) ||
          (mask && !qv::FitsPlanes(src))) {
        return kQVStatusUnsupported;
      }
      AdjustRows<T>(src, dst, mask, MakeVRect(rect), effect);
      return kQVStatusSuccess;
    });
  });
}

template <class Effect>
int MakeCurves(int planes, float* curves, Effect effect) {
  constexpr int kLevels = 256;
  if (planes <= 0) return kQVStatusSuccess;
  if (!curves) return kQVStatusBadArgument;
  const auto tone = effect.template Tone<true>();
  for (int l = 0; l < kLevels; l++) {
    const float level = tone(static_cast<float>(l) / 255.0f);
    for (int p = 0; p < planes; p++) curves[ptrdiff_t{p} * kLevels + l] = level;
  }
  return kQVStatusSuccess;
}

}  // namespace

int QVEffectsBrightnessContrast(__QVImage* src, __QVImage* dst, QVRect rect, float brightness,
                                float contrast) {
  return QVEffectsBrightnessContrastWithMask(src, dst, nullptr, rect, brightness, contrast);
}

int QVEffectsBrightnessContrastWithMask(__QVImage* src, __QVImage* dst, __QVImage* mask,
                                        QVRect rect, float brightness, float contrast) {
  return Adjust(src, dst, mask, rect, BrightnessContrastEffect{brightness, contrast});
}

int QVEffectsBrightnessContrastMakeCurves(int planes, float* curves, float brightness,
                                          float contrast) {
  return MakeCurves(planes, curves, BrightnessContrastEffect{brightness, contrast});
}

int QVEffectsBrightnessMidtoneContrast(__QVImage* src, __QVImage* dst, QVRect rect,
                                       float brightness, float contrast) {
  return QVEffectsBrightnessMidtoneContrastWithMask(src, dst, nullptr, rect, brightness, contrast);
}

int QVEffectsBrightnessMidtoneContrastWithMask(__QVImage* src, __QVImage* dst, __QVImage* mask,
                                               QVRect rect, float brightness, float contrast) {
  return Adjust(src, dst, mask, rect, BrightnessMidtoneEffect{brightness, contrast});
}

int QVEffectsBrightnessMidtoneContrastMakeCurves(int planes, float* curves, float brightness,
                                                 float contrast) {
  return MakeCurves(planes, curves, BrightnessMidtoneEffect{brightness, contrast});
}

int QVEffectsBrightnessWithMask(__QVImage* src, __QVImage* dst, QVRect rect, __QVImage* mask,
                                float amount) {
  if (amount == 0.0f && !mask) return CopyImage(src, dst, MakeVRect(rect), QVPointMake(0, 0));
  return Adjust(src, dst, mask, rect, BrightnessEffect{amount});
}

int QVEffectsBrightnessAltMakeCurves(int planes, float* curves, float amount) {
  return MakeCurves(planes, curves, BrightnessEffect{amount});
}

int QVEffectsMidtoneContrast(__QVImage* src, __QVImage* dst, QVRect rect, float amount) {
  return Adjust(src, dst, nullptr, rect, MidtoneEffect{amount});
}

int QVEffectsMidtoneContrastMakeCurves(int planes, float* curves, float amount) {
  return MakeCurves(planes, curves, MidtoneEffect{amount});
}

int QVEffectsMidtoneContrastAltWithMask(__QVImage* src, __QVImage* dst, QVRect rect,
                                        __QVImage* mask, float amount) {
  if (amount == 0.0f && !mask) return CopyImage(src, dst, MakeVRect(rect), QVPointMake(0, 0));
  return Adjust(src, dst, mask, rect, MidtoneAltEffect{amount});
}

int QVEffectsMidtoneContrastAltMakeCurves(int planes, float* curves, float amount) {
  return MakeCurves(planes, curves, MidtoneAltEffect{amount});
}
