// SPDX-License-Identifier: Apache-2.0
#include "JpegEnd.h"

#include <fstream>

namespace qvfx {
namespace {

constexpr int kStuffed = 0x00;  // 0xff 0x00 is a data byte
constexpr int kTemporary = 0x01;
constexpr int kFirstRestart = 0xd0;
constexpr int kStartOfImage = 0xd8;
constexpr int kEndOfImage = 0xd9;

// Markers that no segment follows.
bool IsBare(int marker) {
  return marker == kTemporary || (marker >= kFirstRestart && marker <= kStartOfImage);
}

// The next marker at or after the read position: coded data before it is passed over. -1 at the
// end of the file.
int NextMarker(std::istream& file) {
  for (;;) {
    int byte = file.get();
    while (byte >= 0 && byte != 0xff) byte = file.get();
    while (byte == 0xff) byte = file.get();
    if (byte < 0) return -1;
    if (byte != kStuffed) return byte;
  }
}

bool SkipSegment(std::istream& file) {
  const int high = file.get();
  const int low = file.get();
  if (high < 0 || low < 0) return false;
  const int length = high * 256 + low;
  return length >= 2 && file.ignore(length - 2).gcount() == length - 2;
}

}  // namespace

bool JpegIsWhole(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  for (;;) {
    const int marker = NextMarker(file);
    if (marker == kEndOfImage) return true;
    if (marker < 0) return false;
    if (!IsBare(marker) && !SkipSegment(file)) return false;
  }
}

}  // namespace qvfx
