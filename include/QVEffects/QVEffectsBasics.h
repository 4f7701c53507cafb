// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Copy, fill and invert.
 *
 *  They work on 8-bit, 16-bit and float images of any number of planes. `src` and `dst` have the
 *  same depth and planes and may be the same image. The rectangle needn't lie inside the images:
 *  outside `src` the nearest pixel inside gives the colour, with transparency 0, and what falls
 *  outside `dst` is dropped. A negative width or height counts as 0; an edge past the range of int
 *  is held to it. An empty rectangle writes nothing and returns 0. */
#ifndef QVEFFECTS_QVEFFECTSBASICS_H
#define QVEFFECTS_QVEFFECTSBASICS_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Turns every colour sample s into full scale - s: the bitwise complement at 8 and 16 bits, 1 - s
 *  in float. Transparency is that of `src`.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @return 0; kQVStatusUnsupported for a depth other than 8, 16 and 32 or images that differ in
 *  depth or planes; kQVStatusBadArgument for null or a row that can't be had. */
QVEFFECTS_API int QVEffectsInvert(__QVImage* src, __QVImage* dst, QVRect rect);

/** Fills with one colour. Nothing is read from the image.
 *  @param image what to fill.
 *  @param rect  where.
 *  @param color one float per plane, transparency included, from 0 to 1. At 8 and 16 bits it is
 *               rounded to nearest and held to the range (NaN is 0); float images take it as it is.
 *  @return 0; kQVStatusUnsupported for a depth other than 8, 16 and 32; kQVStatusBadArgument for
 *          null or a row that can't be had. */
QVEFFECTS_API int QVEffectsFillColor(__QVImage* image, QVRect rect, const float* color);

/** Copies a rectangle, transparency included. The whole rectangle is held at once where an image
 *  isn't in memory.
 *  @param src,dst source and destination: the same bytes a pixel.
 *  @param rect    what to copy; it keeps its place.
 *  @return 0; kQVStatusUnsupported for images that differ in bytes a pixel; kQVStatusBadArgument
 *  for null or a rectangle that can't be had. */
QVEFFECTS_API int QVEffectsCopyImage(__QVImage* src, __QVImage* dst, QVRect rect);

#ifdef __cplusplus
}
#endif

#endif
