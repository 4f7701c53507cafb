// SPDX-License-Identifier: Apache-2.0
/** @file
 *  The median of each sample's neighbours, everywhere or where specks are.
 *
 *  The neighbours of a sample are those of its plane in the square of 2 * radius + 1 pixels a side
 *  around it, itself included; their median is the value in the middle when they are sorted. It is
 *  exact. Around the image its edges go on, around `rect` the image itself does. Transparency stays
 *  as it is.
 *
 *  `src` and `dst` have 8 or 16 bits a sample and the same number of planes, whatever that is; they
 *  may be the same image. Memory is taken for the rows that the square covers, each 2 * radius
 *  pixels longer than `rect`, and at 8 bits from a radius of 6 on for 128 more; then for 1 MB of
 *  counts, or at 8 bits for 5 KB times radius times planes where that is more. */
#ifndef QVEFFECTS_QVEFFECTSMEDIAN_H
#define QVEFFECTS_QVEFFECTSMEDIAN_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Replaces every colour sample by the median of its neighbours: single specks go, edges stay.
 *  @param src,dst source and destination: 8 or 16 bits, the same depth and planes. Where the
 *                 rectangle is copied any depth, see QVEffectsCopyImage(). Which plane is
 *                 transparency goes by src.
 *  @param rect    what to work on; see QVEffectsBasics.h for rectangles that aren't inside.
 *  @param radius  pixels, 1 to 100 being useful; below 1 the rectangle is copied.
 *  @return 0; kQVStatusBadArgument for null, a radius above 32767 or a row that can't be had;
 *          kQVStatusUnsupported for another depth or images that differ in depth or planes;
 *          kQVStatusUnknown3 when memory runs out. Where the rectangle is copied, what
 *          QVEffectsCopyImage() returns. */
QVEFFECTS_API int QVEffectsMedian(__QVImage* src, __QVImage* dst, QVRect rect, int radius);

/** Replaces by their median those colour samples that differ from it by the threshold or more: dust
 *  and scratches go, fine detail stays.
 *  @param src,dst   as of QVEffectsMedian().
 *  @param rect      what to work on; see QVEffectsBasics.h for rectangles that aren't inside.
 *  @param radius    pixels, 1 to 100 being useful; below 1 the rectangle is copied.
 *  @param threshold a fraction of full scale, 0 to 1, rounded to whole samples. 0, less and NaN
 *  give the median everywhere; from 1 on the rectangle is copied, whatever the radius.
 *  @return as of QVEffectsMedian(). */
QVEFFECTS_API int QVEffectsDustAndScratch(__QVImage* src, __QVImage* dst, QVRect rect, int radius,
                                          float threshold);

#ifdef __cplusplus
}
#endif

#endif
