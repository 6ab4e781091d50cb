#include "io/png/png_output.h"

#include "io/file_output.h"
#include "io/png/png_writer.h"

namespace img::io::png {
namespace {

template <PixelFormatId formatId>
class PNGOutput final : public FileOutput<formatId, FileFormat::Png> {
 public:
  PNGOutput(const std::string& path, const PNGParameter& parameter)
      : FileOutput<formatId, FileFormat::Png>(path), parameter_(parameter) {}

 private:
  void OutRaw(const TImage<formatId>& image) const override { PNGWriter::writeImage(this->Path(), image, parameter_); }

  PNGParameter parameter_;
};

}  // namespace
}  // namespace img::io::png

KORVEL_NAME_FOR_DISPATCH(img::io::png::PNGOutput, "png::PNGOutput");
KORVEL_NAME_TYPE_FOR_DISPATCH(img::io::PNGParameter, "img::io::PNGParameter");

std::unique_ptr<img::io::IfcImageOutput> img::io::png::MakeOutput(PixelFormatId format, const std::string& path,
                                                                  const PNGParameter& parameter) {
  return MakeFormatClass<PNGOutput, IfcImageOutput>(format, path, parameter);
}
