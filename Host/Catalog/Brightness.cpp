// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {
namespace {

int BrightnessContrast(__QVImage* src, __QVImage* dst, QVRect rect, float brightness,
                       float contrast, __QVImage* mask) {
  return QVEffectsBrightnessContrastWithMask(src, dst, mask, rect, brightness, contrast);
}

int BrightnessMidtone(__QVImage* src, __QVImage* dst, QVRect rect, float brightness, float contrast,
                      __QVImage* mask) {
  return QVEffectsBrightnessMidtoneContrastWithMask(src, dst, mask, rect, brightness, contrast);
}

int Brightness(__QVImage* src, __QVImage* dst, QVRect rect, float amount, __QVImage* mask) {
  return QVEffectsBrightnessWithMask(src, dst, rect, mask, amount);
}

int MidtoneAlt(__QVImage* src, __QVImage* dst, QVRect rect, float amount, __QVImage* mask) {
  return QVEffectsMidtoneContrastAltWithMask(src, dst, rect, mask, amount);
}

Parameter Strength() {
  return ImageOf("mask", Kind::Mask, "how much, from black (not at all) to white");
}

Parameter BrightnessOf(double good) {
  return NumberOf("brightness", "", -1, 1, 0, good, "darker below 0, lighter above");
}

Parameter ContrastOf(double good, std::string_view help) {
  return NumberOf("contrast", "", -1, 1, 0, good, help);
}

}  // namespace

Family Brightnesses() {
  return {{
              {"brightness",
               "QVEffectsBrightnessWithMask",
               Bind(Brightness),
               "Makes a picture lighter or darker, black and white stay.",
               InPlace::Yes,
               kPixelwise,
               {NumberOf("amount", "", -1, 1, 0, 0.3, "darker below 0, lighter above"),
                ImageOf("mask", Kind::Mask,
                        "what to lighten (white) or darken (black) further, mid gray is neutral")}},
              {"brightness-contrast",
               "QVEffectsBrightnessContrastWithMask",
               Bind(BrightnessContrast),
               "Changes brightness and contrast, black and white stay.",
               InPlace::Yes,
               kPixelwise,
               {BrightnessOf(0.1), ContrastOf(0.4, "flatter below 0, steeper above"), Strength()}},
              {"brightness-midtone-contrast",
               "QVEffectsBrightnessMidtoneContrastWithMask",
               Bind(BrightnessMidtone),
               "Changes brightness and the contrast of the midtones, shadows and highlights stay.",
               InPlace::Yes,
               kPixelwise,
               {BrightnessOf(0.1), ContrastOf(0.5, "of the midtones"), Strength()}},
              {"midtone-contrast",
               FUNCTION(QVEffectsMidtoneContrast),
               "Changes the contrast of the midtones, shadows and highlights stay.",
               InPlace::Yes,
               kPixelwise,
               {NumberOf("amount", "", -1, 1, 0, 0.5, "flatter below 0, steeper above")}},
              {"midtone-contrast-alt",
               "QVEffectsMidtoneContrastAltWithMask",
               Bind(MidtoneAlt),
               "Changes the contrast of the midtones, and past 1 that of the whole.",
               InPlace::Yes,
               kPixelwise,
               {NumberOf("amount", "", -2, 2, 0, 1.2, "flatter below 0, steeper above"),
                ImageOf("mask", Kind::Mask, "shifts the amount down (black) or up (white) by 1")}},
          },
          {
              {"QVEffectsBrightnessContrast", "QVEffectsBrightnessContrastWithMask without a mask"},
              {"QVEffectsBrightnessContrastMakeCurves", "makes curves and touches no image"},
              {"QVEffectsBrightnessMidtoneContrast",
               "QVEffectsBrightnessMidtoneContrastWithMask without a mask"},
              {"QVEffectsBrightnessMidtoneContrastMakeCurves", "makes curves and touches no image"},
              {"QVEffectsBrightnessAltMakeCurves", "makes curves and touches no image"},
              {"QVEffectsMidtoneContrastMakeCurves", "makes curves and touches no image"},
              {"QVEffectsMidtoneContrastAltMakeCurves", "makes curves and touches no image"},
          }};
}

}  // namespace catalog
