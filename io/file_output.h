// What the output classes of all file types share. For the sources of this folder.
#pragma once

#include <string>

#include "core/format_dispatch.h"
#include "core/typed_image.h"
#include "io/file_ending.h"
#include "io/image_io.h"

namespace img::io {

template <PixelFormatId formatId, FileFormat fileFormat>
class FileOutput : public IfcImageOutput {
 public:
  explicit FileOutput(const std::string& path) : path_(path) {}

  void Out(const IfcImage& image) final { OutRaw(static_cast<const TImage<formatId>&>(image)); }
  bool IsEndingOfType(const std::string& lowerCaseEnding) const final {
    return FileFormatOfEnding(lowerCaseEnding) == fileFormat;
  }

 protected:
  const std::string& Path() const { return path_; }

 private:
  virtual void OutRaw(const TImage<formatId>& image) const = 0;

  std::string path_;
};

}  // namespace img::io

KORVEL_NAME_TYPE_FOR_DISPATCH(img::io::IfcImageOutput, "img::io::IfcImageOutput");
KORVEL_NAME_TYPE_FOR_DISPATCH(std::string, "std::string");
