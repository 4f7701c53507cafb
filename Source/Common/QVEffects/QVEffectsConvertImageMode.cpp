// SPDX-License-Identifier: Apache-2.0
// Image modes: RGB to HSB, HSL, YCC and gray, and back. Rows are worked in strips, so that a mode
// is written once for all depths, with and without transparency.
#include <QVEffects/QVEffectsConvert.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "Utils/ColorMath.h"
#include "Utils/Strips.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsConvertImageMode";

using qv::Color3;
using qv::Strip;

// ---- Stages: from colour samples on their own scale to values on that scale. The plane after the
// colour samples is the source's transparency.

struct Scale {
  float toUnit, max;
};

using Stage = void (*)(const Strip& in, int pixels, Scale scale, Strip& out);

template <Color3 (*formula)(Color3)>
void ConvertColors(const Strip& in, int pixels, Scale scale, Strip& out) {
  const float* __restrict x = in[0], * __restrict y = in[1], * __restrict z = in[2];
  float* __restrict outX = out[0], * __restrict outY = out[1], * __restrict outZ = out[2];
  for (int i = 0; i < pixels; i++) {
    const Color3 c = formula({x[i] * scale.toUnit, y[i] * scale.toUnit, z[i] * scale.toUnit});
    outX[i] = c.x * scale.max;
    outY[i] = c.y * scale.max;
    outZ[i] = c.z * scale.max;
  }
}

void ToGray(const Strip& in, int pixels, Scale, Strip& out) {
  float* __restrict gray = out[0];
  for (int i = 0; i < pixels; i++) gray[i] = qv::Luma(in[0][i], in[1][i], in[2][i]);
}

void ToGrayOnWhite(const Strip& in, int pixels, Scale scale, Strip& out) {
  float* __restrict gray = out[0];
  for (int i = 0; i < pixels; i++) {
    const float a = in[3][i] * scale.toUnit;
    gray[i] = (1.0f - a) * scale.max + qv::Luma(in[0][i], in[1][i], in[2][i]) * a;
  }
}

void FromGray(const Strip& in, int pixels, Scale, Strip& out) {
  for (int c = 0; c < 3; c++) std::memcpy(out[c], in[0], pixels * sizeof(float));
}

struct Mode {
  int fromColors, toColors;
  Stage stage;
  Color3 (*formula)(Color3) = nullptr;  // of a single colour
};

template <Color3 (*formula)(Color3)>
constexpr Mode kColorMode = {3, 3, ConvertColors<formula>, formula};

// By number.
constexpr Mode kModes[] = {
    kColorMode<qv::RgbToHsb>, kColorMode<qv::HsbToRgb>, kColorMode<qv::RgbToHsl>,
    kColorMode<qv::HslToRgb>, kColorMode<qv::RgbToYcc>, kColorMode<qv::YccToRgb>,
    {3, 1, ToGray},           {1, 3, FromGray},         {3, 1, ToGrayOnWhite},
};

// ---- Rows

struct Strips {
  Strip in, out;
};

template <class T>
void ConvertRow(const T* from, int fromPlanes, T* to, int toPlanes, int pixels, const Mode& mode,
                Strips& strips, qv::RowCopier& copier) {
  constexpr Scale kScale = {qv::Sample<T>::kToUnit, qv::Sample<T>::kMax};
  Strip &in = strips.in, &out = strips.out;
  qv::EachStrip(pixels, [&](int64_t x, int count) {
    qv::LoadUnscaled<T>(from + x * fromPlanes, fromPlanes, count, in);
    mode.stage(in, count, kScale, out);
    std::memcpy(out[mode.toColors], in[mode.fromColors], count * sizeof(float));
    qv::StoreSamples<T>(copier, to + x * toPlanes, toPlanes, count, out);
  });
}

template <class T>
int ConvertImage(__QVImage* src, __QVImage* dst, VRect rect, const Mode& mode) {
  const int fromPlanes = mode.fromColors + QVImageGetTransparency(src);
  const int toPlanes = mode.toColors + QVImageGetTransparency(dst);
  Strips strips;
  // Stays where the source has no transparency that overwrites it.
  std::fill_n(strips.in[mode.fromColors], qv::kStripPixels, qv::Sample<T>::kMax);
  qv::WalkRows(kSource, {qv::ToRead(src), qv::ToWrite(dst)}, rect, [&](const qv::WalkedRow& row) {
    ConvertRow(row.Of<const T>(0), fromPlanes, row.Of<T>(1), toPlanes, row.pixels, mode, strips,
               row.copier);
  });
  return kQVStatusSuccess;
}

// Whether the image has these colour samples, and transparency or none, and no more.
bool HasColors(__QVImage* image, int colors) {
  const int transparency = QVImageGetTransparency(image);
  return (transparency == 0 || transparency == 1) &&
         QVImageGetNumPlanes(image) == colors + transparency;
}

}  // namespace

int QVEffectsConvertImageMode(__QVImage* src, __QVImage* dst, QVRect rect, unsigned mode) {
  if (mode >= std::size(kModes) || !src || !dst) return kQVStatusBadArgument;
  const Mode& conversion = kModes[mode];
  return qv::Guard<qv::Boundary::kMemoryOnly>(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(src), [&]<class T>() -> int {
      if (QVImageGetDepth(dst) != QVImageGetDepth(src) || !HasColors(src, conversion.fromColors) ||
          !HasColors(dst, conversion.toColors)) {
        return kQVStatusUnsupported;
      }
      return ConvertImage<T>(src, dst, MakeVRect(rect), conversion);
    });
  });
}

int QVEffectsConvertColorMode(const float* in, float* out, unsigned mode) {
  if (mode > kQVColorModeYCCToRGB || !in || !out) return kQVStatusBadArgument;
  const Color3 c = kModes[mode].formula({in[0], in[1], in[2]});
  out[0] = c.x;
  out[1] = c.y;
  out[2] = c.z;
  return kQVStatusSuccess;
}
