// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Conversion of images and colours between RGB, other forms of colour, and gray.
 *
 *  Nothing marks an image as being in another form than RGB: the caller remembers, and may run on
 *  single planes what is meant for lightness or hue alone, then convert back. Components are stored
 *  as ordinary samples, so that a hue lies in 0 to full scale. For HSB and HSL see
 *  QVEffectsColor.h. YCC is luma Y and the differences Cb and Cr, which are 0.5 for grays:
 *
 *      Y  =  0.299    R + 0.587    G + 0.114    B
 *      Cb = -0.168736 R - 0.331264 G + 0.5      B + 0.5
 *      Cr =  0.5      R - 0.418688 G - 0.081312 B + 0.5 */
#ifndef QVEFFECTS_QVEFFECTSCONVERT_H
#define QVEFFECTS_QVEFFECTSCONVERT_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What is converted to what. Gray images have one colour plane, all others three. */
enum QVColorMode {
  kQVColorModeRGBToHSB = 0,      /**< to hue, saturation, brightness */
  kQVColorModeHSBToRGB = 1,      /**< and back */
  kQVColorModeRGBToHSL = 2,      /**< to hue, saturation, lightness */
  kQVColorModeHSLToRGB = 3,      /**< and back */
  kQVColorModeRGBToYCC = 4,      /**< to Y, Cb, Cr */
  kQVColorModeYCCToRGB = 5,      /**< and back; components are held to 0 to 1 */
  kQVColorModeRGBToGray = 6,     /**< to Y alone */
  kQVColorModeGrayToRGB = 7,     /**< the gray sample three times */
  kQVColorModeRGBToGrayFlat = 8, /**< to the Y of the image laid on white */
};

/** Converts a rectangle of an image.
 *
 *  Where `dst` has transparency, it is that of `src`, or full scale if `src` has none. Results are
 *  rounded to nearest at 8 and 16 bits and held to the range (NaN is 0); float results are held in
 *  #kQVColorModeYCCToRGB only. Outside `src` the nearest pixel inside gives the colour, with
 *  transparency 0; what falls outside `dst` is dropped.
 *  @param src,dst source and destination: 8, 16 or 32 bits, the same in both; the colour planes
 *                 that the mode has on its side, and a transparency plane or none. They may be the
 *                 same image in the modes up to #kQVColorModeYCCToRGB; images of different planes
 *                 mustn't share memory. Colour spaces aren't looked at.
 *  @param rect    what to convert; see QVEffectsBasics.h for rectangles that aren't inside.
 *  @param mode    see ::QVColorMode.
 *  @return 0; kQVStatusBadArgument for another mode or null; kQVStatusUnsupported for images that
 *          aren't as above; kQVStatusOutOfMemory; kQVStatusUnknown for a row that can't be had. */
QVEFFECTS_API int QVEffectsConvertImageMode(__QVImage* src, __QVImage* dst, QVRect rect,
                                            unsigned mode);

/** Converts one colour.
 *  @param in,out three floats, 0 to 1; may be the same array.
 *  @param mode   one of ::QVColorMode up to #kQVColorModeYCCToRGB.
 *  @return 0; kQVStatusBadArgument for another mode or null. */
QVEFFECTS_API int QVEffectsConvertColorMode(const float* in, float* out, unsigned mode);

#ifdef __cplusplus
}
#endif

#endif
