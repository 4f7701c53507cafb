// SPDX-License-Identifier: Apache-2.0
#include "Scene.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qvfx {
namespace {

using Rgb = std::array<float, 3>;

// A place in the scene: u and v are 0 to 1 across and down, x is u in units of the height.
struct Place {
  float u, v, x;
  float pixel;  // a pixel's size in units of the height
  float width;  // of the scene, likewise
};

constexpr float kHorizon = 0.58f;

Rgb Mix(const Rgb& a, const Rgb& b, float t) {
  Rgb mixed;
  for (std::size_t i = 0; i < 3; ++i) mixed[i] = a[i] + (b[i] - a[i]) * t;
  return mixed;
}

Rgb Scale(const Rgb& a, float factor) { return {a[0] * factor, a[1] * factor, a[2] * factor}; }

float Smooth(float from, float to, float at) {
  const float t = std::clamp((at - from) / (to - from), 0.0f, 1.0f);
  return t * t * (3 - 2 * t);
}

// How much of the pixel is inside, for a distance that is negative inside.
float Coverage(float distance, const Place& p) {
  return std::clamp(0.5f - distance / p.pixel, 0.0f, 1.0f);
}

// Evenly spread, -0.5 to 0.5, for a point of a grid.
float Noise(int x, int y) {
  std::uint32_t hash =
      static_cast<std::uint32_t>(x) * 0x9e3779b1u ^ static_cast<std::uint32_t>(y) * 0x85ebca77u;
  hash = (hash ^ hash >> 15) * 0xc2b2ae3du;
  hash = (hash ^ hash >> 13) * 0x27d4eb2fu;
  return static_cast<float>((hash ^ hash >> 16) >> 8) / static_cast<float>(1 << 24) - 0.5f;
}

float SmoothNoise(float x, float y) {
  const int left = static_cast<int>(std::floor(x));
  const int top = static_cast<int>(std::floor(y));
  const float tx = Smooth(0, 1, x - static_cast<float>(left));
  const float ty = Smooth(0, 1, y - static_cast<float>(top));
  return std::lerp(std::lerp(Noise(left, top), Noise(left + 1, top), tx),
                   std::lerp(Noise(left, top + 1), Noise(left + 1, top + 1), tx), ty);
}

// Octaves of noise: clouds, grass.
float Texture(float x, float y) {
  float sum = 0;
  for (int octave = 0; octave <= 4; ++octave) {
    const auto scale = static_cast<float>(1 << octave);
    sum += SmoothNoise(x * scale, y * scale) / scale;
  }
  return sum;
}

Rgb Sky(const Place& p) {
  const Rgb zenith = {0.16f, 0.36f, 0.68f};
  const Rgb haze = {0.93f, 0.80f, 0.66f};
  Rgb sky = Mix(zenith, haze, std::pow(p.v / kHorizon, 1.6f));
  const float clouds = Smooth(0.05f, 0.7f, Texture(p.x * 3.2f, p.v * 9.0f) + 0.15f);
  sky = Mix(sky, {1.0f, 0.97f, 0.94f}, clouds * 0.75f);
  const float sun = std::hypot(p.x - p.width * 0.76f, p.v - 0.17f);
  sky = Mix(sky, {1.0f, 0.95f, 0.8f}, 0.8f * std::exp(-sun * 9));
  return Mix(sky, {1, 1, 0.98f}, Coverage(sun - 0.05f, p));
}

// Ranges of mountains, the far ones pale.
Rgb Mountains(Rgb color, const Place& p) {
  for (int range = 0; range < 3; ++range) {
    const auto r = static_cast<float>(range);
    const float ridge = 0.40f + 0.075f * r - 0.16f * Texture(p.x * 2.1f + 7.3f * r, 3.7f + r);
    const Rgb rock = Mix({0.56f, 0.60f, 0.70f}, {0.10f, 0.19f, 0.20f}, r / 2);
    color =
        Mix(color, Scale(rock, 1 + 0.35f * Texture(p.x * 14, p.v * 22)), Coverage(ridge - p.v, p));
  }
  return color;
}

Rgb Meadow(const Place& p) {
  const float depth = (p.v - kHorizon) / (1 - kHorizon);
  const float blades = Texture(p.x * 70, p.v * 38);
  const Rgb grass = Mix({0.42f, 0.50f, 0.24f}, {0.13f, 0.29f, 0.09f}, depth);
  return Scale(grass, 1 + 0.8f * blades);
}

// Balls in skin tones, lit from the upper right.
Rgb SkinBalls(Rgb color, const Place& p) {
  constexpr std::array<Rgb, 5> kSkins = {{{0.96f, 0.80f, 0.69f},
                                          {0.88f, 0.67f, 0.53f},
                                          {0.76f, 0.53f, 0.38f},
                                          {0.55f, 0.36f, 0.25f},
                                          {0.33f, 0.21f, 0.15f}}};
  const float radius = 0.085f;
  for (std::size_t i = 0; i < kSkins.size(); ++i) {
    const float dx = (p.x - p.width * (0.09f + 0.125f * static_cast<float>(i))) / radius;
    const float dy = (p.v - 0.70f) / radius;
    const float shadow = std::hypot(dx + 0.3f, (dy - 0.95f) * 3.2f);
    color = Scale(color, 1 - 0.55f * Smooth(1.2f, 0.4f, shadow));
    const float distance = std::hypot(dx, dy);
    const float dz = std::sqrt(std::max(0.0f, 1 - distance * distance));
    const float light = std::max(0.0f, 0.5f * dx - 0.6f * dy + 0.62f * dz);
    const float gloss = std::pow(std::max(0.0f, 0.32f * dx - 0.42f * dy + 0.85f * dz), 40.0f);
    const Rgb ball = Mix(Scale(kSkins[i], 0.28f + 0.78f * light), {1, 1, 1}, 0.75f * gloss);
    color = Mix(color, ball, Coverage((distance - 1) * radius, p));
  }
  return color;
}

Rgb Hue(float hue) {
  const auto part = [hue](float shift) {
    return std::clamp(std::abs(std::fmod(hue * 6 + shift, 6.0f) - 3) - 1, 0.0f, 1.0f);
  };
  return {part(0), part(4), part(2)};
}

// A test card: saturated hues, a ramp of grays, bars that get ever finer, rings.
Rgb Card(Rgb color, const Place& p) {
  const float s = (p.u - 0.04f) / 0.58f;
  const float t = (p.v - 0.825f) / 0.14f;
  if (s < 0 || s >= 1 || t < 0 || t >= 1) return color;
  if (t < 0.33f) return Hue(std::floor(s * 12) / 12);
  if (t < 0.66f) return {s, s, s};
  const float bars = std::sin(60 * s + 500 * s * s * s) > 0 ? 0.95f : 0.05f;
  return {bars, bars, bars};
}

Rgb Rings(Rgb color, const Place& p) {
  const float radius = 0.135f;
  const float distance = std::hypot(p.x - p.width * 0.77f, p.v - 0.75f);
  const float wave = 0.5f + 0.5f * std::cos(distance * distance * 2600);
  return Mix(color, Mix({0.97f, 0.96f, 0.93f}, {0.55f, 0.06f, 0.08f}, wave),
             Coverage(distance - radius, p));
}

// Full on the left; fades out over the right edge, with a round window of half transparency.
float Alpha(const Place& p) {
  const float fade = 1 - Smooth(0.86f, 1.0f, p.u);
  const float window = std::hypot(p.x - p.width * 0.93f, p.v - 0.86f) - 0.07f;
  return std::lerp(fade, 0.5f, Coverage(window, p));
}

std::array<float, 4> PixelAt(const Place& p) {
  Rgb color = p.v < kHorizon ? Mountains(Sky(p), p) : Meadow(p);
  color = Rings(Card(SkinBalls(color, p), p), p);
  const auto held = [](float sample) { return std::clamp(sample, 0.0f, 1.0f); };
  return {held(color[0]), held(color[1]), held(color[2]), held(Alpha(p))};
}

}  // namespace

Picture RenderScene(int width, int height) {
  Picture picture = MakePicture(width, height, 4, 32);
  const float pixel = 1 / static_cast<float>(height);
  float* to = picture.As<float>();
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x, to += 4) {
      const float centerX = static_cast<float>(x) + 0.5f;
      const float centerY = static_cast<float>(y) + 0.5f;
      std::ranges::copy(PixelAt({centerX / static_cast<float>(width), centerY * pixel,
                                 centerX * pixel, pixel, static_cast<float>(width) * pixel}),
                        to);
    }
  }
  return picture;
}

}  // namespace qvfx
