// SPDX-License-Identifier: Apache-2.0
// Texts of the command line to values and back.
#pragma once

#include <QVCore9/QVCore9.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Catalog.h"

namespace qvfx {

/// A finite number in the C locale's form, with nothing before or after it.
std::optional<double> ParseNumber(std::string_view text);

/// Integers between commas or another separator, as many as there must be.
std::optional<std::vector<int>> ParseIntegers(std::string_view text, char separator,
                                              std::size_t count);

/// A parameter's value; throws what is wrong with it as a usage failure that starts with `where`.
catalog::Value ParseValue(const catalog::Parameter& parameter, std::string_view text,
                          const std::string& where);

/// A value as ParseValue() takes it.
std::string FormatValue(const catalog::Parameter& parameter, const catalog::Value& value);

/// What a parameter takes: "0 to 250 px", "on or off", "one of 6", "a colour".
std::string FormatRange(const catalog::Parameter& parameter);

/// The names of effects, parameters or choices.
std::vector<std::string_view> NamesOf(const auto& things) {
  std::vector<std::string_view> names;
  names.reserve(things.size());
  for (const auto& thing : things) names.push_back(thing.name);
  return names;
}

/// "; did you mean 'NAME'?" for the name nearest to a text, or nothing when none is near.
std::string Suggestion(std::string_view text, std::span<const std::string_view> names);

}  // namespace qvfx
