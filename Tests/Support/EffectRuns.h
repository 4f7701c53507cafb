// SPDX-License-Identifier: Apache-2.0
// The runs that tests over all effects make: each effect with several values on each form of image
// that it takes.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Catalog.h"
#include "TestImage.h"

namespace test {

struct EffectRun {
  const catalog::Effect* effect;
  std::vector<catalog::Value> values;
  Form form;
  std::vector<std::shared_ptr<TestImage>> beside = {};  // the images among the values

  /// What dst is like.
  Form DstForm() const {
    const int colors = effect->colors ? effect->colors : form.planes - form.transparency;
    return {form.depth, colors + form.transparency, form.transparency};
  }

  int operator()(__QVImage* src, __QVImage* dst, QVRect rect) const {
    return effect->run({src, dst, rect, values});
  }
};
std::ostream& operator<<(std::ostream& out, const EffectRun& run);

/// The runs of one effect: good, neutral, smallest and largest values and every choice, on all
/// forms it takes.
std::vector<EffectRun> RunsOf(const catalog::Effect& effect);

/// For INSTANTIATE_TEST_SUITE_P: every effect, and its name.
std::vector<const catalog::Effect*> AllEffects();
std::string NameOf(const catalog::Effect& effect);

/// The samples and padding of dst whose place satisfies `chosen` (x, y), or the whole buffer.
std::vector<std::byte> Pixels(const TestImage& image, const std::function<bool(int, int)>& chosen);

}  // namespace test
