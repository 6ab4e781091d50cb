#include "processing/unsupported_format.h"

#include "status/exceptions.h"

namespace img::processing {

std::string UnsupportedFormatText(PixelFormatId format) {
  return "Pixel format " + PixelFormatInfo_Name(format) + " is not supported!";
}

void RequireSupportedFormat(bool isSupported, PixelFormatId format, const char* location) {
  if (isSupported) return;
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Processing>(
      korvel::internal::ImgStatusCode::ImageFormatNotSupported, location, UnsupportedFormatText(format));
}

}  // namespace img::processing
