// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string>

namespace qvfx {

/// Puts a whole file in place at once: a failure or a signal leaves neither a part of it nor a
/// temporary file, and what was there before stays.
void WriteFile(const std::string& path, std::span<const unsigned char> bytes);

}  // namespace qvfx
