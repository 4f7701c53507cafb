// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <QVEffects/QVEffectsPhotoFilter.h>

namespace bench {
namespace {

Job FilterJob(const char* name, double type, QVBlendMode mode) {
  return {name,
          "photo-filter",
          {type, static_cast<double>(mode), 0.2, 0.2, 2000.0, 1500.0, 1000.0, 800.0,
           catalog::Color{0.93f, 0.54f, 0, 1}, 0.4, catalog::Color{0, 0.42f, 0.9f, 1}, 0.4}};
}

}  // namespace

std::vector<Job> PhotoFilterJobs() {
  return {
      FilterJob("photo-filter", kQVPhotoFilterSolid, kQVBlendModeMultiply),
      FilterJob("photo-filter_round", kQVPhotoFilterRoundBoth, kQVBlendModeNormal),
  };
}

}  // namespace bench
