// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Vignettes: darker or lighter towards the edges of an image.
 *
 *  They work on 8-bit, 16-bit and float images of at most six planes, gray or RGB. `src` and `dst`
 *  have the same depth and planes and may be the same image. The rectangle says what to work on,
 *  not where the vignette lies: that depends on the bounds of an image, whose left and top count as
 *  0 wherever they are. So a part of a vignette needs images of the bounds of the whole. Outside
 *  `src` the nearest pixel inside gives the colour, with transparency 0, and what falls outside
 *  `dst` is dropped. Results are rounded to nearest at 8 and 16 bits and held to the range; float
 *  results aren't held.
 *
 *  All modes of #QV_BLEND_MODES are taken in their forward form, with the colour of the vignette as
 *  the upper layer; those of the whole colour (hue, saturation, color, luminosity, lighter-color,
 *  darker-color) are for RGB and leave colour planes after the third alone. Other parameters aren't
 *  checked: out of their range the formulas hold as far as floats reach, and make no NaN of the
 *  strength. If any is infinite or NaN there is no vignette: its strength is 0, and a `level` like
 *  that counts as 0.5. */
#ifndef QVEFFECTS_QVEFFECTSVIGNETTE_H
#define QVEFFECTS_QVEFFECTSVIGNETTE_H

#include <QVCore9/QVCore9.h>
#include <QVEffects/QVEffectsBlend.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Makes a vignette as a layer to lay over the image: colours are the vignette's blended with those
 *  of `src`, all over the rectangle, and transparency is the vignette's strength. Where `src` is
 *  transparent its colour counts as that of the vignette. An image without transparency gets the
 *  colours alone.
 *
 *  The vignette fits the bounds of `dst` and is clear in the middle. An ellipse, a circle or a box
 *  with round corners, by `shape`, lies halfway through a transition of 200 steps that is at least
 *  10 pixels wide. With a side below 2 pixels, there is no shape but that transition, along that
 *  side: about half the strength all over, except for a circle, which fits the longer side.
 *  @param src,dst         source and destination; in mode normal `src` isn't read.
 *  @param rect            what to work on.
 *  @param centerX,centerY the centre, 0 to 1 of the width and the height. A box is always in the
 *                         middle.
 *  @param level           0 to 1: the vignette's colour, a gray, and its strength, which is twice
 *                         the distance from 0.5: from black at 0 over nothing to white at 1.
 *  @param size            0 to 1: how far the clear middle reaches.
 *  @param softness        0 to 1: how wide the transition is.
 *  @param shape           0 to 1: a box of sharper and sharper corners towards 0, as far as the
 *                         sides differ little, an ellipse at 0.5, a circle at 1.
 *  @param mode            how the colours combine.
 *  @return 0; kQVStatusUnsupported for a `dst` of a depth other than 8, 16 and 32, images that
 *          differ in depth or planes, or more than six planes; kQVStatusBadArgument for an unknown
 *          mode, null or a row that can't be had. */
QVEFFECTS_API int QVEffectsVignette(__QVImage* src, __QVImage* dst, QVRect rect, float centerX,
                                    float centerY, float level, float size, float softness,
                                    float shape, QVBlendMode mode);

/** Makes a vignette in the image itself: each pixel is mixed with black or white, blended with it,
 *  by the vignette's strength. The first three colour planes change. Transparency is that of `src`;
 *  colour planes after the third are left alone in `dst`, or are those of `src` where the image has
 *  transparency.
 *
 *  The vignette fits the bounds of `src`. Its strength grows from the middle outwards along the
 *  smootherstep polynomial and is at half where the distance from the centre is that of an ellipse,
 *  a circle or a box with round corners, by `shape`. A radius of 0 counts as a millionth of
 *  a pixel.
 *  @param src,dst         source and destination.
 *  @param rect            what to work on.
 *  @param centerX,centerY the centre, 0 to 1 of the width and the height.
 *  @param amount          -1 to 1: the strength, of black below 0 and of white above.
 *  @param size            0 to 1: the radii are (size + 0.5) times half the sides.
 *  @param softness        0 to 1: the width of the transition, where 1 is twice the radius.
 *  @param shape           -1 to 1: a box at -1, an ellipse at 0, a circle at 1.
 *  @param mode            how the colours combine.
 *  @return see QVEffectsVignette(). */
QVEFFECTS_API int QVEffectsVignetteIn(__QVImage* src, __QVImage* dst, QVRect rect, float centerX,
                                      float centerY, float amount, float size, float softness,
                                      float shape, QVBlendMode mode);

#ifdef __cplusplus
}
#endif

#endif
