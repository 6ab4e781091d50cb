#include "core/channel_accessor.h"

#include <string_view>

void img::pixel_accessor::detail::ThrowNotAddressable(std::string_view formatName, const char* function,
                                                      unsigned channel) {
  const std::string name(formatName);
  const std::string format = "img::PixelFormatId::" + name;
  const bool isGet = std::string_view(function) == "Get";
  const std::string arguments = isGet ? "(const img::pixel_accessor::ChannelAccessor::PixelRepr &)"
                                      : "(img::pixel_accessor::ChannelAccessor::PixelRepr &, "
                                        "img::pixel_accessor::ChannelAccessor::ChannelType)";
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Pixel>(
      korvel::internal::ImgStatusCode::NotImplementedUtilx,
      std::string("static ") + (isGet ? "<dependent type>" : "void") + " img::pixel_accessor::ChannelAccessor<" +
          format + ">::" + function + arguments + " [pixelFormat = " + format +
          ", channel = " + std::to_string(channel) + "]",
      "IMPLEMENT IT!!! format: " + name);
}
