// SPDX-License-Identifier: Apache-2.0
#include <QVEffects/QVEffectsBlend.h>

#include <opencv2/imgproc.hpp>

#include "Jobs.h"

namespace bench {
namespace {

// A turn of the hue by hue, saturation and value.
void TurnHue(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat hsv;
  cv::cvtColor(src, hsv, cv::COLOR_RGB2HSV_FULL);
  cv::add(hsv, cv::Scalar(src.depth() == CV_32F ? 36 : 26, 0, 0), hsv);
  cv::cvtColor(hsv, dst, cv::COLOR_HSV2RGB_FULL);
}

bool TakesHsv(int type) { return type == CV_8UC3 || type == CV_32FC3; }

void Gray(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat gray;
  cv::cvtColor(src, gray, src.channels() == 4 ? cv::COLOR_RGBA2GRAY : cv::COLOR_RGB2GRAY);
  cv::cvtColor(gray, dst, src.channels() == 4 ? cv::COLOR_GRAY2RGBA : cv::COLOR_GRAY2RGB);
}

Job Desaturate(const char* name, QVBlendMode mode,
               void (*peer)(const cv::Mat&, cv::Mat&) = nullptr) {
  return {name,
          "desaturate",
          {static_cast<double>(mode), 1.0},
          peer ? "opencv/cvtColor_GRAY_RGB" : "",
          peer};
}

}  // namespace

std::vector<Job> HueSaturationJobs() {
  return {
      {"huesat",
       "hue-saturation",
       {0.1, 0.2, 0.1},
       "opencv/cvtColor_HSV_and_back",
       TurnHue,
       TakesHsv},
      {"huesat_saturation", "hue-saturation", {0.0, 0.2, 0.0}},
      {"huesat_lightness", "hue-saturation-lightness", {0.1, 0.2, 0.1}},
      {"vibrance", "vibrance", {0.5}},
      Desaturate("desaturate", kQVBlendModeNormal, Gray),
      Desaturate("desaturate_overlay", kQVBlendModeOverlay),
      Desaturate("desaturate_luminosity", kQVBlendModeLuminosity),
  };
}

}  // namespace bench
