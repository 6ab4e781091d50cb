#include "api/last_error.h"

#include "status/never_destroyed.h"

namespace korvel::internal {

LastErrorRecord& LastErrorRecord::OfThisThread() {
  thread_local NeverDestroyed<LastErrorRecord> record;
  struct EndOfThread {
    ~EndOfThread() { std::string().swap(record.object.text_); }
  };
  thread_local const EndOfThread end;
  return record.object;
}

ReturnCode LastErrorRecord::Record(ReturnCode code, std::string_view text) {
  code_ = code;
  text_ = text;
  return code_;
}

}  // namespace korvel::internal
