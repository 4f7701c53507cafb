// SPDX-License-Identifier: Apache-2.0
#include "Jobs.h"

#include <QVEffects/QVEffectsBlend.h>
#include <QVEffects/QVEffectsColor.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "Utils/QVEffectsUtils.h"

namespace bench {
namespace {

const catalog::Value kFill = catalog::Color{0.85f, 0.45f, 0.15f, 1};

void Invert(const cv::Mat& src, cv::Mat& dst) { cv::bitwise_not(src, dst); }

void Copy(const cv::Mat& src, cv::Mat& dst) { src.copyTo(dst); }

void Fill(const cv::Mat&, cv::Mat& dst) {
  const double full = dst.depth() == CV_8U ? 255 : dst.depth() == CV_16U ? 65535 : 1;
  dst.setTo(cv::Scalar(0.85, 0.45, 0.15, 1) * full);
}

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

// The peer's nearest to "normal": it takes the layer's opacity for the whole image.
void AddWeighted(const cv::Mat& src, cv::Mat& dst) { cv::addWeighted(src, 0.5, dst, 0.5, 0, dst); }

Job BlendJob(const char* name, QVBlendMode mode, void (*peer)(const cv::Mat&, cv::Mat&) = nullptr) {
  return {name,
          "blend",
          {catalog::Image(), static_cast<double>(mode), 1.0, catalog::Image()},
          peer ? "opencv/addWeighted" : "",
          peer};
}

std::vector<Job> PairedJobs() {
  return {
      BlendJob("blend_normal", kQVBlendModeNormal, AddWeighted),
      BlendJob("blend_multiply", kQVBlendModeMultiply),
      BlendJob("blend_overlay", kQVBlendModeOverlay),
      BlendJob("blend_soft-light", kQVBlendModeSoftLight),
      BlendJob("blend_luminosity", kQVBlendModeLuminosity),
      {"convert-mode", "convert-mode", {0.0}, "opencv/cvtColor_HSV", ToHsv, TakesHsv},
      {"convert-mode_back", "convert-mode", {1.0}, "opencv/cvtColor_RGB", FromHsv, TakesHsv},
      {"copy", "copy", {}, "opencv/copyTo", Copy},
      {"fill", "fill-color", {kFill}, "opencv/setTo", Fill},
      {"gray-image", "", {}, "opencv/cvtColor_GRAY", ToGray, nullptr, CreateGray},
      {"lab_and_back",
       "",
       {},
       "opencv/cvtColor_Lab",
       ToLabAndBack,
       nullptr,
       LabAndBack,
       IsFloatRGB},
      {"invert", "invert", {}, "opencv/bitwise_not", Invert},
  };
}

}  // namespace

std::vector<Job> Jobs() {
  std::vector<Job> jobs = PairedJobs();
  for (const catalog::Effect& effect : catalog::Effects()) {
    // Images here are RGB throughout.
    if (effect.colors != 0) continue;
    if (std::ranges::find(jobs, effect.name, &Job::effect) == jobs.end()) {
      jobs.push_back({std::string(effect.name), std::string(effect.name), GoodValues(effect)});
    }
  }
  return jobs;
}

}  // namespace bench
