// SPDX-License-Identifier: Apache-2.0
// What effects read and write at any place, pixel by pixel.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>

#include "TestImage.h"

namespace test {

/// The bytes of a pixel, with room for five planes of floats.
using Pixel = std::array<std::byte, 20>;

inline bool Contains(QVRect rect, int64_t x, int64_t y) {
  return x >= rect.x && x < int64_t{rect.x} + rect.width && y >= rect.y &&
         y < int64_t{rect.y} + rect.height;
}

/// The pixel at a place; outside the image the nearest one's colour and transparency 0.
inline Pixel NearestPixel(const TestImage& image, int64_t x, int64_t y) {
  const QVRect b = image.Bounds();
  const Form form = image.GetForm();
  const auto nearX = std::clamp<int64_t>(x, b.x, int64_t{b.x} + b.width - 1);
  const auto nearY = std::clamp<int64_t>(y, b.y, int64_t{b.y} + b.height - 1);
  const int planes = form.planes - (Contains(b, x, y) ? 0 : form.transparency);
  Pixel pixel = {};
  std::memcpy(pixel.data(), image.Address(static_cast<int>(nearX), static_cast<int>(nearY)),
              static_cast<size_t>(planes) * form.PlaneBytes());
  return pixel;
}

/// Puts a pixel at a place of the image in `bytes`, a copy of image.Bytes().
inline void PutPixel(std::vector<std::byte>& bytes, const TestImage& image, int x, int y,
                     const Pixel& pixel) {
  std::memcpy(bytes.data() + (image.Address(x, y) - image.Bytes().data()), pixel.data(),
              image.GetForm().ColBytes());
}

}  // namespace test
