// SPDX-License-Identifier: Apache-2.0
// The outset query. That its answers are right for the effects is a suite over the catalog.
#include <QVEffects/QVEffects.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "Utils/Outset.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// What the query answers for effects by name, those that don't exist yet left out.
struct Group {
  std::vector<std::string_view> names;
  int (*outset)(float radius);
};

const Group kGroups[] = {
    {{"BoxBlur", "BoxBlurWithOffset", "BoxBlurWithOffsetAndAmount", "BoxBlurInt", "SurfaceBlur",
      "SurfaceBlurWithOffset", "Median", "DustAndScratch", "UnsharpMaskUsingSurfaceBlur",
      "UnsharpMaskUsingBoxBlur", "UnsharpMaskUsingTriangularBlur", "SharpenHighPass",
      "SharpenHighPassWithOffset"},
     qv::RoundedOutset},
    {{"GaussianBlur", "GaussianBlurWithAmount", "GaussianBlurWithAmountAndMode", "UnsharpMask"},
     qv::GaussianOutset},
    {{"GaussianBlurFast", "GaussianBlurFastWithAmount"}, qv::FastGaussianOutset},
    {{"GaussianBlurTrue", "GaussianBlurTrueWithAmount"}, qv::TrueGaussianOutset},
    {{"BoxBlurWithAmount", "TriangularBlur", "GetOutset", "Variance"}, [](float) { return -1; }},
    {{"MultiplyValues",
      "MixImages",
      "AddNoise",
      "BlackAndWhitePointsApply",
      "AnalyzeImage",
      "GetAvgColor",
      "ReduceShine",
      "FillSkinColor",
      "Vibrance",
      "HueSaturationBrightness",
      "HueSaturationLightness",
      "BrightnessHazeSaturation",
      "AdjustShadows",
      "Invert",
      "BlackWhite",
      "ColorFilter",
      "BlackAndWhiteColorResponse",
      "AddToner",
      "ChannelMixer",
      "BlackAndWhiteWithColorFilter",
      "BlackAndWhite",
      "GradientMap",
      "Duotone",
      "SplitTone",
      "PhotoFilter",
      "TemperatureAndTint",
      "TemperatureTintAndVibrance",
      "TemperatureTintAndSaturation",
      "TuneColors",
      "AdjustTone",
      "Purity",
      "Desaturate",
      "ApplyCurves",
      "ApplyCurvesWithAmount",
      "BrightnessContrast",
      "BrightnessContrastWithMask",
      "MidtoneContrast",
      "BrightnessWithMask",
      "MidtoneContrastAltWithMask",
      "BrightnessMidtoneContrast",
      "BrightnessMidtoneContrastWithMask",
      "Vignette",
      "VignetteIn",
      "AddSkinTexture",
      "CreateSkinTexture",
      "Solarize",
      "ApplyFilmGrainTile",
      "ApplyFilmGrain",
      "FillTexture",
      "ApplyTexture",
      "LipVibrance",
      "EyeVibrance",
      "FillColor",
      "FillGradient",
      "BlendImages",
      "BlendImagesWithOpacitiesAndMasks",
      "ConvertImageMode",
      "CopyImage",
      "ColorRange",
      "SelectColor",
      "SelectLuminosity",
      "SelectSaturation",
      "SelectFleshColors",
      "SelectColors",
      "ProtectColors"},
     [](float) { return 0; }},
};

TEST(Outset, QueryKnowsEffects) {
  for (const Group& group : kGroups) {
    int found = 0;
    for (const std::string_view name : group.names) {
      void* effect = dlsym(RTLD_DEFAULT, ("QVEffects" + std::string(name)).c_str());
      if (!effect) continue;
      found++;
      for (const float radius : {0.0f, 5.5f, 9.9f, 10.0f, -5.0f, kNaN, kInfinity}) {
        EXPECT_EQ(QVEffectsGetOutset(effect, radius), group.outset(radius)) << name << radius;
      }
    }
    EXPECT_GT(found, 0);
  }
  EXPECT_EQ(QVEffectsGetOutset(nullptr, 5), -1);
}

TEST(Outset, Forms) {
  const struct {
    float radius;
    int rounded, gaussian, fast;
  } cases[] = {
      {0, 0, 0, 0},
      {-3, 0, 0, 0},
      {kNaN, 0, 0, 0},
      {0.5f, 1, 1, 1},       // 0.4545: sqrt(0.62)
      {1.0f, 1, 3, 2},       // 0.909: sqrt(2.479)
      {9.9f, 10, 25, 27},    // 9: sqrt(243 - 162) is 9
      {10, 10, 27, 27},      // 9.0909: sqrt(247.9 - 162) is 9.27
      {100, 100, 273, 273},  // 90.909: sqrt(24793 - 16200) is 92.7
      {3e9f, INT_MAX, INT_MAX, INT_MAX},
      {kInfinity, INT_MAX, INT_MAX, INT_MAX},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(qv::RoundedOutset(c.radius), c.rounded) << c.radius;
    EXPECT_EQ(qv::GaussianOutset(c.radius), c.gaussian) << c.radius;
    EXPECT_EQ(qv::FastGaussianOutset(c.radius), c.fast) << c.radius;
  }
}

}  // namespace
