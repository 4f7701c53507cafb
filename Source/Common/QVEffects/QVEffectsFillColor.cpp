// SPDX-License-Identifier: Apache-2.0
// Fill: one colour for every pixel, transparency included.
#include <QVEffects/QVEffectsBasics.h>

#include <vector>

#include "Utils/EffectFrame.h"
#include "Utils/RowStore.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsFillColor";

// A row of pixels of one colour.
template <class T>
std::vector<T> MakeRow(const float* color, int planes, int pixels) {
  std::vector<T> row(static_cast<size_t>(planes) * pixels);
  for (size_t i = 0; i < row.size(); i++) row[i] = qv::FromUnit<T>(color[i % planes]);
  return row;
}

template <class T>
int FillColor(__QVImage* image, VRect rect, const float* color) {
  QVImageAccess target(image, nullptr);
  rect = rect.Intersect(target.bounds);
  if (rect.IsEmpty()) return kQVStatusSuccess;
  const int width = rect.right - rect.left;
  const std::vector<T> row = MakeRow<T>(color, QVImageGetNumPlanes(image), width);
  const size_t bytes = row.size() * sizeof(T);
  qv::RowStore store(target.memory ? bytes * (rect.bottom - rect.top) : 0);
  for (int y = rect.top; y < rect.bottom; y++) {
    store.Put(qv::Required(target.WriteRow(y, rect.left, width), kSource), row.data(), bytes);
  }
  return kQVStatusSuccess;
}

}  // namespace

int QVEffectsFillColor(__QVImage* image, QVRect rect, const float* color) {
  if (!image || !color) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(image), [&]<class T>() {
      return FillColor<T>(image, MakeVRect(rect), color);
    });
  });
}
