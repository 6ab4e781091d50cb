#include "processing/conversion/unpack_packed.h"

#include <string>
#include <type_traits>

#include "processing/pair_signature.h"
#include "processing/unaligned.h"
#include "status/exceptions.h"

namespace img::processing {
namespace {

constexpr size_t k10BitGroupBytes = 5;
constexpr size_t k10BitGroupSamples = 4;
constexpr size_t k12BitGroupBytes = 3;
constexpr size_t k12BitGroupSamples = 2;
constexpr size_t kWordBytes = 4;
constexpr size_t kWordSamples = 3;

void Store(uint8_t* output, size_t index, unsigned value) { StoreSample(output, index, static_cast<uint16_t>(value)); }

// Sample i of a little-endian stream of 10-bit values.
unsigned Sample10p(const uint8_t* group, size_t i) {
  const unsigned low = group[i] >> (2 * i);
  const unsigned high = group[i + 1] & ((4u << (2 * i)) - 1);
  return low | high << (8 - 2 * i);
}

unsigned FirstSample12p(const uint8_t* group) { return group[0] | (group[1] & 15u) << 8; }
unsigned SecondSample12p(const uint8_t* group) { return unsigned{group[1]} >> 4 | unsigned{group[2]} << 4; }

[[noreturn]] void ThrowCorrupted(const char* className, const FormatFacts& in, const FormatFacts& out,
                                 const char* layout) {
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Processing>(
      korvel::internal::ImgStatusCode::InvalidBufferUtilx,
      PairSignature("static void", className,
                    "ProcessRaw(const img::TImage<formatIdInput> &, img::TImage<formatIdOutput> &)", in, out),
      std::string("Corrupted input image for ") + layout + " format.");
}

}  // namespace

void Unpack10p(const uint8_t* input, size_t byteCount, uint8_t* output) {
  const size_t groups = byteCount / k10BitGroupBytes;
  for (size_t group = 0; group < groups; ++group) {
    const uint8_t* const bytes = input + group * k10BitGroupBytes;
    uint8_t* const samples = output + group * k10BitGroupSamples * sizeof(uint16_t);
    for (size_t i = 0; i < k10BitGroupSamples; ++i) Store(samples, i, Sample10p(bytes, i));
  }
  const size_t left = byteCount % k10BitGroupBytes;
  if (left == 0) return;
  if (left == 1) {
    ThrowCorrupted("TUnpackPacked_Impl_10Bit", kFacts<PixelFormatId::_RawPackedNoAlignment1Ch10>,
                   kFacts<PixelFormatId::_RawUnpacked1Ch10>, "10p");
  }
  for (size_t i = 0; i < left - 1; ++i) {
    Store(output, groups * k10BitGroupSamples + i, Sample10p(input + groups * k10BitGroupBytes, i));
  }
}

void Unpack12p(const uint8_t* input, size_t byteCount, uint8_t* output) {
  const size_t groups = byteCount / k12BitGroupBytes;
  for (size_t group = 0; group < groups; ++group) {
    const uint8_t* const bytes = input + group * k12BitGroupBytes;
    Store(output, group * k12BitGroupSamples, FirstSample12p(bytes));
    Store(output, group * k12BitGroupSamples + 1, SecondSample12p(bytes));
  }
  const size_t left = byteCount % k12BitGroupBytes;
  if (left == 0) return;
  if (left == 1) {
    ThrowCorrupted("TUnpackPacked_Impl_12Bit", kFacts<PixelFormatId::_RawPackedNoAlignment1Ch12>,
                   kFacts<PixelFormatId::_RawUnpacked1Ch12>, "12p");
  }
  Store(output, groups * k12BitGroupSamples, FirstSample12p(input + groups * k12BitGroupBytes));
}

void Unpack10p32(const uint8_t* input, size_t byteCount, uint8_t* output) {
  const size_t words = byteCount / kWordBytes;
  for (size_t word = 0; word < words; ++word) {
    for (size_t i = 0; i < kWordSamples; ++i) {
      Store(output, word * kWordSamples + i, Sample10p(input + word * kWordBytes, i));
    }
  }
  if (byteCount % kWordBytes != 0) {
    ThrowCorrupted("TUnpackPacked_Impl_10p32Bit", kFacts<PixelFormatId::_RawPacked10p32>,
                   kFacts<PixelFormatId::_RawUnpacked3Ch10>, "10p32");
  }
}

void Unpack10g40(const uint8_t* input, size_t sampleCount, uint8_t* output) {
  const size_t groups = sampleCount / k10BitGroupSamples;
  for (size_t group = 0; group < groups; ++group) {
    const uint8_t* const bytes = input + group * k10BitGroupBytes;
    uint8_t* const samples = output + group * k10BitGroupSamples * sizeof(uint16_t);
    for (size_t i = 0; i < k10BitGroupSamples; ++i)
      Store(samples, i, unsigned{bytes[i]} << 2 | (unsigned{bytes[4]} >> 2 * i & 3));
  }
  // The low bits of an incomplete group lie beyond the stream.
  for (size_t i = 0; i < sampleCount % k10BitGroupSamples; ++i) {
    Store(output, groups * k10BitGroupSamples + i, unsigned{input[groups * k10BitGroupBytes + i]} << 2);
  }
}

void Unpack12g24(const uint8_t* input, size_t sampleCount, uint8_t* output) {
  const size_t groups = sampleCount / k12BitGroupSamples;
  for (size_t group = 0; group < groups; ++group) {
    const uint8_t* const bytes = input + group * k12BitGroupBytes;
    Store(output, group * k12BitGroupSamples, unsigned{bytes[0]} << 4 | (bytes[2] & 15u));
    Store(output, group * k12BitGroupSamples + 1, unsigned{bytes[1]} << 4 | unsigned{bytes[2]} >> 4);
  }
  if (sampleCount % k12BitGroupSamples != 0) {
    Store(output, groups * k12BitGroupSamples, unsigned{input[groups * k12BitGroupBytes]} << 4);
  }
}

namespace {

// The working instances. Images of any format with the input's layout come in, so they are known by their interface.

size_t PixelCount(const IfcImage& image) { return image.Area().size.width * image.Area().size.height; }

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TUnpackPacked_Impl_10Bit : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override { ProcessRaw(input, output); }
  static void ProcessRaw(const IfcImage& input, IfcImage& output) {
    Unpack10p(input.PixelPointer(0, 0), input.ByteCount(), output.PixelPointer(0, 0));
  }
};

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TUnpackPacked_Impl_12Bit : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override { ProcessRaw(input, output); }
  static void ProcessRaw(const IfcImage& input, IfcImage& output) {
    Unpack12p(input.PixelPointer(0, 0), input.ByteCount(), output.PixelPointer(0, 0));
  }
};

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TUnpackPacked_Impl_Mipi_10Bit : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override { ProcessRaw(input, output); }
  static void ProcessRaw(const IfcImage& input, IfcImage& output) {
    Unpack10g40(input.PixelPointer(0, 0), PixelCount(input), output.PixelPointer(0, 0));
  }
};

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TUnpackPacked_Impl_Mipi_12Bit : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override { ProcessRaw(input, output); }
  static void ProcessRaw(const IfcImage& input, IfcImage& output) {
    Unpack12g24(input.PixelPointer(0, 0), PixelCount(input), output.PixelPointer(0, 0));
  }
};

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TUnpackPacked_Impl_10p32Bit : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override { ProcessRaw(input, output); }
  static void ProcessRaw(const IfcImage& input, IfcImage& output) {
    Unpack10p32(input.PixelPointer(0, 0), input.ByteCount(), output.PixelPointer(0, 0));
  }
};

// What an instance derives from: the working body of its layout, if its output is what that unpacks to.
template <PixelFormatId in, PixelFormatId out>
constexpr auto BaseOf() {
  constexpr FormatFacts kIn = kFacts<in>;
  constexpr FormatFacts kOut = kFacts<out>;
  if constexpr (!kIn.IsPacked() || kOut.IsPacked() || kIn.channels != kOut.channels ||
                kIn.significantBits != kOut.significantBits) {
    return std::type_identity<ConversionModuleNotImplementedForFormat>{};
  } else if constexpr (kIn.layout == PixelLayout::Word32) {
    return std::type_identity<TUnpackPacked_Impl_10p32Bit<in, out>>{};
  } else if constexpr (kIn.layout == PixelLayout::NoAlignment && kIn.significantBits == 10) {
    return std::type_identity<TUnpackPacked_Impl_10Bit<in, out>>{};
  } else if constexpr (kIn.layout == PixelLayout::NoAlignment) {
    return std::type_identity<TUnpackPacked_Impl_12Bit<in, out>>{};
  } else if constexpr (kIn.significantBits == 10) {
    return std::type_identity<TUnpackPacked_Impl_Mipi_10Bit<in, out>>{};
  } else {
    return std::type_identity<TUnpackPacked_Impl_Mipi_12Bit<in, out>>{};
  }
}

template <PixelFormatId in, PixelFormatId out>
class TUnpackPacked : public decltype(BaseOf<in, out>())::type {};

}  // namespace

PixelClass UnpackedClass(PixelClass packedClass) {
  switch (packedClass) {
    case PixelClass::RGB10p32:
      return PixelClass::RGB;
    case PixelClass::BGR10p32:
      return PixelClass::BGR;
    case PixelClass::BayerBGPacked:
      return PixelClass::BayerBG;
    case PixelClass::BayerGBPacked:
      return PixelClass::BayerGB;
    case PixelClass::BayerGRPacked:
      return PixelClass::BayerGR;
    case PixelClass::BayerRGPacked:
      return PixelClass::BayerRG;
    case PixelClass::MonoPacked:
      return PixelClass::Mono;
    default:
      return PixelClass::None;
  }
}

ImageFormat UnpackPacked::GetOutputImageFormat(const ImageFormat& input) {
  return {input.area,
          PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(UnpackedClass(PixelFormatInfo_Class(input.format))),
                                           PixelFormatInfo_ComponentSignificantBits(input.format))};
}

}  // namespace img::processing

KORVEL_NAME_PAIR_FOR_DISPATCH(img::processing::TUnpackPacked, "TUnpackPacked");

std::unique_ptr<img::processing::IfcConversionProcessingModule> img::processing::UnpackPacked::CreateImpl(
    PixelFormatId input, PixelFormatId output) {
  return MakeFormatClass_Raw2Raw_SameBitDepth<TUnpackPacked, IfcConversionProcessingModule>(input, output);
}
