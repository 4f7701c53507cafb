// SPDX-License-Identifier: Apache-2.0
// Gaussian blur: the true one, a convolution along rows and then across them, and the choice
// between it and the fast one.
#include <QVEffects/QVEffectsBasics.h>
#include <QVEffects/QVEffectsBlur.h>

#include <memory>

#include "Utils/BlurMix.h"
#include "Utils/GaussianKernel.h"
#include "Utils/QVEffectsUtils.h"
#include "Utils/RowWindow.h"
#include "Utils/Strips.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsGaussianBlur";

// From this radius on the fast blur is taken.
constexpr float kFastFrom = 10.0f;

// Samples that are summed side by side: as many as registers hold for kRows rows.
#ifdef __AVX512F__
constexpr int kBlock = 32;
#else
constexpr int kBlock = 16;
#endif

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

// Along a row, whose pixels are `step` samples apart.
void ConvolveAlong(const Kernel& kernel, const float* __restrict row, int step, int64_t samples,
                   float* __restrict out) {
  constexpr int kWide = 2 * kBlock;
  const float* __restrict taps = kernel.taps.get();
  int64_t x = 0;
  for (; x + kWide <= samples; x += kWide) {
    float sums[kWide] = {};
    for (int64_t tap = 0; tap < kernel.size; tap++) {
      const float* from = row + x + tap * step;
      for (int i = 0; i < kWide; i++) sums[i] += taps[tap] * from[i];
    }
    std::memcpy(out + x, sums, sizeof sums);
  }
  for (; x < samples; x++) {
    float sum = 0;
    for (int64_t tap = 0; tap < kernel.size; tap++) sum += taps[tap] * row[x + tap * step];
    out[x] = sum;
  }
}

// Across rows, for kRows rows at once: rows[0] to rows[size - 1] make the first, each row one
// further down the next. Samples up to whole blocks are made.
void ConvolveAcross(const Kernel& kernel, const float* const* rows, int64_t samples,
                    float* const (&out)[kRows]) {
  const float* __restrict taps = kernel.taps.get();
  for (int64_t x = 0; x < samples; x += kBlock) {
    float sums[kRows][kBlock] = {};
    const auto add = [&](int to, int tap) {
      const float weight = taps[tap];
      const float* __restrict from = rows[tap + to] + x;
      for (int i = 0; i < kBlock; i++) sums[to][i] += weight * from[i];
    };
    // Each of the rows starts and ends one later than the one above.
    for (int to = 0; to < kRows; to++) {
      for (int tap = 0; tap < std::min(kRows - 1 - to, kernel.size); tap++) add(to, tap);
    }
    for (int row = kRows - 1; row < kernel.size; row++) {
      for (int to = 0; to < kRows; to++) add(to, row - to);
    }
    for (int to = 1; to < kRows; to++) {
      for (int tap = std::max(kernel.size - to, kRows - 1 - to); tap < kernel.size; tap++) {
        add(to, tap);
      }
    }
    for (int to = 0; to < kRows; to++) std::memcpy(out[to] + x, sums[to], sizeof sums[to]);
  }
}

// ---- Rows

// The colour samples of a row as floats.
template <class T, class Layout>
void TakeColors(const T* __restrict row, int64_t pixels, Layout layout, float* __restrict out) {
  for (int64_t i = 0; i < pixels; i++) {
    for (int c = 0; c < layout.colors; c++) {
      out[i * layout.colors + c] = static_cast<float>(row[i * layout.planes + c]);
    }
  }
}

// Blurred colours to the places that they have in a pixel.
template <class Layout>
void SpreadColors(const float* __restrict colors, int pixels, Layout layout,
                  float* __restrict out) {
  for (int i = 0; i < pixels; i++) {
    for (int c = 0; c < layout.colors; c++) {
      out[i * layout.planes + c] = colors[i * layout.colors + c];
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
  const int most = qv::kStripPixels / layout.planes;
  for (int64_t x = 0; x < width; x += most) {
    const int pixels = static_cast<int>(std::min<int64_t>(width - x, most));
    SpreadColors(blurred + x * layout.colors, pixels, layout, spread);
    const int64_t at = x * layout.planes;
    MixSamples(mix, mixer, base + at, spread, out + at, pixels * layout.planes);
    qv::KeepTransparency(base + at, out + at, pixels, layout);
  }
}

// ---- The true blur

template <class T, class Layout>
int BlurRows(const Kernel& kernel, const qv::BlurMix& mix, __QVImage* src, QVImageAccess& target,
             VRect rect, Layout layout) {
  const int width = rect.right - rect.left, radius = kernel.Radius();
  const int64_t wide = int64_t{width} + 2 * int64_t{radius};
  const int64_t samples = int64_t{width} * layout.colors;
  qv::Buffer<float> colors(wide * layout.colors);
  qv::RowWindow<float> rows(src, int64_t{rect.left} - radius, wide, int64_t{kernel.size} + kRows,
                            kSource, samples, [&](const void* pixels, float* row) {
    TakeColors(static_cast<const T*>(pixels), wide, layout, colors.Get());
    ConvolveAlong(kernel, colors.Get(), layout.colors, samples, row);
  });
  qv::RowWindow<T> baseRows(src, rect.left, width, 1, kSource);

  const int64_t stride = samples + kBlock;
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
      T* to = static_cast<T*>(
          qv::Required(target.WriteRow(static_cast<int>(y) + i, rect.left, width), kSource));
      MixRow(mix, mixer, baseRows.Row(y + i), out[i], to, width, layout);
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
      if (!qv::HaveSamePixels(src, dst) || QVImageGetNumPlanes(src) > qv::kStripPixels) {
        return kQVStatusUnsupported;
      }
      return qv::DispatchLayout(
          QVImageGetNumPlanes(src), QVImageGetTransparency(src),
          [&](auto layout) { return GaussianBlur<T>(radius, *mix, src, dst, rect, layout); });
    });
  });
}
