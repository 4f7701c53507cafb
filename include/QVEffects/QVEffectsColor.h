// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Colour mathematics on single colours, and random numbers.
 *
 *  A colour is an array of three floats: R, G, B from 0 to 1 (gamma as in the image), or one of the
 *  forms below. Components may lie outside their range; then the formula runs as it stands. NaN and
 *  infinities give some colour, often NaN, and never undefined behaviour. Input and output arrays
 *  are distinct. All functions but Random() and RandomReset() are reentrant.
 *
 *  | Form | Components, from 0 to 1                                                            |
 *  |------|------------------------------------------------------------------------------------|
 *  | HSB  | hue, saturation, brightness (the largest component)                                |
 *  | HSL  | hue, saturation, lightness (the mean of the largest and the smallest component)    |
 *  | LCH  | luma (Rec. 601), chroma (the largest minus the smallest component), hue            |
 *  | XYZ  | X, Y, Z of light, for a matrix of the library's own: white is near 1, 1, 1          |
 *  | Lab  | L (1 is what is 100 elsewhere), a and b (0.5 is neutral) of those X, Y, Z           |
 *
 *  A hue from 0 up to 1 is the whole circle: 0 red, 1/3 green, 2/3 blue. Grays have hue 0. */
#ifndef QVEFFECTS_QVEFFECTSCOLOR_H
#define QVEFFECTS_QVEFFECTSCOLOR_H

#include <QVCore9/QVExport.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** RGB to luma, chroma, hue. luma = 0.299 R + 0.587 G + 0.114 B.
 *  @param rgb three floats.
 *  @param lch three floats; set. */
QVEFFECTS_API void RGB2LCH(const float* rgb, float* lch);

/** Luma, chroma, hue to RGB. The result has the given luma; where no colour from 0 to 1 has that
 *  luma and chroma, the chroma gives way. Luma 0 or below is black.
 *  @param lch three floats; a hue of 1 or more counts as between red and yellow, one below 0
 *             should be raised by 1 first.
 *  @param rgb three floats; set. */
QVEFFECTS_API void LCH2RGB(const float* lch, float* rgb);

/** RGB to hue, saturation, brightness.
 *  @param rgb three floats.
 *  @param hsb three floats; set. */
QVEFFECTS_API void RGB2HSB(const float* rgb, float* hsb);

/** Hue, saturation, brightness to RGB.
 *  @param hsb three floats; a hue of 1 or more goes round the circle again (a million times at
 *             most), one below -1/6 should be raised by 1 first.
 *  @param rgb three floats; set. */
QVEFFECTS_API void HSB2RGB(const float* hsb, float* rgb);

/** RGB to hue, saturation, lightness. Saturation is 0 for lightness 0 and 1.
 *  @param rgb three floats.
 *  @param hsl three floats; set. */
QVEFFECTS_API void RGB2HSL(const float* rgb, float* hsl);

/** Hue, saturation, lightness to RGB.
 *  @param hsl three floats; for hue see HSB2RGB().
 *  @param rgb three floats; set. */
QVEFFECTS_API void HSL2RGB(const float* hsl, float* rgb);

/** As RGB2HSB(), by the formula that is common in shaders: the results differ by rounding, by more
 *  near gray and near black, where 1e-10 is added to the divisors, and where the largest component
 *  is negative.
 *  @param rgb three floats.
 *  @param hsb three floats; set. */
QVEFFECTS_API void RGB2HSB_GLSL(const float* rgb, float* hsb);

/** As HSB2RGB(), by the formula that is common in shaders.
 *  @param hsb three floats; any hue goes round the circle.
 *  @param rgb three floats; set. */
QVEFFECTS_API void HSB2RGB_GLSL(const float* hsb, float* rgb);

/** RGB with the gamma of sRGB to X, Y, Z. Z depends on blue alone.
 *  @param rgb three floats.
 *  @param xyz three floats; set. */
QVEFFECTS_API void RGB2XYZ(const float* rgb, float* xyz);

/** X, Y, Z to RGB with the gamma of sRGB.
 *  @param xyz three floats.
 *  @param rgb three floats; set. */
QVEFFECTS_API void XYZ2RGB(const float* xyz, float* rgb);

/** RGB to Lab. As CIE L*a*b*, with L divided by 100, and a and b scaled to lie from 0 to 1, with
 *  neutral at 0.5, by other factors above neutral than below.
 *  @param rgb three floats.
 *  @param lab three floats; set. */
QVEFFECTS_API void RGB2Lab(const float* rgb, float* lab);

/** Lab to RGB.
 *  @param lab three floats.
 *  @param rgb three floats; set. */
QVEFFECTS_API void Lab2RGB(const float* lab, float* rgb);

/** Changes saturation. The largest component stays, the others move away from it or towards it,
 *  the smallest never below 0.
 *  @param rgb    three floats; changed.
 *  @param amount -1 (gray at the level of the largest component) to 1 and above; 0 for no change
 *                of a colour from 0 to 1, but for rounding. */
QVEFFECTS_API void Saturation(float* rgb, float amount);

/** Changes brightness: the largest component moves along a hyperbola that holds 0 and 1, never
 *  above 1, and the ratios of the components stay.
 *  @param rgb    three floats; changed.
 *  @param amount -1 to 1 and above; 0 for no change of a colour from 0 to 1, but for rounding. */
QVEFFECTS_API void Brightness(float* rgb, float amount);

/** Saturation() and Brightness() in one step, both for the largest component of the input.
 *  @param rgb        three floats; changed.
 *  @param saturation as in Saturation().
 *  @param brightness as in Brightness(). */
QVEFFECTS_API void SaturationBrightness(float* rgb, float saturation, float brightness);

/** Turns hue, and changes saturation and brightness. Serves for hue, saturation, lightness too.
 *  @param hsb        three floats; changed.
 *  @param hue        added to the hue, which goes round the circle.
 *  @param saturation saturation is multiplied with 1 + this, and held at 1.
 *  @param brightness moves brightness along the hyperbola of Brightness(), without its bound. */
QVEFFECTS_API void HueSaturationBrightness(float* hsb, float hue, float saturation,
                                           float brightness);

/** Changes vibrance by spreading a colour as far as its distance to black and white allows.
 *  @param rgb    three floats; changed.
 *  @param amount -1 (gray, the mean of the largest and the smallest component) to 1. */
QVEFFECTS_API void Vibrance(float* rgb, float amount);

/** Changes vibrance: pale colours move most, and the sum of the components stays unless one would
 *  pass 1. Black and grays stay.
 *  @param rgb    three floats; changed.
 *  @param amount -1 to 1. */
QVEFFECTS_API void Vibrance2(float* rgb, float amount);

/** Spectral radiance of a black body, by Planck's law.
 *  @param wavelength  in metres, above 0.
 *  @param temperature in kelvin, above 0.
 *  @return radiance by wavelength, in watts per steradian and cubic metre. */
QVEFFECTS_API double BlackBodyRadiation(double wavelength, double temperature);

/** Begins the sequence of Random() again. One caller at a time. */
QVEFFECTS_API void RandomReset(void);

/** The next number of a sequence that is the same in every process. One caller at a time.
 *  @return an odd number, as all of this sequence are. */
QVEFFECTS_API uint32_t Random(void);

/** Noise: a fixed table of numbers spread uniformly over 0 to 65535. */
extern QVEFFECTS_API const unsigned short gRandom[65536];

#ifdef __cplusplus
}

/** Noise for a position: the same in every process, whatever the order of calls. It repeats every
 *  256 positions in each direction.
 *  @tparam T unsigned char, for 0 to 255, or float, for 0 to 1.
 *  @param x,y the position; any int.
 *  @return the noise. */
template <class T>
T RandomReproducible(int x, int y);

/** @cond */
template <>
QVEFFECTS_API unsigned char RandomReproducible<unsigned char>(int x, int y);
template <>
QVEFFECTS_API float RandomReproducible<float>(int x, int y);
/** @endcond */
#endif

#endif
