// SPDX-License-Identifier: Apache-2.0
// The median of a small square window as a network of minima and maxima: no branch depends on a
// sample, and loops along rows of samples are vectorised.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>

#include "Buffer.h"

// Of what is inlined into one loop body. Checks for undefined behaviour would make it grow beyond
// what compilers can bear.
#define QV_UNROLLED __attribute__((always_inline, no_sanitize("undefined")))

namespace qv {

// ---- Sorted lists of samples. Their loops are unrolled, so that what nobody reads isn't computed.

/// Its destructor has it returned in memory: a short list that returns packed into registers keeps
/// loops from being vectorised.
template <class T, std::size_t kSize>
struct List : std::array<T, kSize> {
  ~List() {}
};

/// The list of at(0), at(1) and so on, which get their places as constants.
template <class T, std::size_t kSize, class At>
QV_UNROLLED inline List<T, kSize> ListOf(At at) {
  return [&]<std::size_t... i>(std::index_sequence<i...>) QV_UNROLLED {
    return List<T, kSize>{at(std::integral_constant<std::size_t, i>())...};
  }(std::make_index_sequence<kSize>());
}

template <std::size_t kFirst, class T, std::size_t kSize>
QV_UNROLLED inline auto EverySecond(const List<T, kSize>& list) {
  return ListOf<T, (kSize + 1 - kFirst) / 2>([&](auto i)
                                                 QV_UNROLLED { return list[kFirst + 2 * i]; });
}

/// Batcher's odd-even merge.
template <class T, std::size_t kA, std::size_t kB>
QV_UNROLLED inline List<T, kA + kB> Merge(const List<T, kA>& a, const List<T, kB>& b) {
  if constexpr (kA == 0) {
    return b;
  } else if constexpr (kB == 0) {
    return a;
  } else if constexpr (kA == 1 && kB == 1) {
    return List<T, 2>{std::min(a[0], b[0]), std::max(a[0], b[0])};
  } else {
    const auto even = Merge(EverySecond<0>(a), EverySecond<0>(b));
    const auto odd = Merge(EverySecond<1>(a), EverySecond<1>(b));
    return ListOf<T, kA + kB>([&](auto i) QV_UNROLLED {
      constexpr std::size_t k = (i + 1) / 2;  // even[k] and odd[k - 1] are put in order
      if constexpr (k == 0 || k > odd.size()) {
        return even[k];
      } else if constexpr (k == even.size()) {
        return odd[k - 1];
      } else {
        return i % 2 == 1 ? std::min(even[k], odd[k - 1]) : std::max(even[k], odd[k - 1]);
      }
    });
  }
}

/// The sample of a rank among those of both lists. Any rank + 1 samples have one that is as large;
/// of the ways to take so many from the starts of the lists, one has none larger.
template <std::size_t kRank, class T, std::size_t kA, std::size_t kB>
QV_UNROLLED inline T Select(const List<T, kA>& a, const List<T, kB>& b) {
  constexpr std::size_t kLeast = kRank + 1 > kB ? kRank + 1 - kB : 0;  // taken from a
  constexpr std::size_t kMost = std::min(kA, kRank + 1);
  const auto largest = ListOf<T, kMost - kLeast + 1>([&](auto i) QV_UNROLLED {
    constexpr std::size_t fromA = kLeast + i, fromB = kRank + 1 - fromA;
    if constexpr (fromA == 0) {
      return b[fromB - 1];
    } else if constexpr (fromB == 0) {
      return a[fromA - 1];
    } else {
      return std::max(a[fromA - 1], b[fromB - 1]);
    }
  });
  return [&]<std::size_t... i>(std::index_sequence<i...>) QV_UNROLLED {
    T least = largest[0];
    ((least = std::min(least, largest[i])), ...);
    return least;
  }(std::make_index_sequence<largest.size()>());
}

// ---- Windows

/// Strips of a row are taken through these stages: the columns of the window are sorted, then
/// neighbouring columns are merged by two, by four and so on, and at last the median is picked.
/// What is made for one pixel serves the pixels beside it, shifted.
template <class T, int kRadius>
class MedianNetwork {
 public:
  /// Whether strips can hold windows of pixels of so many samples.
  static bool Takes(int planes) { return 2 * kRadius * planes <= kSpare; }

  /// @param planes samples from one pixel to the next; see Takes().
  explicit MedianNetwork(int planes) : mPlanes(planes), mLists(kLists * kStride) {}

  /// Rows and samples of a row that are asked for at once.
  static int64_t Band() { return 1; }
  ptrdiff_t Strip() const {
    constexpr ptrdiff_t kLine = 64 / sizeof(T);  // whole cache lines are copied best
    return (kStrip - Margin()) / kLine * kLine;
  }

  /// Medians of a part of a row.
  /// @param rows    those that the window covers, from where it starts at the first sample.
  /// @param samples at most Strip(); of `rows`, 63 more than their windows cover are read.
  /// @param out     room for 2 * radius * planes + 63 more, which are left undefined.
  void Medians(const T* const* rows, ptrdiff_t samples, int64_t, T* out, ptrdiff_t) {
    const ptrdiff_t blocks = (samples + Margin() + 63) / 64;
    SortColumns(rows, blocks, mLists.Get());
    MergeColumns<2>(blocks);
    PickMedians(mLists.Get(), blocks, out);
  }

 private:
  ptrdiff_t Margin() const { return 2 * kRadius * mPlanes; }

  static constexpr int kHeight = 2 * kRadius + 1;
  static constexpr int kHalf = kHeight * kHeight / 2;
  static constexpr int kWide = std::bit_floor(static_cast<unsigned>(kHeight));
  static constexpr int kLists = (kWide - 1) * kHeight;

  // Samples of a strip, and of what may be read past it.
  static constexpr ptrdiff_t kStrip = 640 / sizeof(T), kSpare = kStrip / 2;
  static constexpr ptrdiff_t kStride = kStrip + kSpare;

  // The columns merged by `columns`, a power of two: so many rows of sorted samples.
  static constexpr ptrdiff_t ListsOf(int columns) { return (columns - 1) * kHeight * kStride; }

  // The sorted samples of so many columns from a place on.
  template <int kColumns>
  QV_UNROLLED static inline auto Load(const T* lists, ptrdiff_t i, ptrdiff_t planes) {
    if constexpr (std::has_single_bit(static_cast<unsigned>(kColumns)) && kColumns < kWide) {
      return ListOf<T, kColumns * kHeight>(
          [&](auto k) QV_UNROLLED { return lists[ListsOf(kColumns) + k * kStride + i]; });
    } else {
      constexpr int kLeft = std::bit_ceil(static_cast<unsigned>(kColumns)) / 2;
      return Merge(Load<kLeft>(lists, i, planes),
                   Load<kColumns - kLeft>(lists, i + kLeft * planes, planes));
    }
  }

  template <std::size_t kSize>
  QV_UNROLLED static inline void Store(const List<T, kSize>& list, T* lists, ptrdiff_t i) {
    [&]<std::size_t... k>(std::index_sequence<k...>) QV_UNROLLED {
      ((lists[k * kStride + i] = list[k]), ...);
    }(std::make_index_sequence<kSize>());
  }

  template <int kFirst, int kCount>
  QV_UNROLLED static inline auto Sorted(const List<T, kHeight>& column) {
    if constexpr (kCount == 1) {
      return List<T, 1>{column[kFirst]};
    } else {
      return Merge(Sorted<kFirst, kCount / 2>(column),
                   Sorted<kFirst + kCount / 2, kCount - kCount / 2>(column));
    }
  }

  static void SortColumns(const T* const* rows, ptrdiff_t blocks, T* __restrict out) {
    std::array<const T*, kHeight> at;
    std::copy_n(rows, kHeight, at.begin());
    for (ptrdiff_t i = 0; i < blocks * 64; i++) {
      const auto column = ListOf<T, kHeight>([&](auto k) QV_UNROLLED { return at[k][i]; });
      Store(Sorted<0, kHeight>(column), out, i);
    }
  }

  template <int kColumns>
  void MergeColumns(ptrdiff_t blocks) {
    if constexpr (kColumns < kWide) {
      MergeRows<kColumns>(mLists.Get(), mPlanes, blocks, mLists.Get() + ListsOf(kColumns));
      MergeColumns<2 * kColumns>(blocks);
    }
  }

  template <int kColumns>
  static void MergeRows(const T* __restrict lists, ptrdiff_t planes, ptrdiff_t blocks,
                        T* __restrict out) {
    constexpr int kLeft = kColumns / 2;
    for (ptrdiff_t i = 0; i < blocks * 64; i++) {
      Store(Merge(Load<kLeft>(lists, i, planes), Load<kLeft>(lists, i + kLeft * planes, planes)),
            out, i);
    }
  }

  void PickMedians(const T* __restrict lists, ptrdiff_t blocks, T* __restrict out) const {
    // More than half of the window is above the first of these, or below the last: not the median.
    constexpr int kBelow = kWide * kHeight - 1 - kHalf;
    const ptrdiff_t planes = mPlanes;
    for (ptrdiff_t i = 0; i < blocks * 64; i++) {
      const auto wide = Load<kWide>(lists, i, planes);
      const auto middle =
          ListOf<T, wide.size() - 2 * kBelow>([&](auto k) QV_UNROLLED { return wide[k + kBelow]; });
      out[i] =
          Select<kHalf - kBelow>(middle, Load<kHeight - kWide>(lists, i + kWide * planes, planes));
    }
  }

  int mPlanes;
  Buffer<T> mLists;
};

}  // namespace qv
