// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <QVEffects/QVEffectsColor.h>

#include <opencv2/imgproc.hpp>

#include "Utils/QVEffectsUtils.h"

namespace bench {
namespace {

// Both make a new image.
void ToGray(const cv::Mat& src, cv::Mat&) {
  cv::Mat gray;
  cv::cvtColor(src, gray, src.channels() == 4 ? cv::COLOR_RGBA2GRAY : cv::COLOR_RGB2GRAY);
}

int CreateGray(__QVImage* src) {
  const QVRect bounds = QVImageGetBounds(src);
  __QVImage* gray = nullptr;
  const int status = CreateGrayScaleImage(src, gray, MakeVRect(bounds), kGrayAsSource, kGrayLuma);
  QVImageRelease(gray);
  return status;
}

void ToHsv(const cv::Mat& src, cv::Mat& dst) { cv::cvtColor(src, dst, cv::COLOR_RGB2HSV_FULL); }

void FromHsv(const cv::Mat& src, cv::Mat& dst) { cv::cvtColor(src, dst, cv::COLOR_HSV2RGB_FULL); }

// Of four channels it would drop one.
bool TakesHsv(int type) { return type == CV_8UC3 || type == CV_32FC3; }

// Colour by colour, as a host would call it.
int LabAndBack(__QVImage* src) {
  const auto* row = static_cast<const std::byte*>(QVImageLockBuffer(src));
  float sum = 0;
  for (int y = 0; y < QVImageGetHeight(src); y++, row += QVImageGetRowBytes(src)) {
    const auto* rgb = reinterpret_cast<const float*>(row);
    for (int x = 0; x < QVImageGetWidth(src); x++, rgb += 3) {
      float lab[3], back[3];
      RGB2Lab(rgb, lab);
      Lab2RGB(lab, back);
      sum += back[0];
    }
  }
  QVImageUnlockBuffer(src);
  return sum > 0 ? kQVStatusSuccess : kQVStatusUnknown;
}

void ToLabAndBack(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat lab;
  cv::cvtColor(src, lab, cv::COLOR_RGB2Lab);
  cv::cvtColor(lab, dst, cv::COLOR_Lab2RGB);
}

bool IsFloatRGB(int type) { return type == CV_32FC3; }

}  // namespace

std::vector<Job> ColorJobs() {
  return {
      {"convert-mode", "convert-mode", {0.0}, "opencv/cvtColor_HSV", ToHsv, TakesHsv},
      {"convert-mode_back", "convert-mode", {1.0}, "opencv/cvtColor_RGB", FromHsv, TakesHsv},
      {"gray-image", "", {}, "opencv/cvtColor_GRAY", ToGray, nullptr, CreateGray},
      {"lab_and_back",
       "",
       {},
       "opencv/cvtColor_Lab",
       ToLabAndBack,
       nullptr,
       LabAndBack,
       IsFloatRGB},
  };
}

}  // namespace bench
