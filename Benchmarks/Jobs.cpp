// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <algorithm>
#include <iterator>

namespace bench {

std::vector<Job> Jobs() {
  std::vector<Job> jobs;
  for (const auto& family :
       {BasicJobs, BlackAndWhiteJobs, BlendingJobs, BlurJobs, BrightnessJobs, ColorJobs, CurveJobs,
        HueSaturationJobs, MaskJobs, MeasureJobs, MedianJobs, PhotoFilterJobs, SurfaceBlurJobs,
        ToningJobs, VignetteJobs}) {
    std::ranges::move(family(), std::back_inserter(jobs));
  }
  for (const catalog::Effect& effect : catalog::Effects()) {
    // Images here are RGB throughout.
    if (effect.colors != 0) continue;
    if (std::ranges::find(jobs, effect.name, &Job::effect) == jobs.end()) {
      jobs.push_back({std::string(effect.name), std::string(effect.name), GoodValues(effect)});
    }
  }
  return jobs;
}

}  // namespace bench
