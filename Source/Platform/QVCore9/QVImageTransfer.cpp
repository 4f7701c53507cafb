// SPDX-License-Identifier: Apache-2.0
// Reading and writing rectangles of an image, all planes or some.
#include <cstdint>
#include <cstring>

#include "QVImage.h"

namespace {

// A transfer whose arguments have been tested and resolved.
struct Transfer {
  QVRect rect;
  int firstPlane;
  int lastPlane;
  int rowBytes;  // of the buffer

  int Planes() const { return lastPlane - firstPlane + 1; }
  bool IsEmpty() const { return rect.width == 0 || rect.height == 0; }
};

bool IsInside(QVRect rect, QVRect bounds) {
  return rect.width >= 0 && rect.height >= 0 && rect.x >= bounds.x && rect.y >= bounds.y &&
         int64_t{rect.x} + rect.width <= int64_t{bounds.x} + bounds.width &&
         int64_t{rect.y} + rect.height <= int64_t{bounds.y} + bounds.height;
}

bool Resolve(const __QVImage& image, const void* buffer, Transfer& transfer) {
  if (transfer.lastPlane == -1) transfer.lastPlane = image.planes - 1;
  if (!buffer || !IsInside(transfer.rect, image.bounds) || transfer.firstPlane < 0 ||
      transfer.lastPlane < transfer.firstPlane || transfer.lastPlane >= image.planes) {
    return false;
  }
  const int packed = transfer.rect.width * transfer.Planes() * image.PlaneBytes();
  if (transfer.rowBytes == -1 || transfer.rect.height <= 1) transfer.rowBytes = packed;
  return transfer.rowBytes >= packed;
}

std::byte* AddressOf(const __QVImage& image, const Transfer& transfer) {
  return image.samples + int64_t{transfer.rect.y - image.bounds.y} * image.rowBytes +
         int64_t{transfer.rect.x - image.bounds.x} * image.ColBytes() +
         int64_t{transfer.firstPlane} * image.PlaneBytes();
}

// Copies pixels of `bytes` bytes each; the steps are from pixel to pixel.
void CopyPixels(std::byte* to, int toStep, const std::byte* from, int fromStep, int pixels,
                int bytes) {
  if (toStep == bytes && fromStep == bytes) {
    std::memcpy(to, from, static_cast<size_t>(pixels) * bytes);
    return;
  }
  for (int i = 0; i < pixels; i++, to += toStep, from += fromStep) std::memcpy(to, from, bytes);
}

}  // namespace

int QVImageRead2(__QVImage* image, QVRect rect, int firstPlane, int lastPlane, void* buffer,
                 int rowBytes, int) {
  Transfer transfer = {rect, firstPlane, lastPlane, rowBytes};
  if (!image || !Resolve(*image, buffer, transfer)) return kQVStatusBadArgument;
  if (transfer.IsEmpty()) return kQVStatusSuccess;
  if (!image->samples) {
    return image->callbacks.read(image->context, rect, firstPlane, transfer.lastPlane, buffer,
                                 transfer.rowBytes);
  }
  const int bytes = transfer.Planes() * image->PlaneBytes();
  const std::byte* from = AddressOf(*image, transfer);
  auto* to = static_cast<std::byte*>(buffer);
  for (int row = 0; row < rect.height; row++) {
    CopyPixels(to, bytes, from, image->ColBytes(), rect.width, bytes);
    from += image->rowBytes;
    to += transfer.rowBytes;
  }
  return kQVStatusSuccess;
}

int QVImageWrite2(__QVImage* image, QVRect rect, int firstPlane, int lastPlane, const void* buffer,
                  int rowBytes, int) {
  Transfer transfer = {rect, firstPlane, lastPlane, rowBytes};
  if (!image || !Resolve(*image, buffer, transfer)) return kQVStatusBadArgument;
  if (transfer.IsEmpty()) return kQVStatusSuccess;
  if (!image->samples) {
    return image->callbacks.write(image->context, rect, firstPlane, transfer.lastPlane, buffer,
                                  transfer.rowBytes);
  }
  const int bytes = transfer.Planes() * image->PlaneBytes();
  const auto* from = static_cast<const std::byte*>(buffer);
  std::byte* to = AddressOf(*image, transfer);
  for (int row = 0; row < rect.height; row++) {
    CopyPixels(to, image->ColBytes(), from, bytes, rect.width, bytes);
    from += transfer.rowBytes;
    to += image->rowBytes;
  }
  return kQVStatusSuccess;
}
