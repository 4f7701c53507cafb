// SPDX-License-Identifier: Apache-2.0
#include "Values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>

#include "Error.h"

namespace qvfx {
namespace {

using catalog::Color;
using catalog::Curve;
using catalog::Kind;
using catalog::Parameter;
using catalog::Value;

struct NamedColor {
  std::string_view name;
  std::uint32_t rgba;
};

constexpr NamedColor kColors[] = {
    {"black", 0x000000ff},  {"white", 0xffffffff},   {"gray", 0x808080ff},
    {"grey", 0x808080ff},   {"red", 0xff0000ff},     {"green", 0x008000ff},
    {"lime", 0x00ff00ff},   {"blue", 0x0000ffff},    {"navy", 0x000080ff},
    {"yellow", 0xffff00ff}, {"orange", 0xffa500ff},  {"cyan", 0x00ffffff},
    {"teal", 0x008080ff},   {"magenta", 0xff00ffff}, {"purple", 0x800080ff},
    {"pink", 0xffc0cbff},   {"brown", 0xa52a2aff},   {"transparent", 0x00000000},
};

struct NamedFlag {
  std::string_view name;
  bool on;
};

constexpr NamedFlag kFlags[] = {{"on", true},   {"true", true},   {"yes", true}, {"1", true},
                                {"off", false}, {"false", false}, {"no", false}, {"0", false}};

template <class T>
bool ParseWhole(std::string_view text, T& value, auto... format) {
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, format...);
  return error == std::errc() && end == text.data() + text.size();
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t at = text.find(separator);
    parts.push_back(text.substr(0, at));
    if (at == text.npos) return parts;
    text.remove_prefix(at + 1);
  }
}

Color FromHex(std::uint32_t rgba) {
  Color color;
  for (std::size_t i = 0; i < 4; ++i) {
    color[i] = static_cast<float>((rgba >> (24 - 8 * i)) & 0xff) / 255.0f;
  }
  return color;
}

std::optional<Color> ParseHex(std::string_view digits) {
  std::uint32_t value = 0;
  if ((digits.size() != 6 && digits.size() != 8) || !ParseWhole(digits, value, 16)) return {};
  return FromHex(digits.size() == 6 ? value << 8 | 0xff : value);
}

// r,g,b or r,g,b,a or one gray.
std::optional<Color> ParseSamples(std::string_view text) {
  const auto parts = Split(text, ',');
  if (parts.size() == 2 || parts.size() > 4) return {};
  Color color = {0, 0, 0, 1};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto sample = ParseNumber(parts[i]);
    if (!sample || *sample < 0 || *sample > 1) return {};
    color[i] = static_cast<float>(*sample);
  }
  if (parts.size() == 1) std::fill_n(color.begin(), 3, color[0]);
  return color;
}

std::optional<Color> ParseColor(std::string_view text) {
  const auto* named = std::ranges::find(kColors, text, &NamedColor::name);
  if (named != std::end(kColors)) return FromHex(named->rgba);
  return text.starts_with('#') ? ParseHex(text.substr(1)) : ParseSamples(text);
}

// x,y:x,y...
std::optional<Curve> ParseCurve(std::string_view text) {
  Curve curve;
  for (const std::string_view part : Split(text, ':')) {
    const auto point = Split(part, ',');
    if (point.size() != 2) return {};
    const auto x = ParseNumber(point[0]), y = ParseNumber(point[1]);
    if (!x || !y || *x < 0 || *x > 1 || *y < 0 || *y > 1) return {};
    curve.push_back({static_cast<float>(*x), static_cast<float>(*y)});
    if (curve.size() > 1 && !(curve.end()[-1][0] > curve.end()[-2][0])) return {};
  }
  if (curve.size() < 2) return {};
  return curve;
}

std::string Shortest(auto number) {
  char text[32];
  return std::string(text, std::to_chars(text, std::end(text), number).ptr);
}

Value ParseRanged(const Parameter& parameter, std::string_view text, const std::string& where) {
  const auto number = ParseNumber(text);
  if (!number) throw Failure(Exit::Usage, where + ": not a number");
  if (parameter.kind == Kind::Integer && *number != std::trunc(*number)) {
    throw Failure(Exit::Usage, where + ": not an integer");
  }
  if (*number < parameter.min || *number > parameter.max) {
    throw Failure(Exit::Usage, where + ": out of range (" + FormatRange(parameter) + ")");
  }
  return *number;
}

// A near name is likelier meant than others; without one the user sees them all.
Value ParseChoice(const Parameter& parameter, std::string_view text, const std::string& where) {
  const auto found = std::ranges::find(parameter.choices, text, &catalog::Choice::name);
  if (found != parameter.choices.end()) return found->value;
  const std::string suggestion = Suggestion(text, NamesOf(parameter.choices));
  if (!suggestion.empty()) throw Failure(Exit::Usage, where + ": no such choice" + suggestion);
  std::string names;
  for (const catalog::Choice& choice : parameter.choices) {
    names.append(names.empty() ? "" : ", ").append(choice.name);
  }
  throw Failure(Exit::Usage, where + ": not one of " + names);
}

std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

std::optional<double> ParseNumber(std::string_view text) {
  double value = 0;
  if (!ParseWhole(text, value) || !std::isfinite(value)) return {};
  return value;
}

std::optional<std::vector<int>> ParseIntegers(std::string_view text, char separator,
                                              std::size_t count) {
  std::vector<int> values;
  for (const std::string_view part : Split(text, separator)) {
    if (!ParseWhole(part, values.emplace_back(), 10)) return {};
  }
  if (values.size() != count) return {};
  return values;
}

Value ParseValue(const Parameter& parameter, std::string_view text, const std::string& where) {
  if (parameter.kind == Kind::Rgba) {
    if (const auto color = ParseColor(text)) return *color;
    throw Failure(Exit::Usage,
                  where +
                      ": not a colour (#rrggbb, #rrggbbaa, r,g,b or r,g,b,a in 0 to 1, one "
                      "gray, or a name such as red)");
  }
  if (parameter.kind == Kind::Points) {
    if (auto curve = ParseCurve(text)) return *std::move(curve);
    throw Failure(Exit::Usage,
                  where + ": not a curve (two or more points x,y:x,y:... in 0 to 1, x rising)");
  }
  if (parameter.kind == Kind::Flag) {
    const auto* flag = std::ranges::find(kFlags, text, &NamedFlag::name);
    if (flag == std::end(kFlags)) throw Failure(Exit::Usage, where + ": neither on nor off");
    return flag->on ? 1.0 : 0.0;
  }
  if (parameter.kind == Kind::Choice) return ParseChoice(parameter, text, where);
  return ParseRanged(parameter, text, where);
}

std::string FormatValue(const Parameter& parameter, const Value& value) {
  if (parameter.kind == Kind::Flag) return std::get<double>(value) != 0 ? "on" : "off";
  if (parameter.kind == Kind::Choice) {
    return std::string(
        std::ranges::find(parameter.choices, std::get<double>(value), &catalog::Choice::value)
            ->name);
  }
  if (parameter.kind == Kind::Points) {
    std::string points;
    for (const auto& [x, y] : std::get<Curve>(value)) {
      points.append(points.empty() ? "" : ":").append(Shortest(x)).append(",").append(Shortest(y));
    }
    return points;
  }
  if (parameter.kind != Kind::Rgba) return Shortest(std::get<double>(value));
  const Color& color = std::get<Color>(value);
  std::string text = Shortest(color[0]) + "," + Shortest(color[1]) + "," + Shortest(color[2]);
  return color[3] == 1 ? text : text + "," + Shortest(color[3]);
}

std::string FormatRange(const Parameter& parameter) {
  if (IsNeeded(parameter.kind)) return "a picture's file";
  if (parameter.kind == Kind::Mask) return "a picture's file, or nothing";
  if (parameter.kind == Kind::Rgba) return "a colour";
  if (parameter.kind == Kind::Points) return "a curve";
  if (parameter.kind == Kind::Flag) return "on or off";
  if (parameter.kind == Kind::Choice) return "one of " + std::to_string(parameter.choices.size());
  std::string text = Shortest(parameter.min) + " to " + Shortest(parameter.max);
  return parameter.unit.empty() ? text : text.append(" ").append(parameter.unit);
}

std::string Suggestion(std::string_view text, std::span<const std::string_view> names) {
  const auto distance = [&](std::string_view name) { return EditDistance(text, name); };
  const auto nearest = std::ranges::min_element(names, {}, distance);
  if (nearest == names.end() || distance(*nearest) > std::max<std::size_t>(2, text.size() / 3)) {
    return "";
  }
  return "; did you mean '" + std::string(*nearest) + "'?";
}

}  // namespace qvfx
