// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

namespace bench {
namespace {

// The peer's nearest: a straight line.
void ConvertTo(const cv::Mat& src, cv::Mat& dst) { src.convertTo(dst, -1, 1.2, -0.1); }

Job Masked(const char* name, const char* effect, std::vector<catalog::Value> values) {
  return {name, effect, std::move(values), "", nullptr, nullptr, nullptr, nullptr, true};
}

}  // namespace

std::vector<Job> BrightnessJobs() {
  const catalog::Image none = nullptr;
  return {
      {"brightcontrast", "brightness-contrast", {0.1, 0.4, none}, "opencv/convertTo", ConvertTo},
      {"brightcontrast_flatter", "brightness-contrast", {0.1, -0.4, none}},
      Masked("brightcontrast_mask", "brightness-contrast", {0.1, 0.4, none}),
      Masked("brightcontrast_flatter_mask", "brightness-contrast", {0.1, -0.4, none}),
      Masked("brightness_mask", "brightness", {0.3, none}),
      Masked("midtone-contrast-alt_mask", "midtone-contrast-alt", {0.5, none}),
  };
}

}  // namespace bench
