// SPDX-License-Identifier: Apache-2.0
// The contact sheet: a grid of cells, each with a tile per photo, one below the other, and a label.
#pragma once

#include <string_view>
#include <vector>

#include "Picture.h"

namespace qvfx {

/// A picture at another width, its proportions kept.
Picture ScaledTo(Picture picture, int width);

class Sheet {
 public:
  /// @param photos an 8-bit picture of each photo, whose proportions its tiles have.
  Sheet(const std::vector<Picture>& photos, int cells);

  /// Puts the photo's tile into a cell.
  void Place(int cell, std::size_t photo, const Picture& picture);
  void Label(int cell, std::string_view text);
  Picture Take();

 private:
  QVPoint Origin(int cell) const;

  std::vector<int> mTileTops;  // within a cell; the last is where the label goes
  int mColumns;
  Picture mSheet;
};

}  // namespace qvfx
