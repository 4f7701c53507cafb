// SPDX-License-Identifier: Apache-2.0
// Sums over a box around each pixel, at the same cost whatever its size: running sums along and
// across rows.
#pragma once

#include <functional>
#include <optional>

#include "Lanes.h"
#include "RowWindow.h"
#include "Strips.h"

namespace qv {

/// What a box filter works on.
struct BoxCall {
  __QVImage* base;    // its rows are mixed in and give the transparency
  __QVImage* source;  // what is summed
  __QVImage* dst;
  VRect rect;
  VRect box;  // offsets from a pixel, all inclusive
  QVPoint offset = {0, 0};

  int64_t Span() const { return int64_t{box.right} - box.left; }
  int64_t Rows() const { return int64_t{box.bottom} - box.top + 1; }
  bool HoldsPixel() const {
    return box.left <= 0 && box.right >= 0 && box.top <= 0 && box.bottom >= 0;
  }
  int64_t Count() const { return (Span() + 1) * Rows(); }
};

/// Makes the samples of a row from those of base and the sums over their boxes.
template <class T, class Acc>
using BoxMix = std::function<void(const T* base, const Acc* sums, T* out, int64_t samples)>;

namespace detail {

// Sums of integers: across the rows first, on samples as they are, then along.
template <class T, class Acc, class Layout>
class ExactSums {
 public:
  ExactSums(const BoxCall& call, int width, Layout layout)
      : mLayout(layout),
        mSpan(call.Span()),
        mSamples((width + mSpan) * layout.planes),
        mColumns(layout.planes + mSamples + RowWindow<T>::kSlack),
        mSums(kStripPixels * layout.planes + RowWindow<T>::kSlack),
        mRunning(layout.planes + RowWindow<T>::kSlack) {}

  // A row that counts several times.
  void Add(const T* row, int64_t times) {
    const Acc factor = static_cast<Acc>(times);
    Acc* __restrict columns = Columns();
    for (int64_t i = 0; i < mSamples; i++) columns[i] += factor * row[i];
  }

  // The next row of boxes: without the row that leaves, with the one that enters; null for none.
  void StartRow(const T* leaving, const T* entering) {
    mLeaving = leaving;
    mEntering = entering;
    mMoved = 0;
    mDone = 0;
    MoveColumns(mSpan * mLayout.planes);
    ForLanes(mLayout, [&](auto lanes, int first) {
      using Pixel = Lanes<Acc, lanes>;
      typename Pixel::Type sums = {};
      for (int64_t i = 0; i < mSpan; i++)
        sums += Pixel::Load(Columns() + i * mLayout.planes + first);
      Pixel::Store(mRunning.Get() + first, sums);
    });
  }

  // The sums of the next pixels of the row, at most a strip.
  const Acc* Next(int pixels) {
    MoveColumns((mDone + pixels + mSpan) * mLayout.planes);
    ForLanes(mLayout, [&](auto lanes, int first) {
      using Pixel = Lanes<Acc, lanes>;
      const int64_t stride = mLayout.planes;
      const Acc* in = Columns() + mDone * stride + first;
      Acc* out = mSums.Get() + first;
      auto sums = Pixel::Load(mRunning.Get() + first);
      for (int64_t i = 0; i < pixels; i++, in += stride, out += stride) {
        // What enters and what left are taken together: one addition waits for the last.
        sums += Pixel::Load(in + mSpan * stride) - Pixel::Load(in - stride);
        Pixel::Store(out, sums);
      }
      Pixel::Store(mRunning.Get() + first, sums);
    });
    mDone += pixels;
    return mSums.Get();
  }

 private:
  // A pixel of zeros lies before them: what leaves before the first box.
  Acc* Columns() { return mColumns.Get() + mLayout.planes; }

  void MoveColumns(int64_t end) {
    if (!mEntering) return;
    const T* __restrict leaving = mLeaving;
    const T* __restrict entering = mEntering;
    Acc* __restrict columns = Columns();
    for (int64_t i = mMoved; i < end; i++) columns[i] += static_cast<Acc>(entering[i]) - leaving[i];
    mMoved = end;
  }

  Layout mLayout;
  int64_t mSpan, mSamples;
  Buffer<Acc> mColumns, mSums, mRunning;
  const T* mLeaving = nullptr;
  const T* mEntering = nullptr;
  int64_t mMoved = 0;  // samples of the columns that are up to date
  int64_t mDone = 0;   // pixels of the row
};

// Sums of floats, which depend on the order: along each row, then across. A row that leaves is
// summed again instead of being kept: its sums would take twice its memory, and two chains of
// additions take no longer than one.
template <class Layout>
class FloatSums {
 public:
  FloatSums(const BoxCall& call, int width, Layout layout)
      : mLayout(layout),
        mSpan(call.Span()),
        mWidth(width),
        mSums(int64_t{width} * layout.planes + kSlack),
        mRow(int64_t{width} * layout.planes + kSlack),
        mState(3 * (layout.planes + kSlack)) {}

  void Add(const float* row, int64_t times) {
    ForLanes(mLayout, [&](auto lanes, int first) {
      using Pixel = Lanes<double, lanes>;
      auto sums = Prime<Pixel>(row + first);
      for (int64_t i = 0; i < mWidth; i++) {
        sums += Pixel::Load(row + first + (i + mSpan) * mLayout.planes);
        Pixel::Store(mRow.Get() + first + i * mLayout.planes, sums);
        sums -= Pixel::Load(row + first + i * mLayout.planes);
      }
    });
    for (; times > 0; times--) {
      for (int64_t i = 0; i < int64_t{mWidth} * mLayout.planes; i++)
        mSums.Get()[i] += mRow.Get()[i];
    }
  }

  void StartRow(const float* leaving, const float* entering) {
    mLeaving = leaving;
    mEntering = entering;
    mDone = 0;
    if (!entering) return;
    ForLanes(mLayout, [&](auto lanes, int first) {
      using Pixel = Lanes<double, lanes>;
      Pixel::Store(State(0) + first, Prime<Pixel>(leaving + first));
      Pixel::Store(State(1) + first, Prime<Pixel>(entering + first));
      Pixel::Store(State(2) + first, Pixel::Load(mSums.Get() + first));
    });
  }

  const double* Next(int pixels) {
    double* const result = mSums.Get() + mDone * mLayout.planes;
    if (mEntering) {
      ForLanes(mLayout, [&](auto lanes, int first) { Advance<lanes>(first, result, pixels); });
    }
    mDone += pixels;
    return result;
  }

 private:
  static constexpr int kSlack = RowWindow<float>::kSlack;

  double* State(int which) { return mState.Get() + which * (mLayout.planes + kSlack); }

  template <class Pixel>
  typename Pixel::Type Prime(const float* row) const {
    typename Pixel::Type sums = {};
    for (int64_t i = 0; i < mSpan; i++) sums += Pixel::Load(row + i * mLayout.planes);
    return sums;
  }

  template <int kLanes>
  void Advance(int first, double* result, int pixels) {
    using Pixel = Lanes<double, kLanes>;
    const int64_t stride = mLayout.planes;
    const float* leaving = mLeaving + mDone * stride + first;
    const float* entering = mEntering + mDone * stride + first;
    auto less = Pixel::Load(State(0) + first);
    auto more = Pixel::Load(State(1) + first);
    auto sum = Pixel::Load(State(2) + first);
    for (int i = 0; i < pixels; i++, leaving += stride, entering += stride) {
      double* place = result + first + i * stride;
      less += Pixel::Load(leaving + mSpan * stride);
      more += Pixel::Load(entering + mSpan * stride);
      // Before a sample of it is overwritten.
      const auto next = Pixel::Load(place + stride);
      Pixel::Store(place, (sum - less) + more);
      sum = next;
      less -= Pixel::Load(leaving);
      more -= Pixel::Load(entering);
    }
    Pixel::Store(State(0) + first, less);
    Pixel::Store(State(1) + first, more);
    Pixel::Store(State(2) + first, sum);
  }

  Layout mLayout;
  int64_t mSpan;
  int mWidth;
  Buffer<double> mSums, mRow, mState;
  const float* mLeaving = nullptr;
  const float* mEntering = nullptr;
  int64_t mDone = 0;
};

}  // namespace detail

/// Walks the rows of a box filter.
/// @param missing what a row of base that can't be had is logged as.
template <class T, class Acc>
int FilterBox(const BoxCall& call, Where missing, const BoxMix<T, Acc>& mix) {
  QVImageAccess target(call.dst, nullptr);
  // What is written outside would be dropped.
  const VRect rect = call.rect.Offset(-int64_t{call.offset.x}, -int64_t{call.offset.y})
                         .Intersect(target.bounds)
                         .Offset(call.offset.x, call.offset.y);
  if (rect.IsEmpty()) return kQVStatusSuccess;
  const int width = rect.right - rect.left;
  const int planes = QVImageGetNumPlanes(call.dst);
  // A row is read before it's written, also beneath a box that lies wholly above it.
  const int64_t ahead = std::max(call.box.bottom, 0);
  RowWindow<T> rows(call.source, int64_t{rect.left} + call.box.left, width + call.Span(),
                    ahead - call.box.top + 2, missing);
  // The rows that are summed are those of base where they are the same pixels.
  const bool holdsBase = call.base == call.source && call.HoldsPixel();
  std::optional<RowWindow<T>> baseRows;
  if (!holdsBase) baseRows.emplace(call.base, rect.left, width, 1, missing);

  return DispatchLayout(planes, QVImageGetTransparency(call.dst), [&](auto layout) {
    using Layout = decltype(layout);
    std::conditional_t<std::is_same_v<Acc, double>, detail::FloatSums<Layout>,
                       detail::ExactSums<T, Acc, Layout>>
        sums(call, width, layout);
    const int64_t top = int64_t{rect.top} + call.box.top;
    const int64_t bottom = int64_t{rect.top} + call.box.bottom;
    for (int64_t y = top; y <= bottom;) {
      const int64_t times = rows.Repeats(y, bottom);
      sums.Add(rows.Row(y), times);
      y += times;
    }
    for (int y = rect.top; y < rect.bottom; y++) {
      const bool moves = y > rect.top;
      rows.Row(y + ahead);
      const T* entering = moves ? rows.Row(int64_t{y} + call.box.bottom) : nullptr;
      sums.StartRow(moves ? rows.Row(int64_t{y} + call.box.top - 1) : nullptr, entering);
      const T* base = holdsBase ? rows.Row(y) - int64_t{call.box.left} * planes : baseRows->Row(y);
      T* out = static_cast<T*>(
          Required(target.WriteRow(y - call.offset.y, rect.left - call.offset.x, width), missing));
      EachStrip(width, [&](int64_t x, int pixels) {
        const Acc* strip = sums.Next(pixels);
        mix(base + x * planes, strip, out + x * planes, int64_t{pixels} * planes);
        KeepTransparency(base + x * planes, out + x * planes, pixels, layout);
      });
    }
    return kQVStatusSuccess;
  });
}

}  // namespace qv
