// The classes that write images to files, one family for each file type.
#pragma once

#include <cstdint>
#include <string>

#include "core/image.h"

namespace img::io {

// The file types, under the numbers that parameters carry.
enum class FileFormat : uint32_t { Png = 2 };

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

// How a file is to be written.
struct ImgParameter {
  FileFormat fileFormat;

 protected:
  // Only the type that belongs to a file format names that format.
  explicit ImgParameter(FileFormat format) : fileFormat(format) {}
};

struct PNGParameter : ImgParameter {
  static constexpr uint32_t kDefaultQuality = 100;

  explicit PNGParameter(uint32_t pngQuality = kDefaultQuality) : ImgParameter(FileFormat::Png), quality(pngQuality) {}

  uint32_t quality;  // 10 makes the smallest file, 100 is the fastest
};

}  // namespace img::io
