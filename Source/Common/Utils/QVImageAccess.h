// SPDX-License-Identifier: Apache-2.0
// Plain pointers to rows and rectangles of an image, in memory or not, inside the image or not.
#pragma once

#include <QVCore9/QVCore9.h>

#include <cstdint>

#include "VRect.h"

/// What lies outside the image has, sample for sample, the colour of the nearest pixel inside and
/// transparency 0, unless there is a fill pixel: then it is that. What is written outside is
/// dropped.
///
/// A pointer is valid until the next call that gives one. What was written reaches the image at the
/// next such call, at Flush() or at Dispose(). One thread at a time.
class QVEFFECTS_API QVImageAccess {
 public:
  /// As `left` of a row: the image's left edge.
  static constexpr int kImageLeft = 0x8000000;

  enum State : int32_t { kIdle = 0, kReading = 1, kWriting = 2 };

  __QVImage* image;       // a reference is held; null stands for an image that isn't there
  VRect bounds;           // the image's
  bool packedOnly;        // refuse addresses in image memory for more than one row
  int32_t rowBytes;       // the image's stride
  int32_t colBytes;       // bytes from one pixel to the next
  int32_t colorBytes;     // bytes of a pixel's colour samples; the transparency sample follows
  void* memory;           // the image's samples, or null
  const void* fillPixel;  // colBytes bytes that stand for everything outside, or null; not owned
  State state;
  unsigned char* buffer;  // private; never shrinks
  uint64_t bufferSize;
  VRect bufferRect;  // what was handed out last

  QVImageAccess();
  QVImageAccess(__QVImage* image, const void* fillPixel);
  QVImageAccess(const QVImageAccess& other);
  QVImageAccess& operator=(const QVImageAccess&) = delete;
  ~QVImageAccess();

  /// Zeroes the members and releases nothing.
  void Init();
  /// Takes an image into a fresh accessor.
  void SetImage(__QVImage* image, const void* fillPixel);
  void Dispose();

  /// Writes out what is pending; the status of the write.
  int Flush() { return FlushBuffer(); }

  /// Pointers to a rectangle, and the stride in bytes; null when it can't be had.
  const void* ReadRect(const VRect& rect, int& rowBytes);
  void* WriteRect(const VRect& rect, int& rowBytes);
  void* ReadWriteRect(const VRect& rect, int& rowBytes);

  /// The same for `width` pixels of one row. kImageLeft starts at the image's left edge, a negative
  /// width goes up to its right edge.
  const void* ReadRow(int row, int left, int width);
  void* WriteRow(int row, int left, int width);
  void* ReadWriteRow(int row, int left, int width);

  /// Edges past the range of int are held to it. A row that is cut by that can't be had.
  VRect RowToRect(int row, int left, int width) const;
  void* GetAddressInMemory(const VRect& rect, int& rowBytes) const;
  void* AllocBuffer(const VRect& rect, int& rowBytes);
  int FlushBuffer();

 private:
  bool IsRow(const VRect& rect, int width);
  void FillBuffer(const VRect& rect);
  bool ReadNearest(const VRect& rect, const VRect& inside, int rowBytes, VRect& place);
  void ExtendSideways(const VRect& rect, const VRect& place, int rowBytes);
  void ExtendUpAndDown(const VRect& rect, const VRect& place, int rowBytes);
  void TakeColor(unsigned char* to, const unsigned char* from) const;
};
