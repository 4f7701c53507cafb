// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Surface blur: it smooths areas and keeps edges.
 *
 *  A pixel becomes the mean of those samples of a square window around it whose values lie near its
 *  own. They are told apart by a histogram of the window: each of 8 bins, of equal parts of the
 *  scale, stands for the samples in it by their mean. A bin's weight falls from 1, where its mean
 *  equals the pixel's value, to 0, where it is 2.5 * threshold or more away. The histogram moves
 *  with the window, so that in images much wider and higher than the radius a pixel takes the same
 *  time at any radius. Colour planes are blurred each on its own; transparency is that of `src`.
 *
 *  It works on 8-bit, 16-bit and float images of any number of planes. Outside `src` its edges go
 *  on; inside, pixels around the rectangle take part. Results are rounded to nearest at 8 and 16
 *  bits and held to the range. Float samples outside 0 to 1 count in the bins at the ends, NaN in
 *  the first one. Sums of floats run on from pixel to pixel and from row to row, so that they
 *  depend in their last bits on where the rectangle starts. For the same reason a NaN, an infinity
 *  or a value beside which others vanish spoils its bin in all windows to the right of the first
 *  that holds it, and in all rows below: hold such samples to a range first.
 *
 *  `threshold` is a part of full scale; from 0.01 (only noise goes) over 0.1 to 0.4 (nearly an
 *  ordinary blur) it is useful. `amount` mixes the result with the source: 1 is the blur alone.
 *  Where `amount` or `threshold` isn't above 0 (NaN isn't) or the radius is below 1, the rectangle
 *  is copied; the copy that takes the place of an empty blur has the statuses of
 *  QVEffectsCopyImage(). See QVEffectsBasics.h for rectangles that aren't inside. */
#ifndef QVEFFECTS_QVEFFECTSSURFACEBLUR_H
#define QVEFFECTS_QVEFFECTSSURFACEBLUR_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Surface blur: QVEffectsSurfaceBlurWithOffset() with offset (0, 0).
 *  @param src,dst   source and destination: the same depth and planes; may be the same image.
 *  @param rect      what to blur.
 *  @param radius    pixels from the centre of the window to its sides: 1 to 100. Memory grows with
 *                   it: 2 * radius + 2 rows, but never more than two beyond those of `src`, each of
 *                   the rectangle's width and 2 * radius pixels; and up to 100 bytes for each
 *  colour sample of such a row.
 *  @param threshold how far a value may lie from the pixel's own, a part of full scale.
 *  @param amount    0 to 1; beyond it exaggerates.
 *  @return 0; kQVStatusUnsupported for a depth other than 8, 16 and 32 or images that differ in
 *          depth or planes; kQVStatusBadArgument for null or a row that can't be had;
 *          kQVStatusOutOfMemory, which a radius above 32767 is too. */
QVEFFECTS_API int QVEffectsSurfaceBlur(__QVImage* src, __QVImage* dst, QVRect rect, int radius,
                                       float threshold, float amount);

/** Surface blur, moved.
 *  @param src,dst   source and destination: the same depth and planes; may be the same image only
 *                   with offset (0, 0).
 *  @param rect      what to blur, in coordinates of `src`.
 *  @param radius,threshold,amount see QVEffectsSurfaceBlur().
 *  @param offset    pixel (x, y) goes to (x - offset.x, y - offset.y) of `dst`.
 *  @return as QVEffectsSurfaceBlur(). */
QVEFFECTS_API int QVEffectsSurfaceBlurWithOffset(__QVImage* src, __QVImage* dst, QVRect rect,
                                                 int radius, float threshold, float amount,
                                                 QVPoint offset);

/** Surface blur of the brightness alone: the luma of RGB images is blurred, the chroma stays. A
 *  component that leaves 0 to 1 by it is held there.
 *  @param src,dst   source and destination: RGB, the same depth and planes; may be the same image.
 *  @param rect      what to blur.
 *  @param radius,threshold,amount see QVEffectsSurfaceBlur(). Where they ask for nothing, pixels
 *                   still go to luma and chroma and back. A gray image of the rectangle inside
 *                   `dst` and the radius around it is made.
 *  @return 0; kQVStatusUnsupported for images that aren't so; kQVStatusBadArgument for null or a
 *          row that can't be had; kQVStatusOutOfMemory; the status of QVImageCreateWithParams2().
 */
QVEFFECTS_API int QVEffectsSurfaceBlurLuminosity(__QVImage* src, __QVImage* dst, QVRect rect,
                                                 int radius, float threshold, float amount);

/** How far SufaceBlurredGrayScaleImageCreate() reads around its rectangle.
 *  @param radius as there.
 *  @return the radius, rounded to nearest, and 3: 3 to INT_MAX. A radius below 0 and NaN are 0. */
QVEFFECTS_API int SufaceBlurredGrayScaleImageGetOutset(float radius);

#ifdef __cplusplus
}

/** Makes a smoothed gray image of a part of an image, its edges kept: the base that local contrast
 *  is measured from. A surface blur of the gray image is followed by a Gaussian blur of sigma 1.
 *  @param src         one plane, or RGB with or without transparency.
 *  @param out         receives the image with one reference: one plane, gray, with bounds that
 *                     enclose `rect`. Only inside `rect` it has both blurs. Null, or an image that
 *                     isn't done but to be released all the same, where a failure is returned.
 *  @param rect        what it is for.
 *  @param radius      of the surface blur in pixels, rounded to nearest; below 0 and NaN are 0.
 *  @param planeBytes  bytes a sample of `out`: 1, 2 or 4; 0 or less for that of `src`, which images
 *                     of one plane need.
 *  @param threshold   see QVEffectsSurfaceBlur(); below 0 it is 0.125.
 *  @param grayMode    0 for luma, 1 for the mean of the components; images of one plane have no
 *                     use for it.
 *  @param useFourBins 1 for 4 bins, which is coarser and faster, otherwise 8.
 *  @return 0; kQVStatusUnsupported for another image or another number of bytes;
 *          kQVStatusBadArgument for null, another mode where `src` has more planes than one, or a
 *  row that can't be had; kQVStatusOutOfMemory, which a radius above 32767 is too; the status of
 *  QVImageCreateWithParams2(). */
QVEFFECTS_API int SufaceBlurredGrayScaleImageCreate(__QVImage* src, __QVImage*& out, QVRect rect,
                                                    float radius, int planeBytes, float threshold,
                                                    int grayMode, int useFourBins);
#endif

#endif
