// SPDX-License-Identifier: Apache-2.0
// EXIF, beyond what the image library does.
#pragma once

#include <OpenImageIO/imageio.h>

#include <vector>

namespace qvfx {

/// Changes fractions that OpenImageIO would store wrongly as EXIF: 1/2, 1/4, 1/8, ... become their
/// upper neighbour.
void AvoidBadFractions(OIIO::ImageSpec& spec);

/// Adds the EXIF of a spec, if it has any, to an encoded PNG.
void AddExif(std::vector<unsigned char>& png, const OIIO::ImageSpec& spec);

}  // namespace qvfx
