#include "io/jpeg/jpeg_output.h"

#include "io/file_output.h"
#include "io/jpeg/jpeg_writer.h"

namespace img::io::jpeg {
namespace {

template <PixelFormatId formatId>
class JPEGOutput final : public FileOutput<formatId, FileFormat::Jpeg> {
 public:
  JPEGOutput(const std::string& path, const JPEGParameter& parameter)
      : FileOutput<formatId, FileFormat::Jpeg>(path), parameter_(parameter) {}

 private:
  void OutRaw(const TImage<formatId>& image) const override { JPEGWriter::writeImage(this->Path(), image, parameter_); }

  JPEGParameter parameter_;
};

}  // namespace
}  // namespace img::io::jpeg

KORVEL_NAME_FOR_DISPATCH(img::io::jpeg::JPEGOutput, "jpeg::JPEGOutput");
KORVEL_NAME_TYPE_FOR_DISPATCH(img::io::JPEGParameter, "img::io::JPEGParameter");

std::unique_ptr<img::io::IfcImageOutput> img::io::jpeg::MakeOutput(PixelFormatId format, const std::string& path,
                                                                   const JPEGParameter& parameter) {
  return MakeFormatClass<JPEGOutput, IfcImageOutput>(format, path, parameter);
}
