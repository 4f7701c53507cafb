// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>
#include <utility>

#include "Chain.h"
#include "Commands.h"
#include "Values.h"

namespace qvfx {
namespace {

// Floats print as short as they can be: 0.85, not 0.8500000238418579.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;
using catalog::Effect;
using catalog::Kind;
using catalog::Parameter;

struct KindName {
  Kind kind;
  const char* name;
};
constexpr KindName kKindNames[] = {
    {Kind::Number, "number"}, {Kind::Integer, "integer"}, {Kind::Flag, "flag"},
    {Kind::Choice, "choice"}, {Kind::Rgba, "color"},      {Kind::Points, "curve"},
    {Kind::Layer, "image"},   {Kind::Picture, "image"},   {Kind::Mask, "mask"}};

struct NeedName {
  unsigned need;
  const char* name;
};
constexpr NeedName kNeedNames[] = {{catalog::kNeedsRGB, "rgb"},
                                   {catalog::kNeedsGray, "gray"},
                                   {catalog::kNeedsInteger, "integer"}};

Json ToJson(const Parameter& parameter, const catalog::Value& value) {
  if (IsImage(parameter.kind)) return nullptr;
  if (parameter.kind == Kind::Rgba) return std::get<catalog::Color>(value);
  if (parameter.kind == Kind::Points) return std::get<catalog::Curve>(value);
  if (parameter.kind == Kind::Choice) return FormatValue(parameter, value);
  const double number = std::get<double>(value);
  if (parameter.kind == Kind::Flag) return number != 0;
  if (parameter.kind == Kind::Integer) return static_cast<std::int64_t>(number);
  return number;
}

Json ToJson(const Parameter& parameter) {
  Json json = {{"name", parameter.name},
               {"kind", std::ranges::find(kKindNames, parameter.kind, &KindName::kind)->name},
               {"unit", parameter.unit}};
  if (parameter.kind == Kind::Number || parameter.kind == Kind::Integer) {
    json["min"] = ToJson(parameter, parameter.min);
    json["max"] = ToJson(parameter, parameter.max);
  }
  if (parameter.kind == Kind::Choice) json["choices"] = NamesOf(parameter.choices);
  json["neutral"] = ToJson(parameter, parameter.neutral);
  json["default"] = ToJson(parameter, parameter.good);
  json["help"] = parameter.help;
  return json;
}

Json ToJson(const Effect& effect) {
  Json json = {{"name", effect.name},       {"function", effect.function},
               {"summary", effect.summary}, {"inPlace", effect.inPlace == catalog::InPlace::Yes},
               {"needs", Json::array()},    {"parameters", Json::array()}};
  for (const NeedName& need : kNeedNames) {
    if (effect.needs & need.need) json["needs"].push_back(need.name);
  }
  for (const Parameter& parameter : effect.parameters) {
    json["parameters"].push_back(ToJson(parameter));
  }
  return json;
}

std::size_t WidestName(const auto& things) {
  std::size_t width = 0;
  for (const auto& thing : things) width = std::max(width, thing.name.size());
  return width;
}

void PrintLines() {
  const int width = static_cast<int>(WidestName(catalog::Effects())) + 2;
  for (const Effect& effect : catalog::Effects()) {
    std::cout << std::left << std::setw(width) << effect.name << effect.summary << '\n';
  }
}

void PrintJson() {
  Json json = Json::array();
  for (const Effect& effect : catalog::Effects()) json.push_back(ToJson(effect));
  std::cout << json.dump(2) << '\n';
}

// The names below each other, in lines that a terminal holds.
void PrintChoices(const Parameter& parameter, std::size_t indent) {
  constexpr std::size_t kColumns = 80;
  std::string line;
  for (const catalog::Choice& choice : parameter.choices) {
    const bool last = &choice == &parameter.choices.back();
    if (indent + line.size() + choice.name.size() + 2 > kColumns) {
      std::cout << std::string(indent, ' ') << std::exchange(line, "") << '\n';
    }
    line.append(line.empty() ? "" : " ").append(choice.name).append(last ? "" : ",");
  }
  std::cout << std::string(indent, ' ') << line << '\n';
}

void PrintParameters(const Effect& effect) {
  const int width = static_cast<int>(WidestName(effect.parameters)) + 2;
  for (const Parameter& parameter : effect.parameters) {
    std::string range = FormatRange(parameter);
    if (!IsImage(parameter.kind)) range += ", default " + FormatValue(parameter, parameter.good);
    std::cout << "  " << std::left << std::setw(width) << parameter.name << std::setw(36) << range
              << ' ' << parameter.help << '\n';
    if (parameter.kind == Kind::Choice)
      PrintChoices(parameter, static_cast<std::size_t>(width) + 2);
  }
}

}  // namespace

void List(const Words& words) {
  bool json = false;
  CLI::App app("Lists the effects.", "qvfx list");
  app.add_flag("--json", json, "Everything about each of them, as JSON");
  if (!Parse(app, words)) return;
  json ? PrintJson() : PrintLines();
}

void Help(const Words& words) {
  std::string name;
  CLI::App app("Shows an effect's parameters.", "qvfx help");
  app.add_option("EFFECT", name, "A name that 'qvfx list' shows")->required();
  if (!Parse(app, words)) return;
  const Effect& effect = EffectNamed(name);
  std::cout << effect.name << ": " << effect.summary << '\n';
  if (effect.needs & catalog::kNeedsRGB) std::cout << "Works on RGB pictures only.\n";
  if (effect.needs & catalog::kNeedsGray) std::cout << "Works on gray pictures only.\n";
  if (effect.needs & catalog::kNeedsInteger) {
    std::cout << "Works on pictures of 8 and 16 bits only.\n";
  }
  PrintParameters(effect);
}

}  // namespace qvfx
