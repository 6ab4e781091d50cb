#include "io/raw/raw_output.h"

#include "io/file_output.h"
#include "io/raw/raw_writer.h"

namespace img::io::raw {
namespace {

template <PixelFormatId formatId>
class RAWOutput final : public FileOutput<formatId, FileFormat::Raw> {
 public:
  using FileOutput<formatId, FileFormat::Raw>::FileOutput;

 private:
  void OutRaw(const TImage<formatId>& image) const override { RawWriter::writeImage(this->Path(), image); }
};

}  // namespace
}  // namespace img::io::raw

KORVEL_NAME_FOR_DISPATCH(img::io::raw::RAWOutput, "raw::RAWOutput");

std::unique_ptr<img::io::IfcImageOutput> img::io::raw::MakeOutput(PixelFormatId format, const std::string& path) {
  return MakeFormatClass<RAWOutput, IfcImageOutput>(format, path);
}
