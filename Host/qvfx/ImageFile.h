// SPDX-License-Identifier: Apache-2.0
// Pictures from files and back.
#pragma once

#include <string>

#include "Console.h"
#include "Picture.h"

namespace qvfx {

/// Reads the first picture of a file as it is stored: no change of colour, orientation or
/// association. Samples that aren't 8 or 16 bits become floats.
Picture ReadImage(const std::string& path, const Console& console);

/// Throws unless pictures can be written to files of this name's extension.
void CheckOutputName(const std::string& path);

/// Writes a picture in the format of the file's extension, at the depth and with the transparency
/// nearest to what that format holds.
void WriteImage(const std::string& path, Picture picture, const Console& console);

}  // namespace qvfx
