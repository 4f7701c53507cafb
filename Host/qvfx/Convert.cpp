// SPDX-License-Identifier: Apache-2.0
#include "Convert.h"

#include <algorithm>
#include <limits>
#include <type_traits>
#include <utility>

namespace qvfx {
namespace {

template <class T>
constexpr bool kIsFloat = std::is_floating_point_v<T>;

template <class T>
constexpr std::uint64_t kFull = kIsFloat<T> ? 1 : std::numeric_limits<T>::max();

template <class To, class From>
To ConvertSample(From value) {
  if constexpr (std::is_same_v<To, From>) {
    return value;
  } else if constexpr (kIsFloat<To>) {
    return static_cast<To>(value) / static_cast<To>(kFull<From>);
  } else if constexpr (kIsFloat<From>) {
    if (!(value > 0)) return 0;
    return static_cast<To>(std::lround(std::min(static_cast<double>(value), 1.0) * kFull<To>));
  } else {
    return static_cast<To>((value * kFull<To> + kFull<From> / 2) / kFull<From>);
  }
}

template <class T>
T Multiply(T color, T alpha) {
  if constexpr (kIsFloat<T>)
    return color * alpha;
  else
    return static_cast<T>((color * std::uint64_t{alpha} + kFull<T> / 2) / kFull<T>);
}

template <class T>
T Divide(T color, T alpha) {
  if (alpha == 0) return color;
  if constexpr (kIsFloat<T>)
    return color / alpha;
  else
    return static_cast<T>(std::min((color * kFull<T> + alpha / 2u) / alpha, kFull<T>));
}

// Copies the metadata and moves each pixel's samples from one shape to another.
template <class Function>
Picture Reshape(Picture from, int channels, Function pixel) {
  Picture to = MakePicture(from.width, from.height, channels, from.depth);
  to.associated = from.associated;
  to.metadata = std::move(from.metadata);
  ForDepth(from.depth, [&](auto sample) {
    using T = decltype(sample);
    for (std::size_t i = 0; i < from.Pixels(); ++i) {
      pixel(from.As<T>() + i * from.channels, to.As<T>() + i * channels);
    }
  });
  return to;
}

}  // namespace

Picture WithDepth(Picture picture, int depth) {
  if (picture.depth == depth) return picture;
  Picture to = MakePicture(picture.width, picture.height, picture.channels, depth);
  to.associated = picture.associated;
  to.metadata = std::move(picture.metadata);
  ForDepth(picture.depth, [&](auto from) {
    ForDepth(depth, [&](auto sample) {
      using From = decltype(from);
      using To = decltype(sample);
      std::transform(picture.As<From>(), picture.As<From>() + picture.Samples(), to.As<To>(),
                     ConvertSample<To, From>);
    });
  });
  return to;
}

Picture WithAssociation(Picture picture, bool associated) {
  if (picture.associated == associated || !picture.HasTransparency()) return picture;
  picture.associated = associated;
  ForDepth(picture.depth, [&](auto sample) {
    using T = decltype(sample);
    T* const end = picture.As<T>() + picture.Samples();
    for (T* pixel = picture.As<T>(); pixel != end; pixel += picture.channels) {
      T* const alpha = pixel + picture.channels - 1;
      std::transform(pixel, alpha, pixel, [&](T color) {
        return associated ? Multiply(color, *alpha) : Divide(color, *alpha);
      });
    }
  });
  return picture;
}

Picture WithTransparency(Picture picture) {
  if (picture.HasTransparency()) return picture;
  const int colors = picture.channels;
  return Reshape(std::move(picture), colors + 1, [colors](const auto* from, auto* to) {
    using T = std::remove_reference_t<decltype(*to)>;
    std::copy_n(from, colors, to);
    to[colors] = std::is_integral_v<T> ? std::numeric_limits<T>::max() : T{1};
  });
}

Picture WithoutTransparency(Picture picture) {
  if (!picture.HasTransparency()) return picture;
  const int colors = picture.channels - 1;
  return Reshape(std::move(picture), colors,
                 [colors](const auto* from, auto* to) { std::copy_n(from, colors, to); });
}

Picture FirstPlane(Picture picture) {
  if (picture.channels == 1) return picture;
  return Reshape(std::move(picture), 1, [](const auto* from, auto* to) { *to = *from; });
}

Picture WithRGB(Picture picture) {
  if (picture.channels >= 3) return picture;
  const int grays = picture.channels;
  return Reshape(std::move(picture), grays + 2, [grays](const auto* from, auto* to) {
    std::fill_n(to, 3, from[0]);
    std::copy_n(from + 1, grays - 1, to + 3);
  });
}

}  // namespace qvfx
