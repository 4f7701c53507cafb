// SPDX-License-Identifier: Apache-2.0
// Triangular blur: a tent along rows and across them, by running sums.
#include <QVEffects/QVEffectsBasics.h>
#include <QVEffects/QVEffectsBlur.h>

#include "Utils/Lanes.h"
#include "Utils/RowWindow.h"
#include "Utils/Strips.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsTriangularBlur";

// Beyond it sums of 16-bit samples wouldn't fit 64 bits.
constexpr int kLargestRadius = 3000;

// ---- Tents of integers, exact in any order: across the rows on samples as they are, then along
// the row as two boxes of radius + 1 pixels, one after the other

template <class T, class Acc, class Layout>
class ExactTent {
 public:
  ExactTent(int radius, int width, Layout layout)
      : mLayout(layout),
        mRadius(radius),
        mSamples((width + 2 * int64_t{radius}) * layout.planes),
        mLeft(mSamples),
        mRight(mSamples),
        mWeighted(Padded(mSamples)),
        mBox(Padded(mSamples)),
        mTent(Padded(qv::kStripPixels * layout.planes)),
        mRunning(2 * Padded(0)) {}

  // One of the 2 radius rows above the first one that enters, from the top.
  void Add(int i, const T* __restrict row) {
    const Acc weight = static_cast<Acc>(i < mRadius ? i + 1 : 2 * mRadius - i);
    Acc* __restrict sums = i < mRadius ? mLeft.Get() : mRight.Get();
    Acc* __restrict weighted = Weighted();
    for (int64_t k = 0; k < mSamples; k++) {
      sums[k] += row[k];
      weighted[k] += weight * row[k];
    }
  }

  // The rows that the last row of tents leaves, null before the first, and the one that enters.
  void StartRow(const T* __restrict leaving, const T* __restrict middle,
                const T* __restrict entering) {
    Acc* __restrict left = mLeft.Get();
    Acc* __restrict right = mRight.Get();
    Acc* __restrict weighted = Weighted();
    if (leaving) {
      for (int64_t k = 0; k < mSamples; k++) {
        const Acc sum = left[k] + middle[k];
        left[k] = sum - leaving[k];
        right[k] += static_cast<Acc>(entering[k]) - middle[k];
        weighted[k] += right[k] - sum;
      }
    } else {
      for (int64_t k = 0; k < mSamples; k++) {
        right[k] += entering[k];
        weighted[k] += right[k];
      }
    }
    mDone = 0;
    qv::ForLanes(mLayout, [&](auto lanes, int first) { PrimeRow<lanes>(first); });
  }

  // The sums of the next pixels of the row, at most a strip.
  const Acc* Next(int pixels) {
    qv::ForLanes(mLayout, [&](auto lanes, int first) { Advance<lanes>(first, pixels); });
    mDone += pixels;
    return mTent.Get();
  }

 private:
  // A pixel of zeros before the samples is what leaves before the first box.
  int64_t Padded(int64_t samples) const {
    return mLayout.planes + samples + qv::RowWindow<T>::kSlack;
  }
  Acc* Weighted() { return mWeighted.Get() + mLayout.planes; }
  Acc* Box() { return mBox.Get() + mLayout.planes; }

  // The boxes beneath the first tent but its last, and the sum of them.
  template <int kLanes>
  void PrimeRow(int first) {
    using Pixel = qv::Lanes<Acc, kLanes>;
    const int64_t stride = mLayout.planes;
    const Acc* in = Weighted() + first;
    Acc* boxes = Box() + first;
    typename Pixel::Type box = {}, tent = {};
    for (int64_t i = 0; i < mRadius; i++) box += Pixel::Load(in + i * stride);
    for (int64_t i = 0; i < mRadius; i++) {
      box += Pixel::Load(in + (i + mRadius) * stride) - Pixel::Load(in + (i - 1) * stride);
      Pixel::Store(boxes + i * stride, box);
      tent += box;
    }
    Pixel::Store(mRunning.Get() + first, box);
    Pixel::Store(mRunning.Get() + Padded(0) + first, tent);
  }

  template <int kLanes>
  void Advance(int first, int pixels) {
    using Pixel = qv::Lanes<Acc, kLanes>;
    const int64_t stride = mLayout.planes;
    const Acc* in = Weighted() + (mDone + mRadius) * stride + first;
    Acc* boxes = Box() + mDone * stride + first;
    Acc* out = mTent.Get() + first;
    auto box = Pixel::Load(mRunning.Get() + first);
    auto tent = Pixel::Load(mRunning.Get() + Padded(0) + first);
    for (int i = 0; i < pixels; i++, in += stride, boxes += stride, out += stride) {
      box += Pixel::Load(in + mRadius * stride) - Pixel::Load(in - stride);
      const auto left = Pixel::Load(boxes - stride);
      Pixel::Store(boxes + mRadius * stride, box);
      tent += box - left;
      Pixel::Store(out, tent);
    }
    Pixel::Store(mRunning.Get() + first, box);
    Pixel::Store(mRunning.Get() + Padded(0) + first, tent);
  }

  Layout mLayout;
  int64_t mRadius, mSamples;
  qv::Buffer<Acc> mLeft, mRight, mWeighted;  // across the rows
  qv::Buffer<Acc> mBox, mTent, mRunning;     // along the row
  int64_t mDone = 0;
};

// ---- Tents of floats, which depend on the order: along each row, then across. Rows are summed
// again where they become the middle and where they leave: kept sums would take twice the memory
// of the rows, and three chains of additions take hardly longer than one

// The running values of a tent.
template <class Vector>
struct Tent {
  Vector left, right, weighted;

  // Moves on by a sample; what the tent sums up.
  Vector Enter(Vector entering) {
    right += entering;
    weighted += right;
    return weighted;
  }
  void Leave(Vector middle, Vector leaving) {
    left += middle;
    weighted -= left;
    right -= middle;
    left -= leaving;
  }
};

template <class Layout>
class FloatTent {
 public:
  FloatTent(int radius, int width, Layout layout)
      : mLayout(layout),
        mRadius(radius),
        mWidth(width),
        mSamples(int64_t{width} * layout.planes),
        mRow(mSamples + kSlack),
        mLeft(mSamples + kSlack),
        mRight(mSamples + kSlack),
        mWeighted(mSamples + kSlack) {}

  void Add(int i, const float* row) {
    qv::ForLanes(mLayout, [&](auto lanes, int first) { SumRow<lanes>(first, row + first); });
    const double weight = i < mRadius ? i + 1 : 2 * mRadius - i;
    double* sums = i < mRadius ? mLeft.Get() : mRight.Get();
    for (int64_t k = 0; k < mSamples; k++) {
      sums[k] += mRow.Get()[k];
      mWeighted.Get()[k] += mRow.Get()[k] * weight;
    }
  }

  void StartRow(const float* leaving, const float* middle, const float* entering) {
    mDone = 0;
    if (leaving) {
      qv::ForLanes(mLayout, [&](auto lanes, int first) {
        MoveRow<lanes>(first, leaving + first, middle + first, entering + first);
      });
      return;
    }
    qv::ForLanes(mLayout, [&](auto lanes, int first) { SumRow<lanes>(first, entering + first); });
    for (int64_t k = 0; k < mSamples; k++) {
      mRight.Get()[k] += mRow.Get()[k];
      mWeighted.Get()[k] += mRight.Get()[k];
    }
  }

  const double* Next(int pixels) {
    const double* sums = mWeighted.Get() + mDone * mLayout.planes;
    mDone += pixels;
    return sums;
  }

 private:
  static constexpr int kSlack = qv::RowWindow<float>::kSlack;

  // The tent of a row before its first sample enters.
  template <class Pixel>
  Tent<typename Pixel::Type> Prime(const float* row) const {
    Tent<typename Pixel::Type> tent = {};
    for (int64_t i = 1; i <= mRadius; i++) {
      const auto sample = Pixel::Load(row + (i - 1) * mLayout.planes);
      tent.left += sample;
      tent.weighted += sample * static_cast<double>(i);
    }
    for (int64_t i = mRadius; i >= 1; i--) {
      const auto sample = Pixel::Load(row + (2 * mRadius - i) * mLayout.planes);
      tent.right += sample;
      tent.weighted += sample * static_cast<double>(i);
    }
    return tent;
  }

  template <class Pixel>
  typename Pixel::Type Step(Tent<typename Pixel::Type>& tent, const float* row) const {
    const int64_t middle = mRadius * mLayout.planes;
    const auto sum = tent.Enter(Pixel::Load(row + 2 * middle));
    tent.Leave(Pixel::Load(row + middle), Pixel::Load(row));
    return sum;
  }

  template <int kLanes>
  void SumRow(int first, const float* row) {
    using Pixel = qv::Lanes<double, kLanes>;
    auto tent = Prime<Pixel>(row);
    for (int64_t x = first; x < mSamples; x += mLayout.planes, row += mLayout.planes) {
      Pixel::Store(mRow.Get() + x, Step<Pixel>(tent, row));
    }
  }

  template <int kLanes>
  void MoveRow(int first, const float* leaving, const float* middle, const float* entering) {
    using Pixel = qv::Lanes<double, kLanes>;
    using Vector = typename Pixel::Type;
    const int64_t stride = mLayout.planes;
    auto less = Prime<Pixel>(leaving), center = Prime<Pixel>(middle), more = Prime<Pixel>(entering);
    double* left = mLeft.Get() + first;
    double* right = mRight.Get() + first;
    double* weighted = mWeighted.Get() + first;
    Tent<Vector> tent = {Pixel::Load(left), Pixel::Load(right), Pixel::Load(weighted)};
    for (int64_t x = 0; x < mWidth; x++) {
      const Vector out = Step<Pixel>(less, leaving + x * stride);
      tent.Leave(Step<Pixel>(center, middle + x * stride), out);
      tent.Enter(Step<Pixel>(more, entering + x * stride));
      // Before a sample of it is overwritten.
      const Tent<Vector> next = {Pixel::Load(left + stride), Pixel::Load(right + stride),
                                 Pixel::Load(weighted + stride)};
      Pixel::Store(left, tent.left);
      Pixel::Store(right, tent.right);
      Pixel::Store(weighted, tent.weighted);
      tent = next;
      left += stride;
      right += stride;
      weighted += stride;
    }
  }

  Layout mLayout;
  int64_t mRadius;
  int mWidth;
  int64_t mSamples;
  qv::Buffer<double> mRow, mLeft, mRight, mWeighted;
  int64_t mDone = 0;
};

// ---- Rows

template <class T, class Acc>
void StoreRow(float scale, const Acc* __restrict sums, T* __restrict out, int64_t samples) {
  for (int64_t i = 0; i < samples; i++) {
    if constexpr (std::is_floating_point_v<T>) {
      out[i] = static_cast<float>(static_cast<double>(scale) * sums[i]);
    } else {
      // Unsigned, so that samples beyond a row may be summed whatever they are.
      const auto sum = static_cast<std::make_signed_t<Acc>>(sums[i]);
      out[i] = qv::Rounded<T>(static_cast<float>(sum) * scale);
    }
  }
}

template <class T, class Acc, class Layout>
int BlurRows(__QVImage* src, QVImageAccess& target, VRect rect, int radius, Layout layout) {
  using Sums =
      std::conditional_t<std::is_floating_point_v<T>, FloatTent<Layout>, ExactTent<T, Acc, Layout>>;
  const int width = rect.right - rect.left;
  const float line = 1.0f / static_cast<float>((radius + 1) * (radius + 1));
  const float scale = line * line;
  qv::RowWindow<T> rows(src, int64_t{rect.left} - radius, int64_t{width} + 2 * radius,
                        2 * radius + 2, kSource);
  Sums sums(radius, width, layout);
  for (int i = 0; i < 2 * radius; i++) sums.Add(i, rows.Row(int64_t{rect.top} - radius + i));
  for (int64_t y = rect.top; y < rect.bottom; y++) {
    const T* entering = rows.Row(y + radius);
    const bool moves = y > rect.top;
    sums.StartRow(moves ? rows.Row(y - 1 - radius) : nullptr, moves ? rows.Row(y - 1) : nullptr,
                  entering);
    const T* base = rows.Row(y) + int64_t{radius} * layout.planes;
    T* out = static_cast<T*>(
        qv::Required(target.WriteRow(static_cast<int>(y), rect.left, width), kSource));
    qv::EachStrip(width, [&](int64_t x, int pixels) {
      const int64_t at = x * layout.planes;
      StoreRow(scale, sums.Next(pixels), out + at, int64_t{pixels} * layout.planes);
      qv::KeepTransparency(base + at, out + at, pixels, layout);
    });
  }
  return kQVStatusSuccess;
}

template <class T>
bool FitsInt(int radius) {
  const int64_t line = (int64_t{radius} + 1) * (radius + 1);
  return line * line <= 0x7fffffff / static_cast<int64_t>(qv::Sample<T>::kMax);
}

template <class T>
int TriangularBlur(__QVImage* src, __QVImage* dst, VRect rect, int radius) {
  QVImageAccess target(dst, nullptr);
  // What is written outside would be dropped.
  rect = rect.Intersect(target.bounds);
  if (rect.IsEmpty()) return kQVStatusSuccess;
  return qv::DispatchLayout(QVImageGetNumPlanes(dst), QVImageGetTransparency(dst),
                            [&](auto layout) {
    if constexpr (std::is_floating_point_v<T>) {
      return BlurRows<T, double>(src, target, rect, radius, layout);
    } else if (FitsInt<T>(radius)) {
      return BlurRows<T, uint32_t>(src, target, rect, radius, layout);
    } else {
      return BlurRows<T, uint64_t>(src, target, rect, radius, layout);
    }
  });
}

}  // namespace

int QVEffectsTriangularBlur(__QVImage* src, __QVImage* dst, QVRect rect, int radius) {
  if (!src || !dst) return kQVStatusBadArgument;
  return qv::Guard<qv::Boundary::kWithMemory>(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(src) * 8, [&]<class T>() -> int {
      if (!qv::HaveSamePixels(src, dst)) return kQVStatusUnsupported;
      if (radius <= 0) return QVEffectsCopyImage(src, dst, rect);
      if (radius > kLargestRadius) return kQVStatusBadArgument;
      return TriangularBlur<T>(src, dst, MakeVRect(rect), radius);
    });
  });
}
