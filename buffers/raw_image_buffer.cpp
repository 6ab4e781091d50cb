#include "buffers/raw_image_buffer.h"

#include <string>

#include "buffers/typed_image_buffer.h"
#include "status/exceptions.h"

namespace img::buffer {
namespace {

[[noreturn]] void ThrowNotImplemented(const char* location) {
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Buffer>(korvel::internal::ImgStatusCode::NotImplementedUtilx,
                                                             location, "");
}

}  // namespace

template <PixelFormatId formatId>
class TRawImageBuffer final : public TIfcImageBuffer<formatId>, public RawImageBuffer {
 public:
  TRawImageBuffer(uint8_t* data, const Size2D& size) : IfcImageBuffer(size, formatId), RawImageBuffer(data) {}

  uint8_t* Data() const override { return data_; }

  std::shared_ptr<IfcImageBuffer> Clone() const override {
    ThrowNotImplemented("virtual std::shared_ptr<IfcImageBuffer> img::buffer::RawImageBuffer::Clone() const");
  }

  std::shared_ptr<IfcImageBuffer> ChangeFormat(PixelFormatId newFormat) override {
    RequireFormatChange(formatId, newFormat);
    return CreateBuffer(newFormat, data_, this->Size());
  }

  std::shared_ptr<IfcBufferFactory> Factory() const override {
    ThrowNotImplemented("virtual std::shared_ptr<IfcBufferFactory> img::buffer::RawImageBuffer::Factory() const");
  }
};

}  // namespace img::buffer

KORVEL_NAME_FOR_DISPATCH(img::buffer::TRawImageBuffer, "TRawImageBuffer");

namespace img::buffer {

std::shared_ptr<IfcImageBuffer> RawImageBuffer::CreateBuffer(PixelFormatId format, uint8_t* data, const Size2D& size) {
  if (format != PixelFormatId::Invalid)
    RequireNotEmpty(
        size,
        "static std::shared_ptr<IfcImageBuffer> img::buffer::RawImageBuffer::CreateBuffer(img::PixelFormatId, "
        "uint8_t *, const img::Size2D &)");
  return MakeFormatClass<TRawImageBuffer, IfcImageBuffer>(format, data, size);
}

}  // namespace img::buffer
