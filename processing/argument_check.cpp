#include "processing/argument_check.h"

#include "status/exceptions.h"

namespace img::processing {

void RequireArgument(bool isValid, const char* location, const char* text) {
  if (isValid) return;
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Processing>(korvel::internal::ImgStatusCode::InvalidArgument,
                                                                 location, text);
}

}  // namespace img::processing
