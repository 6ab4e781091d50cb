// Writes BMP files line by line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "io/bmp/bmp_header.h"
#include "io/output_file.h"

namespace img::io::bmp {

class BMPWriter {
 public:
  // Opens the file and writes all that stands before the pixels. Throws Io if it can't be opened.
  BMPWriter(const BMPHeader& header, const std::string& path);

  // Appends a line and its padding; the image's last line comes first. Throws Io, "File buffer overflow!", for a line
  // that would exceed the file that the header describes, which then is as it was.
  void AppendImageLine(const uint8_t* line, size_t byteCount);

  // Ends the file. Throws Io, "Image data incomplete! ...", if lines are missing, and "Error writing file." if anything
  // of it may not have arrived. Nothing can be appended afterwards.
  void Write();

 private:
  void Append(const void* bytes, size_t byteCount);

  size_t fileSize_;
  size_t dataOffset_ = 0;
  bool isWritten_ = true;
  OutputFile file_;
};

}  // namespace img::io::bmp
