// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <exception>
#include <map>
#include <mutex>
#include <new>

#include "CFObject.h"

const CFAllocatorRef kCFAllocatorDefault = nullptr;

// A capacity is a hint; past this the array just grows.
static constexpr CFIndex kMostReserved = 4096;

__CFArray::~__CFArray() {
  if (!callBacks.release) return;
  for (const void* value : values) callBacks.release(kCFAllocatorDefault, value);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex capacity,
                                       const CFArrayCallBacks* callBacks) {
  auto* array = new (std::nothrow) __CFArray;
  if (!array) return nullptr;
  if (callBacks) array->callBacks = *callBacks;
  try {
    array->values.reserve(static_cast<size_t>(std::clamp<CFIndex>(capacity, 0, kMostReserved)));
  } catch (const std::exception&) {
    // Only a hint.
  }
  return array;
}

void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
  if (!array) return;
  try {
    array->values.push_back(nullptr);
  } catch (const std::exception&) {
    return;
  }
  const auto retain = array->callBacks.retain;
  array->values.back() = retain ? retain(kCFAllocatorDefault, value) : value;
}

CFIndex CFArrayGetCount(CFArrayRef array) {
  return array ? static_cast<CFIndex>(array->values.size()) : 0;
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  if (index < 0 || index >= CFArrayGetCount(array)) return nullptr;
  return array->values[static_cast<size_t>(index)];
}

void CFRelease(CFTypeRef object) {
  if (!object) return;
  auto* counted = static_cast<CFObject*>(const_cast<void*>(object));
  if (counted->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete counted;
}

CFStringRef __CFStringMakeConstantString(const char* text) {
  if (!text) return nullptr;
  try {
    // Never destroyed: constants may be used while the process ends.
    static auto& mutex = *new std::mutex;
    static auto& strings = *new std::map<std::string, __CFString, std::less<>>;
    const std::lock_guard lock(mutex);
    auto place = strings.find(text);
    if (place == strings.end()) place = strings.try_emplace(text, text).first;
    return &place->second;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
