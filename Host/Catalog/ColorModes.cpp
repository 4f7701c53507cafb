// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {
namespace {

// Without the modes that change the number of planes.
constexpr Choice kColorModes[] = {
    {"rgb-to-hsb", kQVColorModeRGBToHSB}, {"hsb-to-rgb", kQVColorModeHSBToRGB},
    {"rgb-to-hsl", kQVColorModeRGBToHSL}, {"hsl-to-rgb", kQVColorModeHSLToRGB},
    {"rgb-to-ycc", kQVColorModeRGBToYCC}, {"ycc-to-rgb", kQVColorModeYCCToRGB},
};

int ToGray(__QVImage* src, __QVImage* dst, QVRect rect, bool flatten) {
  return QVEffectsConvertImageMode(src, dst, rect,
                                   flatten ? kQVColorModeRGBToGrayFlat : kQVColorModeRGBToGray);
}

int ToRGB(__QVImage* src, __QVImage* dst, QVRect rect) {
  return QVEffectsConvertImageMode(src, dst, rect, kQVColorModeGrayToRGB);
}

}  // namespace

Family ColorModes() {
  return {{
              {"convert-mode",
               FUNCTION(QVEffectsConvertImageMode),
               "Converts RGB to another form of colour, stored as if it were RGB, or back.",
               InPlace::Yes,
               kPixelwise,
               {ChoiceOf("mode", kColorModes, kQVColorModeRGBToHSB, kQVColorModeRGBToHSB,
                         "from what to what")},
               kNeedsRGB,
               Transparency::Kept,
               0,
               kQVStatusUnknown},
              {"to-gray",
               "QVEffectsConvertImageMode",
               Bind(ToGray),
               "Turns an RGB picture into a gray one by its luma.",
               InPlace::No,
               kPixelwise,
               {{"flatten", Kind::Flag, "", 0, 1, 0.0, 0.0,
                 "over white where the picture is transparent"}},
               kNeedsRGB,
               Transparency::Kept,
               1,
               kQVStatusUnknown},
              {"to-rgb",
               "QVEffectsConvertImageMode",
               Bind(ToRGB),
               "Turns a gray picture into an RGB one that looks the same.",
               InPlace::No,
               kPixelwise,
               {},
               kNeedsGray,
               Transparency::Kept,
               3,
               kQVStatusUnknown},
          },
          {
              {"QVEffectsConvertColorMode", "works on a single colour"},
          }};
}

}  // namespace catalog
