// SPDX-License-Identifier: Apache-2.0
// Effects on single samples by tables that hold the result for every sample there is.
#pragma once

#include <bit>
#include <numeric>

#include "Buffer.h"
#include "EffectFrame.h"

namespace qv {

/// A row function that maps colour samples, each plane by a table of its own or all by one, and
/// takes transparency as it is.
template <class T>
class LookUp {
 public:
  static constexpr int kSamples = static_cast<int>(Sample<T>::kMax) + 1;

  /// @param tables one, or the number of colour planes.
  /// @param make   make(i, table) fills table i.
  template <class Make>
  LookUp(int tables, Make make)
      : mTables(int64_t{tables} * kSamples), mStride(tables == 1 ? 0 : kSamples) {
    for (int i = 0; i < tables; i++) make(i, mTables.Get() + ptrdiff_t{i} * kSamples);
  }

  template <class Layout>
  void operator()(const T* __restrict in, T* __restrict out, int pixels, Layout layout) const {
    if constexpr (!std::is_same_v<Layout, AnyLayout>) {
      // Samples come in by words: the loads of single ones would compete with those of the tables.
      constexpr int kWord = sizeof(uint64_t) / sizeof(T);
      constexpr int kGroup = std::lcm(kWord, Layout::planes);
      for (; pixels >= kGroup / Layout::planes; pixels -= kGroup / Layout::planes) {
        for (int at = 0; at < kGroup; at += kWord) {
          uint64_t word;
          std::memcpy(&word, in + at, sizeof word);
          for (int i = 0; i < kWord; i++) {
            const int place = std::endian::native == std::endian::little ? i : kWord - 1 - i;
            const auto sample = static_cast<T>(word >> (8 * sizeof(T) * place));
            out[at + i] = Mapped(sample, (at + i) % Layout::planes, layout);
          }
        }
        in += kGroup;
        out += kGroup;
      }
    }
    for (; pixels > 0; pixels--, in += layout.planes, out += layout.planes) {
      for (int c = 0; c < layout.planes; c++) out[c] = Mapped(in[c], c, layout);
    }
  }

 private:
  template <class Layout>
  T Mapped(T sample, int plane, Layout layout) const {
    return plane < layout.colors ? mTables.Get()[plane * mStride + sample] : sample;
  }

  Buffer<T> mTables;
  ptrdiff_t mStride;
};

/// Whether so many tables take less time than they save: those of 16 bits, where the rectangle is
/// large.
template <class T>
bool IsWorthTables(__QVImage* dst, VRect rect, int tables) {
  constexpr int64_t kPixels = 4 * 65536;
  rect = rect.Intersect(MakeVRect(QVImageGetBounds(dst)));
  const int64_t pixels = (int64_t{rect.right} - rect.left) * (int64_t{rect.bottom} - rect.top);
  return sizeof(T) == 1 || (sizeof(T) == 2 && tables <= 4 && pixels >= kPixels);
}

}  // namespace qv
