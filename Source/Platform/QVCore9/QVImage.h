// SPDX-License-Identifier: Apache-2.0
// What an image is inside the core library.
#pragma once

#include <QVCore9/QVImageHost.h>

#include <atomic>
#include <cstddef>
#include <memory>

struct __QVImage {
  std::atomic<int> references = 1;
  QVRect bounds = {};
  int depth = 0;
  int planes = 0;
  int colorSpace = 0;
  int transparency = 0;
  int dataSource = 0;
  int type = kQVImageTypePlain;
  int rowBytes = 0;
  std::byte* samples = nullptr;     // null behind callbacks
  std::byte* owned = nullptr;       // what the image frees: samples, or null
  QVImageCallbacks callbacks = {};  // of an image behind callbacks
  void* context = nullptr;

  int PlaneBytes() const { return depth / 8; }
  int ColBytes() const { return planes * PlaneBytes(); }
};
