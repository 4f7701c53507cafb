// SPDX-License-Identifier: Apache-2.0
#include "RawFile.h"

#include <cstdint>
#include <map>
#include <vector>

namespace {

std::string Little(std::uint64_t value, int bytes) {
  std::string text;
  for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value & 0xff);
  return text;
}

std::string Big(std::uint32_t value) {
  const std::string text = Little(value, 4);
  return {text.rbegin(), text.rend()};
}

enum Type { kByte = 1, kText = 2, kShort = 3, kLong = 4, kFraction = 5, kSignedFraction = 10 };

struct Field {
  Type type;
  std::uint32_t count;
  std::string bytes;
};
using Fields = std::map<int, Field>;

Field Numbers(Type type, const std::vector<std::uint32_t>& values) {
  Field field = {type, static_cast<std::uint32_t>(values.size()), ""};
  for (const std::uint32_t value : values) {
    if (type == kFraction || type == kSignedFraction) {
      field.bytes += Little(value, 4) + Little(1, 4);
    } else {
      field.bytes += Little(value, type == kLong ? 4 : type == kShort ? 2 : 1);
    }
  }
  return field;
}

// Header and directory; what doesn't fit an entry comes after it.
std::string Directory(const Fields& fields) {
  std::string entries, rest;
  const std::size_t restStart = 8 + 2 + 12 * fields.size() + 4;
  for (const auto& [tag, field] : fields) {
    entries += Little(tag, 2) + Little(field.type, 2) + Little(field.count, 4);
    std::string bytes = field.bytes;
    bytes.resize(bytes.size() < 4 ? 4 : bytes.size() + bytes.size() % 2);
    if (bytes.size() > 4) {
      entries += Little(restStart + rest.size(), 4);
      rest += bytes;
    } else {
      entries += bytes;
    }
  }
  return std::string("II*\0", 4) + Little(8, 4) + Little(fields.size(), 2) + entries +
         Little(0, 4) + rest;
}

// The file, in strips of equal size.
std::string Tiff(Fields fields, const std::string& samples, std::uint32_t strips) {
  const auto stripBytes = static_cast<std::uint32_t>(samples.size()) / strips;
  std::vector<std::uint32_t> offsets(strips, 0);
  fields[279] = Numbers(kLong, std::vector<std::uint32_t>(strips, stripBytes));
  fields[273] = Numbers(kLong, offsets);
  const std::size_t start = Directory(fields).size();
  for (std::uint32_t i = 0; i < strips; ++i) {
    offsets[i] = static_cast<std::uint32_t>(start) + i * stripBytes;
  }
  fields[273] = Numbers(kLong, offsets);
  return Directory(fields) + samples;
}

Fields SizeFields(std::uint32_t width, std::uint32_t height, std::uint32_t rowsPerStrip) {
  return {{256, Numbers(kLong, {width})},
          {257, Numbers(kLong, {height})},
          {259, Numbers(kShort, {1})},
          {278, Numbers(kLong, {rowsPerStrip})}};
}

}  // namespace

std::string EvenRaw(int red, int green, int blue) {
  constexpr int kWidth = 96, kHeight = 64;
  const int mosaic[2][2] = {{red, green}, {green, blue}};
  std::string samples;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) samples += Little(mosaic[y % 2][x % 2], 2);
  }
  Fields fields = SizeFields(kWidth, kHeight, kHeight);
  fields[254] = Numbers(kLong, {0});
  fields[258] = Numbers(kShort, {16});
  fields[262] = Numbers(kShort, {32803});  // a mosaic of colours
  fields[271] = {kText, 6, std::string("Maker", 6)};
  fields[272] = {kText, 6, std::string("Model", 6)};
  fields[277] = Numbers(kShort, {1});
  fields[33421] = Numbers(kShort, {2, 2});
  fields[33422] = Numbers(kByte, {0, 1, 1, 2});
  fields[50706] = Numbers(kByte, {1, 4, 0, 0});
  fields[50708] = {kText, 12, std::string("Maker Model", 12)};
  fields[50717] = Numbers(kLong, {65535});
  fields[50721] = Numbers(kSignedFraction, {1, 0, 0, 0, 1, 0, 0, 0, 1});
  fields[50728] = Numbers(kFraction, {1, 1, 1});
  fields[50778] = Numbers(kShort, {21});
  return Tiff(fields, samples, 1);
}

std::string TiffWithDirectoryFirst() {
  Fields fields = SizeFields(64, 64, 16);
  fields[258] = Numbers(kShort, {8, 8, 8});
  fields[262] = Numbers(kShort, {2});
  fields[277] = Numbers(kShort, {3});
  return Tiff(fields, std::string(64 * 64 * 3, 'x'), 4);
}

std::string PngOfSize(unsigned width, unsigned height) {
  const auto chunk = [](const std::string& typeAndData) {
    std::uint32_t crc = ~0u;
    for (const unsigned char byte : typeAndData) {
      crc ^= byte;
      for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320u : 0);
    }
    return Big(static_cast<std::uint32_t>(typeAndData.size() - 4)) + typeAndData + Big(~crc);
  };
  return "\x89PNG\r\n\x1a\n" +
         chunk("IHDR" + Big(width) + Big(height) + std::string("\x8\x2\0\0\0", 5)) +
         chunk(std::string("IDAT\x78\x9c\x03\0\0\0\0\x1", 12)) + chunk("IEND");
}
