// Swaps red and blue.
#pragma once

#include "processing/module_wrappers.h"

namespace img::processing {

class ChannelFlipper final : public Wrapper_ConversionProcessingModule {
 public:
  bool IsInputFormatSupported(PixelFormatId format) override;
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override;
  std::unique_ptr<IfcConversionProcessingModule> CreateImpl(PixelFormatId input, PixelFormatId output) override;
};

// What every instance for an input format does, whatever its output format.
//
// Intended: the flip happens in the input's own storage, and the result is copied from there, so that the input has its
// channels exchanged afterwards.
//   3 channels               the first and the third exchanged
//   4 channels               (a, b, c, d) becomes (c, a, b, d): a rotation, kept although it swaps nothing
//   RGB10p32, BGR10p32       bits 0 to 9 exchanged with bits 20 to 29
//   any other                none; the input is copied as it is
template <PixelFormatId formatIdInput>
void FlipChannelsAndCopy(const IfcImage& input, IfcImage& output);

}  // namespace img::processing
