#include "io/raw/raw_reader.h"

#include "buffers/vector_image_buffer.h"
#include "io/file_formats.h"
#include "io/input_file.h"
#include "io/io_failure.h"
#include "io/raw/raw_header.h"
#include "io/read_image.h"

namespace img::io::raw {

using korvel::internal::ImgStatusCode;

void RAWReader::reselectPixelFormat(PixelFormatId requested, PixelFormatId found) {
  const std::optional<FormatFacts> wanted = FindFacts(requested);
  if (wanted && requested == found) return;
  const std::optional<FormatFacts> held = FindFacts(found);
  if (!wanted || !held || wanted->type != PixelType::Mono || held->type != PixelType::Bayer ||
      wanted->layout == PixelLayout::Mipi || wanted->rawFormat != held->rawFormat) {
    ThrowIo(ImgStatusCode::ImageFormatInterpretationError,
            "static void img::io::raw::RAWReader::reselectPixelFormat(img::PixelFormatId, img::PixelFormatId)",
            kCannotInterpret);
  }
}

std::unique_ptr<IfcImage> RAWReader::readImage(const std::string& path, buffer::IfcBufferFactory& bufferFactory,
                                               std::optional<PixelFormatId> requested) {
  constexpr const char* kLocation =
      "static std::unique_ptr<IfcImage> img::io::raw::RAWReader::readImage(const std::string &, "
      "buffer::IfcBufferFactory &, std::optional<PixelFormatId>)";
  InputFile file(path);
  if (!file.IsOpen()) ThrowIo(ImgStatusCode::Io, kLocation, kCannotOpen);
  decltype(kRAWHeaderLayout)::Bytes head;
  if (!file.Read(head.data(), head.size())) ThrowIo(ImgStatusCode::Io, kLocation, kCannotRead);

  const RAWHeader header = kRAWHeaderLayout.Decode(head);
  const PixelFormatId format{header.pixelFormat};
  const Size2D size{header.width, header.height};
  if (requested) reselectPixelFormat(*requested, format);
  if (format == PixelFormatId::Invalid) ThrowIo(ImgStatusCode::Io, kLocation, kCannotRead);
  // Tells the id by the text of the dispatcher, without a look at the size.
  const std::optional<FormatFacts> facts = FindFacts(format);
  if (!facts || !facts->IsPublic()) return buffer::VectorImageBuffer::AllocBuffer(format, Size2D{1, 1})->CreateImage();
  if (size.width == 0 || size.height == 0) return AllocImage(bufferFactory, format, size);

  const std::optional<size_t> byteCount = CheckedByteCount(*facts, size);
  if (byteCount != header.byteCount || header.byteCount > file.Remaining()) {
    ThrowIo(ImgStatusCode::Io, kLocation, kCannotRead);
  }
  RequireReadable(byteCount, kLocation);
  std::unique_ptr<IfcImage> image = AllocImage(bufferFactory, format, size);
  if (image && !file.Read(image->PixelPointer(0, 0), header.byteCount)) {
    ThrowIo(ImgStatusCode::Io, kLocation, kCannotRead);
  }
  return image;
}

}  // namespace img::io::raw
