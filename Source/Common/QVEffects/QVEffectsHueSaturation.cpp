// SPDX-License-Identifier: Apache-2.0
// Hue, saturation, vibrance and the way to gray: every pixel's colour on its own.
#include <QVEffects/QVEffectsHueSaturation.h>

#include "Utils/GrayRows.h"
#include "Utils/QVEffectsUtils.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsHueSaturation";
constexpr const char* kDesaturateSource = "Source/Common/QVEffects/QVEffectsDesaturate";
// Where an unknown failure of any of these effects is logged.
constexpr qv::Where kUnknownFailure = {kDesaturateSource, 60};

using qv::Color3;
using qv::Stretch;
using qv::Strip;

// ---- Stages

struct GrayOver : qv::ColorsOver {
  GrayOver(qv::BlendStrip aBlend, float amount) : ColorsOver(aBlend) {
    std::ranges::fill(opacity, amount);
  }

  void operator()(Strip& strip, Stretch at) {
    Begin(strip, at);
    const int count = qv::WholeVectors(at.pixels);
    for (int i = 0; i < count; i++) top[0][i] = qv::Luma(base[0][i], base[1][i], base[2][i]);
    std::memcpy(top[1], top[0], sizeof top.planes[0]);
    std::memcpy(top[2], top[0], sizeof top.planes[0]);
    End(strip, at);
  }
};

// ---- Calls

int Copy(__QVImage* src, __QVImage* dst, QVRect rect) {
  return CopyImage(src, dst, MakeVRect(rect), QVPointMake(0, 0));
}

// The status of a source that is refused before anything else is looked at, or success.
int CheckSource(__QVImage* src, __QVImage* dst) {
  if (!src || !dst) return kQVStatusBadArgument;
  return QVImageGetColorSpaceType(src) == kQVColorSpaceRGB ? kQVStatusSuccess
                                                           : kQVStatusUnsupported;
}

template <class Formula>
int Change(__QVImage* src, __QVImage* dst, QVRect rect, Formula formula) {
  return qv::Guard(kUnknownFailure, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(src), [&]<class T>() -> int {
      if (!qv::CanWalkColors(src, dst)) return kQVStatusUnsupported;
      qv::WalkColors<T>(kSource, src, dst, MakeVRect(rect), qv::WithTransparency(src),
                        qv::ChangeColors(formula));
      return kQVStatusSuccess;
    });
  });
}

template <class T>
int Desaturate(__QVImage* src, __QVImage* dst, VRect rect, QVBlendMode mode, float amount) {
  const qv::BlendStrip blend = qv::FindBlendStrip(mode);
  if (!blend) return kQVStatusBadArgument;
  if (!qv::CanWalkColors(src, dst)) return kQVStatusUnsupported;
  if (mode == kQVBlendModeNormal && amount >= 1.0f) {
    qv::WalkGrays<T>(kDesaturateSource, src, dst, rect, qv::FurtherPlanes::kOfSrc,
                     [](auto r, auto g, auto b) { return qv::Luma(r, g, b); });
  } else {
    qv::WalkColors<T>(kDesaturateSource, src, dst, rect, qv::FurtherPlanes::kOfSrc,
                      GrayOver(blend, amount));
  }
  return kQVStatusSuccess;
}

}  // namespace

int QVEffectsVibrance(__QVImage* src, __QVImage* dst, QVRect rect, float amount) {
  if (const int status = CheckSource(src, dst)) return status;
  if (amount == 0.0f) return Copy(src, dst, rect);
  return Change(src, dst, rect, [=](Color3 rgb) { return qv::WithVibrance2(rgb, amount); });
}

int QVEffectsHueSaturationBrightness(__QVImage* src, __QVImage* dst, QVRect rect, float hue,
                                     float saturation, float brightness) {
  if (const int status = CheckSource(src, dst)) return status;
  if (hue != 0.0f) {
    return Change(src, dst, rect, [=](Color3 rgb) {
      return qv::HsbToRgb(
          qv::WithHueSaturationBrightness(qv::RgbToHsb(rgb), hue, saturation, brightness));
    });
  }
  // Without hue there is no need of hue, saturation and brightness as such.
  if (saturation == 0.0f && brightness == 0.0f) return Copy(src, dst, rect);
  if (saturation == 0.0f) {
    return Change(src, dst, rect, [=](Color3 rgb) { return qv::WithBrightness(rgb, brightness); });
  }
  if (brightness == 0.0f) {
    return Change(src, dst, rect, [=](Color3 rgb) { return qv::WithSaturation(rgb, saturation); });
  }
  return Change(src, dst, rect, [=](Color3 rgb) {
    return qv::WithSaturationBrightness(rgb, saturation, brightness);
  });
}

int QVEffectsHueSaturationLightness(__QVImage* src, __QVImage* dst, QVRect rect, float hue,
                                    float saturation, float lightness) {
  if (const int status = CheckSource(src, dst)) return status;
  if (hue == 0.0f && saturation == 0.0f && lightness == 0.0f) return Copy(src, dst, rect);
  return Change(src, dst, rect, [=](Color3 rgb) {
    return qv::HslToRgb(
        qv::WithHueSaturationBrightness(qv::RgbToHsl(rgb), hue, saturation, lightness));
  });
}

int QVEffectsDesaturate(__QVImage* src, __QVImage* dst, QVRect rect, QVBlendMode mode,
                        float amount) {
  if (const int status = CheckSource(src, dst)) return status;
  if (amount <= 0.0f) return Copy(src, dst, rect);
  return qv::Guard(kUnknownFailure, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(src) * 8, [&]<class T>() -> int {
      return Desaturate<T>(src, dst, MakeVRect(rect), mode, amount);
    });
  });
}
