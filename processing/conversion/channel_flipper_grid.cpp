// The grid of ChannelFlipper: an instance for every pair of public formats. It stands apart, so that a change of the
// flip itself doesn't compile it anew.

#include "processing/conversion/channel_flipper.h"

namespace img::processing {
namespace {

template <PixelFormatId in, PixelFormatId out>
class TChannelFlipper final : public IfcConversionProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override { FlipChannelsAndCopy<in>(input, output); }
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return {input.area, out}; }
  bool IsInputFormatSupported(PixelFormatId format) override { return format == in; }
};

}  // namespace
}  // namespace img::processing

KORVEL_NAME_PAIR_FOR_DISPATCH(img::processing::TChannelFlipper, "TChannelFlipper");

std::unique_ptr<img::processing::IfcConversionProcessingModule> img::processing::ChannelFlipper::CreateImpl(
    PixelFormatId input, PixelFormatId output) {
  return MakeFormatClass<TChannelFlipper, IfcConversionProcessingModule>(input, output);
}
