#include "buffers/pooled_image_buffer.h"

#include <cstring>
#include <utility>

#include "buffers/typed_image_buffer.h"

namespace img::buffer {

PooledImageBuffer::PooledImageBuffer(uint8_t* data, size_t key, std::shared_ptr<IfcFixedFormatBufferPool> pool,
                                     std::shared_ptr<IfcBufferFactory> factory)
    : key_(key), pool_(std::move(pool)), data_(data), factory_(std::move(factory)) {}

PooledImageBuffer::~PooledImageBuffer() {
  if (pool_ && !detached_) pool_->ReleaseBuffer(key_);
}

template <PixelFormatId formatId>
class TPooledImageBuffer final : public TIfcImageBuffer<formatId>, public PooledImageBuffer {
 public:
  TPooledImageBuffer(uint8_t* data, const Size2D& size, size_t key, std::shared_ptr<IfcFixedFormatBufferPool> pool,
                     std::shared_ptr<IfcBufferFactory> factory)
      : IfcImageBuffer(size, formatId), PooledImageBuffer(data, key, std::move(pool), std::move(factory)) {}

  uint8_t* Data() const override { return data_; }

  std::shared_ptr<IfcImageBuffer> Clone() const override {
    IfcBufferFactory* const source = factory_ ? factory_.get() : pool_.get();
    if (source == nullptr) return nullptr;
    std::shared_ptr<IfcImageBuffer> clone = source->AllocBuffer(formatId, this->Size());
    if (this->ByteCount() != 0) std::memcpy(clone->Data(), data_, this->ByteCount());
    return clone;
  }

  std::shared_ptr<IfcImageBuffer> ChangeFormat(PixelFormatId newFormat) override {
    RequireFormatChange(formatId, newFormat);
    // Once the memory has been handed over, a further buffer over it has no claim to it.
    std::shared_ptr<IfcImageBuffer> changed =
        CreateBuffer(newFormat, data_, this->Size(), key_, detached_ ? nullptr : pool_, factory_);
    detached_ = true;
    return changed;
  }

  std::shared_ptr<IfcBufferFactory> Factory() const override { return factory_; }
};

}  // namespace img::buffer

KORVEL_NAME_FOR_DISPATCH(img::buffer::TPooledImageBuffer, "TPooledImageBuffer");
KORVEL_NAME_TYPE_FOR_DISPATCH(size_t, "unsigned long");
KORVEL_NAME_TYPE_FOR_DISPATCH(std::shared_ptr<img::buffer::IfcFixedFormatBufferPool>,
                              "std::shared_ptr<img::buffer::IfcFixedFormatBufferPool>");
KORVEL_NAME_TYPE_FOR_DISPATCH(std::shared_ptr<img::buffer::IfcBufferFactory>,
                              "std::shared_ptr<img::buffer::IfcBufferFactory>");

namespace img::buffer {

std::shared_ptr<IfcImageBuffer> PooledImageBuffer::CreateBuffer(PixelFormatId format, uint8_t* data, const Size2D& size,
                                                                size_t key,
                                                                std::shared_ptr<IfcFixedFormatBufferPool> pool,
                                                                std::shared_ptr<IfcBufferFactory> factory) {
  std::shared_ptr<IfcImageBuffer> buffer =
      MakeFormatClass<TPooledImageBuffer, IfcImageBuffer>(format, data, size, key, std::move(pool), std::move(factory));
  // The claim to the memory passes over last, so that a failure on the way here releases nothing.
  dynamic_cast<PooledImageBuffer&>(*buffer).detached_ = false;
  return buffer;
}

}  // namespace img::buffer
