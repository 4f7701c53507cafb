// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <QVEffects/QVEffectsBlackAndWhite.h>

#include <opencv2/core.hpp>

namespace bench {
namespace {

// Luma into all three colours.
void Transform(const cv::Mat& src, cv::Mat& dst) {
  const cv::Matx33f three(0.299f, 0.587f, 0.114f, 0.299f, 0.587f, 0.114f, 0.299f, 0.587f, 0.114f);
  const cv::Matx44f four(0.299f, 0.587f, 0.114f, 0, 0.299f, 0.587f, 0.114f, 0, 0.299f, 0.587f,
                         0.114f, 0, 0, 0, 0, 1);
  if (src.channels() == 3) {
    cv::transform(src, dst, three);
  } else {
    cv::transform(src, dst, four);
  }
}

int Measure(__QVImage* src) {
  float response[6];
  return QVEffectsBlackAndWhiteColorResponseGetAutoMixture(src, response);
}

}  // namespace

std::vector<Job> BlackAndWhiteJobs() {
  const catalog::Image none = nullptr;
  const catalog::Color tone = {0.72f, 0.5f, 0.3f, 1};
  Job full = {"blackwhite_full", "black-and-white", {none, tone, 0.08, 0.3, 0.3, 0.35}};
  full.masked = true;
  return {
      {"blackwhite", "black-white", {0.0}, "opencv/transform", Transform},
      {"blackwhite_mean", "black-white", {1.0}},
      {"blackwhite_film", "black-and-white", {none, tone, 0.08, 0.0, 0.0, 0.0}},
      full,
      {"blackwhite_mixture", "", {}, "", nullptr, nullptr, Measure},
  };
}

}  // namespace bench
