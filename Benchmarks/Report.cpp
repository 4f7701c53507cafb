// SPDX-License-Identifier: Apache-2.0
#include "Report.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>

namespace bench {
namespace {

struct Mark {
  double timesMemcpy = std::numeric_limits<double>::quiet_NaN();
  std::string peer = "-";
};

// peers.tsv by "JOB/FORM".
std::map<std::string, Mark> ReadMarks() {
  std::map<std::string, Mark> marks;
  std::ifstream file(PEERS_FILE);
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    std::string job, depth, planes, peer;
    double time, timesMemcpy;
    if (fields >> job >> depth >> planes >> time >> timesMemcpy >> peer) {
      marks[job + "/" + depth + "x" + planes] = {timesMemcpy, peer};
    }
  }
  return marks;
}

std::string Number(double value) {
  if (std::isnan(value)) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", value);
  return text;
}

}  // namespace

void Collector::ReportRuns(const std::vector<Run>& runs) {
  ConsoleReporter::ReportRuns(runs);
  for (const Run& run : runs) {
    if (run.error_occurred || run.run_type != Run::RT_Iteration) continue;
    const std::string name = run.run_name.function_name;
    const double time = 1e9 / run.counters.at("items_per_second");
    const auto [place, isNew] = mTimes.try_emplace(name, time);
    if (!isNew) place->second = std::min(place->second, time);
    const auto memory = run.counters.find(kMegabytes);
    if (memory != run.counters.end()) mMegabytes[name] = memory->second;
  }
}

double Collector::Time(const std::string& name) const {
  const auto found = mTimes.find(name);
  return found == mTimes.end() ? std::numeric_limits<double>::quiet_NaN() : found->second;
}

void Collector::PrintTable(const std::map<std::string, std::string>& peerNames) const {
  const std::map<std::string, Mark> marks = ReadMarks();
  std::printf(
      "\nns a pixel, multiples of memcpy of the same image in this run, and MB beyond the "
      "images\n");
  std::printf("%-28s %9s %8s %6s | %9s %8s %-22s %9s | %8s %s\n", "job", "ours", "x memcpy", "MB",
              "peer", "x memcpy", "", "ours/peer", "mark", "");
  const std::string prefix = std::string(kOurs) + "/";
  for (const auto& [name, ours] : mTimes) {
    if (name.rfind(prefix, 0) != 0) continue;
    const std::string job = name.substr(prefix.size());
    const double copy = Time(std::string(kMemcpy) + "/" + job.substr(job.rfind('/') + 1));
    const double peer = Time(std::string(kPeer) + "/" + job);
    const auto mark = marks.find(job);
    const auto peerName = peerNames.find(job.substr(0, job.rfind('/')));
    std::printf("%-28s %9s %8s %6.1f | %9s %8s %-22s %9s | %8s %s\n", job.c_str(),
                Number(ours).c_str(), Number(ours / copy).c_str(), mMegabytes.at(name),
                Number(peer).c_str(), Number(peer / copy).c_str(),
                peerName == peerNames.end() ? "" : peerName->second.c_str(),
                Number(ours / peer).c_str(),
                mark == marks.end() ? "-" : Number(mark->second.timesMemcpy).c_str(),
                mark == marks.end() ? "" : mark->second.peer.c_str());
  }
}

}  // namespace bench
