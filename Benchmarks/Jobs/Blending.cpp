// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <QVEffects/QVEffectsBlend.h>

namespace bench {
namespace {

// The peer's nearest to "normal": it takes the layer's opacity for the whole image.
void AddWeighted(const cv::Mat& src, cv::Mat& dst) { cv::addWeighted(src, 0.5, dst, 0.5, 0, dst); }

Job BlendJob(const char* name, QVBlendMode mode, void (*peer)(const cv::Mat&, cv::Mat&) = nullptr) {
  return {name,
          "blend",
          {catalog::Image(), static_cast<double>(mode), 1.0, catalog::Image()},
          peer ? "opencv/addWeighted" : "",
          peer};
}

}  // namespace

std::vector<Job> BlendingJobs() {
  return {
      BlendJob("blend_normal", kQVBlendModeNormal, AddWeighted),
      BlendJob("blend_multiply", kQVBlendModeMultiply),
      BlendJob("blend_overlay", kQVBlendModeOverlay),
      BlendJob("blend_soft-light", kQVBlendModeSoftLight),
      BlendJob("blend_luminosity", kQVBlendModeLuminosity),
  };
}

}  // namespace bench
