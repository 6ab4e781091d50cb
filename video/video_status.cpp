#include "video/video_status.h"

#include "status/never_destroyed.h"

namespace libvideo {
namespace detail {

const video_error_category& video_error_category::Instance() {
  static const korvel::internal::NeverDestroyed<video_error_category> category;
  return category.object;
}

std::string video_error_category::message(int value) const {
  switch (VideoStatus{value}) {
    case VideoStatus::Success:
      return "Success";
    case VideoStatus::NoSuccess:
      return "No success";
    case VideoStatus::NotSupported:
      return "Not supported";
    case VideoStatus::CouldNotAccess:
      return "Could not access";
    case VideoStatus::InvalidHandle:
      return "Invalid handle";
    case VideoStatus::InvalidParameter:
      return "Invalid parameter";
    case VideoStatus::QueueIsFull:
      return "Queue is full";
    case VideoStatus::Timeout:
      return "Timeout";
    case VideoStatus::NotInitialized:
      return "Not initialized";
    case VideoStatus::NotAvailable:
      return "Not available";
  }
  return "Unknown status code";
}

}  // namespace detail

void ThrowOnFailure(const std::error_code& error, const char* operation) {
  if (error) throw std::system_error(error, operation);
}

}  // namespace libvideo
