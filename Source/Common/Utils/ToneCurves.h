// SPDX-License-Identifier: Apache-2.0
// The curves behind brightness, contrast and balance, and toning: what they are made of is computed
// once, from their parameter; each leaves 0 and 1 where they are.
#pragma once

#include <cmath>

#include "ColorMath.h"

namespace qv {

/// A hyperbola: steeper near black for b > 0, near white for b < 0.
struct BrightnessCurve {
  float k;

  explicit BrightnessCurve(float b) : k(BrightnessCurvature(b)) {}
  float operator()(float x) const { return OnBrightnessCurve(x, k); }
};

/// Two parabolas that meet at 0.5: flat at black and white. For c >= 0.
struct ContrastCurve {
  float linear, square;

  explicit ContrastCurve(float c) : linear(1.0f - c), square(c + c) {}
  float operator()(float x) const {
    const float y = 1.0f - x;
    const float dark = linear * x + square * x * x;
    const float light = 1.0f - (y * linear + square * y * y);
    return x < 0.5f ? dark : light;
  }
};

/// For c < 0: what takes back the contrast of -c.
struct FlatteningCurve {
  float d, e;

  explicit FlatteningCurve(float c) : d(c + 1.0f), e(-2.0f * c) {}
  float operator()(float x) const {
    const float y = 1.0f - x;
    const float root = Root(x < 0.5f ? x : y);
    return x < 0.5f ? root : 1.0f - root;
  }

 private:
  float Root(float x) const {
    const double root = std::sqrt(static_cast<double>((4.0f * e) * x + d * d));
    return static_cast<float>(root - static_cast<double>(d)) / (e + e);
  }
};

/// Two cubics that meet at 0.5, of slope 1 at black and white.
struct MidtoneCurve {
  float a, q;

  explicit MidtoneCurve(float p) {
    const float m = p >= 0.0f ? p + 1.0f : 1.0f / (1.0f - p);
    a = (1.0f - m) + (1.0f - m);
    q = (m - 1.0f) * 4.0f;
  }
  float operator()(float x) const {
    const float y = 1.0f - x;
    const float dark = (a * x + q * x * x + 1.0f) * x;
    const float light = 1.0f - (a * y + q * y * y + 1.0f) * y;
    return x < 0.5f ? dark : light;
  }
};

/// A parabola that hangs below the diagonal. For a <= 0.
struct HangingCurve {
  float k;

  explicit HangingCurve(float a) : k(1.0f / (1.0f - a)) {}
  float operator()(float x) const { return k * x + (1.0f - k) * x * x; }
};

/// For a > 0: what takes back the hanging of -a.
struct RisingCurve {
  float k, w;

  explicit RisingCurve(float a) : k(1.0f / (a + 1.0f)), w(1.0f - k) {}
  float operator()(float x) const {
    const double root = std::sqrt(static_cast<double>(x * (4.0f * w) + k * k));
    return static_cast<float>((root - static_cast<double>(k)) / static_cast<double>(2.0f * w));
  }
};

/// A colour less its gray that takes the place of a gray without changing its luma: up to the
/// colour's own luma there is ever more of it; above, white is added, and where that doesn't
/// suffice the colour gives way.
struct Tone {
  Color3 color = {1.0f, 1.0f, 1.0f};
  float luma = 1.0f, span = 1.0f;
  float toLuma, toRest;  // reciprocals

  struct Share {
    float strength, white;
  };

  explicit Tone(Color3 whole) {
    const float low = Smallest(whole), high = Largest(whole);
    if (low < high) {
      color = {whole.x - low, whole.y - low, whole.z - low};
      luma = Luma(color.x, color.y, color.z);
      span = high - low;
    }
    toLuma = 1.0f / luma;
    // Nothing is lighter than a neutral tone, but for rounding and float samples above white.
    toRest = low < high ? 1.0f / (span - luma) : 0.0f;
  }

  /// How much of the colour and of white a gray becomes.
  Share At(float y) const {
    const float above = y - luma;
    const float fading = (1.0f - y) * toRest;
    const bool isDark = y <= luma, fades = above > 1.0f - span;
    return {isDark ? y * toLuma : (fades ? fading : 1.0f),
            isDark ? 0.0f : (fades ? 1.0f - span * fading : above)};
  }
};

}  // namespace qv
