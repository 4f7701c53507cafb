// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <set>

#include "Chain.h"
#include "Error.h"
#include "Values.h"

namespace qvfx {
namespace {

constexpr std::string_view kSeparator = ":";

std::size_t ParameterIndex(const catalog::Effect& effect, std::string_view name) {
  const auto found = std::ranges::find(effect.parameters, name, &catalog::Parameter::name);
  if (found == effect.parameters.end()) {
    throw Failure(Exit::Usage, std::string(effect.name) + ": no parameter '" + std::string(name) +
                                   "'" + Suggestion(name, NamesOf(effect.parameters)));
  }
  return static_cast<std::size_t>(found - effect.parameters.begin());
}

void SetParameter(Step& step, const std::string& word, std::set<std::size_t>& seen) {
  const std::string where = std::string(step.effect->name) + ": " + word;
  const std::size_t equals = word.find('=');
  if (equals == word.npos) {
    throw Failure(Exit::Usage, where + ": neither name=value nor ':' before another effect");
  }
  const std::size_t index = ParameterIndex(*step.effect, word.substr(0, equals));
  if (!seen.insert(index).second) throw Failure(Exit::Usage, where + ": given twice");
  const catalog::Parameter& parameter = step.effect->parameters[index];
  if (IsImage(parameter.kind)) {
    step.beside.push_back({index, word.substr(equals + 1)});
  } else {
    step.values[index] = ParseValue(parameter, std::string_view(word).substr(equals + 1), where);
  }
}

void CheckLayers(const Step& step, const std::set<std::size_t>& seen) {
  for (std::size_t i = 0; i < step.effect->parameters.size(); ++i) {
    const catalog::Parameter& parameter = step.effect->parameters[i];
    if (!catalog::IsNeeded(parameter.kind) || seen.contains(i)) continue;
    throw Failure(Exit::Usage, std::string(step.effect->name) + ": " + std::string(parameter.name) +
                                   "=FILE is missing");
  }
}

Step ParseStep(std::span<const std::string> words) {
  if (words.empty()) throw Failure(Exit::Usage, "an effect is missing beside ':'");
  const catalog::Effect& effect = EffectNamed(words.front());
  Step step = {&effect, catalog::GoodValues(effect)};
  std::set<std::size_t> seen;
  for (const std::string& word : words.subspan(1)) SetParameter(step, word, seen);
  CheckLayers(step, seen);
  return step;
}

}  // namespace

const catalog::Effect& EffectNamed(std::string_view name) {
  if (const catalog::Effect* effect = catalog::Find(name)) return *effect;
  throw Failure(Exit::Usage, "no effect '" + std::string(name) + "'" +
                                 Suggestion(name, NamesOf(catalog::Effects())));
}

std::vector<Step> ParseChain(std::span<const std::string> words) {
  std::vector<Step> chain;
  if (words.empty()) return chain;
  for (;;) {
    const auto separator = std::ranges::find(words, kSeparator);
    const auto length = static_cast<std::size_t>(separator - words.begin());
    chain.push_back(ParseStep(words.first(length)));
    if (separator == words.end()) return chain;
    words = words.subspan(length + 1);
  }
}

}  // namespace qvfx
