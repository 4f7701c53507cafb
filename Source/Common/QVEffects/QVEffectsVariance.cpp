// SPDX-License-Identifier: Apache-2.0
// Local standard deviation: the root of the mean square less the squared mean, over a box.
#include <QVEffects/QVEffectsBlur.h>
#include <QVEffects/QVEffectsMeasure.h>

#include <cmath>

#include "Utils/EffectFrame.h"
#include "Utils/QVEffectsUtils.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsVariance";

// Squares of samples: 32 bits hold integers of 16 bits squared.
template <class T>
struct Squares;
template <>
struct Squares<uchar> {
  using Type = ushort;
  static constexpr auto Blur = QVEffectsBoxBlur;
};
template <>
struct Squares<ushort> {
  using Type = uint32_t;
  static int Blur(__QVImage* src, __QVImage* dst, QVRect rect, int radius) {
    return QVEffectsBoxBlurInt(src, dst, rect, -radius, radius, -radius, radius);
  }
};
template <>
struct Squares<float> {
  using Type = float;
  static constexpr auto Blur = QVEffectsBoxBlur;
};
template <class T>
using Square = typename Squares<T>::Type;

// ---- Formulas

template <class T>
Square<T> SquareOf(T sample) {
  const Square<T> wide = sample;
  return static_cast<Square<T>>(wide * wide);
}

// Rounding may leave a square below that of the mean.
template <class T>
T Deviation(T mean, Square<T> meanSquare) {
  const Square<T> squaredMean = SquareOf(mean);
  const auto difference = static_cast<float>(meanSquare - squaredMean);
  return qv::Rounded<T>(meanSquare < squaredMean ? 0.0f : std::sqrt(difference));
}

// ---- Rows

template <class T>
void SquareRow(const T* __restrict in, Square<T>* __restrict out, ptrdiff_t samples) {
  for (ptrdiff_t i = 0; i < samples; i++) out[i] = SquareOf(in[i]);
}

template <class T, class Layout>
void DeviationRow(T* __restrict row, const Square<T>* __restrict squares, int pixels,
                  Layout layout) {
  const ptrdiff_t samples = ptrdiff_t{pixels} * layout.planes;
  if (layout.transparency == 0) {
    for (ptrdiff_t i = 0; i < samples; i++) row[i] = Deviation(row[i], squares[i]);
    return;
  }
  for (ptrdiff_t i = 0; i < samples; i += layout.planes) {
    for (int c = 0; c < layout.colors; c++) row[i + c] = Deviation(row[i + c], squares[i + c]);
  }
}

template <class T>
void FillSquares(__QVImage* src, __QVImage* squares) {
  QVImageAccess source(src, nullptr), target(squares, nullptr);
  const VRect rect = target.bounds;
  const int width = rect.right - rect.left, planes = QVImageGetNumPlanes(src);
  for (int y = rect.top; y < rect.bottom; y++) {
    const void* from = qv::Required(source.ReadRow(y, rect.left, width), kSource);
    void* to = qv::Required(target.WriteRow(y, rect.left, width), kSource);
    SquareRow(static_cast<const T*>(from), static_cast<Square<T>*>(to), ptrdiff_t{width} * planes);
  }
}

// Makes deviations of the means in dst.
template <class T>
void FillDeviations(__QVImage* squares, __QVImage* dst, VRect rect) {
  QVImageAccess target(dst, nullptr), source(squares, nullptr);
  const int width = rect.right - rect.left;
  qv::DispatchLayout(QVImageGetNumPlanes(dst), QVImageGetTransparency(dst), [&](auto layout) {
    for (int y = rect.top; y < rect.bottom; y++) {
      void* row = qv::Required(target.ReadWriteRow(y, rect.left, width), kSource);
      const void* from = qv::Required(source.ReadRow(y, rect.left, width), kSource);
      DeviationRow(static_cast<T*>(row), static_cast<const Square<T>*>(from), width, layout);
    }
  });
}

template <class T>
int Variance(__QVImage* src, __QVImage* dst, QVRect rect, int radius) {
  const QVRect region = QVRectIntersect(QVRectOutset(rect, radius), QVImageGetBounds(src));
  qv::ImageRef squares;
  qv::Check(QVImageCreateWithParams2(region, sizeof(Square<T>) * 8, QVImageGetNumPlanes(src),
                                     QVImageGetColorSpaceType(src), QVImageGetTransparency(src), 1,
                                     squares.Receive()),
            kSource);
  FillSquares<T>(src, squares);
  qv::Check(Squares<T>::Blur(squares, squares, rect, radius), kSource);
  FillDeviations<T>(squares, dst, MakeVRect(rect));
  return kQVStatusSuccess;
}

}  // namespace

int QVEffectsVariance(__QVImage* src, __QVImage* dst, QVRect rect, int radius) {
  if (!src || !dst) return kQVStatusBadArgument;
  // The copy that takes the place of a blur wouldn't mind.
  if (!qv::HaveSamePixels(src, dst)) return kQVStatusUnsupported;
  return qv::Guard(kSource, kQVStatusUnknown, [&]() -> int {
    // What is written outside would be dropped.
    const QVRect inside = QVRectIntersect(rect, QVImageGetBounds(dst));
    const int reach = std::max(radius, 0);
    qv::Check(QVEffectsBoxBlur(src, dst, inside, reach), kSource);
    if (inside.width <= 0 || inside.height <= 0) return kQVStatusSuccess;
    return qv::DispatchDepth(QVImageGetPlaneBytes(src) * 8,
                             [&]<class T>() { return Variance<T>(src, dst, inside, reach); });
  });
}
