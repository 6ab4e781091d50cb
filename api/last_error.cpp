#include "api/last_error.h"

namespace korvel::internal {

LastErrorRecord& LastErrorRecord::OfThisThread() {
  thread_local LastErrorRecord record;
  return record;
}

ReturnCode LastErrorRecord::Record(ReturnCode code, std::string_view text) {
  code_ = code;
  text_ = text;
  return code_;
}

}  // namespace korvel::internal
