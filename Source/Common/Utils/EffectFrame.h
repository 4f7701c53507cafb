// SPDX-License-Identifier: Apache-2.0
// The frame of an exported effect, from the host's call to the row functions: the sample type and
// the layout of a pixel are settled once, then rows are walked.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Failure.h"
#include "QVImageAccess.h"
#include "Samples.h"

namespace qv {

/// Calls f<T>() with the sample type of a depth in bits, and returns its status.
template <class F>
int DispatchDepth(int depth, F&& f) {
  switch (depth) {
    case 8: return f.template operator()<uchar>();
    case 16: return f.template operator()<ushort>();
    case 32: return f.template operator()<float>();
    default: return kQVStatusUnsupported;
  }
}

/// How the samples of a pixel lie: colour samples first, then the transparency sample, if any.
/// Known to the compiler, so that loops over pixels are vectorised.
template <int kPlanes, int kTransparency>
struct FixedLayout {
  static constexpr int planes = kPlanes;
  static constexpr int transparency = kTransparency;
  static constexpr int colors = kPlanes - kTransparency;
};

/// The same for any other number of planes.
struct AnyLayout {
  int planes;
  int transparency;
  int colors;
};

/// Calls f(layout) and returns what it returns.
template <class F>
auto DispatchLayout(int planes, int transparency, F&& f) {
  switch (planes * 2 + transparency) {
    case 1 * 2 + 0: return f(FixedLayout<1, 0>());
    case 2 * 2 + 1: return f(FixedLayout<2, 1>());
    case 3 * 2 + 0: return f(FixedLayout<3, 0>());
    case 4 * 2 + 1: return f(FixedLayout<4, 1>());
    default: return f(AnyLayout{planes, transparency, planes - transparency});
  }
}

/// The same for effects that work on the first three planes: RGB in practice.
template <class F>
auto DispatchRGBLayout(int planes, int transparency, F&& f) {
  switch (planes * 2 + transparency) {
    case 3 * 2 + 0: return f(FixedLayout<3, 0>());
    case 4 * 2 + 1: return f(FixedLayout<4, 1>());
    default: return f(AnyLayout{planes, transparency, planes - transparency});
  }
}

/// Whether the samples of a pixel lie side by side, and so do pixels, and there are no more of them
/// than the core library makes. One of the host's own might not promise it.
inline bool IsPacked(__QVImage* image) {
  constexpr int kMostPlanes = 64;
  const int planes = QVImageGetNumPlanes(image);
  return planes > 0 && planes <= kMostPlanes &&
         QVImageGetColBytes(image) == planes * QVImageGetPlaneBytes(image);
}

/// Whether pixels of one image can be read and written as those of the other.
inline bool HaveSamePixels(__QVImage* a, __QVImage* b) {
  return QVImageGetDepth(a) == QVImageGetDepth(b) &&
         QVImageGetNumPlanes(a) == QVImageGetNumPlanes(b) && IsPacked(a) && IsPacked(b);
}

/// Bytes worked on at a time where src and dst are one row: they stay in the first cache.
inline constexpr size_t kChunkBytes = 8192;

/// Whether chunks can hold a pixel, which a core library of the host's own might not promise.
inline bool FitsChunk(__QVImage* image) {
  return QVImageGetColBytes(image) > 0 &&
         QVImageGetColBytes(image) <= static_cast<int>(kChunkBytes);
}

/// Whether two ranges of bytes have some in common.
inline bool Overlap(const void* a, const void* b, size_t bytes) {
  const auto begin = reinterpret_cast<uintptr_t>(a), other = reinterpret_cast<uintptr_t>(b);
  return begin + bytes > other && other + bytes > begin;
}

/// Takes the pixels of a row from `from` to `to` by row(in, out, pixels, layout). Where the two
/// overlap, `row` works into a chunk, so that its pointers never do.
template <class T, class Layout, class Row>
void MapRow(const T* from, T* to, int pixels, Layout layout, Row& row) {
  const size_t bytes = static_cast<size_t>(pixels) * layout.planes * sizeof(T);
  if (!Overlap(from, to, bytes)) return row(from, to, pixels, layout);

  alignas(64) T chunk[kChunkBytes / sizeof(T)];
  const int most = static_cast<int>(kChunkBytes / sizeof(T)) / layout.planes;  // at least 1
  for (int left = pixels; left > 0; left -= most) {
    const int count = std::min(left, most);
    const size_t samples = static_cast<size_t>(count) * layout.planes;
    row(from, chunk, count, layout);
    std::memcpy(to, chunk, samples * sizeof(T));
    from += samples;
    to += samples;
  }
}

/// Walks the rows of a rectangle of src and dst, images of the same pixels of type T.
/// @param row see MapRow(); it writes every sample. Each pixel depends on its own samples alone:
///            those that fall outside dst aren't worked at all.
template <class T, class Row>
int MapRows(Where where, __QVImage* src, __QVImage* dst, VRect rect, Row row) {
  const int planes = QVImageGetNumPlanes(dst);
  const int transparency = QVImageGetTransparency(dst);
  QVImageAccess source(src, nullptr), target(dst, nullptr);
  // What is written outside would be dropped.
  rect = rect.Intersect(target.bounds);
  const int width = rect.right - rect.left;
  if (width == 0) return kQVStatusSuccess;
  DispatchLayout(planes, transparency, [&](auto layout) {
    for (int y = rect.top; y < rect.bottom; y++) {
      const void* from = Required(source.ReadRow(y, rect.left, width), where);
      void* to = Required(target.WriteRow(y, rect.left, width), where);
      MapRow(static_cast<const T*>(from), static_cast<T*>(to), width, layout, row);
    }
  });
  return kQVStatusSuccess;
}

/// The whole call of an effect that makes each pixel of dst from the same pixel of src.
/// @param row row(in, out, pixels, layout) on samples of the images' type; writes every sample.
template <class Row>
int MapPixels(Where where, __QVImage* src, __QVImage* dst, QVRect rect, Row row) {
  if (!src || !dst) return kQVStatusBadArgument;
  return Guard(where, kQVStatusUnknown, [&] {
    return DispatchDepth(QVImageGetDepth(src), [&]<class T>() -> int {
      if (!HaveSamePixels(src, dst) || !FitsChunk(dst)) return kQVStatusUnsupported;
      return MapRows<T>(where, src, dst, MakeVRect(rect), row);
    });
  });
}

/// The whole call of an effect that makes each colour sample from the same sample of src and leaves
/// transparency as it is there.
/// @param formula T formula(T) for each sample type.
template <class Formula>
int MapColorSamples(Where where, __QVImage* src, __QVImage* dst, QVRect rect, Formula formula) {
  return MapPixels(
      where, src, dst, rect,
      [formula]<class T>(const T* __restrict in, T* __restrict out, int pixels, auto layout) {
    if (layout.transparency == 0) {
      const ptrdiff_t samples = static_cast<ptrdiff_t>(pixels) * layout.planes;
      for (ptrdiff_t i = 0; i < samples; i++) out[i] = formula(in[i]);
      return;
    }
    for (int i = 0; i < pixels; i++, in += layout.planes, out += layout.planes) {
      for (int c = 0; c < layout.colors; c++) out[c] = formula(in[c]);
      out[layout.colors] = in[layout.colors];
    }
  });
}

}  // namespace qv
