// SPDX-License-Identifier: Apache-2.0
// Times every job on 12-megapixel images at three depths, RGB with and without transparency, on one
// thread. Google Benchmark's options hold (--benchmark_filter=invert); the table of ratios is last.
#include <QVCore9/QVCore9.h>

#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <opencv2/core.hpp>

#include "Jobs.h"
#include "Report.h"

namespace {

using bench::Job;

constexpr int kWidth = 4000, kHeight = 3000;

struct Form {
  const char* name;
  int type;  // of OpenCV
  int depth;
  int planes;
};

constexpr Form kForms[] = {
    {"u8x3", CV_8UC3, 8, 3},    {"u8x4", CV_8UC4, 8, 4},    {"u16x3", CV_16UC3, 16, 3},
    {"u16x4", CV_16UC4, 16, 4}, {"f32x3", CV_32FC3, 32, 3}, {"f32x4", CV_32FC4, 32, 4},
};

struct Release {
  void operator()(__QVImage* image) const { QVImageRelease(image); }
};
using Image = std::unique_ptr<__QVImage, Release>;

// An image of the core library's own, with rows that start at cache lines.
Image MakeImage(const Form& form) {
  __QVImage* image = nullptr;
  QVImageCreateWithParams2({0, 0, kWidth, kHeight}, form.depth, form.planes,
                           form.planes > 1 ? kQVColorSpaceRGB : kQVColorSpaceGray, form.planes == 4,
                           1, &image);
  QVImageFill(image, 0);
  return Image(image);
}

// Source and destination of one form, for a peer and for us.
struct Images {
  cv::Mat src, dst;
  Image ourSrc, ourDst, ourLayer, ourMask;

  explicit Images(const Form& form)
      : src(kHeight, kWidth, form.type),
        dst(kHeight, kWidth, form.type),
        ourSrc(MakeImage(form)),
        ourDst(MakeImage(form)),
        ourLayer(MakeImage(form)),
        ourMask(MakeImage({"", 0, form.depth, 1})) {
    cv::theRNG().state = 1;
    cv::randu(src, 0, form.depth == 32 ? 1.0 : form.depth == 16 ? 65536.0 : 256.0);
    dst.setTo(cv::Scalar::all(0));
    QVImageWrite2(ourSrc.get(), {0, 0, kWidth, kHeight}, 0, -1, src.data,
                  static_cast<int>(src.step), 0);
    cv::Mat layer(kHeight, kWidth, form.type);
    cv::randu(layer, 0, form.depth == 32 ? 1.0 : form.depth == 16 ? 65536.0 : 256.0);
    QVImageWrite2(ourLayer.get(), {0, 0, kWidth, kHeight}, 0, -1, layer.data,
                  static_cast<int>(layer.step), 0);
    // The layer's samples serve the mask, too: there are more than it needs.
    QVImageWrite2(ourMask.get(), {0, 0, kWidth, kHeight}, 0, -1, layer.data, -1, 0);
  }
};

// One form at a time: the largest takes 1.2 GB.
Images& ImagesOf(const Form& form) {
  static std::unique_ptr<Images> images;
  static const Form* current = nullptr;
  if (current != &form) {
    images.reset();
    images = std::make_unique<Images>(form);
    current = &form;
  }
  return *images;
}

void CountPixels(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

void TimeCopy(benchmark::State& state, const Form& form) {
  Images& images = ImagesOf(form);
  const size_t bytes = images.src.total() * images.src.elemSize();
  for (auto _ : state) {
    std::memcpy(images.dst.data, images.src.data, bytes);
    benchmark::ClobberMemory();
  }
  CountPixels(state);
}

// A line of /proc/self/status in megabytes: VmRSS, the memory in use, or VmHWM, its peak.
double Memory(const std::string& what) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kilobytes;
    if (word == what + ":" && status >> kilobytes) return kilobytes / 1024;
  }
  return 0;
}

// What a call takes beyond the images, in megabytes, at its peak.
template <class Call>
double PeakMemory(Call&& call) {
  call();  // so that all pages of the images are there
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << 5;  // lets the peak start anew
  const double before = Memory("VmRSS");
  call();
  return std::max(Memory("VmHWM") - before, 0.0);
}

void TimeOurs(benchmark::State& state, const Form& form, const Job& job) {
  Images& images = ImagesOf(form);
  const catalog::Effect* effect = catalog::Find(job.effect);
  std::vector<catalog::Value> values = job.values;
  for (size_t i = 0; i < values.size(); i++) {
    const catalog::Kind kind = effect->parameters[i].kind;
    if (catalog::IsNeeded(kind)) values[i] = images.ourLayer.get();
    if (kind == catalog::Kind::Mask && job.masked) values[i] = images.ourMask.get();
  }
  const auto call = [&] {
    return job.run
               ? job.run(images.ourSrc.get())
               : effect->run(
                     {images.ourSrc.get(), images.ourDst.get(), {0, 0, kWidth, kHeight}, values});
  };
  state.counters[bench::kMegabytes] = PeakMemory(call);
  for (auto _ : state) {
    if (call() != kQVStatusSuccess) return state.SkipWithError("the effect failed");
  }
  CountPixels(state);
}

void TimePeer(benchmark::State& state, const Form& form, const Job& job) {
  Images& images = ImagesOf(form);
  for (auto _ : state) job.peer(images.src, images.dst);
  CountPixels(state);
}

// "ours/invert/u8x3"
std::string Name(const std::string& who, const std::string& job, const Form& form) {
  return who + "/" + job + "/" + form.name;
}

void Register(const std::string& name, auto function, auto... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), function, arguments...)->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  cv::setNumThreads(1);

  const std::vector<Job> jobs = bench::Jobs();
  std::map<std::string, std::string> peerNames;
  for (const Form& form : kForms) {
    Register(std::string(bench::kMemcpy) + "/" + form.name, TimeCopy, std::cref(form));
    for (const Job& job : jobs) {
      peerNames[job.name] = job.peerName;
      if (job.takes && !job.takes(form.type)) continue;
      Register(Name(bench::kOurs, job.name, form), TimeOurs, std::cref(form), std::cref(job));
      if (job.peer && (!job.peerTakes || job.peerTakes(form.type))) {
        Register(Name(bench::kPeer, job.name, form), TimePeer, std::cref(form), std::cref(job));
      }
    }
  }
  bench::Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);
  collector.PrintTable(peerNames);
  benchmark::Shutdown();
  return 0;
}
