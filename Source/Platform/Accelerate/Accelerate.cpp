// SPDX-License-Identifier: Apache-2.0
#include <QVCore9/Accelerate.h>

void vDSP_dotpr(const float* a, vDSP_Stride strideA, const float* b, vDSP_Stride strideB,
                float* result, vDSP_Length count) {
  constexpr vDSP_Length kLanes = 16;
  float lanes[kLanes] = {};
  vDSP_Length i = 0;
  if (strideA == 1 && strideB == 1) {
    for (; i + kLanes <= count; i += kLanes) {
      for (vDSP_Length lane = 0; lane < kLanes; lane++) lanes[lane] += a[i + lane] * b[i + lane];
    }
  }
  for (; i < count; i++) {
    const auto at = static_cast<vDSP_Stride>(i);
    lanes[i % kLanes] += a[at * strideA] * b[at * strideB];
  }
  for (vDSP_Length half = kLanes / 2; half > 0; half /= 2) {
    for (vDSP_Length lane = 0; lane < half; lane++) lanes[lane] += lanes[lane + half];
  }
  *result = lanes[0];
}
