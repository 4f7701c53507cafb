// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <QVEffects/QVEffectsBlend.h>

#include <opencv2/imgproc.hpp>

namespace bench {
namespace {

template <int radius>
void Box(const cv::Mat& src, cv::Mat& dst) {
  cv::blur(src, dst, cv::Size(2 * radius + 1, 2 * radius + 1), cv::Point(-1, -1),
           cv::BORDER_REPLICATE);
}

template <int radius>
void Tent(const cv::Mat& src, cv::Mat& dst) {
  cv::Mat kernel(1, 2 * radius + 1, CV_32F);
  for (int i = -radius; i <= radius; i++) {
    kernel.at<float>(i + radius) = static_cast<float>(radius + 1 - std::abs(i)) /
                                   static_cast<float>((radius + 1) * (radius + 1));
  }
  cv::sepFilter2D(src, dst, -1, kernel, kernel, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
}

template <int sigma>
void Gaussian(const cv::Mat& src, cv::Mat& dst) {
  const int side = 2 * static_cast<int>(sigma * 2.5 + 0.5) + 1;
  cv::GaussianBlur(src, dst, cv::Size(side, side), sigma, sigma, cv::BORDER_REPLICATE);
}

// At 8 bits it computes in fixed point.
template <int sigma>
void GaussianInFloat(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat from, to;
  src.convertTo(from, CV_32F);
  Gaussian<sigma>(from, to);
  to.convertTo(dst, src.type());
}

template <int radius>
void ThreeBoxes(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat first, second;
  constexpr int kBox = static_cast<int>(radius / 1.1f);
  Box<kBox>(src, first);
  Box<kBox>(first, second);
  Box<kBox>(second, dst);
}

bool IsInteger(int type) { return CV_MAT_DEPTH(type) != CV_32F; }

const catalog::Value kNormal = static_cast<double>(kQVBlendModeNormal);

}  // namespace

std::vector<Job> BlurJobs() {
  return {
      {"box_r5", "box-blur", {5.0, 1.0}, "opencv/blur", Box<5>},
      {"box_r50", "box-blur", {50.0, 1.0}, "opencv/blur", Box<50>},
      {"tent_r5", "triangular-blur", {5.0}, "opencv/sepFilter2D", Tent<5>},
      {"tent_r10", "triangular-blur", {10.0}, "opencv/sepFilter2D", Tent<10>},
      {"tent_r50", "triangular-blur", {50.0}, "opencv/sepFilter2D", Tent<50>},
      {"gauss_s1", "gaussian-blur", {1.0, 1.0, kNormal}, "opencv/GaussianBlur", Gaussian<1>},
      {"gauss_s3", "gaussian-blur", {3.0, 1.0, kNormal}, "opencv/GaussianBlur", Gaussian<3>},
      {"gauss_s3_in_float",
       "gaussian-blur",
       {3.0, 1.0, kNormal},
       "opencv/GaussianBlur_float",
       GaussianInFloat<3>,
       IsInteger},
      {"gauss_s9", "gaussian-blur", {9.0, 1.0, kNormal}, "opencv/GaussianBlur", Gaussian<9>},
      {"gauss_s20", "gaussian-blur", {20.0, 1.0, kNormal}, "opencv/blur_3x", ThreeBoxes<20>},
      {"gauss_s50", "gaussian-blur", {50.0, 1.0, kNormal}, "opencv/blur_3x", ThreeBoxes<50>},
  };
}

}  // namespace bench
