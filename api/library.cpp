// KORVEL_Library_*: the library's version and the calling thread's last failure.

#include "api/export_frame.h"
#include "korvel/korvel.h"

namespace {

constexpr uint32_t kVersionMajor = KORVEL_VERSION_MAJOR;
constexpr uint32_t kVersionMinor = KORVEL_VERSION_MINOR;
constexpr uint32_t kVersionSubminor = KORVEL_VERSION_SUBMINOR;

}  // namespace

using korvel::internal::ExportFrame;
using korvel::internal::kSuccess;
using korvel::internal::LastErrorRecord;

KORVEL_RETURN_CODE KORVEL_Library_GetVersionMajor(uint32_t* libraryVersionMajor) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(libraryVersionMajor);
    *libraryVersionMajor = kVersionMajor;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Library_GetVersionMinor(uint32_t* libraryVersionMinor) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(libraryVersionMinor);
    *libraryVersionMinor = kVersionMinor;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Library_GetVersionSubminor(uint32_t* libraryVersionSubminor) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(libraryVersionSubminor);
    *libraryVersionSubminor = kVersionSubminor;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Library_GetLastError(uint32_t* lastErrorCode, char* lastErrorDescription,
                                               size_t* lastErrorDescriptionSize) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(lastErrorCode);
    KORVEL_REQUIRE_POINTER(lastErrorDescriptionSize);
    const LastErrorRecord& record = LastErrorRecord::OfThisThread();
    const auto code = record.Code();
    // Intended: unlike the array functions', this text carries no star.
    const auto result =
        korvel::internal::FillArray(record.Text().c_str(), record.Text().size() + 1, lastErrorDescription,
                                    lastErrorDescriptionSize, "lastErrorDescription is too small!");
    // A question for the size leaves the code unwritten.
    if (result == kSuccess && lastErrorDescription != nullptr) *lastErrorCode = code;
    return result;
  });
}
