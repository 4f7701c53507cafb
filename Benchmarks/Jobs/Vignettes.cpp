// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <QVEffects/QVEffectsBlend.h>

namespace bench {
namespace {

Job VignetteJob(const char* name, const char* effect, double amount, double shape,
                QVBlendMode mode) {
  return {name, effect, {0.5, 0.5, amount, 0.5, 0.7, shape, static_cast<double>(mode)}};
}

}  // namespace

std::vector<Job> VignetteJobs() {
  return {
      VignetteJob("vignette", "vignette", 0.1, 0.5, kQVBlendModeMultiply),
      VignetteJob("vignette_circle", "vignette", 0.1, 1, kQVBlendModeMultiply),
      VignetteJob("vignette_box", "vignette", 0.1, 0.1, kQVBlendModeMultiply),
      VignetteJob("vignette_normal", "vignette", 0.1, 0.5, kQVBlendModeNormal),
      VignetteJob("vignette-in", "vignette-in", -0.7, 0, kQVBlendModeNormal),
      VignetteJob("vignette-in_box", "vignette-in", -0.7, -0.8, kQVBlendModeNormal),
      VignetteJob("vignette-in_overlay", "vignette-in", 0.7, 0, kQVBlendModeOverlay),
  };
}

}  // namespace bench
