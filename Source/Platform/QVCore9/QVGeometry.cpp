// SPDX-License-Identifier: Apache-2.0
// Rectangles, points and affine transforms. Arithmetic is wider than the results, which are held to
// their range.
#include <QVCore9/QVCore9.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

namespace {

constexpr int64_t kIntMin = std::numeric_limits<int>::min();
constexpr int64_t kIntMax = std::numeric_limits<int>::max();

int Held(int64_t value) { return static_cast<int>(std::clamp(value, kIntMin, kIntMax)); }

// NaN becomes 0.
int Held(double value) {
  if (!(value == value)) return 0;
  return static_cast<int>(
      std::clamp(value, static_cast<double>(kIntMin), static_cast<double>(kIntMax)));
}

struct Span {
  int start;
  int size;
};

Span Common(Span a, Span b) {
  const int start = std::max(a.start, b.start);
  const int64_t end = std::min(int64_t{a.start} + a.size, int64_t{b.start} + b.size);
  return {start, Held(std::max<int64_t>(end - start, 0))};
}

bool IsWithin(int position, Span span) {
  return position >= span.start && position < int64_t{span.start} + span.size;
}

// From the smallest to the largest value, rounded outward.
Span Enclosing(double low, double high) {
  const int start = Held(std::floor(low));
  return {start, Held(int64_t{Held(std::ceil(high))} - start)};
}

struct Rotation {
  double cosine;
  double sine;
};

// Quarter turns are taken out first: cos and sin of pi / 2 in floating point aren't 0 and 1.
Rotation RotationBy(double degrees) {
  int quarters = 0;
  const double rest = std::remquo(degrees, 90.0, &quarters) * (std::numbers::pi / 180.0);
  const double c = std::cos(rest), s = std::sin(rest);
  switch (quarters & 3) {
    case 0: return {c, s};
    case 1: return {-s, c};
    case 2: return {-c, -s};
    default: return {s, -c};
  }
}

// The transform of this matrix that carries (fromX, fromY) to (toX, toY).
QVAffineTransform Carrying(double a, double b, double c, double d, double fromX, double fromY,
                           double toX, double toY) {
  const auto narrow = [](double value) { return static_cast<float>(value); };
  return {narrow(a),
          narrow(b),
          narrow(c),
          narrow(d),
          narrow(toX - (a * fromX + b * fromY)),
          narrow(toY - (c * fromX + d * fromY))};
}

}  // namespace

QVRect QVRectMake(int x, int y, int width, int height) { return {x, y, width, height}; }

QVPoint QVPointMake(int x, int y) { return {x, y}; }

QVRect QVRectIntersect(QVRect a, QVRect b) {
  const Span columns = Common({a.x, a.width}, {b.x, b.width});
  const Span rows = Common({a.y, a.height}, {b.y, b.height});
  return {columns.start, rows.start, columns.size, rows.size};
}

QVRect QVRectOutset(QVRect rect, int amount) {
  return {Held(int64_t{rect.x} - amount), Held(int64_t{rect.y} - amount),
          Held(rect.width + 2 * int64_t{amount}), Held(rect.height + 2 * int64_t{amount})};
}

bool QVPointInRect(QVPoint point, QVRect rect) {
  return IsWithin(point.x, {rect.x, rect.width}) && IsWithin(point.y, {rect.y, rect.height});
}

QVAffineTransform QVAffineTransformMake(float angle, float scaleX, float scaleY, float pivotX,
                                        float pivotY, float translateX, float translateY) {
  const Rotation r = RotationBy(angle);
  return Carrying(r.cosine * scaleX, -r.sine * scaleY, r.sine * scaleX, r.cosine * scaleY, pivotX,
                  pivotY, static_cast<double>(pivotX) + translateX,
                  static_cast<double>(pivotY) + translateY);
}

QVAffineTransform QVAffineTransformMakeResize(QVRect from, QVRect to, bool mirrorX, bool mirrorY,
                                              float scaleX, float scaleY, int rotation,
                                              bool keepProportions) {
  const Rotation r = RotationBy(rotation);
  const double turnedWidth = std::abs(r.cosine) * from.width + std::abs(r.sine) * from.height;
  const double turnedHeight = std::abs(r.sine) * from.width + std::abs(r.cosine) * from.height;
  double fitX = turnedWidth > 0 ? to.width / turnedWidth : 0;
  double fitY = turnedHeight > 0 ? to.height / turnedHeight : 0;
  if (keepProportions) fitX = fitY = std::max(fitX, fitY);
  fitX *= scaleX;
  fitY *= scaleY;
  const double signX = mirrorX ? -1 : 1, signY = mirrorY ? -1 : 1;
  return Carrying(fitX * r.cosine * signX, -fitX * r.sine * signY, fitY * r.sine * signX,
                  fitY * r.cosine * signY, from.x + from.width * 0.5, from.y + from.height * 0.5,
                  to.x + to.width * 0.5, to.y + to.height * 0.5);
}

QVAffineTransform QVAffineTransformInvert(QVAffineTransform t) {
  const double determinant = static_cast<double>(t.a) * t.d - static_cast<double>(t.b) * t.c;
  if (determinant == 0 || !std::isfinite(determinant)) return {0, 0, 0, 0, 0, 0};
  return Carrying(t.d / determinant, -t.b / determinant, -t.c / determinant, t.a / determinant,
                  t.tx, t.ty, 0, 0);
}

QVRect QVAffineTransformTransformRect(QVRect rect, QVAffineTransform t) {
  const double left = rect.x, right = left + rect.width;
  const double top = rect.y, bottom = top + rect.height;
  const auto x = [t](double u, double v) { return t.a * u + t.b * v + t.tx; };
  const auto y = [t](double u, double v) { return t.c * u + t.d * v + t.ty; };
  const auto [lowX, highX] =
      std::minmax({x(left, top), x(right, top), x(left, bottom), x(right, bottom)});
  const auto [lowY, highY] =
      std::minmax({y(left, top), y(right, top), y(left, bottom), y(right, bottom)});
  const Span columns = Enclosing(lowX, highX);
  const Span rows = Enclosing(lowY, highY);
  return {columns.start, rows.start, columns.size, rows.size};
}
