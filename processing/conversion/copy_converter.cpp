#include "processing/conversion/copy_converter.h"

#include <cstring>
#include <string>

#include "status/ensure.h"

namespace img::processing {

void CopyConverter::Process(const IfcImage& input, IfcImage& output) {
  const auto ensure = [](bool condition) {
    if (condition) return;
    korvel::internal::Ensure(
        false, "virtual void img::processing::CopyConverter::Process(const img::IfcImage &, img::IfcImage &)",
        korvel::internal::ImgStatusCode::InvalidParameterUtilx);
  };
  ensure(input.Area().size.width == output.Area().size.width);
  ensure(input.Area().size.height == output.Area().size.height);
  ensure(input.PixelFormat() == output.PixelFormat());
  ensure(input.ByteCount() == output.ByteCount());
  ensure(input.LineByteCount() == output.LineByteCount());

  const uint8_t* const source = input.PixelPointer(0, 0);
  uint8_t* const target = output.PixelPointer(0, 0);
  if (source == nullptr || target == nullptr) return;
  std::memcpy(target, source, input.ByteCount());
}

}  // namespace img::processing
