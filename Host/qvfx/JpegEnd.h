// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace qvfx {

/// Whether a JPEG file runs to its end-of-image marker. The decoder fills a missing end with gray
/// and reports nothing.
bool JpegIsWhole(const std::string& path);

}  // namespace qvfx
