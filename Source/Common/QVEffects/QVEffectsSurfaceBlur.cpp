// SPDX-License-Identifier: Apache-2.0
// Surface blur: a pixel compares itself with the bins of a histogram of its surroundings.
#include <QVEffects/QVEffectsBlur.h>
#include <QVEffects/QVEffectsSurfaceBlur.h>

#include "Utils/Outset.h"
#include "Utils/QVEffectsUtils.h"
#include "Utils/ValueBins.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsSurfaceBlur";

// What the threshold is multiplied with to be the distance at which a bin's weight is 0.
constexpr float kSurfaceBlurMagicNumber = 2.5f;

/// Blurs rect, not empty.
template <class Blur, class T>
void BlurRows(__QVImage* src, QVImageAccess& target, VRect rect, int radius, qv::BinMix mix,
              QVPoint offset) {
  Blur blur(src, rect, radius, mix, kSource);
  for (int64_t y = rect.top; y < rect.bottom; y++) {
    // Inside the target, so that nothing is held.
    const int row = VRect::Held(y - offset.y), left = VRect::Held(int64_t{rect.left} - offset.x);
    void* out = target.WriteRow(row, left, rect.right - rect.left);
    blur.Row(y, static_cast<T*>(qv::Required(out, kSource)));
  }
}

template <class T, int kBins>
int BlurImage(__QVImage* src, __QVImage* dst, VRect rect, int radius, qv::BinMix mix,
              QVPoint offset) {
  QVImageAccess target(dst, nullptr);
  // What is written outside would be dropped.
  rect = rect.Intersect(target.bounds.Offset(offset.x, offset.y));
  if (rect.IsEmpty()) return kQVStatusSuccess;
  if (radius > qv::kMostBinRadius) throw std::bad_alloc();
  if constexpr (std::is_floating_point_v<T>) {
    BlurRows<qv::FloatBlur<kBins>, T>(src, target, rect, radius, mix, offset);
  } else if (radius <= qv::LaneBlur<T, kBins, uint32_t>::kMostRadius) {
    BlurRows<qv::LaneBlur<T, kBins, uint32_t>, T>(src, target, rect, radius, mix, offset);
  } else {
    BlurRows<qv::LaneBlur<T, kBins, uint64_t>, T>(src, target, rect, radius, mix, offset);
  }
  return kQVStatusSuccess;
}

/// Surface blur with 2^(8 - N) bins.
template <int N>
int _SurfaceBlurWithOffset(__QVImage* src, __QVImage* dst, QVRect rect, int radius, float threshold,
                           float amount, QVPoint offset) {
  if (!src || !dst) return kQVStatusBadArgument;
  const bool copies = !(amount > 0.0f) || radius < 1 || !(threshold > 0.0f);
  if (copies) return qv::CopyTo(src, dst, rect, offset);
  return qv::Guard<qv::Boundary::kWithMemory>(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(src), [&]<class T>() -> int {
      if (!qv::HaveSamePixels(src, dst)) return kQVStatusUnsupported;
      const float distance = threshold * kSurfaceBlurMagicNumber * qv::Sample<T>::kMax;
      const qv::BinMix mix = {1.0f / distance, 1.0f - amount, amount};
      return BlurImage<T, 1 << (8 - N)>(src, dst, MakeVRect(rect), radius, mix, offset);
    });
  });
}

// Around its rectangle the base image needs as many more pixels as the Gaussian blur reads.
constexpr int kGaussianOutset = 3;

}  // namespace

int QVEffectsSurfaceBlur(__QVImage* src, __QVImage* dst, QVRect rect, int radius, float threshold,
                         float amount) {
  return QVEffectsSurfaceBlurWithOffset(src, dst, rect, radius, threshold, amount, {0, 0});
}

int QVEffectsSurfaceBlurWithOffset(__QVImage* src, __QVImage* dst, QVRect rect, int radius,
                                   float threshold, float amount, QVPoint offset) {
  return _SurfaceBlurWithOffset<5>(src, dst, rect, radius, threshold, amount, offset);
}

int QVEffectsSurfaceBlurLuminosity(__QVImage* src, __QVImage* dst, QVRect rect, int radius,
                                   float threshold, float amount) {
  if (!src || !dst) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown, [&]() -> int {
    // What falls outside the destination isn't worked on.
    const VRect inside = MakeVRect(rect).Intersect(MakeVRect(QVImageGetBounds(dst)));
    rect =
        QVRectMake(inside.left, inside.top, inside.right - inside.left, inside.bottom - inside.top);
    const VRect grown =
        inside.IsEmpty() ? inside : MakeVRect(QVRectOutset(rect, std::max(radius, 0)));
    qv::ImageRef gray;
    qv::Check(CreateGrayScaleImage(src, *gray.Receive(), grown, kGrayAsSource, kGrayLuma),
              {kSource, 433});
    qv::Check(_SurfaceBlurWithOffset<5>(gray, gray, rect, radius, threshold, amount, {0, 0}),
              {kSource, 435});
    qv::Check(ApplyLuminosity(src, dst, gray, inside), {kSource, 437});
    return kQVStatusSuccess;
  });
}

int SufaceBlurredGrayScaleImageGetOutset(float radius) {
  return VRect::Held(int64_t{qv::RoundedOutset(radius)} + kGaussianOutset);
}

int SufaceBlurredGrayScaleImageCreate(__QVImage* src, __QVImage*& out, QVRect rect, float radius,
                                      int planeBytes, float threshold, int grayMode,
                                      int useFourBins) {
  out = nullptr;
  if (!src) return kQVStatusBadArgument;
  return qv::Guard({kSource, 518}, kQVStatusUnknown, [&]() -> int {
    if (planeBytes <= 0) planeBytes = QVImageGetPlaneBytes(src);
    if (threshold < 0.0f) threshold = 0.125f;
    const int whole = qv::RoundedOutset(radius);
    rect.width = std::max(rect.width, 0);
    rect.height = std::max(rect.height, 0);
    const QVRect blurred = QVRectOutset(rect, kGaussianOutset);

    const bool isGray = QVImageGetNumPlanes(src) == 1;
    if (isGray) {
      const int depth = VRect::Held(int64_t{planeBytes} * 8);
      qv::Check(QVImageCreateWithParams2(blurred, depth, 1, kQVColorSpaceGray, 0, 1, &out),
                {kSource, 493});
    } else {
      const VRect read = MakeVRect(QVRectOutset(blurred, whole));
      qv::Check(CreateGrayScaleImage(src, out, read, planeBytes, grayMode), {kSource, 497});
    }
    __QVImage* from = isGray ? src : out;
    if (useFourBins == 1) {
      qv::Check(_SurfaceBlurWithOffset<6>(from, out, blurred, whole, threshold, 1, {0, 0}),
                {kSource, 505});
    } else {
      qv::Check(_SurfaceBlurWithOffset<5>(from, out, blurred, whole, threshold, 1, {0, 0}),
                {kSource, 507});
    }
    qv::Check(QVEffectsGaussianBlur(out, out, rect, 1.0f), {kSource, 512});
    return kQVStatusSuccess;
  });
}
