// SPDX-License-Identifier: Apache-2.0
// Fill: one colour for every pixel, transparency included.
#include <QVEffects/QVEffectsBasics.h>

#include "Utils/EffectFrame.h"
#include "Utils/RowCopier.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsFillColor";

// Copies `strip`, pixels of one colour, into a row again and again.
void FillRow(unsigned char* row, size_t bytes, const void* strip, size_t stripBytes,
             qv::RowCopier& copier) {
  for (size_t at = 0; at < bytes; at += stripBytes) {
    copier.Copy(row + at, strip, std::min(stripBytes, bytes - at));
  }
}

template <class T>
int FillColor(__QVImage* image, VRect rect, const float* color) {
  QVImageAccess target(image, nullptr);
  rect = rect.Intersect(target.bounds);
  if (rect.IsEmpty()) return kQVStatusSuccess;

  constexpr int kSamples = qv::kStripBytes / sizeof(T);
  const int planes = QVImageGetNumPlanes(image);
  T strip[kSamples];
  for (int c = 0; c < planes; c++) strip[c] = qv::FromUnit<T>(color[c]);
  for (int i = planes; i < kSamples; i++) strip[i] = strip[i - planes];

  const size_t stripBytes = static_cast<size_t>(kSamples / planes) * target.colBytes;
  const size_t rowBytes = static_cast<size_t>(rect.right - rect.left) * target.colBytes;
  qv::RowCopier copier(target.memory ? rowBytes * (rect.bottom - rect.top) : 0);
  for (int y = rect.top; y < rect.bottom; y++) {
    void* row = qv::Required(target.WriteRow(y, rect.left, rect.right - rect.left), kSource);
    FillRow(static_cast<unsigned char*>(row), rowBytes, strip, stripBytes, copier);
  }
  return kQVStatusSuccess;
}

}  // namespace

int QVEffectsFillColor(__QVImage* image, QVRect rect, const float* color) {
  if (!image || !color) return kQVStatusBadArgument;
  if (!qv::FitsStrip(image)) return kQVStatusUnsupported;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(image), [&]<class T>() {
      return FillColor<T>(image, MakeVRect(rect), color);
    });
  });
}
