// SPDX-License-Identifier: Apache-2.0
// Log, progress, arrays, strings and the dot product.
#include <QVCore9/Accelerate.h>
#include <gmock/gmock.h>

#include <climits>
#include <numeric>

#include "CaughtLog.h"
#include "TestImage.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(Log, GoesToTheHandlerAndBackToStandardError) {
  {
    test::CaughtLog log;
    QVLogEvent(1005, "Source/A", 12);
    QVLogUTF8("%d %s", 7, "größer");
    QVLogUTF8("%s|", std::string(5000, 'x').c_str());
    ASSERT_EQ(log.events.size(), 1u);
    EXPECT_EQ(log.events[0].code, 1005);
    EXPECT_EQ(log.events[0].path, "Source/A");
    EXPECT_EQ(log.events[0].line, 12);
    EXPECT_THAT(log.lines, ElementsAre("7 größer", std::string(1023, 'x')));
  }
  // A handler may log, and may leave out what it doesn't want.
  const QVLogHandler nested = {[](void*, int code, const char*, int) {
    QVLogUTF8("code %d", code);
    QVLogSetHandler(nullptr, nullptr);
  }, nullptr};
  testing::internal::CaptureStderr();
  QVLogSetHandler(&nested, nullptr);
  QVLogEvent(1, "dropped", 1);
  QVLogEvent(1003, "Source/B", 34);
  QVLogEvent(1004, nullptr, 5);
  QVLogUTF8("plain %c", 't');
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_THAT(printed, HasSubstr("1003 at Source/B:34\n"));
  EXPECT_THAT(printed, HasSubstr("\nplain t\n"));
  EXPECT_EQ(printed.find("dropped"), std::string::npos);
}

TEST(Progress, ReachesTheHost) {
  std::vector<std::string> told;
  static const auto tell = [](void* context, const std::string& what) {
    static_cast<std::vector<std::string>*>(context)->push_back(what);
  };
  const QVProgressCallbacks callbacks = {
      [](void* c, const char* title, int total) { tell(c, title + std::to_string(total)); },
      [](void* c, int value) { tell(c, std::to_string(value)); },
      [](void* c) { tell(c, "end"); },
      [](void* c) { tell(c, "release"); },
  };
  const auto runStage = [](__QVProgress* progress) {
    QVProgressDoProgressBeginStage(progress, 0, CFSTR("Lösche "), 1100);
    QVProgressDoProgressBeginStage(progress, 0, nullptr, 3);
    QVProgressDoProgressUpdateStage(progress, 42);
    QVProgressDoProgressEndStage(progress);
  };
  __QVProgress* progress = nullptr;
  ASSERT_EQ(QVProgressCreate(&callbacks, &told, &progress), kQVStatusSuccess);
  runStage(progress);
  EXPECT_THAT(told, ElementsAre("Lösche 1100", "3", "42", "end"));
  QVProgressRelease(progress);
  EXPECT_EQ(told.size(), 5u);
  EXPECT_EQ(told.back(), "release");

  const QVProgressCallbacks none = {};
  ASSERT_EQ(QVProgressCreate(&none, nullptr, &progress), kQVStatusSuccess);
  runStage(progress);
  runStage(nullptr);
  QVProgressRelease(progress);
  EXPECT_EQ(QVProgressCreate(nullptr, &told, &progress), kQVStatusBadArgument);
  EXPECT_EQ(progress, nullptr);
  EXPECT_EQ(QVProgressCreate(&callbacks, &told, nullptr), kQVStatusBadArgument);
  EXPECT_EQ(told.size(), 5u);
}

TEST(CoreFoundation, ArraysGrowPastTheirCapacity) {
  int values[1000];
  for (const CFIndex capacity : {CFIndex{-1}, CFIndex{1}, LONG_MAX}) {
    CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, capacity, nullptr);
    for (int& value : values) CFArrayAppendValue(array, &value);
    ASSERT_EQ(CFArrayGetCount(array), 1000);
    for (int i = 0; i < 1000; i++) ASSERT_EQ(CFArrayGetValueAtIndex(array, i), &values[i]);
    EXPECT_EQ(CFArrayGetValueAtIndex(array, -1), nullptr);
    EXPECT_EQ(CFArrayGetValueAtIndex(array, 1000), nullptr);
    CFRelease(array);
  }
  CFArrayAppendValue(nullptr, values);
  CFRelease(nullptr);
  EXPECT_EQ(CFArrayGetCount(nullptr), 0);
  EXPECT_EQ(CFArrayGetValueAtIndex(nullptr, 0), nullptr);
}

TEST(CoreFoundation, ArraysHoldTheirValues) {
  CFMutableArrayRef images = CFArrayCreateMutable(nullptr, 1, QVUtilsGetArrayCallbacks());
  {
    const test::TestImage image({0, 0, 1, 1}, {8, 1, 0}, test::Residency::kCallbacks);
    CFArrayAppendValue(images, image);
  }
  EXPECT_EQ(test::TestImage::Living(), 1);
  CFRelease(images);
  EXPECT_EQ(test::TestImage::Living(), 0);

  // The array keeps, and releases, what `retain` gave for the value.
  static const int kValues[2] = {};
  static const void* seen;
  const CFArrayCallBacks next = {0, [](CFAllocatorRef, const void* value) -> const void* {
    return static_cast<const int*>(value) + 1;
  }, [](CFAllocatorRef, const void* value) { seen = value; }};
  CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, &next);
  CFArrayAppendValue(array, kValues);
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), kValues + 1);
  CFRelease(array);
  EXPECT_EQ(seen, kValues + 1);
}

TEST(CoreFoundation, ConstantStringsAreOneAndStay) {
  const std::string same = "a constant";
  const CFStringRef constant = CFSTR("a constant");
  EXPECT_EQ(constant, __CFStringMakeConstantString(same.c_str()));
  EXPECT_NE(constant, CFSTR("another"));
  EXPECT_EQ(__CFStringMakeConstantString(nullptr), nullptr);
  for (int i = 0; i < 1000; i++) CFRelease(constant);
  EXPECT_EQ(constant, CFSTR("a constant")) << "it is still there";
}

// Beside 2^24 a single 1 is lost, two that were added before aren't: the sum tells which elements
// met first.
TEST(Accelerate, DotProductAddsInItsOrder) {
  const struct {
    int first, second;  // where the ones are
    bool meet;
  } cases[] = {{8, 24, true}, {16, 48, false}, {4, 12, true}, {4, 8, false},  {4, 6, false},
               {2, 10, true}, {2, 6, true},    {2, 4, false}, {1, 9, true},   {1, 5, true},
               {1, 3, true},  {1, 2, false},   {3, 15, true}, {33, 49, true}, {7, 39, true}};
  constexpr int kCount = 50;
  for (const auto& c : cases) {
    for (const auto& [strideA, strideB] : {std::pair{1, 1}, {2, 1}, {1, 3}, {-2, -1}}) {
      std::vector<float> a(kCount * 2, 1e9f), b(kCount * 3, 1e9f);
      // A negative stride walks down from the last element.
      float* startA = strideA < 0 ? &a.back() : a.data();
      float* startB = strideB < 0 ? &b.back() : b.data();
      for (int i = 0; i < kCount; i++) {
        startA[i * strideA] = i == 0 ? 8192 : i == c.first || i == c.second ? 0.5f : 0;
        startB[i * strideB] = i == 0 ? 2048 : 2;
      }
      float sum = -1;
      vDSP_dotpr(startA, strideA, startB, strideB, &sum, kCount);
      EXPECT_EQ(sum, c.meet ? 16777218.0f : 16777216.0f)
          << c.first << ' ' << c.second << ", strides " << strideA << ' ' << strideB;
    }
  }
}

TEST(Accelerate, DotProductTakesEveryElementOnce) {
  std::vector<float> numbers(70);
  std::iota(numbers.begin(), numbers.end(), 1.0f);
  for (unsigned count = 0, squares = 0; count <= 70; count++, squares += count * count) {
    float sum = -1;
    vDSP_dotpr(numbers.data(), 1, numbers.data(), 1, &sum, count);
    EXPECT_EQ(sum, static_cast<float>(squares)) << count;
  }
}

}  // namespace
