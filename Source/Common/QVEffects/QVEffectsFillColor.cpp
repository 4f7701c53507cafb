// SPDX-License-Identifier: Apache-2.0
// Fill: one colour for every pixel, transparency included.
#include <QVEffects/QVEffectsBasics.h>

#include "Utils/EffectFrame.h"
#include "Utils/RowCopier.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsFillColor";

// Copies `chunk`, pixels of one colour, into a row again and again.
void FillRow(unsigned char* row, size_t bytes, const void* chunk, size_t chunkBytes,
             qv::RowCopier& copier) {
  for (size_t at = 0; at < bytes; at += chunkBytes) {
    copier.Copy(row + at, chunk, std::min(chunkBytes, bytes - at));
  }
}

template <class T>
int FillColor(__QVImage* image, VRect rect, const float* color) {
  QVImageAccess target(image, nullptr);
  rect = rect.Intersect(target.bounds);
  if (rect.IsEmpty()) return kQVStatusSuccess;

  constexpr int kSamples = qv::kChunkBytes / sizeof(T);
  const int planes = QVImageGetNumPlanes(image);
  T chunk[kSamples];
  for (int c = 0; c < planes; c++) chunk[c] = qv::FromUnit<T>(color[c]);
  for (int i = planes; i < kSamples; i++) chunk[i] = chunk[i - planes];

  const size_t chunkBytes = static_cast<size_t>(kSamples / planes) * target.colBytes;
  const size_t rowBytes = static_cast<size_t>(rect.right - rect.left) * target.colBytes;
  qv::RowCopier copier(target.memory ? rowBytes * (rect.bottom - rect.top) : 0);
  for (int y = rect.top; y < rect.bottom; y++) {
    void* row = qv::Required(target.WriteRow(y, rect.left, rect.right - rect.left), kSource);
    FillRow(static_cast<unsigned char*>(row), rowBytes, chunk, chunkBytes, copier);
  }
  return kQVStatusSuccess;
}

}  // namespace

int QVEffectsFillColor(__QVImage* image, QVRect rect, const float* color) {
  if (!image || !color) return kQVStatusBadArgument;
  if (!qv::IsPacked(image)) return kQVStatusUnsupported;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(image), [&]<class T>() {
      return FillColor<T>(image, MakeVRect(rect), color);
    });
  });
}
