// SPDX-License-Identifier: Apache-2.0
// Every call of the core library that can fail does so in turn: the effect must answer with the
// right status and leave nothing behind. Images of depths that only another core library makes are
// refused.
#include <QVEffects/QVEffects.h>
#include <dlfcn.h>
#include <gmock/gmock.h>

#include "EffectRuns.h"

namespace {

using test::EffectRun;
using test::Residency;
using test::TestImage;

constexpr int kFailure = 777;

enum class Operation { kCreate, kRead, kWrite };

struct Plan {
  Operation operation;
  int countdown;  // the call that fails; 0 for none
  const EffectRun* run;
} sPlan;

// Without its rows a mask is absent, which is no failure.
bool IsMask(__QVImage* image) {
  const EffectRun* run = sPlan.run;
  for (size_t i = 0; run && i < run->values.size(); i++) {
    const auto* value = std::get_if<catalog::Image>(&run->values[i]);
    const bool isMask = run->effect->parameters[i].kind == catalog::Kind::Mask;
    if (isMask && value && *value == image) return true;
  }
  return false;
}

int sDepth;  // what images say that their depth is; 0 for the truth

bool Fails(Operation operation) {
  return operation == sPlan.operation && sPlan.countdown > 0 && --sPlan.countdown == 0;
}

template <class F>
F* Next(F*, const char* name) {
  return reinterpret_cast<F*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These stand before the library's own.
extern "C" {
#define NEXT(name) Next(name, #name)

__attribute__((visibility("default"))) int QVImageCreateWithParams2(QVRect bounds, int depth,
                                                                    int planes, int colorSpace,
                                                                    int transparency,
                                                                    int dataSource,
                                                                    __QVImage** result) {
  static const auto next = NEXT(QVImageCreateWithParams2);
  if (!Fails(Operation::kCreate)) {
    return next(bounds, depth, planes, colorSpace, transparency, dataSource, result);
  }
  *result = nullptr;
  return kFailure;
}

__attribute__((visibility("default"))) int QVImageRead2(__QVImage* image, QVRect rect, int first,
                                                        int last, void* buffer, int rowBytes,
                                                        int reserved) {
  static const auto next = NEXT(QVImageRead2);
  if (!IsMask(image) && Fails(Operation::kRead)) return kFailure;
  return next(image, rect, first, last, buffer, rowBytes, reserved);
}

__attribute__((visibility("default"))) int QVImageWrite2(__QVImage* image, QVRect rect, int first,
                                                         int last, const void* buffer, int rowBytes,
                                                         int reserved) {
  static const auto next = NEXT(QVImageWrite2);
  if (Fails(Operation::kWrite)) return kFailure;
  return next(image, rect, first, last, buffer, rowBytes, reserved);
}

__attribute__((visibility("default"))) int QVImageGetDepth(__QVImage* image) {
  static const auto next = NEXT(QVImageGetDepth);
  return sDepth ? sDepth : next(image);
}

__attribute__((visibility("default"))) int QVImageGetPlaneBytes(__QVImage* image) {
  static const auto next = NEXT(QVImageGetPlaneBytes);
  return sDepth ? sDepth / 8 : next(image);
}
}

namespace {

constexpr QVRect kBounds = {0, 0, 21, 13};
constexpr QVRect kRect = {-2, 3, 30, 7};

int sEvents;

// A failed creation comes back as it is, a row that can't be read as the effect's status for that.
// A failed write is dropped, since only a flush could tell.
bool IsRight(const catalog::Effect& effect, Operation operation, int status) {
  switch (operation) {
    case Operation::kCreate: return status == kFailure;
    case Operation::kRead: return status == effect.missingRow || status == effect.missingRow2;
    case Operation::kWrite: return status == kQVStatusSuccess;
  }
  return false;
}

class CoreFailures : public testing::TestWithParam<const catalog::Effect*> {};

INSTANTIATE_TEST_SUITE_P(, CoreFailures, testing::ValuesIn(test::AllEffects()),
                         [](const auto& each) { return test::NameOf(*each.param); });

TEST_P(CoreFailures, ComeBackAsStatus) {
  const QVLogHandler handler = {[](void*, int, const char*, int) { sEvents++; }, nullptr};
  QVLogSetHandler(&handler, nullptr);
  int failed = 0;
  for (const EffectRun& run : test::RunsOf(*GetParam())) {
    for (const Operation operation : {Operation::kCreate, Operation::kRead, Operation::kWrite}) {
      for (int n = 1;; n++) {
        TestImage src(kBounds, run.form, Residency::kCallbacks, 1);
        TestImage dst(kBounds, run.DstForm(), Residency::kCallbacks, 2);
        sPlan = {operation, n, &run};
        sEvents = 0;
        const int status = run(src, dst, kRect);
        if (std::exchange(sPlan, {}).countdown > 0) {
          EXPECT_EQ(status, kQVStatusSuccess) << run;
          break;
        }
        failed++;
        EXPECT_TRUE(IsRight(*run.effect, operation, status))
            << run << ", call " << n << ": " << status;
        EXPECT_EQ(sEvents > 0, status != kQVStatusSuccess) << run << ", call " << n;
      }
      EXPECT_EQ(TestImage::Living(), 0) << run;
    }
  }
  EXPECT_GT(failed, 0);
  QVLogSetHandler(nullptr, nullptr);
}

// Calls f on images that say they have 64 bits a sample, as a host's own core library may make.
template <class F>
int WithOtherDepth(F&& f) {
  sDepth = 64;
  const int status = f();
  sDepth = 0;
  return status;
}

// At most a plain copy is made.
TEST_P(CoreFailures, OtherDepthsAreRefused) {
  constexpr QVLogHandler kSilent = {nullptr, nullptr};
  QVLogSetHandler(&kSilent, nullptr);
  for (const EffectRun& run : test::RunsOf(*GetParam())) {
    TestImage src(kBounds, run.form, Residency::kMemory, 1);
    TestImage dst(kBounds, run.DstForm(), Residency::kMemory, 2);
    TestImage copy(kBounds, run.DstForm(), Residency::kMemory, 2);
    const auto before = dst.Bytes();
    const int status = WithOtherDepth([&] { return run(src, dst, kRect); });
    QVEffectsCopyImage(src, copy, kRect);
    EXPECT_THAT(status,
                testing::AnyOf(kQVStatusSuccess, kQVStatusUnsupported, kQVStatusUnsupportedOlder))
        << run;
    const bool isRefused = status != kQVStatusSuccess;
    EXPECT_TRUE(dst.Bytes() == copy.Bytes() || (isRefused && dst.Bytes() == before)) << run;
  }
  QVLogSetHandler(nullptr, nullptr);
}

TEST(OtherDepths, OfSolarizeAndColorize) {
  TestImage image(kBounds, {8, 3, 0});
  static int line;
  const QVLogHandler handler = {[](void*, int, const char*, int at) { line = at; }, nullptr};
  QVLogSetHandler(&handler, nullptr);
  EXPECT_EQ(WithOtherDepth([&] { return QVEffectsSolarize(image, image, kRect); }),
            kQVStatusUnsupportedOlder);
  EXPECT_EQ(line, 0) << "not logged";
  EXPECT_EQ(WithOtherDepth([&] { return QVEffectsColorize(image, image, kRect, 0, 0, 0); }),
            kQVStatusUnsupported);
  EXPECT_EQ(line, 78);
  QVLogSetHandler(nullptr, nullptr);
}

}  // namespace
