// SPDX-License-Identifier: Apache-2.0
#include "QVImageAccess.h"

#include <cstring>
#include <limits>
#include <new>

namespace {

QVRect MakeQVRect(const VRect& rect) {
  return {rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top};
}

int64_t Width(const VRect& rect) { return int64_t{rect.right} - rect.left; }
int64_t Height(const VRect& rect) { return int64_t{rect.bottom} - rect.top; }

}  // namespace

QVImageAccess::QVImageAccess() { Init(); }

QVImageAccess::QVImageAccess(__QVImage* anImage, const void* aFillPixel) {
  Init();
  SetImage(anImage, aFillPixel);
}

QVImageAccess::QVImageAccess(const QVImageAccess& other) {
  Init();
  SetImage(other.image, other.fillPixel);
}

QVImageAccess::~QVImageAccess() { Dispose(); }

void QVImageAccess::Init() {
  image = nullptr;
  bounds = {};
  packedOnly = false;
  rowBytes = colBytes = colorBytes = 0;
  memory = nullptr;
  fillPixel = nullptr;
  state = kIdle;
  buffer = nullptr;
  bufferSize = 0;
  bufferRect = {};
}

void QVImageAccess::SetImage(__QVImage* anImage, const void* aFillPixel) {
  image = anImage;
  fillPixel = aFillPixel;
  if (!image) return;
  QVImageRetain(image);
  bounds = MakeVRect(QVImageGetBounds(image));
  rowBytes = QVImageGetRowBytes(image);
  colBytes = QVImageGetColBytes(image);
  colorBytes =
      (QVImageGetNumPlanes(image) - QVImageGetTransparency(image)) * QVImageGetPlaneBytes(image);
  memory = QVImageLockBuffer(image);
}

void QVImageAccess::Dispose() {
  FlushBuffer();
  delete[] buffer;
  if (memory) QVImageUnlockBuffer(image);
  if (image) QVImageRelease(image);
  Init();
}

void* QVImageAccess::GetAddressInMemory(const VRect& rect, int& stride) const {
  if (!memory || bounds.Intersect(rect) != rect) return nullptr;
  if (packedOnly && Height(rect) > 1) return nullptr;
  stride = rowBytes;
  if (rect.IsEmpty()) return memory;
  return static_cast<unsigned char*>(memory) + (int64_t{rect.top} - bounds.top) * rowBytes +
         (int64_t{rect.left} - bounds.left) * colBytes;
}

// An inverted rectangle has no pixels. A row too long for an int stride can't be had.
void* QVImageAccess::AllocBuffer(const VRect& rect, int& stride) {
  const int64_t rowSize = std::max<int64_t>(Width(rect), 0) * colBytes;
  const uint64_t needed =
      static_cast<uint64_t>(rowSize) * static_cast<uint64_t>(std::max<int64_t>(Height(rect), 0));
  bufferRect = rect;
  const bool tooLong = rowSize > std::numeric_limits<int>::max();
  stride = tooLong ? 0 : static_cast<int>(rowSize);
  if (tooLong || !buffer || needed > bufferSize) {
    delete[] buffer;
    buffer = tooLong ? nullptr : new (std::nothrow) unsigned char[needed];
    bufferSize = buffer ? needed : 0;
  }
  return buffer;
}

VRect QVImageAccess::RowToRect(int row, int left, int width) const {
  const int start = left == kImageLeft ? bounds.left : left;
  return {row, start, VRect::Held(int64_t{row} + 1),
          width < 0 ? bounds.right : VRect::Held(int64_t{start} + width)};
}

// Whether the rectangle of a row is all of it. What is pending is written out in any case.
bool QVImageAccess::IsRow(const VRect& rect, int width) {
  FlushBuffer();
  return Height(rect) == 1 && (width < 0 || Width(rect) == width);
}

const void* QVImageAccess::ReadRect(const VRect& rect, int& stride) {
  FlushBuffer();
  if (void* address = GetAddressInMemory(rect, stride)) {
    bufferRect = rect;
    state = kReading;
    return address;
  }
  if (!image) return buffer;
  state = kIdle;
  if (!AllocBuffer(rect, stride)) return nullptr;

  const VRect inside = bounds.Intersect(rect);
  if (!rect.IsEmpty()) {
    if (fillPixel && inside != rect) FillBuffer(rect);
    if (!fillPixel || !inside.IsEmpty()) {
      VRect place;
      if (!ReadNearest(rect, inside, stride, place)) return nullptr;
      if (!fillPixel) {
        ExtendSideways(rect, place, stride);
        ExtendUpAndDown(rect, place, stride);
      }
    }
  }
  state = kReading;
  return buffer;
}

void QVImageAccess::FillBuffer(const VRect& rect) {
  const int64_t pixels = Width(rect) * Height(rect);
  for (int64_t i = 0; i < pixels; i++) std::memcpy(buffer + i * colBytes, fillPixel, colBytes);
}

// Reads the part inside the image, or the row, column or pixel nearest to a rectangle that lies
// wholly outside, to its place in the buffer. An image without pixels has none to give.
bool QVImageAccess::ReadNearest(const VRect& rect, const VRect& inside, int stride, VRect& place) {
  if (bounds.IsEmpty()) return false;
  VRect read = inside;
  place = inside;
  if (rect.top >= bounds.bottom) {
    read.top = bounds.bottom - 1;
    read.bottom = bounds.bottom;
    place.top = rect.top;
    place.bottom = rect.top + 1;
  }
  if (rect.left >= bounds.right) {
    read.left = bounds.right - 1;
    read.right = bounds.right;
    place.left = rect.left;
    place.right = rect.left + 1;
  }
  if (rect.bottom <= bounds.top) {
    read.top = bounds.top;
    read.bottom = bounds.top + 1;
    place.top = rect.bottom - 1;
    place.bottom = rect.bottom;
  }
  if (rect.right <= bounds.left) {
    read.left = bounds.left;
    read.right = bounds.left + 1;
    place.left = rect.right - 1;
    place.right = rect.right;
  }
  unsigned char* to = buffer + (int64_t{place.top} - rect.top) * stride +
                      (int64_t{place.left} - rect.left) * colBytes;
  return QVImageRead2(image, MakeQVRect(read), 0, -1, to, stride, 0) == kQVStatusSuccess;
}

// The source may be the target: it keeps its colour and loses its transparency.
void QVImageAccess::TakeColor(unsigned char* to, const unsigned char* from) const {
  std::memmove(to, from, colorBytes);
  std::memset(to + colorBytes, 0, colBytes - colorBytes);
}

void QVImageAccess::ExtendSideways(const VRect& rect, const VRect& place, int stride) {
  if (rect.left >= bounds.left && rect.right <= bounds.right) return;
  const int64_t leftEnd = int64_t{std::min(bounds.left, rect.right)} - rect.left;
  const int64_t rightStart = int64_t{std::max(rect.left, bounds.right)} - rect.left;
  const int64_t first = int64_t{place.left} - rect.left;
  const int64_t last = int64_t{place.right} - 1 - rect.left;
  for (int row = place.top; row < place.bottom; row++) {
    unsigned char* pixels = buffer + (int64_t{row} - rect.top) * stride;
    for (int64_t x = 0; x < leftEnd; x++)
      TakeColor(pixels + x * colBytes, pixels + first * colBytes);
    for (int64_t x = rightStart; x < Width(rect); x++) {
      TakeColor(pixels + x * colBytes, pixels + last * colBytes);
    }
  }
}

void QVImageAccess::ExtendUpAndDown(const VRect& rect, const VRect& place, int stride) {
  const auto rowAt = [&](int row) { return buffer + (int64_t{row} - rect.top) * stride; };
  const auto takeColors = [&](unsigned char* to, const unsigned char* from) {
    for (int64_t x = 0; x < Width(rect); x++) TakeColor(to + x * colBytes, from + x * colBytes);
  };
  if (rect.top < bounds.top) {
    takeColors(buffer, rowAt(place.top));
    const int end = std::min(bounds.top, rect.bottom);
    for (int row = rect.top + 1; row < end; row++) std::memcpy(rowAt(row), buffer, stride);
  }
  if (bounds.bottom < rect.bottom) {
    unsigned char* last = rowAt(rect.bottom - 1);
    takeColors(last, rowAt(place.bottom - 1));
    const int start = std::max(rect.top, bounds.bottom);
    for (int row = rect.bottom - 2; row >= start; row--) std::memcpy(rowAt(row), last, stride);
  }
}

void* QVImageAccess::WriteRect(const VRect& rect, int& stride) {
  FlushBuffer();
  if (!image) return nullptr;
  void* address = GetAddressInMemory(rect, stride);
  if (address) {
    bufferRect = rect;
  } else {
    address = AllocBuffer(rect, stride);
  }
  if (address) state = kWriting;
  return address;
}

void* QVImageAccess::ReadWriteRect(const VRect& rect, int& stride) {
  const void* address = ReadRect(rect, stride);
  if (address) state = kWriting;
  return const_cast<void*>(address);
}

const void* QVImageAccess::ReadRow(int row, int left, int width) {
  int stride;
  const VRect rect = RowToRect(row, left, width);
  return IsRow(rect, width) ? ReadRect(rect, stride) : nullptr;
}

void* QVImageAccess::WriteRow(int row, int left, int width) {
  int stride;
  const VRect rect = RowToRect(row, left, width);
  return IsRow(rect, width) ? WriteRect(rect, stride) : nullptr;
}

void* QVImageAccess::ReadWriteRow(int row, int left, int width) {
  int stride;
  const VRect rect = RowToRect(row, left, width);
  return IsRow(rect, width) ? ReadWriteRect(rect, stride) : nullptr;
}

int QVImageAccess::FlushBuffer() {
  if (state != kWriting) return kQVStatusSuccess;
  state = kReading;
  const VRect part = bounds.Intersect(bufferRect);
  int inMemory;
  if (part.IsEmpty() || GetAddressInMemory(bufferRect, inMemory)) return kQVStatusSuccess;

  const int64_t stride = Width(bufferRect) * colBytes;
  const unsigned char* from = buffer + (int64_t{part.top} - bufferRect.top) * stride +
                              (int64_t{part.left} - bufferRect.left) * colBytes;
  const bool packed = Width(part) == Width(bufferRect);
  return QVImageWrite2(image, MakeQVRect(part), 0, -1, from, packed ? -1 : static_cast<int>(stride),
                       0);
}
