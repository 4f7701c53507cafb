// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Blend modes, and the blending of two layers. */
#ifndef QVEFFECTS_QVEFFECTSBLEND_H
#define QVEFFECTS_QVEFFECTSBLEND_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The modes: MODE(constant, code, name). A is the upper layer, B the lower one.
 *  Each code is of four characters, the first in the highest byte. */
#define QV_BLEND_MODES(MODE)                      \
  MODE(Normal, 0x6E6F726D, "normal")              \
  MODE(Multiply, 0x6D756C20, "multiply")          \
  MODE(Darken, 0x6461726B, "darken")              \
  MODE(Lighten, 0x6C697465, "lighten")            \
  MODE(Difference, 0x64696666, "difference")      \
  MODE(Screen, 0x7363726E, "screen")              \
  MODE(Overlay, 0x6F766572, "overlay")            \
  MODE(SoftLight, 0x734C6974, "soft-light")       \
  MODE(HardLight, 0x684C6974, "hard-light")       \
  MODE(Exclusion, 0x736D7564, "exclusion")        \
  MODE(Hue, 0x68756520, "hue")                    \
  MODE(Saturation, 0x73617420, "saturation")      \
  MODE(Color, 0x636F6C72, "color")                \
  MODE(Luminosity, 0x6C756D20, "luminosity")      \
  MODE(LinearBurn, 0x6C62726E, "linear-burn")     \
  MODE(LinearDodge, 0x6C646467, "linear-dodge")   \
  MODE(LinearLight, 0x6C6C6974, "linear-light")   \
  MODE(HardMix, 0x684D6978, "hard-mix")           \
  MODE(Subtract, 0x66737562, "subtract")          \
  MODE(Divide, 0x66646976, "divide")              \
  MODE(LighterColor, 0x6C67436C, "lighter-color") \
  MODE(DarkerColor, 0x646B436C, "darker-color")   \
  MODE(ColorBurn, 0x69646976, "color-burn")       \
  MODE(ColorDodge, 0x64697620, "color-dodge")     \
  MODE(VividLight, 0x764C6974, "vivid-light")     \
  MODE(PinLight, 0x704C6974, "pin-light")

/** How two colours combine: one of the modes of #QV_BLEND_MODES, as kQVBlendModeMultiply. In the
 *  reverse form of a mode, its code with bit 29 cleared, the two layers change places. */
typedef enum QVBlendMode
#ifdef __cplusplus
    : unsigned int
#endif
{
/** @cond */
#define QV_BLEND_MODE_CONSTANT(constant, code, name) kQVBlendMode##constant = code,
  QV_BLEND_MODES(QV_BLEND_MODE_CONSTANT)
#undef QV_BLEND_MODE_CONSTANT
  /** @endcond */
  kQVBlendModeNone = 0 /**< no mode */
} QVBlendMode;

/** The reverse form of a mode: bit 29 cleared. */
QVEFFECTS_API QVBlendMode QVEffectsGetReverseBlendMode(QVBlendMode mode);

/** Blends layer a over layer b, both opaque but for their own transparency.
 *
 *  QVEffectsBlendImagesWithOpacitiesAndMasks() with opacities 1 and no masks. */
QVEFFECTS_API int QVEffectsBlendImages(__QVImage* a, __QVImage* b, __QVImage* dst, QVRect rect,
                                       QVBlendMode mode);

/** Blends layer a over layer b, each with an opacity and a mask, by the full compositing rule.
 *
 *  With the coverage of a layer, ca or cb = transparency * opacity * mask, the layers' colours A
 *  and B and the mode's result R, the colour is (B * (1 - ca) * cb + (R * ca * cb + A * ca * (1 -
 *  cb))) / c with c = ca + cb - ca * cb, which is the transparency of dst. Where c is 0 or less the
 *  colour is R.
 *
 *  a, b and dst have one depth. There are as many colour samples as in dst, at most five. A layer
 *  with as many planes counts as opaque, one with one more has its transparency there; one with
 *  fewer has 0 for the missing samples, and its transparency stands for a colour. Modes of the
 *  whole colour (hue, saturation, color, luminosity, lighter-color, darker-color) are for RGB. dst
 *  may be a or b. Outside its bounds a layer with transparency is empty and one without repeats its
 *  edge; a mask counts as 1 there. At 8 and 16 bits results are held to the range.
 *  @param a,b                   upper and lower layer; at most six planes.
 *  @param opacityOfA,opacityOfB 0 to 1.
 *  @param maskOfA,maskOfB       masks of any depth but the same for both, or null; the first of up
 *                               to six planes counts. A mask of type kQVImageTypeInvertedMask is
 *                               read upside down. A mask row that can't be had counts as 1.
 *  @param dst                   receives the result.
 *  @param mode                  a mode; reverse forms aren't taken.
 *  @param rect                  what to blend.
 *  @return 0; kQVStatusBadArgument for an unknown mode, null or a row that can't be had;
 *          kQVStatusUnsupported for a depth other than 8, 16 and 32, images whose depth differs
 *  from that of a, masks that differ in depth, or too many planes. */
QVEFFECTS_API int QVEffectsBlendImagesWithOpacitiesAndMasks(__QVImage* a, float opacityOfA,
                                                            __QVImage* maskOfA, __QVImage* b,
                                                            float opacityOfB, __QVImage* maskOfB,
                                                            __QVImage* dst, QVBlendMode mode,
                                                            QVRect rect);

#ifdef __cplusplus
}
#endif

#endif
