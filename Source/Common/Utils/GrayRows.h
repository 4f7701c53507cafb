// SPDX-License-Identifier: Apache-2.0
// Rows of colours to grays without strips: a formula of a few operations costs less than the way
// into strips and back.
#pragma once

#include "ColorStrips.h"

namespace qv {
namespace detail {

template <class T, class Layout, class Formula>
int GrayEights(const T*, T*, int, Layout, const Formula&) {
  return 0;
}

#ifdef __AVX2__
template <class T, int kPlanes, int kTransparency, class Formula>
  requires InEights<T, kPlanes>
int GrayEights(const T* in, T* out, int pixels, FixedLayout<kPlanes, kTransparency>,
               const Formula& formula) {
  int i = 0;
  for (; i <= pixels - kEight; i += kEight) {
    __m256i samples[kPlanes];
    LoadEight(in + i * kPlanes, samples);
    const __m256 gray = formula(_mm256_cvtepi32_ps(samples[0]), _mm256_cvtepi32_ps(samples[1]),
                                _mm256_cvtepi32_ps(samples[2]));
    samples[0] = samples[1] = samples[2] = RoundedEight<T>(gray);
    StoreEight(out + i * kPlanes, samples);
  }
  return i;
}
#endif

}  // namespace detail

/// The row function, see MapRows(), that makes the first three samples of a pixel its gray and
/// takes the others as they are.
/// @param formula formula(r, g, b) on the samples' own scale, of floats or vectors of them.
template <class Formula>
auto GrayRows(Formula formula) {
  return [formula]<class T>(const T* __restrict in, T* __restrict out, int pixels, auto layout) {
    const auto at = [](T sample) { return static_cast<float>(sample); };
    for (int i = detail::GrayEights(in, out, pixels, layout, formula); i < pixels; i++) {
      const T* from = in + int64_t{i} * layout.planes;
      T* to = out + int64_t{i} * layout.planes;
      to[0] = to[1] = to[2] = Rounded<T>(formula(at(from[0]), at(from[1]), at(from[2])));
      for (int c = 3; c < layout.planes; c++) to[c] = from[c];
    }
  };
}

/// Makes images gray: src and dst as for WalkColors(), of three colour samples or more.
template <class T, class Formula>
void WalkGrays(Where where, __QVImage* src, __QVImage* dst, VRect rect, FurtherPlanes further,
               Formula formula) {
  const int planes = QVImageGetNumPlanes(dst);
  if (planes == 3 || further == FurtherPlanes::kOfSrc) {
    DispatchRGBLayout(planes, QVImageGetTransparency(dst), [&](auto layout) {
      auto map = GrayRows(formula);
      WalkRows(where, {ToRead(src), ToWrite(dst)}, rect,
               [&](const WalkedRow& row) { MapRow<T>(row, layout, map); });
    });
    return;
  }
  WalkColors<T>(where, src, dst, rect, further, [&](Strip& strip, Stretch at) {
    const int count = WholeVectors(at.pixels);
    float* __restrict r = strip[0];
    float* __restrict g = strip[1];
    float* __restrict b = strip[2];
    for (int i = 0; i < count; i++) r[i] = g[i] = b[i] = formula(r[i], g[i], b[i]);
  });
}

}  // namespace qv
