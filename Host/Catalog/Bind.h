// SPDX-License-Identifier: Apache-2.0
// Turns a C function into a row's `run`, by its type: each parameter takes the next value.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "Catalog.h"

namespace catalog {

// A value on its way into a C parameter of type T; lives as long as the call.
template <class T>
class Argument {
 public:
  Argument(const Value& value, const Call&) : mValue(static_cast<T>(std::get<double>(value))) {}
  operator T() const { return mValue; }

 private:
  T mValue;
};

template <>
class Argument<__QVImage*> {
 public:
  Argument(const Value& value, const Call&) : mImage(std::get<Image>(value)) {}
  operator __QVImage*() const { return mImage; }

 private:
  __QVImage* mImage;
};

// A colour: one float per plane of the destination. A gray image takes the colour's luma. Or a
// curve: 256 floats for each colour plane of the destination.
template <>
class Argument<const float*> {
 public:
  Argument(const Value& value, const Call& call);
  operator const float*() const { return mSamples.data(); }

 private:
  std::vector<float> mSamples;
};

template <class... Args, std::size_t... I>
int Apply(auto function, const Call& call, std::index_sequence<I...>, auto... images) {
  return function(images..., call.rect, Argument<Args>(call.values[I], call)...);
}

// (src, dst, rect, parameters...)
template <class... Args>
std::function<int(const Call&)> Bind(int (*function)(__QVImage*, __QVImage*, QVRect, Args...)) {
  return [function](const Call& call) {
    return Apply<Args...>(function, call, std::index_sequence_for<Args...>(), call.src, call.dst);
  };
}

// (image, rect, parameters...)
template <class... Args>
std::function<int(const Call&)> Bind(int (*function)(__QVImage*, QVRect, Args...)) {
  return [function](const Call& call) {
    return Apply<Args...>(function, call, std::index_sequence_for<Args...>(), call.dst);
  };
}

}  // namespace catalog
