// SPDX-License-Identifier: Apache-2.0
// Index colours: a circle of hues and a palette.
#include <QVEffects/QVEffectsMeasure.h>

#include <algorithm>
#include <iterator>

namespace {

// Of 255; 128 stands for a half.
constexpr unsigned char kColors[][3] = {
    {255, 0, 0},    {255, 128, 0},  {255, 255, 0},  {128, 255, 0}, {0, 255, 0},    {0, 255, 128},
    {0, 255, 255},  {0, 128, 255},  {0, 0, 255},    {128, 0, 255}, {255, 0, 255},  {255, 0, 128},
    {236, 138, 0},  {250, 150, 0},  {235, 177, 19}, {0, 109, 255}, {0, 93, 255},   {0, 181, 255},
    {234, 26, 26},  {243, 132, 23}, {249, 227, 28}, {25, 201, 25}, {29, 203, 234}, {29, 53, 234},
    {155, 29, 234}, {227, 24, 227}, {172, 122, 51}, {255, 0, 0},   {0, 34, 205},   {0, 141, 0},
    {255, 213, 0},  {0, 194, 177},
};

float Unit(unsigned char component) {
  return component == 128 ? 0.5f : static_cast<float>(component) / 255.0f;
}

}  // namespace

int QVEffectsGetColorForIndex(unsigned index, float* rgb) {
  if (!rgb) return kQVStatusBadArgument;
  std::fill_n(rgb, 3, 0.0f);
  if (index >= std::size(kColors)) return kQVStatusBadArgument;
  std::ranges::transform(kColors[index], rgb, Unit);
  return kQVStatusSuccess;
}
