#include "processing/measure/collect_line.h"

#include <utility>

#include "core/channel_accessor.h"
#include "core/image_lines.h"

namespace img::processing {
namespace {

// The addresses of a line's pixels.
struct PixelRun {
  const uint8_t* first = nullptr;
  size_t step = 0;
  size_t count = 0;
};

PixelRun RunOf(const IfcImage& image, bool isHorizontal, uint64_t offset) {
  const auto lines = LinesOf(image);
  const Size2D& size = lines.size;
  const size_t pixelBytes = image.PixelByteCount();
  if (offset >= (isHorizontal ? size.height : size.width)) return {};
  if (isHorizontal) return {lines[offset], pixelBytes, size.width};
  return {lines.first + offset * pixelBytes, lines.step, size.height};
}

}  // namespace

template <PixelFormatId formatId>
class TCollectLine final : public CollectLineIfc {
 public:
  void Process(const IfcImage& image, bool isHorizontal, uint64_t offset, LineRecord& record) override {
    const PixelRun run = RunOf(image, isHorizontal, offset);
    record.format = formatId;
    record.isHorizontal = isHorizontal;
    record.offset = offset;
    record.channels.clear();
    record.channels.resize(kFacts<formatId>.channels);
    for (std::vector<uint32_t>& values : record.channels) values.resize(run.count);
    Collect(run, record, std::make_index_sequence<kFacts<formatId>.channels>());
  }

 private:
  template <size_t... channels>
  static void Collect(const PixelRun& run, LineRecord& record, std::index_sequence<channels...>) {
    uint32_t* const values[] = {record.channels[channels].data()...};
    for (size_t i = 0; i < run.count; ++i) {
      const auto pixel = pixel_accessor::LoadPixel<formatId>(run.first + i * run.step);
      ((values[channels][i] = pixel_accessor::ChannelAccessor<formatId>::template Get<channels>(pixel)), ...);
    }
  }
};

}  // namespace img::processing

KORVEL_NAME_FOR_DISPATCH(img::processing::TCollectLine, "TCollectLine");
KORVEL_NAME_TYPE_FOR_DISPATCH(img::processing::CollectLineIfc, "img::processing::CollectLineIfc");

namespace img::processing {

CollectLine::CollectLine() : TemplateWrapper_MeasureModule("CollectLine") {}

void CollectLine::Process(const IfcImage& image, bool isHorizontal, uint64_t offset, LineRecord& record) {
  TemplateWrapper_MeasureModule::Process(image, isHorizontal, offset, record);
}

}  // namespace img::processing
