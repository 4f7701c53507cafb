// SPDX-License-Identifier: Apache-2.0
#include "EffectRuns.h"

#include <algorithm>

namespace test {
namespace {

using catalog::Value;

Value Extreme(const catalog::Parameter& parameter, bool largest) {
  if (parameter.kind == catalog::Kind::Rgba) {
    return largest ? catalog::Color{1, 1, 1, 1} : catalog::Color{0, 0, 0, 0};
  }
  return largest ? parameter.max : parameter.min;
}

std::vector<std::vector<Value>> ValuesOf(const catalog::Effect& effect) {
  if (effect.parameters.empty()) return {{}};
  std::vector<std::vector<Value>> sets(4);
  for (const catalog::Parameter& parameter : effect.parameters) {
    sets[0].push_back(parameter.good);
    sets[1].push_back(parameter.neutral);
    sets[2].push_back(Extreme(parameter, false));
    sets[3].push_back(Extreme(parameter, true));
  }
  return sets;
}

bool Takes(const catalog::Effect& effect, const Form& form) {
  return !(effect.needs & catalog::kNeedsRGB) || form.ColorSpace() == kQVColorSpaceRGB;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const EffectRun& run) {
  out << run.effect->name;
  for (const Value& value : run.values) {
    if (const double* number = std::get_if<double>(&value)) {
      out << ' ' << *number;
    } else {
      for (const float sample : std::get<catalog::Color>(value)) out << ' ' << sample;
    }
  }
  return out << " on " << run.form;
}

std::vector<EffectRun> RunsOf(const catalog::Effect& effect) {
  std::vector<EffectRun> runs;
  for (const std::vector<Value>& values : ValuesOf(effect)) {
    for (const Form& form : kForms) {
      if (Takes(effect, form)) runs.push_back({&effect, values, form});
    }
  }
  return runs;
}

std::vector<const catalog::Effect*> AllEffects() {
  std::vector<const catalog::Effect*> effects;
  for (const catalog::Effect& effect : catalog::Effects()) effects.push_back(&effect);
  return effects;
}

std::string NameOf(const catalog::Effect& effect) {
  std::string name(effect.name);
  std::ranges::replace(name, '-', '_');
  return name;
}

std::vector<std::byte> Pixels(const TestImage& image, const std::function<bool(int, int)>& chosen) {
  std::vector<std::byte> bytes;
  const QVRect bounds = image.Bounds();
  for (int y = bounds.y; y < bounds.y + bounds.height; y++) {
    for (int x = bounds.x; x < bounds.x + bounds.width; x++) {
      const std::byte* pixel = image.Address(x, y);
      if (chosen(x, y)) bytes.insert(bytes.end(), pixel, pixel + image.GetForm().ColBytes());
    }
  }
  return bytes;
}

}  // namespace test
