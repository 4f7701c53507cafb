// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

namespace bench {
namespace {

const catalog::Curve kCurve = {{0, 0}, {0.25f, 0.2f}, {0.75f, 0.85f}, {1, 1}};

// A table for all channels, or one for each of them.
void LookUp(const cv::Mat& src, cv::Mat& dst, int tables) {
  const std::vector<float> levels = catalog::CurveLevels(kCurve);
  cv::Mat table(1, 256, CV_8UC(tables));
  for (int i = 0; i < 256 * tables; i++) {
    table.data[i] = static_cast<uchar>(levels[i / tables] * 255 + 0.5f);
  }
  cv::LUT(src, table, dst);
}

void Curves(const cv::Mat& src, cv::Mat& dst) { LookUp(src, dst, 1); }
void CurvesPerChannel(const cv::Mat& src, cv::Mat& dst) { LookUp(src, dst, src.channels()); }

bool Is8Bit(int type) { return CV_MAT_DEPTH(type) == CV_8U; }

}  // namespace

// At 8 bits ours has a table for each channel throughout.
std::vector<Job> CurveJobs() {
  return {
      {"curves", "apply-curves", {kCurve, 1.0}, "opencv/LUT", Curves, Is8Bit},
      {"curves_per_channel",
       "apply-curves",
       {kCurve, 1.0},
       "opencv/LUT",
       CurvesPerChannel,
       Is8Bit,
       nullptr,
       Is8Bit},
      {"curves_amount", "apply-curves", {kCurve, 0.5}},
  };
}

}  // namespace bench
