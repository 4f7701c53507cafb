// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Box, triangular and Gaussian blur.
 *
 *  They work on 8-bit, 16-bit and float images of any number of planes. `src` and `dst` have the
 *  same depth and planes and may be the same image. Colour is blurred; transparency stays that of
 *  `src`. Around `src` the colours at its edges go on; pixels of `src` outside `rect` are read, so
 *  that the blur of a part is that part of the blur. What falls outside `dst` is dropped. At 8 and
 *  16 bits results are rounded to nearest and held to the range; floats keep what lies outside 0 to
 *  1. Memory beside the images: the rows that the kernel covers. */
#ifndef QVEFFECTS_QVEFFECTSBLUR_H
#define QVEFFECTS_QVEFFECTSBLUR_H

#include <QVCore9/QVCore9.h>
#include <QVEffects/QVEffectsBlend.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name Box blur
 *
 *  The mean of a rectangle around each pixel, at the same cost whatever its size. All return 0;
 *  kQVStatusBadArgument for null or a box turned inside out; kQVStatusUnsupported for a depth other
 *  than 8, 16 and 32 or images that differ in depth or planes; kQVStatusUnknown2 for a row that
 *  can't be had, too little memory or a box of more than 2^46 pixels (2^32 in images of integers of
 *  32 bits) or, at 32 bits, 2^20 rows. The copy that takes the place
 *  of an empty blur has the statuses of QVEffectsCopyImage(). */
/** @{ */

/** Blurs by the mean of a square.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param radius  pixels on each side of the middle one: 2 radius + 1 in all. Below 1: a copy. */
QVEFFECTS_API int QVEffectsBoxBlur(__QVImage* src, __QVImage* dst, QVRect rect, int radius);

/** QVEffectsBoxBlur() to another place.
 *  @param src,dst source and destination; not the same image unless offset is (0, 0).
 *  @param rect    what to work on, in src.
 *  @param radius  see QVEffectsBoxBlur().
 *  @param offset  what is computed for (x, y) goes to (x - offset.x, y - offset.y) of dst: for
 *                 images whose origins differ. */
QVEFFECTS_API int QVEffectsBoxBlurWithOffset(__QVImage* src, __QVImage* dst, QVRect rect,
                                             int radius, QVPoint offset);

/** QVEffectsBoxBlurWithOffset(), in part.
 *  @param src,dst,rect,radius,offset see there.
 *  @param amount  how much of the blur is taken, 0 to 1, the rest from src. 0 or less: a copy. */
QVEFFECTS_API int QVEffectsBoxBlurWithOffsetAndAmount(__QVImage* src, __QVImage* dst, QVRect rect,
                                                      int radius, QVPoint offset, float amount);

/** Blurs by the mean of a rectangle that needn't lie around the pixel. Mind the order.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param left,right,top,bottom the first and last column and row of the rectangle, counted from
 *                 the pixel: -2, 2, 0, 0 are five pixels of a row.
 *  @param amount  how much of the blur is taken, 0 to 1, the rest from src. */
QVEFFECTS_API int QVEffectsBoxBlurWithAmount(__QVImage* src, __QVImage* dst, QVRect rect, int left,
                                             int right, int top, int bottom, float amount);

/** QVEffectsBoxBlurWithAmount() at amount 1, for images of integers: those of 32 bits hold unsigned
 *  integers instead of floats, whose means have the precision of a float. */
QVEFFECTS_API int QVEffectsBoxBlurInt(__QVImage* src, __QVImage* dst, QVRect rect, int left,
                                      int right, int top, int bottom);

/** @} */

/** Blurs by a tent: weights 1, 2, ..., radius + 1, ..., 2, 1 along rows and columns. It costs the
 *  same whatever the radius, and is smoother than the box blur.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param radius  pixels on each side of the middle one. 0 or less: a copy.
 *  @return 0; kQVStatusUnsupported for samples other than of 1, 2 and 4 bytes or images that differ
 *          in depth or planes; kQVStatusBadArgument for null, a row that can't be had or a radius
 *          above 3000; kQVStatusOutOfMemory. */
QVEFFECTS_API int QVEffectsTriangularBlur(__QVImage* src, __QVImage* dst, QVRect rect, int radius);

/** @name Gaussian blur
 *
 *  The true blur is a convolution with a Gaussian whose standard deviation is the radius, cut off
 *  at 2.5 times that; its cost grows with the radius. The fast one is three box blurs that together
 *  have the variance of a Gaussian of standard deviation radius / 1.1, at the same cost whatever
 *  the radius (W. M. Wells, "Efficient Synthesis of Gaussian Filters by Cascaded Uniform Filters",
 *  1986) on one more image, which is larger than `rect` by 1.8 times the radius on each side.
 *
 *  Modes: all that work on each colour sample alone, that is all but hue, saturation, color,
 *  luminosity, lighter-color and darker-color; and the reverse forms of color-dodge, divide,
 *  subtract, hard-light, hard-mix, color-burn, linear-light, overlay, soft-light and vivid-light.
 *  The blurred image is the upper layer, `src` the lower one; the result is
 *  src * (1 - amount) + mode * amount.
 *
 *  All copy where radius or amount is 0 or less, and where the radius is NaN or too small to blur
 *  (below 0.2). They return 0; kQVStatusUnsupported for a depth other than 8, 16 and 32 or images
 *  that differ in depth or planes; kQVStatusBadArgument for null or another mode;
 *  kQVStatusBadArgument in the true blur, kQVStatusUnknown2 or kQVStatusBadArgument in the fast one
 *  for a row that can't be had; kQVStatusUnknown3 in the true blur, kQVStatusUnknown2 in the fast
 *  one for too little memory or a radius beyond all measure; the status of
 *  QVImageCreateWithParams2() for the fast blur's image. */
/** @{ */

/** The true blur at a radius below 10, else the fast one.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param radius  in pixels; 0.2 to 250 is useful. */
QVEFFECTS_API int QVEffectsGaussianBlur(__QVImage* src, __QVImage* dst, QVRect rect, float radius);

/** QVEffectsGaussianBlur(), in part.
 *  @param src,dst,rect,radius see there.
 *  @param amount how much of the blur is taken, 0 to 1, the rest from src. */
QVEFFECTS_API int QVEffectsGaussianBlurWithAmount(__QVImage* src, __QVImage* dst, QVRect rect,
                                                  float radius, float amount);

/** QVEffectsGaussianBlur(), laid over src.
 *  @param src,dst,rect,radius see there.
 *  @param amount how much of the result is taken, 0 to 1, the rest from src.
 *  @param mode   how the blurred image and src combine, see above. */
QVEFFECTS_API int QVEffectsGaussianBlurWithAmountAndMode(__QVImage* src, __QVImage* dst,
                                                         QVRect rect, float radius, float amount,
                                                         QVBlendMode mode);

/** The true blur at any radius. See QVEffectsGaussianBlur(). */
QVEFFECTS_API int QVEffectsGaussianBlurTrue(__QVImage* src, __QVImage* dst, QVRect rect,
                                            float radius);

/** The true blur at any radius. See QVEffectsGaussianBlurWithAmount(). */
QVEFFECTS_API int QVEffectsGaussianBlurTrueWithAmount(__QVImage* src, __QVImage* dst, QVRect rect,
                                                      float radius, float amount);

/** The true blur at any radius. See QVEffectsGaussianBlurWithAmountAndMode(). */
QVEFFECTS_API int QVEffectsGaussianBlurTrueWithAmountAndMode(__QVImage* src, __QVImage* dst,
                                                             QVRect rect, float radius,
                                                             float amount, QVBlendMode mode);

/** The fast blur at any radius. See QVEffectsGaussianBlur(). */
QVEFFECTS_API int QVEffectsGaussianBlurFast(__QVImage* src, __QVImage* dst, QVRect rect,
                                            float radius);

/** The fast blur at any radius. See QVEffectsGaussianBlurWithAmount(). */
QVEFFECTS_API int QVEffectsGaussianBlurFastWithAmount(__QVImage* src, __QVImage* dst, QVRect rect,
                                                      float radius, float amount);

/** The fast blur at any radius. See QVEffectsGaussianBlurWithAmountAndMode(). Below a radius of 1.1
 *  it is a single box, which mode and amount don't change. */
QVEFFECTS_API int QVEffectsGaussianBlurFastWithAmountAndMode(__QVImage* src, __QVImage* dst,
                                                             QVRect rect, float radius,
                                                             float amount, QVBlendMode mode);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
