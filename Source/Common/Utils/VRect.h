// SPDX-License-Identifier: Apache-2.0
// The rectangle of all internal code.
#pragma once

#include <QVCore9/QVCore9.h>

#include <algorithm>
#include <cstdint>
#include <limits>

/// Rows top to bottom - 1 and columns left to right - 1.
struct VRect {
  int top, left, bottom, right;

  bool IsEmpty() const { return bottom <= top || right <= left; }
  bool operator==(const VRect&) const = default;

  /// The common part; never inverted.
  VRect Intersect(const VRect& other) const {
    VRect common = {std::max(top, other.top), std::max(left, other.left),
                    std::min(bottom, other.bottom), std::min(right, other.right)};
    common.bottom = std::max(common.top, common.bottom);
    common.right = std::max(common.left, common.right);
    return common;
  }

  /// The smallest rectangle around both; an empty one isn't treated apart.
  VRect Union(const VRect& other) const {
    return {std::min(top, other.top), std::min(left, other.left), std::max(bottom, other.bottom),
            std::max(right, other.right)};
  }

  /// All edges times k, held to the range of int.
  VRect operator*(int k) const {
    return {Held(int64_t{top} * k), Held(int64_t{left} * k), Held(int64_t{bottom} * k),
            Held(int64_t{right} * k)};
  }

  /// A rectangle that still encloses this one at scale 1 / k, k > 0.
  VRect operator/(int k) const {
    return {FloorDivide(top, k), FloorDivide(left, k), CeilDivide(bottom, k), CeilDivide(right, k)};
  }

  /// Moved by an offset; edges are held to the range of int.
  VRect Offset(int64_t x, int64_t y) const {
    return {Held(top + y), Held(left + x), Held(bottom + y), Held(right + x)};
  }

  /// A value held to the range of int.
  static int Held(int64_t value) {
    return static_cast<int>(std::clamp<int64_t>(value, std::numeric_limits<int>::min(),
                                                std::numeric_limits<int>::max()));
  }

 private:
  static int FloorDivide(int a, int k) { return a / k - (a % k < 0); }
  static int CeilDivide(int a, int k) { return a / k + (a % k > 0); }
};

/// A host's rectangle: a negative size counts as 0, and an edge past the range of int is held to
/// it.
inline VRect MakeVRect(QVRect rect) {
  return {rect.y, rect.x, VRect::Held(int64_t{rect.y} + std::max(rect.height, 0)),
          VRect::Held(int64_t{rect.x} + std::max(rect.width, 0))};
}
