// SPDX-License-Identifier: Apache-2.0
/** @file
 *  The one Accelerate call that QVEffects makes. It is part of libQVEffects, which is built for
 *  each CPU level. */
#ifndef QVCORE9_ACCELERATE_H
#define QVCORE9_ACCELERATE_H

#include <QVCore9/QVExport.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Distance between neighbouring elements, in elements. */
typedef long vDSP_Stride;
/** Number of elements. */
typedef unsigned long vDSP_Length;

/** Dot product in single precision.
 *
 *  Element i goes to running sum i modulo 16; the sixteen sums are then added in a fixed tree (i
 *  and i + 8, then i and i + 4, i + 2, i + 1). The result is the same on every processor.
 *  @param a,strideA first vector.
 *  @param b,strideB second vector.
 *  @param result    receives the sum; 0 when count is 0.
 *  @param count     elements in each vector. */
QVEFFECTS_API void vDSP_dotpr(const float* a, vDSP_Stride strideA, const float* b,
                              vDSP_Stride strideB, float* result, vDSP_Length count);

#ifdef __cplusplus
}
#endif

#endif
