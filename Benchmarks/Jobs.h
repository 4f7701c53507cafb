// SPDX-License-Identifier: Apache-2.0
// What is timed: jobs done by an effect, and by a peer where there is one.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Catalog.h"

namespace bench {

struct Job {
  std::string name;    // as in peers.tsv, where it is listed there
  std::string effect;  // in the catalog
  std::vector<catalog::Value> values = {};
  std::string peerName = {};
  void (*peer)(const cv::Mat& src, cv::Mat& dst) = nullptr;  // the same work, single-threaded
  bool (*peerTakes)(int type) = nullptr;  // whether images of OpenCV's type; null: all of them
  int (*run)(__QVImage* src) = nullptr;   // instead of an effect
  bool (*takes)(int type) = nullptr;      // whether ours takes images of OpenCV's type
  bool masked = false;                    // whether the effect's masks are there
};

/// The jobs of a family that are paired with a peer, or timed with other values than the good ones.
std::vector<Job> BasicJobs();
std::vector<Job> BlackAndWhiteJobs();
std::vector<Job> BlendingJobs();
std::vector<Job> BlurJobs();
std::vector<Job> ColorJobs();
std::vector<Job> BrightnessJobs();
std::vector<Job> CurveJobs();
std::vector<Job> HueSaturationJobs();
std::vector<Job> MaskJobs();
std::vector<Job> MeasureJobs();
std::vector<Job> MedianJobs();
std::vector<Job> PhotoFilterJobs();
std::vector<Job> SurfaceBlurJobs();
std::vector<Job> ToningJobs();
std::vector<Job> VignetteJobs();

/// The jobs of the families, then every other effect of the catalog from RGB to RGB at its good
/// values.
std::vector<Job> Jobs();

}  // namespace bench
