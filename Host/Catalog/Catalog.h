// SPDX-License-Identifier: Apache-2.0
// The table of effects: what the command line, the tests over all effects, the benchmarks and the
// gallery know about each of them. A new effect is a row in its family's file.
#pragma once

#include <QVCore9/QVCore9.h>

#include <array>
#include <functional>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

namespace catalog {

/// Red, green, blue and transparency (1 is opaque), 0 to 1.
using Color = std::array<float, 4>;

/// An image beside src; null for none.
using Image = __QVImage*;

/// The points of a curve, from 0 to 1, each further right than the one before; two at least.
using Curve = std::vector<std::array<float, 2>>;

/// A parameter's value: a number (also an integer, a flag or a choice), a colour, a curve or an
/// image.
using Value = std::variant<double, Color, Curve, Image>;

/// A layer is an image of the depth of src, with or without transparency of its own; a picture has
/// the planes of src, too; the effect needs both. A mask is an image of that depth and one plane,
/// which may be missing.
enum class Kind { Number, Integer, Flag, Choice, Rgba, Points, Layer, Picture, Mask };

inline bool IsImage(Kind kind) {
  return kind == Kind::Layer || kind == Kind::Picture || kind == Kind::Mask;
}

/// Whether the effect must have the image.
inline bool IsNeeded(Kind kind) { return kind == Kind::Layer || kind == Kind::Picture; }

/// One of the values that a choice is made from; numbers in C, names elsewhere.
struct Choice {
  std::string_view name;
  double value;
};

struct Parameter {
  std::string_view name;
  Kind kind;
  std::string_view unit;  // "px", "degrees"; empty for a plain number
  double min, max;        // the useful range of a number or an integer
  Value neutral;          // asks for nothing, or comes closest to it
  Value good;             // what a user wants to see first
  std::string_view help;
  std::span<const Choice> choices = {};
};

/// What an effect asks of its images; integers are 8 and 16 bits.
enum Needs : unsigned { kNeedsNothing = 0, kNeedsRGB = 1, kNeedsGray = 2, kNeedsInteger = 4 };

/// Whether src and dst may be the same image.
enum class InPlace { No, Yes };

/// What becomes of transparency: it stays that of src, or the effect sets it.
enum class Transparency { Kept, Set };

/// What the reach of an effect is like.
enum Reach : unsigned {
  kReachFades = 0,
  kReachIsHard = 1,  // the farthest samples count like the others: with one less results differ
  kReachRounds = 2,  // sums run from the rectangle's edge: of a part, floats are rounded otherwise
  kReachFitsBounds =
      4,  // the query answers 0, but what is drawn fits the image: a tile has another
};

/// How far an effect reads around each pixel; kWholeImage when a part can't be worked on alone.
struct Outset {
  using Function = int (*)(std::span<const Value> values);

  std::string_view radius;  // the parameter that QVEffectsGetOutset() is asked with, if any
  Function own;             // answers instead where that knows no finite reach
  unsigned reach;

  /// What QVEffectsGetOutset() answers.
  constexpr Outset(const char* aRadius, unsigned aReach = kReachFades)
      : radius(aRadius), own(nullptr), reach(aReach) {}
  /// Known here alone.
  constexpr Outset(Function anOwn, unsigned aReach = kReachFades) : own(anOwn), reach(aReach) {}
};
inline constexpr int kWholeImage = -1;

/// One call: where it reads and writes, and a value for each of the effect's parameters, in order.
/// Effects on one image work on dst.
struct Call {
  __QVImage* src;
  __QVImage* dst;
  QVRect rect;
  std::span<const Value> values;
};

struct Effect {
  std::string_view name;      // on the command line: "fill-color"
  std::string_view function;  // in C: "QVEffectsFillColor"
  std::function<int(const Call&)> run;
  std::string_view summary;  // one sentence
  InPlace inPlace;
  Outset outset;
  std::vector<Parameter> parameters = {};
  unsigned needs = kNeedsNothing;
  Transparency transparency = Transparency::Kept;
  int colors = 0;  // colour samples of dst, where they may differ in number from those of src
  int missingRow = kQVStatusBadArgument;  // the status when a row can't be had
  int missingRow2 = missingRow;           // the same of an effect that chooses between two
};

/// All effects, in the order that lists show.
std::span<const Effect> Effects();

/// The effect of this name, or null.
const Effect* Find(std::string_view name);

/// An exported function without a row of its own, and why.
struct Exception {
  std::string_view function;
  std::string_view reason;
};
std::span<const Exception> Exceptions();

/// What QVEffectsGetOutset() answers about an effect with these values.
int AskedOutset(const Effect& effect, std::span<const Value> values);

/// The effect's outset with these values.
int OutsetOf(const Effect& effect, std::span<const Value> values);

/// The good value of each parameter.
std::vector<Value> GoodValues(const Effect& effect);

/// The 256 levels of a curve: a smooth one through its points that rises and falls only where they
/// do, and is level outside them.
std::vector<float> CurveLevels(const Curve& curve);

/// A status in words.
std::string_view StatusMeaning(int status);

}  // namespace catalog
