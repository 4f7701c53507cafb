// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <opencv2/imgproc.hpp>

namespace bench {
namespace {

template <int kRadius>
void Median(const cv::Mat& src, cv::Mat& dst) {
  cv::medianBlur(src, dst, 2 * kRadius + 1);
}

bool IsInteger(int type) { return CV_MAT_DEPTH(type) != CV_32F; }

template <int kRadius>
bool PeerTakes(int type) {
  return CV_MAT_DEPTH(type) == CV_8U || kRadius <= 2;
}

template <int kRadius>
Job MedianJob(const char* name) {
  return {name,
          "median",
          {double{kRadius}},
          "opencv/medianBlur",
          Median<kRadius>,
          PeerTakes<kRadius>,
          nullptr,
          IsInteger};
}

}  // namespace

std::vector<Job> MedianJobs() {
  return {
      MedianJob<1>("median_r1"),
      MedianJob<2>("median_r2"),
      MedianJob<3>("median_r3"),
      MedianJob<10>("median_r10"),
      {"dust-and-scratch",
       "dust-and-scratch",
       {4.0, 0.1},
       "",
       nullptr,
       nullptr,
       nullptr,
       IsInteger},
  };
}

}  // namespace bench
