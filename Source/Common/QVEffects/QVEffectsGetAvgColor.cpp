// SPDX-License-Identifier: Apache-2.0
// The weighted mean colour. Weights are made strip by strip, so that the depth of the mask and that
// of the image don't multiply.
#include <QVEffects/QVEffectsMeasure.h>

#include <array>

#include "Utils/EffectFrame.h"
#include "Utils/MeasuredRows.h"
#include "Utils/Strips.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsGetAvgColor";

constexpr int kMostColors = 4;

struct Sums {
  double colors[kMostColors] = {};
  double weight = 0;
};

using Weights = std::array<double, qv::kStripPixels>;

// Samples of a mask on their own scale.
using LoadMask = void (*)(const void* row, int64_t x, int pixels, Weights& weights);

template <class T, bool kInverted>
void Load(const void* row, int64_t x, int pixels, Weights& weights) {
  const T* samples = static_cast<const T*>(row) + x;
  for (int i = 0; i < pixels; i++) {
    const auto sample = static_cast<float>(samples[i]);
    weights[i] = static_cast<double>(kInverted ? qv::Sample<T>::kMax - sample : sample);
  }
}

// How a mask is read, and the weight of a pixel where it isn't.
struct Mask {
  LoadMask load;
  double fullScale;
};

template <class T>
Mask MaskOf(bool isInverted) {
  return {isInverted ? Load<T, true> : Load<T, false>, static_cast<double>(qv::Sample<T>::kMax)};
}

template <class T, class Layout>
void Weigh(const T* row, int pixels, Layout layout, Weights& weights) {
  for (int i = 0; i < pixels; i++) {
    weights[i] *= layout.transparency == 0
                      ? static_cast<double>(qv::Sample<T>::kMax)
                      : static_cast<double>(row[i * layout.planes + layout.colors]);
  }
}

// In the order of the pixels.
template <class T, class Layout>
void AddPixels(const T* row, const Weights& weights, int pixels, Layout layout, Sums& sums) {
  Sums sum = sums;
  for (int i = 0; i < pixels; i++, row += layout.planes) {
    for (int c = 0; c < layout.colors; c++) {
      sum.colors[c] += static_cast<double>(row[c]) * weights[i];
    }
    sum.weight += weights[i];
  }
  sums = sum;
}

// The same for bytes weighted by bytes, of which all sums are exact. A strip's fit 32 bits.
template <class Layout>
void AddBytes(const uchar* row, const Weights& weights, int pixels, Layout layout, Sums& sums) {
  static_assert(uint64_t{qv::kStripPixels} * 255 * 255 * 255 <= UINT32_MAX);
  uint32_t colors[kMostColors] = {}, weight = 0;
  for (int i = 0; i < pixels; i++) {
    const auto w = static_cast<uint32_t>(static_cast<int>(weights[i]));
    for (int c = 0; c < layout.colors; c++) colors[c] += row[i * layout.planes + c] * w;
    weight += w;
  }
  for (int c = 0; c < layout.colors; c++) sums.colors[c] += colors[c];
  sums.weight += weight;
}

template <class T, class Layout>
void AddStrip(const T* row, const Weights& weights, int pixels, Layout layout, bool isByteMask,
              Sums& sums) {
  if constexpr (std::is_same_v<T, uchar>) {
    constexpr double kMost = 255.0 * 255.0 * 255.0 * qv::kStripPixels;
    if (isByteMask && sums.weight * 255.0 + kMost < qv::kExactIntegers) {
      return AddBytes(row, weights, pixels, layout, sums);
    }
  }
  AddPixels(row, weights, pixels, layout, sums);
}

template <class T, class Layout>
Sums AddRows(__QVImage* image, __QVImage* maskImage, const Mask& mask, VRect rect, Layout layout) {
  const int width = rect.right - rect.left;
  const bool isByteMask = !maskImage || QVImageGetPlaneBytes(maskImage) == 1;
  qv::MeasuredRows masks(maskImage, rect.left, width), rows(image, rect.left, width);
  Weights weights;
  Sums sums;
  for (int y = rect.top; y < rect.bottom; y++) {
    const void* maskRow = masks.Row(y);
    const T* row = static_cast<const T*>(qv::Required(rows.Row(y), kSource));
    qv::EachStrip(width, [&](int64_t x, int pixels) {
      if (maskRow) {
        mask.load(maskRow, x, pixels, weights);
      } else {
        std::fill_n(weights.begin(), pixels, mask.fullScale);
      }
      Weigh(row + x * layout.planes, pixels, layout, weights);
      AddStrip(row + x * layout.planes, weights, pixels, layout, isByteMask, sums);
    });
  }
  return sums;
}

}  // namespace

int QVEffectsGetAvgColor(__QVImage* image, __QVImage* mask, QVRect qvRect, float* color,
                         float* weight) {
  if (!image) return kQVStatusBadArgument;
  const int planes = QVImageGetNumPlanes(image), transparency = QVImageGetTransparency(image);
  if (!qv::IsPacked(image) || planes - transparency > kMostColors ||
      (mask && (!qv::IsPacked(mask) || QVImageGetNumPlanes(mask) != 1))) {
    return kQVStatusUnsupported;
  }
  Mask how = MaskOf<uchar>(false);
  const auto chooseMask = [&]<class T>() -> int {
    how = MaskOf<T>(QVImageGetType(mask) == kQVImageTypeInvertedMask);
    return kQVStatusSuccess;
  };
  const int status =
      mask ? qv::DispatchDepth(QVImageGetPlaneBytes(mask) * 8, chooseMask) : kQVStatusSuccess;
  if (status != kQVStatusSuccess) return status;

  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(image) * 8, [&]<class T>() -> int {
      constexpr auto kFull = static_cast<double>(qv::Sample<T>::kMax);
      const VRect rect = qv::MeasuredRect(image, qvRect, kSource);
      Sums sums;
      if (!rect.IsEmpty()) {
        sums = qv::DispatchLayout(planes, transparency, [&](auto layout) {
          return AddRows<T>(image, mask, how, rect, layout);
        });
      }
      for (int c = 0; color && c < planes - transparency; c++) {
        color[c] =
            sums.weight > 0 ? static_cast<float>(sums.colors[c] / (kFull * sums.weight)) : 0.0f;
      }
      if (weight) *weight = static_cast<float>(sums.weight / (how.fullScale * kFull));
      return kQVStatusSuccess;
    });
  });
}
