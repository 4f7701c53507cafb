// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

#include "Picture.h"

namespace qvfx {

inline constexpr int kLabelHeight = 16;

/// Writes a text into an 8-bit RGB picture, centred at x, its top at y. A text wider than `room` is
/// written smaller; what still doesn't fit is cut off. The letters are built in, so that a sheet
/// looks the same on a machine without fonts.
void DrawLabel(Picture& picture, int x, int y, int room, std::string_view text);

}  // namespace qvfx
