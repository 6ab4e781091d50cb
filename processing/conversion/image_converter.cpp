#include "processing/conversion/image_converter.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <sstream>
#include <string>
#include <utility>

#include "core/memory_limit.h"
#include "processing/conversion/bilinear_demosaic.h"
#include "status/exceptions.h"

namespace img::processing {
namespace {

using korvel::internal::ImgStatusCode;

[[noreturn]] void Throw(ImgStatusCode status, const char* location, std::string text) {
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Processing>(status, location, std::move(text));
}

std::string Decimal(PixelFormatId format) { return std::to_string(static_cast<uint32_t>(format)); }

std::string Hexadecimal(PixelFormatId format) {
  std::ostringstream text;
  text << std::hex << static_cast<uint32_t>(format);
  return text.str();
}

uint32_t DepthOf(PixelFormatId format) { return PixelFormatInfo_ComponentSignificantBits(format); }

PixelFormatId MakeFormat(PixelClass pixelClass, uint32_t depth) {
  return PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(pixelClass), depth);
}

constexpr const char* kBufferFormLocation =
    "void img::processing::ImageConverter::ConvertPixelFormat(const std::shared_ptr<img::IfcImage> &, "
    "img::PixelFormatId, uint8_t *, size_t) const";

[[noreturn]] void ThrowBufferMismatch(const std::string& what, const std::string& expected, const std::string& actual) {
  Throw(ImgStatusCode::Error, kBufferFormLocation,
        "ImageConverter: conversion failed with " + what + " mismatch! " + expected + ", " + actual + ".");
}

}  // namespace

ImageConverter::ImageConverter(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                               const ProcessorFeatures& features)
    : pool_(std::move(pool)),
      debayeringOptimized_(std::make_shared<DebayeringOptimized>(features)),
      fusedConversion_(features),
      streamConversion_(features) {}

IfcConversionProcessingModule& ImageConverter::GetBayerConverter(PixelFormatId input, PixelFormatId output) const {
  if (PixelFormatInfo_Type(input) == PixelType::Bayer) {
    const bool isFast = conversionMode_ == kConversionModeFast;
    const auto choose = [isFast](IfcConversionProcessingModule& with3x3,
                                 IfcConversionProcessingModule& with5x5) -> IfcConversionProcessingModule& {
      return isFast ? with3x3 : with5x5;
    };
    switch (PixelFormatInfo_Class(output)) {
      case PixelClass::Mono:
        return bayerToMono_;
      case PixelClass::BGR:
        return choose(bayerToBgr3x3_, bayerToBgr5x5_);
      case PixelClass::RGB:
        return choose(bayerToRgb3x3_, bayerToRgb5x5_);
      case PixelClass::BGRa:
        return choose(bayerToBgra3x3_, bayerToBgra5x5_);
      case PixelClass::RGBa:
        return choose(bayerToRgba3x3_, bayerToRgba5x5_);
      case PixelClass::RGB10p32:
        return choose(bayerToRgb10p32With3x3_, bayerToRgb10p32With5x5_);
      default:
        break;
    }
  }
  Throw(ImgStatusCode::Error,
        "img::processing::IfcConversionProcessingModule &img::processing::ImageConverter::GetBayerConverter(const "
        "img::PixelFormatId, const img::PixelFormatId) const",
        "ImageConverter: No bayer converter for conversion from " + Decimal(input) + " to " + Decimal(output));
}

IfcConversionProcessingModule& ImageConverter::GetExtensionConverter(PixelFormatId input, PixelFormatId output) const {
  if (PixelFormatInfo_Class(input) == PixelClass::Mono) {
    switch (PixelFormatInfo_Class(output)) {
      case PixelClass::BGR:
        return extendToBgr_;
      case PixelClass::RGB:
        return extendToRgb_;
      case PixelClass::BGRa:
        return extendToBgra_;
      case PixelClass::RGBa:
        return extendToRgba_;
      default:
        break;
    }
  }
  Throw(ImgStatusCode::Error,
        "img::processing::IfcConversionProcessingModule &img::processing::ImageConverter::GetExtensionConverter(const "
        "img::PixelFormatId, const img::PixelFormatId) const",
        "ImageConverter: No extension converter for conversion from " + Decimal(input) + " to " + Decimal(output));
}

std::shared_ptr<IfcImage> ImageConverter::Convert(const std::shared_ptr<IfcImage>& input,
                                                  IfcConversionProcessingModule& module, ImageFormat format) const {
  if (!module.IsInputFormatSupported(input->PixelFormat())) {
    Throw(ImgStatusCode::NotAvailableUtilx,
          "std::shared_ptr<img::IfcImage> img::processing::ImageConverter::Convert(const "
          "std::shared_ptr<img::IfcImage> &, img::processing::IfcConversionProcessingModule &, const "
          "img::ImageFormat) const",
          "img::ImageConverter: invalid conversion");
  }
  std::shared_ptr<IfcImage> output = pool_->AllocBuffer(format.format, format.area.size)->CreateImage();
  const IfcImage& source = *input;
  const Size2D& size = source.Area().size;
  if (!debayeringOptimized_->Convert(source.PixelPointer(0, 0), size.width, size.height, source.PixelFormat(),
                                     output->PixelPointer(0, 0), output->ByteCount(), format.format, conversionMode_)) {
    module.Process(source, *output);
  }
  return output;
}

std::shared_ptr<IfcImage> ImageConverter::ConvertAtOnce(IfcImage& input, PixelFormatId output) const {
  const auto plan = fusedConversion_.FindPlan(input, output, conversionMode_);
  if (!plan && !streamConversion_.Takes(input, output)) return nullptr;
  const bool isFilled = !plan || !plan->keepsUnusedBits;  // otherwise new memory has to be zero
  const Size2D& size = input.Area().size;
  const std::shared_ptr<buffer::IfcImageBuffer> memory =
      isFilled ? pool_->AllocBufferToFill(output, size) : pool_->AllocBuffer(output, size);
  uint8_t* const pixels = memory->Data();
  std::shared_ptr<IfcImage> result;
  try {
    result = memory->CreateImage();
    if (plan) {
      fusedConversion_.Convert(*plan, input, pixels);
      // Words of the border are copies with the bits that carry nothing.
      if (plan->keepsUnusedBits) CopyBorder(*result);
    } else {
      streamConversion_.Convert(input, output, pixels);
    }
  } catch (...) {
    // The memory goes back to the pool, whose next taker may leave some of it as it is.
    if (isFilled) std::memset(pixels, 0, memory->ByteCount());
    throw;
  }
  return result;
}

bool ImageConverter::ConvertAtOnce(IfcImage& input, PixelFormatId output, uint32_t mode, uint8_t* buffer,
                                   size_t size) const {
  const auto plan = fusedConversion_.FindPlan(input, output, mode);
  // Which bits stay depends on the pool's memory.
  if (plan ? plan->keepsUnusedBits : !streamConversion_.Takes(input, output)) return false;
  const Size2D& area = input.Area().size;
  if (size != PixelFormatInfo_CalcSizeOfPixels(output, area.width * area.height)) return false;
  const uint8_t* const pixels = input.PixelPointer(0, 0);
  if (std::less<>()(buffer, pixels + input.ByteCount()) && std::less<>()(pixels, buffer + size)) return false;
  if (plan) {
    fusedConversion_.Convert(*plan, input, buffer);
  } else {
    streamConversion_.Convert(input, output, buffer);
  }
  return true;
}

std::shared_ptr<IfcImage> ImageConverter::ConvertDepth(const std::shared_ptr<IfcImage>& input,
                                                       PixelFormatId format) const {
  return Convert(input, depth_, {input->Area(), format});
}

std::shared_ptr<IfcImage> ImageConverter::FlipChannelsIfNeeded(const std::shared_ptr<IfcImage>& input,
                                                               PixelFormatId output) const {
  const PixelFormatId format = input->PixelFormat();
  if (format == output) return input;
  const PixelClass from = PixelFormatInfo_Class(format);
  const PixelClass to = PixelFormatInfo_Class(output);
  if ((from == PixelClass::RGB && to == PixelClass::BGR) || (from == PixelClass::BGR && to == PixelClass::RGB)) {
    return Convert(input, flip_, {input->Area(), output});
  }
  if ((from == PixelClass::RGBa && to == PixelClass::BGRa) || (from == PixelClass::BGRa && to == PixelClass::RGBa)) {
    Throw(ImgStatusCode::NotImplementedUtilx,
          "std::shared_ptr<img::IfcImage> img::processing::ImageConverter::FlipChannelsIfNeeded(const "
          "std::shared_ptr<img::IfcImage> &, img::PixelFormatId) const",
          "Conversion from " + PixelFormatInfo_Name(format) + " to " + PixelFormatInfo_Name(output) +
              " not implemented.");
  }
  return input;
}

std::shared_ptr<IfcImage> ImageConverter::ConvertPixelFormat(const std::shared_ptr<IfcImage>& input,
                                                             PixelFormatId output) const {
  constexpr const char* kLocation =
      "std::shared_ptr<img::IfcImage> img::processing::ImageConverter::ConvertPixelFormat(const "
      "std::shared_ptr<img::IfcImage> &, const img::PixelFormatId) const";
  if (std::shared_ptr<IfcImage> result = ConvertAtOnce(*input, output)) return result;

  std::shared_ptr<IfcImage> stage = input;
  const auto format = [&stage] { return stage->PixelFormat(); };
  const auto imageFormat = [&stage] { return ImageFormat{stage->Area(), stage->PixelFormat()}; };

  if (format() == output) return Convert(stage, copy_, copy_.GetOutputImageFormat(imageFormat()));

  if (PixelFormatInfo_IsPacked(output) && output != PixelFormatId::RGB10p32) {
    Throw(ImgStatusCode::Error, kLocation, "ImageConverter: packed output not supported!");
  }
  if (PixelFormatInfo_IsPacked(format())) stage = Convert(stage, unpack_, unpack_.GetOutputImageFormat(imageFormat()));

  // Depth changes before the costly stages, in whichever direction.
  const auto toDepth = [&](uint32_t depth) {
    return ConvertDepth(stage, MakeFormat(PixelFormatInfo_Class(format()), depth));
  };
  if (format() != output && DepthOf(format()) < DepthOf(output)) stage = toDepth(DepthOf(output));
  if (format() != output && DepthOf(format()) > DepthOf(output)) stage = toDepth(DepthOf(output));

  stage = FlipChannelsIfNeeded(stage, output);

  if (output == PixelFormatId::RGB10p32 && DepthOf(format()) > 10) stage = toDepth(10);

  if (PixelFormatInfo_Type(output) != PixelType::Bayer && PixelFormatInfo_Type(format()) == PixelType::Bayer) {
    IfcConversionProcessingModule& module = GetBayerConverter(format(), output);
    stage = Convert(stage, module, module.GetOutputImageFormat(imageFormat()));
  }
  if (PixelFormatInfo_Class(format()) == PixelClass::Mono && PixelFormatInfo_Class(output) != PixelClass::Mono) {
    IfcConversionProcessingModule& module = GetExtensionConverter(format(), output);
    stage = Convert(stage, module, module.GetOutputImageFormat(imageFormat()));
  }
  if (format() != output && PixelFormatInfo_PixelComponents(format()) == PixelFormatInfo_PixelComponents(output) &&
      DepthOf(format()) > DepthOf(output)) {
    stage = ConvertDepth(stage, output);
  }

  if (format() != output) {
    Throw(ImgStatusCode::Error, kLocation,
          "ImageConverter: conversion failed with pixel format mismatch! desired: " + Hexadecimal(output) +
              ", result: " + Hexadecimal(format()) + ".");
  }
  return stage;
}

void ImageConverter::ConvertPixelFormat(const std::shared_ptr<IfcImage>& input, PixelFormatId output, uint8_t* buffer,
                                        size_t size) const {
  const uint32_t mode = conversionMode_;
  const IfcImage& source = *input;
  if (mode == kConversionModeClassic) {
    if (!DebayeringOptimized::IsClassicInput(source.PixelFormat())) {
      Throw(ImgStatusCode::Error, kBufferFormLocation,
            "ImageConverter: the input pixel format does not support the classic conversion mode.");
    }
    if (!DebayeringOptimized::IsClassicOutput(output)) {
      Throw(ImgStatusCode::Error, kBufferFormLocation,
            "ImageConverter: the output pixel format does not support the classic conversion mode.");
    }
  }
  const Size2D inputSize = source.Area().size;
  if (debayeringOptimized_->Convert(source.PixelPointer(0, 0), inputSize.width, inputSize.height, source.PixelFormat(),
                                    buffer, size, output, mode)) {
    return;
  }
  if (ConvertAtOnce(*input, output, mode, buffer, size)) return;

  const std::shared_ptr<const IfcImage> result = ConvertPixelFormat(input, output);
  const Size2D& resultSize = result->Area().size;
  if (resultSize.width != inputSize.width) {
    ThrowBufferMismatch("width", "input: " + std::to_string(inputSize.width),
                        "result : " + std::to_string(resultSize.width));
  }
  if (resultSize.height != inputSize.height) {
    ThrowBufferMismatch("height", "input: " + std::to_string(inputSize.height),
                        "result : " + std::to_string(resultSize.height));
  }
  if (result->PixelFormat() != output) {
    ThrowBufferMismatch("pixel format", "desired: " + Hexadecimal(output),
                        "result : " + Hexadecimal(result->PixelFormat()));
  }
  // Intended: a larger buffer is refused here, though a fast path takes it.
  if (result->ByteCount() != size) {
    ThrowBufferMismatch("buffer size", "provided: " + std::to_string(size),
                        "required : " + std::to_string(result->ByteCount()));
  }
  if (size != 0) std::memcpy(buffer, result->PixelPointer(0, 0), size);
}

void ImageConverter::PreAllocateConversion(PixelFormatId input, PixelFormatId output, const Size2D& size,
                                           size_t imageCount) const {
  constexpr const char* kLocation =
      "void img::processing::ImageConverter::PreAllocateConversion(img::PixelFormatId, img::PixelFormatId, "
      "img::Size2D, size_t) const";
  // Ids that no format has fail here, whatever the path below asks.
  PixelFormatInfo_Type(input);
  PixelFormatInfo_Type(output);

  // The way of a conversion without its pixels. Intermediates need one buffer each, as they return to the pool once the
  // next stage has run. Intended: a flip isn't walked; it draws one more buffer on its first use.
  std::vector<PixelFormatId> intermediates;
  PixelFormatId format = input;
  const auto goOn = [&](PixelFormatId next) {
    format = next;
    intermediates.push_back(next);
  };
  const auto goOnWith = [&](IfcConversionProcessingModule& module) {
    const PixelFormatId next = module.GetOutputImageFormat({{{}, size}, format}).format;
    if (next != format) goOn(next);
  };
  const auto toDepth = [&](uint32_t depth) { goOn(MakeFormat(PixelFormatInfo_Class(format), depth)); };

  if (format != output && PixelFormatInfo_IsPacked(format)) goOnWith(unpack_);
  if (format != output && DepthOf(format) < DepthOf(output)) toDepth(DepthOf(output));
  if (format != output && DepthOf(format) > DepthOf(output)) toDepth(DepthOf(output));
  if (output != PixelFormatId::RGB10p32 && format == PixelFormatId::RGB10p32 && DepthOf(output) < 10) {
    toDepth(DepthOf(output));
  }
  if (format != output && PixelFormatInfo_Type(format) == PixelType::Bayer) {
    goOnWith(GetBayerConverter(format, output));
  }
  if (format != output && PixelFormatInfo_Class(format) == PixelClass::Mono) {
    goOnWith(GetExtensionConverter(format, output));
  }
  if (format != output && PixelFormatInfo_PixelComponents(format) == PixelFormatInfo_PixelComponents(output) &&
      DepthOf(format) > DepthOf(output)) {
    intermediates.push_back(format);
  }

  RequireNotEmpty(size, kLocation);
  size_t taken = 0;
  const auto requireMemory = [&](PixelFormatId wanted, size_t count) {
    const std::optional<size_t> byteCount = CheckedByteCount(*FindFacts(wanted), size);
    if (!byteCount || count > MostAllocations(*byteCount, taken)) {
      Throw(ImgStatusCode::Error, kLocation,
            "ImageConverter: " + std::to_string(count) + " images of this size exceed the memory!");
    }
    taken += count * *byteCount;
  };
  for (const PixelFormatId intermediate : intermediates) requireMemory(intermediate, 1);
  requireMemory(format, imageCount);

  for (const PixelFormatId intermediate : intermediates) pool_->PreAllocate(intermediate, size, 1);
  pool_->PreAllocate(format, size, imageCount);
}

std::vector<PixelFormatId> ImageConverter::GetSupportedOutputPixelFormats(PixelFormatId input) const {
  std::vector<PixelFormatId> formats;
  const auto addAtEachDepth = [&formats](std::initializer_list<PixelClass> classes) {
    for (const uint32_t depth : {8u, 10u, 12u}) {
      for (const PixelClass pixelClass : classes) formats.push_back(MakeFormat(pixelClass, depth));
    }
  };
  const PixelType type = PixelFormatInfo_Type(input);
  const PixelClass pixelClass = PixelFormatInfo_Class(input);
  if (type == PixelType::Mono) {
    addAtEachDepth({PixelClass::Mono, PixelClass::BGR, PixelClass::RGB, PixelClass::BGRa, PixelClass::RGBa});
  } else if (type == PixelType::Bayer) {
    const PixelFormatId unpacked =
        PixelFormatInfo_IsPacked(input) ? unpack_.GetOutputImageFormat({{}, input}).format : input;
    addAtEachDepth({PixelFormatInfo_Class(unpacked), PixelClass::Mono, PixelClass::BGR, PixelClass::RGB,
                    PixelClass::BGRa, PixelClass::RGBa});
    formats.push_back(PixelFormatId::RGB10p32);
  } else if (pixelClass == PixelClass::RGB || pixelClass == PixelClass::RGB10p32) {
    addAtEachDepth({PixelClass::RGB, PixelClass::BGR});
  } else if (pixelClass == PixelClass::BGR || pixelClass == PixelClass::BGR10p32) {
    addAtEachDepth({PixelClass::BGR, PixelClass::RGB});
  } else if (pixelClass == PixelClass::RGBa || pixelClass == PixelClass::BGRa) {
    addAtEachDepth({pixelClass});
  }
  // Every format can at least be copied, so it lists itself, the packed ones at the end.
  if (std::find(formats.begin(), formats.end(), input) == formats.end()) formats.push_back(input);
  return formats;
}

}  // namespace img::processing
