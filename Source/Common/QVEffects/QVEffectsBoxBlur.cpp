// SPDX-License-Identifier: Apache-2.0
// Box blur: the mean of a rectangle around each pixel. And the fast Gaussian blur, three box blurs
// one after the other.
#include <QVEffects/QVEffectsBlur.h>

#include "Utils/BlurMix.h"
#include "Utils/BoxFilter.h"
#include "Utils/GaussianKernel.h"
#include "Utils/QVEffectsUtils.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsBoxBlur";
constexpr qv::Where kMissingRow = {kSource, 107};

// Larger boxes aren't summed: the sums of integers of 16 bits fit 63 bits, and those of floats,
// which can't be had by multiplying, are done some day.
constexpr int64_t kMostPixels = int64_t{1} << 46;
constexpr int64_t kMostRows = int64_t{1} << 20;
// The same for integers of 32 bits, whose sums then fit 64 bits.
constexpr int64_t kMostPixelsOfIntegers = int64_t{1} << 32;

// ---- From sums to samples

// A sum as a float. Those of integers lie below the highest bit of their type, which is unsigned
// so that samples beyond a row may be summed whatever they are.
template <class Acc>
float ToFloat(Acc sum) {
  return static_cast<float>(static_cast<std::make_signed_t<Acc>>(sum));
}

// Whether sums stay below 2^31: they become floats in whole vectors.
template <class T>
bool FitsInt(int64_t count) {
  return count <= 0x7fffffff / static_cast<int64_t>(qv::Sample<T>::kMax);
}

// The mean, whatever base is.
template <class T, class Acc>
qv::BoxMix<T, Acc> Mean(int64_t count) {
  const float scale = 1.0f / static_cast<float>(count);
  return [=](const T*, const Acc* __restrict sums, T* __restrict out, int64_t samples) {
    for (int64_t i = 0; i < samples; i++) {
      if constexpr (std::is_floating_point_v<T>) {
        out[i] = static_cast<float>(static_cast<double>(scale) * sums[i]);
      } else {
        out[i] = qv::Rounded<T>(ToFloat(sums[i]) * scale);
      }
    }
  };
}

// The mean in proportion, the rest from base.
template <class T, class Acc>
qv::BoxMix<T, Acc> NormalMix(int64_t count, float amount) {
  // No part of an integer is 0; of a float it may be NaN.
  if (amount == 1.0f && std::is_integral_v<T>) return Mean<T, Acc>(count);
  const float scale = (1.0f / static_cast<float>(count)) * amount;
  const float keep = 1.0f - amount;
  return [=](const T* __restrict base, const Acc* __restrict sums, T* __restrict out,
             int64_t samples) {
    for (int64_t i = 0; i < samples; i++) {
      if constexpr (std::is_floating_point_v<T>) {
        out[i] = static_cast<float>(static_cast<double>(base[i] * keep) +
                                    static_cast<double>(scale) * sums[i]);
      } else {
        out[i] = qv::Rounded<T>(static_cast<float>(base[i]) * keep + ToFloat(sums[i]) * scale);
      }
    }
  };
}

// The mean over base by a blend mode.
template <class T, class Acc>
qv::BoxMix<T, Acc> ModeMix(int64_t count, qv::BlurMixer& mixer) {
  const float scale = (1.0f / static_cast<float>(count)) / qv::Sample<T>::kMax;
  return [=, &mixer](const T* base, const Acc* sums, T* out, int64_t samples) {
    qv::EachStrip(samples, [&](int64_t x, int some) {
      float* top = mixer.Top();
      for (int i = 0; i < some; i++) {
        if constexpr (std::is_floating_point_v<T>) {
          top[i] = static_cast<float>(static_cast<double>(scale) * sums[x + i]);
        } else {
          top[i] = ToFloat(sums[x + i]) * scale;
        }
      }
      mixer.Mix(base + x, out + x, some);
    });
  };
}

// Unsigned integers of 32 bits, whose means come out in single precision.
qv::BoxMix<uint32_t, uint64_t> MeanOfIntegers(int64_t count) {
  const float scale = 1.0f / static_cast<float>(count);
  return [=](const uint32_t*, const uint64_t* sums, uint32_t* out, int64_t samples) {
    for (int64_t i = 0; i < samples; i++) {
      const float mean = static_cast<float>(sums[i]) * scale + 0.5f;
      out[i] = mean < 4294967296.0f ? static_cast<uint32_t>(mean) : 0xffffffff;
    }
  };
}

// ---- The passes

// Calls f<T, Acc>() with the accumulator that holds the sums over a box.
template <class F>
int DispatchSums(int depth, int64_t count, F&& f) {
  return qv::DispatchDepth(depth, [&]<class T>() -> int {
    if constexpr (std::is_floating_point_v<T>) {
      return f.template operator()<T, double>();
    } else if (FitsInt<T>(count)) {
      return f.template operator()<T, uint32_t>();
    } else {
      return f.template operator()<T, uint64_t>();
    }
  });
}

VRect SquareBox(int radius) {
  const int first = VRect::Held(-int64_t{radius});
  return {first, first, radius, radius};
}

// The boundary of a pass that answers with a status, behind the tests that such passes share.
template <class Body>
int GuardPass(const qv::BoxCall& call, Body&& body) {
  if (!call.base || !call.source || !call.dst) return kQVStatusBadArgument;
  if (call.box.right < call.box.left || call.box.bottom < call.box.top) return kQVStatusBadArgument;
  return qv::Guard<qv::Boundary::kCatchAllOnly>(kSource, kQVStatusUnknown2, [&]() -> int {
    if (!qv::HaveSamePixels(call.source, call.dst) || !qv::HaveSamePixels(call.base, call.dst)) {
      return kQVStatusUnsupported;
    }
    if (call.Span() >= kMostPixels / call.Rows()) return kQVStatusUnknown2;
    const bool isLong = QVImageGetDepth(call.source) == 32 && call.Rows() > kMostRows;
    return isLong ? kQVStatusUnknown2 : body();
  });
}

int BoxBlur(const qv::BoxCall& call, float amount) {
  return GuardPass(call, [&] {
    return DispatchSums(QVImageGetDepth(call.source), call.Count(), [&]<class T, class Acc>() {
      return qv::FilterBox<T, Acc>(call, kMissingRow, NormalMix<T, Acc>(call.Count(), amount));
    });
  });
}

int BoxBlurOrCopy(const qv::BoxCall& call, float amount, QVRect rect) {
  const bool copies = call.box.right < 1 || amount <= 0.0f;
  return copies ? qv::CopyTo(call.source, call.dst, rect, call.offset) : BoxBlur(call, amount);
}

// ---- The passes of the fast Gaussian blur

// The mean alone.
int MeanPass(__QVImage* source, __QVImage* dst, QVRect rect, int radius) {
  const qv::BoxCall call = {source, source, dst, MakeVRect(rect), SquareBox(radius)};
  if (radius < 1) return qv::CopyTo(source, dst, rect, QVPointMake(0, 0));
  return GuardPass(call, [&] {
    return DispatchSums(QVImageGetDepth(source), call.Count(), [&]<class T, class Acc>() {
      return qv::FilterBox<T, Acc>(call, kMissingRow, Mean<T, Acc>(call.Count()));
    });
  });
}

// The last one. A mode of its own raises its failures, instead of answering with a status.
int LastPass(const qv::BoxCall& call, QVRect rect, float amount, QVBlendMode mode) {
  const std::optional<qv::BlurMix> mix = qv::FindBlurMix(mode, amount);
  if (!mix) return kQVStatusBadArgument;
  if (!mix->blend || call.box.right < 1) return BoxBlurOrCopy(call, amount, rect);
  qv::BlurMixer mixer(*mix);
  return DispatchSums(QVImageGetDepth(call.source), call.Count(), [&]<class T, class Acc>() {
    return qv::FilterBox<T, Acc>(call, kMissingRow, ModeMix<T, Acc>(call.Count(), mixer));
  });
}

int GaussianBlurFast(__QVImage* src, __QVImage* dst, QVRect rect, float radius, float amount,
                     QVBlendMode mode) {
  const qv::GaussianBoxes boxes(radius);
  if (rect.width <= 0 || rect.height <= 0) {
    const bool isMode = qv::FindBlurMix(mode, amount).has_value();
    qv::Check(isMode ? kQVStatusSuccess : kQVStatusBadArgument, {kSource, 293});
    return kQVStatusSuccess;
  }
  const QVRect wide = QVRectOutset(rect, VRect::Held(2 * int64_t{boxes.other}));
  qv::ImageRef blurred;
  qv::Check(CreateImageNoCopy(dst, blurred.Receive(), &wide), {kSource, 272});
  qv::Check(MeanPass(src, blurred, wide, boxes.first), {kSource, 275});
  qv::Check(MeanPass(blurred, blurred, QVRectOutset(rect, boxes.other), boxes.other),
            {kSource, 279});
  const qv::BoxCall last = {src, blurred, dst, MakeVRect(rect), SquareBox(boxes.other)};
  qv::Check(LastPass(last, rect, amount, mode), {kSource, 293});
  return kQVStatusSuccess;
}

}  // namespace

int QVEffectsBoxBlur(__QVImage* src, __QVImage* dst, QVRect rect, int radius) {
  return QVEffectsBoxBlurWithOffsetAndAmount(src, dst, rect, radius, QVPointMake(0, 0), 1.0f);
}

int QVEffectsBoxBlurWithOffset(__QVImage* src, __QVImage* dst, QVRect rect, int radius,
                               QVPoint offset) {
  return QVEffectsBoxBlurWithOffsetAndAmount(src, dst, rect, radius, offset, 1.0f);
}

int QVEffectsBoxBlurWithOffsetAndAmount(__QVImage* src, __QVImage* dst, QVRect rect, int radius,
                                        QVPoint offset, float amount) {
  return BoxBlurOrCopy({src, src, dst, MakeVRect(rect), SquareBox(radius), offset}, amount, rect);
}

int QVEffectsBoxBlurWithAmount(__QVImage* src, __QVImage* dst, QVRect rect, int left, int right,
                               int top, int bottom, float amount) {
  return BoxBlur({src, src, dst, MakeVRect(rect), {top, left, bottom, right}}, amount);
}

int QVEffectsBoxBlurInt(__QVImage* src, __QVImage* dst, QVRect rect, int left, int right, int top,
                        int bottom) {
  const qv::BoxCall call = {src, src, dst, MakeVRect(rect), {top, left, bottom, right}};
  if (!src || QVImageGetDepth(src) != 32) return BoxBlur(call, 1.0f);
  return GuardPass(call, [&]() -> int {
    if (call.Count() > kMostPixelsOfIntegers) return kQVStatusUnknown2;
    return qv::FilterBox<uint32_t, uint64_t>(call, kMissingRow, MeanOfIntegers(call.Count()));
  });
}

int QVEffectsGaussianBlurFast(__QVImage* src, __QVImage* dst, QVRect rect, float radius) {
  return QVEffectsGaussianBlurFastWithAmount(src, dst, rect, radius, 1.0f);
}

int QVEffectsGaussianBlurFastWithAmount(__QVImage* src, __QVImage* dst, QVRect rect, float radius,
                                        float amount) {
  return QVEffectsGaussianBlurFastWithAmountAndMode(src, dst, rect, radius, amount,
                                                    kQVBlendModeNormal);
}

int QVEffectsGaussianBlurFastWithAmountAndMode(__QVImage* src, __QVImage* dst, QVRect rect,
                                               float radius, float amount, QVBlendMode mode) {
  if (!(radius > 0.0f) || amount <= 0.0f) return qv::CopyTo(src, dst, rect, QVPointMake(0, 0));
  if (!src || !dst) return kQVStatusBadArgument;
  if (!qv::HaveSamePixels(src, dst)) return kQVStatusUnsupported;
  // What is written outside would be dropped.
  const QVRect inside = QVRectIntersect(rect, QVImageGetBounds(dst));
  return qv::Guard(kSource, kQVStatusUnknown2, [&] {
    return qv::DispatchDepth(QVImageGetDepth(src), [&]<class T>() {
      return GaussianBlurFast(src, dst, inside, radius, amount, mode);
    });
  });
}
