// SPDX-License-Identifier: Apache-2.0
#include "QVEffectsUtils.h"

#include "ColorMath.h"
#include "EffectFrame.h"
#include "RowCopier.h"

namespace {

constexpr const char* kSource = "Source/Common/Utils/QVEffectsUtils";

// ---- Copies

void CopyRows(const unsigned char* from, int fromStride, unsigned char* to, int toStride, int rows,
              size_t bytes, qv::RowCopier& copier) {
  for (int row = 0; row < rows; row++, from += fromStride, to += toStride) {
    copier.Copy(to, from, bytes);
  }
}

// ---- Gray of a pixel

// What a sum of three samples, or their luma, is multiplied with: by the source's depth (8, 16,
// 32), then that of the gray image.
constexpr float kMeanScale[3][3] = {{0.33333334f, 85.666664f, 0.0013071896f},
                                    {0.0012970169f, 0.33333334f, 5.0863405e-06f},
                                    {85.0f, 21845.0f, 0.33333334f}};
constexpr float kLumaScale[3][3] = {
    {1.0f, 257.0f, 0.003921569f}, {0.0038910506f, 1.0f, 1.5259022e-05f}, {255.0f, 65535.0f, 1.0f}};

template <class T>
constexpr int kDepthIndex = sizeof(T) == 1 ? 0 : (sizeof(T) == 2 ? 1 : 2);

struct ByLuma {
  template <class From, class To>
  static constexpr float kScale = kLumaScale[kDepthIndex<From>][kDepthIndex<To>];

  template <class T>
  static float Of(T r, T g, T b) {
    return qv::Luma(static_cast<float>(r), static_cast<float>(g), static_cast<float>(b));
  }
};

struct ByMean {
  template <class From, class To>
  static constexpr float kScale = kMeanScale[kDepthIndex<From>][kDepthIndex<To>];

  template <class T>
  static float Of(T r, T g, T b) {
    return static_cast<float>(r + g + b);
  }
};

template <class Method, class From, class To>
To GrayOf(From r, From g, From b) {
  const float gray = Method::Of(r, g, b) * Method::template kScale<From, To>;
  if constexpr (std::is_floating_point_v<To>) {
    return gray;
  } else if constexpr (std::is_floating_point_v<From>) {
    return qv::Truncate<To>(gray + 0.5f);
  } else {
    // Nothing is brighter than white, which comes out as full scale: there is nothing to hold.
    const float rounded = gray + 0.5f;
    return static_cast<To>(static_cast<int>(rounded));
  }
}

// ---- Rows

template <class Method, class From, class To, class Layout>
void GrayRow(const From* __restrict in, To* __restrict out, int pixels, Layout layout) {
  for (int i = 0; i < pixels; i++, in += layout.planes) {
    out[i] = GrayOf<Method, From, To>(in[0], in[1], in[2]);
  }
}

// Without __restrict: nothing keeps a caller from passing images that share memory.
template <class T, class Layout>
void LuminosityRow(const T* in, const T* luminosity, T* out, int pixels, Layout layout) {
  for (int i = 0; i < pixels; i++, in += layout.planes, out += layout.planes) {
    const qv::Color3 rgb = {qv::ToUnit(in[0]), qv::ToUnit(in[1]), qv::ToUnit(in[2])};
    const qv::Color3 ycc = qv::RgbToYcc(rgb);
    const qv::Color3 lit = qv::YccToRgb({qv::ToUnit(luminosity[i]), ycc.y, ycc.z});
    out[0] = qv::FromUnit<T>(lit.x);
    out[1] = qv::FromUnit<T>(lit.y);
    out[2] = qv::FromUnit<T>(lit.z);
    for (int c = 3; c < layout.planes; c++) out[c] = in[c];
  }
}

// ---- Images

template <class Method, class From, class To>
void MakeGray(__QVImage* source, __QVImage* gray) {
  qv::DispatchRGBLayout(QVImageGetNumPlanes(source), QVImageGetTransparency(source),
                        [&](auto layout) {
    qv::WalkRows(kSource, {qv::ToRead(source), qv::ToWrite(gray)},
                 MakeVRect(QVImageGetBounds(gray)), [&](const qv::WalkedRow& row) {
      GrayRow<Method>(row.Of<const From>(0), row.Of<To>(1), row.pixels, layout);
    });
  });
}

template <class T>
void PutLuminosity(__QVImage* source, __QVImage* destination, __QVImage* luminosity, VRect rect) {
  qv::DispatchRGBLayout(QVImageGetNumPlanes(destination), QVImageGetTransparency(destination),
                        [&](auto layout) {
    qv::WalkRows(kSource, {qv::ToRead(source), qv::ToWrite(destination), qv::ToRead(luminosity)},
                 rect, [&](const qv::WalkedRow& row) {
      auto map = [lit = row.Of<const T>(2)](const T* in, T* out, int count, auto fixed) mutable {
        LuminosityRow(in, lit, out, count, fixed);
        lit += count;
      };
      qv::MapRow<T>(row, layout, map);
    });
  });
}

bool HasRGB(__QVImage* image) {
  return QVImageGetNumPlanes(image) - QVImageGetTransparency(image) >= 3;
}

// A size that no image has where the edges are further apart than an int holds.
int Extent(int start, int end) {
  const int64_t size = int64_t{end} - start;
  return size == VRect::Held(size) ? static_cast<int>(size) : -1;
}

// Bits a sample of the gray image; 0 for a format that isn't supported.
int GrayDepth(int format, int sourceDepth) {
  switch (format) {
    case kGrayAsSource: return sourceDepth;
    case kGray8: return 8;
    case kGray16: return 16;
    case kGray32: return 32;
    default: return 0;
  }
}

}  // namespace

int CreateImageNoCopy(__QVImage* model, __QVImage** result, const QVRect* rect) {
  return QVImageCreateWithParams2(rect ? *rect : QVImageGetBounds(model), QVImageGetDepth(model),
                                  QVImageGetNumPlanes(model), QVImageGetColorSpaceType(model),
                                  QVImageGetTransparency(model), 1, result);
}

int CopyImage(__QVImage* src, __QVImage* dst, VRect rect, QVPoint offset) {
  return qv::Guard(kSource, kQVStatusUnknown, [&]() -> int {
    if (!src || !dst) return kQVStatusBadArgument;
    if (src == dst && offset.x == 0 && offset.y == 0) return kQVStatusSuccess;
    if (rect.IsEmpty()) return kQVStatusSuccess;
    const int colBytes = QVImageGetColBytes(src);
    if (colBytes != QVImageGetColBytes(dst)) return kQVStatusUnsupported;

    QVImageAccess source(src, nullptr), target(dst, nullptr);
    // What falls outside the destination would be dropped: it isn't read at all.
    const VRect to = rect.Offset(offset.x, offset.y).Intersect(target.bounds);
    if (to.IsEmpty()) return kQVStatusSuccess;
    rect = to.Offset(-int64_t{offset.x}, -int64_t{offset.y});

    int fromStride, toStride;
    const void* from = qv::Required(source.ReadRect(rect, fromStride), kSource);
    void* out = qv::Required(target.WriteRect(to, toStride), kSource);
    const int rows = to.bottom - to.top;
    const size_t bytes = static_cast<size_t>(to.right - to.left) * colBytes;
    qv::RowCopier copier(target.memory ? rows * bytes : 0);
    CopyRows(static_cast<const unsigned char*>(from), fromStride, static_cast<unsigned char*>(out),
             toStride, rows, bytes, copier);
    return kQVStatusSuccess;
  });
}

int CreateGrayScaleImage(__QVImage* source, __QVImage*& result, VRect rect, int format,
                         int method) {
  result = nullptr;
  if (!source || (method != kGrayLuma && method != kGrayMean)) return kQVStatusBadArgument;
  if (QVImageGetColorSpaceType(source) != kQVColorSpaceRGB || !HasRGB(source)) {
    return kQVStatusUnsupported;
  }
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    const int sourceDepth = QVImageGetPlaneBytes(source) * 8;
    return qv::DispatchDepth(sourceDepth, [&]<class From>() {
      const int depth = GrayDepth(format, sourceDepth);
      return qv::DispatchDepth(depth, [&]<class To>() -> int {
        const QVRect bounds = QVRectMake(rect.left, rect.top, Extent(rect.left, rect.right),
                                         Extent(rect.top, rect.bottom));
        qv::ImageRef gray;
        qv::Check(
            QVImageCreateWithParams2(bounds, depth, 1, kQVColorSpaceGray, 0, 1, gray.Receive()),
            kSource);
        method == kGrayMean ? MakeGray<ByMean, From, To>(source, gray)
                            : MakeGray<ByLuma, From, To>(source, gray);
        result = gray.Detach();
        return kQVStatusSuccess;
      });
    });
  });
}

int ApplyLuminosity(__QVImage* source, __QVImage* destination, __QVImage* luminosity, VRect rect) {
  if (!source || !destination || !luminosity) return kQVStatusBadArgument;
  return qv::Guard(kSource, kQVStatusUnknown, [&] {
    return qv::DispatchDepth(QVImageGetPlaneBytes(source) * 8, [&]<class T>() -> int {
      if (!qv::HaveSamePixels(source, destination) || !HasRGB(destination) ||
          QVImageGetDepth(luminosity) != QVImageGetDepth(source) ||
          QVImageGetNumPlanes(luminosity) != 1) {
        return kQVStatusUnsupported;
      }
      PutLuminosity<T>(source, destination, luminosity, rect);
      return kQVStatusSuccess;
    });
  });
}

int qv::CopyTo(__QVImage* src, __QVImage* dst, QVRect rect, QVPoint offset) {
  const auto negated = [](int value) { return VRect::Held(-int64_t{value}); };
  return CopyImage(src, dst, MakeVRect(rect), {negated(offset.x), negated(offset.y)});
}
