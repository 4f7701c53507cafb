// SPDX-License-Identifier: Apache-2.0
// What effects read and write at any place, pixel by pixel.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>

#include "TestImage.h"

namespace test {

/// The bytes of a pixel, with room for five planes of floats and more.
using Pixel = std::array<std::byte, 32>;

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

inline float FullScale(int depth) { return depth == 8 ? 255.0f : (depth == 16 ? 65535.0f : 1.0f); }

/// What samples are multiplied with to lie from 0 to 1.
inline float UnitScale(int depth) {
  return depth == 8 ? 0.003921569f : (depth == 16 ? 1.5259022e-05f : 1.0f);
}

/// A sample on its own scale.
inline float GetSample(const Pixel& pixel, int plane, int depth) {
  const std::byte* at = pixel.data() + plane * (depth / 8);
  uint16_t integer = 0;
  float value;
  std::memcpy(&value, at, sizeof value);
  std::memcpy(&integer, at, std::min(depth / 8, 2));
  return depth == 32 ? value : static_cast<float>(integer);
}

/// A sample of an image, or of its nearest pixel.
inline float SampleAt(const TestImage& image, int64_t x, int64_t y, int plane) {
  return GetSample(NearestPixel(image, x, y), plane, image.GetForm().depth);
}

/// What a mask's pixel counts as, from 0 to 1.
inline float MaskCount(const TestImage& mask, int x, int y) {
  const float m = SampleAt(mask, x, y, 0) * UnitScale(mask.GetForm().depth);
  return QVImageGetType(mask) == kQVImageTypeInvertedMask ? 1 - m : m;
}

/// Sets a sample from a value on its own scale: an integer one is rounded, half up, and held to the
/// range.
inline void SetSample(Pixel& pixel, int plane, int depth, float value) {
  std::byte* at = pixel.data() + plane * (depth / 8);
  if (depth == 32) {
    std::memcpy(at, &value, sizeof value);
    return;
  }
  const float rounded = value + 0.5f, max = FullScale(depth);
  const auto held = static_cast<uint16_t>(rounded >= max ? max : (rounded > 0 ? rounded : 0));
  at[0] = static_cast<std::byte>(held);  // the low byte comes first
  if (depth == 16) at[1] = static_cast<std::byte>(held >> 8);
}

/// Puts a pixel at a place of the image in `bytes`: image.Bytes() or a copy.
inline void PutPixel(std::vector<std::byte>& bytes, const TestImage& image, int x, int y,
                     const Pixel& pixel) {
  std::memcpy(bytes.data() + (image.Address(x, y) - image.Bytes().data()), pixel.data(),
              image.GetForm().ColBytes());
}

/// The bytes of an image after each of its pixels in the rectangle has become make(x, y).
template <class Make>
std::vector<std::byte> Changed(const TestImage& image, QVRect rect, Make&& make) {
  std::vector<std::byte> bytes = image.Bytes();
  const QVRect part = QVRectIntersect(rect, image.Bounds());
  for (int y = part.y; y < part.y + part.height; y++) {
    for (int x = part.x; x < part.x + part.width; x++) PutPixel(bytes, image, x, y, make(x, y));
  }
  return bytes;
}

/// The curve of brightness: a hyperbola.
inline float Brightened(float x, float b) {
  const float t = b + b, k = t > 0 ? 1 / (t + 1) : 1 - t;
  return x / ((1 - k) * x + k);
}

/// The curve of midtone contrast: two cubics.
inline float WithMidtones(float x, float p) {
  const float m = p >= 0 ? p + 1 : 1 / (1 - p), a = (1 - m) + (1 - m), q = (m - 1) * 4;
  const float y = 1 - x;
  return x < 0.5f ? (a * x + q * x * x + 1) * x : 1 - (a * y + q * y * y + 1) * y;
}

}  // namespace test
