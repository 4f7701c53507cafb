// SPDX-License-Identifier: Apache-2.0
// Median, everywhere or where a sample differs enough from it.
#include <QVEffects/QVEffectsBasics.h>
#include <QVEffects/QVEffectsMedian.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "Utils/EffectFrame.h"
#include "Utils/MedianHistogram.h"
#include "Utils/MedianNetwork.h"
#include "Utils/RowCopier.h"
#include "Utils/RowWindow.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsMedian";

// Somewhat larger networks would still be faster than histograms, but take long to compile.
constexpr int kLargestNetwork = 5;

// Calls f with what finds the medians.
template <class T, int kRadius = 1, class F>
void WithFilter(const qv::MedianRow& row, F&& f) {
  if constexpr (kRadius <= kLargestNetwork) {
    using Network = qv::MedianNetwork<T, kRadius>;
    if (row.radius == kRadius && Network::Takes(row.planes)) return f(Network(row.planes));
    return WithFilter<T, kRadius + 1>(row, f);
  } else {
    const int64_t size = 2 * row.radius + 1;
    if (size * size <= std::numeric_limits<ushort>::max()) {
      return f(qv::MedianHistogram<T, ushort>(row));
    }
    return f(qv::MedianHistogram<T, uint32_t>(row));
  }
}

// Takes back the samples that differ from their median by less than the threshold, and those whose
// mask is set.
template <class T>
void Restore(const T* __restrict source, const T* __restrict mask, T threshold,
             T* __restrict medians, ptrdiff_t samples) {
  for (ptrdiff_t i = 0; i < samples; i++) {
    const T s = source[i], m = medians[i];
    const T difference = static_cast<T>(m > s ? m - s : s - m);
    const T changed = difference >= threshold ? m : s;
    medians[i] = mask[i] ? s : changed;
  }
}

// The rows of dst in bands as high as the filter likes best, and those in strips as wide; bands
// higher than a row aren't cut into strips.
template <class T, class Filter>
void FilterRows(__QVImage* src, __QVImage* dst, VRect rect, int64_t radius, T threshold,
                Filter& filter) {
  const int planes = QVImageGetNumPlanes(src), transparency = QVImageGetTransparency(src);
  const int width = rect.right - rect.left, height = rect.bottom - rect.top;
  const ptrdiff_t samples = ptrdiff_t{width} * planes;
  const int64_t band = std::min<int64_t>(filter.Band(), height);
  const ptrdiff_t strip = band > 1 ? samples : std::min(filter.Strip(), samples);

  QVImageAccess target(dst, nullptr);
  qv::RowWindow<T> window(src, rect.left - radius, width + 2 * radius, 2 * radius + band, kSource);
  std::vector<const T*> rows(2 * radius + band);
  const ptrdiff_t stride = strip + 2 * radius * planes + 64;
  const bool restores = threshold > 0 || transparency > 0;
  qv::Buffer<T> medians(band * stride), mask(restores ? samples : 0);
  if (transparency > 0) {
    for (ptrdiff_t i = planes - 1; i < samples; i += planes) mask.Get()[i] = 1;
  }
  qv::RowCopier copier(static_cast<size_t>(samples) * height * sizeof(T));

  for (int64_t top = rect.top; top < rect.bottom; top += band) {
    const int64_t count = std::min(band, rect.bottom - top), covered = 2 * radius + count;
    for (int64_t i = 0; i < covered; i++) rows[i] = window.Row(top - radius + i);
    const T* from = nullptr;
    T* to = nullptr;
    for (ptrdiff_t start = 0; start < samples; start += strip) {
      const ptrdiff_t some = std::min(strip, samples - start);
      filter.Medians(rows.data(), some, count, medians.Get(), stride);
      for (int64_t i = 0; i < count; i++) {
        if (start == 0) {
          const int y = static_cast<int>(top + i);
          to = static_cast<T*>(qv::Required(target.WriteRow(y, rect.left, width), kSource));
          from = rows[radius + i] + radius * planes;
        }
        T* found = medians.Get() + i * stride;
        if (restores) {
          Restore(from + start, mask.Get() + start, threshold, found, some);
        }
        copier.Copy(to + start, found, some * sizeof(T));
      }
      for (int64_t i = 0; i < covered; i++) rows[i] += some;
    }
  }
}

// The medians of a part of dst, as histograms need to know of them.
qv::MedianRow RowOf(__QVImage* src, VRect rect, int64_t radius) {
  const VRect bounds = MakeVRect(QVImageGetBounds(src));
  const int planes = QVImageGetNumPlanes(src);
  const int64_t left = rect.left - radius, size = 2 * radius + 1;
  return {radius,
          planes,
          planes - QVImageGetTransparency(src),
          ptrdiff_t{rect.right - rect.left} * planes,
          std::clamp<int64_t>(bounds.left - left, 0, size),
          std::clamp<int64_t>(left + size - bounds.right, 0, size)};
}

}  // namespace

int QVEffectsMedian(__QVImage* src, __QVImage* dst, QVRect rect, int radius) {
  return QVEffectsDustAndScratch(src, dst, rect, radius, 0.0f);
}

int QVEffectsDustAndScratch(__QVImage* src, __QVImage* dst, QVRect rect, int radius,
                            float threshold) {
  if (radius < 1 || threshold >= 1.0f) return QVEffectsCopyImage(src, dst, rect);
  const uint64_t size = 2 * static_cast<uint64_t>(radius) + 1;
  if (!src || !dst || size * size > 0xFFFFFFFF) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown3, [&] {
    return qv::DispatchDepth(QVImageGetDepth(src), [&]<class T>() -> int {
      if constexpr (std::is_floating_point_v<T>) {
        return kQVStatusUnsupported;
      } else {
        if (!qv::HaveSamePixels(src, dst)) return kQVStatusUnsupported;
        const VRect part = MakeVRect(rect).Intersect(MakeVRect(QVImageGetBounds(dst)));
        if (part.IsEmpty()) return kQVStatusSuccess;
        WithFilter<T>(RowOf(src, part, radius), [&](auto filter) {
          FilterRows(src, dst, part, radius, qv::FromUnit<T>(threshold), filter);
        });
        return kQVStatusSuccess;
      }
    });
  });
}
