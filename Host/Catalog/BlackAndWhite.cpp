// SPDX-License-Identifier: Apache-2.0
#include "Rows.h"

namespace catalog {
namespace {

constexpr Choice kModes[] = {{"luma", kQVBlackWhiteLuma}, {"mean", kQVBlackWhiteMean}};

int ColorResponse(__QVImage* src, __QVImage* dst, QVRect rect, const float* filter, float red,
                  float yellow, float green, float cyan, float blue, float magenta) {
  const float response[] = {red, yellow, green, cyan, blue, magenta};
  return QVEffectsBlackAndWhiteColorResponse(src, dst, rect, filter, response);
}

// The response comes from the whole of src, whatever the rectangle.
int AutoResponse(__QVImage* src, __QVImage* dst, QVRect rect) {
  float response[6];
  const int status = QVEffectsBlackAndWhiteColorResponseGetAutoMixture(src, response);
  if (status != kQVStatusSuccess) return status;
  return QVEffectsBlackAndWhiteColorResponse(src, dst, rect, nullptr, response);
}

int MeasuresImage(std::span<const Value>) { return kWholeImage; }

Parameter Part(std::string_view name, double neutral, double good, std::string_view help) {
  return NumberOf(name, "", -2, 2, neutral, good, help);
}

Parameter Weight(std::string_view name, double neutral, std::string_view help) {
  return NumberOf(name, "", 0, 1, neutral, neutral, help);
}

Parameter Response(std::string_view name, double good, std::string_view help) {
  return NumberOf(name, "", -1, 1, 0, good, help);
}

Parameter Hue(double good) {
  return NumberOf("hue", "", 0, 1, 0.33, good, "of the filter: 0 red, 0.17 yellow, 0.33 green");
}

}  // namespace

Family BlackAndWhites() {
  return {{
      {"black-and-white",
       FUNCTION(QVEffectsBlackAndWhite),
       "Makes a black and white film of a picture: colour filter, contrast, grain, tone.",
       InPlace::Yes,
       kPixelwise,
       {ImageOf("grain", Kind::Mask, "256 by 256 pixels of grain, repeated"),
        ColorOf("tone-color", {0.72f, 0.5f, 0.3f, 1}, "what grays are toned with"), Hue(0.08),
        NumberOf("contrast", "", -1, 1, 0, 0.3, "of the midtones"),
        NumberOf("grain-amount", "", 0, 1, 0, 0.3, "how much grain"),
        NumberOf("tone-amount", "", 0, 1, 0, 0.35, "how much tone")},
       kNeedsRGB},
      {"black-and-white-auto",
       "QVEffectsBlackAndWhiteColorResponseGetAutoMixture",
       Bind(AutoResponse),
       "Turns a picture gray, colours that vary much in it count more.",
       InPlace::Yes,
       MeasuresImage,
       {},
       kNeedsRGB},
      {"black-and-white-color-filter",
       FUNCTION(QVEffectsBlackAndWhiteWithColorFilter),
       "Turns a picture gray as behind a filter of a pure colour.",
       InPlace::Yes,
       kPixelwise,
       {Hue(0.08)}},
      {"black-and-white-color-response",
       "QVEffectsBlackAndWhiteColorResponse",
       Bind(ColorResponse),
       "Turns a picture gray, six colours brighter or darker than their luma.",
       InPlace::Yes,
       kPixelwise,
       {{"filter", Kind::Rgba, "", 0, 1, Color{0.5f, 0.5f, 0.5f, 1}, Color{0.5f, 0.5f, 0.5f, 1},
         "a colour laid over first, mid gray for none"},
        Response("red", 0.2, "how much brighter red is"),
        Response("yellow", 0.1, "how much brighter yellow is"),
        Response("green", 0, "how much brighter green is"),
        Response("cyan", -0.2, "how much brighter cyan is"),
        Response("blue", -0.3, "how much brighter blue is"),
        Response("magenta", 0, "how much brighter magenta is")},
       kNeedsRGB},
      {"black-white",
       FUNCTION(QVEffectsBlackWhite),
       "Turns a picture gray, its planes stay.",
       InPlace::Yes,
       kPixelwise,
       {ChoiceOf("mode", kModes, kQVBlackWhiteLuma, kQVBlackWhiteLuma, "what is taken for gray")}},
      {"channel-mixer",
       FUNCTION(QVEffectsChannelMixer),
       "Makes red, green and blue from parts of all three.",
       InPlace::Yes,
       kPixelwise,
       {Part("red-from-red", 1, 0.393, "how much of red goes into red"),
        Part("red-from-green", 0, 0.769, "how much of green goes into red"),
        Part("red-from-blue", 0, 0.189, "how much of blue goes into red"),
        Part("green-from-red", 0, 0.349, "how much of red goes into green"),
        Part("green-from-green", 1, 0.686, "how much of green goes into green"),
        Part("green-from-blue", 0, 0.168, "how much of blue goes into green"),
        Part("blue-from-red", 0, 0.272, "how much of red goes into blue"),
        Part("blue-from-green", 0, 0.534, "how much of green goes into blue"),
        Part("blue-from-blue", 1, 0.131, "how much of blue goes into blue")},
       kNeedsRGB},
      {"color-filter",
       FUNCTION(QVEffectsColorFilter),
       "Turns a picture gray as behind a colour filter.",
       InPlace::Yes,
       kPixelwise,
       {Weight("red", 0.299, "of the filter's colour"),
        Weight("green", 0.587, "of the filter's colour"),
        Weight("blue", 0.114, "of the filter's colour")}},
  }};
}

}  // namespace catalog
