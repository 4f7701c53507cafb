// SPDX-License-Identifier: Apache-2.0
#include "Exif.h"

#include <OpenImageIO/tiffutils.h>

#include <cmath>
#include <cstdint>
#include <string_view>

namespace qvfx {
namespace {

constexpr std::size_t kHeaderEnd = 8 + 25;  // signature and IHDR, which is always first
constexpr std::string_view kPrefix("Exif\0\0", 6);
constexpr std::size_t kEmptyExif = 8 + 2 + 4;  // header and an empty directory

void Append(std::vector<unsigned char>& bytes, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<unsigned char>(value >> shift));
  }
}

std::uint32_t Crc(const unsigned char* begin, const unsigned char* end) {
  std::uint32_t crc = ~0u;
  for (; begin != end; ++begin) {
    crc ^= *begin;
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) ? 0xedb88320u : 0);
  }
  return ~crc;
}

std::vector<unsigned char> Chunk(std::string_view type, std::string_view data) {
  std::vector<unsigned char> chunk;
  chunk.reserve(data.size() + 12);
  Append(chunk, static_cast<std::uint32_t>(data.size()));
  chunk.insert(chunk.end(), type.begin(), type.end());
  chunk.insert(chunk.end(), data.begin(), data.end());
  Append(chunk, Crc(chunk.data() + 4, chunk.data() + chunk.size()));
  return chunk;
}

}  // namespace

void AvoidBadFractions(OIIO::ImageSpec& spec) {
  for (OIIO::ParamValue& attribute : spec.extra_attribs) {
    if (attribute.type() != OIIO::TypeFloat) continue;
    const float value = attribute.get<float>();
    if (value > 0 && value < 1 && std::trunc(1 / value) == 1 / value) {
      attribute = OIIO::ParamValue(attribute.name(), std::nextafter(value, 1.0f));
    }
  }
}

void AddExif(std::vector<unsigned char>& png, const OIIO::ImageSpec& spec) {
  std::vector<char> blob;
  OIIO::encode_exif(spec, blob);
  std::string_view exif(blob.data(), blob.size());
  if (exif.starts_with(kPrefix)) exif.remove_prefix(kPrefix.size());
  if (exif.size() <= kEmptyExif || png.size() < kHeaderEnd) return;
  const auto chunk = Chunk("eXIf", exif);
  png.insert(png.begin() + kHeaderEnd, chunk.begin(), chunk.end());
}

}  // namespace qvfx
