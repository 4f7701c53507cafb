// SPDX-License-Identifier: Apache-2.0
#include "EffectRuns.h"

#include <algorithm>

namespace test {
namespace {

using catalog::Value;

Value Extreme(const catalog::Parameter& parameter, bool largest) {
  if (parameter.kind == catalog::Kind::Choice) {
    return (largest ? parameter.choices.back() : parameter.choices.front()).value;
  }
  if (IsImage(parameter.kind)) return catalog::Image();
  if (parameter.kind == catalog::Kind::Rgba) {
    return largest ? catalog::Color{1, 1, 1, 1} : catalog::Color{0, 0, 0, 0};
  }
  if (parameter.kind == catalog::Kind::Points) {
    return largest ? catalog::Curve{{0.25f, 0}, {0.75f, 1}} : catalog::Curve{{0, 1}, {1, 0}};
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
  for (size_t i = 0; i < effect.parameters.size(); i++) {
    for (const catalog::Choice& choice : effect.parameters[i].choices) {
      sets.push_back(sets[0]);
      sets.back()[i] = choice.value;
    }
  }
  // Each set once.
  std::ranges::sort(sets);
  sets.erase(std::ranges::unique(sets).begin(), sets.end());
  return sets;
}

// Layers as src, masks of every other run: both of other bounds than the images of the tests.
void AddImages(EffectRun& run, size_t number) {
  for (size_t i = 0; i < run.values.size(); i++) {
    const catalog::Kind kind = run.effect->parameters[i].kind;
    if (!IsImage(kind) || (kind == catalog::Kind::Mask && number % 2 == 0)) continue;
    const Form form = kind == catalog::Kind::Mask ? Form{run.form.depth, 1, 0} : run.form;
    run.beside.push_back(
        std::make_shared<TestImage>(QVRect{0, 4, 31, 18}, form, Residency::kMemory, 9));
    run.values[i] = static_cast<__QVImage*>(*run.beside.back());
  }
}

bool Takes(const catalog::Effect& effect, const Form& form) {
  const bool isRGB = form.ColorSpace() == kQVColorSpaceRGB;
  if ((effect.needs & catalog::kNeedsInteger) && form.depth == 32) return false;
  return !(effect.needs & (isRGB ? catalog::kNeedsGray : catalog::kNeedsRGB));
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const EffectRun& run) {
  out << run.effect->name;
  for (const Value& value : run.values) {
    if (const double* number = std::get_if<double>(&value)) {
      out << ' ' << *number;
    } else if (const auto* curve = std::get_if<catalog::Curve>(&value)) {
      for (const auto& [x, y] : *curve) out << ' ' << x << ',' << y;
    } else if (const auto* image = std::get_if<catalog::Image>(&value)) {
      out << (*image ? " image" : " none");
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
      if (!Takes(effect, form)) continue;
      runs.push_back({&effect, values, form});
      AddImages(runs.back(), runs.size());
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
