// SPDX-License-Identifier: Apache-2.0
// Vectors of floats.
#pragma once

#include <QVCore9/QVExport.h>

/// Working storage and dot products. Sums have one order, whatever the processor.
class QVEFFECTS_API QVEffectsDspLib {
 public:
  /// Bytes, 0 at first; null when they can't be had.
  static void* alloc(unsigned long size);

  /// Takes back what alloc() gave, or null.
  static void free(void* p);

  /// The sum of a[i] * b[i], in the order of vDSP_dotpr(); 0 when n isn't positive.
  static float dot(const float* a, const float* b, int n);

  /// Four dot products: of a with b[0] to b[3], into out[0] to out[3]. Each runs in four lanes, as
  /// far as whole groups of four elements go; they are added as (0 + 2) + (1 + 3), and the elements
  /// that remain one by one.
  static void dot4(const float* a, const float** b, float* out, int n);

  /// What the processor can do, a bit each, from 0: MMX, SSE, SSE2, SSE3, SSSE3, SSE4.1, SSE4.2,
  /// SSE4a, AVX, AVX2, AVX-512F, CD, PF, ER, VL, BW, DQ, IFMA, VBMI, FMA3, FMA4, XOP, LZCNT, AES,
  /// RDRAND, BMI1, BMI2, ADX, SHA, PREFETCHWT1 and 64-bit mode. 0 on other processors.
  static unsigned long long GetCPUCaps();
};
