// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Last steps: an effect's result laid over its image where a mask or the colour says, and plain
 *  operations on samples and masks.
 *
 *  Images have 8, 16 or 32 bits a sample. Those of a call have the same depth and planes unless
 *  that is said otherwise, and any of those that are read may be the one that is written. Outside
 *  an image or a mask the nearest pixel inside counts, with transparency 0; what falls outside
 *  `dst` is dropped. Results are rounded to nearest at 8 and 16 bits and held to the range (NaN is
 *  0); where float results are held to 0 to 1, NaN stays.
 *
 *  A mask has the depth of the image and one plane. One of the type kQVImageTypeInvertedMask is
 *  read upside down. Where a row of a mask can't be had, the mask counts as absent, but for
 *  QVEffectsFindMaskBounds(), which needs it.
 *
 *  Statuses: 0; kQVStatusUnsupported for another depth, images or masks that don't go together, or
 *  too many planes; kQVStatusBadArgument for null or a row that can't be had. */
#ifndef QVEFFECTS_QVEFFECTSMASK_H
#define QVEFFECTS_QVEFFECTSMASK_H

#include <QVCore9/CoreFoundation.h>
#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Mixes an image with an effect's result. All samples are mixed, transparency too, with the share
 *  t of the result: amount / 2 without a mask; with one, amount / 2 + m - 127/255, held to 0 to 1.
 *  The mask is neutral at 127 of 255: brighter parts push towards the result, darker ones away.
 *  @param base   the image; at most six planes.
 *  @param effect the result.
 *  @param mask   the mask, or null.
 *  @param dst    receives the mix.
 *  @param rect   what to work on; see QVEffectsBasics.h for rectangles that aren't inside.
 *  @param amount 0 to 2: without a mask 1 is an even mix and 2 the full result.
 *  @return see QVEffectsMask.h. */
QVEFFECTS_API int QVEffectsApplyEffectWithMask(__QVImage* base, __QVImage* effect, __QVImage* mask,
                                               __QVImage* dst, QVRect rect, float amount);

/** Mixes an image with an effect's result by zones of colour, and changes brightness and midtone
 *  contrast in them.
 *
 *  The zones' weights w are those of QVEffectsGetColorComponents() for the colour of `base`. The
 *  share of the result is the sum of mix[i] * w[i] / 2 plus what the mask counts as (127/255
 *  without one), held to 0 to 1. The luma of the mix is then changed as by
 *  QVEffectsBrightnessWithMask() and QVEffectsMidtoneContrast() with the sums of
 *  brightness[i] * w[i] and contrast[i] * w[i]. Components are held to 0 to 1. Transparency and
 *  planes after the third are those of `base`.
 *  @param base       the image: RGB, at most six planes.
 *  @param effect     the result.
 *  @param mask       the mask, or null.
 *  @param dst        receives the mix.
 *  @param rect       what to work on.
 *  @param mix        six weights for red, yellow, green, cyan, blue and magenta, -1 to 1.
 *  @param brightness the same.
 *  @param contrast   the same.
 *  @return see QVEffectsMask.h; kQVStatusUnsupported also if `dst` isn't RGB. */
QVEFFECTS_API int QVEffectsApplyEffectInZones(__QVImage* base, __QVImage* effect, __QVImage* mask,
                                              __QVImage* dst, QVRect rect, const float* mix,
                                              const float* brightness, const float* contrast);

/** How a colour falls into six zones: pure red is 1, 0, 0, 0, 0, 0, orange half red and half
 *  yellow, and grays are all 0.
 *  @param rgb     three floats.
 *  @param weights six floats; set: red, yellow, green, cyan, blue, magenta.
 *  @return 0, or kQVStatusBadArgument for null. */
QVEFFECTS_API int QVEffectsGetColorComponents(const float* rgb, float* weights);

/** Sums two images, all samples, transparency too: b * weightOfB + a * weightOfA. Float results are
 *  held to 0 to 1.
 *  @param a,b                 the images.
 *  @param dst                 receives the sum.
 *  @param rect                what to work on.
 *  @param weightOfA,weightOfB 0 to 1.
 *  @return see QVEffectsMask.h. */
QVEFFECTS_API int QVEffectsMixImages(__QVImage* a, __QVImage* b, __QVImage* dst, QVRect rect,
                                     float weightOfA, float weightOfB);

/** Multiplies masks. Inverted masks count upside down, both those that are read and `dst`. The
 *  product of none is 1.
 *  @param masks __QVImage pointers; a null one counts as 1, as does one where its row can't be had.
 *  @param dst   a mask of the depth of all others; receives the product.
 *  @param rect  what to work on.
 *  @return see QVEffectsMask.h; kQVStatusOutOfMemory. */
QVEFFECTS_API int QVEffectsMultiplyMasks(CFArrayRef masks, __QVImage* dst, QVRect rect);

/** Finds the smallest rectangle that holds all of a mask that isn't 0: in float, all above 0.
 *  Inverted masks count upside down.
 *  @param mask   the mask.
 *  @param result receives the rectangle; 0, 0, 0, 0 if there is none. Unchanged on failure.
 *  @return see QVEffectsMask.h. */
QVEFFECTS_API int QVEffectsFindMaskBounds(__QVImage* mask, QVRect* result);

/** Lays a transparent image on white, in place. Transparency stays as it is.
 *  @param image the image, at most six planes; without transparency nothing is done to it.
 *  @param rect  what to work on.
 *  @return see QVEffectsMask.h. */
QVEFFECTS_API int QVEffectsMakeCompositeImage(__QVImage* image, QVRect rect);

/** Moves each sample away from a pivot or towards it: pivot + (sample - pivot) * factor. Float
 *  results are held to 0 to 1.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param factors one for each plane, transparency included; 1 changes nothing.
 *  @param pivots  one for each plane, transparency included, 0 to 1; at 8 and 16 bits rounded to
 *  the nearest sample.
 *  @return see QVEffectsMask.h. */
QVEFFECTS_API int QVEffectsMultiplyValues(__QVImage* src, __QVImage* dst, QVRect rect,
                                          const float* factors, const float* pivots);

#ifdef __cplusplus
}
#endif

#endif
