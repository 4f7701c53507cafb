// SPDX-License-Identifier: Apache-2.0
// Black and white, and the mixing of channels. Rows are worked in strips, on the samples' scale.
#include <QVEffects/QVEffectsBlackAndWhite.h>

#include <array>
#include <cmath>

#include "Utils/GrayRows.h"
#include "Utils/ToneCurves.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsBlackAndWhite";

using qv::Color3;
using qv::kStripPixels;
using qv::Stretch;
using qv::Strip;
using qv::Zones;

// ---- Formulas

float WeightedSum(Color3 c, Color3 by) { return by.x * c.x + by.y * c.y + by.z * c.z; }

// A sample on its own scale divided by full scale. For integers two products whose sum is rounded
// like the quotient: 1 / max is 1 / (max + 1), by which division is exact, and a little more.
template <class T, class Value>
Value Divided(Value sample) {
  if constexpr (std::is_floating_point_v<T>) {
    return sample;
  } else {
    constexpr double kMax = static_cast<double>(qv::Sample<T>::kMax);
    constexpr float kShift = static_cast<float>(1.0 / (kMax + 1.0));
    constexpr float kRest = static_cast<float>(1.0 / kMax - 1.0 / (kMax + 1.0));
    return sample * kShift + sample * kRest;
  }
}

// Luma of samples, on their own scale.
template <class T, class Value>
Value LumaOf(Value r, Value g, Value b) {
  return qv::Luma(Divided<T>(r), Divided<T>(g), Divided<T>(b)) * qv::Sample<T>::kMax;
}

// Held to a range; NaN stays.
float Held(float value, float low, float high) {
  return value > high ? high : (value < low ? low : value);
}

// A sample with a colour laid over; what counts as dark is rounded up at 8 and 16 bits.
template <class T>
float OverlaidWith(float v, float color) {
  constexpr float kMax = qv::Sample<T>::kMax;
  constexpr float kHalf = std::is_floating_point_v<T> ? 0.5f : (kMax + 1.0f) * 0.5f;
  const float dark = 2.0f * v * color;
  const float light = 2.0f * (color * kMax + v - v * color) - kMax;
  return v < kHalf ? dark : light;
}

// What tones grays, and how much of it is seen.
struct Toner {
  qv::Tone tone;
  float amount;

  Color3 operator()(float y) const {
    const auto [strength, white] = tone.At(y);
    const auto component = [=, by = amount](float t) {
      return t * strength * by + y * (1.0f - by) + white * by;
    };
    return {component(tone.color.x), component(tone.color.y), component(tone.color.z)};
  }
};

// ---- Stages on strips

template <class T>
void MakeLuma(Strip& strip, int colors, int pixels) {
  static constexpr float kNone[kStripPixels] = {};
  const float* __restrict r = strip[0];
  const float* __restrict g = colors > 1 ? strip[1] : kNone;
  const float* __restrict b = colors > 2 ? strip[2] : kNone;
  float gray[kStripPixels];
  const int count = qv::WholeVectors(pixels);
  for (int i = 0; i < count; i++) gray[i] = LumaOf<T>(r[i], g[i], b[i]);
  for (int c = 0; c < colors; c++) std::copy_n(gray, count, strip[c]);
}

void MakeMean(Strip& strip, int colors, int pixels) {
  const int count = qv::WholeVectors(pixels);
  float* __restrict sum = strip[0];
  for (int c = 1; c < colors; c++) {
    const float* __restrict plane = strip[c];
    for (int i = 0; i < count; i++) sum[i] = sum[i] + plane[i];
  }
  const auto planes = static_cast<float>(colors);
  for (int i = 0; i < count; i++) sum[i] = sum[i] / planes;
  for (int c = 1; c < colors; c++) std::copy_n(sum, count, strip[c]);
}

void Filter(Strip& strip, const float* weights, int colors, int pixels) {
  const int count = qv::WholeVectors(pixels);
  float* __restrict sum = strip[0];
  for (int i = 0; i < count; i++) sum[i] = sum[i] * weights[0];
  for (int c = 1; c < colors; c++) {
    const float* __restrict plane = strip[c];
    for (int i = 0; i < count; i++) sum[i] = sum[i] + plane[i] * weights[c];
  }
  for (int c = 1; c < colors; c++) std::copy_n(sum, count, strip[c]);
}

// Makes each pixel's first three samples from themselves.
template <class Formula>
void MapColors(Strip& strip, int pixels, Formula formula) {
  const int count = qv::WholeVectors(pixels);
  float* __restrict r = strip[0], * __restrict g = strip[1], * __restrict b = strip[2];
  for (int i = 0; i < count; i++) {
    const Color3 c = formula(Color3{r[i], g[i], b[i]});
    r[i] = c.x;
    g[i] = c.y;
    b[i] = c.z;
  }
}

// ---- Rows

// For stages, as stage(strip, pixels), that change all colour planes.
template <class T, class Stage>
void MapAll(__QVImage* src, __QVImage* dst, QVRect rect, Stage stage) {
  qv::WalkColors<T>(kSource, src, dst, MakeVRect(rect), qv::FurtherPlanes::kOfSrc,
                    [&](Strip& strip, Stretch at) { stage(strip, at.pixels); });
}

// For those that change the first three at most.
template <class T, class Stage>
void MapThree(__QVImage* src, __QVImage* dst, QVRect rect, Stage stage) {
  qv::WalkColors<T>(kSource, src, dst, MakeVRect(rect), qv::WithTransparency(dst),
                    [&](Strip& strip, Stretch at) { stage(strip, at.pixels); });
}

// For formulas of three colours, see WalkGrays().
template <class T, class Formula>
void MakeGray(__QVImage* src, __QVImage* dst, QVRect rect, Formula formula) {
  qv::WalkGrays<T>(kSource, src, dst, MakeVRect(rect), qv::WithTransparency(dst), formula);
}

// ---- Film

// The tile, row by row as strips need it.
class Grain {
 public:
  static constexpr int kSize = 256;
  static_assert(kSize == kStripPixels, "all strips of a row take the same part of the tile");

  Grain(__QVImage* image, qv::LoadStrip load)
      : mAccess(image, nullptr),
        mLoad(load),
        mSamples(static_cast<const std::byte*>(
            qv::Required(mAccess.ReadRect({0, 0, kSize, kSize}, mStride), kSource))) {}

  /// The samples from a place of the image on.
  const Strip& From(int x, int y) {
    const int column = x & (kSize - 1), row = y & (kSize - 1);
    if (column == mColumn && row == mRow) return mStrip;
    mColumn = column;
    mRow = row;
    mLoad(mSamples + ptrdiff_t{row} * mStride, 1, kSize, mLoaded);
    std::rotate_copy(mLoaded[0], mLoaded[0] + column, mLoaded[0] + kSize, mStrip[0]);
    return mStrip;
  }

 private:
  QVImageAccess mAccess;
  qv::LoadStrip mLoad;
  int mStride = 0;
  const std::byte* mSamples;
  int mColumn = -1, mRow = -1;  // of what is in mStrip
  Strip mLoaded, mStrip;
};

struct Film {
  Color3 weights;  // for samples on their own scale
  float contrast;
  float grainAmount;
  Toner toner;
  qv::BlendStrip overlay = qv::FindBlendStrip(kQVBlendModeOverlay);
};

struct GrayStrips {
  Strip gray, overlaid;
};

void LayOver(const Film& film, const Strip& grain, GrayStrips& strips, int pixels) {
  film.overlay(grain, strips.gray, strips.overlaid, 1, pixels);
  const int count = qv::WholeVectors(pixels);
  const float amount = film.grainAmount;
  const float* __restrict f = strips.overlaid[0];
  float* __restrict y = strips.gray[0];
  for (int i = 0; i < count; i++) y[i] = f[i] * amount + y[i] * (1.0f - amount);
}

// @param grain where it stands at the first pixel, or null.
template <class T>
void Expose(const Film& film, const Strip* grain, Strip& strip, GrayStrips& grays, int pixels) {
  constexpr float kMax = qv::Sample<T>::kMax;
  const int count = qv::WholeVectors(pixels);
  float* __restrict r = strip[0], * __restrict g = strip[1], * __restrict b = strip[2];
  float* __restrict y = grays.gray[0];
  const Color3 weights = film.weights;
  for (int i = 0; i < count; i++) y[i] = WeightedSum({r[i], g[i], b[i]}, weights);
  if (film.contrast != 0.0f) {
    const qv::MidtoneCurve curve(film.contrast);
    for (int i = 0; i < count; i++) y[i] = curve(y[i]);
  }
  if (grain) LayOver(film, *grain, grays, pixels);
  if (film.toner.amount > 0.0f) {
    const Toner toner = film.toner;
    for (int i = 0; i < count; i++) {
      const Color3 c = toner(y[i]);
      r[i] = c.x * kMax;
      g[i] = c.y * kMax;
      b[i] = c.z * kMax;
    }
  } else {
    for (int i = 0; i < count; i++) r[i] = g[i] = b[i] = y[i] * kMax;
  }
}

template <class T>
void ExposeImage(__QVImage* src, __QVImage* dst, QVRect rect, const Film& film, Grain* grain) {
  GrayStrips grays;
  qv::WalkColors<T>(kSource, src, dst, MakeVRect(rect), qv::WithTransparency(dst),
                    [&](Strip& strip, Stretch at) {
    const Strip* there = grain ? &grain->From(at.x, at.y) : nullptr;
    Expose<T>(film, there, strip, grays, at.pixels);
  });
}

// The function that loads grain; null if it isn't of a kind that can be.
qv::LoadStrip FindGrainLoad(__QVImage* grain) {
  if (!qv::IsPacked(grain) || QVImageGetNumPlanes(grain) != 1) return nullptr;
  switch (QVImageGetPlaneBytes(grain)) {
    case 1: return qv::LoadSamples<uchar>;
    case 2: return qv::LoadSamples<ushort>;
    case 4: return qv::LoadSamples<float>;
    default: return nullptr;
  }
}

// ---- Mixture

// The luma of the six pure colours, and what they are taken off by, which isn't quite the same.
constexpr float kPureLuma[] = {0.299f, 0.886f, 0.587f, 0.701f, 0.11399996f, 0.41299996f};
constexpr float kPlain[] = {0.299f, 0.88600004f, 0.587f, 0.701f, 0.11399996f, 0.41299996f};

// Sums over all pixels, in lanes that are added up last.
struct Sums {
  static constexpr int kLanes = 8;
  // Two sums side by side, which is as fast as one.
  struct Lanes {
    double first[kLanes] = {}, second[kLanes] = {};
  };
  Lanes zones[qv::kZones];  // of values and squares
  Lanes light;              // of luma and gray parts

  static double Total(const double* lanes) {
    return ((lanes[0] + lanes[4]) + (lanes[2] + lanes[6])) +
           ((lanes[1] + lanes[5]) + (lanes[3] + lanes[7]));
  }

  // @param first,second what pixel i adds to each.
  template <class First, class Second>
  static void Add(Lanes& lanes, int count, First first, Second second) {
    Lanes sum = lanes;
    for (int i = 0; i < count; i += kLanes) {
      for (int l = 0; l < kLanes; l++) {
        sum.first[l] += first(i + l);
        sum.second[l] += second(i + l);
      }
    }
    lanes = sum;
  }

  // The first three planes of the strip are 0 past `pixels`.
  void Add(const Strip& strip, int pixels) {
    alignas(64) float rows[qv::kZones + 2][kStripPixels];
    const int count = qv::WholeVectors(pixels);
    for (int i = 0; i < count; i++) {
      const Color3 c = {strip[0][i], strip[1][i], strip[2][i]};
      const Zones split(c);
      for (int k = 0; k < qv::kZones; k++) rows[k][i] = split.weights[k];
      rows[6][i] = WeightedSum(c, {0.299f, 0.587f, 0.11399996f});
      rows[7][i] = split.gray;
    }
    const auto value = [](const float* row) {
      return [row](int i) { return static_cast<double>(row[i]); };
    };
    for (int k = 0; k < qv::kZones; k++) {
      const auto zone = value(rows[k]);
      Add(zones[k], count, zone, [zone](int i) { return zone(i) * zone(i); });
    }
    Add(light, count, value(rows[6]), value(rows[7]));
  }
};

template <class T>
void SumUp(__QVImage* image, Sums& sums) {
  const int planes = QVImageGetNumPlanes(image);
  Strip strip;
  qv::WalkRows(kSource, {qv::ToRead(image)}, MakeVRect(QVImageGetBounds(image)),
               [&](const qv::WalkedRow& row) {
    qv::EachStrip(row.pixels, [&](int64_t x, int count) {
      qv::LoadSamples<T>(row.Of<const T>(0) + x * planes, planes, count, strip);
      for (int c = 0; c < 3; c++) std::fill(strip[c] + count, strip[c] + kStripPixels, 0.0f);
      sums.Add(strip, count);
    });
  });
}

// Below this part of its square a mean's variance is rounding.
constexpr float kRounding = 0x1p-21f;

void MakeMixture(const Sums& sums, int64_t pixels, float* response) {
  const float each = pixels > 0 ? 1.0f / static_cast<float>(pixels) : 0.0f;
  const auto mean = [each](const double* lanes) {
    return static_cast<float>(Sums::Total(lanes) * static_cast<double>(each));
  };
  float means[qv::kZones], spread[qv::kZones], total = 0.0f;
  for (int k = 0; k < qv::kZones; k++) {
    means[k] = mean(sums.zones[k].first);
    const float square = means[k] * means[k];
    const float variance = mean(sums.zones[k].second) - square;
    spread[k] = variance > square * kRounding ? std::sqrt(variance) : 0.0f;
    total = total + spread[k];
  }
  float weights[qv::kZones], weighted = 0.0f;
  for (int k = 0; k < qv::kZones; k++) {
    weights[k] = total > 0.0f ? kPureLuma[k] * spread[k] : kPureLuma[k];
    weighted = weighted + means[k] * weights[k];
  }
  const float colored = mean(sums.light.first) - mean(sums.light.second);
  const float scale = weighted > 0.0f ? colored / weighted : 0.0f;
  for (int k = 0; k < qv::kZones; k++) response[k] = weights[k] * scale - kPlain[k];
}

// ---- Calls

// Tests the images and calls map<T>().
template <class Map>
int Call(__QVImage* src, __QVImage* dst, int leastColors, Map&& map) {
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(src) * 8, [&]<class T>() -> int {
      if (!qv::HaveSamePixels(src, dst) || !qv::FitsPlanes(dst) || qv::Colors(dst) < leastColors) {
        return kQVStatusUnsupported;
      }
      map.template operator()<T>();
      return kQVStatusSuccess;
    });
  });
}

}  // namespace

int QVEffectsBlackWhite(__QVImage* src, __QVImage* dst, QVRect rect, int mode) {
  if (!src || !dst) return kQVStatusBadArgument;
  return Call(src, dst, 1, [&]<class T>() {
    const int colors = qv::Colors(dst);
    if (mode == kQVBlackWhiteLuma && colors == 3) {
      MakeGray<T>(src, dst, rect, [](auto r, auto g, auto b) { return LumaOf<T>(r, g, b); });
    } else if (mode == kQVBlackWhiteMean && colors == 3) {
      MakeGray<T>(src, dst, rect, [](auto r, auto g, auto b) { return (r + g + b) / 3.0f; });
    } else if (mode == kQVBlackWhiteLuma) {
      MapAll<T>(src, dst, rect,
                [=](Strip& strip, int pixels) { MakeLuma<T>(strip, colors, pixels); });
    } else if (mode == kQVBlackWhiteMean) {
      MapAll<T>(src, dst, rect, [=](Strip& strip, int pixels) { MakeMean(strip, colors, pixels); });
    } else if (QVImageGetTransparency(dst) != 0) {
      MapAll<T>(src, dst, rect, [](Strip&, int) {});
    }
  });
}

int QVEffectsChannelMixer(__QVImage* src, __QVImage* dst, QVRect rect, float rr, float rg, float rb,
                          float gr, float gg, float gb, float br, float bg, float bb) {
  if (!src || !dst) return kQVStatusBadArgument;
  return Call(src, dst, 3, [&]<class T>() {
    constexpr float kMax = qv::Sample<T>::kMax;
    const auto mixed = [](Color3 c, float r, float g, float b) {
      const float sum =
          Held(c.x * r, -kMax, kMax) + Held(c.y * g, -kMax, kMax) + Held(c.z * b, -kMax, kMax);
      return Held(sum, 0.0f, kMax);
    };
    MapThree<T>(src, dst, rect, [=](Strip& strip, int pixels) {
      MapColors(strip, pixels, [=](Color3 c) {
        return Color3{mixed(c, rr, rg, rb), mixed(c, gr, gg, gb), mixed(c, br, bg, bb)};
      });
    });
  });
}

int QVEffectsColorFilter(__QVImage* src, __QVImage* dst, QVRect rect, float r, float g, float b) {
  if (!src || !dst) return kQVStatusBadArgument;
  return Call(src, dst, 1, [&]<class T>() {
    const float sum = r + g + b;
    const float weights[3] = {r / sum, g / sum, b / sum};
    const int colors = std::min(qv::Colors(dst), 3);
    if (colors == 3) {
      return MakeGray<T>(src, dst, rect, [w = qv::ColorAt(weights)](auto x, auto y, auto z) {
        return x * w.x + y * w.y + z * w.z;
      });
    }
    MapThree<T>(src, dst, rect,
                [&](Strip& strip, int pixels) { Filter(strip, weights, colors, pixels); });
  });
}

int QVEffectsBlackAndWhiteWithColorFilter(__QVImage* src, __QVImage* dst, QVRect rect, float hue) {
  const Color3 color = qv::HsbToRgb({hue, 1.0f, 1.0f});
  return QVEffectsColorFilter(src, dst, rect, color.x, color.y, color.z);
}

int QVEffectsBlackAndWhite(__QVImage* src, __QVImage* dst, QVRect rect, __QVImage* grain,
                           const float* toneColor, float hue, float contrast, float grainAmount,
                           float toneAmount) {
  if (!src || !dst) return kQVStatusBadArgument;
  if (QVImageGetColorSpaceType(src) != kQVColorSpaceRGB) return kQVStatusUnsupported;
  const bool hasGrain = grain && grainAmount > 0.0f;
  const qv::LoadStrip loadGrain = hasGrain ? FindGrainLoad(grain) : nullptr;
  if (hasGrain && !loadGrain) return kQVStatusUnsupported;
  return Call(src, dst, 3, [&]<class T>() {
    const Color3 color = qv::HsbToRgb({hue, 1.0f, 1.0f});
    const float sum = color.x + color.y + color.z;
    const auto weight = [sum](float part) { return part / sum / qv::Sample<T>::kMax; };
    const Color3 tone = toneColor ? qv::ColorAt(toneColor) : Color3{};
    const Film film = {{weight(color.x), weight(color.y), weight(color.z)},
                       contrast,
                       grainAmount,
                       {qv::Tone(tone), toneColor ? toneAmount : 0.0f}};
    if (!hasGrain && contrast == 0.0f && !(film.toner.amount > 0.0f)) {
      MakeGray<T>(src, dst, rect, [w = film.weights](auto x, auto y, auto z) {
        return (w.x * x + w.y * y + w.z * z) * qv::Sample<T>::kMax;
      });
    } else if (hasGrain) {
      Grain tile(grain, loadGrain);
      ExposeImage<T>(src, dst, rect, film, &tile);
    } else {
      ExposeImage<T>(src, dst, rect, film, nullptr);
    }
  });
}

int QVEffectsBlackAndWhiteColorResponse(__QVImage* src, __QVImage* dst, QVRect rect,
                                        const float* filter, const float* response) {
  if (!src || !dst || !response) return kQVStatusBadArgument;
  if (QVImageGetColorSpaceType(src) != kQVColorSpaceRGB) return kQVStatusUnsupported;
  return Call(src, dst, 3, [&]<class T>() {
    constexpr float kMax = qv::Sample<T>::kMax;
    const Color3 over = filter ? qv::ColorAt(filter) : Color3{};
    const auto filtered = [over](Color3 c) {
      return Color3{OverlaidWith<T>(c.x, over.x), OverlaidWith<T>(c.y, over.y),
                    OverlaidWith<T>(c.z, over.z)};
    };
    const auto answer =
        [by = std::to_array<float>({response[0], response[1], response[2], response[3], response[4],
                                    response[5]})](Color3 c) {
      const Zones zones(c);
      float sum = qv::Luma(c.x, c.y, c.z);
      for (int k = 0; k < qv::kZones; k++) sum = sum + zones.weights[k] * by[k];
      const float gray = Held(sum, 0.0f, kMax);
      return Color3{gray, gray, gray};
    };
    MapThree<T>(src, dst, rect, [&](Strip& strip, int pixels) {
      if (filter) MapColors(strip, pixels, filtered);
      MapColors(strip, pixels, answer);
    });
  });
}

int QVEffectsBlackAndWhiteColorResponseGetAutoMixture(__QVImage* image, float* response) {
  if (!image || !response) return kQVStatusBadArgument;
  if (!qv::FitsPlanes(image) || qv::Colors(image) < 3) return kQVStatusUnsupportedOlder;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    Sums sums;
    const int status = qv::DispatchDepth(QVImageGetPlaneBytes(image) * 8, [&]<class T>() {
      SumUp<T>(image, sums);
      return kQVStatusSuccess;
    });
    if (status != kQVStatusSuccess) return int{kQVStatusUnsupportedOlder};
    const QVRect bounds = QVImageGetBounds(image);
    MakeMixture(sums, int64_t{bounds.width} * bounds.height, response);
    return int{kQVStatusSuccess};
  });
}
