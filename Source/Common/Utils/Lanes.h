// SPDX-License-Identifier: Apache-2.0
// Short vectors by name: the samples of a pixel, for sums that run along a row.
#pragma once

#include <cstdint>
#include <cstring>

#include "EffectFrame.h"

namespace qv {

/// They aren't left to the compiler: sums that wait for each other gain nothing from longer
/// vectors, and it doesn't find these.
template <class T, int kLanes>
struct Lanes {
  typedef T Type __attribute__((vector_size(kLanes * sizeof(T))));

  template <class From>
  static Type Load(const From* samples) {
    typename Lanes<From, kLanes>::Type lanes;
    std::memcpy(&lanes, samples, sizeof lanes);
    return __builtin_convertvector(lanes, Type);
  }
  static void Store(T* samples, Type lanes) { std::memcpy(samples, &lanes, sizeof lanes); }
};

/// How many lanes take a pixel. Of three samples the next pixel's first comes with it; where that
/// is stored, it's overwritten with the next pixel.
template <class Layout>
constexpr int LanesOf(Layout) {
  if constexpr (std::is_same_v<Layout, AnyLayout>) {
    return 1;
  } else {
    return Layout::planes == 3 ? 4 : Layout::planes;
  }
}

/// Calls f(lanes, first) for each group of lanes of a pixel, `lanes` an integral constant and
/// `first` the first sample of the group.
template <class Layout, class F>
void ForLanes(Layout layout, F&& f) {
  constexpr int kLanes = LanesOf(Layout{});
  const int groups = std::is_same_v<Layout, AnyLayout> ? layout.planes : 1;
  for (int first = 0; first < groups; first++) f(std::integral_constant<int, kLanes>(), first);
}

}  // namespace qv
