// SPDX-License-Identifier: Apache-2.0
#include <QVCore9/QVCore9.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <ostream>

static bool operator==(QVRect a, QVRect b) {
  return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}

static std::ostream& operator<<(std::ostream& out, QVRect r) {
  return out << '{' << r.x << ", " << r.y << ", " << r.width << ", " << r.height << '}';
}

namespace {

struct Point {
  double x, y;
};

Point Apply(QVAffineTransform t, Point p) {
  return {t.a * p.x + t.b * p.y + t.tx, t.c * p.x + t.d * p.y + t.ty};
}

void ExpectCarries(QVAffineTransform t, Point from, Point to) {
  const Point p = Apply(t, from);
  EXPECT_NEAR(p.x, to.x, 1e-4);
  EXPECT_NEAR(p.y, to.y, 1e-4);
}

TEST(CoreGeometry, IntersectIsTheCommonPart) {
  const struct {
    QVRect a, b, common;
  } cases[] = {
      {{0, 0, 10, 10}, {5, -5, 10, 10}, {5, 0, 5, 5}},
      {{-10, -10, 5, 30}, {-7, 0, 100, 2}, {-7, 0, 2, 2}},
      {{0, 0, 10, 10}, {0, 0, 10, 10}, {0, 0, 10, 10}},
      {{0, 0, 4, 10}, {4, 0, 4, 10}, {4, 0, 0, 10}},
      {{0, 0, 4, 4}, {2, 9, 4, 4}, {2, 9, 2, 0}},
      {{0, 0, 4, 4}, {1, 1, -2, 2}, {1, 1, 0, 2}},
      {{INT_MAX - 5, 0, INT_MAX, 1},
       {INT_MAX - 9, 0, INT_MAX, 1},
       {INT_MAX - 5, 0, INT_MAX - 4, 1}},
      {{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, {-2, -2, INT_MAX, 9}, {-2, -2, 1, 1}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(QVRectIntersect(c.a, c.b), c.common);
    EXPECT_EQ(QVRectIntersect(c.b, c.a), c.common);
  }
}

TEST(CoreGeometry, OutsetAndPointsHoldAtTheEndsOfInt) {
  EXPECT_EQ(QVRectOutset({3, -4, 5, 6}, 2), QVRectMake(1, -6, 9, 10));
  EXPECT_EQ(QVRectOutset({3, -4, 5, 6}, -2), QVRectMake(5, -2, 1, 2));
  EXPECT_EQ(QVRectOutset({INT_MIN + 1, 0, INT_MAX - 1, 1}, 5),
            QVRectMake(INT_MIN, -5, INT_MAX, 11));
  EXPECT_EQ(QVRectOutset({0, INT_MAX, 0, 0}, INT_MIN),
            QVRectMake(INT_MAX, INT_MAX, INT_MIN, INT_MIN));
  const struct {
    int x, y;
    QVRect rect;
    bool inside;
  } cases[] = {
      {-3, 4, {-3, 4, 2, 2}, true},  {-2, 5, {-3, 4, 2, 2}, true},
      {-1, 4, {-3, 4, 2, 2}, false}, {-3, 6, {-3, 4, 2, 2}, false},
      {-4, 4, {-3, 4, 2, 2}, false}, {-3, 3, {-3, 4, 2, 2}, false},
      {0, 0, {0, 0, 0, 5}, false},   {INT_MAX, 0, {INT_MAX - 1, 0, INT_MAX, 1}, true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(QVPointInRect(QVPointMake(c.x, c.y), c.rect), c.inside) << c.x << ' ' << c.y;
  }
}

TEST(CoreGeometry, ScalesThenTurnsAboutThePivotThenMoves) {
  const struct {
    float angle, cosine, sine;
  } cases[] = {{0, 1, 0},    {90, 0, 1},  {180, -1, 0}, {270, 0, -1},
               {-90, 0, -1}, {360, 1, 0}, {450, 0, 1},  {3600090, 0, 1}};  // exactly
  for (const auto& c : cases) {
    const QVAffineTransform t = QVAffineTransformMake(c.angle, 1, 1, 0, 0, 0, 0);
    EXPECT_TRUE(t.a == c.cosine && t.b == -c.sine && t.c == c.sine && t.d == c.cosine) << c.angle;
  }
  ExpectCarries(QVAffineTransformMake(30, 1, 1, 0, 0, 0, 0), {1, 0}, {std::sqrt(0.75), 0.5});
  const QVAffineTransform t = QVAffineTransformMake(90, 2, 3, 10, 20, 5, -7);
  ExpectCarries(t, {10, 20}, {15, 13});
  ExpectCarries(t, {11, 20}, {15, 15});
  ExpectCarries(t, {10, 21}, {12, 13});
}

TEST(CoreGeometry, InverseUndoes) {
  for (const QVAffineTransform t :
       {QVAffineTransformMake(33, 2, 0.25f, 10, -20, 5, 7), QVAffineTransform{1, 2, 3, 4, 5, 6},
        QVAffineTransform{0, -8, 0.5f, 0, 100, -100}}) {
    const QVAffineTransform inverse = QVAffineTransformInvert(t);
    for (const Point p : {Point{0, 0}, {1, 0}, {0, 1}, {-13, 57}}) {
      ExpectCarries(inverse, Apply(t, p), p);
    }
  }
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const QVAffineTransform t :
       {QVAffineTransform{1, 2, 2, 4, 5, 6}, {kInfinity, 0, 0, 1, 5, 6}, {1, NAN, 1, 1, 0, 0}}) {
    ExpectCarries(QVAffineTransformInvert(t), {123, 456}, {0, 0});
  }
}

TEST(CoreGeometry, TransformedRectHoldsTheCorners) {
  const struct {
    QVRect rect;
    QVAffineTransform transform;
    QVRect expected;
  } cases[] = {
      {{-3, 4, 5, 6}, {1, 0, 0, 1, 0, 0}, {-3, 4, 5, 6}},
      {{0, 0, 4, 2}, {0, -1, 1, 0, 0, 0}, {-2, 0, 2, 4}},
      {{0, 0, 4, 2}, {1, 0, 0, 1, 0.5f, -0.25f}, {0, -1, 5, 3}},
      {{1, 1, 3, 3}, {-0.5f, 0, 0, 2, 0, 0}, {-2, 2, 2, 6}},
      {{0, 0, 10, 10}, {1, 1, 1, -1, 0, 0}, {0, -10, 20, 20}},
      {{7, 7, 9, 9}, {0, 0, 0, 0, 3, -3}, {3, -3, 0, 0}},
      {{-1, 1, 2, 2}, {1e30f, 0, 0, 1e30f, 0, 0}, {INT_MIN, INT_MAX, INT_MAX, 0}},
      {{1, 1, 2, 2}, {NAN, 0, 0, 1, 0, 0}, {0, 1, 0, 2}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(QVAffineTransformTransformRect(c.rect, c.transform), c.expected);
  }
}

// About the centres, which are (30, 35) and (35, 52.5).
TEST(CoreGeometry, ResizeMirrorsThenTurnsThenFits) {
  constexpr QVRect kFrom = {10, 20, 40, 30}, kTo = {-5, 7, 80, 91};
  constexpr double kX = 80 / 40.0, kY = 91 / 30.0;              // upright
  constexpr double kTurnedX = 80 / 30.0, kTurnedY = 91 / 40.0;  // on its side
  const struct {
    bool mirrorX, mirrorY;
    float scaleX, scaleY;
    int rotation;
    bool keepProportions;
    double a, b, c, d;
  } cases[] = {
      {false, false, 1, 1, 0, false, kX, 0, 0, kY},
      {true, false, 1, 1, 0, false, -kX, 0, 0, kY},
      {false, true, 1, 1, 0, false, kX, 0, 0, -kY},
      {true, true, 1, 1, 720, false, -kX, 0, 0, -kY},
      {false, false, 1, 1, 180, false, -kX, 0, 0, -kY},
      {false, false, 1, 1, 90, false, 0, -kTurnedX, kTurnedY, 0},
      {false, false, 1, 1, -90, false, 0, kTurnedX, -kTurnedY, 0},
      {true, false, 1, 1, 90, false, 0, -kTurnedX, -kTurnedY, 0},
      {false, true, 1, 1, 90, false, 0, kTurnedX, kTurnedY, 0},
      {true, false, 1, 1, 270, false, 0, kTurnedX, kTurnedY, 0},
      {false, false, 1, 1, 0, true, kY, 0, 0, kY},
      {false, false, 1, 1, 90, true, 0, -kTurnedX, kTurnedX, 0},
      {false, false, 0.5f, 4, 0, false, kX / 2, 0, 0, kY * 4},
      {false, false, 0.5f, 4, 0, true, kY / 2, 0, 0, kY * 4},
      {false, false, 0.5f, 1, 90, false, 0, -kTurnedX / 2, kTurnedY, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.mirrorX << c.mirrorY << ' ' << c.rotation);
    const QVAffineTransform t = QVAffineTransformMakeResize(
        kFrom, kTo, c.mirrorX, c.mirrorY, c.scaleX, c.scaleY, c.rotation, c.keepProportions);
    ExpectCarries(t, {30, 35}, {35, 52.5});
    ExpectCarries(t, {50, 35}, {35 + 20 * c.a, 52.5 + 20 * c.c});
    ExpectCarries(t, {30, 50}, {35 + 15 * c.b, 52.5 + 15 * c.d});
  }
  const QVAffineTransform none =
      QVAffineTransformMakeResize({5, 5, 0, 0}, kTo, false, false, 1, 1, 0, true);
  ExpectCarries(none, {1000, -1000}, {35, 52.5});
}

}  // namespace
