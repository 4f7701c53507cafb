// SPDX-License-Identifier: Apache-2.0
#include "GaussianKernel.h"

#include <QVCore9/QVCore9.h>

#include <cstdint>
#include <new>

int _CreateGauusianFilter(float sigma, float*& filter, int& size) {
  constexpr int kLargest = 1 << 29;
  const int radius = qv::GaussianRadius(sigma);
  filter = nullptr;
  size = 0;
  if (radius < 0 || radius > kLargest) return kQVStatusUnknown3;
  size = 2 * radius + 1;
  filter = new (std::nothrow) float[size];
  if (!filter) return kQVStatusUnknown3;

  const float e = radius > 0 ? -1.0f / ((sigma + sigma) * sigma) : 0.0f;
  double sum = 0;
  for (int64_t i = -radius; i <= radius; i++) {
    const float weight =
        static_cast<float>(std::exp(static_cast<double>(static_cast<float>(i * i) * e)));
    filter[i + radius] = weight;
    sum += static_cast<double>(weight);
  }
  const float scale = 1.0f / static_cast<float>(sum);
  for (int i = 0; i < size; i++) filter[i] *= scale;
  return kQVStatusSuccess;
}
