// The input class of a file type: a path, a factory and the type's reader.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "core/image_buffer.h"
#include "io/image_io.h"

namespace img::io {

template <class Reader>
class FileInput final : public IfcImageInput {
 public:
  FileInput(std::string path, std::shared_ptr<buffer::IfcBufferFactory> bufferFactory)
      : path_(std::move(path)), bufferFactory_(std::move(bufferFactory)) {}

  std::unique_ptr<IfcImage> Read() override { return Reader::readImage(path_, *bufferFactory_, std::nullopt); }
  std::unique_ptr<IfcImage> Read(PixelFormatId requested) override {
    return Reader::readImage(path_, *bufferFactory_, requested);
  }

 private:
  std::string path_;
  std::shared_ptr<buffer::IfcBufferFactory> bufferFactory_;
};

}  // namespace img::io
