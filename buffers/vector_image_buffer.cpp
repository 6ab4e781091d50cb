#include "buffers/vector_image_buffer.h"

#include "buffers/typed_image_buffer.h"

namespace img::buffer {

template <PixelFormatId formatId>
class TVectorImageBuffer final : public TIfcImageBuffer<formatId>, public VectorImageBuffer {
 public:
  explicit TVectorImageBuffer(const Size2D& size)
      : TVectorImageBuffer(std::vector<uint8_t>(ByteCountToAllocate(formatId, size)), size) {}

  TVectorImageBuffer(std::vector<uint8_t>&& storage, const Size2D& size)
      : IfcImageBuffer(size, formatId), VectorImageBuffer(std::move(storage)) {}

  uint8_t* Data() const override {
    // A buffer hands out writable pixels though it doesn't change itself.
    return storage_.empty() ? nullptr : const_cast<uint8_t*>(storage_.data());
  }

  std::shared_ptr<IfcImageBuffer> Clone() const override {
    return CreateBuffer(formatId, std::vector<uint8_t>(storage_), this->Size());
  }

  std::shared_ptr<IfcImageBuffer> ChangeFormat(PixelFormatId newFormat) override {
    RequireFormatChange(formatId, newFormat);
    return CreateBuffer(newFormat, std::move(storage_), this->Size());
  }

  std::shared_ptr<IfcBufferFactory> Factory() const override { return std::make_shared<VectorImageBufferFactory>(); }
};

}  // namespace img::buffer

KORVEL_NAME_FOR_DISPATCH(img::buffer::TVectorImageBuffer, "TVectorImageBuffer");
KORVEL_NAME_TYPE_FOR_DISPATCH(std::vector<uint8_t>, "std::vector<unsigned char>");

namespace img::buffer {

std::shared_ptr<IfcImageBuffer> VectorImageBuffer::AllocBuffer(PixelFormatId format, const Size2D& size) {
  if (format != PixelFormatId::Invalid)
    RequireNotEmpty(size,
                    "static std::shared_ptr<IfcImageBuffer> img::buffer::VectorImageBuffer::AllocBuffer("
                    "img::PixelFormatId, const img::Size2D &)");
  return MakeFormatClass<TVectorImageBuffer, IfcImageBuffer>(format, size);
}

std::shared_ptr<IfcImageBuffer> VectorImageBuffer::CreateBuffer(PixelFormatId format, std::vector<uint8_t>&& storage,
                                                                const Size2D& size) {
  if (format != PixelFormatId::Invalid)
    RequireNotEmpty(size,
                    "static std::shared_ptr<IfcImageBuffer> img::buffer::VectorImageBuffer::CreateBuffer("
                    "img::PixelFormatId, std::vector<uint8_t> &&, const img::Size2D &)");
  std::shared_ptr<IfcImageBuffer> buffer =
      MakeFormatClass<TVectorImageBuffer, IfcImageBuffer>(format, std::vector<uint8_t>(), size);
  // The bytes move last, so that a failure on the way here leaves them where they were.
  dynamic_cast<VectorImageBuffer&>(*buffer).storage_ = std::move(storage);
  return buffer;
}

}  // namespace img::buffer
