// SPDX-License-Identifier: Apache-2.0
// The median of a large square window from histograms: of the window's columns at 8 bits, of the
// window itself at 16 bits.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "Buffer.h"
#include "Samples.h"

namespace qv {

/// What histograms are told beforehand of a row of medians.
struct MedianRow {
  int64_t radius;
  int planes;         ///< samples from one pixel to the next
  int colors;         ///< of them; medians of others aren't needed
  ptrdiff_t samples;  ///< at most so many are asked for
  /// Columns of the first window that lie left and right of the image: those on a side are the
  /// same.
  int64_t before, after;
};

/// Histograms of columns, kept up from row to row. For each value the counts of neighbouring
/// columns lie side by side, so that windows are summed, and their sums followed up to the median,
/// many at a time. Sixteen values together decide first; of the values themselves only those are
/// followed that some median of the strip may be. The time hardly depends on the radius as long as
/// rows are longer than windows.
/// @tparam Count holds the number of samples of a window.
template <class Count>
class ColumnHistograms {
 public:
  explicit ColumnHistograms(const MedianRow& row)
      : mSize(2 * row.radius + 1),
        mPlanes(row.planes),
        mMargin(2 * row.radius * row.planes),
        mStrip(Whole(std::min(std::max<ptrdiff_t>(mMargin, 512), row.samples))),
        // An odd number of cache lines: the counts of a column then lie in different cache sets.
        mStride(Whole(mStrip + mMargin) + 64 + 64 / sizeof(Count)),
        mColumns(kBins * mStride),
        mSpans((kSpans + 2) * mStride),
        mSeen(mStrip),
        mBelow(mStrip),
        mCoarse(mStrip),
        mFine(mStrip) {}

  /// Rows and samples of a row that are best asked for at once: each strip of them starts by
  /// counting whole columns.
  static int64_t Band() { return 64; }
  static ptrdiff_t Strip() { return PTRDIFF_MAX; }

  /// Medians of some rows.
  /// @param rows    those that the first window covers, from its left edge on, and one more for
  ///                each further row of medians.
  /// @param samples of a row of medians.
  /// @param count   rows of medians.
  /// @param out     the first row; they are `stride` samples apart.
  void Medians(const uchar* const* rows, ptrdiff_t samples, int64_t count, uchar* out,
               ptrdiff_t stride) {
    for (ptrdiff_t start = 0; start < samples; start += mStrip) {
      const ptrdiff_t some = std::min(mStrip, samples - start), columns = some + mMargin;
      std::memset(mColumns.Get(), 0, kBins * mStride * sizeof(Count));
      for (int64_t i = 0, same; i < mSize; i += same) {
        for (same = 1; i + same < mSize && rows[i + same] == rows[i];) same++;
        Add(rows[i] + start, columns, static_cast<Count>(same));
      }
      for (int64_t y = 0; y < count; y++) {
        if (y > 0 && rows[y - 1] != rows[y - 1 + mSize]) {
          Add(rows[y - 1] + start, columns, static_cast<Count>(-1));
          Add(rows[y - 1 + mSize] + start, columns, 1);
        }
        Follow(some, out + y * stride + start);
      }
    }
  }

 private:
  // Sixteen coarse bins, then one for each value.
  static constexpr ptrdiff_t kCoarse = 16, kBins = kCoarse + 256;
  static constexpr int kSpans = 8;  // of 1, 4, 16 columns and so on; a size is below 4^8

  // Loops run over whole vectors; what they compute past the end nobody reads.
  static constexpr ptrdiff_t Whole(ptrdiff_t count) { return (count + 63) / 64 * 64; }

  void Add(const uchar* row, ptrdiff_t columns, Count weight) {
    Count* const coarse = mColumns.Get();
    Count* const fine = coarse + kCoarse * mStride;
    const ptrdiff_t stride = mStride;
    for (ptrdiff_t i = 0; i < columns; i++) {
      coarse[(row[i] >> 4) * stride + i] += weight;
      fine[row[i] * stride + i] += weight;
    }
  }

  void Follow(ptrdiff_t count, uchar* out) {
    const auto half = static_cast<Count>(static_cast<uint64_t>(mSize) * mSize / 2);
    const Count* columns = mColumns.Get();
    Count* const coarse = mCoarse.Get();
    std::fill_n(mSeen.Get(), count, Count{0});
    std::fill_n(mBelow.Get(), count, Count{0});
    std::fill_n(coarse, count, Count{0});
    for (int bin = 0; bin < 15; bin++) {
      FollowBin(Sum(columns + bin * mStride, count), count, half, mSeen.Get(), coarse,
                mBelow.Get());
    }
    // Where each group of values is needed.
    std::array<ptrdiff_t, 16> first, end = {};
    for (ptrdiff_t i = count; i-- > 0;) first[coarse[i]] = i;
    for (ptrdiff_t i = 0; i < count; i++) end[coarse[i]] = i + 1;
    for (int group = 0; group < 16; group++) {
      if (end[group] == 0) continue;
      const ptrdiff_t start = first[group] / 64 * 64, some = end[group] - start;
      std::copy_n(mBelow.Get() + start, some, mSeen.Get());
      std::fill_n(mFine.Get(), some, static_cast<Count>(16 * group));
      for (int bin = 0; bin < 15; bin++) {
        const Count* values = columns + (kCoarse + 16 * group + bin) * mStride + start;
        FollowBin(Sum(values, some), some, half, mSeen.Get(), mFine.Get());
      }
      Pick(coarse + start, static_cast<Count>(group), mFine.Get(), some, out + start);
    }
  }

  // Three rows of counts that add up to those of windows.
  using Terms = std::array<const Count*, 3>;

  // Has `place` go on where up to this bin no more than half of the window is seen. `below` is what
  // was seen before the place.
  static void FollowBin(Terms terms, ptrdiff_t count, Count half, Count* __restrict seen,
                        Count* __restrict place, Count* __restrict below) {
    for (ptrdiff_t i = 0; i < Whole(count); i++) {
      seen[i] = static_cast<Count>(seen[i] + terms[0][i] + terms[1][i] + terms[2][i]);
      place[i] = static_cast<Count>(place[i] + (seen[i] <= half));
      below[i] = seen[i] <= half ? seen[i] : below[i];
    }
  }

  static void FollowBin(Terms terms, ptrdiff_t count, Count half, Count* __restrict seen,
                        Count* __restrict place) {
    for (ptrdiff_t i = 0; i < Whole(count); i++) {
      seen[i] = static_cast<Count>(seen[i] + terms[0][i] + terms[1][i] + terms[2][i]);
      place[i] = static_cast<Count>(place[i] + (seen[i] <= half));
    }
  }

  static void Pick(const Count* __restrict coarse, Count group, const Count* __restrict fine,
                   ptrdiff_t count, uchar* __restrict out) {
    for (ptrdiff_t i = 0; i < count; i++) {
      out[i] = coarse[i] == group ? static_cast<uchar>(fine[i]) : out[i];
    }
  }

  // The counts over as many columns as a window has, from each place on, from those over one
  // column, 4, 16 and so on.
  Terms Sum(const Count* columns, ptrdiff_t count) {
    std::array<const Count*, 3 * kSpans + 1> terms;  // of each span up to three
    size_t last = 0;
    const Count* from = columns;
    Count* to = mSpans.Get();
    ptrdiff_t at = 0;
    for (int64_t span = 1;; span *= 4, from = to, to += mStride) {
      for (int64_t i = mSize / span % 4; i > 0; i--, at += span * mPlanes)
        terms[last++] = from + at;
      if (4 * span > mSize) break;
      AddFour(from, span * mPlanes, Whole(count + mMargin - (4 * span - 1) * mPlanes), to);
    }
    const Count* const none = mSpans.Get() + (kSpans - 1) * mStride;
    while (last < 3 || last % 2 == 0) terms[last++] = none;
    Count* const sums[] = {mSpans.Get() + kSpans * mStride, mSpans.Get() + (kSpans + 1) * mStride};
    for (int i = 0; last > 3; i++, last -= 2) {
      AddThree({terms[last - 1], terms[last - 2], terms[last - 3]}, Whole(count), sums[i % 2]);
      terms[last - 3] = sums[i % 2];
    }
    return {terms[0], terms[1], terms[2]};
  }

  static void AddFour(const Count* from, ptrdiff_t apart, ptrdiff_t count, Count* __restrict to) {
    for (ptrdiff_t i = 0; i < count; i++) {
      to[i] =
          static_cast<Count>(from[i] + from[i + apart] + from[i + 2 * apart] + from[i + 3 * apart]);
    }
  }

  static void AddThree(Terms terms, ptrdiff_t count, Count* __restrict to) {
    for (ptrdiff_t i = 0; i < count; i++) {
      to[i] = static_cast<Count>(terms[0][i] + terms[1][i] + terms[2][i]);
    }
  }

  int64_t mSize;
  ptrdiff_t mPlanes, mMargin, mStrip, mStride;
  Buffer<Count> mColumns;
  Buffer<Count> mSpans;  // over 4 columns, 16 and so on; zeros; two rows of sums
  Buffer<Count> mSeen, mBelow, mCoarse, mFine;
};

/// A histogram that slides along a row: a column leaves, a column enters, and the median is looked
/// for from where it was.
/// @tparam Count holds the number of samples of a window.
template <class Count>
class SlidingHistogram {
 public:
  explicit SlidingHistogram(const MedianRow& row)
      : mSize(2 * row.radius + 1), mPlanes(row.planes), mColors(row.colors), mBins(kBins) {
    for (int64_t x = 0, same; x < mSize; x += same) {
      same = x < row.before ? row.before - x : (x >= mSize - row.after ? mSize - x : 1);
      mColumns.push_back({x * mPlanes, static_cast<Count>(same)});
    }
  }

  static int64_t Band() { return 1; }
  static ptrdiff_t Strip() { return PTRDIFF_MAX; }

  /// As of ColumnHistograms.
  void Medians(const ushort* const* rows, ptrdiff_t samples, int64_t count, ushort* out,
               ptrdiff_t stride) {
    for (int64_t y = 0; y < count; y++) Row(rows + y, samples, out + y * stride);
  }

 private:
  void Row(const ushort* const* rows, ptrdiff_t samples, ushort* out) {
    mRows.clear();
    for (int64_t i = 0, same; i < mSize; i += same) {
      for (same = 1; i + same < mSize && rows[i + same] == rows[i];) same++;
      mRows.push_back({rows[i], static_cast<Count>(same)});
    }
    for (int plane = 0; plane < mColors; plane++) {
      std::memset(mBins.Get(), 0, kBins * sizeof(Count));
      mStart = 0;
      mBelow = 0;
      for (const Run& run : mRows) {
        for (const auto& [at, weight] : mColumns) {
          mBins.Get()[run.row[plane + at]] += static_cast<Count>(run.weight * weight);
        }
      }
      out[plane] = Median();
      for (ptrdiff_t i = plane + mPlanes; i < samples; i += mPlanes) {
        Slide(i - mPlanes, i + (mSize - 1) * mPlanes);
        out[i] = Median();
      }
    }
  }

  static constexpr int kBins = 65536, kBlock = 256;

  // Rows above and below the image are the same, as are columns beside it: they count at once.
  struct Run {
    const ushort* row;
    Count weight;
  };
  struct Columns {
    ptrdiff_t at;
    Count weight;
  };

  void Slide(ptrdiff_t leaves, ptrdiff_t enters) {
    Count* const bins = mBins.Get();
    const int start = mStart;
    Count below = mBelow;
    for (const Run& run : mRows) {
      const ushort old = run.row[leaves], fresh = run.row[enters];
      bins[old] -= run.weight;
      bins[fresh] += run.weight;
      below -= old < start ? run.weight : 0;
      below += fresh < start ? run.weight : 0;
    }
    mBelow = below;
  }

  template <int kCount>
  Count Sum(int first) const {
    const Count* bins = mBins.Get() + first;
    Count sum = 0;
    for (int i = 0; i < kCount; i++) sum += bins[i];
    return sum;
  }

  ushort Median() {
    const auto half = static_cast<Count>(static_cast<uint64_t>(mSize) * mSize / 2);
    while (mBelow > half) mBelow -= Sum<kBlock>(mStart -= kBlock);
    for (Count sum; (sum = Sum<kBlock>(mStart)) <= half - mBelow; mStart += kBlock) mBelow += sum;
    int value = mStart;
    Count left = half - mBelow;  // the median is the first value that takes more
    for (Count sum; (sum = Sum<16>(value)) <= left; value += 16) left -= sum;
    for (; mBins.Get()[value] <= left; value++) left -= mBins.Get()[value];
    return static_cast<ushort>(value);
  }

  int64_t mSize;
  ptrdiff_t mPlanes, mColors;
  Buffer<Count> mBins;
  std::vector<Run> mRows;
  std::vector<Columns> mColumns;  // of the first window
  int mStart = 0;                 // of a block of bins
  Count mBelow = 0;               // samples below it
};

template <class T, class Count>
using MedianHistogram =
    std::conditional_t<sizeof(T) == 1, ColumnHistograms<Count>, SlidingHistogram<Count>>;

}  // namespace qv
