// SPDX-License-Identifier: Apache-2.0
// Histograms of the values in a window that moves over an image: a few bins, each with the sum and
// the count of the samples in it. A pixel is blurred by the means of the bins that lie near its own
// value, at a cost that doesn't depend on the window.
//
// Integer sums are exact in any order. Float sums are not: there the order of additions is part of
// the result, so that integers and floats have an engine each.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "EffectFrame.h"
#include "RowWindow.h"

namespace qv {

/// How near a mean must lie to take part, and how the result is mixed with the pixel.
struct BinMix {
  float inverse;  // of the distance at which a mean counts no more
  float keep, amount;
};

/// The bin of a sample. Floats outside 0 to 1 belong to the bins at the ends, NaN to the first.
template <int kBins, class T>
int BinOf(T sample) {
  if constexpr (std::is_floating_point_v<T>) {
    // 1 stays in the last bin.
    constexpr float kScale = kBins == 8 ? 7.9999919f : 3.9999959f;
    float scaled = sample * kScale;
    scaled = scaled > 0.0f ? scaled : 0.0f;
    scaled = scaled < kBins - 1.0f ? scaled : kBins - 1.0f;
    return static_cast<int>(scaled);
  } else {
    return sample / ((1 << (8 * sizeof(T))) / kBins);
  }
}

/// The largest radius: the counts of a window fit 32 bits.
inline constexpr int kMostBinRadius = 32767;

/// Pixels that are worked side by side.
inline constexpr int kBinLanes = 16;

/// Transposes a block of kRows rows and kColumns columns, both powers of 2. Each turn puts values
/// at even places before those at odd ones, which rotates the bits of a place's number by one;
/// log2(kColumns) turns bring the column's bits before the row's.
/// @return one of the two blocks, which holds the columns.
template <int kRows, int kColumns, class Value>
const Value* Transpose(Value* block, Value* spare) {
  constexpr int kHalf = kRows * kColumns / 2;
  for (int turns = 1; turns < kColumns; turns *= 2) {
    const Value* __restrict from = block;
    Value* __restrict to = spare;
    for (int i = 0; i < kHalf; i++) {
      to[i] = from[2 * i];
      to[kHalf + i] = from[2 * i + 1];
    }
    std::swap(block, spare);
  }
  return block;
}

/// The planes of a row, apart from each other by a distance.
template <class T, class Layout>
void SplitPlanes(const T* __restrict row, int64_t pixels, Layout layout, int64_t distance,
                 T* __restrict apart) {
  for (int64_t x = 0; x < pixels; x++) {
    for (int c = 0; c < layout.planes; c++) apart[c * distance + x] = row[x * layout.planes + c];
  }
}

/// And together again.
template <class T, class Layout>
void JoinPlanes(const T* __restrict apart, int64_t pixels, Layout layout, int64_t distance,
                T* __restrict row) {
  for (int64_t x = 0; x < pixels; x++) {
    for (int c = 0; c < layout.planes; c++) row[x * layout.planes + c] = apart[c * distance + x];
  }
}

/// What the bins give to pixels side by side, bin after bin.
struct BinMeans {
  alignas(64) float p[kBinLanes] = {}, num[kBinLanes] = {}, den[kBinLanes] = {};

  void Add(int l, float sum, float count, float inverse) {
    const float mean = sum / (count > 1.0f ? count : 1.0f);
    const float near = 1.0f - std::abs(mean - p[l]) * inverse;
    const float weight = near > 0.0f ? near : 0.0f;
    num[l] += sum * weight;
    den[l] += weight * count;
  }

  /// The results, mixed with the pixels.
  template <class T>
  [[gnu::always_inline]] void Mix(BinMix mix, T* __restrict out) const {
    for (int l = 0; l < kBinLanes; l++) {
      const float mixed = p[l] * mix.keep + num[l] / den[l] * mix.amount;
      out[l] = Rounded<T>(den[l] > 0.0f ? mixed : p[l]);
    }
  }
};

/// The blur of integer images. The columns of the window are cut into 16 runs, lanes, which lie
/// side by side in memory: histograms move along all lanes at once, each vector being one bin of 16
/// pixels. Each column has a histogram of its own, moved from row to row; a pixel's is the sum over
/// its columns, moved from pixel to pixel.
///
/// @tparam Word holds the sum and the count of a column's bin, or the sum of a window's without a
///              sign: of 32 bits up to kMostRadius, beyond it of 64.
template <class T, int kBins, class Word>
class LaneBlur {
 public:
  /// The largest radius whose sums and counts fit.
  static constexpr int kMostRadius =
      sizeof(Word) == 8 ? kMostBinRadius : (sizeof(T) == 1 ? 1450 : 90);

  /// @param rect what is blurred, not empty.
  LaneBlur(__QVImage* src, VRect rect, int radius, BinMix mix, Where where)
      : mMix(mix),
        mRadius(radius),
        mWidth(int64_t{rect.right} - rect.left),
        mColumns(mWidth + 2 * mRadius),
        mLength((mWidth + kBinLanes - 1) / kBinLanes),
        mStride(kBinLanes + (mLength - 1 + 2 * mRadius) / mLength),
        mSize(mLength * mStride),
        mApart(mSize + kBinLanes),
        mPlanes(QVImageGetNumPlanes(src)),
        mColors(mPlanes - QVImageGetTransparency(src)),
        mRows(src, int64_t{rect.left} - radius, mColumns, 2 * mRadius + 2, where, mPlanes * mSize,
              [this](const void* pixels, T* row) { Spread(static_cast<const T*>(pixels), row); }),
        mBins(mColors * kBins * mSize),
        mBlurred(mLength * kBinLanes),
        mPlaneRows(mPlanes * mApart),
        mFirst(rect.top) {}

  /// The result of row y, in order from the top.
  void Row(int64_t y, T* out) {
    Move(y);
    const T* base = mRows.Row(y);
    T* blurred = mBlurred.Get();
    T* apart = mPlaneRows.Get();
    for (int c = 0; c < mPlanes; c++) {
      if (c < mColors) {
        BlurPlane(mBins.Get() + c * kBins * mSize, base + c * mSize, blurred);
      } else {
        CopyPlane(base + c * mSize, blurred);
      }
      FromLanes(blurred, apart + c * mApart);
    }
    DispatchLayout(mPlanes, mPlanes - mColors,
                   [&](auto layout) { JoinPlanes(apart, mWidth, layout, mApart, out); });
  }

 private:
  // A column's bin is one word: the sum of its samples, and above it, from kCountShift on, their
  // count. So words that are added add up both. Windows' sums and counts are apart.
  using Sum = std::make_signed_t<Word>;
  static constexpr int kCountShift = sizeof(Word) == 8 ? 40 : (sizeof(T) == 1 ? 20 : 24);
  static constexpr Word kOne = Word{1} << kCountShift;
  static Sum SumOf(Word bin) { return static_cast<Sum>(bin & (kOne - 1)); }
  static Sum CountOf(Word bin) { return static_cast<Sum>(bin >> kCountShift); }

  static constexpr int kBlock = kBinLanes * kBinLanes;

  // Makes a row of the window: the planes apart and cut into lanes.
  void Spread(const T* pixels, T* row) {
    T* apart = mPlaneRows.Get();
    DispatchLayout(mPlanes, mPlanes - mColors,
                   [&](auto layout) { SplitPlanes(pixels, mColumns, layout, mApart, apart); });
    for (int c = 0; c < mPlanes; c++) ToLanes(apart + c * mApart, row + c * mSize);
  }

  // Cuts a plane's row into lanes.
  void ToLanes(const T* __restrict row, T* __restrict lanes) const {
    for (int64_t i = 0; i < mLength; i += kBinLanes) {
      alignas(64) T block[kBlock], spare[kBlock];
      for (int l = 0; l < kBinLanes; l++) {
        std::memcpy(block + l * kBinLanes, row + l * mLength + i, kBinLanes * sizeof(T));
      }
      const T* columns = Transpose<kBinLanes, kBinLanes>(block, spare);
      const int64_t most = std::min<int64_t>(mLength - i, kBinLanes);
      for (int64_t k = 0; k < most; k++) {
        std::memcpy(lanes + (i + k) * mStride, columns + k * kBinLanes, kBinLanes * sizeof(T));
      }
    }
    for (int64_t l = kBinLanes; l < mStride; l++) {
      for (int64_t i = 0; i < mLength; i++) lanes[i * mStride + l] = row[l * mLength + i];
    }
  }

  // Joins 16 lanes to a plane's row.
  void FromLanes(const T* __restrict lanes, T* __restrict row) const {
    for (int64_t i = 0; i < mLength; i += kBinLanes) {
      const int64_t most = std::min<int64_t>(mLength - i, kBinLanes);
      alignas(64) T block[kBlock] = {}, spare[kBlock];
      std::memcpy(block, lanes + i * kBinLanes, most * kBinLanes * sizeof(T));
      const T* columns = Transpose<kBinLanes, kBinLanes>(block, spare);
      for (int l = 0; l < kBinLanes; l++) {
        std::memcpy(row + l * mLength + i, columns + l * kBinLanes, most * sizeof(T));
      }
    }
  }

  // Brings the columns to the rows around y.
  void Move(int64_t y) {
    const int64_t last = y + mRadius;
    if (y == mFirst) {
      int64_t times;
      for (int64_t at = y - mRadius; at <= last; at += times) {
        times = mRows.Repeats(at, last);
        Exchange(mRows.Row(at), static_cast<Word>(times), nullptr);
      }
      return;
    }
    const T* entering = mRows.Row(last);
    const T* leaving = mRows.Row(y - mRadius - 1);
    if (entering != leaving) Exchange(entering, 1, leaving);
  }

  void Exchange(const T* entering, Word times, const T* leaving) {
    for (int c = 0; c < mColors; c++) {
      Word* bins = mBins.Get() + c * kBins * mSize;
      leaving ? ReplaceRow(entering + c * mSize, leaving + c * mSize, bins, mSize)
              : AddRow(entering + c * mSize, times, bins, mSize);
    }
  }

  static void AddRow(const T* __restrict row, Word times, Word* __restrict bins, int64_t size) {
    for (int64_t i = 0; i < size; i++)
      bins[BinOf<kBins>(row[i]) * size + i] += (row[i] | kOne) * times;
  }

  static void ReplaceRow(const T* __restrict entering, const T* __restrict leaving,
                         Word* __restrict bins, int64_t size) {
    for (int64_t i = 0; i < size; i++) {
      const Word in = entering[i] | kOne, out = leaving[i] | kOne;
      const int inBin = BinOf<kBins>(entering[i]), outBin = BinOf<kBins>(leaving[i]);
      for (int b = 0; b < kBins; b++) {
        bins[b * size + i] += (inBin == b ? in : 0) - (outBin == b ? out : 0);
      }
    }
  }

  void BlurPlane(const Word* __restrict bins, const T* __restrict base, T* __restrict out) const {
    // Of the window but for the column that enters next.
    alignas(64) Sum sums[kBins][kBinLanes] = {}, counts[kBins][kBinLanes] = {};
    Cursor entering(*this, 0), centre(*this, mRadius), leaving(*this, 0);
    for (int64_t i = 0; i < 2 * mRadius; i++, entering.Next()) {
      for (int b = 0; b < kBins; b++) {
        const Word* column = bins + b * mSize + entering.at;
        for (int l = 0; l < kBinLanes; l++) {
          sums[b][l] += SumOf(column[l]);
          counts[b][l] += CountOf(column[l]);
        }
      }
    }
    for (int64_t i = 0; i < mLength; i++, entering.Next(), centre.Next(), leaving.Next()) {
      BinMeans means;
      for (int l = 0; l < kBinLanes; l++) means.p[l] = static_cast<float>(base[centre.at + l]);
#pragma GCC unroll 8
      for (int b = 0; b < kBins; b++) {
        const Word* __restrict in = bins + b * mSize + entering.at;
        const Word* __restrict gone = bins + b * mSize + leaving.at;
        for (int l = 0; l < kBinLanes; l++) {
          const Sum sum = sums[b][l] + SumOf(in[l]), count = counts[b][l] + CountOf(in[l]);
          means.Add(l, static_cast<float>(sum), static_cast<float>(count), mMix.inverse);
          sums[b][l] = sum - SumOf(gone[l]);
          counts[b][l] = count - CountOf(gone[l]);
        }
      }
      means.Mix(mMix, out + i * kBinLanes);
    }
  }

  void CopyPlane(const T* __restrict base, T* __restrict out) const {
    Cursor centre(*this, mRadius);
    for (int64_t i = 0; i < mLength; i++, centre.Next()) {
      std::memcpy(out + i * kBinLanes, base + centre.at, kBinLanes * sizeof(T));
    }
  }

  // Walks along the columns.
  struct Cursor {
    int64_t length, stride, row, at;

    Cursor(const LaneBlur& blur, int64_t column)
        : length(blur.mLength),
          stride(blur.mStride),
          row(column % length),
          at(row * stride + column / length) {}

    void Next() {
      at += stride;
      if (++row < length) return;
      row = 0;
      at -= length * stride - 1;
    }
  };

  BinMix mMix;
  int64_t mRadius, mWidth;
  int64_t mColumns;  // of all windows
  int64_t mLength;   // columns of a lane
  // Lanes. Windows of the 16th reach 2 * mRadius columns past its end; those are cut into lanes
  // too, as many as they fill or begin.
  int64_t mStride;
  int64_t mSize;   // of a plane
  int64_t mApart;  // the same for planes not cut into lanes, with room for whole blocks
  int mPlanes, mColors;
  RowWindow<T> mRows;  // those of a window, and the one that has left it
  Buffer<Word> mBins;
  Buffer<T> mBlurred;  // of one plane, in lanes
  // A row, its planes apart. Rows of the source come in through it before a result goes out.
  Buffer<T> mPlaneRows;
  int64_t mFirst;
};

/// The blur of float images. A histogram moves along each row, and those of the rows of a window
/// are added up for each of its pixels, moved from row to row.
template <int kBins>
class FloatBlur {
 public:
  FloatBlur(__QVImage* src, VRect rect, int radius, BinMix mix, Where where)
      : mMix(mix),
        mRadius(radius),
        mWidth(int64_t{rect.right} - rect.left),
        mColumns(mWidth + 2 * mRadius),
        mPlanes(QVImageGetNumPlanes(src)),
        mColors(mPlanes - QVImageGetTransparency(src)),
        mRows(src, int64_t{rect.left} - radius, mColumns, 2 * mRadius + 1, where,
              mColumns * mPlanes,
              [this](const void* pixels, float* row) {
                DispatchLayout(mPlanes, mPlanes - mColors, [&](auto layout) {
                  SplitPlanes(static_cast<const float*>(pixels), mColumns, layout, mColumns, row);
                });
              }),
        mEnteringBins(mColumns * mColors),
        mLeavingBins(mColumns * mColors),
        mWindows(mWidth * mColors),
        mPlaneRows(mWidth * mPlanes),
        mFirst(rect.top) {}

  void Row(int64_t y, float* out) {
    if (y == mFirst) Prime(y);
    const float* entering = mRows.Row(y + mRadius);
    const float* base = mRows.Row(y) + mRadius;
    const float* leaving = mRows.Row(y - mRadius);
    Bin(entering, mEnteringBins);
    Bin(leaving, mLeavingBins);
    float* apart = mPlaneRows.Get();
    for (int c = 0; c < mPlanes; c++) {
      const int64_t at = c * mColumns;
      if (c < mColors) {
        BlurPlane({entering + at, mEnteringBins.Get() + at},
                  {leaving + at, mLeavingBins.Get() + at}, base + at, mWindows.Get() + c * mWidth,
                  apart + c * mWidth);
      } else {
        std::memcpy(apart + c * mWidth, base + at, mWidth * sizeof(float));
      }
    }
    DispatchLayout(mPlanes, mPlanes - mColors,
                   [&](auto layout) { JoinPlanes(apart, mWidth, layout, mWidth, out); });
  }

 private:
  // One value for each bin. As plain loops over the bins, what follows takes three times as long.
  typedef float Floats __attribute__((vector_size(4 * kBins)));
  typedef int Ints __attribute__((vector_size(4 * kBins)));
  typedef uint32_t Counts __attribute__((vector_size(4 * kBins)));

  static constexpr int kBinNumbers[8] = {0, 1, 2, 3, 4, 5, 6, 7};

  struct Group {
    Floats sums;
    Counts counts;

    void operator+=(const Group& other) {
      sums += other.sums;
      counts += other.counts;
    }
    void operator-=(const Group& other) {
      sums -= other.sums;
      counts -= other.counts;
    }
  };

  // The columns of a plane's row, and the bin of each.
  struct BinnedRow {
    const float* samples;
    const int* bins;
  };

  void Bin(const float* __restrict row, Buffer<int>& bins) const {
    int* __restrict to = bins.Get();
    for (int64_t i = 0; i < mColumns * mColors; i++) to[i] = BinOf<kBins>(row[i]);
  }

  // The histogram of one sample.
  static Group One(BinnedRow row, int64_t x) {
    Ints here;
    std::memcpy(&here, kBinNumbers, sizeof here);
    here = here == row.bins[x];  // -1 where it is so
    return {here ? row.samples[x] - Floats{} : Floats{}, Counts{} - (Counts)here};
  }

  // The histogram of the first pixel of a row.
  Group Start(BinnedRow row) const {
    Group group = {};
    for (int64_t x = 0; x <= 2 * mRadius; x++) group += One(row, x);
    return group;
  }

  // Brings the windows to the rows above the one that enters with row y.
  void Prime(int64_t y) {
    const int64_t last = y + mRadius - 1;
    int64_t times;
    for (int64_t at = y - mRadius; at <= last; at += times) {
      times = mRows.Repeats(at, last);
      AddRow(mRows.Row(at), times);
    }
  }

  // Sums grow sample by sample, as rows that differ make them.
  void AddRow(const float* samples, int64_t times) {
    Bin(samples, mEnteringBins);
    for (int c = 0; c < mColors; c++) {
      const BinnedRow row = {samples + c * mColumns, mEnteringBins.Get() + c * mColumns};
      Group* windows = mWindows.Get() + c * mWidth;
      Group group = Start(row);
      for (int64_t x = 0; x < mWidth; x++) {
        for (int64_t i = 0; i < times; i++) windows[x] += group;
        if (x + 1 == mWidth) break;
        group -= One(row, x);
        group += One(row, x + 2 * mRadius + 1);
      }
    }
  }

  void BlurPlane(BinnedRow entering, BinnedRow leaving, const float* base,
                 Group* __restrict windows, float* __restrict out) const {
    const int64_t next = 2 * mRadius + 1;
    Group in = Start(entering), gone = Start(leaving);
    constexpr int kBlock = kBinLanes * kBins;
    alignas(64) float sums[kBlock] = {}, spareSums[kBlock], result[kBinLanes];
    alignas(64) uint32_t counts[kBlock] = {}, spareCounts[kBlock];
    for (int64_t left = 0; left < mWidth; left += kBinLanes) {
      const int pixels = static_cast<int>(std::min<int64_t>(mWidth - left, kBinLanes));
      for (int l = 0; l < pixels; l++) {
        const int64_t x = left + l;
        Group window = windows[x];
        window += in;
        std::memcpy(sums + l * kBins, &window.sums, sizeof window.sums);
        std::memcpy(counts + l * kBins, &window.counts, sizeof window.counts);
        window -= gone;
        windows[x] = window;
        if (x + 1 == mWidth) break;
        in -= One(entering, x);
        in += One(entering, x + next);
        gone -= One(leaving, x);
        gone += One(leaving, x + next);
      }
      const float* binSums = Transpose<kBinLanes, kBins>(sums, spareSums);
      const uint32_t* binCounts = Transpose<kBinLanes, kBins>(counts, spareCounts);
      BinMeans means;
      std::memcpy(means.p, base + left, sizeof means.p);
#pragma GCC unroll 8
      for (int b = 0; b < kBins; b++) {
        for (int l = 0; l < kBinLanes; l++) {
          const auto count = static_cast<float>(binCounts[b * kBinLanes + l]);
          means.Add(l, binSums[b * kBinLanes + l], count, mMix.inverse);
        }
      }
      means.Mix(mMix, result);
      for (int l = 0; l < pixels; l++) out[left + l] = result[l];
    }
  }

  BinMix mMix;
  int64_t mRadius, mWidth;
  int64_t mColumns;  // of all windows
  int mPlanes, mColors;
  RowWindow<float> mRows;  // their planes apart
  Buffer<int> mEnteringBins, mLeavingBins;
  Buffer<Group> mWindows;    // between the rows: without the row that enters next
  Buffer<float> mPlaneRows;  // the result of a row, its planes apart
  int64_t mFirst;
};

}  // namespace qv
