// SPDX-License-Identifier: Apache-2.0
/** @file
 *  The few CoreFoundation calls that QVEffects makes: growing arrays, string constants and their
 *  release. Objects are reference counted; a null object is ignored by every call. */
#ifndef QVCORE9_COREFOUNDATION_H
#define QVCORE9_COREFOUNDATION_H

#include <QVCore9/QVExport.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A count or a position. */
typedef long CFIndex;
/** Any object of this header. */
typedef const void* CFTypeRef;
/** Where objects come from; only the default allocator exists. */
typedef const struct __CFAllocator* CFAllocatorRef;
/** An immutable text. */
typedef const struct __CFString* CFStringRef;
/** An array of pointers, for reading. */
typedef const struct __CFArray* CFArrayRef;
/** An array of pointers, for reading and appending. */
typedef struct __CFArray* CFMutableArrayRef;

/** What an array does with a value when it takes it in and when it lets it go. */
typedef struct CFArrayCallBacks {
  CFIndex version; /**< 0 */
  /** Called with a value that is appended; the array keeps what it returns. May be null. */
  const void* (*retain)(CFAllocatorRef allocator, const void* value);
  /** Called with each value when the array goes. May be null. */
  void (*release)(CFAllocatorRef allocator, const void* value);
} CFArrayCallBacks;

/** The default allocator. */
QVCORE9_API extern const CFAllocatorRef kCFAllocatorDefault;

/** Makes an empty array.
 *  @param allocator kCFAllocatorDefault.
 *  @param capacity  a hint: the array grows past it. Negative counts as 0.
 *  @param callBacks what to do with the values, copied; null keeps bare pointers.
 *  @return the array, which the caller ends with CFRelease(), or null when memory is out. */
QVCORE9_API CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                   const CFArrayCallBacks* callBacks);

/** Appends a value, retained by the array's callbacks. When memory is out the array stays as it is,
 *  which CFArrayGetCount() shows. */
QVCORE9_API void CFArrayAppendValue(CFMutableArrayRef array, const void* value);

/** Number of values; 0 for null. */
QVCORE9_API CFIndex CFArrayGetCount(CFArrayRef array);

/** The value at a position from 0 to count - 1; null outside. The array keeps its reference. */
QVCORE9_API const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

/** Drops one reference to an array or a string; the last one ends it. */
QVCORE9_API void CFRelease(CFTypeRef object);

/** The one constant string of these characters; it lives to the end of the process.
 *  @return the string, or null when memory is out. */
QVCORE9_API CFStringRef __CFStringMakeConstantString(const char* text);

/** A constant string from a literal. */
#define CFSTR(literal) __CFStringMakeConstantString("" literal "")

#ifdef __cplusplus
}
#endif

#endif
