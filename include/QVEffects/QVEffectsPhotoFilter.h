// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Photo filter: a coloured glass before the lens, solid or graduated. */
#ifndef QVEFFECTS_QVEFFECTSPHOTOFILTER_H
#define QVEFFECTS_QVEFFECTSPHOTOFILTER_H

#include <QVCore9/QVCore9.h>
#include <QVEffects/QVEffectsBlend.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A place in an image, between pixels too. */
typedef struct QVPointF {
  float x; /**< to the right */
  float y; /**< downwards */
} QVPointF;

/** The shapes of a photo filter. */
enum QVPhotoFilterType {
  kQVPhotoFilterSolid = 0,      /**< the first colour everywhere */
  kQVPhotoFilterLinear = 1,     /**< from nothing to the first colour along a line */
  kQVPhotoFilterLinearBoth = 2, /**< from the second colour to the first along a line */
  kQVPhotoFilterRound = 3,      /**< from nothing inside a circle to the first colour outside */
  kQVPhotoFilterRoundBoth = 4,  /**< from the second colour inside to the first outside */
};

/** Changes saturation and contrast, then lays one or two colours over in any blend mode.
 *
 *  A graduated filter goes over from one side to the other within `width` on either side of a line
 *  through `center` or of a circle around it, where it stands at its middle. A width of 0, nearer
 *  to 0 than 1e-20, or NaN, is a hard edge: one side, the other, and the middle within 1/1024 pixel
 *  of the edge. A negative width turns the sides round.
 *
 *  Transparency is that of `src`. Colour planes after the third are left alone in `dst`, or are
 *  those of `src` where the image has transparency. Results are rounded to nearest at 8 and 16 bits
 *  and held to the range (NaN is 0); float results aren't held. Parameters other than the type and
 *  the mode aren't checked: out of their range the formulas hold as they are.
 *  @param src,dst       source and destination: RGB of 8, 16 or 32 bits, the same depth and planes,
 *                       at most six; may be the same image.
 *  @param rect          what to work on; see QVEffectsBasics.h for rectangles that aren't inside.
 *  @param type          see ::QVPhotoFilterType.
 *  @param mode          how the colours are laid over the picture; reverse forms aren't taken.
 *  @param saturation    -1 (gray at the level of the largest component) to 1, as in Saturation(); 0
 *                       for none.
 *  @param contrast      0 to 1, how much of an S-curve is mixed in.
 *  @param center        in the image's coordinates.
 *  @param angleOrRadius where a linear filter leads, in degrees: 0 to the right, 90 downwards; the
 *                       radius of a round one, in pixels.
 *  @param width         half the length of the transition, in pixels.
 *  @param colorA        the first colour, three floats from 0 to 1.
 *  @param amountA       its opacity, 0 to 1.
 *  @param colorB        the second colour, like the first. Read by ::kQVPhotoFilterLinearBoth and
 *                       ::kQVPhotoFilterRoundBoth only; may be null for the others.
 *  @param amountB       its opacity, 0 to 1. Read by the same two types only.
 *  @return 0; kQVStatusBadArgument for an unknown mode or type, null or a row that can't be had;
 *          kQVStatusUnsupported for a `src` that isn't RGB, another depth, images that differ in
 *          depth or planes, less than three colour planes or more than six planes. */
QVEFFECTS_API int QVEffectsPhotoFilter(__QVImage* src, __QVImage* dst, QVRect rect, int type,
                                       QVBlendMode mode, float saturation, float contrast,
                                       QVPointF center, float angleOrRadius, float width,
                                       const float* colorA, float amountA, const float* colorB,
                                       float amountB);

#ifdef __cplusplus
}
#endif

#endif
