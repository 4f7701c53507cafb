// SPDX-License-Identifier: Apache-2.0
// The outset query: a table of effects and how far they read.
#include <QVEffects/QVEffects.h>

#include "Utils/Outset.h"

namespace {

struct Row {
  void* effect;
  int (*outset)(float radius);
};

int NoOutset(float) { return 0; }

#define ROW(effect, outset) {reinterpret_cast<void*>(effect), outset}

// By how they reach, in the order of the headers. Of an effect that isn't here the query knows
// nothing.
const Row kRows[] = {
    // One pixel at a time.
    ROW(QVEffectsInvert, NoOutset),
    ROW(QVEffectsFillColor, NoOutset),
    ROW(QVEffectsCopyImage, NoOutset),
    ROW(QVEffectsBlendImagesWithOpacitiesAndMasks, NoOutset),
    ROW(QVEffectsBlendImages, NoOutset),
    ROW(QVEffectsConvertImageMode, NoOutset),
    ROW(QVEffectsAnalyzeImage, NoOutset),
    ROW(QVEffectsGetAvgColor, NoOutset),
    ROW(QVEffectsFillGradient, NoOutset),
    ROW(QVEffectsBrightnessContrast, NoOutset),
    ROW(QVEffectsBrightnessContrastWithMask, NoOutset),
    ROW(QVEffectsBrightnessMidtoneContrast, NoOutset),
    ROW(QVEffectsBrightnessMidtoneContrastWithMask, NoOutset),
    ROW(QVEffectsBrightnessWithMask, NoOutset),
    ROW(QVEffectsMidtoneContrast, NoOutset),
    ROW(QVEffectsMidtoneContrastAltWithMask, NoOutset),
    ROW(QVEffectsApplyCurves, NoOutset),
    ROW(QVEffectsApplyCurvesWithAmount, NoOutset),
    ROW(QVEffectsMultiplyValues, NoOutset),
    ROW(QVEffectsMixImages, NoOutset),
    ROW(QVEffectsHueSaturationBrightness, NoOutset),
    ROW(QVEffectsHueSaturationLightness, NoOutset),
    ROW(QVEffectsVibrance, NoOutset),
    ROW(QVEffectsDesaturate, NoOutset),
    ROW(QVEffectsBlackWhite, NoOutset),
    ROW(QVEffectsChannelMixer, NoOutset),
    ROW(QVEffectsColorFilter, NoOutset),
    ROW(QVEffectsBlackAndWhiteWithColorFilter, NoOutset),
    ROW(QVEffectsBlackAndWhite, NoOutset),
    ROW(QVEffectsBlackAndWhiteColorResponse, NoOutset),
    ROW(QVEffectsAddToner, NoOutset),
    ROW(QVEffectsGradientMap, NoOutset),
    ROW(QVEffectsDuotone, NoOutset),
    ROW(QVEffectsSplitTone, NoOutset),
    ROW(QVEffectsSolarize, NoOutset),
    ROW(QVEffectsPhotoFilter, NoOutset),
    ROW(QVEffectsVignette, NoOutset),
    ROW(QVEffectsVignetteIn, NoOutset),

    // Squares.
    ROW(QVEffectsBoxBlur, qv::RoundedOutset),
    ROW(QVEffectsBoxBlurWithOffset, qv::RoundedOutset),
    ROW(QVEffectsBoxBlurWithOffsetAndAmount, qv::RoundedOutset),
    ROW(QVEffectsBoxBlurInt, qv::RoundedOutset),
    ROW(QVEffectsSurfaceBlur, qv::RoundedOutset),
    ROW(QVEffectsSurfaceBlurWithOffset, qv::RoundedOutset),
    ROW(QVEffectsMedian, qv::RoundedOutset),
    ROW(QVEffectsDustAndScratch, qv::RoundedOutset),

    // Gaussians.
    ROW(QVEffectsGaussianBlur, qv::GaussianOutset),
    ROW(QVEffectsGaussianBlurWithAmount, qv::GaussianOutset),
    ROW(QVEffectsGaussianBlurWithAmountAndMode, qv::GaussianOutset),
    ROW(QVEffectsGaussianBlurFast, qv::FastGaussianOutset),
    ROW(QVEffectsGaussianBlurFastWithAmount, qv::FastGaussianOutset),
    ROW(QVEffectsGaussianBlurTrue, qv::TrueGaussianOutset),
    ROW(QVEffectsGaussianBlurTrueWithAmount, qv::TrueGaussianOutset),
};

}  // namespace

int QVEffectsGetOutset(void* effect, float radius) {
  for (const Row& row : kRows) {
    if (row.effect == effect) return row.outset(radius);
  }
  return -1;
}
