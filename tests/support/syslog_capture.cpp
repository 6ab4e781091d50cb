#include "tests/support/syslog_capture.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace korvel_test {
namespace {

std::mutex recordsMutex;
std::vector<LogRecord> records;

void Keep(int priority, const char* format, va_list arguments) {
  char text[4096];
  vsnprintf(text, sizeof text, format, arguments);
  const std::lock_guard lock(recordsMutex);
  records.push_back({priority, format, text});
}

}  // namespace

std::vector<LogRecord> TakeLogRecords() {
  const std::lock_guard lock(recordsMutex);
  return std::exchange(records, {});
}

}  // namespace korvel_test

// Both names that a compiled call of syslog can have; the second is that of builds with checked library calls.
extern "C" {

__attribute__((visibility("default"))) void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  korvel_test::Keep(priority, format, arguments);
  va_end(arguments);
}

__attribute__((visibility("default"))) void __syslog_chk(int priority, int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  korvel_test::Keep(priority, format, arguments);
  va_end(arguments);
}
}
