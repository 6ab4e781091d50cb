#include "core/pixel_format.h"

#include "status/exceptions.h"

namespace img {
namespace {

// location is the query's signature. It is a plain pointer so that a query allocates nothing unless it fails.
FormatFacts RequireFacts(PixelFormatId formatId, const char* location) {
  const std::optional<FormatFacts> facts = FindFacts(formatId);
  if (!facts) {
    korvel::internal::ThrowStatus<cfg_libimg::Modules::Default>(
        korvel::internal::ImgStatusCode::InvalidParameterUtilx, location,
        "Unknown formatId: " + std::to_string(static_cast<uint32_t>(formatId)));
  }
  return *facts;
}

}  // namespace

uint32_t PixelFormatInfo_ComponentSignificantBits(PixelFormatId formatId) {
  return RequireFacts(formatId, "uint32_t img::PixelFormatInfo_ComponentSignificantBits(PixelFormatId)")
      .significantBits;
}

uint32_t PixelFormatInfo_ComponentMaxValue(PixelFormatId formatId) {
  return RequireFacts(formatId, "uint32_t img::PixelFormatInfo_ComponentMaxValue(PixelFormatId)").maxValue;
}

uint32_t PixelFormatInfo_ComponentStorageBits(PixelFormatId formatId) {
  return RequireFacts(formatId, "uint32_t img::PixelFormatInfo_ComponentStorageBits(PixelFormatId)").storageBits;
}

uint32_t PixelFormatInfo_PixelComponents(PixelFormatId formatId) {
  return RequireFacts(formatId, "uint32_t img::PixelFormatInfo_PixelComponents(PixelFormatId)").channels;
}

uint32_t PixelFormatInfo_PixelSignificantBits(PixelFormatId formatId) {
  return RequireFacts(formatId, "uint32_t img::PixelFormatInfo_PixelSignificantBits(PixelFormatId)")
      .pixelSignificantBits;
}

uint32_t PixelFormatInfo_PixelStorageBits(PixelFormatId formatId) {
  return RequireFacts(formatId, "uint32_t img::PixelFormatInfo_PixelStorageBits(PixelFormatId)").pixelStorageBits;
}

Endianness PixelFormatInfo_ByteOrder(PixelFormatId formatId) {
  RequireFacts(formatId, "Endianness img::PixelFormatInfo_ByteOrder(PixelFormatId)");
  return Endianness::Little;
}

PixelClass PixelFormatInfo_Class(PixelFormatId formatId) {
  return RequireFacts(formatId, "PixelClass img::PixelFormatInfo_Class(PixelFormatId)").pixelClass;
}

PixelType PixelFormatInfo_Type(PixelFormatId formatId) {
  return RequireFacts(formatId, "PixelType img::PixelFormatInfo_Type(PixelFormatId)").type;
}

PixelFormatId PixelFormatInfo_RawFormat(PixelFormatId formatId) {
  return RequireFacts(formatId, "PixelFormatId img::PixelFormatInfo_RawFormat(PixelFormatId)").rawFormat;
}

bool PixelFormatInfo_IsBayered(PixelFormatId formatId) {
  return RequireFacts(formatId, "bool img::PixelFormatInfo_IsBayered(PixelFormatId)").IsBayered();
}

bool PixelFormatInfo_IsPacked(PixelFormatId formatId) {
  return RequireFacts(formatId, "bool img::PixelFormatInfo_IsPacked(PixelFormatId)").IsPacked();
}

size_t PixelFormatInfo_CalcSizeOfPixels(PixelFormatId formatId, size_t numPixels) {
  return RequireFacts(formatId, "size_t img::PixelFormatInfo_CalcSizeOfPixels(img::PixelFormatId, size_t)")
      .ByteCount(numPixels);
}

std::string PixelFormatInfo_Name(PixelFormatId formatId) {
  return std::string(FindFacts(formatId).value_or(kFacts<PixelFormatId::Invalid>).name);
}

PixelFormatId PixelFormatInfo_FromClassAndBits(int32_t pixelClass, uint32_t significantBits) {
#define KORVEL_MATCH_ROW(X, name, id, rowClass, layout, rowBits)                                  \
  if (pixelClass == static_cast<int32_t>(PixelClass::rowClass) && significantBits == (rowBits) && \
      PixelLayout::layout != PixelLayout::Mipi)                                                   \
    return PixelFormatId::name;
  KORVEL_PIXEL_FORMAT_TABLE(KORVEL_MATCH_ROW, )
  KORVEL_RAW_FORMAT_TABLE(KORVEL_MATCH_ROW, )
#undef KORVEL_MATCH_ROW
  return PixelFormatId::Invalid;
}

}  // namespace img
