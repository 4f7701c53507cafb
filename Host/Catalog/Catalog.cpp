// SPDX-License-Identifier: Apache-2.0
#include "Catalog.h"

#include <dlfcn.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "Rows.h"

namespace catalog {
namespace {

constexpr Family (*kFamilies[])() = {Basics,       BlackAndWhites, Blending,      Blur,
                                     Brightnesses, ColorModes,     Curves,        HueSaturations,
                                     Masks,        Measures,       MedianFilters, PhotoFilters,
                                     SurfaceBlur,  Tonings,        Vignettes};

// Effects by name.
const Family& Table() {
  static const Family table = [] {
    Family all;
    for (const auto& family : kFamilies) {
      Family each = family();
      std::ranges::move(each.effects, std::back_inserter(all.effects));
      std::ranges::move(each.exceptions, std::back_inserter(all.exceptions));
    }
    std::ranges::sort(all.effects, {}, &Effect::name);
    return all;
  }();
  return table;
}

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

std::span<const Effect> Effects() { return Table().effects; }

std::span<const Exception> Exceptions() { return Table().exceptions; }

const Effect* Find(std::string_view name) {
  const auto found = std::ranges::find(Table().effects, name, &Effect::name);
  return found == Table().effects.end() ? nullptr : &*found;
}

int AskedOutset(const Effect& effect, std::span<const Value> values) {
  double radius = 0;
  for (size_t i = 0; i < effect.parameters.size(); i++) {
    if (effect.parameters[i].name == effect.outset.radius) radius = std::get<double>(values[i]);
  }
  void* function = dlsym(RTLD_DEFAULT, std::string(effect.function).c_str());
  return QVEffectsGetOutset(function, static_cast<float>(radius));
}

int OutsetOf(const Effect& effect, std::span<const Value> values) {
  return effect.outset.own ? effect.outset.own(values) : AskedOutset(effect, values);
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
  const int colors = QVImageGetNumPlanes(call.dst) - QVImageGetTransparency(call.dst);
  if (const Curve* curve = std::get_if<Curve>(&value)) {
    const std::vector<float> levels = CurveLevels(*curve);
    for (int c = 0; c < colors; c++) mSamples.insert(mSamples.end(), levels.begin(), levels.end());
    return;
  }
  const Color& color = std::get<Color>(value);
  if (colors >= 3) {
    mSamples.assign(color.begin(), color.begin() + 3);
  } else {
    mSamples.assign(1, 0.299f * color[0] + 0.587f * color[1] + 0.114f * color[2]);
  }
  mSamples.resize(std::max(colors, 0));
  mSamples.resize(std::max(QVImageGetNumPlanes(call.dst), 0), color[3]);
}

}  // namespace catalog
