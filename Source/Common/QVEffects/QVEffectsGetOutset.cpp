// SPDX-License-Identifier: Apache-2.0
// The outset query: a table of effects and how far they read.
#include <QVEffects/QVEffects.h>

#include <cmath>

#include "Utils/Outset.h"

namespace qv {

int TrueGaussianOutset(float radius) {
  return WholePixels(static_cast<double>(radius * 2.5f) + 0.5);
}

int FastGaussianOutset(float radius) {
  constexpr float kMost = 2147483648.0f;  // keeps squares finite
  const float u = (radius > 0.0f ? std::min(radius, kMost) : 0.0f) / 1.1f;
  const float n = std::trunc(u);
  const float squares = 3.0f * u * u + -2.0f * n * n;
  const double rest = std::trunc(std::sqrt(static_cast<double>(squares)) + 0.5);
  return WholePixels(rest + 2.0 * static_cast<double>(n));
}

int GaussianOutset(float radius) {
  return radius < 10.0f ? TrueGaussianOutset(radius) : FastGaussianOutset(radius);
}

}  // namespace qv

namespace {

struct Row {
  void* effect;
  int (*outset)(float radius);
};

int NoOutset(float) { return 0; }

#define ROW(effect, outset) {reinterpret_cast<void*>(effect), outset}

// By how they reach, in the order of the headers. An effect that isn't here needs the whole image.
const Row kRows[] = {
    // One pixel at a time.
    ROW(QVEffectsInvert, NoOutset),       ROW(QVEffectsFillColor, NoOutset),
    ROW(QVEffectsCopyImage, NoOutset),    ROW(QVEffectsBlendImagesWithOpacitiesAndMasks, NoOutset),
    ROW(QVEffectsBlendImages, NoOutset),  ROW(QVEffectsConvertImageMode, NoOutset),
    ROW(QVEffectsAnalyzeImage, NoOutset), ROW(QVEffectsGetAvgColor, NoOutset),
    ROW(QVEffectsFillGradient, NoOutset),
};

}  // namespace

int QVEffectsGetOutset(void* effect, float radius) {
  for (const Row& row : kRows) {
    if (row.effect == effect) return row.outset(radius);
  }
  return -1;
}
