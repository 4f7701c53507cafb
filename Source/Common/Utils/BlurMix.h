// SPDX-License-Identifier: Apache-2.0
// How a blurred image goes over its source: by a blend mode and an amount.
#pragma once

#include <optional>

#include "BlendModes.h"

namespace qv {

/// The layer above is the blurred image, the one below the source; in reverse forms of modes they
/// change places. The source is what `keep` counts in any case.
struct BlurMix {
  BlendStrip blend;  // null for the normal mode, which needs no scale from 0 to 1
  bool isReverse;
  float amount;
  float keep;  // 1 - amount
};

/// The mix of a mode that blurs take: those that work on each sample alone, and the reverse forms
/// of ten of them.
std::optional<BlurMix> FindBlurMix(QVBlendMode mode, float amount);

/// The last step of a blur with a mode, on up to kStripPixels samples whatever their plane.
class BlurMixer {
 public:
  explicit BlurMixer(const BlurMix& mix) : mMix(mix) {}

  /// Where the blurred samples go, from 0 to 1.
  float* Top() { return mTop[0]; }

  template <class T>
  void Mix(const T* __restrict base, T* __restrict out, int samples) {
    float* below = mBase[0];
    for (int i = 0; i < samples; i++) below[i] = ToUnit(base[i]);
    const float* result = Blend(samples);
    for (int i = 0; i < samples; i++) {
      out[i] = FromUnit<T>(below[i] * mMix.keep + result[i] * mMix.amount);
    }
  }

 private:
  const float* Blend(int samples) {
    if (mMix.isReverse) {
      mMix.blend(mBase, mTop, mResult, 1, samples);
    } else {
      mMix.blend(mTop, mBase, mResult, 1, samples);
    }
    return mResult[0];
  }

  BlurMix mMix;
  Strip mTop, mBase, mResult;
};

}  // namespace qv
