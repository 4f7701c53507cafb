// SPDX-License-Identifier: Apache-2.0
#include "Catalog.h"

#include <QVEffects/QVEffects.h>

#include <algorithm>

#include "Bind.h"

namespace catalog {
namespace {

// The name of a C function and the call of it.
#define FUNCTION(name) #name, Bind(name)

constexpr Color kBlack = {0, 0, 0, 1};

// Outset of an effect that looks at one pixel at a time.
int Pixelwise(std::span<const Value>) { return 0; }

Parameter ColorOf(std::string_view name, Color good, std::string_view help) {
  return {name, Kind::Rgba, "", 0, 1, kBlack, good, help};
}

Parameter NumberOf(std::string_view name, std::string_view unit, double min, double max,
                   double neutral, double good, std::string_view help) {
  return {name, Kind::Number, unit, min, max, neutral, good, help};
}

Parameter ImageOf(std::string_view name, Kind kind, std::string_view help) {
  return {name, kind, "", 0, 0, Image(), Image(), help};
}

Parameter ChoiceOf(std::string_view name, std::span<const Choice> choices, double neutral,
                   double good, std::string_view help) {
  return {name, Kind::Choice, "", 0, 0, neutral, good, help, choices};
}

// Without the modes that change the number of planes.
constexpr Choice kColorModes[] = {
    {"rgb-to-hsb", kQVColorModeRGBToHSB}, {"hsb-to-rgb", kQVColorModeHSBToRGB},
    {"rgb-to-hsl", kQVColorModeRGBToHSL}, {"hsl-to-rgb", kQVColorModeHSLToRGB},
    {"rgb-to-ycc", kQVColorModeRGBToYCC}, {"ycc-to-rgb", kQVColorModeYCCToRGB},
};

#define CHOICE(constant, code, name) {name, kQVBlendMode##constant},
constexpr Choice kBlendModes[] = {QV_BLEND_MODES(CHOICE)};

// Another picture over this one.
int Blend(__QVImage* src, __QVImage* dst, QVRect rect, __QVImage* with, QVBlendMode mode,
          float opacity, __QVImage* mask) {
  return QVEffectsBlendImagesWithOpacitiesAndMasks(with, opacity, mask, src, 1, nullptr, dst, mode,
                                                   rect);
}

int ToGray(__QVImage* src, __QVImage* dst, QVRect rect, bool flatten) {
  return QVEffectsConvertImageMode(src, dst, rect,
                                   flatten ? kQVColorModeRGBToGrayFlat : kQVColorModeRGBToGray);
}

int ToRGB(__QVImage* src, __QVImage* dst, QVRect rect) {
  return QVEffectsConvertImageMode(src, dst, rect, kQVColorModeGrayToRGB);
}

const std::vector<Effect>& Table() {
  static const std::vector<Effect> table = {
      {"blend",
       "QVEffectsBlendImagesWithOpacitiesAndMasks",
       Bind(Blend),
       "Lays another picture over this one.",
       InPlace::Yes,
       Pixelwise,
       {ImageOf("with", Kind::Layer, "the picture laid over"),
        ChoiceOf("mode", kBlendModes, kQVBlendModeNormal, kQVBlendModeOverlay,
                 "how the colours combine; hue to luminosity, lighter-color and darker-color are "
                 "for RGB"),
        NumberOf("opacity", "", 0, 1, 0, 1, "how much of the picture laid over is seen"),
        ImageOf("mask", Kind::Mask, "where it is seen, by the first sample: white is wholly")},
       kNeedsNothing,
       Transparency::Set},
      {"convert-mode",
       FUNCTION(QVEffectsConvertImageMode),
       "Converts RGB to another form of colour, stored as if it were RGB, or back.",
       InPlace::Yes,
       Pixelwise,
       {ChoiceOf("mode", kColorModes, kQVColorModeRGBToHSB, kQVColorModeRGBToHSB,
                 "from what to what")},
       kNeedsRGB,
       Transparency::Kept,
       0,
       kQVStatusUnknown},
      {"copy", FUNCTION(QVEffectsCopyImage), "Copies the rectangle as it is.", InPlace::Yes,
       Pixelwise},
      {"fill-color",
       FUNCTION(QVEffectsFillColor),
       "Fills the rectangle with one colour, transparency included.",
       InPlace::Yes,
       Pixelwise,
       {ColorOf("color", {0.85f, 0.45f, 0.15f, 1}, "what to fill with")},
       kNeedsNothing,
       Transparency::Set},
      {"invert", FUNCTION(QVEffectsInvert), "Turns every colour into its complement.", InPlace::Yes,
       Pixelwise},
      {"to-gray",
       "QVEffectsConvertImageMode",
       Bind(ToGray),
       "Turns an RGB picture into a gray one by its luma.",
       InPlace::No,
       Pixelwise,
       {{"flatten", Kind::Flag, "", 0, 1, 0.0, 0.0, "over white where the picture is transparent"}},
       kNeedsRGB,
       Transparency::Kept,
       1,
       kQVStatusUnknown},
      {"to-rgb",
       "QVEffectsConvertImageMode",
       Bind(ToRGB),
       "Turns a gray picture into an RGB one that looks the same.",
       InPlace::No,
       Pixelwise,
       {},
       kNeedsGray,
       Transparency::Kept,
       3,
       kQVStatusUnknown},
  };
  return table;
}

constexpr Exception kExceptions[] = {
    {"QVEffectsBlendImages",
     "QVEffectsBlendImagesWithOpacitiesAndMasks at opacity 1 without masks"},
    {"QVEffectsGetReverseBlendMode", "answers about a mode and touches no image"},
    {"QVEffectsConvertColorMode", "works on a single colour"},
};

struct Meaning {
  int status;
  std::string_view text;
};

constexpr Meaning kMeanings[] = {
    {kQVStatusSuccess, "done"},
    {kQVStatusUnknown, "unknown failure"},
    {kQVStatusUnknown2, "unknown failure or out of memory"},
    {kQVStatusCannotBeMet, "the request can't be met"},
    {kQVStatusUnsupportedOlder, "this kind of image isn't supported"},
    {kQVStatusBadArgument, "bad argument, or samples that can't be had"},
    {kQVStatusCancelled, "cancelled"},
    {kQVStatusUnsupported, "this kind of image isn't supported"},
    {kQVStatusUnknown3, "unknown failure"},
    {kQVStatusOutOfMemory, "out of memory"},
};

}  // namespace

std::span<const Effect> Effects() { return Table(); }

std::span<const Exception> Exceptions() { return kExceptions; }

const Effect* Find(std::string_view name) {
  const auto found = std::ranges::find(Table(), name, &Effect::name);
  return found == Table().end() ? nullptr : &*found;
}

std::vector<Value> GoodValues(const Effect& effect) {
  std::vector<Value> values;
  values.reserve(effect.parameters.size());
  for (const Parameter& parameter : effect.parameters) values.push_back(parameter.good);
  return values;
}

std::string_view StatusMeaning(int status) {
  const auto* found = std::ranges::find(kMeanings, status, &Meaning::status);
  return found == std::end(kMeanings) ? "a status of the core library" : found->text;
}

Argument<const float*>::Argument(const Value& value, const Call& call) {
  const Color& color = std::get<Color>(value);
  const int colors = QVImageGetNumPlanes(call.dst) - QVImageGetTransparency(call.dst);
  if (colors >= 3) {
    mSamples.assign(color.begin(), color.begin() + 3);
  } else {
    mSamples.assign(1, 0.299f * color[0] + 0.587f * color[1] + 0.114f * color[2]);
  }
  mSamples.resize(std::max(colors, 0));
  mSamples.resize(std::max(QVImageGetNumPlanes(call.dst), 0), color[3]);
}

}  // namespace catalog
