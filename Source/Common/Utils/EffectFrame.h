// SPDX-License-Identifier: Apache-2.0
// The frame of an exported effect, from the host's call to the row functions: the sample type and
// the layout of a pixel are settled once, then rows are walked.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "Failure.h"
#include "QVImageAccess.h"
#include "RowCopier.h"
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

/// Bytes worked on at a time beside the row they belong to: they stay in the first cache.
inline constexpr size_t kChunkBytes = 8192;

/// Whether two ranges of bytes have some in common.
inline bool Overlap(const void* a, const void* b, size_t bytes) {
  const auto begin = reinterpret_cast<uintptr_t>(a), other = reinterpret_cast<uintptr_t>(b);
  return begin + bytes > other && other + bytes > begin;
}

/// An image of a walk, and what is done with its rows.
struct Walked {
  enum Access { kRead, kReadIfThere, kWrite, kReadWrite };

  __QVImage* image;
  Access access = kRead;
  const void* fillPixel = nullptr;
};

inline Walked ToRead(__QVImage* image) { return {image}; }
/// The image may be null; a row that can't be had is null.
inline Walked ToReadIfThere(__QVImage* image, const void* fillPixel = nullptr) {
  return {image, Walked::kReadIfThere, fillPixel};
}
inline Walked ToWrite(__QVImage* image) { return {image, Walked::kWrite}; }
inline Walked ToReadWrite(__QVImage* image) { return {image, Walked::kReadWrite}; }

inline void* RowOf(QVImageAccess& access, const Walked& walked, Where where, int y, int left,
                   int width) {
  switch (walked.access) {
    case Walked::kRead: return const_cast<void*>(Required(access.ReadRow(y, left, width), where));
    case Walked::kReadIfThere: return const_cast<void*>(access.ReadRow(y, left, width));
    case Walked::kWrite: return Required(access.WriteRow(y, left, width), where);
    case Walked::kReadWrite: return Required(access.ReadWriteRow(y, left, width), where);
  }
  return nullptr;
}

/// How many bytes a walk writes for a copier to carry out: none behind callbacks, which give
/// buffers, nor where another image of the walk has the same memory.
inline size_t BytesToCopy(std::span<const Walked> images, const QVImageAccess* accesses,
                          const VRect& rect) {
  const QVImageAccess* written = nullptr;
  for (size_t i = 0; i < images.size(); i++) {
    if (images[i].access == Walked::kWrite) written = &accesses[i];
  }
  if (!written || !written->memory) return 0;
  for (size_t i = 0; i < images.size(); i++) {
    if (&accesses[i] != written && accesses[i].memory == written->memory) return 0;
  }
  return static_cast<size_t>(rect.right - rect.left) * (rect.bottom - rect.top) * written->colBytes;
}

/// A row of a walk: its pixels from `left` on, in each of the images.
struct WalkedRow {
  void* const* starts;
  int left, y, pixels;
  RowCopier& copier;  // takes what is made to the row to write; or it is made there

  template <class T>
  T* Of(size_t image) const {
    return static_cast<T*>(starts[image]);
  }
};

/// Walks the rows of a rectangle of several images side by side. Images are opened, and in each row
/// read and written, in their order. What is written outside would be dropped: those pixels aren't
/// worked at all.
/// @param accesses,starts room for each image.
/// @param work            work(WalkedRow). Each pixel depends on its own place alone.
template <class Work>
void WalkRows(Where where, std::span<const Walked> images, QVImageAccess* accesses, void** starts,
              VRect rect, Work&& work) {
  for (size_t i = 0; i < images.size(); i++) {
    accesses[i].SetImage(images[i].image, images[i].fillPixel);
    if (images[i].access >= Walked::kWrite) rect = rect.Intersect(accesses[i].bounds);
  }
  const int width = rect.right - rect.left;
  if (width <= 0 || rect.bottom <= rect.top) return;
  RowCopier copier(BytesToCopy(images, accesses, rect));
  for (int y = rect.top; y < rect.bottom; y++) {
    for (size_t i = 0; i < images.size(); i++) {
      starts[i] = RowOf(accesses[i], images[i], where, y, rect.left, width);
    }
    work(WalkedRow{starts, rect.left, y, width, copier});
  }
}

template <size_t kImages, class Work>
void WalkRows(Where where, const Walked (&images)[kImages], VRect rect, Work&& work) {
  QVImageAccess accesses[kImages];
  void* starts[kImages];
  WalkRows(where, images, accesses, starts, rect, work);
}

/// Takes the pixels of a walk's row from the first image to the second by map(in, out, pixels,
/// layout). Where the two overlap, or the copier streams, `map` works into a chunk; so its pointers
/// never overlap.
template <class T, class Layout, class Map>
void MapRow(const WalkedRow& row, Layout layout, Map& map) {
  const T* from = row.Of<T>(0);
  T* to = row.Of<T>(1);
  const size_t bytes = static_cast<size_t>(row.pixels) * layout.planes * sizeof(T);
  if (!row.copier.Streams() && !Overlap(from, to, bytes)) return map(from, to, row.pixels, layout);

  alignas(64) T chunk[kChunkBytes / sizeof(T)];
  const int most = static_cast<int>(kChunkBytes / sizeof(T)) / layout.planes;  // at least 1
  for (int left = row.pixels; left > 0; left -= most) {
    const int count = std::min(left, most);
    const size_t samples = static_cast<size_t>(count) * layout.planes;
    map(from, chunk, count, layout);
    row.copier.Copy(to, chunk, samples * sizeof(T));
    from += samples;
    to += samples;
  }
}

/// Walks the rows of a rectangle of src and dst, images of the same pixels of type T.
/// @param map see MapRow(); it writes every sample. Each pixel depends on its own samples alone:
///            those that fall outside dst aren't worked at all.
template <class T, class Map>
int MapRows(Where where, __QVImage* src, __QVImage* dst, VRect rect, Map map) {
  DispatchLayout(QVImageGetNumPlanes(dst), QVImageGetTransparency(dst), [&](auto layout) {
    WalkRows(where, {ToRead(src), ToWrite(dst)}, rect,
             [&](const WalkedRow& row) { MapRow<T>(row, layout, map); });
  });
  return kQVStatusSuccess;
}

/// The whole call of an effect that makes each pixel of dst from the same pixel of src.
/// @param map map(in, out, pixels, layout) on samples of the images' type; writes every sample.
template <class Map>
int MapPixels(Where where, __QVImage* src, __QVImage* dst, QVRect rect, Map map) {
  if (!src || !dst) return kQVStatusBadArgument;
  return Guard(where, kQVStatusUnknown, [&] {
    return DispatchDepth(QVImageGetDepth(src), [&]<class T>() -> int {
      if (!HaveSamePixels(src, dst)) return kQVStatusUnsupported;
      return MapRows<T>(where, src, dst, MakeVRect(rect), map);
    });
  });
}

/// The row function that makes each colour sample from the same sample by formula(sample) and takes
/// transparency as it is.
template <class Formula>
auto ColorSamples(Formula formula) {
  return [formula]<class T>(const T* __restrict in, T* __restrict out, int pixels, auto layout) {
    if (layout.transparency == 0) {
      const ptrdiff_t samples = static_cast<ptrdiff_t>(pixels) * layout.planes;
      for (ptrdiff_t i = 0; i < samples; i++) out[i] = formula(in[i]);
      return;
    }
    for (int i = 0; i < pixels; i++, in += layout.planes, out += layout.planes) {
      for (int c = 0; c < layout.colors; c++) out[c] = formula(in[c]);
      out[layout.colors] = in[layout.colors];
    }
  };
}

/// The whole call of an effect that makes each colour sample from the same sample of src and leaves
/// transparency as it is there.
/// @param formula T formula(T) for each sample type.
template <class Formula>
int MapColorSamples(Where where, __QVImage* src, __QVImage* dst, QVRect rect, Formula formula) {
  return MapPixels(where, src, dst, rect, ColorSamples(formula));
}

}  // namespace qv
