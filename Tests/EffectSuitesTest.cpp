// SPDX-License-Identifier: Apache-2.0
// What holds for every effect of the catalog.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "EffectRuns.h"

namespace {

using test::EffectRun;
using test::Form;
using test::Residency;
using test::TestImage;

constexpr QVRect kBounds = {-3, 5, 37, 23};
constexpr QVRect kInside = {2, 9, 19, 8};
constexpr QVRect kRects[] = {kBounds, kInside, {-9, 20, 17, 30}, {33, -4, 40, 14}, {2, 9, 0, 8}};

bool IsIn(int x, int y, QVRect rect) { return QVPointInRect({x, y}, rect); }

// Whether samples are the same bits. Floats that the place rounds may differ by little.
bool Agree(const EffectRun& run, const std::vector<std::byte>& a, const std::vector<std::byte>& b) {
  const bool isRounded = run.effect->outset.reach & catalog::kReachRounds && run.form.depth == 32;
  if (!isRounded || a.size() != b.size()) return a == b;
  for (size_t i = 0; i < a.size(); i += sizeof(float)) {
    float x, y;
    std::memcpy(&x, &a[i], sizeof x);
    std::memcpy(&y, &b[i], sizeof y);
    if (!(std::abs(x - y) <= 1e-5f)) return false;
  }
  return true;
}

class EffectSuite : public testing::TestWithParam<const catalog::Effect*> {
 protected:
  // Failures are asked for here; their log lines would only hide others.
  void SetUp() override {
    constexpr QVLogHandler kSilent = {nullptr, nullptr};
    QVLogSetHandler(&kSilent, nullptr);
  }
  void TearDown() override { QVLogSetHandler(nullptr, nullptr); }

  const catalog::Effect& Effect() const { return *GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(, EffectSuite, testing::ValuesIn(test::AllEffects()),
                         [](const auto& each) { return test::NameOf(*each.param); });

// Outside the rectangle nothing changes, nor does the source; transparency is what it should be.
TEST_P(EffectSuite, Confinement) {
  for (const EffectRun& run : test::RunsOf(Effect())) {
    for (const QVRect& rect : kRects) {
      SCOPED_TRACE(testing::Message() << run << " at " << rect.x << ", " << rect.y);
      TestImage src(kBounds, run.form, Residency::kMemory, 1);
      TestImage dst(kBounds, run.DstForm(), Residency::kMemory, 2);
      const auto srcBefore = src.Bytes();
      auto dstBefore = dst.Bytes();
      ASSERT_EQ(run(src, dst, rect), kQVStatusSuccess);
      EXPECT_EQ(src.Bytes(), srcBefore);

      const Form form = run.DstForm();
      const bool keeps = form.transparency && Effect().transparency == catalog::Transparency::Kept;
      for (int y = kBounds.y; y < kBounds.y + kBounds.height; y++) {
        for (int x = kBounds.x; x < kBounds.x + kBounds.width; x++) {
          if (!IsIn(x, y, rect)) continue;
          if (keeps) {
            const auto transparency = [x, y](const TestImage& image) {
              return image.Value(x, y, image.GetForm().planes - 1);
            };
            ASSERT_EQ(transparency(dst), transparency(src)) << x << ", " << y;
          }
          // What may change is taken out of the comparison of the whole buffer below.
          std::memcpy(dstBefore.data() + (dst.Address(x, y) - dst.Bytes().data()),
                      dst.Address(x, y), form.ColBytes());
        }
      }
      EXPECT_EQ(dst.Bytes(), dstBefore);
    }
  }
}

// Images behind callbacks, and src as dst, give the same bits as images in memory.
TEST_P(EffectSuite, Residency) {
  for (const EffectRun& run : test::RunsOf(Effect())) {
    for (const QVRect& rect : kRects) {
      SCOPED_TRACE(testing::Message() << run << " at " << rect.x << ", " << rect.y);
      TestImage src(kBounds, run.form, Residency::kMemory, 1);
      TestImage expected(kBounds, run.DstForm(), Residency::kMemory, 1);
      ASSERT_EQ(run(src, expected, rect), kQVStatusSuccess);
      for (const auto srcAt : {Residency::kMemory, Residency::kCallbacks}) {
        TestImage from(kBounds, run.form, srcAt, 1);
        for (const auto dstAt : {Residency::kMemory, Residency::kCallbacks}) {
          TestImage to(kBounds, run.DstForm(), dstAt, 1);
          ASSERT_EQ(run(from, to, rect), kQVStatusSuccess);
          EXPECT_EQ(to.Bytes(), expected.Bytes()) << srcAt << " to " << dstAt;
          EXPECT_EQ(from.BadCalls() + to.BadCalls(), 0);
        }
        if (Effect().inPlace == catalog::InPlace::Yes) {
          ASSERT_EQ(run(from, from, rect), kQVStatusSuccess);
          EXPECT_EQ(from.Bytes(), expected.Bytes()) << "in place, " << srcAt;
        }
      }
      EXPECT_EQ(TestImage::Living(), 0);
    }
  }
}

// A part of the image, and a tile cut out with the effect's outset, give the bits of the whole. An
// outset of a hard reach isn't larger than it must be.
TEST_P(EffectSuite, Parts) {
  const bool isHard = Effect().outset.reach & catalog::kReachIsHard;
  bool matters = false;  // the last pixel of the outset
  for (const EffectRun& run : test::RunsOf(Effect())) {
    SCOPED_TRACE(testing::Message() << run);
    const int outset = OutsetOf(Effect(), run.values);
    if (!(Effect().outset.reach & catalog::kReachFitsBounds)) {
      EXPECT_EQ(AskedOutset(Effect(), run.values) == -1, Effect().outset.own != nullptr);
    }
    if (outset == catalog::kWholeImage) continue;

    const auto inside = [](const TestImage& image) {
      return Pixels(image, [](int x, int y) { return IsIn(x, y, kInside); });
    };
    TestImage src(kBounds, run.form, Residency::kMemory, 1);
    TestImage whole(kBounds, run.DstForm(), Residency::kMemory, 2);
    TestImage part(kBounds, run.DstForm(), Residency::kMemory, 3);
    ASSERT_EQ(run(src, whole, kBounds), kQVStatusSuccess);
    ASSERT_EQ(run(src, part, kInside), kQVStatusSuccess);
    EXPECT_TRUE(Agree(run, inside(part), inside(whole)));

    const auto suffices = [&](int pixels) {
      const QVRect margin = QVRectIntersect(QVRectOutset(kInside, pixels), kBounds);
      TestImage tile(margin, run.form, Residency::kMemory, 4);
      TestImage result(margin, run.DstForm(), Residency::kMemory, 5);
      EXPECT_EQ(
          QVImageRead2(src, margin, 0, -1, tile.Address(margin.x, margin.y), tile.Stride(), 0),
          kQVStatusSuccess);
      EXPECT_EQ(run(tile, result, kInside), kQVStatusSuccess);
      return Agree(run, inside(result), inside(whole));
    };
    EXPECT_TRUE(suffices(outset));
    if (isHard && outset > 0) matters |= !suffices(outset - 1);
  }
  EXPECT_EQ(matters, isHard);
}

// What is large enough to be written around the caches has the bits of its parts, which aren't.
TEST_P(EffectSuite, LargeImages) {
  constexpr int kBytes = 9 << 20, kHeight = 301, kBand = 43;
  const std::vector<EffectRun> runs = test::RunsOf(Effect());
  for (const auto& [depth, transparency] : {std::pair{16, 1}, {32, 0}}) {
    const auto chosen = std::ranges::find_if(runs, [&](const EffectRun& run) {
      return run.form.depth == depth && run.form.transparency == transparency;
    });
    if (chosen == runs.end()) continue;
    const EffectRun& run = *chosen;
    const QVRect bounds = {-3, 5, kBytes / kHeight / run.DstForm().ColBytes(), kHeight};
    TestImage src(bounds, run.form, Residency::kMemory, 1);
    TestImage whole(bounds, run.DstForm(), Residency::kMemory, 2);
    TestImage parts(bounds, run.DstForm(), Residency::kMemory, 2);
    ASSERT_EQ(run(src, whole, {-2, 5, bounds.width - 1, kHeight}), kQVStatusSuccess) << run;
    for (int y = 0; y < kHeight; y += kBand) {
      ASSERT_EQ(run(src, parts, {-2, 5 + y, bounds.width - 1, kBand}), kQVStatusSuccess) << run;
    }
    EXPECT_TRUE(whole.Bytes() == parts.Bytes()) << run;
  }
}

bool IsKnown(int status) {
  return catalog::StatusMeaning(status) != catalog::StatusMeaning(-12345);
}

// Rectangles that no image has: a documented status, and soon.
TEST_P(EffectSuite, HostileRectangles) {
  constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
  constexpr QVRect kHostile[] = {
      {0, 0, -1, 5},
      {0, 0, 5, -1},
      {kMin, kMin, kMax, kMax},
      {kMax, kMax, kMax, kMax},
      {kMin, kMin, kMin, kMin},
      {-5, -5, kMax, kMax},
      {kMax, 7, kMax, 1},
      {3, kMin, 1, kMax},
      {1000000, 7, 5, 5},
      {-1000000, 7, 5, 5},
  };
  for (const EffectRun& run : test::RunsOf(Effect())) {
    for (const auto residency : {Residency::kMemory, Residency::kCallbacks}) {
      for (const QVRect& rect : kHostile) {
        TestImage src({0, 0, 5, 4}, run.form, residency, 1);
        TestImage dst({0, 0, 5, 4}, run.DstForm(), residency, 2);
        const int status = run(src, dst, rect);
        EXPECT_TRUE(IsKnown(status)) << run << ": " << status;
      }
    }
  }
}

// Images that don't go together, that aren't there or that have no pixels.
TEST_P(EffectSuite, HostileImages) {
  const bool isFill = Effect().name.starts_with("fill-");  // has no source
  const std::vector<EffectRun> runs = test::RunsOf(Effect());
  for (const EffectRun& run : runs) {
    TestImage src(kBounds, run.form, Residency::kMemory, 1);
    EXPECT_EQ(run(nullptr, nullptr, kInside), kQVStatusBadArgument) << run;
    EXPECT_EQ(run(src, nullptr, kInside), kQVStatusBadArgument) << run;
    EXPECT_EQ(run(nullptr, src, kInside), isFill ? kQVStatusSuccess : kQVStatusBadArgument) << run;
    for (const Form& form : {Form{8, 1, 0}, {8, 5, 1}, {16, 4, 1}, {16, 64, 0}, {32, 3, 0}}) {
      for (const QVRect bounds : {kBounds, QVRect{-3, 5, 1, 1}, {-3, 5, 0, 7}, {-3, 5, 7, 0}}) {
        TestImage dst(bounds, form, Residency::kMemory, 2);
        const int status = run(src, dst, kInside);
        EXPECT_TRUE(IsKnown(status)) << run << " to " << form << ": " << status;
        const int back = run(dst, src, kInside);
        EXPECT_TRUE(IsKnown(back)) << run << " from " << form << ": " << back;
      }
    }
  }
}

// NaN and infinities pass through or are held; nothing else happens.
TEST_P(EffectSuite, HostileSamples) {
  constexpr float kBad[] = {std::numeric_limits<float>::quiet_NaN(),
                            std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity(),
                            3e38f,
                            -3e38f,
                            1e-40f};
  for (const EffectRun& run : test::RunsOf(Effect())) {
    if (run.form.depth != 32) continue;
    TestImage src(kBounds, run.form, Residency::kMemory, 1);
    TestImage dst(kBounds, run.DstForm(), Residency::kMemory, 2);
    int next = 0;
    for (int y = 8; y < 18; y++) {
      for (int x = 0; x < 30; x++) {
        src.At<float>(x, y, next % run.form.planes) = kBad[next % std::size(kBad)];
        next++;
      }
    }
    EXPECT_EQ(run(src, dst, kInside), kQVStatusSuccess) << run;
  }
}

}  // namespace
