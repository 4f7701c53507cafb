// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Measurement, and fills that follow a measure.
 *
 *  A rectangle that is measured needn't lie inside the image: outside, the nearest pixel inside
 *  gives the colour, with transparency 0. An image without transparency counts there like anywhere
 *  else, but no more than 2^26 pixels outside are looked at: a rectangle with more can't be had. A
 *  negative width or height counts as 0. Sums are made in double, pixel by pixel and row by row. */
#ifndef QVEFFECTS_QVEFFECTSMEASURE_H
#define QVEFFECTS_QVEFFECTSMEASURE_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Mean and standard deviation of each colour, and of luma (Rec. 601), over a rectangle. Pixels of
 *  transparency 0 are left out; others count wholly.
 *  @param image      one or three colour planes of 8, 16 or 32 bits, with transparency or without.
 *  @param rect       what to measure.
 *  @param means      four floats: red, green, blue and luma, from 0 to 1. A gray image sets the
 *                    first and leaves 0 in the others. Stays as it is where no pixel counts.
 *  @param deviations the same for the standard deviation of all pixels that count (not estimated
 *                    for a larger whole); 0 where rounding leaves a variance below 0.
 *  @return 0; kQVStatusUnsupported for an image that isn't as above; kQVStatusBadArgument for null
 *          or a row that can't be had, with nothing set. */
QVEFFECTS_API int QVEffectsAnalyzeImage(__QVImage* image, QVRect rect, float* means,
                                        float* deviations);

/** The mean colour of a rectangle, each pixel weighted by a mask and by its transparency.
 *  @param image  up to four colour planes of 8, 16 or 32 bits, with transparency or without.
 *  @param mask   one plane of 8, 16 or 32 bits, of its own depth and bounds, outside which its
 *  edges go on. An inverted mask is read upside down. Null weighs all pixels alike, and so does a
 *  row of the mask that can't be had.
 *  @param rect   what to measure.
 *  @param color  receives one float per colour plane, from 0 to 1; 0 where all weights are 0. May
 *                be null.
 *  @param weight receives the sum of the weights, each from 0 to 1: the number of pixels that this
 *                comes to. May be null.
 *  @return 0; kQVStatusUnsupported for images that aren't as above; kQVStatusBadArgument for a null
 *          image or a row that can't be had, with nothing set. */
QVEFFECTS_API int QVEffectsGetAvgColor(__QVImage* image, __QVImage* mask, QVRect rect, float* color,
                                       float* weight);

/** The standard deviation of each colour sample over the square around it: high at edges and in
 *  texture, near 0 in flat parts: the mean and the mean square are rounded (at 16 bits a flat part
 *  comes out up to about 16). Transparency is that of `src`. Around `src` the colours at its edges
 *  go on, and beyond it the squares at the edges of what `rect` and `radius` cover; what falls
 *  outside `dst` is dropped. One more image of the rectangle and its surroundings is held, of twice
 *  the depth at 8 and 16 bits.
 *  @param src,dst source and destination: the same depth and planes, not the same image.
 *  @param rect    what to work on; within the radius of it there must be a pixel of `src`.
 *  @param radius  pixels on each side of the middle one; 0 or less is a square of one pixel.
 *  @return 0; kQVStatusUnsupported for a depth other than 8, 16 and 32 or images that differ in
 *          depth or planes; kQVStatusBadArgument for null or a row that can't be had; the statuses
 *          of QVEffectsBoxBlur() and of QVImageCreateWithParams2(); kQVStatusUnknown. */
QVEFFECTS_API int QVEffectsVariance(__QVImage* src, __QVImage* dst, QVRect rect, int radius);

/** A colour that stands for a number: for marks, labels and curves that must be told apart. 0 to 11
 *  go round the circle of hues, 12 to 31 are a palette.
 *  @param index 0 to 31.
 *  @param rgb   receives red, green and blue, from 0 to 1.
 *  @return 0; kQVStatusBadArgument for null, or for another index, with black in `rgb`. */
QVEFFECTS_API int QVEffectsGetColorForIndex(unsigned index, float* rgb);

/** Fills with a mix of two colours, which a mask tells at each pixel: where it is 1 with the first,
 *  where it is 0 with the second. Nothing is read from the image.
 *  @param dst    what to fill: 8, 16 or 32 bits; under a mask at most six planes.
 *  @param rect   where; what falls outside `dst` is dropped.
 *  @param mask   one plane of 8, 16 or 32 bits, of its own depth and bounds, outside which its
 *  edges go on; may be `dst`. An inverted mask is read upside down. Null fills with the first
 *  colour, as QVEffectsFillColor() does; so does a row of the mask that can't be had.
 *  @param color1 one float per plane of `dst`, transparency included, from 0 to 1. Results are
 *                rounded to nearest at 8 and 16 bits and held to the range (NaN is 0).
 *  @param color2 the same. Null mixes with the first colour at transparency 0.
 *  @return 0; kQVStatusUnsupportedOlder for a mask that hasn't one plane; kQVStatusUnsupported for
 *          images that aren't as above; kQVStatusBadArgument for a null image or first colour, or a
 *          row that can't be had. */
QVEFFECTS_API int QVEffectsFillGradient(__QVImage* dst, QVRect rect, __QVImage* mask,
                                        const float* color1, const float* color2);

#ifdef __cplusplus
}
#endif

#endif
