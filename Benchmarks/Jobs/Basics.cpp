// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <opencv2/imgproc.hpp>

namespace bench {
namespace {

const catalog::Value kFill = catalog::Color{0.85f, 0.45f, 0.15f, 1};

void Invert(const cv::Mat& src, cv::Mat& dst) { cv::bitwise_not(src, dst); }

void Copy(const cv::Mat& src, cv::Mat& dst) { src.copyTo(dst); }

void Fill(const cv::Mat&, cv::Mat& dst) {
  const double full = dst.depth() == CV_8U ? 255 : dst.depth() == CV_16U ? 65535 : 1;
  dst.setTo(cv::Scalar(0.85, 0.45, 0.15, 1) * full);
}

}  // namespace

std::vector<Job> BasicJobs() {
  return {
      {"copy", "copy", {}, "opencv/copyTo", Copy},
      {"fill", "fill-color", {kFill}, "opencv/setTo", Fill},
      {"invert", "invert", {}, "opencv/bitwise_not", Invert},
  };
}

}  // namespace bench
