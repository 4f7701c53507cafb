// SPDX-License-Identifier: Apache-2.0
// Image blending: two layers, each with its opacity, mask and transparency, by any mode.
#include <QVEffects/QVEffectsBlend.h>

#include "Utils/BlendModes.h"

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

bool IsInverted(__QVImage* mask) {
  return mask && QVImageGetType(mask) == kQVImageTypeInvertedMask;
}

// The pixel outside a mask, which counts as 1: full scale, or 0 where it is read upside down.
struct MaskFill {
  alignas(float) std::byte bytes[kStripPlanes * sizeof(float)];

  explicit MaskFill(__QVImage* mask) {
    const bool isZero = !mask || IsInverted(mask);
    std::memset(bytes, isZero ? 0 : 0xff, sizeof bytes);
    if (!isZero && QVImageGetDepth(mask) == 32) {
      std::fill_n(reinterpret_cast<float*>(bytes), kStripPlanes, 1.0f);
    }
  }
};

// A layer, its mask, and the strip of both that is at hand.
struct Layer {
  MaskFill fill;
  QVImageAccess image;
  QVImageAccess mask;
  int planes;
  int maskPlanes;
  float opacity;
  bool inverted;
  qv::LoadStrip loadMask;
  const std::byte* row = nullptr;
  const std::byte* maskRow = nullptr;
  Strip strip = {};
  Strip maskStrip = {};
  alignas(64) float coverage[kStripPixels];

  Layer(__QVImage* anImage, float anOpacity, __QVImage* aMask, int colors, qv::LoadStrip aLoadMask)
      : fill(aMask),
        image(anImage, nullptr),
        mask(aMask, fill.bytes),
        planes(QVImageGetNumPlanes(anImage)),
        maskPlanes(aMask ? QVImageGetNumPlanes(aMask) : 0),
        opacity(anOpacity),
        inverted(IsInverted(aMask)),
        loadMask(aLoadMask) {
    // Opaque unless the layer has samples there.
    std::fill_n(strip[colors], kStripPixels, 1.0f);
  }
};

// Loads the pixels from column x of the row at hand.
template <class T>
void LoadLayer(Layer& layer, int colors, int x, int pixels) {
  qv::LoadSamples<T>(layer.row + int64_t{x} * layer.image.colBytes, layer.planes, pixels,
                     layer.strip);
  float* factor = layer.maskStrip[0];
  if (layer.maskRow) {
    layer.loadMask(layer.maskRow + int64_t{x} * layer.mask.colBytes, layer.maskPlanes, pixels,
                   layer.maskStrip);
    if (layer.inverted) {
      for (int i = 0; i < pixels; i++) factor[i] = 1.0f - factor[i];
    }
  } else {
    std::fill_n(factor, kStripPixels, 1.0f);
  }
  Cover(layer.strip[colors], layer.opacity, factor, pixels, layer.coverage);
}

template <class T>
void BlendRow(Layer& a, Layer& b, T* out, int planes, int colors, int width, qv::BlendStrip blend) {
  Strip mixed, result;
  for (int x = 0; x < width; x += kStripPixels) {
    const int pixels = std::min(width - x, kStripPixels);
    LoadLayer<T>(a, colors, x, pixels);
    LoadLayer<T>(b, colors, x, pixels);
    blend(a.strip, b.strip, mixed, colors, pixels);
    constexpr float kMax = qv::Sample<T>::kMax;
    if (std::is_integral_v<T> && IsWhole(a.coverage, pixels) && IsWhole(b.coverage, pixels)) {
      CompositeWhole(mixed, colors, kMax, pixels, result);
    } else {
      Composite({a.strip, b.strip, mixed, a.coverage, b.coverage}, colors, kMax, pixels, result);
    }
    qv::StoreSamples<T>(out + int64_t{x} * planes, planes, pixels, result);
  }
}

template <class T>
int BlendRows(Layer& a, Layer& b, __QVImage* dst, VRect rect, qv::BlendStrip blend) {
  const int planes = QVImageGetNumPlanes(dst);
  const int colors = planes - QVImageGetTransparency(dst);
  QVImageAccess target(dst, nullptr);
  rect = rect.Intersect(target.bounds);
  const int width = rect.right - rect.left;
  for (int y = rect.top; y < rect.bottom && width > 0; y++) {
    const auto bytes = [](const void* row) { return static_cast<const std::byte*>(row); };
    a.row = bytes(qv::Required(a.image.ReadRow(y, rect.left, width), kSource));
    b.row = bytes(qv::Required(b.image.ReadRow(y, rect.left, width), kSource));
    void* out = qv::Required(target.WriteRow(y, rect.left, width), kSource);
    a.maskRow = bytes(a.mask.ReadRow(y, rect.left, width));
    b.maskRow = bytes(b.mask.ReadRow(y, rect.left, width));
    BlendRow<T>(a, b, static_cast<T*>(out), planes, colors, width, blend);
  }
  return kQVStatusSuccess;
}

// ---- Arguments

// Whether strips hold the image's pixels and, besides `colors` samples of colour, a transparency.
bool Fits(__QVImage* image) { return QVImageGetNumPlanes(image) <= kStripPlanes; }

// The function that loads the masks; null where they can't be had together.
qv::LoadStrip FindMaskLoad(__QVImage* a, __QVImage* b) {
  if (a && b && QVImageGetDepth(a) != QVImageGetDepth(b)) return nullptr;
  __QVImage* mask = b ? b : a;
  if (mask && (!Fits(mask) || (a && !Fits(a)))) return nullptr;
  switch (mask ? QVImageGetDepth(mask) : 8) {
    case 8: return qv::LoadSamples<uchar>;
    case 16: return qv::LoadSamples<ushort>;
    case 32: return qv::LoadSamples<float>;
    default: return nullptr;
  }
}

}  // namespace

int QVEffectsBlendImagesWithOpacitiesAndMasks(__QVImage* a, float opacityOfA, __QVImage* maskOfA,
                                              __QVImage* b, float opacityOfB, __QVImage* maskOfB,
                                              __QVImage* dst, QVBlendMode mode, QVRect rect) {
  const qv::BlendStrip blend = qv::FindBlendStrip(mode);
  if (!blend || !a || !b || !dst) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetDepth(a), [&]<class T>() -> int {
      const int depth = QVImageGetDepth(a);
      const int colors = QVImageGetNumPlanes(dst) - QVImageGetTransparency(dst);
      const qv::LoadStrip loadMask = FindMaskLoad(maskOfA, maskOfB);
      if (QVImageGetDepth(b) != depth || QVImageGetDepth(dst) != depth || !loadMask || !Fits(a) ||
          !Fits(b) || colors >= kStripPlanes) {
        return kQVStatusUnsupported;
      }
      Layer upper(a, opacityOfA, maskOfA, colors, loadMask);
      Layer lower(b, opacityOfB, maskOfB, colors, loadMask);
      return BlendRows<T>(upper, lower, dst, MakeVRect(rect), blend);
    });
  });
}

int QVEffectsBlendImages(__QVImage* a, __QVImage* b, __QVImage* dst, QVRect rect,
                         QVBlendMode mode) {
  return QVEffectsBlendImagesWithOpacitiesAndMasks(a, 1.0f, nullptr, b, 1.0f, nullptr, dst, mode,
                                                   rect);
}
