// SPDX-License-Identifier: Apache-2.0
// Rows worked in strips: a few hundred pixels in planar floats, loaded from any depth, taken
// through stages and stored to any depth. Forms of an effect then add up instead of multiplying.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "EffectFrame.h"
#ifdef __AVX2__
#include "StripsAvx2.h"
#endif

namespace qv {

inline constexpr int kStripPixels = 256;
/// Colour samples and transparency of a pixel that strips can hold.
inline constexpr int kStripPlanes = 6;

/// Planes of floats, cleared at first.
struct Strip {
  alignas(64) float planes[kStripPlanes][kStripPixels] = {};

  float* operator[](int plane) { return planes[plane]; }
  const float* operator[](int plane) const { return planes[plane]; }
};

/// Stages may run over whole vectors: past `pixels` they compute what nobody stores.
inline int WholeVectors(int pixels) { return (pixels + 15) / 16 * 16; }

/// Calls f(first, count) for each strip of so many pixels or samples.
template <class F>
void EachStrip(int64_t pixels, F&& f) {
  for (int64_t x = 0; x < pixels; x += kStripPixels) {
    f(x, static_cast<int>(std::min<int64_t>(pixels - x, kStripPixels)));
  }
}

/// Whether strips can hold the image's pixels. True of null, which has none.
inline bool FitsPlanes(__QVImage* image) {
  return !image || (IsPacked(image) && QVImageGetNumPlanes(image) <= kStripPlanes);
}

/// Loads pixels as floats from 0 to 1, each plane into the strip's plane of its number.
using LoadStrip = void (*)(const void* row, int planes, int pixels, Strip& strip);

namespace detail {

// A pixel as one integer, where there is one of its size: whole pixels are then loaded, shifted and
// masked, instead of samples picked from every other place. The first sample lies in the low bits.
template <class T>
void PixelWord(AnyLayout) {}

template <class T, int kPlanes, int kTransparency>
constexpr auto PixelWord(FixedLayout<kPlanes, kTransparency>) {
  constexpr bool isLittle = std::endian::native == std::endian::little;
  if constexpr (!isLittle || std::is_floating_point_v<T> || kPlanes % 2 == 1 ||
                kPlanes * sizeof(T) > sizeof(uint64_t)) {
    return;
  } else if constexpr (kPlanes * sizeof(T) == 2) {
    return uint16_t{};
  } else if constexpr (kPlanes * sizeof(T) == 4) {
    return uint32_t{};
  } else {
    return uint64_t{};
  }
}

// How many pixels vector code of our own takes first: none where there is none for the layout.
template <bool kToUnit, class T, class Layout, int kPlanePixels>
int LoadEights(const T*, int, Layout, float (*)[kPlanePixels]) {
  return 0;
}
template <class T, class Layout, int kPlanePixels>
int StoreEights(T*, int, Layout, const float (*)[kPlanePixels]) {
  return 0;
}

template <bool kToUnit, class T, class Layout>
void Load(const T* __restrict row, int pixels, Layout layout, Strip& strip) {
  using Word = decltype(PixelWord<T>(layout));
  const auto convert = [](T sample) {
    return kToUnit ? ToUnit(sample) : static_cast<float>(sample);
  };
  for (int i = LoadEights<kToUnit>(row, pixels, layout, strip.planes); i < pixels; i++) {
    if constexpr (std::is_void_v<Word>) {
      for (int c = 0; c < layout.planes; c++) strip[c][i] = convert(row[i * layout.planes + c]);
    } else {
      Word word;
      std::memcpy(&word, row + i * layout.planes, sizeof word);
      for (int c = 0; c < layout.planes; c++) {
        strip[c][i] = convert(static_cast<T>(word >> (8 * sizeof(T) * c)));
      }
    }
  }
}

template <class T, class Layout>
void Store(T* __restrict row, int pixels, Layout layout, const Strip& strip) {
  using Word = decltype(PixelWord<T>(layout));
  for (int i = StoreEights(row, pixels, layout, strip.planes); i < pixels; i++) {
    if constexpr (std::is_void_v<Word>) {
      for (int c = 0; c < layout.planes; c++) row[i * layout.planes + c] = Rounded<T>(strip[c][i]);
    } else {
      Word word = 0;
      for (int c = 0; c < layout.planes; c++) {
        word |= static_cast<Word>(Word{Rounded<T>(strip[c][i])} << (8 * sizeof(T) * c));
      }
      std::memcpy(row + i * layout.planes, &word, sizeof word);
    }
  }
}

// Calls f with a layout of so many planes, all treated alike.
template <class F>
void WithPlanes(int planes, F&& f) {
  switch (planes) {
    case 1: return f(FixedLayout<1, 0>());
    case 2: return f(FixedLayout<2, 0>());
    case 3: return f(FixedLayout<3, 0>());
    case 4: return f(FixedLayout<4, 0>());
    default: return f(AnyLayout{planes, 0, planes});
  }
}

}  // namespace detail

template <class T>
void LoadSamples(const void* row, int planes, int pixels, Strip& strip) {
  detail::WithPlanes(planes, [&](auto layout) {
    detail::Load<true>(static_cast<const T*>(row), pixels, layout, strip);
  });
}

/// Loads pixels as floats on the samples' own scale.
template <class T>
void LoadUnscaled(const void* row, int planes, int pixels, Strip& strip) {
  detail::WithPlanes(planes, [&](auto layout) {
    detail::Load<false>(static_cast<const T*>(row), pixels, layout, strip);
  });
}

/// Stores pixels from values on the scale of the sample: an integer sample is the truncation of
/// value + 0.5, held to the range; a float the value.
template <class T>
void StoreSamples(void* row, int planes, int pixels, const Strip& strip) {
  detail::WithPlanes(
      planes, [&](auto layout) { detail::Store(static_cast<T*>(row), pixels, layout, strip); });
}

/// The same by a copier: what goes around the caches is stored beside them first.
template <class T>
void StoreSamples(RowCopier& copier, void* row, int planes, int pixels, const Strip& strip) {
  if (!copier.Streams()) return StoreSamples<T>(row, planes, pixels, strip);
  alignas(64) T samples[kStripPixels * kStripPlanes];
  StoreSamples<T>(samples, planes, pixels, strip);
  copier.Copy(row, samples, sizeof(T) * pixels * planes);
}

/// Gives pixels the transparency of base.
template <class T, class Layout>
void KeepTransparency(const T* __restrict base, T* __restrict out, int pixels, Layout layout) {
  if (layout.transparency == 0) return;
  using Word = decltype(detail::PixelWord<T>(layout));
  if constexpr (std::is_void_v<Word>) {
    for (int64_t i = layout.colors; i < int64_t{pixels} * layout.planes; i += layout.planes) {
      out[i] = base[i];
    }
  } else {
    constexpr Word kColors = static_cast<Word>(-1) >> (8 * sizeof(T));
    for (int64_t i = 0; i < int64_t{pixels} * layout.planes; i += layout.planes) {
      Word from, to;
      std::memcpy(&from, base + i, sizeof from);
      std::memcpy(&to, out + i, sizeof to);
      to = static_cast<Word>((to & kColors) | (from & ~kColors));
      std::memcpy(out + i, &to, sizeof to);
    }
  }
}

}  // namespace qv
