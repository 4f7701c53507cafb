// SPDX-License-Identifier: Apache-2.0
// How a failing step travels: it is logged where it happens, raised as an int, and turned into the
// effect's status at a boundary. Nothing else reaches the host.
#pragma once

#include <QVCore9/QVCore9.h>

#include <new>

namespace qv {

/// A place in the sources: the path from the library's root, without extension. Unless a line is
/// given, it is the one that this is written on.
struct Where {
  const char* path;
  int line;

  constexpr Where(const char* aPath, int aLine = __builtin_LINE()) : path(aPath), line(aLine) {}
};

/// Logs a status and raises it.
[[noreturn]] inline void Fail(int status, Where where) {
  QVLogEvent(status, where.path, where.line);
  throw status;
}

/// Fails unless the status is success.
inline void Check(int status, Where where) {
  if (status != kQVStatusSuccess) Fail(status, where);
}

/// A row or rectangle that must be there.
template <class T>
T* Required(T* samples, Where where) {
  if (!samples) Fail(kQVStatusBadArgument, where);
  return samples;
}

/// What a boundary makes of exceptions.
enum class Boundary {
  kIntegerAndUnknown,  // an int is the status; anything else is unknown, and logged
  kWithMemory,         // an int is the status; std::bad_alloc is out of memory; else unknown
  kMemoryOnly,         // std::bad_alloc is out of memory; anything else, ints too, is unknown
  kCatchAllOnly,       // everything is unknown
};

/// Runs the body of a routine behind a boundary and returns its status. An int was logged where it
/// was raised, and isn't again.
/// @param unknown the status of an unknown failure.
template <Boundary boundary = Boundary::kIntegerAndUnknown, class Body>
int Guard(Where where, int unknown, Body&& body) {
  constexpr bool takesIntegers =
      boundary == Boundary::kIntegerAndUnknown || boundary == Boundary::kWithMemory;
  constexpr bool takesMemory =
      boundary == Boundary::kWithMemory || boundary == Boundary::kMemoryOnly;
  try {
    return body();
  } catch (int status) {
    return takesIntegers ? status : unknown;
  } catch (const std::bad_alloc&) {
    if (takesMemory) return kQVStatusOutOfMemory;
  } catch (...) {
  }
  if (boundary == Boundary::kIntegerAndUnknown) QVLogEvent(unknown, where.path, where.line);
  return unknown;
}

}  // namespace qv
