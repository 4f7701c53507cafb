// SPDX-License-Identifier: Apache-2.0
// Photo filter. Rows are worked in strips: shapes and blend modes add up instead of multiplying.
#include <QVEffects/QVEffectsPhotoFilter.h>

#include <cmath>

#include "Utils/ColorStrips.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsPhotoFilter";

using qv::Color3;
using qv::kStripPixels;
using qv::Stretch;
using qv::Strip;

// ---- Formulas

// A mix of the sample and its smoothstep.
struct Curve {
  float cube, square, linear;

  explicit Curve(float k) : cube(-2.0f * k), square(3.0f * k), linear(1.0f - k) {}
  float operator()(float c) const { return ((cube * c + square) * c + linear) * c; }
};

bool IsLinear(int type) { return type == kQVPhotoFilterLinear || type == kQVPhotoFilterLinearBoth; }
bool HasBoth(int type) {
  return type == kQVPhotoFilterLinearBoth || type == kQVPhotoFilterRoundBoth;
}

// How far a pixel lies from one side of the transition, 0, to the other, 1.
struct Transition {
  static constexpr float kOnEdge = 1.0f / 1024.0f;
  // Distances over less may be more than floats hold.
  static constexpr float kLeastWidth = 1e-20f;

  QVPointF center;
  bool isLinear, isHard;
  float stepX, stepY;      // of a linear one
  float radius, perPixel;  // of a round one

  Transition(int type, QVPointF aCenter, float angleOrRadius, float width)
      : center(aCenter), isLinear(IsLinear(type)), radius(angleOrRadius) {
    isHard = !(std::abs(width) >= kLeastWidth);  // NaN too
    const float unit = isHard ? (width < 0.0f ? -1.0f : 1.0f) : width;
    perPixel = 1.0f / unit;
    const double angle = static_cast<double>(angleOrRadius) * 3.1415927 / 180.0;
    stepX = static_cast<float>(std::cos(angle) / static_cast<double>(unit));
    stepY = static_cast<float>(std::sin(angle) / static_cast<double>(unit));
  }

  // In widths from the middle, or pixels where the edge is hard.
  float Distance(float x, float y) const {
    const float dx = x - center.x, dy = y - center.y;
    return isLinear ? dx * stepX + dy * stepY : (std::sqrt(dx * dx + dy * dy) - radius) * perPixel;
  }

  float operator()(float x, float y) const {
    const float distance = Distance(x, y);
    const float beyond = distance > kOnEdge ? 1.0f : 0.5f;
    const float hard = distance < -kOnEdge ? 0.0f : beyond;
    return isHard ? hard : qv::HeldToUnit(distance * 0.5f + 0.5f);
  }
};

// ---- Stages on strips

struct Strips {
  Strip filter, blended;
  alignas(64) float opacity[kStripPixels];
};

struct Filter {
  int type;
  qv::BlendStrip blend;
  float saturation;
  Curve curve;
  Transition transition;
  Color3 colorA, colorB;
  float amountA, amountB;
};

// From samples on the scale of their type to floats from 0 to 1, changed.
template <bool kSaturates>
void ChangePicture(const Filter& filter, float toUnit, Strip& strip, int pixels) {
  const int count = qv::WholeVectors(pixels);
  const float saturation = filter.saturation;
  const Curve curve = filter.curve;
  float* __restrict r = strip[0], * __restrict g = strip[1], * __restrict b = strip[2];
  for (int i = 0; i < count; i++) {
    Color3 c = {r[i] * toUnit, g[i] * toUnit, b[i] * toUnit};
    if constexpr (kSaturates) c = qv::WithSaturation(c, saturation);
    r[i] = curve(c.x);
    g[i] = curve(c.y);
    b[i] = curve(c.z);
  }
}

void Fill(Strip& strip, Color3 color) {
  std::fill_n(strip[0], kStripPixels, color.x);
  std::fill_n(strip[1], kStripPixels, color.y);
  std::fill_n(strip[2], kStripPixels, color.z);
}

// What is the same for all strips.
void Prepare(const Filter& filter, Strips& strips) {
  Fill(strips.filter, filter.colorA);
  std::fill_n(strips.opacity, kStripPixels, filter.amountA);
}

// The filter's opacity, and its colour if that changes, from a place of the image on.
template <bool kIsLinear>
void PlaceFilter(const Filter& filter, Strips& strips, int x, int y, int pixels) {
  alignas(64) float t[kStripPixels];
  const int count = qv::WholeVectors(pixels);
  Transition transition = filter.transition;
  transition.isLinear = kIsLinear;
  const auto row = static_cast<float>(y);
  for (int i = 0; i < count; i++) {
    // What stands past the row's end may wrap.
    const auto column = static_cast<int>(static_cast<unsigned>(x) + static_cast<unsigned>(i));
    t[i] = transition(static_cast<float>(column), row);
  }

  float* __restrict opacity = strips.opacity;
  const float ofA = filter.amountA, ofB = filter.amountB;
  if (!HasBoth(filter.type)) {
    for (int i = 0; i < count; i++) opacity[i] = t[i] * ofA;
    return;
  }
  const float a[] = {filter.colorA.x, filter.colorA.y, filter.colorA.z};
  const float b[] = {filter.colorB.x, filter.colorB.y, filter.colorB.z};
  for (int c = 0; c < 3; c++) {
    float* __restrict plane = strips.filter[c];
    for (int i = 0; i < count; i++) plane[i] = a[c] * t[i] + b[c] * (1.0f - t[i]);
  }
  for (int i = 0; i < count; i++) opacity[i] = t[i] * ofA + (1.0f - t[i]) * ofB;
}

// The opacity goes into the scale of the result.
void Mix(const Strips& strips, float max, Strip& strip, int pixels) {
  const int count = qv::WholeVectors(pixels);
  const float* __restrict opacity = strips.opacity;
  for (int c = 0; c < 3; c++) {
    float* __restrict picture = strip[c];
    const float* __restrict blended = strips.blended[c];
    for (int i = 0; i < count; i++) {
      const float share = opacity[i] * max;
      picture[i] = picture[i] * (max - share) + blended[i] * share;
    }
  }
}

struct FilterStrip {
  const Filter& filter;
  Strips strips;

  explicit FilterStrip(const Filter& aFilter) : filter(aFilter) { Prepare(filter, strips); }

  void operator()(Strip& picture, Stretch at) {
    const auto change = filter.saturation != 0.0f ? ChangePicture<true> : ChangePicture<false>;
    change(filter, at.toUnit, picture, at.pixels);
    if (filter.type != kQVPhotoFilterSolid) {
      const auto place = filter.transition.isLinear ? PlaceFilter<true> : PlaceFilter<false>;
      place(filter, strips, at.x, at.y, at.pixels);
    }
    filter.blend(strips.filter, picture, strips.blended, 3, at.pixels);
    Mix(strips, at.max, picture, at.pixels);
  }
};

}  // namespace

int QVEffectsPhotoFilter(__QVImage* src, __QVImage* dst, QVRect rect, int type, QVBlendMode mode,
                         float saturation, float contrast, QVPointF center, float angleOrRadius,
                         float width, const float* colorA, float amountA, const float* colorB,
                         float amountB) {
  const qv::BlendStrip blend = qv::FindBlendStrip(mode);
  if (!blend || !src || !dst || !colorA || (HasBoth(type) && !colorB)) return kQVStatusBadArgument;
  if (QVImageGetColorSpaceType(src) != kQVColorSpaceRGB) return kQVStatusUnsupported;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(src) * 8, [&]<class T>() -> int {
      if (type < kQVPhotoFilterSolid || type > kQVPhotoFilterRoundBoth) return kQVStatusBadArgument;
      if (!qv::CanWalkColors(src, dst)) return kQVStatusUnsupported;
      const Filter filter = {type,
                             blend,
                             saturation,
                             Curve(contrast),
                             Transition(type, center, angleOrRadius, width),
                             qv::ColorAt(colorA),
                             HasBoth(type) ? qv::ColorAt(colorB) : Color3{},
                             amountA,
                             amountB};
      qv::WalkColors<T>(kSource, src, dst, MakeVRect(rect), qv::WithTransparency(dst),
                        FilterStrip(filter));
      return kQVStatusSuccess;
    });
  });
}
