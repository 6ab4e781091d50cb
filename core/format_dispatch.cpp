#include "core/format_dispatch.h"

#include "status/exceptions.h"

void img::detail::ThrowUnsupportedFormat(PixelFormatId formatId, const char* dispatcher, const char* arguments,
                                         const char* className, const char* interfaceName,
                                         std::initializer_list<const char*> argumentNames) {
  std::string names;
  for (const char* name : argumentNames) names += (names.empty() ? "" : ", ") + std::string(name);
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Default>(
      korvel::internal::ImgStatusCode::InvalidParameterUtilx,
      std::string("std::unique_ptr<TClassIfc> img::") + dispatcher + "(" + arguments + ") [T = " + className +
          ", TClassIfc = " + interfaceName + ", Args = <" + names + ">]",
      "Unsupported formatId: " + std::to_string(static_cast<uint32_t>(formatId)));
}
