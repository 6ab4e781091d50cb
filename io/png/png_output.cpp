#include "io/png/png_output.h"

#include "core/format_dispatch.h"
#include "core/typed_image.h"
#include "io/path_ending.h"
#include "io/png/png_writer.h"

namespace img::io::png {
namespace {

template <PixelFormatId formatId>
class PNGOutput final : public IfcImageOutput {
 public:
  PNGOutput(const std::string& path, const PNGParameter& parameter) : path_(path), parameter_(parameter) {}

  void Out(const IfcImage& image) override { OutRaw(static_cast<const TImage<formatId>&>(image)); }
  bool IsEndingOfType(const std::string& lowerCaseEnding) const override { return lowerCaseEnding == kPngEnding; }

 private:
  void OutRaw(const TImage<formatId>& image) const { PNGWriter::writeImage(path_, image, parameter_); }

  std::string path_;
  PNGParameter parameter_;
};

}  // namespace
}  // namespace img::io::png

KORVEL_NAME_FOR_DISPATCH(img::io::png::PNGOutput, "png::PNGOutput");
KORVEL_NAME_TYPE_FOR_DISPATCH(img::io::IfcImageOutput, "img::io::IfcImageOutput");
KORVEL_NAME_TYPE_FOR_DISPATCH(std::string, "std::string");
KORVEL_NAME_TYPE_FOR_DISPATCH(img::io::PNGParameter, "img::io::PNGParameter");

std::unique_ptr<img::io::IfcImageOutput> img::io::png::MakeOutput(PixelFormatId format, const std::string& path,
                                                                  const PNGParameter& parameter) {
  return MakeFormatClass<PNGOutput, IfcImageOutput>(format, path, parameter);
}
