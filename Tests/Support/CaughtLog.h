// SPDX-License-Identifier: Apache-2.0
// The log, caught for a test.
#pragma once

#include <QVCore9/QVImageHost.h>

#include <string>
#include <vector>

namespace test {

/// Takes the log while it lives. Events from other threads may be looked at once those have ended.
class CaughtLog {
 public:
  struct Event {
    int code;
    std::string path;
    int line;
  };

  CaughtLog() {
    const QVLogHandler handler = {[](void* context, int code, const char* path, int line) {
      static_cast<CaughtLog*>(context)->events.push_back({code, path, line});
    }, [](void* context, const char* line) {
      static_cast<CaughtLog*>(context)->lines.push_back(line);
    }};
    QVLogSetHandler(&handler, this);
  }
  CaughtLog(const CaughtLog&) = delete;
  CaughtLog& operator=(const CaughtLog&) = delete;
  ~CaughtLog() { QVLogSetHandler(nullptr, nullptr); }

  std::vector<Event> events;
  std::vector<std::string> lines;
};

}  // namespace test
