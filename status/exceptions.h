// The exceptions that carry a status from where a failure is found to the exported function, which turns them into a
// return code and a text.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "status/log.h"
#include "status/status_code.h"

namespace cfg_libimg {

// The parts of the library that throw, by the number that stands in an exception's text.
enum class Modules : int32_t { Default = 9000, Io = 9001, Processing = 9003, Pixel = 9004, Buffer = 9005 };

}  // namespace cfg_libimg

namespace utilx {

template <cfg_libimg::Modules module>
struct ExceptionModule {
  static constexpr int32_t kNumber = static_cast<int32_t>(module);
  static constexpr const char* LogName() {
    switch (module) {
      case cfg_libimg::Modules::Io:
        return "libimg_io";
      case cfg_libimg::Modules::Processing:
        return "libimg_processing";
      case cfg_libimg::Modules::Pixel:
        return "libimg_pixel";
      case cfg_libimg::Modules::Buffer:
        return "libimg_buffer";
      case cfg_libimg::Modules::Default:
        break;
    }
    return "libimg_Default";
  }
};

template <class Status, std::string (*ToText)(Status)>
class CustomException : public std::runtime_error {
 public:
  CustomException(Status status, const std::string& what) : std::runtime_error(what), status_(status) {}

  Status GetStatus() const noexcept { return status_; }

 private:
  Status status_;
};

// A failure with its status, the module and the function that found it, and a message. Building one writes a line to
// the system log, so it is for failures only.
template <class Status, std::string (*ToText)(Status)>
class CustomModuleException : public CustomException<Status, ToText> {
 public:
  // location is the signature of the throwing function, its template arguments behind it in square brackets.
  template <cfg_libimg::Modules module>
  CustomModuleException(Status status, ExceptionModule<module> exceptionModule, std::string location, std::string text)
      : CustomException<Status, ToText>(status, LogAndDescribe(status, exceptionModule, location, text)),
        moduleId_(ExceptionModule<module>::kNumber),
        location_(std::move(location)),
        text_(std::move(text)) {}

  int32_t ModuleId() const noexcept { return moduleId_; }
  const std::string& Location() const noexcept { return location_; }
  const std::string& Text() const noexcept { return text_; }

 private:
  template <cfg_libimg::Modules module>
  static std::string LogAndDescribe(Status status, ExceptionModule<module> exceptionModule, const std::string& location,
                                    const std::string& text) {
    const std::string statusText = ToText(status);
    LogStatusException(exceptionModule.LogName(),
                       "Exception (status=" + statusText + ", location=" + location + ", txt=" + text + ")");
    return "error: type=" + statusText + ", module_id=" + std::to_string(exceptionModule.kNumber) + ", txt=" + text;
  }

  int32_t moduleId_;
  std::string location_;
  std::string text_;
};

}  // namespace utilx

namespace korvel::internal {

// The library's working exception.
using ImgException = utilx::CustomModuleException<ImgStatusCode, &ImgStatusCodeToString>;

namespace util {

// Carries a return code straight to the exported function's caller.
class limgReturnCodeException : public std::runtime_error {
 public:
  limgReturnCodeException(int32_t code, const std::string& message) : std::runtime_error(message), code_(code) {}

  int32_t Code() const noexcept { return code_; }

 private:
  int32_t code_;
};

}  // namespace util

template <cfg_libimg::Modules module>
[[noreturn]] void ThrowStatus(ImgStatusCode status, std::string location, std::string text) {
  throw ImgException(status, utilx::ExceptionModule<module>{}, std::move(location), std::move(text));
}

}  // namespace korvel::internal
