// Unpacks images whose pixels are a stream of bits into whole words, one for each channel.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/module_wrappers.h"

namespace img::processing {

// The class that images of a packed class get; None for any other class.
PixelClass UnpackedClass(PixelClass packedClass);

class UnpackPacked final : public Wrapper_ConversionProcessingModule {
 public:
  bool IsInputFormatSupported(PixelFormatId format) override { return PixelFormatInfo_IsPacked(format); }
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override;
  std::unique_ptr<IfcConversionProcessingModule> CreateImpl(PixelFormatId input, PixelFormatId output) override;
};

// The streams, from their first byte; an image has no line structure. input holds byteCount bytes, which are all read;
// output, 16-bit words without alignment, has room for the samples in them. b0 is the first byte of a group.
//
//   10p    4 samples in 5 bytes   s0 = b0 | (b1 & 3) << 8      s1 = b1 >> 2 | (b2 & 15) << 6
//                                 s2 = b2 >> 4 | (b3 & 63) << 4   s3 = b3 >> 6 | b4 << 2
//   12p    2 samples in 3 bytes   s0 = b0 | (b1 & 15) << 8     s1 = b1 >> 4 | b2 << 4
//   10p32  3 samples in 4 bytes   s0, s1 and s2 as for 10p; the top two bits carry nothing
//   10g40  4 samples in 5 bytes   si = bi << 2 | (b4 >> 2 * i & 3)       MIPI CSI-2, RAW10
//   12g24  2 samples in 3 bytes   s0 = b0 << 4 | (b2 & 15)     s1 = b1 << 4 | b2 >> 4     MIPI CSI-2, RAW12
//
// A stream that ends within a sample throws InvalidBufferUtilx, "Corrupted input image for 10p format." and the like,
// after the samples before it. The MIPI streams are told their number of samples instead; low bits whose byte lies
// beyond the stream are 0.
void Unpack10p(const uint8_t* input, size_t byteCount, uint8_t* output);
void Unpack12p(const uint8_t* input, size_t byteCount, uint8_t* output);
void Unpack10p32(const uint8_t* input, size_t byteCount, uint8_t* output);
void Unpack10g40(const uint8_t* input, size_t sampleCount, uint8_t* output);
void Unpack12g24(const uint8_t* input, size_t sampleCount, uint8_t* output);

}  // namespace img::processing
