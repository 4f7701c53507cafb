// SPDX-License-Identifier: Apache-2.0
// Statistics: mean and standard deviation of colours and luma.
#include <QVEffects/QVEffectsMeasure.h>

#include <cmath>

#include "Utils/ColorMath.h"
#include "Utils/EffectFrame.h"
#include "Utils/MeasuredRows.h"
#include "Utils/Strips.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsAnalyzeImage";

// On the scale of the samples: three colours and luma, or gray alone.
struct Sums {
  double values[4] = {};
  double squares[4] = {};
  int64_t pixels = 0;
};

template <class T, class Layout>
bool Counts(const T* pixel, Layout layout) {
  return layout.transparency == 0 || pixel[layout.colors] > 0;
}

// Some pixels of a row, each with what is summed of it. Made before the sums, whose order lets
// nothing be done side by side but the slots.
template <int kSlots>
struct Pixels {
  alignas(64) float slots[qv::kStripPixels][kSlots];
};

// A pixel that doesn't count adds zeros.
template <class T, class Layout, int kSlots>
void Load(const T* row, int count, Layout layout, qv::Strip& strip, Pixels<kSlots>& pixels) {
  qv::LoadUnscaled<T>(row, layout.planes, count, strip);
  const int whole = qv::WholeVectors(count);
  for (int c = 0; c < layout.colors * layout.transparency; c++) {
    const float* transparency = strip[layout.colors];
    for (int i = 0; i < whole; i++) {
      const float sample = strip[c][i];
      strip[c][i] = transparency[i] > 0.0f ? sample : 0.0f;
    }
  }
  for (int i = 0; i < whole; i++) {
    if constexpr (kSlots == 4) strip[3][i] = qv::Luma(strip[0][i], strip[1][i], strip[2][i]);
    for (int s = 0; s < kSlots; s++) pixels.slots[i][s] = strip[s][i];
  }
}

// In the order of the pixels.
template <int kSlots>
void Add(const Pixels<kSlots>& pixels, int count, Sums& sums) {
  double values[kSlots], squares[kSlots];
  std::copy_n(sums.values, kSlots, values);
  std::copy_n(sums.squares, kSlots, squares);
  for (int i = 0; i < count; i++) {
    for (int s = 0; s < kSlots; s++) {
      const auto value = static_cast<double>(pixels.slots[i][s]);
      values[s] += value;
      squares[s] += value * value;
    }
  }
  std::copy_n(values, kSlots, sums.values);
  std::copy_n(squares, kSlots, sums.squares);
}

template <class T, class Layout>
void AddPixels(const T* row, int width, Layout layout, qv::Strip& strip, Sums& sums) {
  Pixels<Layout::colors == 3 ? 4 : 1> pixels;
  while (width > 0) {
    const int count = std::min(width, qv::kStripPixels);
    Load(row, count, layout, strip, pixels);
    Add(pixels, count, sums);
    row += ptrdiff_t{count} * Layout::planes;
    width -= count;
  }
}

// The same for gray integers of which all sums are exact.
template <class T, class Layout>
void AddIntegers(const T* row, int width, Layout layout, Sums& sums) {
  uint64_t values = 0, squares = 0;
  for (int i = 0; i < width; i++, row += Layout::planes) {
    const uint32_t value = Counts(row, layout) ? row[0] : 0;
    values += value;
    squares += value * value;
  }
  sums.values[0] += static_cast<double>(values);
  sums.squares[0] += static_cast<double>(squares);
}

template <class T, class Layout>
void AddRow(const T* row, int width, Layout layout, qv::Strip& strip, Sums& sums) {
  if constexpr (Layout::transparency == 0) {
    sums.pixels += width;
  } else {
    int count = 0;
    for (int i = 0; i < width; i++) count += Counts(row + i * Layout::planes, layout);
    sums.pixels += count;
  }
  if constexpr (Layout::colors == 1 && std::is_integral_v<T>) {
    constexpr auto kMost = static_cast<double>(qv::Sample<T>::kMax);
    if (sums.squares[0] + kMost * kMost * width < qv::kExactIntegers) {
      return AddIntegers(row, width, layout, sums);
    }
  }
  AddPixels(row, width, layout, strip, sums);
}

void Conclude(const Sums& sums, double toUnit, float* means, float* deviations) {
  const auto count = static_cast<double>(sums.pixels);
  for (int s = 0; s < 4; s++) {
    means[s] = static_cast<float>(sums.values[s] * toUnit / count);
    const auto squared = static_cast<double>(means[s] * means[s]);
    const double variance = sums.squares[s] * toUnit * toUnit / count - squared;
    deviations[s] = static_cast<float>(std::sqrt(variance < 0.0 ? 0.0 : variance));
  }
}

template <class T, class Layout>
int Analyze(__QVImage* image, QVRect qvRect, Layout layout, float* means, float* deviations) {
  const VRect rect = qv::MeasuredRect(image, qvRect, kSource);
  if (rect.IsEmpty()) return kQVStatusSuccess;
  const int width = rect.right - rect.left;
  qv::MeasuredRows rows(image, rect.left, width);
  qv::Strip strip;
  Sums sums;
  for (int y = rect.top; y < rect.bottom; y++) {
    const void* row = qv::Required(rows.Row(y), kSource);
    AddRow(static_cast<const T*>(row), width, layout, strip, sums);
  }
  constexpr auto kToUnit = static_cast<double>(qv::Sample<T>::kToUnit);
  if (sums.pixels > 0) Conclude(sums, kToUnit, means, deviations);
  return kQVStatusSuccess;
}

}  // namespace

int QVEffectsAnalyzeImage(__QVImage* image, QVRect rect, float* means, float* deviations) {
  if (!image || !means || !deviations) return kQVStatusBadArgument;
  if (!qv::IsPacked(image)) return kQVStatusUnsupported;
  const int planes = QVImageGetNumPlanes(image), transparency = QVImageGetTransparency(image);
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(image) * 8, [&]<class T>() {
      return qv::DispatchLayout(planes, transparency, [&]<class Layout>(Layout layout) -> int {
        if constexpr (std::is_same_v<Layout, qv::AnyLayout>) {
          return kQVStatusUnsupported;
        } else {
          return Analyze<T>(image, rect, layout, means, deviations);
        }
      });
    });
  });
}
