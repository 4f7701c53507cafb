// SPDX-License-Identifier: Apache-2.0
// A picture in memory: its samples, and what else its file said.
#pragma once

#include <OpenImageIO/imageio.h>
#include <QVCore9/QVImageHost.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace qvfx {

/// Gray, gray with transparency, RGB or RGB with transparency; rows without padding.
struct Picture {
  int width = 0;
  int height = 0;
  int channels = 0;
  int depth = 8;            // 8, 16 or 32 (float) bits a sample
  bool associated = false;  // colours are multiplied by the transparency
  OIIO::ImageSpec metadata;
  std::unique_ptr<std::byte[]> samples;

  bool HasTransparency() const { return channels % 2 == 0; }
  std::size_t Pixels() const { return static_cast<std::size_t>(width) * height; }
  std::size_t Samples() const { return Pixels() * channels; }
  std::size_t Bytes() const { return Samples() * (depth / 8); }
  QVRect Bounds() const { return {0, 0, width, height}; }

  template <class T>
  T* As() {
    return reinterpret_cast<T*>(samples.get());
  }
  template <class T>
  const T* As() const {
    return reinterpret_cast<const T*>(samples.get());
  }
};

/// A picture of this shape. The samples are left as memory has them: pages that a broken file never
/// fills cost nothing.
Picture MakePicture(int width, int height, int channels, int depth);

/// A picture of the same shape and samples, without the metadata.
Picture CopyOf(const Picture& picture);

/// The sample type of a depth.
OIIO::TypeDesc TypeOf(int depth);

/// Calls function(T{}) with the sample type of a depth.
template <class Function>
void ForDepth(int depth, Function function) {
  switch (depth) {
    case 8: return function(std::uint8_t{});
    case 16: return function(std::uint16_t{});
    default: return function(float{});
  }
}

struct ReleaseImage {
  void operator()(__QVImage* image) const { QVImageRelease(image); }
};
using ImagePtr = std::unique_ptr<__QVImage, ReleaseImage>;

/// The picture as effects see it, over the same samples; null when memory is out.
ImagePtr ViewOf(Picture& picture);

}  // namespace qvfx
