// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <QVEffects/QVEffectsMeasure.h>

namespace bench {
namespace {

// Without luma.
void MeanStdDev(const cv::Mat& src, cv::Mat&) {
  cv::Scalar means, deviations;
  cv::meanStdDev(src, means, deviations);
}

// Without transparency as a weight.
void Mean(const cv::Mat& src, cv::Mat&) { cv::mean(src); }

int Analyze(__QVImage* src) {
  float means[4], deviations[4];
  return QVEffectsAnalyzeImage(src, QVImageGetBounds(src), means, deviations);
}

int Average(__QVImage* src) {
  float color[3], weight;
  return QVEffectsGetAvgColor(src, nullptr, QVImageGetBounds(src), color, &weight);
}

}  // namespace

std::vector<Job> MeasureJobs() {
  return {
      {"analyze", "", {}, "opencv/meanStdDev", MeanStdDev, nullptr, Analyze},
      {"average", "", {}, "opencv/mean", Mean, nullptr, Average},
  };
}

}  // namespace bench
