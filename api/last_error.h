// The last failure of each thread, as KORVEL_Library_GetLastError tells it.
#pragma once

#include <string>
#include <string_view>

#include "korvel/korvel.h"

namespace korvel::internal {

using ReturnCode = KORVEL_RETURN_CODE;

class LastErrorRecord {
 public:
  // The calling thread's record; code 0 and an empty text before the thread's first failure.
  static LastErrorRecord& OfThisThread();

  // Replaces what the record holds, and returns the code that it then holds.
  ReturnCode Record(ReturnCode code, std::string_view text);

  ReturnCode Code() const { return code_; }
  const std::string& Text() const { return text_; }

 private:
  ReturnCode code_ = KORVEL_RETURN_CODE_Success;
  std::string text_;
};

}  // namespace korvel::internal
