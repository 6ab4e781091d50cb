// The one vocabulary of statuses: every failure inside the library carries a number of this list.
//
// Negative numbers are generic, positive ones are particular to images; the positive ones are at the same time the
// return codes of the exported functions. A status' text is its name.
#pragma once

#include <cstdint>
#include <string>

// X(name, value)
#define KORVEL_GENERIC_STATUS_CODES(X) \
  X(Success, 0)                        \
  X(ErrorUtilx, -1001)                 \
  X(NotInitializedUtilx, -1002)        \
  X(NotImplementedUtilx, -1003)        \
  X(ResourceInUseUtilx, -1004)         \
  X(AccessDeniedUtilx, -1005)          \
  X(InvalidHandleUtilx, -1006)         \
  X(InvalidIdUtilx, -1007)             \
  X(NoDataUtilx, -1008)                \
  X(InvalidParameterUtilx, -1009)      \
  X(IoUtilx, -1010)                    \
  X(TimeoutUtilx, -1011)               \
  X(AbortUtilx, -1012)                 \
  X(InvalidBufferUtilx, -1013)         \
  X(NotAvailableUtilx, -1014)          \
  X(InvalidAddressUtilx, -1015)        \
  X(BufferToSmallUtilx, -1016)         \
  X(InvalidIndexUtilx, -1017)          \
  X(ParsingChunkDataUtilx, -1018)      \
  X(InvalidValueUtilx, -1019)          \
  X(ResourceExhaustedUtilx, -1020)     \
  X(OutOfMemoryUtilx, -1021)           \
  X(BusyUtilx, -1022)                  \
  X(CustomIdUtilx, -10000)

#define KORVEL_IMAGE_STATUS_CODES(X) \
  X(Error, 1)                        \
  X(InvalidHandle, 2)                \
  X(Io, 3)                           \
  X(BufferToSmall, 4)                \
  X(InvalidArgument, 5)              \
  X(OutOfRange, 6)                   \
  X(ImageFormatNotSupported, 7)      \
  X(ImageFormatInterpretationError, 8)

#define KORVEL_STATUS_ENUMERATOR(name, value) name = (value),

namespace utilx {

enum class StatusCode : int32_t {
  KORVEL_GENERIC_STATUS_CODES(KORVEL_STATUS_ENUMERATOR) KORVEL_IMAGE_STATUS_CODES(KORVEL_STATUS_ENUMERATOR)
};

namespace conversion {
// The status' text and, in square brackets, its number: "InvalidParameterUtilx[-1009]". A number that the list doesn't
// hold is "Unknown".
std::string StatusToText(StatusCode status);
}  // namespace conversion

}  // namespace utilx

namespace korvel::internal {

enum class ImgStatusCode : int32_t {
  KORVEL_GENERIC_STATUS_CODES(KORVEL_STATUS_ENUMERATOR) KORVEL_IMAGE_STATUS_CODES(KORVEL_STATUS_ENUMERATOR)
};

// As utilx::conversion::StatusToText: both enumerations share their numbers and texts.
std::string ImgStatusCodeToString(ImgStatusCode status);

}  // namespace korvel::internal

#undef KORVEL_STATUS_ENUMERATOR
