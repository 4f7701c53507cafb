// SPDX-License-Identifier: Apache-2.0
// Median, everywhere or where a sample differs enough from it.
#include <QVEffects/QVEffectsBasics.h>
#include <QVEffects/QVEffectsMedian.h>

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

// Up to here a network is faster than histograms.
template <class T>
constexpr int kLargestNetwork = 6;

// Calls f with what finds the medians.
template <class T, int kRadius = 1, class F>
void WithFilter(int64_t radius, int planes, F&& f) {
  if constexpr (kRadius <= kLargestNetwork<T>) {
    using Network = qv::MedianNetwork<T, kRadius>;
    if (radius == kRadius && Network::Takes(planes)) return f(Network(planes));
    return WithFilter<T, kRadius + 1>(radius, planes, f);
  } else {
    const int64_t size = 2 * radius + 1;
    if (size * size <= std::numeric_limits<ushort>::max()) {
      return f(qv::MedianHistogram<T, ushort>(radius, planes));
    }
    return f(qv::MedianHistogram<T, uint32_t>(radius, planes));
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

// Has a row, if there is one, on its way from memory while another one is worked on.
void Fetch(const void* row, ptrdiff_t from, ptrdiff_t bytes) {
  if (!row) return;
  for (ptrdiff_t i = 0; i < bytes; i += 64) {
    __builtin_prefetch(static_cast<const std::byte*>(row) + from + i);
  }
}

// The rows of dst in bands as high as the filter likes best, and those in strips as wide; bands
// higher than a row aren't cut into strips.
template <class T, class Filter>
void FilterRows(__QVImage* src, __QVImage* dst, VRect rect, int64_t radius, T threshold,
                Filter& filter) {
  const int planes = QVImageGetNumPlanes(dst), transparency = QVImageGetTransparency(dst);
  const int width = rect.right - rect.left, height = rect.bottom - rect.top;
  const ptrdiff_t samples = ptrdiff_t{width} * planes;
  const int64_t band = std::min<int64_t>(filter.Band(), height);
  const ptrdiff_t strip = band > 1 ? samples : std::min(filter.Strip(), samples);

  QVImageAccess source(src, nullptr), target(dst, nullptr);
  qv::RowWindow<T> window(src, rect.left - radius, width + 2 * radius, 2 * radius + band, kSource);
  std::vector<const T*> rows(2 * radius + band);
  const ptrdiff_t stride = strip + 2 * radius * planes + 64;
  qv::Buffer<T> medians(band * stride), mask(samples);
  if (transparency > 0) {
    for (ptrdiff_t i = planes - 1; i < samples; i += planes) mask.Get()[i] = 1;
  }
  qv::RowCopier copier(static_cast<size_t>(samples) * height * sizeof(T));

  for (int64_t top = rect.top; top < rect.bottom; top += band) {
    const int64_t count = std::min(band, rect.bottom - top), next = top + count + radius;
    for (int64_t i = 0; i < 2 * radius + count; i++) rows[i] = window.Row(top - radius + i);
    int unused;
    const void* ahead = source.GetAddressInMemory(
        {VRect::Held(next), rect.left, VRect::Held(next + 1), rect.right}, unused);
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
        if (threshold > 0 || transparency > 0) {
          Restore(from + start, mask.Get() + start, threshold, found, some);
        }
        copier.Copy(to + start, found, some * sizeof(T));
      }
      for (const T*& row : rows) row += some;
      Fetch(ahead, start * sizeof(T), some * sizeof(T));
    }
  }
}

template <class T>
int FilterImage(__QVImage* src, __QVImage* dst, VRect rect, int64_t radius, T threshold) {
  rect = rect.Intersect(MakeVRect(QVImageGetBounds(dst)));
  if (rect.IsEmpty()) return kQVStatusSuccess;
  WithFilter<T>(radius, QVImageGetNumPlanes(dst),
                [&](auto filter) { FilterRows(src, dst, rect, radius, threshold, filter); });
  return kQVStatusSuccess;
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
        return FilterImage<T>(src, dst, MakeVRect(rect), radius, qv::FromUnit<T>(threshold));
      }
    });
  });
}
