// SPDX-License-Identifier: Apache-2.0
// An effect's result laid over the image that it was made from, where a mask or the colour says.
#include <QVEffects/QVEffectsMask.h>

#include "Utils/ColorMath.h"
#include "Utils/Masks.h"
#include "Utils/ToneCurves.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsApplyEffectWithMask";

using qv::Color3;
using qv::Strip;

// Masks push away from this level.
constexpr float kNeutral = 0.49803922f;

// ---- Formulas

float Mixed(float base, float effect, float share) {
  return effect * share + base * (1.0f - share);
}

using qv::kZones;
using qv::Zones;

// What is asked of each zone.
struct ZoneWeights {
  float mix[kZones], brightness[kZones], contrast[kZones];
};

Color3 InZones(Color3 base, Color3 effect, float m, const ZoneWeights& by) {
  const Zones zones(base);
  const float share = qv::HeldToUnit(zones.Weighted(by.mix) * 0.5f + m);
  const qv::BrightnessCurve brighter(zones.Weighted(by.brightness));
  const qv::MidtoneCurve midtone(zones.Weighted(by.contrast));
  Color3 ycc = qv::RgbToYcc({Mixed(base.x, effect.x, share), Mixed(base.y, effect.y, share),
                             Mixed(base.z, effect.z, share)});
  ycc.x = midtone(brighter(ycc.x));
  return qv::YccToRgb(ycc);
}

// ---- Rows

struct Strips {
  Strip base, effect, mask;
};

// Mixes samples on their own scale. @param share the effect's, for each pixel.
template <class T>
void MixStrip(const T* base, const T* effect, T* out, int planes, int pixels, const float* share,
              Strips& strips, qv::RowCopier& copier) {
  qv::LoadUnscaled<T>(base, planes, pixels, strips.base);
  qv::LoadUnscaled<T>(effect, planes, pixels, strips.effect);
  for (int c = 0; c < planes; c++) {
    float* __restrict mixed = strips.base[c];
    const float* __restrict over = strips.effect[c];
    for (int i = 0; i < pixels; i++) mixed[i] = Mixed(mixed[i], over[i], share[i]);
  }
  qv::StoreSamples<T>(copier, out, planes, pixels, strips.base);
}

template <class T>
void ApplyRows(__QVImage* base, __QVImage* effect, __QVImage* mask, __QVImage* dst, VRect rect,
               float half) {
  const int planes = QVImageGetNumPlanes(dst);
  const qv::MaskSense sense(mask);
  Strips strips;
  qv::WalkRows(kSource,
               {qv::ToRead(base), qv::ToRead(effect), qv::ToReadIfThere(mask), qv::ToWrite(dst)},
               rect, [&](const qv::WalkedRow& row) {
    const T* from = row.Of<const T>(0);
    const T* over = row.Of<const T>(1);
    const T* maskRow = row.Of<const T>(2);
    T* out = row.Of<T>(3);
    float* share = strips.mask[0];
    if (!maskRow) {
      // All samples alike, as if each were a pixel.
      std::fill_n(share, qv::kStripPixels, half);
      return qv::EachStrip(int64_t{row.pixels} * planes, [&](int64_t x, int count) {
        MixStrip(from + x, over + x, out + x, 1, count, share, strips, row.copier);
      });
    }
    qv::EachStrip(row.pixels, [&](int64_t x, int count) {
      qv::LoadMask(qv::LoadSamples<T>, maskRow + x, 1, count, sense, strips.mask);
      for (int i = 0; i < count; i++) share[i] = qv::HeldToUnit(share[i] - kNeutral + half);
      const int64_t first = x * planes;
      MixStrip(from + first, over + first, out + first, planes, count, share, strips, row.copier);
    });
  });
}

// The result is in `strips.base`, on the scale of the samples; planes past the third stay.
template <class T>
void ChangeInZones(Strips& strips, int pixels, const ZoneWeights& by) {
  constexpr float kToUnit = qv::Sample<T>::kToUnit, kMax = qv::Sample<T>::kMax;
  const ZoneWeights fixed = by;
  auto& [base, effect, mask] = strips;
  float* __restrict r = base[0], * __restrict g = base[1], * __restrict b = base[2];
  const float* __restrict overR = effect[0], * __restrict overG = effect[1], * __restrict overB = effect[2];
  const float* __restrict m = mask[0];
  for (int i = 0; i < pixels; i++) {
    const Color3 c =
        InZones({r[i] * kToUnit, g[i] * kToUnit, b[i] * kToUnit},
                {overR[i] * kToUnit, overG[i] * kToUnit, overB[i] * kToUnit}, m[i], fixed);
    r[i] = c.x * kMax;
    g[i] = c.y * kMax;
    b[i] = c.z * kMax;
  }
}

template <class T>
void ApplyRowsInZones(__QVImage* base, __QVImage* effect, __QVImage* mask, __QVImage* dst,
                      VRect rect, const ZoneWeights& by) {
  const int planes = QVImageGetNumPlanes(dst);
  const qv::MaskSense sense(mask);
  Strips strips;
  qv::WalkRows(kSource,
               {qv::ToRead(base), qv::ToRead(effect), qv::ToReadIfThere(mask), qv::ToWrite(dst)},
               rect, [&](const qv::WalkedRow& row) {
    const T* maskRow = row.Of<const T>(2);
    if (!maskRow) std::fill_n(strips.mask[0], qv::kStripPixels, kNeutral);
    qv::EachStrip(row.pixels, [&](int64_t x, int count) {
      const int64_t first = x * planes;
      qv::LoadUnscaled<T>(row.Of<const T>(0) + first, planes, count, strips.base);
      qv::LoadUnscaled<T>(row.Of<const T>(1) + first, planes, count, strips.effect);
      if (maskRow) {
        qv::LoadMask(qv::LoadSamples<T>, maskRow + x, 1, count, sense, strips.mask);
      }
      ChangeInZones<T>(strips, count, by);
      qv::StoreSamples<T>(row.copier, row.Of<T>(3) + first, planes, count, strips.base);
    });
  });
}

// ---- Arguments

bool GoTogether(__QVImage* base, __QVImage* effect, __QVImage* mask, __QVImage* dst) {
  return qv::HaveSamePixels(base, dst) && qv::HaveSamePixels(effect, dst) && qv::FitsPlanes(dst) &&
         qv::IsMaskFor(dst, mask);
}

}  // namespace

int QVEffectsApplyEffectWithMask(__QVImage* base, __QVImage* effect, __QVImage* mask,
                                 __QVImage* dst, QVRect rect, float amount) {
  if (!base || !effect || !dst) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(dst) * 8, [&]<class T>() -> int {
      if (!GoTogether(base, effect, mask, dst)) return kQVStatusUnsupported;
      ApplyRows<T>(base, effect, mask, dst, MakeVRect(rect), amount * 0.5f);
      return kQVStatusSuccess;
    });
  });
}

int QVEffectsApplyEffectInZones(__QVImage* base, __QVImage* effect, __QVImage* mask, __QVImage* dst,
                                QVRect rect, const float* mix, const float* brightness,
                                const float* contrast) {
  if (!base || !effect || !dst || !mix || !brightness || !contrast) return kQVStatusBadArgument;
  if (QVImageGetColorSpaceType(dst) != kQVColorSpaceRGB ||
      QVImageGetNumPlanes(dst) - QVImageGetTransparency(dst) < 3) {
    return kQVStatusUnsupported;
  }
  ZoneWeights by;
  std::copy_n(mix, kZones, by.mix);
  std::copy_n(brightness, kZones, by.brightness);
  std::copy_n(contrast, kZones, by.contrast);
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(dst) * 8, [&]<class T>() -> int {
      if (!GoTogether(base, effect, mask, dst)) return kQVStatusUnsupported;
      ApplyRowsInZones<T>(base, effect, mask, dst, MakeVRect(rect), by);
      return kQVStatusSuccess;
    });
  });
}

int QVEffectsGetColorComponents(const float* rgb, float* weights) {
  if (!rgb || !weights) return kQVStatusBadArgument;
  const Zones zones({rgb[0], rgb[1], rgb[2]});
  std::copy_n(zones.weights, kZones, weights);
  return kQVStatusSuccess;
}
