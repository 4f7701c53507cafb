// SPDX-License-Identifier: Apache-2.0
// What every effect stands on: sample types, walks, and how failures travel.
#include <QVEffects/QVEffectsBasics.h>
#include <QVEffects/QVEffectsConvert.h>
#include <gmock/gmock.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <vector>

#include "CaughtLog.h"
#include "TestImage.h"
#include "Utils/EffectFrame.h"
#include "Utils/QVEffectsUtils.h"

namespace {

using test::TestImage;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

template <class T>
class IntegerSamples : public testing::Test {};
using IntegerTypes = testing::Types<uchar, ushort>;
TYPED_TEST_SUITE(IntegerSamples, IntegerTypes);

TYPED_TEST(IntegerSamples, RoundToNearestAndComeBack) {
  constexpr int kMax = std::numeric_limits<TypeParam>::max();
  const auto toSample = [](double value) {
    return int{qv::FromUnit<TypeParam>(static_cast<float>(value))};
  };
  const float scale = std::bit_cast<float>(kMax == 255 ? 0x3B808081u : 0x37800080u);
  for (int s = 0; s <= kMax; s++) {
    const float unit = qv::ToUnit(static_cast<TypeParam>(s));
    ASSERT_EQ(unit, static_cast<float>(s) * scale) << s;
    ASSERT_EQ(toSample(unit), s);
    // A hundredth off the half: more than floats this close to 1 are apart.
    ASSERT_EQ(toSample((s - 0.49) / kMax), s);
    ASSERT_EQ(toSample((s + 0.49) / kMax), s);
    ASSERT_EQ(qv::Truncate<TypeParam>(static_cast<float>(s) + 0.99f), s);
  }
  EXPECT_EQ(toSample(0.5), kMax / 2 + 1) << "a half goes up";
  for (const double low : {-0.0, -1e-9, -1.0, -1e30, -double{kInfinity}, std::nan("")}) {
    EXPECT_EQ(toSample(low), 0) << low;
  }
  for (const double high : {1.0, 1.001, 2.0, 1e30, double{kInfinity}}) {
    EXPECT_EQ(toSample(high), kMax) << high;
  }
}

// Large results go around the caches, unless they're read in the same walk or go through buffers.
TEST(Walk, StreamsWhatIsLargeAndItsOwn) {
  constexpr QVRect kBounds = {0, 0, 1500, 1500}, kSmall = {10, 10, 500, 500};
  TestImage src(kBounds, {32, 1, 0}), dst(kBounds, {32, 1, 0});
  TestImage behind(kBounds, {32, 1, 0}, test::Residency::kCallbacks);
  qv::ImageRef alias;
  ASSERT_EQ(QVImageCreateWithBuffer(kBounds, 32, 1, kQVColorSpaceGray, 0, src.Address(0, 0),
                                    src.Stride(), alias.Receive()),
            kQVStatusSuccess);
  const auto streams = [](std::initializer_list<qv::Walked> list, QVRect rect) {
    const std::vector<qv::Walked> images = list;
    std::vector<QVImageAccess> accesses(images.size());
    std::vector<void*> rows(images.size());
    bool result = false;
    qv::WalkRows("", images, accesses.data(), rows.data(), MakeVRect(rect),
                 [&](const qv::WalkedRow& row) { result = row.copier.Streams(); });
    return result;
  };
  EXPECT_TRUE(streams({qv::ToRead(src), qv::ToWrite(dst)}, kBounds));
  EXPECT_TRUE(streams({qv::ToWrite(dst)}, kBounds));
  EXPECT_FALSE(streams({qv::ToRead(src), qv::ToWrite(dst)}, kSmall));
  EXPECT_FALSE(streams({qv::ToRead(src), qv::ToReadWrite(dst)}, kBounds));
  EXPECT_FALSE(streams({qv::ToRead(src), qv::ToWrite(src)}, kBounds));
  EXPECT_FALSE(streams({qv::ToRead(alias), qv::ToWrite(src)}, kBounds));
  EXPECT_FALSE(streams({qv::ToRead(src), qv::ToWrite(behind)}, kBounds));
}

// From any address to any, in any length; what overlaps comes out as moved.
TEST(Copier, StreamsAnyRange) {
  constexpr struct {
    size_t to, from, bytes;
  } kCases[] = {{1501, 3, 1490}, {65, 1600, 1399}, {1601, 7, 5}, {100, 0, 2500}, {0, 100, 2500}};
  for (const auto& c : kCases) {
    std::vector<unsigned char> bytes(3000);
    for (size_t i = 0; i < bytes.size(); i++) {
      bytes[i] = static_cast<unsigned char>(i * 7 + i / 256);
    }
    std::vector<unsigned char> expected = bytes;
    std::memmove(&expected[c.to], &expected[c.from], c.bytes);
    qv::RowCopier copier(size_t{16} << 20);
    ASSERT_TRUE(copier.Streams());
    copier.Copy(&bytes[c.to], &bytes[c.from], c.bytes);
    EXPECT_TRUE(bytes == expected) << c.to;
  }
}

template <qv::Boundary boundary>
int GuardAgainst(const std::function<int()>& body) {
  return qv::Guard<boundary>({"Source/Here", 5}, 999, body);
}

TEST(Failure, BoundariesTurnExceptionsIntoStatuses) {
  using qv::Boundary;
  const std::function<int()> bodies[] = {
      [] { return 42; }, []() -> int { throw 1007; }, []() -> int { throw std::bad_alloc(); },
      []() -> int { throw std::runtime_error("unknown"); }, []() -> int { throw "unknown"; }};
  const struct {
    const char* what;
    int (*guard)(const std::function<int()>&);
    int statuses[5];
    size_t events;
  } cases[] = {
      {"integer and unknown",
       GuardAgainst<Boundary::kIntegerAndUnknown>,
       {42, 1007, 999, 999, 999},
       3},
      {"with memory", GuardAgainst<Boundary::kWithMemory>, {42, 1007, -108, 999, 999}, 0},
      {"memory only", GuardAgainst<Boundary::kMemoryOnly>, {42, 999, -108, 999, 999}, 0},
      {"catch-all only", GuardAgainst<Boundary::kCatchAllOnly>, {42, 999, 999, 999, 999}, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    test::CaughtLog log;
    for (int i = 0; i < 5; i++) EXPECT_EQ(c.guard(bodies[i]), c.statuses[i]) << "body " << i;
    EXPECT_EQ(log.events.size(), c.events);
    for (const auto& event : log.events) {
      EXPECT_TRUE(event.code == 999 && event.path == "Source/Here" && event.line == 5);
    }
  }
}

TEST(Failure, IsLoggedWhereItHappens) {
  test::CaughtLog log;
  int sample = 3;
  qv::Check(kQVStatusSuccess, "Source/A");
  EXPECT_EQ(qv::Required(&sample, "Source/A"), &sample);
  EXPECT_TRUE(log.events.empty());
  EXPECT_THROW(qv::Check(-108, "Source/A"), int);
  EXPECT_THROW(qv::Required<int>(nullptr, {"Source/B", 77}), int);
  const int line = __LINE__ - 2;
  ASSERT_EQ(log.events.size(), 2u);
  EXPECT_EQ(log.events[0].code, -108);
  EXPECT_EQ(log.events[0].path, "Source/A");
  EXPECT_EQ(log.events[0].line, line);
  EXPECT_EQ(log.events[1].code, kQVStatusBadArgument);
  EXPECT_EQ(log.events[1].line, 77);
}

TEST(Failure, OfRowsIsLoggedOnce) {
  constexpr int kBad = kQVStatusBadArgument;
  constexpr QVRect kBounds = {0, 0, 4, 4};
  constexpr VRect kRect = {0, 0, 4, 4};
  qv::ImageRef src;
  ASSERT_EQ(QVImageCreateWithCallbacks(kBounds, 8, 3, kQVColorSpaceRGB, 0, &test::kFailing, nullptr,
                                       src.Receive()),
            kQVStatusSuccess);
  TestImage dst(kBounds, {8, 3, 0}), light(kBounds, {8, 1, 0});
  const std::vector<std::byte> before = dst.Bytes();
  __QVImage* result = dst;
  const auto gray = [&](__QVImage* source, VRect rect) {
    return CreateGrayScaleImage(source, result, rect, kGrayAsSource, kGrayLuma);
  };
  const struct {
    int status;
    const char* file;
    std::function<int()> run;
  } cases[] = {
      {kBad, "QVEffects/QVEffectsInvert", [&] { return QVEffectsInvert(src, dst, kBounds); }},
      {kBad, "Utils/QVEffectsUtils", [&] { return QVEffectsCopyImage(src, dst, kBounds); }},
      {kQVStatusUnknown, "QVEffects/QVEffectsConvertImageMode",
       [&] { return QVEffectsConvertImageMode(src, dst, kBounds, kQVColorModeRGBToHSB); }},
      {kBad, "Utils/QVEffectsUtils", [&] { return ApplyLuminosity(src, dst, light, kRect); }},
      {kBad, "Utils/QVEffectsUtils", [&] { return gray(src, kRect); }},
      // Inside out, and with edges further apart than an int holds.
      {kBad, "Utils/QVEffectsUtils", [&] { return gray(dst, {0, 5, 4, 1}); }},
      {kBad, "Utils/QVEffectsUtils", [&] { return gray(dst, {INT_MIN, 0, INT_MAX, 0}); }},
  };
  for (const auto& c : cases) {
    test::CaughtLog log;
    EXPECT_EQ(c.run(), c.status);
    ASSERT_EQ(log.events.size(), 1u);
    EXPECT_EQ(log.events[0].code, kQVStatusBadArgument);
    EXPECT_EQ(log.events[0].path, std::string("Source/Common/") + c.file);
    EXPECT_GT(log.events[0].line, 0);
  }
  EXPECT_EQ(result, nullptr);
  EXPECT_TRUE(dst.Bytes() == before);
}

}  // namespace
