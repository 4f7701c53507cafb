// SPDX-License-Identifier: Apache-2.0
#include <QVEffects/QVEffectsBlend.h>

#include <opencv2/imgproc.hpp>

#include "Jobs.h"

namespace bench {
namespace {

const catalog::Color kShadow = {0.1f, 0.1f, 0.35f, 1}, kHighlight = {1, 0.9f, 0.7f, 1};

// Luma through a table of colours.
void GradientMap(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat gray, grays;
  cv::Mat table(1, 256, CV_8UC3);
  for (int i = 0; i < 256; i++) {
    for (int c = 0; c < 3; c++) {
      const auto t = static_cast<float>(i) / 255.0f;
      table.at<cv::Vec3b>(i)[c] =
          cv::saturate_cast<uchar>(255 * (kShadow[c] * (1 - t) + kHighlight[c] * t));
    }
  }
  cv::cvtColor(src, gray, cv::COLOR_RGB2GRAY);
  cv::cvtColor(gray, grays, cv::COLOR_GRAY2RGB);
  cv::LUT(grays, table, dst);
}

bool IsRgb8(int type) { return type == CV_8UC3; }

}  // namespace

std::vector<Job> ToningJobs() {
  const double softLight = kQVBlendModeSoftLight;
  return {
      {"gradientmap",
       "gradient-map",
       {kShadow, kHighlight, 0.5},
       "opencv/cvtColor_LUT",
       GradientMap,
       IsRgb8},
      {"gradientmap_balance", "gradient-map", {kShadow, kHighlight, 0.7}},
      {"splittone", "split-tone", {kShadow, kHighlight, softLight, 0.8, 0.6, 0.5}},
      {"splittone_one-color", "split-tone", {kShadow, kShadow, softLight, 0.8, 0.8, 0.5}},
  };
}

}  // namespace bench
