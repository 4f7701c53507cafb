// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Brightness, contrast and midtone contrast.
 *
 *  Each is a curve on samples from 0 to 1 that leaves 0 and 1 where they are:
 *
 *  | Curve    | Neutral | Above it                      | Below it                             |
 *  |----------|---------|-------------------------------|--------------------------------------|
 *  | B(x, b)  | b = 0   | a hyperbola that lightens     | one that darkens                     |
 *  | S(x, c)  | c = 0   | steep at 0.5, flat at 0 and 1 | the inverse of that of -c            |
 *  | M(x, p)  | p = 0   | steep at 0.5, slope 1 at 0, 1 | flat at 0.5, slope 1 at 0 and 1      |
 *
 *  Parameters go from -1 to 1, in the Alt forms from -2 to 2; others aren't refused, but curves may
 *  fold over.
 *
 *  Effects work on colour samples of images of 8, 16 and 32 bits; transparency is that of `src`.
 *  `src` and `dst` have the same depth and planes and may be the same image. Outside `src` and the
 *  mask the nearest pixel inside counts, with transparency 0; what falls outside `dst` is dropped.
 *  Results are rounded to nearest at 8 and 16 bits and held to the range (NaN is 0); float results
 *  are held only where that is said.
 *
 *  A mask has the depth of `src` and one plane, and may be null. One of the type
 *  kQVImageTypeInvertedMask is read upside down. Where a row of it can't be had, the effect is as
 *  without a mask. Images with a mask have at most six planes. A plain mask scales the parameters
 *  by m, from 0 to 1. A bipolar one is neutral at 127 of 255, and g = m * 255 / 127 - 1.
 *
 *  Statuses of the effects: 0; kQVStatusUnsupported for another depth, images that differ in depth
 *  or planes, more than six planes with a mask, or another mask; kQVStatusBadArgument for null or a
 *  row that can't be had.
 *
 *  Functions that make curves fill 256 floats for each plane, all alike, with what the effect of
 *  their name does without a mask; QVEffectsApplyCurves() applies them. They return 0, or
 *  kQVStatusBadArgument for null. For 0 or fewer planes nothing is written.
 *
 *  Where an effect comes to a copy, QVEffectsCopyImage() does it and answers. */
#ifndef QVEFFECTS_QVEFFECTSBRIGHTNESS_H
#define QVEFFECTS_QVEFFECTSBRIGHTNESS_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Changes brightness and contrast: S(B(x, brightness), contrast) for a contrast above 0, otherwise
 *  B(S(x, contrast), brightness).
 *  @param src,dst    source and destination.
 *  @param rect       what to work on; see QVEffectsBasics.h for rectangles that aren't inside.
 *  @param brightness -1 to 1.
 *  @param contrast   -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsBrightnessContrast(__QVImage* src, __QVImage* dst, QVRect rect,
                                              float brightness, float contrast);

/** The same with a plain mask, which scales brightness and contrast.
 *  @param src,dst    source and destination.
 *  @param mask       the mask, or null.
 *  @param rect       what to work on.
 *  @param brightness -1 to 1.
 *  @param contrast   -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsBrightnessContrastWithMask(__QVImage* src, __QVImage* dst,
                                                      __QVImage* mask, QVRect rect,
                                                      float brightness, float contrast);

/** Makes the curves of QVEffectsBrightnessContrast().
 *  @param planes     colour planes.
 *  @param curves     receives them.
 *  @param brightness -1 to 1.
 *  @param contrast   -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsBrightnessContrastMakeCurves(int planes, float* curves, float brightness,
                                                        float contrast);

/** Changes midtone contrast, then brightness: B(M(x, contrast), brightness).
 *  @param src,dst    source and destination.
 *  @param rect       what to work on.
 *  @param brightness -1 to 1.
 *  @param contrast   -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsBrightnessMidtoneContrast(__QVImage* src, __QVImage* dst, QVRect rect,
                                                     float brightness, float contrast);

/** The same with a plain mask, which scales brightness and contrast.
 *  @param src,dst    source and destination.
 *  @param mask       the mask, or null.
 *  @param rect       what to work on.
 *  @param brightness -1 to 1.
 *  @param contrast   -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsBrightnessMidtoneContrastWithMask(__QVImage* src, __QVImage* dst,
                                                             __QVImage* mask, QVRect rect,
                                                             float brightness, float contrast);

/** Makes the curves of QVEffectsBrightnessMidtoneContrast().
 *  @param planes     colour planes.
 *  @param curves     receives them.
 *  @param brightness -1 to 1.
 *  @param contrast   -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsBrightnessMidtoneContrastMakeCurves(int planes, float* curves,
                                                               float brightness, float contrast);

/** Changes brightness: B(x, amount). With a bipolar mask the result is then multiplied with g + 1
 *  where g is above 0, changed by g / 2 elsewhere, and held to 0 to 1. Amount 0 without a mask is a
 *  plain copy.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param mask    the mask, or null.
 *  @param amount  -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsBrightnessWithMask(__QVImage* src, __QVImage* dst, QVRect rect,
                                              __QVImage* mask, float amount);

/** Makes the curves of QVEffectsBrightnessWithMask() without a mask.
 *  @param planes colour planes.
 *  @param curves receives them.
 *  @param amount -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsBrightnessAltMakeCurves(int planes, float* curves, float amount);

/** Changes midtone contrast: M(x, amount).
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param amount  -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsMidtoneContrast(__QVImage* src, __QVImage* dst, QVRect rect,
                                           float amount);

/** Makes the curves of QVEffectsMidtoneContrast().
 *  @param planes colour planes.
 *  @param curves receives them.
 *  @param amount -1 to 1.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsMidtoneContrastMakeCurves(int planes, float* curves, float amount);

/** Changes midtone contrast with a wider range: M(x, 2 * amount) for an amount from -1 to 1, beyond
 *  which S takes over with what is left. A bipolar mask adds its g to the amount. Amount 0 without
 *  a mask is a plain copy.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param mask    the mask, or null.
 *  @param amount  -2 to 2.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsMidtoneContrastAltWithMask(__QVImage* src, __QVImage* dst, QVRect rect,
                                                      __QVImage* mask, float amount);

/** Makes the curves of QVEffectsMidtoneContrastAltWithMask() without a mask.
 *  @param planes colour planes.
 *  @param curves receives them.
 *  @param amount -2 to 2.
 *  @return see QVEffectsBrightness.h. */
QVEFFECTS_API int QVEffectsMidtoneContrastAltMakeCurves(int planes, float* curves, float amount);

#ifdef __cplusplus
}
#endif

#endif
