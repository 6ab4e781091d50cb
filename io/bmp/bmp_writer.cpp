#include "io/bmp/bmp_writer.h"

#include "io/io_failure.h"

namespace img::io::bmp {

using korvel::internal::ImgStatusCode;

BMPWriter::BMPWriter(const BMPHeader& header, const std::string& path)
    : fileSize_(size_t{header.pixelOffset} + header.imageSize), file_(path) {
  if (!file_.IsOpen()) {
    ThrowIo(ImgStatusCode::Io, "img::io::bmp::BMPWriter::BMPWriter(const BMPHeader &, const std::string &)",
            kCannotOpen);
  }
  file_.WriteInBlocks();

  const auto head = kBMPHeaderLayout.Encode(header);
  Append(head.data(), head.size());
  if (header.HasMasks()) {
    const auto masks = kBMPMasksLayout.Encode(header.masks);
    Append(masks.data(), masks.size());
  }
  if (header.HasColourTable()) {
    const BMPColourTable table = GreyColourTable();
    Append(table.data(), table.size());
  }
}

void BMPWriter::AppendImageLine(const uint8_t* line, size_t byteCount) {
  constexpr uint8_t kPadding[3] = {};
  const size_t padding = BMPHeader::PaddingOf(byteCount);
  const size_t left = fileSize_ - dataOffset_;
  if (byteCount > left || padding > left - byteCount) {
    ThrowIo(ImgStatusCode::Io, "void img::io::bmp::BMPWriter::AppendImageLine(const uint8_t *, size_t)",
            "File buffer overflow!");
  }
  Append(line, byteCount);
  Append(kPadding, padding);
}

void BMPWriter::Write() {
  constexpr const char* kLocation = "void img::io::bmp::BMPWriter::Write()";
  if (dataOffset_ != fileSize_) {
    ThrowIo(ImgStatusCode::Io, kLocation,
            "Image data incomplete! m_dataOffset=" + std::to_string(dataOffset_) +
                " file_size=" + std::to_string(fileSize_));
  }
  if (!file_.Close()) ThrowIo(ImgStatusCode::Io, kLocation, kCannotWrite);
}

void BMPWriter::Append(const void* bytes, size_t byteCount) {
  // A failure shows at the end: the rest would fail as well, and the caller learns of it in one place.
  isWritten_ = isWritten_ && file_.Write(bytes, byteCount);
  dataOffset_ += byteCount;
}

}  // namespace img::io::bmp
