// SPDX-License-Identifier: Apache-2.0
// Integer pixels of three and four samples to planes of floats and back, eight pixels at a time:
// compilers find these shuffles only in part. The plain loops are those of Strips.h.
#pragma once

#include <immintrin.h>

#include <type_traits>

#include "EffectFrame.h"

namespace qv::detail {

// Vectors are shuffled within halves: pixels 0 to 3 lie in the low, 4 to 7 in the high half.

inline constexpr int kEight = 8;

inline __m128i Part(const void* bytes) {
  return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}
inline __m256i Parts(const void* low, const void* high) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(Part(low)), Part(high), 1);
}
inline void StorePart(void* bytes, __m128i part) {
  _mm_storeu_si128(static_cast<__m128i*>(bytes), part);
}
inline __m128i High(__m256i vector) { return _mm256_extracti128_si256(vector, 1); }

inline __m256i Shuffled(__m256i vector, __m128i by) {
  return _mm256_shuffle_epi8(vector, _mm256_broadcastsi128_si256(by));
}

/// Loads eight pixels; nothing is read past them.
inline void LoadEight(const uchar* row, __m256i (&planes)[3]) {
  const __m256i pixels = Parts(row, row + 8);
  const __m256i red =
      _mm256_setr_epi8(0, -1, -1, -1, 3, -1, -1, -1, 6, -1, -1, -1, 9, -1, -1, -1, 4, -1, -1, -1, 7,
                       -1, -1, -1, 10, -1, -1, -1, 13, -1, -1, -1);
  const __m256i one = _mm256_set1_epi32(1);
  planes[0] = _mm256_shuffle_epi8(pixels, red);
  planes[1] = _mm256_shuffle_epi8(pixels, _mm256_add_epi32(red, one));
  planes[2] = _mm256_shuffle_epi8(pixels, _mm256_add_epi32(red, _mm256_add_epi32(one, one)));
}

inline void LoadEight(const uchar* row, __m256i (&planes)[4]) {
  const __m256i pixels = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(row));
  const __m256i byte = _mm256_set1_epi32(255);
  planes[0] = _mm256_and_si256(pixels, byte);
  planes[1] = _mm256_and_si256(_mm256_srli_epi32(pixels, 8), byte);
  planes[2] = _mm256_and_si256(_mm256_srli_epi32(pixels, 16), byte);
  planes[3] = _mm256_srli_epi32(pixels, 24);
}

// Four pixels in each half, two of them in each vector, 8 bytes a pixel.
inline void SplitEight(__m256i first, __m256i second, __m256i (&planes)[4]) {
  const __m256 a = _mm256_castsi256_ps(first), b = _mm256_castsi256_ps(second);
  const __m256i low = _mm256_castps_si256(_mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)));
  const __m256i high = _mm256_castps_si256(_mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)));
  const __m256i word = _mm256_set1_epi32(65535);
  planes[0] = _mm256_and_si256(low, word);
  planes[1] = _mm256_srli_epi32(low, 16);
  planes[2] = _mm256_and_si256(high, word);
  planes[3] = _mm256_srli_epi32(high, 16);
}

inline void LoadEight(const ushort* row, __m256i (&planes)[3]) {
  // Pixels of 6 bytes become such of 8. The second two of each half are
  // read from 4 bytes before them, to end where the pixels do.
  const __m128i first = _mm_setr_epi8(0, 1, 2, 3, 4, 5, -1, -1, 6, 7, 8, 9, 10, 11, -1, -1);
  const __m128i last = _mm_setr_epi8(4, 5, 6, 7, 8, 9, -1, -1, 10, 11, 12, 13, 14, 15, -1, -1);
  __m256i four[4];
  SplitEight(Shuffled(Parts(row, row + 12), first), Shuffled(Parts(row + 4, row + 16), last), four);
  for (int c = 0; c < 3; c++) planes[c] = four[c];
}

inline void LoadEight(const ushort* row, __m256i (&planes)[4]) {
  SplitEight(Parts(row, row + 16), Parts(row + 8, row + 24), planes);
}

/// Stores eight pixels. Integers above the range must be held to it; those below become 0.
inline void StoreEight(uchar* row, const __m256i (&planes)[3]) {
  const __m128i interleaved = _mm_setr_epi8(0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, -1, -1, -1, -1);
  const __m256i rg = _mm256_packs_epi32(planes[0], planes[1]);
  const __m256i bb = _mm256_packs_epi32(planes[2], planes[2]);
  const __m256i halves = Shuffled(_mm256_packus_epi16(rg, bb), interleaved);
  const __m256i pixels =
      _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
  StorePart(row, _mm256_castsi256_si128(pixels));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(row + 16), High(pixels));
}

inline void StoreEight(uchar* row, const __m256i (&planes)[4]) {
  const __m128i interleaved = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  const __m256i rg = _mm256_packs_epi32(planes[0], planes[1]);
  const __m256i ba = _mm256_packs_epi32(planes[2], planes[3]);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(row),
                      Shuffled(_mm256_packus_epi16(rg, ba), interleaved));
}

struct WidePixels {
  __m256i first, second;  // two pixels of 8 bytes in each half
  WidePixels(__m256i r, __m256i g, __m256i b, __m256i a) {
    const __m256i rb = _mm256_packus_epi32(r, b), ga = _mm256_packus_epi32(g, a);
    const __m256i rg = _mm256_unpacklo_epi16(rb, ga), ba = _mm256_unpackhi_epi16(rb, ga);
    first = _mm256_unpacklo_epi32(rg, ba);
    second = _mm256_unpackhi_epi32(rg, ba);
  }
};

inline void StoreEight(ushort* row, const __m256i (&planes)[4]) {
  const WidePixels pixels(planes[0], planes[1], planes[2], planes[3]);
  StorePart(row, _mm256_castsi256_si128(pixels.first));
  StorePart(row + 8, _mm256_castsi256_si128(pixels.second));
  StorePart(row + 16, High(pixels.first));
  StorePart(row + 24, High(pixels.second));
}

inline void StoreEight(ushort* row, const __m256i (&planes)[3]) {
  const WidePixels pixels(planes[0], planes[1], planes[2], planes[2]);
  const __m128i dense = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1);
  const __m256i first = Shuffled(pixels.first, dense), second = Shuffled(pixels.second, dense);
  // Each part's last bytes are overwritten by the next; the last one has none.
  StorePart(row, _mm256_castsi256_si128(first));
  StorePart(row + 6, _mm256_castsi256_si128(second));
  StorePart(row + 12, High(first));
  const __m128i end = High(second);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(row + 18), end);
  _mm_storeu_si32(row + 22, _mm_srli_si128(end, 8));
}

/// Integer pixels that eights are made of.
template <class T, int kPlanes>
concept InEights = std::is_integral_v<T> && (kPlanes == 3 || kPlanes == 4);

/// Takes a row's pixels into planes of floats, from 0 to 1 or as they are.
/// @return how many were taken: all but the last few.
template <bool kToUnit, class T, int kPlanes, int kPlanePixels>
  requires InEights<T, kPlanes>
int LoadEights(const T* row, int pixels, FixedLayout<kPlanes, 0>, float (*planes)[kPlanePixels]) {
  int i = 0;
  for (; i <= pixels - kEight; i += kEight) {
    __m256i samples[kPlanes];
    LoadEight(row + i * kPlanes, samples);
    for (int c = 0; c < kPlanes; c++) {
      __m256 values = _mm256_cvtepi32_ps(samples[c]);
      if (kToUnit) values = _mm256_mul_ps(values, _mm256_set1_ps(Sample<T>::kToUnit));
      _mm256_store_ps(planes[c] + i, values);
    }
  }
  return i;
}

/// For StoreEight(): NaN and what is far below 0 become the least integer.
template <class T>
__m256i RoundedEight(__m256 values) {
  const __m256 raised = _mm256_add_ps(values, _mm256_set1_ps(0.5f));
  return _mm256_cvttps_epi32(_mm256_min_ps(_mm256_set1_ps(Sample<T>::kMax), raised));
}

/// Stores pixels from planes of floats as Rounded() has them.
/// @return how many were stored: all but the last few.
template <class T, int kPlanes, int kPlanePixels>
  requires InEights<T, kPlanes>
int StoreEights(T* row, int pixels, FixedLayout<kPlanes, 0>, const float (*planes)[kPlanePixels]) {
  int i = 0;
  for (; i <= pixels - kEight; i += kEight) {
    __m256i samples[kPlanes];
    for (int c = 0; c < kPlanes; c++) {
      samples[c] = RoundedEight<T>(_mm256_load_ps(planes[c] + i));
    }
    StoreEight(row + i * kPlanes, samples);
  }
  return i;
}

}  // namespace qv::detail
