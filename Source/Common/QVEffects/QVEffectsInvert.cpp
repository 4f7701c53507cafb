// SPDX-License-Identifier: Apache-2.0
// Invert: every colour becomes its complement.
#include <QVEffects/QVEffectsBasics.h>

#include "Utils/EffectFrame.h"

namespace {

constexpr const char* kSource = "Source/Common/QVEffects/QVEffectsInvert";

uchar Complement(uchar sample) { return static_cast<uchar>(~sample); }
ushort Complement(ushort sample) { return static_cast<ushort>(~sample); }
float Complement(float sample) { return 1.0f - sample; }

}  // namespace

int QVEffectsInvert(__QVImage* src, __QVImage* dst, QVRect rect) {
  return qv::MapColorSamples(kSource, src, dst, rect, [](auto s) { return Complement(s); });
}
