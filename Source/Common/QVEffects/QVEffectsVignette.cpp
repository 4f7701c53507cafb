// SPDX-License-Identifier: Apache-2.0
// Vignettes: as a layer of its own, and in the pixels themselves.
#include <QVEffects/QVEffectsVignette.h>

#include <cmath>
#include <concepts>
#include <initializer_list>

#include "Utils/ColorStrips.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsVignette";

using qv::kStripPixels;
using qv::Strip;

// A value for each pixel of a strip.
struct Strengths {
  alignas(64) float values[kStripPixels] = {};
};

// ---- Numbers of the geometry

// n / d, or what it tends to where d is 0.
float Quotient(float n, float d, float limit) { return d != 0.0f ? n / d : limit; }

// Truncated; far beyond any image it makes no difference how far. NaN is 0.
template <std::floating_point T>
int Whole(T value) {
  constexpr T kFar = 1 << 28;
  if (std::isnan(value)) return 0;
  return static_cast<int>(std::clamp(value, -kFar, kFar));
}

bool AreFinite(std::initializer_list<float> values) {
  return std::ranges::all_of(values, [](float v) { return std::isfinite(v); });
}

float Larger(float a, float b) { return a > b ? a : b; }
float Square(int64_t n) { return static_cast<float>(n * n); }

// Where pixel `to` lies from `from`, held to what a strip can be added to.
int Distance(int64_t from, int64_t to) {
  constexpr int64_t kFar = 1 << 30;
  return static_cast<int>(std::clamp(to - from, -kFar, kFar));
}

// ---- The layer

// The smoothstep polynomial in 200 steps.
struct Transition {
  float low, high, steps;

  Transition() = default;
  Transition(int from, int to)
      : low(static_cast<float>(from)),
        high(static_cast<float>(to)),
        steps(199.0f / static_cast<float>(to - from)) {}

  float operator()(float v) const {
    v = v > low ? v : low;  // NaN too
    v = v < high ? v : high;
    // Beyond 2^24 pixels the ends are rounded and further apart than what `steps` is made for.
    const float step = std::min((v - low) * steps + 0.5f, 199.0f);
    const float t = static_cast<float>(static_cast<int>(step)) / 199.0f;
    return t * t * (3.0f - t * 2.0f);
  }
};

// How far the vignette is on its way from clear to full: 0 to 1.
class LayerShape {
 public:
  LayerShape(QVRect bounds, float centerX, float centerY, float size, float softness, float shape);

  // Of pixels of row y from x.
  void operator()(int x, int y, int pixels, Strengths& strengths) const {
    mBox.radius > 0.0f ? Box(x, y, pixels, strengths) : Ellipse(x, y, pixels, strengths);
  }

 private:
  void Ellipse(int x, int y, int pixels, Strengths& strengths) const;
  void Box(int x, int y, int pixels, Strengths& strengths) const;
  void Corners(int x, float y, int pixels, Strengths& strengths) const;
  void LeftAndRight(int x, int pixels, Strengths& strengths) const;

  // Along the columns and along the rows: what distances are multiplied with, and where they are
  // full and clear.
  struct Axis {
    int center;
    float scale, end, full, clear;
  };

  struct RoundBox {
    float radius = -1.0f;
    float inset = 0.0f;
    int clear = 0;  // how far from the edges it is clear
  };

  int mWidth, mHeight;
  Axis mColumns, mRows;
  RoundBox mBox;
  float mEnd;     // where the transition is halfway, along the long side
  float mMiddle;  // the same, whole
  float mOutside, mInside;
  Transition mTransition;
};

LayerShape::LayerShape(QVRect bounds, float centerX, float centerY, float size, float softness,
                       float shape)
    : mWidth(bounds.width), mHeight(bounds.height) {
  const auto reach = [softness](float width) {
    return std::max(Whole((width - 5.0f) * softness + 5.0f), 5);
  };
  const bool landscape = mWidth > mHeight;
  const int shortHalf = std::min(mWidth, mHeight) / 2, longHalf = std::max(mWidth, mHeight) / 2;
  const auto a = static_cast<float>(shortHalf), b = static_cast<float>(longHalf);
  const float aa = Square(shortHalf), bb = Square(longHalf);
  Axis& along = landscape ? mColumns : mRows;
  Axis& across = landscape ? mRows : mColumns;
  float q;
  int half;

  if (shape > 0.5f) {
    const float s = (shape - 0.5f) * 2.0f;
    const float t = 0.7f * b - (-0.9f * a + 0.7f * b) * s;
    const float ra = (s * 0.19999999f + 0.7f) * a;
    q = Quotient(ra, t, 1.0f);
    const float e = std::sqrt(bb * q * q + aa);
    mEnd = (e * 0.95f - ra) * size + ra;
    along.end = across.end = mEnd;
    half = reach(ra * 0.8f);
  } else {
    const float u = 0.5f - shape;
    q = Quotient(a, b, 1.0f);
    const float t = (u + u) * (b * 0.95f - b * 0.7f) + b * 0.7f;
    const float ra = t * q;
    const float e = std::sqrt(bb * q * q + aa);
    const float f = 0.7f * a;
    mEnd = (e * 0.95f - ra) * size + ra;
    along.end = mEnd;
    across.end = (Quotient(e * 0.95f * f, ra, 0.0f) - f) * size + f;
    half = reach(ra * 0.8f);

    if (a * 0.3f > b - t) {
      // The shape at which the box begins.
      const float w = (b - a) * 0.3f / ((b + b) * -0.25f) + 0.5f;
      const float ra2 = (b * 0.7f + (b * 0.95f - b * 0.7f) * ((0.5f - w) + (0.5f - w))) * q;
      const float g = a - (b - Quotient(ra2, q, b));
      const float along2 = Quotient(mEnd, q, b);
      across.end = a - (b - along2);
      const float least = a * 0.08f;
      mBox.radius = Quotient((g - least) * shape, w, g - least) + least;
      const float r = mBox.radius;
      mBox.inset = Larger(-0.22218251f * r, b - along2);
      mBox.clear = Whole(static_cast<double>(r) + static_cast<double>(mBox.inset) - 0.5);
      half = reach(Larger(0.41421354f * r + mBox.inset, 0.8f * r));
    }
  }

  const int middle = Whole(mEnd);
  const auto reached = static_cast<float>(half);
  mMiddle = static_cast<float>(middle);
  mTransition = Transition(middle - half, middle + half + (mEnd > mMiddle));
  mOutside = mEnd + reached;
  mInside = (mEnd - reached) / 1.4142135f;
  along.scale = q;
  across.scale = 1.0f;
  mColumns.center = Whole(static_cast<float>(mWidth) * centerX);
  mRows.center = Whole(static_cast<float>(mHeight) * centerY);
  const auto bound = [reached](Axis& axis) {
    axis.full = axis.end + reached;
    axis.clear = axis.end - reached;
  };
  bound(mColumns);
  bound(mRows);
}

void LayerShape::Ellipse(int x, int y, int pixels, Strengths& strengths) const {
  float* __restrict out = strengths.values;
  const LayerShape s = *this;
  const float dy = static_cast<float>(std::abs(Distance(s.mRows.center, y))) * s.mRows.scale;
  if (dy > s.mRows.full) return static_cast<void>(std::fill_n(out, pixels, 1.0f));

  const int first = Distance(s.mColumns.center, x);
  const bool clearRow = s.mRows.clear > dy && s.mInside > dy;
  const auto across = [&s](int from) {
    return static_cast<float>(std::abs(from)) * s.mColumns.scale;
  };
  const auto isClear = [&s](float dx) { return (s.mColumns.clear > dx) & (s.mInside > dx); };
  // Most of a picture needs no root.
  if (clearRow && s.mColumns.scale >= 0.0f && isClear(across(first)) &&
      isClear(across(first + pixels - 1))) {
    return static_cast<void>(std::fill_n(out, pixels, 0.0f));
  }
  const bool shortColumns = s.mEnd > s.mColumns.end, shortRows = s.mEnd > s.mRows.end;
  const float rest = s.mRows.full - dy;
  for (int i = 0; i < pixels; i++) {
    const float dx = across(first + i);
    const float d = std::sqrt(dx * dx + dy * dy);
    const float e = s.mOutside - d;
    const float columnRest = s.mColumns.full - dx;
    float nearest = (shortColumns & (e > columnRest)) ? columnRest : e;
    nearest = (shortRows & (e > rest)) ? rest : nearest;
    const float step = s.mTransition(s.mTransition.high - nearest);
    const float curved = d > s.mOutside ? 1.0f : step;
    const float inside = (clearRow & isClear(dx)) ? 0.0f : curved;
    out[i] = dx > s.mColumns.full ? 1.0f : inside;
  }
}

// The distance from the nearer of two edges, positive outside.
float FromNearer(float first, float second) {
  return std::abs(first) > std::abs(second) ? second : first;
}

void LayerShape::Corners(int x, float y, int pixels, Strengths& strengths) const {
  float* __restrict out = strengths.values;
  const Transition transition = mTransition;
  const float middle = mMiddle, r = mBox.radius, c = r + mBox.inset;
  const float left = c - 1.0f, right = static_cast<float>(mWidth) - c - 1.0f;
  const float bottom = static_cast<float>(mHeight) - c - 1.0f;
  const float ey = std::abs(y - (y >= bottom ? bottom : c - 1.0f));
  for (int i = 0; i < pixels; i++) {
    const auto column = static_cast<float>(x + i);
    const float ex = std::abs(column - (column >= right ? right : left));
    out[i] = transition(std::sqrt(ex * ex + ey * ey) - r + middle);
  }
}

void LayerShape::LeftAndRight(int x, int pixels, Strengths& strengths) const {
  float* __restrict out = strengths.values;
  const Transition transition = mTransition;
  const float middle = mMiddle, o = mBox.inset;
  const float right = static_cast<float>(mWidth) - o - 1.0f;
  for (int i = 0; i < pixels; i++) {
    const auto column = static_cast<float>(x + i);
    out[i] = transition(FromNearer(o - column - 1.0f, column - right) + middle);
  }
}

void LayerShape::Box(int x, int y, int pixels, Strengths& strengths) const {
  const float o = mBox.inset;
  const auto row = static_cast<float>(y);
  const bool between = y >= mBox.clear && y < int64_t{mHeight} - mBox.clear;
  // The columns away from the corners: clear, or all at the same distance from an edge.
  const int from = std::clamp(Distance(x, mBox.clear), 0, pixels);
  const int to = std::clamp(Distance(x, int64_t{mWidth} - mBox.clear), from, pixels);
  if (to - from < pixels) {
    between ? LeftAndRight(x, pixels, strengths) : Corners(x, row, pixels, strengths);
  }
  const float bottom = static_cast<float>(mHeight) - o - 1.0f;
  const float edge = mTransition(FromNearer(o - row - 1.0f, row - bottom) + mMiddle);
  std::fill(strengths.values + from, strengths.values + to, between ? 0.0f : edge);
}

// The gray of the vignette, half its strength and how it combines.
struct Layer {
  float level;
  float strength;
  qv::BlendStrip blend;  // null in mode normal
};

// What is seen of the blend where src is there, on the scale of the samples.
// @param there src's transparency, or null.
void LayOver(const float* __restrict there, float level, float max, int pixels,
             float* __restrict v) {
  const int count = qv::WholeVectors(pixels);
  if (!there) {
    for (int i = 0; i < count; i++) v[i] *= max;
    return;
  }
  for (int i = 0; i < count; i++) v[i] = (v[i] * there[i] + level * (1.0f - there[i])) * max;
}

template <class T>
void MakeLayer(__QVImage* src, __QVImage* dst, VRect rect, const LayerShape& shape, Layer layer) {
  constexpr float kMax = qv::Sample<T>::kMax;
  const int planes = QVImageGetNumPlanes(dst);
  const bool transparency = QVImageGetTransparency(dst) != 0;
  const int colors = planes - transparency;
  Strip upper, lower, mixed;
  Strengths strengths;
  for (int c = 0; c < colors; c++) {
    std::fill_n(upper[c], kStripPixels, layer.level);
    std::fill_n(mixed[c], kStripPixels, layer.level * kMax);
  }
  const auto makeRow = [&](const qv::WalkedRow& row, const T* in) {
    qv::EachStrip(row.pixels, [&](int64_t x, int pixels) {
      const ptrdiff_t first = ptrdiff_t{x} * planes;
      if (in) {
        qv::LoadSamples<T>(in + first, planes, pixels, lower);
        // What a mode of the whole colour leaves alone.
        for (int c = 3; c < colors; c++) std::copy_n(lower[c], kStripPixels, mixed[c]);
        layer.blend(upper, lower, mixed, colors, pixels);
        for (int c = 0; c < colors; c++) {
          LayOver(transparency ? lower[colors] : nullptr, layer.level, kMax, pixels, mixed[c]);
        }
      }
      if (transparency) {
        shape(row.left + x, row.y, pixels, strengths);
        float* __restrict to = mixed[colors];
        for (int i = 0; i < pixels; i++) {
          const float half = layer.strength * (strengths.values[i] * kMax);
          to[i] = half + half;
        }
      }
      qv::StoreSamples<T>(row.copier, row.Of<T>(0) + first, planes, pixels, mixed);
    });
  };
  if (layer.blend) {
    qv::WalkRows(kSource, {qv::ToWrite(dst), qv::ToRead(src)}, rect,
                 [&](const qv::WalkedRow& row) { makeRow(row, row.Of<const T>(1)); });
  } else {
    qv::WalkRows(kSource, {qv::ToWrite(dst)}, rect,
                 [&](const qv::WalkedRow& row) { makeRow(row, nullptr); });
  }
}

// ---- In the pixels

struct Pair {
  float x, y;
};

// The strength that pixels are mixed by.
class InShape {
 public:
  InShape(QVRect bounds, float centerX, float centerY, float strength, float size, float softness,
          float shape);

  // Of pixels of row y from x; whether there is any.
  bool operator()(int x, int y, int pixels, Strengths& strengths) const;

 private:
  Pair mCenter, mBox = {0.0f, 0.0f}, mInverse;
  float mSteps, mStrength;
};

InShape::InShape(QVRect bounds, float centerX, float centerY, float strength, float size,
                 float softness, float shape)
    : mStrength(strength) {
  const auto w = static_cast<float>(bounds.width), h = static_cast<float>(bounds.height);
  const Pair half = {w * 0.5f, h * 0.5f};
  const Pair p = {(size + 0.5f) * half.x, (size + 0.5f) * half.y};
  mCenter = {centerX * w, centerY * h};
  Pair radius;
  if (shape >= 0.0f) {
    const float m = std::sqrt((p.x * p.x + p.y * p.y) * 0.5f);
    radius = {shape * m + (1.0f - shape) * p.x, shape * m + (1.0f - shape) * p.y};
  } else {
    const float z = std::min(half.y - p.y, half.x - p.x);
    const Pair q = {-shape * (half.x - z) + (shape + 1.0f) * p.x,
                    -shape * (half.y - z) + (shape + 1.0f) * p.y};
    const float corner = Larger(q.x, q.y) * (shape + 1.0f);
    mBox = {Larger(q.x - corner, 0.0f), Larger(q.y - corner, 0.0f)};
    radius = {Larger(q.x - mBox.x, 1.0f), Larger(q.y - mBox.y, 1.0f)};
  }
  constexpr float kLeast = 1e-6f;
  if (radius.x == 0.0f) radius.x = kLeast;
  if (radius.y == 0.0f) radius.y = kLeast;
  mInverse = {1.0f / radius.x, 1.0f / radius.y};
  mSteps = 0.5f / Larger(1.0f / std::min(radius.x, radius.y), softness);
}

bool InShape::operator()(int x, int y, int pixels, Strengths& strengths) const {
  float* __restrict out = strengths.values;
  const InShape s = *this;
  const float row = std::abs(static_cast<float>(y) - s.mCenter.y) - s.mBox.y;
  const float py = Larger(row, 0.0f) * s.mInverse.y;
  bool any = false;
  for (int i = 0; i < pixels; i++) {
    const float column = std::abs(static_cast<float>(x + i) - s.mCenter.x) - s.mBox.x;
    const float px = Larger(column, 0.0f) * s.mInverse.x;
    float t = (std::sqrt(px * px + py * py) - 1.0f) * s.mSteps + 0.5f;
    t = t > 0.0f ? t : 0.0f;  // NaN too
    t = t < 1.0f ? t : 1.0f;
    any |= t > 0.0f;
    out[i] = t * t * t * ((t * 6.0f - 15.0f) * t + 10.0f) * s.mStrength;
  }
  return any;
}

template <class T>
void MixIn(__QVImage* src, __QVImage* dst, VRect rect, const InShape& shape, float color,
           qv::BlendStrip blend) {
  constexpr float kMax = qv::Sample<T>::kMax;
  const int planes = QVImageGetNumPlanes(dst);
  const int colors = std::min(planes - QVImageGetTransparency(dst), 3);
  // Further planes stay as they are, unless there is transparency to carry over.
  const bool keeps = planes > 3 && QVImageGetTransparency(dst) == 0;
  Strip upper, lower, mixed;
  Strengths strengths;
  for (int c = 0; c < 3; c++) std::fill_n(upper[c], kStripPixels, color);
  const qv::Walked written = keeps ? qv::ToReadWrite(dst) : qv::ToWrite(dst);
  qv::WalkRows(kSource, {qv::ToRead(src), written}, rect, [&](const qv::WalkedRow& row) {
    const T* in = row.Of<const T>(0);
    T* out = row.Of<T>(1);
    qv::EachStrip(row.pixels, [&](int64_t x, int pixels) {
      const int count = qv::WholeVectors(pixels);
      const ptrdiff_t first = ptrdiff_t{x} * planes;
      const bool any = shape(row.left + x, row.y, pixels, strengths);
      // Strength 0 leaves an integer as it is; a float may be infinite or NaN.
      if (std::is_integral_v<T> && !any && !keeps) {
        row.copier.Copy(out + first, in + first, sizeof(T) * pixels * planes);
        return;
      }
      qv::LoadSamples<T>(in + first, planes, pixels, lower);
      blend(upper, lower, mixed, colors, pixels);
      const float* __restrict m = strengths.values;
      for (int c = 0; c < planes; c++) {
        float* __restrict v = lower[c];
        const float* __restrict r = mixed[c];
        if (c < colors) {
          for (int i = 0; i < count; i++) v[i] = (r[i] * m[i] + v[i] * (1.0f - m[i])) * kMax;
        } else {
          for (int i = 0; i < count; i++) v[i] *= kMax;
        }
      }
      if (keeps) qv::LoadFurther<T>(out + first, planes, pixels, lower);
      qv::StoreSamples<T>(row.copier, out + first, planes, pixels, lower);
    });
  });
}

// ---- Calls

// Calls f<T>(the mode's function) where the arguments are right, and returns the status.
template <class F>
int Draw(__QVImage* src, __QVImage* dst, QVBlendMode mode, F&& f) {
  if (!src || !dst) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(dst), [&]<class T>() -> int {
      const qv::BlendStrip blend = qv::FindBlendStrip(mode);
      if (!blend) return kQVStatusBadArgument;
      if (!qv::HaveSamePixels(src, dst) || !qv::FitsPlanes(dst)) return kQVStatusUnsupported;
      f.template operator()<T>(blend);
      return kQVStatusSuccess;
    });
  });
}

}  // namespace

int QVEffectsVignette(__QVImage* src, __QVImage* dst, QVRect rect, float centerX, float centerY,
                      float level, float size, float softness, float shape, QVBlendMode mode) {
  return Draw(src, dst, mode, [&]<class T>(qv::BlendStrip blend) {
    const LayerShape layerShape(QVImageGetBounds(dst), centerX, centerY, size, softness, shape);
    const float gray = std::isfinite(level) ? level : 0.5f;
    const bool shows = AreFinite({centerX, centerY, level, size, softness, shape});
    const Layer layer = {gray, shows ? std::abs(gray - 0.5f) : 0.0f,
                         mode == kQVBlendModeNormal ? nullptr : blend};
    MakeLayer<T>(src, dst, MakeVRect(rect), layerShape, layer);
  });
}

int QVEffectsVignetteIn(__QVImage* src, __QVImage* dst, QVRect rect, float centerX, float centerY,
                        float amount, float size, float softness, float shape, QVBlendMode mode) {
  return Draw(src, dst, mode, [&]<class T>(qv::BlendStrip blend) {
    const bool shows = AreFinite({centerX, centerY, amount, size, softness, shape});
    const InShape shapeOf(QVImageGetBounds(src), centerX, centerY, shows ? std::abs(amount) : 0.0f,
                          size, softness, shape);
    MixIn<T>(src, dst, MakeVRect(rect), shapeOf, amount > 0.0f ? 1.0f : 0.0f, blend);
  });
}
