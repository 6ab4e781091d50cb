// What a pixel format is: the enumeration of all of them, and their facts at compile time and at run time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/pixel_format_list.h"

namespace img {

// Public ids follow the GenICam Pixel Format Naming Convention; those that begin 0x4000 are the library's own.
enum class PixelFormatId : uint32_t {
  Invalid = 0,
#define KORVEL_FORMAT_ENUMERATOR(X, name, id, pixelClass, layout, significantBits) name = id,
  KORVEL_PIXEL_FORMAT_TABLE(KORVEL_FORMAT_ENUMERATOR, ) KORVEL_RAW_FORMAT_TABLE(KORVEL_FORMAT_ENUMERATOR, )
#undef KORVEL_FORMAT_ENUMERATOR
};

// The family of a format without its depth. The packed Bayer classes run in another order than the unpacked ones.
enum class PixelClass : uint32_t {
  None = 0,
  BayerGR = 1,
  BayerRG = 2,
  BayerGB = 3,
  BayerBG = 4,
  Mono = 5,
  RGB = 6,
  BGR = 7,
  RGBa = 8,
  BGRa = 9,
  RGB10p32 = 10,
  BGR10p32 = 11,
  BayerBGPacked = 12,
  BayerGBPacked = 13,
  BayerGRPacked = 14,
  BayerRGPacked = 15,
  MonoPacked = 16,
  Raw1Ch = 17,
  Raw3Ch = 18,
  Raw4Ch = 19,
  RawPacked1Ch = 20,
  RawPacked10p32 = 21,
};

enum class PixelType : uint32_t { None = 0, Bayer = 1, Mono = 2, Color = 3, Raw = 4 };

// How channels lie in memory; KORVEL_PIXEL_FORMAT_TABLE tells what each means.
enum class PixelLayout : uint32_t { Unpacked, NoAlignment, Mipi, Word32 };

enum class Endianness : uint32_t { Little = 0 };

struct FormatFacts {
  PixelFormatId id;
  std::string_view name;
  PixelClass pixelClass;
  PixelType type;
  PixelLayout layout;
  uint32_t channels;
  uint32_t significantBits;       // per channel
  uint32_t storageBits;           // per channel
  uint32_t pixelSignificantBits;  // per pixel
  uint32_t pixelStorageBits;      // per pixel
  uint32_t maxValue;              // per channel
  PixelFormatId rawFormat;        // the id of the layout alone

  constexpr bool IsPacked() const { return layout != PixelLayout::Unpacked; }
  // True for the formats of the exported header, which the internal ids and Invalid are not.
  constexpr bool IsPublic() const { return type != PixelType::None && type != PixelType::Raw; }

  constexpr bool IsBayered() const { return type == PixelType::Bayer; }

  // True where pixels don't lie on whole bytes, so that one pixel alone has no address.
  constexpr bool IsBitStream() const { return layout == PixelLayout::NoAlignment || layout == PixelLayout::Mipi; }

  // The step from one pixel to the next in code that addresses pixels. For bit streams it is that of the word that
  // holds one unpacked channel, though their pixels take less in memory.
  constexpr uint32_t PixelByteCount() const { return IsBitStream() ? 2 : pixelStorageBits / 8; }

  // Bytes of a run of pixels; wraps at 64 bits.
  constexpr size_t ByteCount(size_t numPixels) const {
    return IsBitStream() ? (numPixels * pixelStorageBits + 7) >> 3 : numPixels * (pixelStorageBits / 8);
  }
};

namespace detail {

constexpr PixelType TypeOfClass(PixelClass pixelClass) {
  switch (pixelClass) {
    case PixelClass::BayerGR:
    case PixelClass::BayerRG:
    case PixelClass::BayerGB:
    case PixelClass::BayerBG:
    case PixelClass::BayerBGPacked:
    case PixelClass::BayerGBPacked:
    case PixelClass::BayerGRPacked:
    case PixelClass::BayerRGPacked:
      return PixelType::Bayer;
    case PixelClass::Mono:
    case PixelClass::MonoPacked:
      return PixelType::Mono;
    case PixelClass::RGB:
    case PixelClass::BGR:
    case PixelClass::RGBa:
    case PixelClass::BGRa:
    case PixelClass::RGB10p32:
    case PixelClass::BGR10p32:
      return PixelType::Color;
    case PixelClass::Raw1Ch:
    case PixelClass::Raw3Ch:
    case PixelClass::Raw4Ch:
    case PixelClass::RawPacked1Ch:
    case PixelClass::RawPacked10p32:
      return PixelType::Raw;
    case PixelClass::None:
      break;
  }
  return PixelType::None;
}

constexpr uint32_t ChannelsOfClass(PixelClass pixelClass) {
  switch (pixelClass) {
    case PixelClass::RGB:
    case PixelClass::BGR:
    case PixelClass::RGB10p32:
    case PixelClass::BGR10p32:
    case PixelClass::Raw3Ch:
    case PixelClass::RawPacked10p32:
      return 3;
    case PixelClass::RGBa:
    case PixelClass::BGRa:
    case PixelClass::Raw4Ch:
      return 4;
    default:
      return 1;
  }
}

// The internal id of a layout. It is found by the list's own columns, so a new layout needs its row and nothing else.
constexpr PixelFormatId RawFormatOf(PixelLayout layout, uint32_t channels, uint32_t significantBits) {
#define KORVEL_MATCH_ROW(X, name, id, rowClass, rowLayout, rowBits)                            \
  if (layout == PixelLayout::rowLayout && channels == ChannelsOfClass(PixelClass::rowClass) && \
      significantBits == (rowBits))                                                            \
    return PixelFormatId::name;
  KORVEL_RAW_FORMAT_TABLE(KORVEL_MATCH_ROW, )
#undef KORVEL_MATCH_ROW
  return PixelFormatId::Invalid;
}

constexpr FormatFacts MakeFacts(PixelFormatId id, std::string_view name, PixelClass pixelClass, PixelLayout layout,
                                uint32_t significantBits) {
  const uint32_t channels = ChannelsOfClass(pixelClass);
  const uint32_t storageBits = layout == PixelLayout::Unpacked && significantBits > 8 ? 16 : significantBits;
  // Intended: the four-channel internal ids report the bits of three channels. Code that sizes a four-channel image
  // uses the public id.
  const uint32_t countedChannels = pixelClass == PixelClass::Raw4Ch ? 3 : channels;
  return FormatFacts{
      .id = id,
      .name = name,
      .pixelClass = pixelClass,
      .type = TypeOfClass(pixelClass),
      .layout = layout,
      .channels = channels,
      .significantBits = significantBits,
      .storageBits = storageBits,
      .pixelSignificantBits = countedChannels * significantBits,
      .pixelStorageBits = layout == PixelLayout::Word32 ? 32 : countedChannels * storageBits,
      .maxValue = (1u << significantBits) - 1,
      .rawFormat =
          id == PixelFormatId::Invalid ? PixelFormatId::Invalid : RawFormatOf(layout, channels, significantBits),
  };
}

}  // namespace detail

// The facts of an id of the list; nothing for any other, so that each query can word its own failure. Invalid answers
// like an 8-bit format of one channel.
constexpr std::optional<FormatFacts> FindFacts(PixelFormatId id) {
  switch (id) {
    case PixelFormatId::Invalid:
      return detail::MakeFacts(id, "Invalid", PixelClass::None, PixelLayout::Unpacked, 8);
#define KORVEL_FACTS_CASE(X, name, value, pixelClass, layout, significantBits) \
  case PixelFormatId::name:                                                    \
    return detail::MakeFacts(id, #name, PixelClass::pixelClass, PixelLayout::layout, significantBits);
      KORVEL_PIXEL_FORMAT_TABLE(KORVEL_FACTS_CASE, ) KORVEL_RAW_FORMAT_TABLE(KORVEL_FACTS_CASE, )
#undef KORVEL_FACTS_CASE
  }
  return std::nullopt;
}

// The facts of a format that is known at compile time.
template <PixelFormatId formatId>
inline constexpr FormatFacts kFacts = FindFacts(formatId).value();

// Queries for an id that is known at run time. All but the last two throw an ImgException of status
// InvalidParameterUtilx, "Unknown formatId: " and the id, for an id that the list doesn't hold.
uint32_t PixelFormatInfo_ComponentSignificantBits(PixelFormatId formatId);
uint32_t PixelFormatInfo_ComponentMaxValue(PixelFormatId formatId);
uint32_t PixelFormatInfo_ComponentStorageBits(PixelFormatId formatId);
uint32_t PixelFormatInfo_PixelComponents(PixelFormatId formatId);
uint32_t PixelFormatInfo_PixelSignificantBits(PixelFormatId formatId);
uint32_t PixelFormatInfo_PixelStorageBits(PixelFormatId formatId);
Endianness PixelFormatInfo_ByteOrder(PixelFormatId formatId);
PixelClass PixelFormatInfo_Class(PixelFormatId formatId);
PixelType PixelFormatInfo_Type(PixelFormatId formatId);
PixelFormatId PixelFormatInfo_RawFormat(PixelFormatId formatId);
bool PixelFormatInfo_IsBayered(PixelFormatId formatId);
bool PixelFormatInfo_IsPacked(PixelFormatId formatId);

// Bytes of a run of pixels. Packed formats round up to a whole byte over the whole run, not per line or group. Wraps
// at 64 bits; whoever takes memory uses CheckedByteCount (core/geometry.h) instead.
size_t PixelFormatInfo_CalcSizeOfPixels(PixelFormatId formatId, size_t numPixels);

// The format's name; "Invalid" for an id that the list doesn't hold.
std::string PixelFormatInfo_Name(PixelFormatId formatId);

// The format of a class at a depth: for a packed class of one channel its "p" format. Invalid for a class outside the
// list or a depth that the class hasn't.
PixelFormatId PixelFormatInfo_FromClassAndBits(int32_t pixelClass, uint32_t significantBits);

}  // namespace img
