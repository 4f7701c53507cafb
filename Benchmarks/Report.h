// SPDX-License-Identifier: Apache-2.0
// The table at the end of a run: ours, the peer's and the mark, as multiples of memcpy.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace bench {

/// The names of the rows that a job's times are collected under.
inline constexpr const char* kOurs = "ours";
inline constexpr const char* kPeer = "peer";
inline constexpr const char* kMemcpy = "memcpy";

/// The counter of the memory that a call takes beyond its images.
inline constexpr const char* kMegabytes = "MB";

/// Prints as the console does, and keeps the best time of each benchmark. Names are
/// WHO/JOB/FORM, as in "ours/invert/u8x3".
class Collector : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;

  /// Nanoseconds a pixel, or NaN when it wasn't run.
  double Time(const std::string& name) const;

  /// Prints the table. @param pixels of the images timed.
  void PrintTable(const std::map<std::string, std::string>& peerNames) const;

 private:
  std::map<std::string, double> mTimes;
  std::map<std::string, double> mMegabytes;
};

}  // namespace bench
