// SPDX-License-Identifier: Apache-2.0
#include "RowCopier.h"

#include <cstdint>
#include <cstring>

#include "EffectFrame.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qv {
namespace {

#if defined(__SSE2__)
constexpr bool kCanStream = true;

// Whole cache lines, to one that starts at `to`.
void StreamLines(unsigned char* to, const unsigned char* from, size_t bytes) {
  for (size_t i = 0; i < bytes; i += 64) {
    const auto* source = reinterpret_cast<const __m128i*>(from + i);
    auto* target = reinterpret_cast<__m128i*>(to + i);
    const __m128i a = _mm_loadu_si128(source), b = _mm_loadu_si128(source + 1);
    const __m128i c = _mm_loadu_si128(source + 2), d = _mm_loadu_si128(source + 3);
    _mm_stream_si128(target, a);
    _mm_stream_si128(target + 1, b);
    _mm_stream_si128(target + 2, c);
    _mm_stream_si128(target + 3, d);
  }
}

void EndStreaming() { _mm_sfence(); }
#else
constexpr bool kCanStream = false;
void StreamLines(unsigned char*, const unsigned char*, size_t) {}
void EndStreaming() {}
#endif

constexpr size_t kLine = 64;
constexpr size_t kStreamFrom = size_t{8} << 20;

}  // namespace

RowCopier::RowCopier(size_t bytes) : mStreams(kCanStream && bytes >= kStreamFrom) {}

RowCopier::~RowCopier() {
  if (mStreams) EndStreaming();
}

// memmove: within one image rows may overlap, and what a row leaves there is then defined.
void RowCopier::Copy(void* to, const void* from, size_t bytes) {
  auto* target = static_cast<unsigned char*>(to);
  const auto* source = static_cast<const unsigned char*>(from);
  if (mStreams && !Overlap(to, from, bytes)) {
    const size_t head = (kLine - reinterpret_cast<uintptr_t>(target) % kLine) % kLine;
    if (head < bytes) {
      std::memmove(target, source, head);
      const size_t whole = (bytes - head) / kLine * kLine;
      StreamLines(target + head, source + head, whole);
      target += head + whole;
      source += head + whole;
      bytes -= head + whole;
    }
  }
  std::memmove(target, source, bytes);
}

}  // namespace qv
