#include "api/export_frame.h"

#include <map>
#include <stdexcept>
#include <system_error>

#include "status/exceptions.h"

namespace korvel::internal {
namespace {

ReturnCode ReturnCodeOfStatus(ImgStatusCode status) {
  const auto value = static_cast<int32_t>(status);
  return static_cast<ReturnCode>(value >= 0 ? value : KORVEL_RETURN_CODE_Error);
}

ReturnCode RecordCurrentException() {
  try {
    throw;
  } catch (const util::limgReturnCodeException& exception) {
    return RecordFailure(static_cast<ReturnCode>(exception.Code()), exception.what());
  } catch (const std::system_error& exception) {
    return RecordFailure(SystemErrorToReturnCode(exception.code().value()), exception.what());
  } catch (const utilx::CustomException<utilx::StatusCode, &utilx::conversion::StatusToText>& exception) {
    return RecordFailure(KORVEL_RETURN_CODE_Error, exception.what());
  } catch (const ImgException& exception) {
    return RecordFailure(ReturnCodeOfStatus(exception.GetStatus()), exception.what());
  } catch (const std::exception& exception) {
    return RecordFailure(KORVEL_RETURN_CODE_Error, exception.what());
  }
}

}  // namespace

ReturnCode RecordFailure(ReturnCode code, std::string_view text) {
  return LastErrorRecord::OfThisThread().Record(code, text);
}

ReturnCode SystemErrorToReturnCode(int value) {
  // Intended: an error number of the operating system goes through the same entries as a video status.
  static const std::map<int, ReturnCode> codes = {
      {0, KORVEL_RETURN_CODE_Success},          // "Success"
      {1, KORVEL_RETURN_CODE_Error},            // "No success"
      {2, KORVEL_RETURN_CODE_NotSupported},     // "Not supported"
      {3, KORVEL_RETURN_CODE_AccessFailed},     // "Could not access"
      {4, KORVEL_RETURN_CODE_InvalidHandle},    // "Invalid handle"
      {5, KORVEL_RETURN_CODE_InvalidArgument},  // "Invalid parameter"
      {6, KORVEL_RETURN_CODE_QueueFull},        // "Queue is full"
      {7, KORVEL_RETURN_CODE_Timeout},          // "Timeout"
      {8, KORVEL_RETURN_CODE_AccessFailed},     // "Not initialized"
      {9, KORVEL_RETURN_CODE_NotSupported},     // "Not available"
  };
  const auto found = codes.find(value);
  if (found == codes.end()) return KORVEL_RETURN_CODE_Error;
  return found->second;
}

ReturnCode ExceptionToReturnCode() noexcept {
  try {
    return RecordCurrentException();
  } catch (const std::exception&) {
    // Recording itself ran out of memory. The text of that failure is short enough for a string to hold it in place.
    return RecordFailure(KORVEL_RETURN_CODE_Error, "std::bad_alloc");
  }
}

}  // namespace korvel::internal
