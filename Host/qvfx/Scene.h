// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Picture.h"

namespace qvfx {

/// A made-up scene in float RGB with transparency, the same on every run: gradients, hard edges,
/// fine texture, skin tones, highlights, saturated colours and a part that fades out.
Picture RenderScene(int width, int height);

}  // namespace qvfx
