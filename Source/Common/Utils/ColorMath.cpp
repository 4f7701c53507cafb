// SPDX-License-Identifier: Apache-2.0
// The exported colour mathematics, and the random sources.
#include "ColorMath.h"

#include <QVEffects/QVEffectsColor.h>

namespace {

void Store(float* to, qv::Color3 c) {
  to[0] = c.x;
  to[1] = c.y;
  to[2] = c.z;
}

constexpr uint32_t kFirstRandom = 123456789;
uint32_t sRandom = kFirstRandom;

int NoiseIndex(int x, int y) { return (x & 255) | (y & 255) << 8; }

}  // namespace

void RGB2LCH(const float* rgb, float* lch) { Store(lch, qv::RgbToLch(qv::ColorAt(rgb))); }
void LCH2RGB(const float* lch, float* rgb) { Store(rgb, qv::LchToRgb(qv::ColorAt(lch))); }
void RGB2HSB(const float* rgb, float* hsb) { Store(hsb, qv::RgbToHsb(qv::ColorAt(rgb))); }
void HSB2RGB(const float* hsb, float* rgb) { Store(rgb, qv::HsbToRgb(qv::ColorAt(hsb))); }
void RGB2HSL(const float* rgb, float* hsl) { Store(hsl, qv::RgbToHsl(qv::ColorAt(rgb))); }
void HSL2RGB(const float* hsl, float* rgb) { Store(rgb, qv::HslToRgb(qv::ColorAt(hsl))); }
void RGB2HSB_GLSL(const float* rgb, float* hsb) { Store(hsb, qv::RgbToHsbGlsl(qv::ColorAt(rgb))); }
void HSB2RGB_GLSL(const float* hsb, float* rgb) { Store(rgb, qv::HsbToRgbGlsl(qv::ColorAt(hsb))); }
void RGB2XYZ(const float* rgb, float* xyz) { Store(xyz, qv::RgbToXyz(qv::ColorAt(rgb))); }
void XYZ2RGB(const float* xyz, float* rgb) { Store(rgb, qv::XyzToRgb(qv::ColorAt(xyz))); }
void RGB2Lab(const float* rgb, float* lab) { Store(lab, qv::RgbToLab(qv::ColorAt(rgb))); }
void Lab2RGB(const float* lab, float* rgb) { Store(rgb, qv::LabToRgb(qv::ColorAt(lab))); }

void Saturation(float* rgb, float amount) {
  Store(rgb, qv::WithSaturation(qv::ColorAt(rgb), amount));
}
void Brightness(float* rgb, float amount) {
  Store(rgb, qv::WithBrightness(qv::ColorAt(rgb), amount));
}
void Vibrance(float* rgb, float amount) { Store(rgb, qv::WithVibrance(qv::ColorAt(rgb), amount)); }
void Vibrance2(float* rgb, float amount) {
  Store(rgb, qv::WithVibrance2(qv::ColorAt(rgb), amount));
}

void SaturationBrightness(float* rgb, float saturation, float brightness) {
  Store(rgb, qv::WithSaturationBrightness(qv::ColorAt(rgb), saturation, brightness));
}

void HueSaturationBrightness(float* hsb, float hue, float saturation, float brightness) {
  Store(hsb, qv::WithHueSaturationBrightness(qv::ColorAt(hsb), hue, saturation, brightness));
}

double BlackBodyRadiation(double wavelength, double temperature) {
  constexpr double kLight = 299792458.0, kLightSquared = 89875517873681760.0;
  constexpr double kPlanck = 6.62606896e-34, kTwicePlanck = 1.325213792e-33;
  constexpr double kBoltzmann = 1.3806504e-23;
  const double frequency = kLight / wavelength;
  const double cube = frequency * frequency * frequency;
  const double photons = std::exp(frequency * kPlanck / (temperature * kBoltzmann)) - 1.0;
  // By frequency, then by wavelength.
  const double radiance = kTwicePlanck * cube / (photons * kLightSquared);
  return radiance * kLight / (wavelength * wavelength);
}

void RandomReset() { sRandom = kFirstRandom; }

uint32_t Random() {
  sRandom *= 987654321;
  return sRandom;
}

template <>
unsigned char RandomReproducible<unsigned char>(int x, int y) {
  return reinterpret_cast<const unsigned char*>(gRandom)[NoiseIndex(x, y)];
}

template <>
float RandomReproducible<float>(int x, int y) {
  return static_cast<float>(gRandom[NoiseIndex(x, y)]) * 1.5259022e-5f;
}
