// SPDX-License-Identifier: Apache-2.0
// Small files written byte by byte: what no encoder at hand would write.
#pragma once

#include <string>

/// A camera raw (DNG) of 96x64 photosites in one even colour: red, green and blue of these values.
std::string EvenRaw(int red, int green, int blue);

/// A TIFF whose directory comes first, so that a cut takes samples: 64x64 RGB in four strips.
std::string TiffWithDirectoryFirst();

/// A PNG of this size with no samples to speak of.
std::string PngOfSize(unsigned width, unsigned height);
