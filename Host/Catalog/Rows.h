// SPDX-License-Identifier: Apache-2.0
// What the tables of the families are made with: one file a family, listed in Catalog.cpp.
#pragma once

#include <QVEffects/QVEffects.h>

#include "Bind.h"
#include "Catalog.h"

namespace catalog {

// The name of a C function and the call of it.
#define FUNCTION(name) #name, Bind(name)

inline constexpr Color kBlack = {0, 0, 0, 1};

/// Outset of an effect that looks at one pixel at a time.
inline constexpr Outset kPixelwise("");

/// The same of an effect that the query doesn't know.
inline int NoReach(std::span<const Value>) { return 0; }

/// Outset of an effect that the query doesn't know: its first parameter, in whole pixels.
inline int Radius(std::span<const Value> values) {
  return static_cast<int>(std::get<double>(values[0]));
}

inline Parameter ColorOf(std::string_view name, Color good, std::string_view help) {
  return {name, Kind::Rgba, "", 0, 1, kBlack, good, help};
}

inline Parameter NumberOf(std::string_view name, std::string_view unit, double min, double max,
                          double neutral, double good, std::string_view help) {
  return {name, Kind::Number, unit, min, max, neutral, good, help};
}

inline Parameter IntegerOf(std::string_view name, std::string_view unit, double min, double max,
                           double neutral, double good, std::string_view help) {
  return {name, Kind::Integer, unit, min, max, neutral, good, help};
}

inline Parameter CurveOf(std::string_view name, Curve good, std::string_view help) {
  return {name, Kind::Points, "", 0, 1, Curve{{0, 0}, {1, 1}}, std::move(good), help};
}

inline Parameter ImageOf(std::string_view name, Kind kind, std::string_view help) {
  return {name, kind, "", 0, 0, Image(), Image(), help};
}

inline Parameter ChoiceOf(std::string_view name, std::span<const Choice> choices, double neutral,
                          double good, std::string_view help) {
  return {name, Kind::Choice, "", 0, 0, neutral, good, help, choices};
}

/// The blend modes by name.
#define BLEND_MODE_CHOICE(constant, code, name) {name, kQVBlendMode##constant},
inline constexpr Choice kBlendModes[] = {QV_BLEND_MODES(BLEND_MODE_CHOICE)};
#undef BLEND_MODE_CHOICE

/// The effects of a family, and its exported functions that have no row.
struct Family {
  std::vector<Effect> effects;
  std::vector<Exception> exceptions = {};
};

Family Basics();
Family BlackAndWhites();
Family Blur();
Family Blending();
Family ColorModes();
Family Brightnesses();
Family Curves();
Family HueSaturations();
Family Masks();
Family Measures();
Family MedianFilters();
Family PhotoFilters();
Family SurfaceBlur();
Family Tonings();
Family Vignettes();

}  // namespace catalog
