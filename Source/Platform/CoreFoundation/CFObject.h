// SPDX-License-Identifier: Apache-2.0
// What every CoreFoundation object is inside the core library.
#pragma once

#include <QVCore9/CoreFoundation.h>

#include <atomic>
#include <string>
#include <vector>

struct CFObject {
  virtual ~CFObject() = default;
  std::atomic<long> references = 1;
};

// Constants only, which live to the end of the process.
struct __CFString : CFObject {
  explicit __CFString(const char* aText) : text(aText) { references = kForever; }
  static constexpr long kForever = 1L << 62;  // more references than anyone drops
  const std::string text;
};

struct __CFArray : CFObject {
  ~__CFArray() override;
  CFArrayCallBacks callBacks = {};
  std::vector<const void*> values;
};
