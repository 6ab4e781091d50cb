#include "core/channel_accessor.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using img::PixelFormatId;
using img::pixel_accessor::ChannelAccessor;
using img::pixel_accessor::LoadPixel;
using img::pixel_accessor::StorePixel;
using korvel::internal::ImgException;

using Bytes = std::vector<uint8_t>;

template <PixelFormatId formatId>
using Repr = typename ChannelAccessor<formatId>::PixelRepr;

template <class Pixel>
Bytes MemoryOf(const Pixel& pixel) {
  Bytes bytes(sizeof pixel);
  std::memcpy(bytes.data(), &pixel, sizeof pixel);
  return bytes;
}

template <class Pixel>
Pixel PixelFrom(const Bytes& bytes) {
  Pixel pixel;
  EXPECT_EQ(bytes.size(), sizeof pixel);
  std::memcpy(&pixel, bytes.data(), sizeof pixel);
  return pixel;
}

// ----------------------------------------------------------------------------------------------------------- types --

template <PixelFormatId formatId, class Pixel, class Channel>
constexpr bool HasTypes =
    std::is_same_v<Repr<formatId>, Pixel>&& std::is_same_v<typename ChannelAccessor<formatId>::ChannelType, Channel>;

#define KORVEL_EXPECT_TYPES(name, pixel, channel)                      \
  static_assert(HasTypes<PixelFormatId::name, pixel, channel>, #name); \
  static_assert(sizeof(Repr<PixelFormatId::name>) == sizeof(pixel), #name);
#define KORVEL_FOR_MONO_AND_BAYER(X, depth) \
  X(Mono##depth) X(BayerGR##depth) X(BayerRG##depth) X(BayerGB##depth) X(BayerBG##depth)

using Bytes3 = std::array<uint8_t, 3>;
using Bytes4 = std::array<uint8_t, 4>;
using Words3 = std::array<uint16_t, 3>;
using Words4 = std::array<uint16_t, 4>;

#define KORVEL_IS_ONE_BYTE(name) KORVEL_EXPECT_TYPES(name, uint8_t, uint8_t)
#define KORVEL_IS_ONE_WORD(name) KORVEL_EXPECT_TYPES(name, uint16_t, uint16_t)
KORVEL_FOR_MONO_AND_BAYER(KORVEL_IS_ONE_BYTE, 8)
KORVEL_FOR_MONO_AND_BAYER(KORVEL_IS_ONE_WORD, 10)
KORVEL_FOR_MONO_AND_BAYER(KORVEL_IS_ONE_WORD, 12)
KORVEL_EXPECT_TYPES(RGB8, Bytes3, uint8_t)
KORVEL_EXPECT_TYPES(BGR8, Bytes3, uint8_t)
KORVEL_EXPECT_TYPES(RGBa8, Bytes4, uint8_t)
KORVEL_EXPECT_TYPES(BGRa8, Bytes4, uint8_t)
KORVEL_EXPECT_TYPES(RGB10, Words3, uint16_t)
KORVEL_EXPECT_TYPES(BGR10, Words3, uint16_t)
KORVEL_EXPECT_TYPES(RGB12, Words3, uint16_t)
KORVEL_EXPECT_TYPES(BGR12, Words3, uint16_t)
KORVEL_EXPECT_TYPES(RGBa10, Words4, uint16_t)
KORVEL_EXPECT_TYPES(BGRa10, Words4, uint16_t)
KORVEL_EXPECT_TYPES(RGBa12, Words4, uint16_t)
KORVEL_EXPECT_TYPES(BGRa12, Words4, uint16_t)
KORVEL_EXPECT_TYPES(RGB10p32, uint32_t, uint16_t)
KORVEL_EXPECT_TYPES(BGR10p32, uint32_t, uint16_t)
#undef KORVEL_IS_ONE_BYTE
#undef KORVEL_IS_ONE_WORD
#undef KORVEL_EXPECT_TYPES

// ----------------------------------------------------------------------------------------------- one-channel pixels --

template <PixelFormatId formatId>
void ExpectOneByte() {
  Repr<formatId> pixel = PixelFrom<Repr<formatId>>({0xA5});
  EXPECT_EQ(ChannelAccessor<formatId>::template Get<0>(pixel), 0xA5);
  ChannelAccessor<formatId>::template Set<0>(pixel, 0xFF);
  EXPECT_EQ(MemoryOf(pixel), (Bytes{0xFF}));
}

template <PixelFormatId formatId>
void ExpectOneWord() {
  Repr<formatId> pixel = PixelFrom<Repr<formatId>>({0xFF, 0x03});
  EXPECT_EQ(ChannelAccessor<formatId>::template Get<0>(pixel), 1023);
  ChannelAccessor<formatId>::template Set<0>(pixel, 0x02A5);
  EXPECT_EQ(MemoryOf(pixel), (Bytes{0xA5, 0x02}));
}

TEST(ChannelAccessor, ReadsAndWritesTheByteOfAnEightBitMonoOrBayerPixel){
#define KORVEL_EXPECT_ONE_BYTE(name)      \
  {                                       \
    SCOPED_TRACE(#name);                  \
    ExpectOneByte<PixelFormatId::name>(); \
  }
    KORVEL_FOR_MONO_AND_BAYER(KORVEL_EXPECT_ONE_BYTE, 8)
#undef KORVEL_EXPECT_ONE_BYTE
}

TEST(ChannelAccessor, ReadsAndWritesTheLittleEndianWordOfATenOrTwelveBitMonoOrBayerPixel) {
#define KORVEL_EXPECT_ONE_WORD(name)      \
  {                                       \
    SCOPED_TRACE(#name);                  \
    ExpectOneWord<PixelFormatId::name>(); \
  }
  KORVEL_FOR_MONO_AND_BAYER(KORVEL_EXPECT_ONE_WORD, 10)
  KORVEL_FOR_MONO_AND_BAYER(KORVEL_EXPECT_ONE_WORD, 12)
#undef KORVEL_EXPECT_ONE_WORD
}

// ---------------------------------------------------------------------------------------------------------- colour --

// memory holds one pixel with the values of channels 0, 1, ... in the order of the format's name.
template <PixelFormatId formatId, size_t... channels>
void ExpectChannels(const Bytes& memory, const std::vector<unsigned>& values, std::index_sequence<channels...>) {
  ASSERT_EQ(values.size(), sizeof...(channels));
  const auto pixel = PixelFrom<Repr<formatId>>(memory);
  EXPECT_EQ((std::vector<unsigned>{ChannelAccessor<formatId>::template Get<channels>(pixel)...}), values);
  Repr<formatId> written{};
  (ChannelAccessor<formatId>::template Set<channels>(
       written, static_cast<typename ChannelAccessor<formatId>::ChannelType>(values[channels])),
   ...);
  EXPECT_EQ(MemoryOf(written), memory);
}

template <PixelFormatId formatId, size_t numChannels>
void ExpectChannels(const Bytes& memory, const std::vector<unsigned>& values) {
  SCOPED_TRACE(img::PixelFormatInfo_Name(formatId));
  ExpectChannels<formatId>(memory, values, std::make_index_sequence<numChannels>());
}

TEST(ChannelAccessor, NumbersTheBytesOfAnEightBitColourPixelInOrderOfMemory) {
  ExpectChannels<PixelFormatId::RGB8, 3>({0x11, 0x22, 0x33}, {0x11, 0x22, 0x33});
  ExpectChannels<PixelFormatId::BGR8, 3>({0x11, 0x22, 0x33}, {0x11, 0x22, 0x33});
  ExpectChannels<PixelFormatId::RGBa8, 4>({0x11, 0x22, 0x33, 0xFF}, {0x11, 0x22, 0x33, 0xFF});
  ExpectChannels<PixelFormatId::BGRa8, 4>({0x11, 0x22, 0x33, 0xFF}, {0x11, 0x22, 0x33, 0xFF});
}

TEST(ChannelAccessor, NumbersTheWordsOfATenBitColourPixelInOrderOfMemory) {
  ExpectChannels<PixelFormatId::RGB10, 3>({0x01, 0x02, 0xFF, 0x03, 0x00, 0x01}, {0x201, 0x3FF, 0x100});
  ExpectChannels<PixelFormatId::BGR10, 3>({0x01, 0x02, 0xFF, 0x03, 0x00, 0x01}, {0x201, 0x3FF, 0x100});
  ExpectChannels<PixelFormatId::RGBa10, 4>({0x01, 0x02, 0xFF, 0x03, 0x00, 0x01, 0xFE, 0x03},
                                           {0x201, 0x3FF, 0x100, 0x3FE});
  ExpectChannels<PixelFormatId::BGRa10, 4>({0x01, 0x02, 0xFF, 0x03, 0x00, 0x01, 0xFE, 0x03},
                                           {0x201, 0x3FF, 0x100, 0x3FE});
}

TEST(ChannelAccessor, NumbersTheWordsOfATwelveBitColourPixelInOrderOfMemory) {
  ExpectChannels<PixelFormatId::RGB12, 3>({0xBC, 0x0A, 0xFF, 0x0F, 0x23, 0x01}, {0xABC, 0xFFF, 0x123});
  ExpectChannels<PixelFormatId::BGR12, 3>({0xBC, 0x0A, 0xFF, 0x0F, 0x23, 0x01}, {0xABC, 0xFFF, 0x123});
  ExpectChannels<PixelFormatId::RGBa12, 4>({0xBC, 0x0A, 0xFF, 0x0F, 0x23, 0x01, 0xFE, 0x0F},
                                           {0xABC, 0xFFF, 0x123, 0xFFE});
  ExpectChannels<PixelFormatId::BGRa12, 4>({0xBC, 0x0A, 0xFF, 0x0F, 0x23, 0x01, 0xFE, 0x0F},
                                           {0xABC, 0xFFF, 0x123, 0xFFE});
}

TEST(ChannelAccessor, LeavesTheOtherChannelsOfAColourPixelAlone) {
  auto pixel = PixelFrom<Repr<PixelFormatId::BGRa12>>({1, 2, 3, 4, 5, 6, 7, 8});
  ChannelAccessor<PixelFormatId::BGRa12>::Set<2>(pixel, 0xFFFF);
  EXPECT_EQ(MemoryOf(pixel), (Bytes{1, 2, 3, 4, 0xFF, 0xFF, 7, 8}));
}

// ----------------------------------------------------------------------------------------------------- 32-bit words --

TEST(ChannelAccessor, PutsTheFirstChannelOfA32BitWordIntoItsLowBits) {
  uint32_t pixel = 0;
  ChannelAccessor<PixelFormatId::RGB10p32>::Set<0>(pixel, 0x3FF);
  EXPECT_EQ(pixel, 0x000003FFu);
  EXPECT_EQ(MemoryOf(pixel), (Bytes{0xFF, 0x03, 0x00, 0x00}));
}

TEST(ChannelAccessor, PutsTheSecondChannelOfA32BitWordIntoItsMiddleBits) {
  uint32_t pixel = 0;
  ChannelAccessor<PixelFormatId::RGB10p32>::Set<1>(pixel, 0x3FF);
  EXPECT_EQ(pixel, 0x000FFC00u);
  EXPECT_EQ(MemoryOf(pixel), (Bytes{0x00, 0xFC, 0x0F, 0x00}));
}

TEST(ChannelAccessor, PutsTheThirdChannelOfA32BitWordBelowTheTwoUnusedBits) {
  uint32_t pixel = 0;
  ChannelAccessor<PixelFormatId::RGB10p32>::Set<2>(pixel, 0x3FF);
  EXPECT_EQ(pixel, 0x3FF00000u);
  EXPECT_EQ(MemoryOf(pixel), (Bytes{0x00, 0x00, 0xF0, 0x3F}));
}

TEST(ChannelAccessor, ReadsTheThreeFieldsOfA32BitWordAndNotItsTopBits) {
  // The word 0x2AA << 20 | 0x155 << 10 | 0x2AB.
  ExpectChannels<PixelFormatId::RGB10p32, 3>({0xAB, 0x56, 0xA5, 0x2A}, {0x2AB, 0x155, 0x2AA});
  ExpectChannels<PixelFormatId::BGR10p32, 3>({0xAB, 0x56, 0xA5, 0x2A}, {0x2AB, 0x155, 0x2AA});
  EXPECT_EQ(ChannelAccessor<PixelFormatId::RGB10p32>::Get<0>(0xFFFFFFFFu), 0x3FF);
  EXPECT_EQ(ChannelAccessor<PixelFormatId::RGB10p32>::Get<1>(0xFFFFFFFFu), 0x3FF);
  EXPECT_EQ(ChannelAccessor<PixelFormatId::RGB10p32>::Get<2>(0xFFFFFFFFu), 0x3FF);
  EXPECT_EQ(ChannelAccessor<PixelFormatId::BGR10p32>::Get<2>(0xC0000000u), 0);
}

TEST(ChannelAccessor, KeepsTheTopBitsOfA32BitWord) {
  for (const uint32_t top : {0x00000000u, 0x40000000u, 0x80000000u, 0xC0000000u}) {
    uint32_t pixel = top | 0x3FFFFFFFu;
    ChannelAccessor<PixelFormatId::BGR10p32>::Set<0>(pixel, 0);
    ChannelAccessor<PixelFormatId::BGR10p32>::Set<1>(pixel, 0);
    ChannelAccessor<PixelFormatId::BGR10p32>::Set<2>(pixel, 0);
    EXPECT_EQ(pixel, top);
  }
}

TEST(ChannelAccessor, CutsAValueToTheTenBitsOfItsField) {
  uint32_t pixel = 0;
  ChannelAccessor<PixelFormatId::RGB10p32>::Set<0>(pixel, 0xFFFF);
  EXPECT_EQ(pixel, 0x000003FFu);
  pixel = 0;
  ChannelAccessor<PixelFormatId::RGB10p32>::Set<1>(pixel, 0xFFFF);
  EXPECT_EQ(pixel, 0x000FFC00u);
  pixel = 0;
  ChannelAccessor<PixelFormatId::RGB10p32>::Set<2>(pixel, 0xFFFF);
  EXPECT_EQ(pixel, 0x3FF00000u);
  ChannelAccessor<PixelFormatId::RGB10p32>::Set<2>(pixel, 0x0400);
  EXPECT_EQ(pixel, 0u);
}

TEST(ChannelAccessor, LeavesTheOtherFieldsOfA32BitWordAlone) {
  uint32_t pixel = 0xFFFFFFFFu;
  ChannelAccessor<PixelFormatId::RGB10p32>::Set<1>(pixel, 0x155);
  EXPECT_EQ(pixel, 0xFFF557FFu);
}

// ------------------------------------------------------------------------------------------------ any address at all
// --

template <PixelFormatId formatId, size_t numBytes>
void ExpectLoadAndStoreAtOddAddresses() {
  SCOPED_TRACE(img::PixelFormatInfo_Name(formatId));
  alignas(8) std::array<uint8_t, 24> source{};
  for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i + 1);
  for (size_t offset = 0; offset < 8; ++offset) {
    alignas(8) std::array<uint8_t, 24> target{};
    StorePixel<formatId>(target.data() + offset, LoadPixel<formatId>(source.data() + offset));
    for (size_t i = 0; i < target.size(); ++i) {
      const bool written = i >= offset && i < offset + numBytes;
      EXPECT_EQ(target[i], written ? i + 1 : 0) << offset << ", " << i;
    }
  }
}

TEST(LoadPixelAndStorePixel, MoveExactlyTheBytesOfOnePixelAtAnyAddress) {
  ExpectLoadAndStoreAtOddAddresses<PixelFormatId::Mono8, 1>();
  ExpectLoadAndStoreAtOddAddresses<PixelFormatId::BayerGB12, 2>();
  ExpectLoadAndStoreAtOddAddresses<PixelFormatId::BGR8, 3>();
  ExpectLoadAndStoreAtOddAddresses<PixelFormatId::RGBa8, 4>();
  ExpectLoadAndStoreAtOddAddresses<PixelFormatId::RGB10p32, 4>();
  ExpectLoadAndStoreAtOddAddresses<PixelFormatId::RGB10, 6>();
  ExpectLoadAndStoreAtOddAddresses<PixelFormatId::BGRa12, 8>();
}

// ------------------------------------------------------------------------------------------ what has no pixel image --

template <PixelFormatId formatId>
void ExpectNotAddressable(const std::string& name) {
  SCOPED_TRACE(name);
  using Accessor = ChannelAccessor<formatId>;
  typename Accessor::PixelRepr pixel{};
  try {
    Accessor::template Get<0>(pixel);
    ADD_FAILURE() << "Get threw nothing";
  } catch (const ImgException& exception) {
    EXPECT_EQ(static_cast<int>(exception.GetStatus()), -1003);
    EXPECT_EQ(exception.ModuleId(), 9004);
    EXPECT_EQ(exception.Text(), "IMPLEMENT IT!!! format: " + name);
    EXPECT_EQ(exception.Location(),
              "static <dependent type> img::pixel_accessor::ChannelAccessor<img::PixelFormatId::" + name +
                  ">::Get(const img::pixel_accessor::ChannelAccessor::PixelRepr &) [pixelFormat "
                  "= img::PixelFormatId::" +
                  name + ", channel = 0]");
  }
  try {
    Accessor::template Set<0>(pixel, 1);
    ADD_FAILURE() << "Set threw nothing";
  } catch (const ImgException& exception) {
    EXPECT_EQ(static_cast<int>(exception.GetStatus()), -1003);
    EXPECT_EQ(exception.ModuleId(), 9004);
    EXPECT_EQ(exception.Text(), "IMPLEMENT IT!!! format: " + name);
    EXPECT_TRUE(exception.Location().starts_with("static ")) << exception.Location();
    EXPECT_NE(exception.Location().find(" img::pixel_accessor::ChannelAccessor<img::PixelFormatId::" + name +
                                        ">::Set(img::pixel_accessor::ChannelAccessor::PixelRepr &, "),
              std::string::npos)
        << exception.Location();
    EXPECT_TRUE(exception.Location().ends_with(" [pixelFormat = img::PixelFormatId::" + name + ", channel = 0]"))
        << exception.Location();
  }
}

TEST(ChannelAccessor, CannotAddressAPixelOfABitStreamOrOfNoFormat) {
#define KORVEL_EXPECT_NOT_ADDRESSABLE(name) ExpectNotAddressable<PixelFormatId::name>(#name);
  KORVEL_EXPECT_NOT_ADDRESSABLE(Invalid)
  KORVEL_FOR_MONO_AND_BAYER(KORVEL_EXPECT_NOT_ADDRESSABLE, 10p)
  KORVEL_FOR_MONO_AND_BAYER(KORVEL_EXPECT_NOT_ADDRESSABLE, 12p)
  KORVEL_FOR_MONO_AND_BAYER(KORVEL_EXPECT_NOT_ADDRESSABLE, 10g40Qrv)
  KORVEL_FOR_MONO_AND_BAYER(KORVEL_EXPECT_NOT_ADDRESSABLE, 12g24Qrv)
#undef KORVEL_EXPECT_NOT_ADDRESSABLE
}

TEST(ChannelAccessor, LeavesThePixelAloneWhereItCannotSetIt) {
  uint16_t pixel = 0x1234;
  EXPECT_THROW(ChannelAccessor<PixelFormatId::Mono10p>::Set<0>(pixel, 1), ImgException);
  EXPECT_EQ(pixel, 0x1234);
}

}  // namespace
