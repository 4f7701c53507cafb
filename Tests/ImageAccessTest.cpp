// SPDX-License-Identifier: Apache-2.0
#include "Utils/QVImageAccess.h"

#include <gmock/gmock.h>

#include <climits>
#include <cstddef>
#include <optional>
#include <random>

#include "Naive.h"
#include "TestImage.h"

namespace {

using test::Contains;
using test::Form;
using test::kForms;
using test::NearestPixel;
using test::Pixel;
using test::Residency;
using test::TestImage;

constexpr VRect kEmpty = {0, 0, 0, 0};

TEST(VRect, Operations) {
  const VRect a = {-3, -3, 5, 5};
  EXPECT_EQ(a / 2, (VRect{-2, -2, 3, 3}));
  EXPECT_EQ((VRect{-4, 4, -6, 6} / 4), (VRect{-1, 1, -1, 2}));
  EXPECT_EQ((VRect{INT_MIN, 0, INT_MAX, 7} / INT_MAX), (VRect{-2, 0, 1, 1}));
  EXPECT_EQ(a * 3, (VRect{-9, -9, 15, 15}));
  EXPECT_EQ(a.Intersect({0, -9, 9, 2}), (VRect{0, -3, 5, 2}));
  EXPECT_EQ(a.Intersect({7, 8, 9, 9}), (VRect{7, 8, 7, 8}));
  EXPECT_EQ(a.Intersect({-9, -9, -5, -6}), (VRect{-3, -3, -3, -3}));
  EXPECT_EQ(a.Union({0, -9, 9, 2}), (VRect{-3, -9, 9, 5}));
  EXPECT_EQ(a.Union({20, 20, 20, 20}), (VRect{-3, -3, 20, 20}));
  EXPECT_EQ(a.Offset(10, INT64_C(1) << 40), (VRect{INT_MAX, 7, INT_MAX, 15}));
  EXPECT_TRUE((VRect{0, 0, 0, 5}).IsEmpty() && (VRect{0, 5, 5, 0}).IsEmpty() && !a.IsEmpty());
  EXPECT_EQ(MakeVRect({-3, 7, 5, 6}), (VRect{7, -3, 13, 2}));
  EXPECT_EQ(MakeVRect({4, 5, -2, INT_MIN}), (VRect{5, 4, 5, 4}));
  EXPECT_EQ(MakeVRect({INT_MAX, 9, INT_MAX, INT_MAX}), (VRect{9, INT_MAX, INT_MAX, INT_MAX}));
}

// Code that was compiled against the class finds its members here.
static_assert(offsetof(QVImageAccess, image) == 0 && offsetof(QVImageAccess, bounds) == 8 &&
              offsetof(QVImageAccess, packedOnly) == 24 &&
              offsetof(QVImageAccess, rowBytes) == 28 && offsetof(QVImageAccess, colBytes) == 32 &&
              offsetof(QVImageAccess, colorBytes) == 36 && offsetof(QVImageAccess, memory) == 40 &&
              offsetof(QVImageAccess, fillPixel) == 48 && offsetof(QVImageAccess, state) == 56 &&
              offsetof(QVImageAccess, buffer) == 64 && offsetof(QVImageAccess, bufferSize) == 72 &&
              offsetof(QVImageAccess, bufferRect) == 80 && sizeof(QVImageAccess) == 96);

// Rectangles in, across and beyond all edges and corners, also empty ones.
VRect RandomRect(std::mt19937& random, QVRect b) {
  const auto from = [&](int low, int count) {
    return low + static_cast<int>(random() % static_cast<unsigned>(count));
  };
  const int top = from(b.y - 6, b.height + 11), left = from(b.x - 6, b.width + 11);
  return {top, left, top + from(0, 9), left + from(0, 9)};
}

// One column and one row are the nearest on both sides.
void ForEachImage(const std::function<void(TestImage&, std::mt19937&)>& f) {
  std::mt19937 random(7);
  for (const Form form : kForms) {
    for (const Residency residency : {Residency::kMemory, Residency::kCallbacks}) {
      for (const QVRect bounds : {QVRect{0, 0, 7, 5}, QVRect{-9, 4, 1, 6}, QVRect{3, -8, 5, 1}}) {
        SCOPED_TRACE(testing::Message() << form << ' ' << residency << " at " << bounds.x);
        TestImage image(bounds, form, residency);
        f(image, random);
        EXPECT_EQ(image.BadCalls(), 0);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

TEST(ImageAccess, ReadsAnyRectangle) {
  ForEachImage([](TestImage& image, std::mt19937& random) {
    const size_t bytes = image.GetForm().ColBytes();
    Pixel fill;
    fill.fill(std::byte{0x5a});
    for (const bool fills : {false, true}) {
      std::optional<QVImageAccess> access;
      for (int i = 0; i < 200; i++) {
        // A fresh buffer is as large as the rectangle, so that the sanitizer sees a step past it.
        if (i % 2 == 0) access.emplace(image, fills ? fill.data() : nullptr);
        access->packedOnly = i % 3 == 0;
        VRect rect = RandomRect(random, image.Bounds());
        const bool asRow = i % 5 == 0;
        if (asRow) rect.bottom = rect.top + 1;
        const int reads = image.Reads();
        int stride = 0;
        const auto* row = static_cast<const std::byte*>(
            asRow ? access->ReadRow(rect.top, rect.left, rect.right - rect.left)
                  : access->ReadRect(rect, stride));
        ASSERT_NE(row, nullptr);
        bool meets = false, isInside = true;
        for (int y = rect.top; y < rect.bottom; y++, row += stride) {
          for (int x = rect.left; x < rect.right; x++) {
            const bool inside = Contains(image.Bounds(), x, y);
            meets |= inside;
            isInside &= inside;
            const Pixel expected = fills && !inside ? fill : NearestPixel(image, x, y);
            ASSERT_EQ(std::memcmp(row + (x - rect.left) * bytes, expected.data(), bytes), 0)
                << x << ' ' << y << " of " << rect.top << ' ' << rect.left << ' ' << rect.bottom
                << ' ' << rect.right;
          }
        }
        if (rect.IsEmpty()) continue;
        if (fills && !meets) {
          EXPECT_EQ(image.Reads(), reads);
        }
        const bool rowsFit = !access->packedOnly || rect.bottom - rect.top == 1;
        const bool direct = access->memory && isInside && rowsFit;
        if (!asRow) {
          EXPECT_EQ(stride, direct ? image.Stride() : (rect.right - rect.left) * access->colBytes);
        }
      }
    }
  });
}

TEST(ImageAccess, WritesLandInsideOnly) {
  ForEachImage([](TestImage& image, std::mt19937& random) {
    const size_t bytes = image.GetForm().ColBytes();
    std::vector<std::byte> expected = image.Bytes();
    std::optional<QVImageAccess> access;
    for (int i = 0; i < 120; i++) {
      // What the one before had pending lands as it goes.
      if (i % 10 == 0) access.emplace(image, nullptr);
      VRect rect = RandomRect(random, image.Bounds());
      const bool asRow = random() % 2, reads = random() % 2;
      if (asRow) rect.bottom = rect.top + 1;
      const int width = rect.right - rect.left;
      int stride = 0;
      void* rows = asRow   ? reads ? access->ReadWriteRow(rect.top, rect.left, width)
                                   : access->WriteRow(rect.top, rect.left, width)
                     : reads ? access->ReadWriteRect(rect, stride)
                           : access->WriteRect(rect, stride);
      ASSERT_NE(rows, nullptr);
      auto* row = static_cast<std::byte*>(rows);
      for (int y = rect.top; y < rect.bottom; y++, row += stride) {
        for (int x = rect.left; x < rect.right; x++) {
          if (reads && random() % 2) continue;  // stays as it was read
          Pixel pixel;
          for (std::byte& byte : pixel) byte = static_cast<std::byte>(random());
          std::memcpy(row + (x - rect.left) * bytes, pixel.data(), bytes);
          if (Contains(image.Bounds(), x, y)) PutPixel(expected, image, x, y, pixel);
        }
      }
      if (i % 3) continue;
      EXPECT_EQ(access->Flush(), kQVStatusSuccess);
      ASSERT_TRUE(image.Bytes() == expected);
    }
    access.reset();
    EXPECT_TRUE(image.Bytes() == expected);
  });
}

TEST(ImageAccess, FlushesOnce) {
  TestImage image({2, 3, 6, 4}, {8, 4, 1}, Residency::kCallbacks);
  const std::vector<std::byte> before = image.Bytes();
  QVImageAccess access(image, nullptr);
  std::memset(access.WriteRow(4, 2, 6), 1, 24);
  EXPECT_EQ(access.state, QVImageAccess::kWriting);
  EXPECT_TRUE(image.Bytes() == before) << "pending";
  access.ReadRow(3, 2, 1);
  EXPECT_EQ(access.state, QVImageAccess::kReading);
  EXPECT_EQ(image.Writes(), 1);
  EXPECT_EQ(image.At<uint8_t>(7, 4, 3), 1);
  EXPECT_EQ(access.Flush(), kQVStatusSuccess);
  EXPECT_EQ(image.Writes(), 1);
  std::memset(access.WriteRow(900, 2, 6), 2, 24);
  EXPECT_EQ(access.Flush(), kQVStatusSuccess);
  EXPECT_EQ(image.Writes(), 1) << "nothing of it lies inside";
  access.WriteRow(3, 2, 6);
  access.Dispose();
  EXPECT_EQ(image.Writes(), 2);
  access.Dispose();
  EXPECT_EQ(image.Writes(), 2);
}

TEST(ImageAccess, BufferNeverShrinksAndSurvivesWhatCannotBeHad) {
  TestImage image({0, 0, 6, 4}, {8, 4, 1}, Residency::kCallbacks);
  QVImageAccess access(image, nullptr);
  int stride;
  const void* buffer = access.ReadRect({0, 0, 3, 5}, stride);
  EXPECT_EQ(access.bufferSize, 60u);
  for (const VRect smaller : {VRect{1, 1, 2, 2}, kEmpty, VRect{-3, 0, 0, 5}}) {
    EXPECT_EQ(access.ReadRect(smaller, stride), buffer);
    EXPECT_EQ(access.bufferSize, 60u);
  }
  access.WriteRect({0, 0, 4, 5}, stride);
  EXPECT_EQ(access.bufferSize, 80u);
  for (const VRect huge : {VRect{0, 0, 1, INT_MAX}, VRect{0, INT_MIN, 1, INT_MAX},
                           VRect{INT_MIN, 0, INT_MAX, 500000000}}) {
    EXPECT_EQ(access.ReadRect(huge, stride), nullptr);
    EXPECT_EQ(access.WriteRect(huge, stride), nullptr);
    EXPECT_EQ(access.ReadWriteRect(huge, stride), nullptr);
    EXPECT_EQ(access.bufferSize, 0u);
  }
  EXPECT_EQ(access.Flush(), kQVStatusSuccess);
  ASSERT_NE(access.ReadRow(1, 1, 1), nullptr);
  EXPECT_EQ(std::memcmp(access.buffer, image.Address(1, 1), 4), 0);
}

TEST(ImageAccess, RowsStandForEdges) {
  TestImage image({-4, 3, 6, 2}, {16, 1, 0});
  QVImageAccess access(image, nullptr);
  constexpr int kLeft = QVImageAccess::kImageLeft;
  EXPECT_EQ(access.RowToRect(9, 1, 5), (VRect{9, 1, 10, 6}));
  EXPECT_EQ(access.RowToRect(9, kLeft, 5), (VRect{9, -4, 10, 1}));
  EXPECT_EQ(access.RowToRect(-9, -1, -1), (VRect{-9, -1, -8, 2}));
  EXPECT_EQ(access.RowToRect(3, kLeft, INT_MIN), (VRect{3, -4, 4, 2}));
  // A row that the range of int cuts short is not given.
  EXPECT_EQ(access.RowToRect(INT_MAX, INT_MAX, 5), (VRect{INT_MAX, INT_MAX, INT_MAX, INT_MAX}));
  EXPECT_EQ(access.ReadRow(3, INT_MAX - 2, 5), nullptr);
  EXPECT_EQ(access.WriteRow(3, INT_MAX - 2, 5), nullptr);
  EXPECT_EQ(access.ReadRow(INT_MAX, 1, 5), nullptr);
  EXPECT_NE(access.ReadRow(INT_MAX - 1, INT_MAX - 5, 5), nullptr);
  EXPECT_NE(access.ReadRow(3, 6, -5), nullptr);
}

TEST(ImageAccess, ImagesWithoutPixels) {
  int stride;
  QVImageAccess none(nullptr, nullptr), idle;
  for (QVImageAccess* access : {&none, &idle}) {
    EXPECT_EQ(access->ReadRow(0, 0, 5), nullptr);
    EXPECT_EQ(access->WriteRow(0, 0, 5), nullptr);
    EXPECT_EQ(access->ReadWriteRect({0, 0, 2, 2}, stride), nullptr);
    EXPECT_EQ(access->Flush(), kQVStatusSuccess);
  }
  const uint32_t fill = 0x01020304;
  for (const QVRect bounds : {QVRect{5, 5, 0, 3}, QVRect{5, 5, 3, 0}}) {
    for (const Residency residency : {Residency::kMemory, Residency::kCallbacks}) {
      TestImage image(bounds, {8, 4, 1}, residency);
      QVImageAccess access(image, nullptr), filled(image, &fill);
      EXPECT_EQ(access.ReadRect({4, 4, 7, 7}, stride), nullptr);
      EXPECT_NE(access.ReadRect({4, 4, 4, 7}, stride), nullptr);
      ASSERT_NE(access.WriteRow(5, 5, 2), nullptr);
      EXPECT_EQ(access.Flush(), kQVStatusSuccess);
      const auto* pixels = static_cast<const uint32_t*>(filled.ReadRow(5, 5, 2));
      ASSERT_NE(pixels, nullptr);
      EXPECT_TRUE(pixels[0] == fill && pixels[1] == fill);
      EXPECT_EQ(image.Reads() + image.Writes(), 0);
    }
  }
}

TEST(ImageAccess, FailuresAndReferences) {
  int released = 0;
  __QVImage* image;
  ASSERT_EQ(
      QVImageCreateWithCallbacks({0, 0, 4, 4}, 8, 1, 1, 0, &test::kFailing, &released, &image), 0);
  {
    QVImageAccess access(image, nullptr);
    QVImageRelease(image);
    access.packedOnly = true;
    access.WriteRow(0, 0, 4);
    const QVImageAccess copy(access);
    EXPECT_EQ(access.Flush(), 78);
    EXPECT_EQ(access.Flush(), kQVStatusSuccess);
    EXPECT_EQ(access.ReadRow(0, 0, 4), nullptr);
    EXPECT_EQ(access.state, QVImageAccess::kIdle);
    EXPECT_EQ(access.ReadWriteRow(9, 9, 1), nullptr);
    EXPECT_EQ(access.Flush(), kQVStatusSuccess) << "nothing was handed out";
    access.WriteRow(0, 0, 4);  // dropped by Dispose()
    access.Dispose();
    EXPECT_EQ(access.image, nullptr);
    EXPECT_EQ(released, 0) << "the copy has a reference of its own";
    EXPECT_TRUE(copy.image == image && copy.bounds == (VRect{0, 0, 4, 4}) && !copy.buffer &&
                copy.state == QVImageAccess::kIdle);
  }
  EXPECT_EQ(released, 1);
}

}  // namespace
