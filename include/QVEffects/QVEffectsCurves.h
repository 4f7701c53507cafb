// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Curves, which map each level of a sample to a new one.
 *
 *  A set of curves is an array of 256 floats for each colour plane, one plane after the other:
 *  curves[256 * p + l] is what level l / 255 of plane p becomes, on a scale from 0 to 1.
 *  Transparency has no curve. Between levels a curve runs straight.
 *
 *  Where an effect comes to a copy, QVEffectsCopyImage() does it and answers. */
#ifndef QVEFFECTS_QVEFFECTSCURVES_H
#define QVEFFECTS_QVEFFECTSCURVES_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Applies curves: QVEffectsApplyCurvesWithAmount() with amount 1. */
QVEFFECTS_API int QVEffectsApplyCurves(__QVImage* src, __QVImage* dst, QVRect rect,
                                       const float* curves);

/** Applies curves, mixed with the image as it is. Transparency is that of `src`.
 *
 *  A float sample above 1 goes on along the last segment of its curve, one below 0 along the first.
 *  Results are rounded to nearest at 8 and 16 bits and held to the range (NaN is 0); float results
 *  aren't held.
 *  @param src,dst source and destination: 8, 16 or 32 bits, the same depth and planes; may be the
 *                 same image. Outside `src` the nearest pixel inside gives the colour, with
 *                 transparency 0; what falls outside `dst` is dropped.
 *  @param rect    what to work on; see QVEffectsBasics.h for rectangles that aren't inside.
 *  @param curves  256 floats for each colour plane of `dst`.
 *  @param amount  how much of the mapped sample goes into the result, from 0, a plain copy for
 *                 which the curves aren't looked at, to 1; held to that.
 *  @return 0; kQVStatusUnsupported for another depth or images that differ in depth or planes;
 *          kQVStatusBadArgument for null or a row that can't be had. */
QVEFFECTS_API int QVEffectsApplyCurvesWithAmount(__QVImage* src, __QVImage* dst, QVRect rect,
                                                 const float* curves, float amount);

/** Makes curves that change nothing.
 *  @param planes colour planes; nothing is written for 0 or less.
 *  @param curves receives 256 floats for each plane.
 *  @return 0, or kQVStatusBadArgument for null. */
QVEFFECTS_API int QVEffectsInitCurves(int planes, float* curves);

/** Joins curves: the result does at once what `first` and then `second` do.
 *  @param planes colour planes; nothing is written for 0 or less.
 *  @param first  256 floats for each plane, from 0 to 1.
 *  @param second the same.
 *  @param result receives as many; may be `first`, not `second`.
 *  @return 0, or kQVStatusBadArgument for null. */
QVEFFECTS_API int QVEffectsConcatCurves(int planes, const float* first, const float* second,
                                        float* result);

/** Resamples a single curve of any length. Its last entry stays exact.
 *  @param inputLength  entries of `input`, at least 1.
 *  @param input        the curve.
 *  @param outputLength entries of `output`, at least 1: a curve of one entry is the last of
 *  `input`.
 *  @param output       receives the curve; not `input`.
 *  @return 0, or kQVStatusBadArgument for null or a length below 1. */
QVEFFECTS_API int QVEffectsResizeCurve(int inputLength, const float* input, int outputLength,
                                       float* output);

#ifdef __cplusplus
}
#endif

#endif
