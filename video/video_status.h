// How video writing reports: as error codes of one category, whose values the exported functions turn into return
// codes.
#pragma once

#include <string>
#include <system_error>

namespace libvideo {

enum class VideoStatus : int {
  Success = 0,
  NoSuccess = 1,  // any failure without a finer value
  NotSupported = 2,
  CouldNotAccess = 3,  // the target exists, or what is fixed while recording was to change
  InvalidHandle = 4,
  InvalidParameter = 5,
  QueueIsFull = 6,
  Timeout = 7,
  NotInitialized = 8,
  NotAvailable = 9,
};

namespace detail {

class video_error_category final : public std::error_category {
 public:
  static const video_error_category& Instance();

  const char* name() const noexcept override { return "libvideo status code"; }
  std::string message(int value) const override;
};

}  // namespace detail

inline std::error_code MakeErrorCode(VideoStatus status) {
  return {static_cast<int>(status), detail::video_error_category::Instance()};
}

// "append: Queue is full" for a failure of an operation; a success returns.
void ThrowOnFailure(const std::error_code& error, const char* operation);

}  // namespace libvideo
