// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Hue, saturation and vibrance, and the way to gray.
 *
 *  Effects work pixel by pixel on images of 8, 16 and 32 bits, of three colour planes at least and
 *  six planes at most. `src` must be RGB; `dst` isn't asked. They have the same depth and planes
 *  and may be the same image. If `src` has transparency, all planes after the third are those of
 *  `src`; if not, they are left alone in `dst`. Outside `src` the nearest pixel inside gives the
 *  colour, with transparency 0; what falls outside `dst` is dropped. See QVEffectsBasics.h for
 *  rectangles that aren't inside.
 *
 *  Where all amounts are 0, the call is QVEffectsCopyImage() of an RGB image, with its statuses.
 *
 *  No number is refused. In the useful ranges colours from 0 to 1 stay there, but for rounding;
 *  beyond, the same formulas go on. Infinite and NaN amounts may make colours NaN. At 8 and 16 bits
 *  results are rounded to nearest and held to the range (NaN is 0), in float they aren't held.
 *
 *  Statuses: 0; kQVStatusUnsupported for a source that isn't RGB, another depth, images that differ
 *  in depth or planes, or too few or too many planes; kQVStatusBadArgument for null or a row that
 *  can't be had. */
#ifndef QVEFFECTS_QVEFFECTSHUESATURATION_H
#define QVEFFECTS_QVEFFECTSHUESATURATION_H

#include <QVEffects/QVEffectsBlend.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Changes vibrance: Vibrance2() of each colour. Pale colours move most, grays stay, and the sum of
 *  the components stays, or falls where one would pass 1.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param amount  -1 to 1.
 *  @return see QVEffectsHueSaturation.h. */
QVEFFECTS_API int QVEffectsVibrance(__QVImage* src, __QVImage* dst, QVRect rect, float amount);

/** Turns the hue, and changes saturation and brightness, which is the largest component. With hue 0
 *  colours don't pass through hue, saturation and brightness: it is Saturation(), Brightness() or
 *  SaturationBrightness() of each colour.
 *  @param src,dst    source and destination.
 *  @param rect       what to work on.
 *  @param hue        in turns, -1 to 1: 0.5 is the opposite hue. It wraps: whole turns bring
 *                    colours back, up to rounding.
 *  @param saturation -1 (gray at the level of the largest component) to 1 (twice as much).
 *  @param brightness -1 to 1: along a hyperbola that leaves black and white where they are.
 *  @return see QVEffectsHueSaturation.h. */
QVEFFECTS_API int QVEffectsHueSaturationBrightness(__QVImage* src, __QVImage* dst, QVRect rect,
                                                   float hue, float saturation, float brightness);

/** The same for lightness, which is the mean of the largest and the smallest component.
 *  @param src,dst    source and destination.
 *  @param rect       what to work on.
 *  @param hue        in turns, -1 to 1.
 *  @param saturation -1 (gray of the same lightness) to 1 (twice as much).
 *  @param lightness  -1 to 1: along a hyperbola that leaves black and white where they are.
 *  @return see QVEffectsHueSaturation.h. */
QVEFFECTS_API int QVEffectsHueSaturationLightness(__QVImage* src, __QVImage* dst, QVRect rect,
                                                  float hue, float saturation, float lightness);

/** Lays each pixel's luma (0.299 R + 0.587 G + 0.114 B) over it as a gray. An amount of 0 or below
 *  is QVEffectsCopyImage() of an RGB image. Planes after the third are always those of `src`.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param mode    how the gray, as the upper layer, combines with the pixel; kQVBlendModeNormal is
 *                 plain gray. Reverse forms aren't taken.
 *  @param amount  how much of the result is seen: up to 1; beyond it kQVBlendModeNormal stays at 1
 *                 and other modes overshoot.
 *  @return see QVEffectsHueSaturation.h; kQVStatusBadArgument too for an unknown mode, unless the
 *          amount asks for a copy. */
QVEFFECTS_API int QVEffectsDesaturate(__QVImage* src, __QVImage* dst, QVRect rect, QVBlendMode mode,
                                      float amount);

#ifdef __cplusplus
}
#endif

#endif
