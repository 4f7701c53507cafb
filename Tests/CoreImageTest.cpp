// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <climits>
#include <cstring>

#include "Naive.h"
#include "Utils/QVEffectsUtils.h"

// Under a sanitizer, too, an absurd allocation gives null. (GCC's library looks for an export.)
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options() {
  return __asan_default_options();
}

namespace {

using test::Form;
using test::kFailing;
using test::kForms;
using test::Residency;
using test::TestImage;

constexpr Residency kResidencies[] = {Residency::kMemory, Residency::kCallbacks};

std::vector<int> Attributes(__QVImage* image) {
  const QVRect bounds = QVImageGetBounds(image);
  std::vector<int> all = {bounds.x, bounds.y, bounds.width, bounds.height};
  for (const auto get : {QVImageGetWidth, QVImageGetHeight, QVImageGetDepth, QVImageGetNumPlanes,
                         QVImageGetTransparency, QVImageGetPlaneBytes, QVImageGetColBytes,
                         QVImageGetColorSpaceType, QVImageGetType, QVImageGetDataSourceType}) {
    all.push_back(get(image));
  }
  return all;
}

TEST(CoreImage, IsMadeOrRefused) {
  constexpr int kNoForm = kQVStatusUnsupported, kNoPlace = kQVStatusBadArgument;
  constexpr QVRect kGood = {0, 0, 4, 3};
  const struct {
    int status;
    QVRect bounds;
    Form form;
  } cases[] = {
      {kNoForm, kGood, {12, 1, 0}},
      {kNoForm, kGood, {64, 1, 0}},
      {kNoForm, kGood, {8, 0, 0}},
      {kNoForm, kGood, {8, 65, 0}},
      {kNoForm, kGood, {8, 1, 1}},
      {kNoForm, kGood, {8, 4, 2}},
      {kNoForm, kGood, {8, 4, -1}},
      {kNoPlace, {0, 0, -1, 3}, {8, 1, 0}},
      {kNoPlace, {0, 0, 4, -1}, {8, 1, 0}},
      {kNoPlace, {INT_MAX - 3, 0, 4, 3}, {8, 1, 0}},
      {kNoPlace, {0, INT_MAX - 2, 4, 3}, {8, 1, 0}},
      {kNoPlace, {0, 0, 1 << 29, 3}, {32, 1, 0}},
      {kNoPlace, {INT_MIN, 0, INT_MAX, 1}, {8, 64, 0}},
      {kQVStatusSuccess, {INT_MAX - 4, INT_MIN, 4, 3}, {8, 64, 1}},
      {kQVStatusSuccess, {5, 5, 0, 3}, {32, 4, 1}},
      {kQVStatusSuccess, {5, 5, 4, 0}, {16, 3, 0}},
  };
  int released = 0;
  alignas(64) std::byte samples[64 * 4 * 3];
  for (int way = 0; way < 3; way++) {
    const auto create = [&](QVRect r, Form f, __QVImage** result) {
      return way == 0 ? QVImageCreateWithParams2(r, f.depth, f.planes, 1, f.transparency, 0, result)
             : way == 1 ? QVImageCreateWithBuffer(r, f.depth, f.planes, 1, f.transparency, samples,
                                                  256, result)
                        : QVImageCreateWithCallbacks(r, f.depth, f.planes, 1, f.transparency,
                                                     &kFailing, &released, result);
    };
    for (const auto& c : cases) {
      SCOPED_TRACE(testing::Message() << "way " << way << ", " << c.form << ", " << c.bounds.x);
      released = 0;
      auto* image = reinterpret_cast<__QVImage*>(samples);
      EXPECT_EQ(create(c.bounds, c.form, &image), c.status);
      EXPECT_EQ(image != nullptr, c.status == kQVStatusSuccess);
      EXPECT_EQ(released, 0);
      QVImageRelease(image);
      EXPECT_EQ(released, way == 2 && image ? 1 : 0);
    }
    EXPECT_EQ(create(kGood, {8, 1, 0}, nullptr), kQVStatusBadArgument);
  }
}

TEST(CoreImage, RefusesMemoryAndCallbacksThatCannotServe) {
  alignas(4) std::byte samples[64];
  const struct {
    int depth;
    std::byte* samples;
    int rowBytes, status;
  } buffers[] = {
      {8, nullptr, 8, kQVStatusBadArgument},   {8, samples, 3, kQVStatusBadArgument},
      {8, samples, -4, kQVStatusBadArgument},  {16, samples + 1, 16, kQVStatusBadArgument},
      {16, samples, 9, kQVStatusBadArgument},  {32, samples + 2, 16, kQVStatusBadArgument},
      {32, samples, 18, kQVStatusBadArgument}, {8, samples + 1, 5, kQVStatusSuccess},
      {16, samples + 2, 10, kQVStatusSuccess},
  };
  for (const auto& b : buffers) {
    auto* image = reinterpret_cast<__QVImage*>(samples);
    EXPECT_EQ(
        QVImageCreateWithBuffer({0, 0, 4, 2}, b.depth, 1, 1, 0, b.samples, b.rowBytes, &image),
        b.status)
        << b.depth << " bits, stride " << b.rowBytes;
    EXPECT_EQ(QVImageLockBuffer(image), b.status ? nullptr : b.samples);
    EXPECT_EQ(QVImageGetRowBytes(image), b.status ? 0 : b.rowBytes);
    QVImageRelease(image);
  }
  int released = 0;
  const QVImageCallbacks noRead = {nullptr, kFailing.write, kFailing.release};
  const QVImageCallbacks noWrite = {kFailing.read, nullptr, kFailing.release};
  for (const QVImageCallbacks* callbacks :
       std::initializer_list<const QVImageCallbacks*>{nullptr, &noRead, &noWrite}) {
    auto* image = reinterpret_cast<__QVImage*>(samples);
    EXPECT_EQ(QVImageCreateWithCallbacks({0, 0, 4, 2}, 8, 1, 1, 0, callbacks, &released, &image),
              kQVStatusBadArgument);
    EXPECT_EQ(image, nullptr);
  }
  EXPECT_EQ(released, 0);
  auto* image = reinterpret_cast<__QVImage*>(samples);
  EXPECT_EQ(QVImageCreateWithParams2({0, 0, 1 << 30, 1 << 30}, 8, 1, 1, 0, 0, &image),
            kQVStatusOutOfMemory);
  EXPECT_EQ(image, nullptr);
}

TEST(CoreImage, IsWhatItWasMadeAs) {
  for (const Form form : kForms) {
    SCOPED_TRACE(form);
    qv::ImageRef image;
    ASSERT_EQ(QVImageCreateWithParams2({-3, 9, 5, 7}, form.depth, form.planes, 42,
                                       form.transparency, 7, image.Receive()),
              kQVStatusSuccess);
    EXPECT_THAT(Attributes(image),
                testing::ElementsAre(-3, 9, 5, 7, 5, 7, form.depth, form.planes, form.transparency,
                                     form.PlaneBytes(), form.ColBytes(), 42, kQVImageTypePlain, 7));
    EXPECT_EQ(QVImageGetRowBytes(image), 5 * form.ColBytes() <= 64 ? 64 : 128);
    void* samples = QVImageLockBuffer(image);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(samples) % 64, 0u);
    EXPECT_EQ(QVImageLockBuffer(image), samples);
    // All rows are there to write to, padding too.
    std::memset(samples, 1, static_cast<size_t>(QVImageGetRowBytes(image)) * 7);
  }
  EXPECT_EQ(Attributes(nullptr), std::vector<int>(14));
  EXPECT_EQ(QVImageLockBuffer(nullptr), nullptr);
  QVImageFill(nullptr, 1);
  QVImageRetain(nullptr);
  QVImageRelease(nullptr);
}

TEST(CoreImage, LastReferenceReleasesAndFailuresComeBack) {
  int released = 0;
  __QVImage *image, *copy;
  ASSERT_EQ(QVImageCreateWithCallbacks({2, 2, 3, 3}, 8, 3, 2, 0, &kFailing, &released, &image), 0);
  EXPECT_EQ(QVImageLockBuffer(image), nullptr);
  copy = image;
  EXPECT_EQ(QVImageCreateCopy(image, &copy), 77);
  EXPECT_EQ(copy, nullptr);
  EXPECT_EQ(QVImageCreateCopy(image, nullptr), kQVStatusBadArgument);
  std::byte buffer[27];
  EXPECT_EQ(QVImageRead2(image, {2, 2, 3, 3}, 0, -1, buffer, -1, 0), 77);
  EXPECT_EQ(QVImageWrite2(image, {2, 2, 3, 3}, 0, -1, buffer, -1, 0), 78);
  QVImageRetain(image);
  QVImageRelease(image);
  EXPECT_EQ(released, 0);
  QVImageRelease(image);
  EXPECT_EQ(released, 1);
}

TEST(CoreImage, CopyHasSamplesAndAttributes) {
  for (const Form form : kForms) {
    for (const Residency residency : kResidencies) {
      SCOPED_TRACE(testing::Message() << form << ' ' << residency);
      TestImage image({-4, 6, 5, 3}, form, residency);
      QVImageSetType(image, kQVImageTypeInvertedMask);
      qv::ImageRef copy;
      ASSERT_EQ(QVImageCreateCopy(image, copy.Receive()), kQVStatusSuccess);
      EXPECT_EQ(Attributes(copy), Attributes(image));
      EXPECT_EQ(QVImageGetType(copy), kQVImageTypeInvertedMask);
      EXPECT_NE(QVImageLockBuffer(copy), image.Bytes().data());
      std::vector<std::byte> samples(5 * 3 * form.ColBytes()), copied(samples.size());
      EXPECT_EQ(QVImageRead2(image, image.Bounds(), 0, -1, samples.data(), -1, 0), 0);
      EXPECT_EQ(QVImageRead2(copy, image.Bounds(), 0, -1, copied.data(), -1, 0), 0);
      EXPECT_TRUE(copied == samples);
    }
  }
}

TEST(CoreImage, FillHoldsToTheRangeAndSparesPadding) {
  constexpr QVRect kBounds = {3, -2, 5, 4};
  for (const Form form : kForms) {
    for (const Residency residency : kResidencies) {
      for (const int value : {0, 1, -7, 300, 70000}) {
        SCOPED_TRACE(testing::Message() << form << ' ' << residency << ' ' << value);
        TestImage image(kBounds, form, residency), expected(kBounds, form);
        test::Pixel pixel = {};
        for (int p = 0; p < form.planes; p++) {
          test::SetSample(pixel, p, form.depth, static_cast<float>(value));
        }
        for (int i = 0; i < 5 * 4; i++) {
          PutPixel(expected.Bytes(), expected, 3 + i % 5, -2 + i / 5, pixel);
        }
        QVImageFill(image, value);
        EXPECT_TRUE(image.Bytes() == expected.Bytes());
        EXPECT_EQ(image.BadCalls(), 0);
      }
    }
  }
}

// Each byte of the buffer is looked at: samples where they belong, gaps between rows untouched.
TEST(CoreImage, TransfersMoveThePlanesAskedFor) {
  constexpr QVRect kBounds = {-2, 5, 6, 5};
  for (const Form form : {Form{8, 4, 1}, {16, 4, 0}, {32, 5, 1}}) {
    for (const Residency residency : kResidencies) {
      for (const auto& [first, last] : {std::pair{0, -1}, {0, 2}, {3, 3}, {1, 2}, {1, -1}}) {
        const int end = last == -1 ? form.planes : last + 1;
        for (const QVRect rect : {kBounds, QVRect{-1, 6, 4, 3}, QVRect{3, 9, 1, 1}}) {
          const size_t bytes = static_cast<size_t>(end - first) * form.PlaneBytes();
          const int packed = rect.width * static_cast<int>(bytes);
          for (const int rowBytes : {-1, packed + 5, rect.height == 1 ? 0 : packed}) {
            SCOPED_TRACE(testing::Message() << form << ' ' << residency << " planes " << first
                                            << " to " << last << ", stride " << rowBytes);
            const int stride = rowBytes > 0 ? rowBytes : packed;
            TestImage image(kBounds, form, residency), written(kBounds, form);
            std::vector<std::byte> buffer(static_cast<size_t>(stride) * rect.height, std::byte{9});
            std::vector<std::byte> expected = buffer;
            for (int y = 0; y < rect.height; y++) {
              for (int x = 0; x < rect.width; x++) {
                std::byte* sample = written.Address(rect.x + x, rect.y + y) +
                                    static_cast<ptrdiff_t>(first) * form.PlaneBytes();
                std::memcpy(&expected[y * stride + x * bytes], sample, bytes);
                for (size_t i = 0; i < bytes; i++) sample[i] = ~sample[i];
              }
            }
            EXPECT_EQ(QVImageRead2(image, rect, first, last, buffer.data(), rowBytes, 0), 0);
            EXPECT_TRUE(buffer == expected);
            for (std::byte& byte : buffer) byte = ~byte;
            EXPECT_EQ(QVImageWrite2(image, rect, first, last, buffer.data(), rowBytes, 0), 0);
            EXPECT_TRUE(image.Bytes() == written.Bytes());
            EXPECT_EQ(image.BadCalls(), 0);
          }
        }
      }
    }
  }
}

TEST(CoreImage, TransfersStayInside) {
  const struct {
    QVRect rect;
    int first, last, rowBytes;
  } cases[] = {
      {{0, 2, 3, 2}, 0, -1, -1},  {{1, 1, 3, 2}, 0, -1, -1},
      {{3, 2, 3, 2}, 0, -1, -1},  {{1, 4, 3, 3}, 0, -1, -1},
      {{3, 3, -1, 1}, 0, -1, -1}, {{3, 3, 1, -1}, 0, -1, -1},
      {{1, 2, 2, 2}, -1, 2, -1},  {{1, 2, 2, 2}, 0, 3, -1},
      {{1, 2, 2, 2}, 2, 1, -1},   {{1, 2, 2, 2}, 0, -2, -1},
      {{1, 2, 2, 2}, 0, 2, 5},    {{1, 2, 2, 2}, 0, 2, 0},
      {{1, 2, 2, 2}, 0, 2, -6},   {{INT_MAX, INT_MAX, INT_MAX, INT_MAX}, 0, -1, -1},
  };
  for (const Residency residency : kResidencies) {
    TestImage image({1, 2, 4, 4}, {8, 3, 0}, residency);
    const std::vector<std::byte> before = image.Bytes();
    std::byte buffer[64] = {}, untouched[64] = {};
    const auto transfer = [&](__QVImage* of, QVRect rect, int first, int last, std::byte* to,
                              int rowBytes) {
      const int status = QVImageRead2(of, rect, first, last, to, rowBytes, 0);
      EXPECT_EQ(QVImageWrite2(of, rect, first, last, to, rowBytes, 0), status);
      return status;
    };
    for (const auto& c : cases) {
      EXPECT_EQ(transfer(image, c.rect, c.first, c.last, buffer, c.rowBytes), kQVStatusBadArgument)
          << c.rect.x << ' ' << c.rect.y << ", planes " << c.first << " to " << c.last;
    }
    EXPECT_EQ(transfer(image, {1, 2, 1, 1}, 0, -1, nullptr, -1), kQVStatusBadArgument);
    EXPECT_EQ(transfer(nullptr, {1, 2, 1, 1}, 0, -1, buffer, -1), kQVStatusBadArgument);
    EXPECT_EQ(transfer(image, {2, 3, 0, 2}, 0, -1, buffer, -1), kQVStatusSuccess);
    EXPECT_EQ(transfer(image, {2, 3, 2, 0}, 0, -1, buffer, -1), kQVStatusSuccess);
    EXPECT_EQ(std::memcmp(buffer, untouched, sizeof buffer), 0);
    EXPECT_TRUE(image.Bytes() == before);
    EXPECT_EQ(image.Reads() + image.Writes(), 0);
  }
}

}  // namespace
