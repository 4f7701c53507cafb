// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Toning: colours that are chosen take the place of the picture's own, driven by its luma.
 *
 *  Effects work pixel by pixel on images of 8, 16 and 32 bits. All but QVEffectsSolarize() need
 *  three colour planes at least and six planes at most, and RGB: of `src`, QVEffectsAddToner() of
 *  `dst`. `src` and `dst` have the same depth and planes and may be the same image.
 *  QVEffectsSolarize() turns all colour planes. The others change three: if `dst` (for
 *  QVEffectsColorize() `src`) has transparency, all planes after the third are those of `src`; if
 *  not, they are left alone in `dst`. Outside `src` the nearest pixel inside gives the colour, with
 *  transparency 0; what falls outside `dst` is dropped. See QVEffectsBasics.h for rectangles that
 *  aren't inside.
 *
 *  A colour is R, G, B: three floats from 0 to 1. Luma is 0.299 R + 0.587 G + 0.114 B. No number is
 *  refused: beyond the ranges the same formulas go on; infinities and NaN may make samples NaN.
 *  Results are rounded to nearest at 8 and 16 bits and held to the range (NaN is 0), and not held
 *  in float.
 *
 *  The balance bends luma before it picks a colour, and leaves 0 and 1 where they are: at 0.5 not
 *  at all, below it towards the shadow colour, above it towards the highlight colour. Above 0.5,
 *  float luma below 0 may become NaN.
 *
 *  Statuses: 0; kQVStatusUnsupported for an image that isn't RGB, another depth, images that differ
 *  in depth or planes, or too few or too many planes; kQVStatusBadArgument for null or a row that
 *  can't be had. */
#ifndef QVEFFECTS_QVEFFECTSTONING_H
#define QVEFFECTS_QVEFFECTSTONING_H

#include <QVEffects/QVEffectsBlend.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Gives all pixels one hue and saturation; of their own colour the lightness (the mean of the
 *  largest and the smallest component) stays, brought nearer to black or white. Never a plain copy.
 *  A source that isn't RGB or of another depth is logged too.
 *  @param src,dst    source and destination.
 *  @param rect       what to work on.
 *  @param hue        in turns from 0 to 1: 0 red, 1/3 green, 2/3 blue.
 *  @param saturation 0 to 1.
 *  @param lightness  -1 (black) to 1 (white); 0 leaves the lightness as it is.
 *  @return see QVEffectsToning.h. */
QVEFFECTS_API int QVEffectsColorize(__QVImage* src, __QVImage* dst, QVRect rect, float hue,
                                    float saturation, float lightness);

/** Tints with a colour that follows luma: from black through ever more of it to the colour without
 *  its gray part, on by adding white, and through ever less of it to white. A gray colour makes the
 *  picture gray, float luma above 1 white.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param color   the colour.
 *  @param amount  0 (no change) to 1.
 *  @return see QVEffectsToning.h. */
QVEFFECTS_API int QVEffectsAddToner(__QVImage* src, __QVImage* dst, QVRect rect, const float* color,
                                    float amount);

/** Turns the upper half of the tones round, so that white becomes black: colour samples of 128 and
 *  more of 255, 32768 and more of 65535, or above 0.5, become full scale less their value. Takes
 *  images of any colour space and number of planes; the last is transparency if `dst` has it.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @return 0; kQVStatusUnsupportedOlder for a depth other than 8, 16 and 32; kQVStatusUnsupported
 *          for images that differ in depth or planes; kQVStatusBadArgument for null or a row that
 *          can't be had. */
QVEFFECTS_API int QVEffectsSolarize(__QVImage* src, __QVImage* dst, QVRect rect);

/** Lays a gradient over the picture by a mode: each pixel's luma, bent by the balance, picks a
 *  colour between that of the shadows and that of the highlights, and an opacity between their
 *  amounts. Where both amounts are 0 or below it is QVEffectsCopyImage(), of images of any colour
 *  space. Where both colours are one array and the amounts are equal, luma isn't asked: that colour
 *  lies over all pixels alike. Amounts from 1 on in kQVBlendModeNormal put the gradient in place of
 *  the picture.
 *  @param src,dst         source and destination.
 *  @param rect            what to work on.
 *  @param shadowColor     the colour at black.
 *  @param highlightColor  the colour at white.
 *  @param mode            how the gradient, as the upper layer, combines with the picture. Reverse
 *                         forms aren't taken.
 *  @param shadowAmount    opacity at black, 0 to 1.
 *  @param highlightAmount opacity at white, 0 to 1.
 *  @param balance         0 to 1, 0.5 is neutral.
 *  @return see QVEffectsToning.h; kQVStatusBadArgument too for an unknown mode, unless the amounts
 *          ask for a copy. */
QVEFFECTS_API int QVEffectsSplitTone(__QVImage* src, __QVImage* dst, QVRect rect,
                                     const float* shadowColor, const float* highlightColor,
                                     QVBlendMode mode, float shadowAmount, float highlightAmount,
                                     float balance);

/** QVEffectsSplitTone() with one amount.
 *  @param src,dst        source and destination.
 *  @param rect           what to work on.
 *  @param shadowColor    the colour at black.
 *  @param highlightColor the colour at white.
 *  @param mode           how the gradient combines with the picture.
 *  @param balance        0 to 1, 0.5 is neutral.
 *  @param amount         opacity, 0 to 1.
 *  @return as QVEffectsSplitTone(). */
QVEFFECTS_API int QVEffectsDuotone(__QVImage* src, __QVImage* dst, QVRect rect,
                                   const float* shadowColor, const float* highlightColor,
                                   QVBlendMode mode, float balance, float amount);

/** QVEffectsSplitTone() with the gradient in place of the picture.
 *  @param src,dst        source and destination.
 *  @param rect           what to work on.
 *  @param shadowColor    the colour at black.
 *  @param highlightColor the colour at white.
 *  @param balance        0 to 1, 0.5 is neutral.
 *  @return see QVEffectsToning.h. */
QVEFFECTS_API int QVEffectsGradientMap(__QVImage* src, __QVImage* dst, QVRect rect,
                                       const float* shadowColor, const float* highlightColor,
                                       float balance);

#ifdef __cplusplus
}
#endif

#endif
