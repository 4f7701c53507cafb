// SPDX-License-Identifier: Apache-2.0
#include "QVEffectsUtils.h"

#include "Failure.h"
#include "QVImageAccess.h"
#include "RowCopier.h"

namespace {

constexpr const char* kSource = "Source/Common/Utils/QVEffectsUtils";

void CopyRows(const unsigned char* from, int fromStride, unsigned char* to, int toStride, int rows,
              size_t bytes, qv::RowCopier& copier) {
  for (int row = 0; row < rows; row++, from += fromStride, to += toStride) {
    copier.Copy(to, from, bytes);
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
