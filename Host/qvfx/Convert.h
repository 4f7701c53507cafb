// SPDX-License-Identifier: Apache-2.0
// Changes of depth and of how transparency is stored.
#pragma once

#include "Picture.h"

namespace qvfx {

/// The picture at another depth. Integers round to nearest, 8 bits to 16 and back is exact; floats
/// outside 0 to 1 are held to it and NaN is 0.
Picture WithDepth(Picture picture, int depth);

/// The picture with colours multiplied by the transparency, or not. Where a pixel is fully
/// transparent, colours that were multiplied stay as they are.
Picture WithAssociation(Picture picture, bool associated);

/// The picture with transparency: as it is, or all opaque.
Picture WithTransparency(Picture picture);

/// The picture without its transparency.
Picture WithoutTransparency(Picture picture);

/// The first sample of each pixel: a mask.
Picture FirstPlane(Picture picture);

/// The picture with three colour samples a pixel.
Picture WithRGB(Picture picture);

}  // namespace qvfx
