// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

namespace bench {
namespace {

void AddWeighted(const cv::Mat& src, cv::Mat& dst) { cv::addWeighted(src, 0.5, dst, 0.5, 0, dst); }

}  // namespace

std::vector<Job> MaskJobs() {
  const catalog::Image none = nullptr;
  Job masked = {"apply-with-mask_mask", "apply-with-mask", {none, 1.0, none}};
  masked.masked = true;
  return {
      {"mix", "mix", {none, 0.5, 0.5}, "opencv/addWeighted", AddWeighted},
      {"apply-with-mask", "apply-with-mask", {none, 1.0, none}, "opencv/addWeighted", AddWeighted},
      masked,
  };
}

}  // namespace bench
