// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Ways of turning colour into gray: the mean or the luma, a weighted sum, a weight for each of six
 *  colours, film with contrast, grain and tone; and the mixing of channels.
 *
 *  They work on images of 8, 16 and 32 bits, of at most six planes. `src` and `dst` have the same
 *  depth and planes and may be the same image. No image changes its kind: the gray goes into each
 *  colour plane of an RGB image. QVEffectsBlackWhite() and the filters take gray images too; for
 *  the others three colour planes are needed, and where it is said a `src` that is RGB.
 *
 *  If `dst` has transparency, planes that aren't written are those of `src`; if not, they are left
 *  alone in `dst`. See QVEffectsBasics.h for rectangles that aren't inside.
 *
 *  No number is refused: beyond the ranges the same formulas go on; infinities and NaN may make
 *  samples NaN. Results are rounded to nearest at 8 and 16 bits and held to the range (NaN is 0);
 *  float results aren't held unless that is said.
 *
 *  Statuses: 0; kQVStatusUnsupported for another depth, images that differ in depth or planes or
 *  have more than six, or fewer than the colour planes that are needed; kQVStatusBadArgument for
 *  null (but where null is allowed) or a row that can't be had. */
#ifndef QVEFFECTS_QVEFFECTSBLACKANDWHITE_H
#define QVEFFECTS_QVEFFECTSBLACKANDWHITE_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What QVEffectsBlackWhite() takes for gray. */
enum QVBlackWhiteMode {
  kQVBlackWhiteLuma = 0, /**< 0.299 R + 0.587 G + 0.114 B; what a gray image lacks counts as 0 */
  kQVBlackWhiteMean = 1, /**< the mean of all colour planes */
};

/** Writes the gray of a pixel to all its colour planes, however many.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param mode    see ::QVBlackWhiteMode. Any other makes no gray: an image without transparency
 *                 stays as it is, one with it receives a copy of `src`.
 *  @return see QVEffectsBlackAndWhite.h. */
QVEFFECTS_API int QVEffectsBlackWhite(__QVImage* src, __QVImage* dst, QVRect rect, int mode);

/** Makes each of red, green and blue from all three, `rg` being how much of green goes into red.
 *  Each product is held to at most full scale either way, their sum to 0 to full scale, in float
 *  too (NaN stays there).
 *  @param src,dst  source and destination: three colour planes at least, of any colour space.
 *  @param rect     what to work on.
 *  @param rr,rg,rb what red is made of, -2 to 2.
 *  @param gr,gg,gb what green is made of.
 *  @param br,bg,bb what blue is made of.
 *  @return see QVEffectsBlackAndWhite.h. */
QVEFFECTS_API int QVEffectsChannelMixer(__QVImage* src, __QVImage* dst, QVRect rect, float rr,
                                        float rg, float rb, float gr, float gg, float gb, float br,
                                        float bg, float bb);

/** Gray as behind a colour filter: the sum of the colour samples, each weighted with the filter's
 *  component over the sum of the components. Up to three colour planes are looked at and written: a
 *  gray image keeps red's share of itself.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param r,g,b   the filter's colour, 0 to 1. Where they sum to 0 there is no gray: samples are
 *                 NaN or infinite in float, and held to the range elsewhere.
 *  @return see QVEffectsBlackAndWhite.h. */
QVEFFECTS_API int QVEffectsColorFilter(__QVImage* src, __QVImage* dst, QVRect rect, float r,
                                       float g, float b);

/** QVEffectsColorFilter() with a pure colour.
 *  @param src,dst source and destination.
 *  @param rect    what to work on.
 *  @param hue     0 to 1 is the whole circle: 0 red, 1/3 green, 2/3 blue.
 *  @return see QVEffectsBlackAndWhite.h. */
QVEFFECTS_API int QVEffectsBlackAndWhiteWithColorFilter(__QVImage* src, __QVImage* dst, QVRect rect,
                                                        float hue);

/** Black and white film: a colour filter, contrast, grain and a tone, in this order.
 *
 *  Contrast is the S-curve of QVEffectsMidtoneContrast(). Grain is a tile laid over by overlay. It
 *  repeats every 256 pixels and stays fixed to the image, whatever the rectangle. The tone colours
 *  the grays without changing their luma; a neutral one changes no gray from 0 to 1, and makes
 *  those above 1, which float has, white.
 *  @param src,dst     source and destination; `src` is RGB.
 *  @param rect        what to work on.
 *  @param grain       256 by 256 pixels from (0, 0), of one plane and 8, 16 or 32 bits, whatever
 *                     the depth of `src`; or null. One of another size is read as if its edges went
 *                     on, or cut off at 256.
 *  @param toneColor   three floats, 0 to 1; or null for none.
 *  @param hue         of the filter, as in QVEffectsBlackAndWhiteWithColorFilter().
 *  @param contrast    -1 to 1, 0 for none.
 *  @param grainAmount 0 to 1; `grain` isn't looked at for 0 or less.
 *  @param toneAmount  0 to 1; no tone for 0 or less.
 *  @return see QVEffectsBlackAndWhite.h; kQVStatusUnsupported also for a `src` that isn't RGB and
 *          for grain of more than one plane or another depth than 8, 16 and 32. */
QVEFFECTS_API int QVEffectsBlackAndWhite(__QVImage* src, __QVImage* dst, QVRect rect,
                                         __QVImage* grain, const float* toneColor, float hue,
                                         float contrast, float grainAmount, float toneAmount);

/** Luma, made brighter or darker by how much of six colours a pixel holds: the weights of
 *  QVEffectsGetColorComponents() times those of `response` are added. Results are held to 0 to full
 *  scale, in float too (NaN stays there).
 *  @param src,dst  source and destination; `src` is RGB.
 *  @param rect     what to work on.
 *  @param filter   a colour that is laid over the picture by overlay first, three floats from 0 to
 *                  1, 0.5 for no change; or null for none.
 *  @param response six floats for red, yellow, green, cyan, blue and magenta, -1 to 1: 0.5 for red
 *                  takes pure red from its luma of 0.299 to 0.799, half as pure a red half as far,
 *                  and no gray anywhere. All 0 for plain luma.
 *  @return see QVEffectsBlackAndWhite.h; kQVStatusUnsupported also for a `src` that isn't RGB. */
QVEFFECTS_API int QVEffectsBlackAndWhiteColorResponse(__QVImage* src, __QVImage* dst, QVRect rect,
                                                      const float* filter, const float* response);

/** Proposes a response for QVEffectsBlackAndWhiteColorResponse() from an image: colours that vary
 *  much get more weight, and the mean gray stays as far as no pixel is held to the range. A spread
 *  that can't be told from rounding counts as none.
 *  @param image    three to six planes, at least three of them colours, of 8, 16 or 32 bits; its
 *                  colour space isn't looked at.
 *  @param response receives six floats.
 *  @return 0; kQVStatusUnsupportedOlder for another depth, less than three colour planes or more
 *          than six; kQVStatusBadArgument for null or a row that can't be had. */
QVEFFECTS_API int QVEffectsBlackAndWhiteColorResponseGetAutoMixture(__QVImage* image,
                                                                    float* response);

#ifdef __cplusplus
}
#endif

#endif
