// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <QVEffects/QVEffectsMeasure.h>

#include <opencv2/imgproc.hpp>

namespace bench {
namespace {

// Without luma.
void MeanStdDev(const cv::Mat& src, cv::Mat&) {
  cv::Scalar means, deviations;
  cv::meanStdDev(src, means, deviations);
}

// Without transparency as a weight.
void Mean(const cv::Mat& src, cv::Mat&) { cv::mean(src); }

// The same, in float throughout.
void LocalDeviation(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat from, mean, square;
  const cv::Size side(11, 11);
  src.convertTo(from, CV_32F);
  cv::blur(from, mean, side, cv::Point(-1, -1), cv::BORDER_REPLICATE);
  cv::sqrBoxFilter(from, square, CV_32F, side, cv::Point(-1, -1), true, cv::BORDER_REPLICATE);
  cv::multiply(mean, mean, mean);
  cv::subtract(square, mean, square);
  cv::max(square, 0.0, square);
  cv::sqrt(square, square);
  square.convertTo(dst, src.type());
}

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
      {"variance_r5", "variance", {5.0}, "opencv/sqrBoxFilter", LocalDeviation},
      {"average", "", {}, "opencv/mean", Mean, nullptr, Average},
  };
}

}  // namespace bench
