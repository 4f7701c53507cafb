// SPDX-License-Identifier: Apache-2.0
// The table of blend modes: each mode's formula stands once, as a function on strips.
#pragma once

#include <QVEffects/QVEffectsBlend.h>

#include "Strips.h"

namespace qv {

/// Computes the colour R of a mode from A and B, strips other than R's. Modes of each sample work
/// on the first `colors` planes, modes of the whole colour always on three; other planes of R stay.
using BlendStrip = void (*)(const Strip& a, const Strip& b, Strip& r, int colors, int pixels);

/// The function of a mode in its forward form; null for an unknown mode, 0 and reverse forms.
BlendStrip FindBlendStrip(QVBlendMode mode);

/// The same for the modes that work on each sample alone; null for the others, too.
BlendStrip FindSampleBlendStrip(QVBlendMode mode);

}  // namespace qv

/// Whether bit 29 is clear, as it is in reverse forms and in 0.
QVEFFECTS_API bool IsReverseBlendMode(QVBlendMode mode);

/// The mode with bit 29 set.
QVEFFECTS_API QVBlendMode GetNonReverseBlendMode(QVBlendMode mode);
