// SPDX-License-Identifier: Apache-2.0
// Gradient fill: two colours, mixed by a mask.
#include <QVEffects/QVEffectsBasics.h>
#include <QVEffects/QVEffectsMeasure.h>

#include <algorithm>

#include "Utils/Masks.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsFillGradient";

using qv::Strip;

// A value per plane on the scale of the samples.
struct Colors {
  float first[qv::kStripPlanes];
  float second[qv::kStripPlanes];

  Colors(const float* color1, const float* color2, int colors, int planes, float max) {
    for (int c = 0; c < planes; c++) {
      first[c] = color1[c] * max;
      const float unnamed = c < colors ? first[c] : 0.0f;
      second[c] = color2 ? color2[c] * max : unnamed;
    }
  }
};

// Turns the first plane, what a mask counts as, into the planes of the mix.
void Mix(const Colors& colors, int planes, int pixels, Strip& strip) {
  const int count = qv::WholeVectors(pixels);
  alignas(64) float mask[qv::kStripPixels];
  std::copy_n(strip[0], count, mask);
  for (int c = 0; c < planes; c++) {
    const float a = colors.first[c], b = colors.second[c];
    for (int i = 0; i < count; i++) strip[c][i] = b * (1.0f - mask[i]) + a * mask[i];
  }
}

template <class T>
int FillGradient(__QVImage* dst, VRect rect, __QVImage* mask, qv::LoadStrip load,
                 const Colors& colors) {
  const qv::MaskSense sense(mask);
  const int planes = QVImageGetNumPlanes(dst), maskBytes = QVImageGetColBytes(mask);
  Strip strip;
  qv::WalkRows(kSource, {qv::ToReadIfThere(mask), qv::ToWrite(dst)}, rect,
               [&](const qv::WalkedRow& row) {
    const auto* from = row.Of<const std::byte>(0);
    T* to = row.Of<T>(1);
    qv::EachStrip(row.pixels, [&](int64_t x, int pixels) {
      if (from) {
        qv::LoadMask(load, from + x * maskBytes, 1, pixels, sense, strip);
      } else {
        std::fill_n(strip[0], qv::kStripPixels, 1.0f);
      }
      Mix(colors, planes, pixels, strip);
      qv::StoreSamples<T>(row.copier, to + x * planes, planes, pixels, strip);
    });
  });
  return kQVStatusSuccess;
}

}  // namespace

int QVEffectsFillGradient(__QVImage* dst, QVRect rect, __QVImage* mask, const float* color1,
                          const float* color2) {
  if (!dst || !color1) return kQVStatusBadArgument;
  if (!mask) return QVEffectsFillColor(dst, rect, color1);
  if (QVImageGetNumPlanes(mask) != 1) return kQVStatusUnsupportedOlder;
  if (!qv::FitsPlanes(mask) || !qv::FitsPlanes(dst)) return kQVStatusUnsupported;

  qv::LoadStrip load = nullptr;
  const auto chooseLoad = [&]<class T>() -> int {
    load = qv::LoadSamples<T>;
    return kQVStatusSuccess;
  };
  const int status = qv::DispatchDepth(QVImageGetPlaneBytes(mask) * 8, chooseLoad);
  if (status != kQVStatusSuccess) return status;

  const int planes = QVImageGetNumPlanes(dst);
  const int colors = planes - QVImageGetTransparency(dst);
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(dst) * 8, [&]<class T>() {
      const Colors mixed(color1, color2, colors, planes, qv::Sample<T>::kMax);
      return FillGradient<T>(dst, MakeVRect(rect), mask, load, mixed);
    });
  });
}
