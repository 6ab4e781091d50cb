// The classes that write images to files and read them, one family for each file type.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/image.h"

namespace img::io {

// The file types, under the numbers that parameters carry.
enum class FileFormat : uint32_t { Bmp = 1, Png = 2, Jpeg = 3, Raw = 4 };

class IfcImageIO {
 public:
  IfcImageIO() = default;
  IfcImageIO(const IfcImageIO&) = delete;
  IfcImageIO& operator=(const IfcImageIO&) = delete;
  virtual ~IfcImageIO() = default;
};

// Writes images of one format to one path.
class IfcImageOutput : public IfcImageIO {
 public:
  virtual void Out(const IfcImage& image) = 0;

  // Whether a path's ending, in lower case, is one of the file type.
  virtual bool IsEndingOfType(const std::string& lowerCaseEnding) const = 0;
};

// Reads the image of one path into a buffer from a factory. The result is null if the factory's buffer makes no image.
class IfcImageInput : public IfcImageIO {
 public:
  virtual std::unique_ptr<IfcImage> Read() = 0;

  // Takes the pixels for another format, where the file type allows that.
  virtual std::unique_ptr<IfcImage> Read(PixelFormatId requested) = 0;
};

// How a file is to be written.
struct ImgParameter {
  FileFormat fileFormat;

 protected:
  // Only the type that belongs to a file format names that format.
  explicit ImgParameter(FileFormat format) : fileFormat(format) {}
};

struct BMPParameter : ImgParameter {
  BMPParameter() : ImgParameter(FileFormat::Bmp) {}
};

struct PNGParameter : ImgParameter {
  static constexpr uint32_t kDefaultQuality = 100;

  explicit PNGParameter(uint32_t pngQuality = kDefaultQuality) : ImgParameter(FileFormat::Png), quality(pngQuality) {}

  uint32_t quality;  // 10 makes the smallest file, 100 is the fastest
};

struct JPEGParameter : ImgParameter {
  static constexpr uint32_t kDefaultQuality = 75;

  explicit JPEGParameter(uint32_t jpegQuality = kDefaultQuality)
      : ImgParameter(FileFormat::Jpeg), quality(jpegQuality) {}

  uint32_t quality;  // 0 makes the smallest file; 100, and anything above, the best picture
};

struct RAWParameter : ImgParameter {
  RAWParameter() : ImgParameter(FileFormat::Raw) {}
};

}  // namespace img::io
