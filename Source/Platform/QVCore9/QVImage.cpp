// SPDX-License-Identifier: Apache-2.0
// Images: making them, their lifetime and their attributes.
#include "QVImage.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

namespace {

constexpr int kMostPlanes = 64;
constexpr int kAlignment = 64;
constexpr int64_t kIntMax = std::numeric_limits<int>::max();

int64_t RoundUp(int64_t value) { return (value + kAlignment - 1) / kAlignment * kAlignment; }

bool IsExtent(int start, int size) { return size >= 0 && int64_t{start} + size <= kIntMax; }

// Whether an image can have these attributes and, if so, a handle for it without samples yet.
int MakeHandle(QVRect bounds, int depth, int planes, int colorSpace, int transparency,
               int dataSource, __QVImage** result) {
  if (!result) return kQVStatusBadArgument;
  *result = nullptr;
  if (depth != 8 && depth != 16 && depth != 32) return kQVStatusUnsupported;
  if (transparency < 0 || transparency > 1) return kQVStatusUnsupported;
  if (planes <= transparency || planes > kMostPlanes) return kQVStatusUnsupported;
  if (!IsExtent(bounds.x, bounds.width) || !IsExtent(bounds.y, bounds.height)) {
    return kQVStatusBadArgument;
  }
  const int64_t packedRow = int64_t{bounds.width} * planes * (depth / 8);
  if (RoundUp(packedRow) > kIntMax) return kQVStatusBadArgument;

  auto* image = new (std::nothrow) __QVImage;
  if (!image) return kQVStatusOutOfMemory;
  image->bounds = bounds;
  image->depth = depth;
  image->planes = planes;
  image->colorSpace = colorSpace;
  image->transparency = transparency;
  image->dataSource = dataSource;
  image->rowBytes = static_cast<int>(packedRow);
  *result = image;
  return kQVStatusSuccess;
}

// Sets every sample of `row` to a value held to the range of T.
template <class T>
void FillRow(void* row, size_t samples, int value) {
  T held;
  if constexpr (std::is_integral_v<T>) {
    held = static_cast<T>(std::clamp<int>(value, 0, std::numeric_limits<T>::max()));
  } else {
    held = static_cast<T>(value);
  }
  std::fill_n(static_cast<T*>(row), samples, held);
}

void FillRow(const __QVImage& image, void* row, int value) {
  const size_t samples = static_cast<size_t>(image.bounds.width) * image.planes;
  switch (image.depth) {
    case 8: return FillRow<uint8_t>(row, samples, value);
    case 16: return FillRow<uint16_t>(row, samples, value);
    default: return FillRow<float>(row, samples, value);
  }
}

}  // namespace

int QVImageCreateWithParams2(QVRect bounds, int depth, int planes, int colorSpace, int transparency,
                             int dataSource, __QVImage** result) {
  const int status =
      MakeHandle(bounds, depth, planes, colorSpace, transparency, dataSource, result);
  if (status != kQVStatusSuccess) return status;

  __QVImage* image = *result;
  image->rowBytes = static_cast<int>(RoundUp(image->rowBytes));
  const size_t size = static_cast<size_t>(image->rowBytes) * bounds.height;
  image->owned =
      static_cast<std::byte*>(std::aligned_alloc(kAlignment, std::max<size_t>(size, kAlignment)));
  image->samples = image->owned;
  if (!image->owned) {
    QVImageRelease(image);
    *result = nullptr;
    return kQVStatusOutOfMemory;
  }
  return kQVStatusSuccess;
}

int QVImageCreateWithBuffer(QVRect bounds, int depth, int planes, int colorSpace, int transparency,
                            void* samples, int rowBytes, __QVImage** result) {
  const int status = MakeHandle(bounds, depth, planes, colorSpace, transparency, 0, result);
  if (status != kQVStatusSuccess) return status;

  __QVImage* image = *result;
  const bool aligned = reinterpret_cast<uintptr_t>(samples) % image->PlaneBytes() == 0 &&
                       rowBytes % image->PlaneBytes() == 0;
  if (!samples || !aligned || rowBytes < image->rowBytes) {
    QVImageRelease(image);
    *result = nullptr;
    return kQVStatusBadArgument;
  }
  image->samples = static_cast<std::byte*>(samples);
  image->rowBytes = rowBytes;
  return kQVStatusSuccess;
}

int QVImageCreateWithCallbacks(QVRect bounds, int depth, int planes, int colorSpace,
                               int transparency, const QVImageCallbacks* callbacks, void* context,
                               __QVImage** result) {
  if (result) *result = nullptr;
  if (!callbacks || !callbacks->read || !callbacks->write) return kQVStatusBadArgument;
  const int status = MakeHandle(bounds, depth, planes, colorSpace, transparency, 0, result);
  if (status != kQVStatusSuccess) return status;
  (*result)->callbacks = *callbacks;
  (*result)->context = context;
  return kQVStatusSuccess;
}

int QVImageCreateCopy(__QVImage* source, __QVImage** result) {
  if (result) *result = nullptr;
  if (!source) return kQVStatusBadArgument;
  int status =
      QVImageCreateWithParams2(source->bounds, source->depth, source->planes, source->colorSpace,
                               source->transparency, source->dataSource, result);
  if (status != kQVStatusSuccess) return status;
  __QVImage* copy = *result;
  copy->type = source->type;
  status = QVImageRead2(source, source->bounds, 0, -1, copy->samples, copy->rowBytes, 0);
  if (status != kQVStatusSuccess) {
    QVImageRelease(copy);
    *result = nullptr;
  }
  return status;
}

void QVImageRetain(__QVImage* image) {
  if (image) image->references.fetch_add(1, std::memory_order_relaxed);
}

void QVImageRelease(__QVImage* image) {
  if (!image || image->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  if (image->callbacks.release) image->callbacks.release(image->context);
  std::free(image->owned);
  delete image;
}

void QVImageFill(__QVImage* image, int value) {
  if (!image || image->bounds.width == 0) return;
  const QVRect bounds = image->bounds;
  if (image->samples) {
    for (int row = 0; row < bounds.height; row++) {
      FillRow(*image, image->samples + int64_t{row} * image->rowBytes, value);
    }
    return;
  }
  const auto row = std::unique_ptr<std::byte[]>(new (std::nothrow) std::byte[image->rowBytes]);
  if (!row) return;
  FillRow(*image, row.get(), value);
  for (int y = bounds.y; y < bounds.y + bounds.height; y++) {
    QVImageWrite2(image, {bounds.x, y, bounds.width, 1}, 0, -1, row.get(), -1, 0);
  }
}

void* QVImageLockBuffer(__QVImage* image) { return image ? image->samples : nullptr; }

// Samples never move, so a lock has nothing to hold.
void QVImageUnlockBuffer(__QVImage*) {}

QVRect QVImageGetBounds(__QVImage* image) { return image ? image->bounds : QVRect{0, 0, 0, 0}; }
int QVImageGetWidth(__QVImage* image) { return image ? image->bounds.width : 0; }
int QVImageGetHeight(__QVImage* image) { return image ? image->bounds.height : 0; }
int QVImageGetDepth(__QVImage* image) { return image ? image->depth : 0; }
int QVImageGetNumPlanes(__QVImage* image) { return image ? image->planes : 0; }
int QVImageGetTransparency(__QVImage* image) { return image ? image->transparency : 0; }
int QVImageGetPlaneBytes(__QVImage* image) { return image ? image->PlaneBytes() : 0; }
int QVImageGetColBytes(__QVImage* image) { return image ? image->ColBytes() : 0; }
int QVImageGetRowBytes(__QVImage* image) { return image ? image->rowBytes : 0; }
int QVImageGetColorSpaceType(__QVImage* image) { return image ? image->colorSpace : 0; }
int QVImageGetType(__QVImage* image) { return image ? image->type : 0; }
int QVImageGetDataSourceType(__QVImage* image) { return image ? image->dataSource : 0; }

void QVImageSetType(__QVImage* image, int type) {
  if (image) image->type = type;
}

static const void* RetainImage(CFAllocatorRef, const void* image) {
  QVImageRetain(static_cast<__QVImage*>(const_cast<void*>(image)));
  return image;
}

static void ReleaseImage(CFAllocatorRef, const void* image) {
  QVImageRelease(static_cast<__QVImage*>(const_cast<void*>(image)));
}

const CFArrayCallBacks* QVUtilsGetArrayCallbacks() {
  static constexpr CFArrayCallBacks kCallbacks = {0, RetainImage, ReleaseImage};
  return &kCallbacks;
}
