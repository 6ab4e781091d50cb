// The frame of every exported function: no exception leaves it, every failure is a return code and a text in the
// calling thread's record, and a success leaves that record alone.
//
// A function's body is its checks, in order, and one call into the library:
//
//   return ExportFrame([&] {
//     const auto buffer = HandleRegistry::Instance().FindImage(imageHandle);
//     KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
//     KORVEL_REQUIRE_POINTER(width);
//     *width = buffer->Size().width;
//     return kSuccess;
//   });
//
// A check prints the name of the argument that it is given, so names and messages can't drift apart.
#pragma once

#include <exception>
#include <string_view>

#include "api/last_error.h"

namespace korvel::internal {

// Usable in a constant expression; ReturnCode itself is the header's.
inline constexpr ReturnCode kSuccess = KORVEL_RETURN_CODE_Success;

// Records a failed check. Returns the code that the record then holds.
ReturnCode RecordFailure(ReturnCode code, std::string_view text);

// The return code of a std::system_error's value; 1 for a value without an entry. The category isn't looked at.
ReturnCode SystemErrorToReturnCode(int value);

// Turns the exception in flight into a recorded return code. Call it in a handler only.
ReturnCode ExceptionToReturnCode() noexcept;

template <class Body>
ReturnCode ExportFrame(Body&& body) {
  try {
    return body();
  } catch (const std::exception&) {
    return ExceptionToReturnCode();
  }
}

// Fills a caller's array in two calls: with a null array, tells the size that it needs; otherwise copies the elements
// and tells how many. needed is in elements. tooSmall is the text of the failure that leaves *arraySize as it was.
template <class Source, class Element>
ReturnCode FillArray(const Source* elements, size_t needed, Element* array, size_t* arraySize,
                     std::string_view tooSmall) {
  if (array == nullptr) {
    *arraySize = needed;
    return kSuccess;
  }
  if (*arraySize < needed) return RecordFailure(KORVEL_RETURN_CODE_BufferToSmall, tooSmall);
  for (size_t i = 0; i < needed; ++i) array[i] = static_cast<Element>(elements[i]);
  *arraySize = needed;
  return kSuccess;
}

}  // namespace korvel::internal

#define KORVEL_REQUIRE(condition, code, text)                                   \
  do {                                                                          \
    if (!(condition)) return ::korvel::internal::RecordFailure((code), (text)); \
  } while (false)

#define KORVEL_REQUIRE_POINTER(argument) \
  KORVEL_REQUIRE((argument) != nullptr, KORVEL_RETURN_CODE_InvalidArgument, #argument " is not a valid pointer!")

// object is what the registry has for the handle argument, null if it knows none.
#define KORVEL_REQUIRE_HANDLE(object, handleArgument) \
  KORVEL_REQUIRE((object) != nullptr, KORVEL_RETURN_CODE_InvalidHandle, #handleArgument " is invalid!")

// The element of a container that an index argument asks for.
#define KORVEL_REQUIRE_INDEX(container, indexArgument)                                \
  KORVEL_REQUIRE((indexArgument) < (container).size(), KORVEL_RETURN_CODE_OutOfRange, \
                 #indexArgument " is out of range!")
