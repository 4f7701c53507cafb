// SPDX-License-Identifier: Apache-2.0
// Images for tests: odd strides, guarded padding, in memory or behind callbacks.
#pragma once

#include <QVCore9/QVImageHost.h>

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

namespace test {

/// Depth, planes and transparency of an image.
struct Form {
  int depth;
  int planes;
  int transparency;

  int ColorSpace() const {
    return planes - transparency == 3 ? kQVColorSpaceRGB : kQVColorSpaceGray;
  }
  int PlaneBytes() const { return depth / 8; }
  int ColBytes() const { return planes * PlaneBytes(); }
  bool operator==(const Form&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Form& form);

/// Three depths, gray and RGB, without and with transparency.
inline constexpr Form kForms[] = {
    {8, 1, 0},  {8, 2, 1},  {8, 3, 0},  {8, 4, 1},  {16, 1, 0}, {16, 2, 1},
    {16, 3, 0}, {16, 4, 1}, {32, 1, 0}, {32, 2, 1}, {32, 3, 0}, {32, 4, 1},
};

enum class Residency { kMemory, kCallbacks };
std::ostream& operator<<(std::ostream& out, Residency residency);

/// Transfers fail with statuses of their own; the context, if any, counts releases.
inline constexpr QVImageCallbacks kFailing = {
    [](void*, QVRect, int, int, void*, int) { return 77; },
    [](void*, QVRect, int, int, const void*, int) { return 78; },
    [](void* context) {
  if (context) ++*static_cast<int*>(context);
},
};

/// An image over bytes that the test holds. The stride is larger than a row and no multiple of a
/// pixel; padding and samples start as random bits, samples spread over the range with many at its
/// ends (floats also beyond it).
class TestImage {
 public:
  TestImage(QVRect bounds, Form form, Residency residency = Residency::kMemory, unsigned seed = 1);
  TestImage(const TestImage&) = delete;
  TestImage& operator=(const TestImage&) = delete;
  ~TestImage();

  operator __QVImage*() const { return mImage; }
  QVRect Bounds() const { return mBounds; }
  Form GetForm() const { return mForm; }
  int Stride() const { return mStride; }

  /// The sample of a plane at a place inside the bounds.
  template <class T>
  T& At(int x, int y, int plane) {
    return *reinterpret_cast<T*>(Address(x, y) + plane * sizeof(T));
  }
  /// The same on a scale from 0 to 1, whatever the depth.
  double Value(int x, int y, int plane) const;

  std::byte* Address(int x, int y) const;

  /// All bytes, padding too.
  std::vector<std::byte>& Bytes() { return mBytes; }
  const std::vector<std::byte>& Bytes() const { return mBytes; }

  void Randomize(unsigned seed);

  /// Calls of the read and write callbacks so far.
  int Reads() const { return mReads; }
  int Writes() const { return mWrites; }

  /// Images behind callbacks that haven't been destroyed, over all tests.
  static int Living();

  /// How callbacks were called at fault (planes or stride unresolved, empty or outside rectangle).
  int BadCalls() const { return mBadCalls; }

 private:
  static int Read(void* context, QVRect rect, int first, int last, void* buffer, int rowBytes);
  static int Write(void* context, QVRect rect, int first, int last, const void* buffer,
                   int rowBytes);
  static void Release(void* context);
  void Note(QVRect rect, int first, int last, int rowBytes);

  QVRect mBounds;
  Form mForm;
  int mStride;
  std::vector<std::byte> mBytes;
  __QVImage* mImage = nullptr;
  int mReads = 0, mWrites = 0, mBadCalls = 0;
};

}  // namespace test
