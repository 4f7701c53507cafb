// SPDX-License-Identifier: Apache-2.0
// Effects one after another.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "Catalog.h"
#include "Console.h"
#include "Picture.h"

namespace qvfx {

/// A picture that an effect takes beside the one it works on.
struct Beside {
  std::size_t parameter;  // its number
  std::string path;
  Picture picture = {};
  ImagePtr view = nullptr;
};

struct Step {
  const catalog::Effect* effect;
  std::vector<catalog::Value> values;
  std::vector<Beside> beside = {};
};

/// EFFECT [name=value ...] [: EFFECT [name=value ...]]...; parameters that aren't named take their
/// good values. No words are an empty chain.
std::vector<Step> ParseChain(std::span<const std::string> words);

/// The effect of this name; throws a usage failure that suggests one when there is none.
const catalog::Effect& EffectNamed(std::string_view name);

/// Reads the pictures that the steps take beside, layers in the form of the one they work on, masks
/// in its depth.
void ReadBeside(std::span<Step> chain, const Picture& picture, const Console& console);

/// Runs one effect on a rectangle of a picture whose colours aren't associated; pixels outside
/// stay.
void RunEffect(const Step& step, Picture& picture, QVRect rect, const Console& console);

/// Runs a chain.
void RunChain(std::span<const Step> chain, Picture& picture, QVRect rect, const Console& console);

}  // namespace qvfx
