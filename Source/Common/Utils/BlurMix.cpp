// SPDX-License-Identifier: Apache-2.0
#include "BlurMix.h"

#include <algorithm>
#include <iterator>

namespace {

// Modes that blurs take in their reverse form.
constexpr QVBlendMode kReversible[] = {
    kQVBlendModeColorDodge, kQVBlendModeDivide,     kQVBlendModeSubtract, kQVBlendModeHardLight,
    kQVBlendModeHardMix,    kQVBlendModeColorBurn,  kQVBlendModeOverlay,  kQVBlendModeLinearLight,
    kQVBlendModeSoftLight,  kQVBlendModeVividLight,
};

}  // namespace

std::optional<qv::BlurMix> qv::FindBlurMix(QVBlendMode mode, float amount) {
  const bool isReverse = IsReverseBlendMode(mode);
  const QVBlendMode forward = GetNonReverseBlendMode(mode);
  if (isReverse && std::ranges::find(kReversible, forward) == std::end(kReversible)) return {};
  const BlendStrip blend = FindSampleBlendStrip(forward);
  if (!blend) return {};
  return BlurMix{forward == kQVBlendModeNormal ? nullptr : blend, isReverse, amount, 1.0f - amount};
}
