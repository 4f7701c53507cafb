// SPDX-License-Identifier: Apache-2.0
#include "Sheet.h"

#include <OpenImageIO/imagebufalgo.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "Convert.h"
#include "Error.h"
#include "Label.h"

namespace qvfx {
namespace {

constexpr int kTileWidth = 256;
constexpr int kMargin = 12;
constexpr int kGap = 4;  // between tiles, and before the label
constexpr int kCellWidth = kTileWidth + kMargin;
constexpr int kMaxColumns = 7;
constexpr std::uint8_t kBackground = 40;

int HeightAt(const Picture& picture, int width) {
  return std::max(1, static_cast<int>(
                         std::lround(static_cast<double>(picture.height) * width / picture.width)));
}

OIIO::ImageBuf BufferOver(Picture& picture) {
  const OIIO::ImageSpec spec(picture.width, picture.height, picture.channels,
                             TypeOf(picture.depth));
  return OIIO::ImageBuf(spec, picture.samples.get());
}

// What shows through transparent pixels.
int Checkerboard(int x, int y) { return ((x / 8 + y / 8) & 1) ? 150 : 105; }

std::uint8_t Over(int color, int below, int alpha) {
  return static_cast<std::uint8_t>((color * alpha + below * (255 - alpha) + 127) / 255);
}

}  // namespace

Picture ScaledTo(Picture picture, int width) {
  if (picture.width == width) return picture;
  // Floats with associated colours, so that no colour leaks out of transparent pixels.
  const int depth = picture.depth;
  const bool associated = picture.associated;
  picture = WithAssociation(WithDepth(std::move(picture), 32), true);
  Picture scaled = MakePicture(width, HeightAt(picture, width), picture.channels, 32);
  scaled.associated = picture.associated;
  OIIO::ImageBuf to = BufferOver(scaled);
  if (!OIIO::ImageBufAlgo::resize(to, BufferOver(picture))) throw std::runtime_error(to.geterror());
  return WithDepth(WithAssociation(std::move(scaled), associated), depth);
}

Sheet::Sheet(const std::vector<Picture>& photos, int cells) : mTileTops(1, 0) {
  for (const Picture& photo : photos) {
    mTileTops.push_back(mTileTops.back() + HeightAt(photo, kTileWidth) + kGap);
  }
  mColumns = std::min(cells, kMaxColumns);
  const int rows = (cells + mColumns - 1) / mColumns;
  const QVPoint end = Origin(rows * mColumns);
  mSheet = MakePicture(mColumns * kCellWidth + kMargin, end.y, 3, 8);
  std::fill_n(mSheet.As<std::uint8_t>(), mSheet.Samples(), kBackground);
}

QVPoint Sheet::Origin(int cell) const {
  const int cellHeight = mTileTops.back() + kLabelHeight + kMargin;
  return {kMargin + cell % mColumns * kCellWidth, kMargin + cell / mColumns * cellHeight};
}

void Sheet::Place(int cell, std::size_t photo, const Picture& picture) {
  const Picture tile = ScaledTo(WithRGB(CopyOf(picture)), kTileWidth);
  const QVPoint origin = Origin(cell);
  const std::uint8_t* from = tile.As<std::uint8_t>();
  for (int y = 0; y < tile.height; ++y) {
    const std::size_t row = static_cast<std::size_t>(origin.y) + mTileTops[photo] + y;
    std::uint8_t* to = mSheet.As<std::uint8_t>() + (row * mSheet.width + origin.x) * 3;
    for (int x = 0; x < tile.width; ++x, from += tile.channels, to += 3) {
      const int alpha = tile.HasTransparency() ? from[3] : 255;
      for (int i = 0; i < 3; ++i) to[i] = Over(from[i], Checkerboard(x, y), alpha);
    }
  }
}

void Sheet::Label(int cell, std::string_view text) {
  const QVPoint origin = Origin(cell);
  DrawLabel(mSheet, origin.x + kTileWidth / 2, origin.y + mTileTops.back(), kTileWidth, text);
}

Picture Sheet::Take() { return std::move(mSheet); }

}  // namespace qvfx
