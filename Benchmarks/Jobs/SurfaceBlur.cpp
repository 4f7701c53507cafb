// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <opencv2/imgproc.hpp>

namespace bench {
namespace {

constexpr double kThreshold = 0.1;

// Weighs every sample of the window, by a Gaussian of the difference of colours. At larger radii it
// takes minutes.
void Bilateral(const cv::Mat& src, cv::Mat& dst) {
  constexpr int kRadius = 5;
  const double full = src.depth() == CV_8U ? 255 : 1;
  cv::bilateralFilter(src, dst, 2 * kRadius + 1, kThreshold * full, kRadius);
}

bool TakesBilateral(int type) { return type == CV_8UC3 || type == CV_32FC3; }

}  // namespace

std::vector<Job> SurfaceBlurJobs() {
  return {
      {"surface_r5",
       "surface-blur",
       {5.0, kThreshold, 1.0},
       "opencv/bilateralFilter",
       Bilateral,
       TakesBilateral},
      {"surface_r20", "surface-blur", {20.0, kThreshold, 1.0}},
  };
}

}  // namespace bench
