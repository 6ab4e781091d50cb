// Stands in for the system log in a test program: takes its records instead of sending them.
#pragma once

#include <string>
#include <vector>

namespace korvel_test {

struct LogRecord {
  int priority;
  std::string format;
  std::string text;
};

// The records of all threads since the last call, oldest first.
std::vector<LogRecord> TakeLogRecords();

}  // namespace korvel_test
