// SPDX-License-Identifier: Apache-2.0
// Image blending: two layers, each with its opacity, mask and transparency, by any mode.
#include <QVEffects/QVEffectsBlend.h>

#include <array>

#include "Utils/BlendModes.h"
#include "Utils/Masks.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsBlendImages";

using qv::kStripPixels;
using qv::kStripPlanes;
using qv::Strip;

// ---- Stages on strips

// How much a layer covers each pixel: transparency times opacity times mask.
void Cover(const float* __restrict transparency, float opacity, const float* __restrict mask,
           int pixels, float* __restrict coverage) {
  const int count = qv::WholeVectors(pixels);
  for (int i = 0; i < count; i++) coverage[i] = transparency[i] * opacity * mask[i];
}

bool IsWhole(const float* coverage, int pixels) {
  bool whole = true;
  for (int i = 0; i < pixels; i++) whole &= coverage[i] == 1.0f;
  return whole;
}

// What is composited: both layers, how much they cover, and the mode's result.
struct Composition {
  const Strip& upper;
  const Strip& lower;
  const Strip& mixed;
  const float* upperCoverage;
  const float* lowerCoverage;
};

// The full compositing rule: where both layers cover, the mode's result; where one does, that
// layer; each in proportion. Values come out on the scale of the samples.
void Composite(const Composition& from, int colors, float max, int pixels, Strip& out) {
  const int count = qv::WholeVectors(pixels);
  const float* __restrict ca = from.upperCoverage;
  const float* __restrict cb = from.lowerCoverage;
  float* __restrict transparency = out[colors];
  alignas(64) float whole[kStripPixels];
  for (int i = 0; i < count; i++) whole[i] = ca[i] + cb[i] - ca[i] * cb[i];
  for (int c = 0; c < colors; c++) {
    const float* __restrict a = from.upper[c];
    const float* __restrict b = from.lower[c];
    const float* __restrict r = from.mixed[c];
    float* __restrict result = out[c];
    for (int i = 0; i < count; i++) {
      const float sum =
          b[i] * (1.0f - ca[i]) * cb[i] + (r[i] * ca[i] * cb[i] + a[i] * ca[i] * (1.0f - cb[i]));
      const float seen = sum * max / whole[i];
      const float unseen = r[i] * max;
      result[i] = whole[i] > 0.0f ? seen : unseen;
    }
  }
  for (int i = 0; i < count; i++) transparency[i] = whole[i] * max;
}

// What the rule comes to where both layers cover wholly. Other colours drop out as a product with
// 0, which is 0 for all but float layers with NaN or infinity.
void CompositeWhole(const Strip& mixed, int colors, float max, int pixels, Strip& out) {
  const int count = qv::WholeVectors(pixels);
  for (int c = 0; c < colors; c++) {
    for (int i = 0; i < count; i++) out[c][i] = mixed[c][i] * max;
  }
  std::fill_n(out[colors], count, max);
}

// ---- Rows

// The pixel outside a mask, which counts as 1: full scale, or 0 where it is read upside down.
struct MaskFill {
  alignas(float) std::byte bytes[kStripPlanes * sizeof(float)] = {};

  explicit MaskFill(__QVImage* mask) {
    if (!mask || qv::IsInverted(mask)) return;
    if (QVImageGetPlaneBytes(mask) == sizeof(float)) {
      for (size_t i = 0; i < sizeof bytes; i += sizeof kWhite) {
        std::memcpy(bytes + i, &kWhite, sizeof kWhite);
      }
    } else {
      std::ranges::fill(bytes, std::byte{0xff});
    }
  }

  static constexpr float kWhite = 1.0f;
};

struct Mask {
  MaskFill fill;
  qv::LoadStrip load;
  qv::MaskSense sense;
  int planes, colBytes;
  const std::byte* row = nullptr;
  Strip strip = {};

  Mask(__QVImage* image, qv::LoadStrip aLoad)
      : fill(image),
        load(aLoad),
        sense(image),
        planes(image ? QVImageGetNumPlanes(image) : 0),
        colBytes(image ? QVImageGetColBytes(image) : 0) {}
};

struct Layer {
  int planes;
  float opacity;
  const std::byte* row = nullptr;
  Strip strip = {};
  alignas(64) float coverage[kStripPixels];

  Layer(__QVImage* image, float anOpacity, int colors)
      : planes(QVImageGetNumPlanes(image)), opacity(anOpacity) {
    // Opaque unless the layer has samples there.
    std::fill_n(strip[colors], kStripPixels, 1.0f);
  }
};

alignas(64) constexpr auto kOnes = [] {
  std::array<float, kStripPixels> ones = {};
  ones.fill(1.0f);
  return ones;
}();

// What a call works with.
struct Blending {
  Layer a, b;
  Mask maskOfA, maskOfB;
  int planes;  // of dst
  int colors;
  qv::BlendStrip blend;
  Strip mixed = {};
  Strip result = {};
};

// The factors of a mask from pixel x of the row at hand; 1 where it has none.
const float* LoadMask(Mask& mask, int64_t x, int pixels) {
  if (!mask.row) return kOnes.data();
  qv::LoadMask(mask.load, mask.row + x * mask.colBytes, mask.planes, pixels, mask.sense,
               mask.strip);
  return mask.strip[0];
}

template <class T>
void LoadLayer(Layer& layer, Mask& mask, int colors, int64_t x, int pixels) {
  qv::LoadSamples<T>(layer.row + x * layer.planes * sizeof(T), layer.planes, pixels, layer.strip);
  Cover(layer.strip[colors], layer.opacity, LoadMask(mask, x, pixels), pixels, layer.coverage);
}

template <class T>
void BlendRow(Blending& call, T* out, int width, qv::RowCopier& copier) {
  constexpr float kMax = qv::Sample<T>::kMax;
  auto& [a, b, maskOfA, maskOfB, planes, colors, blend, mixed, result] = call;
  qv::EachStrip(width, [&](int64_t x, int pixels) {
    LoadLayer<T>(a, maskOfA, colors, x, pixels);
    LoadLayer<T>(b, maskOfB, colors, x, pixels);
    blend(a.strip, b.strip, mixed, colors, pixels);
    if (std::is_integral_v<T> && IsWhole(a.coverage, pixels) && IsWhole(b.coverage, pixels)) {
      CompositeWhole(mixed, colors, kMax, pixels, result);
    } else {
      Composite({a.strip, b.strip, mixed, a.coverage, b.coverage}, colors, kMax, pixels, result);
    }
    qv::StoreSamples<T>(copier, out + x * planes, planes, pixels, result);
  });
}

// ---- Arguments

// The function that loads the masks; null where they can't be had, or not together.
qv::LoadStrip FindMaskLoad(__QVImage* a, __QVImage* b) {
  if (a && b && QVImageGetPlaneBytes(a) != QVImageGetPlaneBytes(b)) return nullptr;
  if (!qv::FitsPlanes(a) || !qv::FitsPlanes(b)) return nullptr;
  __QVImage* mask = b ? b : a;
  switch (mask ? QVImageGetPlaneBytes(mask) : 1) {
    case 1: return qv::LoadSamples<uchar>;
    case 2: return qv::LoadSamples<ushort>;
    case 4: return qv::LoadSamples<float>;
    default: return nullptr;
  }
}

bool IsLikeA(__QVImage* image, __QVImage* a) {
  return qv::FitsPlanes(image) && QVImageGetPlaneBytes(image) == QVImageGetPlaneBytes(a);
}

}  // namespace

int QVEffectsBlendImagesWithOpacitiesAndMasks(__QVImage* a, float opacityOfA, __QVImage* maskOfA,
                                              __QVImage* b, float opacityOfB, __QVImage* maskOfB,
                                              __QVImage* dst, QVBlendMode mode, QVRect rect) {
  const qv::BlendStrip blend = qv::FindBlendStrip(mode);
  if (!blend || !a || !b || !dst) return kQVStatusBadArgument;
  const qv::LoadStrip loadMask = FindMaskLoad(maskOfA, maskOfB);
  const int planes = QVImageGetNumPlanes(dst);
  const int colors = planes - QVImageGetTransparency(dst);
  if (!loadMask || !IsLikeA(a, a) || !IsLikeA(b, a) || !IsLikeA(dst, a) || colors < 1 ||
      colors >= kStripPlanes) {
    return kQVStatusUnsupported;
  }
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(a) * 8, [&]<class T>() {
      Blending call = {Layer(a, opacityOfA, colors),
                       Layer(b, opacityOfB, colors),
                       Mask(maskOfA, loadMask),
                       Mask(maskOfB, loadMask),
                       planes,
                       colors,
                       blend};
      qv::WalkRows(kSource,
                   {qv::ToRead(a), qv::ToRead(b), qv::ToWrite(dst),
                    qv::ToReadIfThere(maskOfA, call.maskOfA.fill.bytes),
                    qv::ToReadIfThere(maskOfB, call.maskOfB.fill.bytes)},
                   MakeVRect(rect), [&](const qv::WalkedRow& row) {
        call.a.row = row.Of<const std::byte>(0);
        call.b.row = row.Of<const std::byte>(1);
        call.maskOfA.row = row.Of<const std::byte>(3);
        call.maskOfB.row = row.Of<const std::byte>(4);
        BlendRow(call, row.Of<T>(2), row.pixels, row.copier);
      });
      return kQVStatusSuccess;
    });
  });
}

int QVEffectsBlendImages(__QVImage* a, __QVImage* b, __QVImage* dst, QVRect rect,
                         QVBlendMode mode) {
  return QVEffectsBlendImagesWithOpacitiesAndMasks(a, 1.0f, nullptr, b, 1.0f, nullptr, dst, mode,
                                                   rect);
}
