// SPDX-License-Identifier: Apache-2.0
// Curves: tables that map each level of a sample, made, joined, resized and applied.
#include <QVEffects/QVEffectsCurves.h>

#include <functional>

#include "Utils/LookUp.h"
#include "Utils/QVEffectsUtils.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsCurves";

constexpr int kLevels = 256;

// ---- A position in a curve

// Between two levels, the last but one at most. Positions below 0 go on from level 0, as does NaN.
int LevelBelow(float position) {
  const float low = position > 0.0f ? position : 0.0f;
  const float held = low < 254.0f ? low : 254.0f;
  return static_cast<int>(held);
}

float Between(float below, float above, float part) { return part * above + (1.0f - part) * below; }

// What the samples of a type are multiplied with to become positions.
template <class T>
constexpr float kToPosition = 1.0f;
template <>
constexpr float kToPosition<ushort> = 0.0038910506f;
template <>
constexpr float kToPosition<float> = 255.0f;

// ---- How much of the curve goes into the result

template <class T>
struct Mix {
  float ofSample, ofCurve;  // on the scale of the sample

  explicit Mix(float amount)
      : ofSample(amount >= 1.0f ? 0.0f : 1.0f - amount),
        ofCurve(amount >= 1.0f ? qv::Sample<T>::kMax : amount * qv::Sample<T>::kMax) {}
  bool IsWhole() const { return ofSample == 0.0f; }
};

// ---- Rows

// Where samples lie between levels is found for many at once, then the two levels of each are
// fetched, then all are mixed at once.
template <class T>
struct Interpolation {
  struct Pair {
    float below, above;
  };
  static constexpr int kChunk = 768;
  static constexpr int kMostPlanes = qv::kChunkBytes / sizeof(T);

  const float* curves;
  Mix<T> mix;
  int level[kMostPlanes];
  float part[kMostPlanes];
  Pair pairs[kMostPlanes] = {};

  Interpolation(const float* theCurves, Mix<T> aMix) : curves(theCurves), mix(aMix) {}

  template <class Layout>
  void operator()(const T* in, T* out, int pixels, Layout layout) {
    const int most = std::max(kChunk / layout.planes, 1);
    for (int at = 0; at < pixels; at += most) {
      const ptrdiff_t first = ptrdiff_t{at} * layout.planes;
      MapChunk(in + first, out + first, std::min(pixels - at, most), layout);
    }
  }

  // in and out may be the same where there is no transparency.
  template <class Layout>
  void MapChunk(const T* in, T* out, int pixels, Layout layout) {
    const int samples = pixels * layout.planes;
    for (int i = 0; i < samples; i++) {
      const float position = static_cast<float>(in[i]) * kToPosition<T>;
      level[i] = LevelBelow(position);
      part[i] = position - static_cast<float>(level[i]);
    }
    for (int i = 0; i < pixels; i++) {
      for (int c = 0; c < layout.colors; c++) {
        const int at = i * layout.planes + c;
        std::memcpy(&pairs[at], curves + ptrdiff_t{c} * kLevels + level[at], sizeof(Pair));
      }
    }
    const auto [ofSample, ofCurve] = mix;
    if (mix.IsWhole()) {
      for (int i = 0; i < samples; i++) {
        out[i] = qv::Rounded<T>(Between(pairs[i].below, pairs[i].above, part[i]) * ofCurve);
      }
    } else {
      for (int i = 0; i < samples; i++) {
        const float value = Between(pairs[i].below, pairs[i].above, part[i]) * ofCurve;
        out[i] = qv::Rounded<T>(static_cast<float>(in[i]) * ofSample + value);
      }
    }
    if (layout.colors == layout.planes) return;
    for (int i = 0; i < pixels; i++) {
      for (int c = layout.colors; c < layout.planes; c++) {
        out[i * layout.planes + c] = in[i * layout.planes + c];
      }
    }
  }
};

// The result for every sample that there is.
void MakeTable(const float* curve, Mix<uchar> mix, uchar* table) {
  for (int s = 0; s < kLevels; s++) {
    const float value = curve[s] * mix.ofCurve;
    table[s] =
        qv::Rounded<uchar>(mix.IsWhole() ? value : static_cast<float>(s) * mix.ofSample + value);
  }
}

void MakeTable(const float* curve, Mix<ushort> mix, ushort* table) {
  for (int s = 0; s <= 0xffff; s++) table[s] = static_cast<ushort>(s);
  Interpolation<ushort>(curve, mix)(table, table, 0x10000, qv::FixedLayout<1, 0>());
}

bool AreAlike(const float* curves, int colors) {
  for (int c = 1; c < colors; c++) {
    const float* other = curves + ptrdiff_t{c} * kLevels;
    if (std::memcmp(other, curves, kLevels * sizeof(float)) != 0) return false;
  }
  return true;
}

template <class T>
int ApplyCurves(__QVImage* src, __QVImage* dst, VRect rect, const float* curves, Mix<T> mix) {
  const int colors = QVImageGetNumPlanes(dst) - QVImageGetTransparency(dst);
  if (colors < 1) return kQVStatusUnsupported;
  if constexpr (!std::is_floating_point_v<T>) {
    // Tables of 8 bits all stay in the first cache.
    const int tables = sizeof(T) > 1 && AreAlike(curves, colors) ? 1 : colors;
    if (qv::IsWorthTables<T>(dst, rect, tables)) {
      const qv::LookUp<T> row(tables, [&](int plane, T* table) {
        MakeTable(curves + ptrdiff_t{plane} * kLevels, mix, table);
      });
      return qv::MapRows<T>(kSource, src, dst, rect, std::cref(row));
    }
  }
  Interpolation<T> row(curves, mix);
  return qv::MapRows<T>(kSource, src, dst, rect, std::ref(row));
}

}  // namespace

int QVEffectsApplyCurvesWithAmount(__QVImage* src, __QVImage* dst, QVRect rect, const float* curves,
                                   float amount) {
  if (amount <= 0.0f) return CopyImage(src, dst, MakeVRect(rect), QVPointMake(0, 0));
  if (!src || !dst || !curves) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(src) * 8, [&]<class T>() -> int {
      if (!qv::HaveSamePixels(src, dst)) return kQVStatusUnsupported;
      return ApplyCurves<T>(src, dst, MakeVRect(rect), curves, Mix<T>(amount));
    });
  });
}

int QVEffectsApplyCurves(__QVImage* src, __QVImage* dst, QVRect rect, const float* curves) {
  return QVEffectsApplyCurvesWithAmount(src, dst, rect, curves, 1.0f);
}

int QVEffectsInitCurves(int planes, float* curves) {
  if (planes <= 0) return kQVStatusSuccess;
  if (!curves) return kQVStatusBadArgument;
  for (int p = 0; p < planes; p++, curves += kLevels) {
    for (int l = 0; l < kLevels; l++) curves[l] = static_cast<float>(l) / 255.0f;
  }
  return kQVStatusSuccess;
}

int QVEffectsConcatCurves(int planes, const float* first, const float* second, float* result) {
  if (planes <= 0) return kQVStatusSuccess;
  if (!first || !second || !result) return kQVStatusBadArgument;
  for (int p = 0; p < planes; p++, first += kLevels, second += kLevels, result += kLevels) {
    for (int l = 0; l < kLevels; l++) {
      const float position = first[l] * 255.0f;
      const int below = LevelBelow(position);
      result[l] = Between(second[below], second[below + 1], position - static_cast<float>(below));
    }
  }
  return kQVStatusSuccess;
}

int QVEffectsResizeCurve(int inputLength, const float* input, int outputLength, float* output) {
  if (!input || !output || inputLength < 1 || outputLength < 1) return kQVStatusBadArgument;
  const int last = inputLength - 1;
  const float step = static_cast<float>(last) / static_cast<float>(outputLength - 1);
  for (int j = 0; j < outputLength - 1; j++) {
    const float position = static_cast<float>(j) * step;
    // Rounding may reach the end of long curves before the last entry.
    const int below =
        static_cast<int>(std::min(static_cast<int64_t>(position), int64_t{std::max(last - 1, 0)}));
    output[j] = (position - static_cast<float>(below)) * input[std::min(below + 1, last)] +
                (static_cast<float>(below + 1) - position) * input[below];
  }
  output[outputLength - 1] = input[last];
  return kQVStatusSuccess;
}
