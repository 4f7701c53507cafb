// SPDX-License-Identifier: Apache-2.0
#include "QVEffectsDspLib.h"

#include <QVCore9/Accelerate.h>

#include <cstdlib>
#include <initializer_list>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

void* QVEffectsDspLib::alloc(unsigned long size) { return std::calloc(size, 1); }

void QVEffectsDspLib::free(void* p) { std::free(p); }

float QVEffectsDspLib::dot(const float* a, const float* b, int n) {
  float sum = 0;
  if (n > 0) vDSP_dotpr(a, 1, b, 1, &sum, static_cast<vDSP_Length>(n));
  return sum;
}

void QVEffectsDspLib::dot4(const float* a, const float** b, float* out, int n) {
  constexpr int kLanes = 4;
  const int whole = n > 0 ? n / kLanes * kLanes : 0;
  for (int vector = 0; vector < 4; vector++) {
    float lanes[kLanes] = {};
    for (int i = 0; i < whole; i += kLanes) {
      for (int lane = 0; lane < kLanes; lane++) lanes[lane] += a[i + lane] * b[vector][i + lane];
    }
    float sum = (lanes[0] + lanes[2]) + (lanes[1] + lanes[3]);
    for (int i = whole; i < n; i++) sum += a[i] * b[vector][i];
    out[vector] = sum;
  }
}

unsigned long long QVEffectsDspLib::GetCPUCaps() {
  unsigned long long caps = 0;
#if defined(__x86_64__) || defined(__i386__)
  enum Register { kEax, kEbx, kEcx, kEdx };
  unsigned registers[4];
  const auto load = [&](unsigned leaf) {
    return __get_cpuid_count(leaf, 0, &registers[kEax], &registers[kEbx], &registers[kEcx],
                             &registers[kEdx]) != 0;
  };
  struct Feature {
    int cap;
    Register where;
    int bit;
  };
  const auto note = [&](std::initializer_list<Feature> features) {
    for (const auto& [cap, where, bit] : features) {
      caps |= static_cast<unsigned long long>(registers[where] >> bit & 1) << cap;
    }
  };
  if (!load(1)) return 0;
  note({{0, kEdx, 23},
        {1, kEdx, 25},
        {2, kEdx, 26},
        {3, kEcx, 0},
        {4, kEcx, 9},
        {5, kEcx, 19},
        {6, kEcx, 20},
        {8, kEcx, 28},
        {19, kEcx, 12},
        {23, kEcx, 25},
        {24, kEcx, 30}});
  if (load(7)) {
    note({{9, kEbx, 5},
          {10, kEbx, 16},
          {11, kEbx, 28},
          {12, kEbx, 26},
          {13, kEbx, 27},
          {14, kEbx, 31},
          {15, kEbx, 30},
          {16, kEbx, 17},
          {17, kEbx, 21},
          {18, kEcx, 1},
          {25, kEbx, 3},
          {26, kEbx, 8},
          {27, kEbx, 19},
          {28, kEbx, 29},
          {29, kEcx, 0}});
  }
  if (load(0x80000001)) {
    note({{7, kEcx, 6}, {20, kEcx, 16}, {21, kEcx, 11}, {22, kEcx, 5}, {30, kEdx, 29}});
  }
#endif
  return caps;
}
