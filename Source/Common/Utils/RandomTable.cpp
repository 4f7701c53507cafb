// SPDX-License-Identifier: Apache-2.0
// The table of noise.
#include <QVEffects/QVEffectsColor.h>

namespace {

/// The low bits of SplitMix64, which turns each index into 64 well-mixed bits. The first entries
/// are fixed.
consteval unsigned short Entry(uint64_t i) {
  constexpr unsigned short kFirst[] = {56880, 6955, 5945, 27744, 21540, 5224, 53899, 41390};
  if (i < 8) return kFirst[i];
  uint64_t z = i * 0x9E3779B97F4A7C15;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
  return static_cast<unsigned short>(z ^ (z >> 31));
}

}  // namespace

// Entries from i up. An array has to be spelled out to be made by the compiler.
#define N4(i) Entry(i), Entry((i) + 1), Entry((i) + 2), Entry((i) + 3)
#define N16(i) N4(i), N4((i) + 4), N4((i) + 8), N4((i) + 12)
#define N64(i) N16(i), N16((i) + 16), N16((i) + 32), N16((i) + 48)
#define N256(i) N64(i), N64((i) + 64), N64((i) + 128), N64((i) + 192)
#define N1024(i) N256(i), N256((i) + 256), N256((i) + 512), N256((i) + 768)
#define N4096(i) N1024(i), N1024((i) + 1024), N1024((i) + 2048), N1024((i) + 3072)
#define N16384(i) N4096(i), N4096((i) + 4096), N4096((i) + 8192), N4096((i) + 12288)

const unsigned short gRandom[65536] = {N16384(0), N16384(16384), N16384(32768), N16384(49152)};
