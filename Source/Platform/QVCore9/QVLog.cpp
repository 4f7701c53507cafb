// SPDX-License-Identifier: Apache-2.0
// The log and the receivers of progress.
#include <QVCore9/QVImageHost.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>

#include "../CoreFoundation/CFObject.h"

namespace {

struct Log {
  QVLogHandler handler;
  void* context;
};

void PrintEvent(void*, int code, const char* path, int line) {
  std::fprintf(stderr, "QVEffects: status %d at %s:%d\n", code, path ? path : "?", line);
}

void PrintText(void*, const char* line) { std::fprintf(stderr, "%s\n", line); }

constexpr Log kStandardError = {{PrintEvent, PrintText}, nullptr};

std::mutex sMutex;
Log sLog = kStandardError;

// A copy, so that a handler may itself log or set another.
Log CurrentLog() {
  const std::lock_guard lock(sMutex);
  return sLog;
}

constexpr int kLongestLine = 1024;

}  // namespace

void QVLogSetHandler(const QVLogHandler* handler, void* context) {
  const std::lock_guard lock(sMutex);
  sLog = handler ? Log{*handler, context} : kStandardError;
}

void QVLogEvent(int code, const char* path, int line) {
  const Log log = CurrentLog();
  if (log.handler.event) log.handler.event(log.context, code, path, line);
}

void QVLogUTF8(const char* format, ...) {
  char line[kLongestLine] = "";
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  const size_t length = std::strlen(line);
  if (length > 0 && line[length - 1] == '\n') line[length - 1] = '\0';
  const Log log = CurrentLog();
  if (log.handler.text) log.handler.text(log.context, line);
}

struct __QVProgress {
  QVProgressCallbacks callbacks;
  void* context;
};

int QVProgressCreate(const QVProgressCallbacks* callbacks, void* context, __QVProgress** result) {
  if (result) *result = nullptr;
  if (!result || !callbacks) return kQVStatusBadArgument;
  *result = new (std::nothrow) __QVProgress{*callbacks, context};
  return *result ? kQVStatusSuccess : kQVStatusOutOfMemory;
}

void QVProgressRelease(__QVProgress* progress) {
  if (!progress) return;
  if (progress->callbacks.release) progress->callbacks.release(progress->context);
  delete progress;
}

void QVProgressDoProgressBeginStage(__QVProgress* progress, int, CFStringRef title, int total) {
  if (!progress || !progress->callbacks.beginStage) return;
  progress->callbacks.beginStage(progress->context, title ? title->text.c_str() : "", total);
}

void QVProgressDoProgressUpdateStage(__QVProgress* progress, int value) {
  if (!progress || !progress->callbacks.updateStage) return;
  progress->callbacks.updateStage(progress->context, value);
}

void QVProgressDoProgressEndStage(__QVProgress* progress) {
  if (!progress || !progress->callbacks.endStage) return;
  progress->callbacks.endStage(progress->context);
}
