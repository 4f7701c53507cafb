// SPDX-License-Identifier: Apache-2.0
// Plain operations on samples and masks: sums, products, bounds, flattening and scaling.
#include <QVEffects/QVEffectsMask.h>

#include <vector>

#include "Utils/ColorMath.h"
#include "Utils/Masks.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsMixImages";

using qv::Strip;

// ---- Formulas

// Floats are held to 0 to 1, as integers are when they are stored.
template <class T>
float Held(float value) {
  return std::is_floating_point_v<T> ? qv::HeldToUnit(value) : value;
}

// A mask's sample counts if it isn't 0, or the same read upside down.
template <class T>
struct Counts {
  bool isInverted;

  bool operator()(T sample) const {
    return isInverted ? sample < static_cast<T>(qv::Sample<T>::kMax) : sample > T{0};
  }
};

// ---- Rows

template <class T>
void MixRow(const T* a, const T* b, T* out, int64_t samples, float ofA, float ofB,
            qv::RowCopier& copier) {
  Strip as, bs;
  qv::EachStrip(samples, [&](int64_t x, int count) {
    qv::LoadUnscaled<T>(a + x, 1, count, as);
    qv::LoadUnscaled<T>(b + x, 1, count, bs);
    float* __restrict sum = as[0];
    const float* __restrict other = bs[0];
    for (int i = 0; i < count; i++) sum[i] = Held<T>(other[i] * ofB + sum[i] * ofA);
    qv::StoreSamples<T>(copier, out + x, 1, count, as);
  });
}

template <class T>
void MultiplyRow(std::span<void* const> masks, T* out, int pixels, const qv::MaskSense* senses,
                 qv::MaskSense ofResult, qv::RowCopier& copier) {
  Strip mask, product;
  float* __restrict p = product[0];
  const float* __restrict m = mask[0];
  qv::EachStrip(pixels, [&](int64_t x, int count) {
    std::fill_n(p, count, 1.0f);
    for (size_t n = 0; n < masks.size(); n++) {
      if (!masks[n]) continue;
      const T* row = static_cast<const T*>(masks[n]) + x;
      qv::LoadMask(qv::LoadSamples<T>, row, 1, count, senses[n], mask);
      for (int i = 0; i < count; i++) p[i] = p[i] * m[i];
    }
    for (int i = 0; i < count; i++) p[i] = ofResult(p[i]) * qv::Sample<T>::kMax;
    qv::StoreSamples<T>(copier, out + x, 1, count, product);
  });
}

// The first place from `start` on whose sample counts, or `end`. Whole blocks without any are
// passed over at once.
template <class T>
int FirstThat(Counts<T> counts, const T* row, int start, int end) {
  constexpr int kBlock = 64;
  for (; end - start >= kBlock; start += kBlock) {
    bool any = false;
    for (int i = 0; i < kBlock; i++) any |= counts(row[start + i]);
    if (any) break;
  }
  while (start < end && !counts(row[start])) start++;
  return start;
}

template <class T>
void FlattenRow(T* row, int planes, int pixels) {
  constexpr float kMax = qv::Sample<T>::kMax;
  Strip strip;
  qv::EachStrip(pixels, [&](int64_t x, int count) {
    T* at = row + x * planes;
    qv::LoadUnscaled<T>(at, planes, count, strip);
    const float* __restrict alpha = strip[planes - 1];
    for (int c = 0; c < planes - 1; c++) {
      float* __restrict color = strip[c];
      for (int i = 0; i < count; i++) {
        const float a = alpha[i] * qv::Sample<T>::kToUnit;
        color[i] = color[i] * a + (1.0f - a) * kMax;
      }
    }
    qv::StoreSamples<T>(at, planes, count, strip);
  });
}

// ---- Images

template <class T>
void FindBounds(__QVImage* mask, QVRect& result) {
  const VRect bounds = MakeVRect(QVImageGetBounds(mask));
  const Counts<T> counts = {qv::IsInverted(mask)};
  const int width = bounds.right - bounds.left;
  int left = width, right = 0, top = 0, bottom = 0;
  qv::WalkRows(kSource, {qv::ToRead(mask)}, bounds, [&](const qv::WalkedRow& row) {
    const T* samples = row.Of<const T>(0);
    const int first = FirstThat(counts, samples, 0, row.pixels);
    if (first == row.pixels) return;
    if (right == 0) top = row.y;
    bottom = row.y + 1;
    left = std::min(left, first);
    int last = row.pixels;
    while (last > right && !counts(samples[last - 1])) last--;
    right = std::max(right, last);
  });
  if (right == 0) {
    result = QVRectMake(0, 0, 0, 0);
  } else {
    result = QVRectMake(bounds.left + left, top, right - left, bottom - top);
  }
}

template <class T>
void Multiply(std::span<__QVImage* const> masks, __QVImage* dst, VRect rect) {
  std::vector<qv::Walked> walked;
  std::vector<qv::MaskSense> senses;
  for (__QVImage* mask : masks) {
    walked.push_back(qv::ToReadIfThere(mask));
    senses.emplace_back(mask);
  }
  walked.push_back(qv::ToWrite(dst));
  std::vector<QVImageAccess> accesses(walked.size());
  std::vector<void*> addresses(walked.size());
  qv::WalkRows(kSource, walked, accesses.data(), addresses.data(), rect,
               [&](const qv::WalkedRow& row) {
    MultiplyRow<T>({row.starts, masks.size()}, row.Of<T>(masks.size()), row.pixels, senses.data(),
                   qv::MaskSense(dst), row.copier);
  });
}

}  // namespace

int QVEffectsMixImages(__QVImage* a, __QVImage* b, __QVImage* dst, QVRect rect, float weightOfA,
                       float weightOfB) {
  if (!a || !b || !dst) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(dst) * 8, [&]<class T>() -> int {
      if (!qv::HaveSamePixels(a, dst) || !qv::HaveSamePixels(b, dst)) return kQVStatusUnsupported;
      const int planes = QVImageGetNumPlanes(dst);
      qv::WalkRows(kSource, {qv::ToRead(a), qv::ToRead(b), qv::ToWrite(dst)}, MakeVRect(rect),
                   [&](const qv::WalkedRow& row) {
        MixRow(row.Of<const T>(0), row.Of<const T>(1), row.Of<T>(2), int64_t{row.pixels} * planes,
               weightOfA, weightOfB, row.copier);
      });
      return kQVStatusSuccess;
    });
  });
}

int QVEffectsMultiplyMasks(CFArrayRef masks, __QVImage* dst, QVRect rect) {
  if (!masks || !dst) return kQVStatusBadArgument;
  return qv::Guard<qv::Boundary::kWithMemory>(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(dst) * 8, [&]<class T>() -> int {
      if (!qv::IsMaskFor(dst, dst)) return kQVStatusUnsupported;
      std::vector<__QVImage*> images(static_cast<size_t>(CFArrayGetCount(masks)));
      for (size_t i = 0; i < images.size(); i++) {
        const void* value = CFArrayGetValueAtIndex(masks, static_cast<CFIndex>(i));
        images[i] = static_cast<__QVImage*>(const_cast<void*>(value));
        if (!qv::IsMaskFor(dst, images[i])) return kQVStatusUnsupported;
      }
      Multiply<T>(images, dst, MakeVRect(rect));
      return kQVStatusSuccess;
    });
  });
}

int QVEffectsFindMaskBounds(__QVImage* mask, QVRect* result) {
  if (!mask || !result) return kQVStatusBadArgument;
  if (!qv::IsMaskFor(mask, mask)) return kQVStatusUnsupported;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(mask) * 8, [&]<class T>() {
      FindBounds<T>(mask, *result);
      return kQVStatusSuccess;
    });
  });
}

int QVEffectsMakeCompositeImage(__QVImage* image, QVRect rect) {
  if (!image) return kQVStatusBadArgument;
  if (QVImageGetTransparency(image) == 0) return kQVStatusSuccess;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(image) * 8, [&]<class T>() -> int {
      if (!qv::FitsPlanes(image)) return kQVStatusUnsupported;
      const int planes = QVImageGetNumPlanes(image);
      qv::WalkRows(kSource, {qv::ToReadWrite(image)}, MakeVRect(rect),
                   [&](const qv::WalkedRow& row) { FlattenRow(row.Of<T>(0), planes, row.pixels); });
      return kQVStatusSuccess;
    });
  });
}

int QVEffectsMultiplyValues(__QVImage* src, __QVImage* dst, QVRect rect, const float* factors,
                            const float* pivots) {
  if (!factors || !pivots) return kQVStatusBadArgument;
  return qv::MapPixels(
      kSource, src, dst, rect,
      [=]<class T>(const T* __restrict in, T* __restrict out, int pixels, auto layout) {
    for (int i = 0; i < pixels; i++, in += layout.planes, out += layout.planes) {
      for (int c = 0; c < layout.planes; c++) {
        const auto pivot = static_cast<float>(qv::FromUnit<T>(pivots[c]));
        const float value = pivot + (static_cast<float>(in[c]) - pivot) * factors[c];
        out[c] = qv::Rounded<T>(Held<T>(value));
      }
    }
  });
}
