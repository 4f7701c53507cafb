// SPDX-License-Identifier: Apache-2.0
#include "TestImage.h"

#include <cstring>
#include <random>
#include <stdexcept>

namespace test {

static int sLiving = 0;

int TestImage::Living() { return sLiving; }
void TestImage::Release(void*) { sLiving--; }

std::ostream& operator<<(std::ostream& out, const Form& form) {
  return out << form.depth << " bits, " << form.planes << " planes, transparency "
             << form.transparency;
}

std::ostream& operator<<(std::ostream& out, Residency residency) {
  return out << (residency == Residency::kMemory ? "in memory" : "behind callbacks");
}

TestImage::TestImage(QVRect bounds, Form form, Residency residency, unsigned seed)
    : mBounds(bounds),
      mForm(form),
      mStride((bounds.width * form.planes + 7) * form.PlaneBytes()),
      mBytes(static_cast<size_t>(mStride) * bounds.height + 64) {
  Randomize(seed);
  int status;
  if (residency == Residency::kMemory) {
    status = QVImageCreateWithBuffer(bounds, form.depth, form.planes, form.ColorSpace(),
                                     form.transparency, mBytes.data(), mStride, &mImage);
  } else {
    const QVImageCallbacks callbacks = {Read, Write, Release};
    status = QVImageCreateWithCallbacks(bounds, form.depth, form.planes, form.ColorSpace(),
                                        form.transparency, &callbacks, this, &mImage);
    sLiving++;
  }
  if (status != kQVStatusSuccess) throw std::runtime_error("the test image can't be made");
}

TestImage::~TestImage() { QVImageRelease(mImage); }

std::byte* TestImage::Address(int x, int y) const {
  return const_cast<std::byte*>(mBytes.data()) + int64_t{y - mBounds.y} * mStride +
         int64_t{x - mBounds.x} * mForm.ColBytes();
}

double TestImage::Value(int x, int y, int plane) const {
  const std::byte* sample = Address(x, y) + plane * mForm.PlaneBytes();
  switch (mForm.depth) {
    case 8: return *reinterpret_cast<const uint8_t*>(sample) / 255.0;
    case 16: return *reinterpret_cast<const uint16_t*>(sample) / 65535.0;
    default: return *reinterpret_cast<const float*>(sample);
  }
}

void TestImage::Randomize(unsigned seed) {
  std::mt19937 random(seed);
  for (std::byte& byte : mBytes) byte = static_cast<std::byte>(random());
  // One sample in four lies at an end of the range.
  for (int y = 0; y < mBounds.height; y++) {
    std::byte* sample = mBytes.data() + int64_t{y} * mStride;
    for (int i = 0; i < mBounds.width * mForm.planes; i++, sample += mForm.PlaneBytes()) {
      const unsigned draw = random();
      const bool atEnd = draw % 4 == 0;
      if (mForm.depth == 32) {
        constexpr float kEnds[] = {0.0f, 1.0f, -0.25f, 1.5f};
        const float value =
            atEnd ? kEnds[draw / 4 % 4] : static_cast<float>(random()) / 4294967296.0f;
        std::memcpy(sample, &value, sizeof value);
      } else if (atEnd) {
        std::memset(sample, draw / 4 % 2 ? 0xff : 0, mForm.PlaneBytes());
      }
    }
  }
}

void TestImage::Note(QVRect rect, int first, int last, int rowBytes) {
  const bool inside = rect.x >= mBounds.x && rect.y >= mBounds.y &&
                      rect.x + rect.width <= mBounds.x + mBounds.width &&
                      rect.y + rect.height <= mBounds.y + mBounds.height;
  const bool good = inside && rect.width > 0 && rect.height > 0 && first >= 0 && last >= first &&
                    last < mForm.planes &&
                    rowBytes >= rect.width * (last - first + 1) * mForm.PlaneBytes();
  if (!good) mBadCalls++;
}

int TestImage::Read(void* context, QVRect rect, int first, int last, void* buffer, int rowBytes) {
  auto& self = *static_cast<TestImage*>(context);
  self.mReads++;
  self.Note(rect, first, last, rowBytes);
  const size_t bytes = static_cast<size_t>(last - first + 1) * self.mForm.PlaneBytes();
  for (int y = 0; y < rect.height; y++) {
    for (int x = 0; x < rect.width; x++) {
      std::memcpy(static_cast<std::byte*>(buffer) + int64_t{y} * rowBytes + x * bytes,
                  self.Address(rect.x + x, rect.y + y) + first * self.mForm.PlaneBytes(), bytes);
    }
  }
  return kQVStatusSuccess;
}

int TestImage::Write(void* context, QVRect rect, int first, int last, const void* buffer,
                     int rowBytes) {
  auto& self = *static_cast<TestImage*>(context);
  self.mWrites++;
  self.Note(rect, first, last, rowBytes);
  const size_t bytes = static_cast<size_t>(last - first + 1) * self.mForm.PlaneBytes();
  for (int y = 0; y < rect.height; y++) {
    for (int x = 0; x < rect.width; x++) {
      std::memcpy(self.Address(rect.x + x, rect.y + y) + first * self.mForm.PlaneBytes(),
                  static_cast<const std::byte*>(buffer) + int64_t{y} * rowBytes + x * bytes, bytes);
    }
  }
  return kQVStatusSuccess;
}

}  // namespace test
