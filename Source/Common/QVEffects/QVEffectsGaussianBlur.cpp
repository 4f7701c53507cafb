// SPDX-License-Identifier: Apache-2.0
// Gaussian blur: the true one, a convolution along rows and then across them, and the choice
// between it and the fast one.
#include <QVEffects/QVEffectsBasics.h>
#include <QVEffects/QVEffectsBlur.h>

#include <memory>

#include "Utils/BlurMix.h"
#include "Utils/GaussianKernel.h"
#include "Utils/Lanes.h"
#include "Utils/QVEffectsUtils.h"
#include "Utils/RowWindow.h"
#include "Utils/Strips.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsGaussianBlur";

// From this radius on the fast blur is taken.
constexpr float kFastFrom = 10.0f;

// Samples that are summed side by side, as many as registers hold for kRows rows: vectors of
// sixteen, which the compiler makes of what the processor has.
using Floats = qv::Lanes<float, 16>;
#ifdef __AVX512F__
constexpr int kVectors = 2;
#else
constexpr int kVectors = 1;
#endif
constexpr int kBlock = 16 * kVectors;

// Samples of a row that are worked before the next ones: sums stay in the first cache.
constexpr int kStretch = 512;

// Rows that are made at once, since each row beneath the kernel serves all of them.
constexpr int kRows = 4;

struct Kernel {
  std::unique_ptr<float[]> taps;
  int size = 0;

  explicit Kernel(float sigma) {
    float* filter = nullptr;
    const int status = _CreateGauusianFilter(sigma, filter, size);
    taps.reset(filter);
    qv::Check(status, {kSource, 74});
  }
  int Radius() const { return size / 2; }
};

// ---- Convolutions: tap by tap from the first to the last, on samples side by side

// Along a row, whose pixels are `step` samples apart. Samples up to whole blocks are made.
void ConvolveAlong(const Kernel& kernel, const float* row, int step, int64_t samples, float* out) {
  constexpr int kMany = 2 * kVectors;
  const float* taps = kernel.taps.get();
  for (int64_t x = 0; x < samples; x += 16 * kMany) {
    Floats::Type sums[kMany] = {};
    for (int64_t tap = 0; tap < kernel.size; tap++) {
      const float* from = row + x + tap * step;
      for (int i = 0; i < kMany; i++) sums[i] += taps[tap] * Floats::Load(from + 16 * i);
    }
    for (int i = 0; i < kMany; i++) Floats::Store(out + x + 16 * i, sums[i]);
  }
}

// Adds some of the rows beneath the kernel to samples of kRows sums; rows[0] is row `first` of all.
// @param isInside whether every row counts for every sum: near the ends taps lie outside.
template <bool isInside>
void AddRows(const Kernel& kernel, const float* const* rows, int first, int count, int samples,
             float (&sums)[kRows][kStretch]) {
  const float* taps = kernel.taps.get();
  for (int x = 0; x < samples; x += kBlock) {
    Floats::Type sum[kRows][kVectors];
    for (int to = 0; to < kRows; to++) {
      for (int i = 0; i < kVectors; i++) sum[to][i] = Floats::Load(sums[to] + x + 16 * i);
    }
    for (int row = 0; row < count; row++) {
      Floats::Type samplesOfRow[kVectors];
      for (int i = 0; i < kVectors; i++) samplesOfRow[i] = Floats::Load(rows[row] + x + 16 * i);
      for (int to = 0; to < kRows; to++) {
        const int tap = first + row - to;
        if (!isInside && (tap < 0 || tap >= kernel.size)) continue;
        for (int i = 0; i < kVectors; i++) sum[to][i] += taps[tap] * samplesOfRow[i];
      }
    }
    for (int to = 0; to < kRows; to++) {
      for (int i = 0; i < kVectors; i++) Floats::Store(sums[to] + x + 16 * i, sum[to][i]);
    }
  }
}

// Across rows, for kRows rows at once: rows[0] to rows[size - 1] make the first, each row one
// further down the next.
void ConvolveAcross(const Kernel& kernel, const float* const* rows, int64_t samples,
                    float* const (&out)[kRows]) {
  constexpr int kMany = 8;  // rows read side by side, as many as the processor reads ahead in
  const int end = kernel.size + kRows - 1;
  for (int64_t x = 0; x < samples; x += kStretch) {
    const int some = static_cast<int>(std::min<int64_t>(samples - x, kStretch));
    alignas(64) float sums[kRows][kStretch] = {};
    for (int first = 0, count; first < end; first += count) {
      // The first and the last rows don't count for all sums.
      const bool isInside = first >= kRows - 1 && first < kernel.size;
      count = std::min((isInside            ? kernel.size
                        : first < kRows - 1 ? kRows - 1
                                            : end) -
                           first,
                       kMany);
      const float* from[kMany];
      for (int row = 0; row < count; row++) from[row] = rows[first + row] + x;
      const auto add = isInside ? AddRows<true> : AddRows<false>;
      add(kernel, from, first, count, some, sums);
    }
    for (int to = 0; to < kRows; to++) std::memcpy(out[to] + x, sums[to], some * sizeof(float));
  }
}

// ---- Rows

// The colour samples of a row as floats. A sample beyond the last may be written.
template <class T, class Layout>
void TakeColors(const T* row, int64_t pixels, Layout layout, float* out) {
  if constexpr (std::is_same_v<Layout, qv::AnyLayout>) {
    for (int64_t i = 0; i < pixels * layout.colors; i++) {
      out[i] = static_cast<float>(row[i / layout.colors * layout.planes + i % layout.colors]);
    }
  } else if constexpr (Layout::transparency != 0) {
    // Transparency is overwritten by the next pixel.
    using Pixel = qv::Lanes<float, Layout::planes>;
    for (int64_t i = 0; i < pixels; i++) {
      Pixel::Store(out + i * layout.colors, Pixel::Load(row + i * layout.planes));
    }
  } else {
    for (int64_t i = 0; i < pixels * layout.planes; i++) out[i] = static_cast<float>(row[i]);
  }
}

// Blurred colours to the places that they have in a pixel with transparency.
template <class Layout>
void SpreadColors(const float* colors, int pixels, Layout layout, float* out) {
  if constexpr (std::is_same_v<Layout, qv::AnyLayout>) {
    for (int i = 0; i < pixels * layout.colors; i++) {
      out[i / layout.colors * layout.planes + i % layout.colors] = colors[i];
    }
  } else if constexpr (Layout::transparency != 0) {
    using Pixel = qv::Lanes<float, Layout::planes>;
    for (int i = 0; i < pixels; i++) {
      Pixel::Store(out + i * layout.planes, Pixel::Load(colors + i * layout.colors));
    }
  }
}

// The last step for up to kStripPixels samples, transparency not apart.
template <class T>
void MixSamples(const qv::BlurMix& mix, qv::BlurMixer& mixer, const T* __restrict base,
                const float* __restrict blurred, T* __restrict out, int samples) {
  if (!mix.blend) {
    for (int i = 0; i < samples; i++) {
      out[i] = qv::Rounded<T>(static_cast<float>(base[i]) * mix.keep + blurred[i] * mix.amount);
    }
    return;
  }
  float* top = mixer.Top();
  for (int i = 0; i < samples; i++) top[i] = blurred[i] / qv::Sample<T>::kMax;
  mixer.Mix(base, out, samples);
}

template <class T, class Layout>
void MixRow(const qv::BlurMix& mix, qv::BlurMixer& mixer, const T* base, const float* blurred,
            T* out, int width, Layout layout) {
  alignas(64) float spread[qv::kStripPixels] = {};
  alignas(64) T held[qv::kStripPixels];
  const int most = qv::kStripPixels / layout.planes;
  for (int64_t x = 0; x < width; x += most) {
    const int pixels = static_cast<int>(std::min<int64_t>(width - x, most));
    const float* colors = blurred + x * layout.colors;
    if (layout.transparency) SpreadColors(colors, pixels, layout, spread);
    const T* from = base + x * layout.planes;
    T* to = out + x * layout.planes;
    const size_t bytes = sizeof(T) * pixels * layout.planes;
    if (qv::Overlap(from, to, bytes)) {
      std::memcpy(held, from, bytes);
      from = held;
    }
    MixSamples(mix, mixer, from, layout.transparency ? spread : colors, to, pixels * layout.planes);
    qv::KeepTransparency(from, to, pixels, layout);
  }
}

// ---- The true blur

template <class T, class Layout>
int BlurRows(const Kernel& kernel, const qv::BlurMix& mix, __QVImage* src, QVImageAccess& target,
             VRect rect, Layout layout) {
  const int width = rect.right - rect.left, radius = kernel.Radius();
  const int64_t wide = int64_t{width} + 2 * int64_t{radius};
  const int64_t samples = int64_t{width} * layout.colors;
  qv::Buffer<float> colors(wide * layout.colors + 2 * kBlock);
  qv::RowWindow<float> rows(src, int64_t{rect.left} - radius, wide, int64_t{kernel.size} + kRows,
                            kSource, samples, [&](const void* pixels, float* row) {
    TakeColors(static_cast<const T*>(pixels), wide, layout, colors.Get());
    ConvolveAlong(kernel, colors.Get(), layout.colors, samples, row);
  });
  QVImageAccess baseRows(src, nullptr);

  const int64_t stride = (samples + kBlock + 15) / 16 * 16;
  qv::Buffer<float> blurred(kRows * stride);
  qv::Buffer<const float*> covered(int64_t{kernel.size} + kRows - 1);
  float* out[kRows];
  for (int i = 0; i < kRows; i++) out[i] = blurred.Get() + i * stride;
  qv::BlurMixer mixer(mix);
  for (int64_t y = rect.top; y < rect.bottom; y += kRows) {
    const int count = static_cast<int>(std::min<int64_t>(rect.bottom - y, kRows));
    // Of the last rows some may not be made: what lies beneath them isn't asked for.
    for (int i = 0; i < kernel.size + kRows - 1; i++) {
      covered.Get()[i] = rows.Row(y - radius + std::min(i, kernel.size + count - 2));
    }
    ConvolveAcross(kernel, covered.Get(), samples, out);
    for (int i = 0; i < count; i++) {
      const int row = static_cast<int>(y) + i;
      T* to = static_cast<T*>(qv::Required(target.WriteRow(row, rect.left, width), kSource));
      const void* base = qv::Required(baseRows.ReadRow(row, rect.left, width), kSource);
      MixRow(mix, mixer, static_cast<const T*>(base), out[i], to, width, layout);
    }
  }
  return kQVStatusSuccess;
}

template <class T, class Layout>
int GaussianBlur(float sigma, const qv::BlurMix& mix, __QVImage* src, __QVImage* dst, QVRect rect,
                 Layout layout) {
  const Kernel kernel(sigma);
  QVImageAccess target(dst, nullptr);
  // What is written outside would be dropped.
  const VRect inside = MakeVRect(rect).Intersect(target.bounds);
  if (inside.IsEmpty()) return kQVStatusSuccess;
  return BlurRows<T>(kernel, mix, src, target, inside, layout);
}

}  // namespace

int QVEffectsGaussianBlur(__QVImage* src, __QVImage* dst, QVRect rect, float radius) {
  return QVEffectsGaussianBlurWithAmount(src, dst, rect, radius, 1.0f);
}

int QVEffectsGaussianBlurWithAmount(__QVImage* src, __QVImage* dst, QVRect rect, float radius,
                                    float amount) {
  return QVEffectsGaussianBlurWithAmountAndMode(src, dst, rect, radius, amount, kQVBlendModeNormal);
}

int QVEffectsGaussianBlurWithAmountAndMode(__QVImage* src, __QVImage* dst, QVRect rect,
                                           float radius, float amount, QVBlendMode mode) {
  const auto blur = radius >= kFastFrom ? QVEffectsGaussianBlurFastWithAmountAndMode
                                        : QVEffectsGaussianBlurTrueWithAmountAndMode;
  return blur(src, dst, rect, radius, amount, mode);
}

int QVEffectsGaussianBlurTrue(__QVImage* src, __QVImage* dst, QVRect rect, float radius) {
  return QVEffectsGaussianBlurTrueWithAmount(src, dst, rect, radius, 1.0f);
}

int QVEffectsGaussianBlurTrueWithAmount(__QVImage* src, __QVImage* dst, QVRect rect, float radius,
                                        float amount) {
  return QVEffectsGaussianBlurTrueWithAmountAndMode(src, dst, rect, radius, amount,
                                                    kQVBlendModeNormal);
}

int QVEffectsGaussianBlurTrueWithAmountAndMode(__QVImage* src, __QVImage* dst, QVRect rect,
                                               float radius, float amount, QVBlendMode mode) {
  if (qv::GaussianRadius(radius) <= 0 || amount <= 0.0f) {
    return QVEffectsCopyImage(src, dst, rect);
  }
  if (!src || !dst) return kQVStatusBadArgument;
  return qv::Guard({kSource, 162}, kQVStatusUnknown3, [&] {
    return qv::DispatchDepth(QVImageGetDepth(src), [&]<class T>() -> int {
      const std::optional<qv::BlurMix> mix = qv::FindBlurMix(mode, amount);
      if (!mix) return kQVStatusBadArgument;
      if (!qv::HaveSamePixels(src, dst)) return kQVStatusUnsupported;
      return qv::DispatchLayout(
          QVImageGetNumPlanes(src), QVImageGetTransparency(src),
          [&](auto layout) { return GaussianBlur<T>(radius, *mix, src, dst, rect, layout); });
    });
  });
}
