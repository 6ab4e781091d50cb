#include "core/pixel_format.h"

#include <gtest/gtest.h>

#include "status/exceptions.h"
#include "tests/model/format_table.h"

namespace {

using img::PixelFormatId;
using korvel::internal::ImgException;
using korvel::internal::ImgStatusCode;

TEST(PixelFormat, EveryQueryAgreesWithTheTableOfAllSixtyFourIds) {
  ASSERT_EQ(std::size(korvel_test::kFormatTable), 64u);
  for (const korvel_test::FormatRow& row : korvel_test::kFormatTable) {
    SCOPED_TRACE(row.name);
    const PixelFormatId id{row.id};
    EXPECT_EQ(img::PixelFormatInfo_Name(id), row.name);
    EXPECT_EQ(static_cast<uint32_t>(img::PixelFormatInfo_Class(id)), row.pixelClass);
    EXPECT_EQ(static_cast<uint32_t>(img::PixelFormatInfo_Type(id)), row.type);
    EXPECT_EQ(img::PixelFormatInfo_PixelComponents(id), row.channels);
    EXPECT_EQ(img::PixelFormatInfo_ComponentSignificantBits(id), row.significantBitsPerChannel);
    EXPECT_EQ(img::PixelFormatInfo_ComponentStorageBits(id), row.storageBitsPerChannel);
    EXPECT_EQ(img::PixelFormatInfo_PixelSignificantBits(id), row.significantBitsPerPixel);
    EXPECT_EQ(img::PixelFormatInfo_PixelStorageBits(id), row.storageBitsPerPixel);
    EXPECT_EQ(img::PixelFormatInfo_ComponentMaxValue(id), row.maximum);
    EXPECT_EQ(img::PixelFormatInfo_IsPacked(id), row.packed);
    EXPECT_EQ(img::PixelFormatInfo_IsBayered(id), row.bayer);
    EXPECT_EQ(static_cast<uint32_t>(img::PixelFormatInfo_RawFormat(id)), row.rawFormat);
    EXPECT_EQ(static_cast<uint32_t>(img::PixelFormatInfo_ByteOrder(id)), 0u);
    for (size_t pixels = 0; pixels < 1004; ++pixels) {
      EXPECT_EQ(img::PixelFormatInfo_CalcSizeOfPixels(id, pixels), korvel_test::BytesOfRun(row.runBytes, pixels));
    }
    const size_t wrapping = (size_t{1} << 63) + 5;
    EXPECT_EQ(img::PixelFormatInfo_CalcSizeOfPixels(id, wrapping), korvel_test::BytesOfRun(row.runBytes, wrapping));
  }
}

// Every id of the library's list, so that none is missing from the table.
#define KORVEL_COUNT(name) +1
static_assert(KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_COUNT) == 49);
static_assert(KORVEL_FOR_EACH_RAW_FORMAT(KORVEL_COUNT) == 14);
#undef KORVEL_COUNT

TEST(PixelFormat, PackedRunsRoundUpOnce) {
  const auto bytes = img::PixelFormatInfo_CalcSizeOfPixels;
  EXPECT_EQ(bytes(PixelFormatId::Mono12p, 1), 2u);
  EXPECT_EQ(bytes(PixelFormatId::Mono12p, 2), 3u);
  EXPECT_EQ(bytes(PixelFormatId::Mono12p, 3), 5u);
  EXPECT_EQ(bytes(PixelFormatId::Mono12p, 4), 6u);
  EXPECT_EQ(bytes(PixelFormatId::Mono10p, 1), 2u);
  EXPECT_EQ(bytes(PixelFormatId::Mono10p, 2), 3u);
  EXPECT_EQ(bytes(PixelFormatId::Mono10p, 3), 4u);
  EXPECT_EQ(bytes(PixelFormatId::Mono10p, 4), 5u);
  EXPECT_EQ(bytes(PixelFormatId::Mono10p, 5), 7u);
}

TEST(PixelFormat, RawFormatKeepsTheLayoutAlone) {
  EXPECT_EQ(img::PixelFormatInfo_RawFormat(PixelFormatId::RGBa10), PixelFormatId::_RawUnpacked4Ch10);
  EXPECT_EQ(img::PixelFormatInfo_RawFormat(PixelFormatId::BayerGR12g24Qrv), PixelFormatId::_RawMipiPacked1Ch12);
#define KORVEL_EXPECT_ITSELF(name) \
  EXPECT_EQ(img::PixelFormatInfo_RawFormat(PixelFormatId::name), PixelFormatId::name) << #name;
  KORVEL_FOR_EACH_RAW_FORMAT(KORVEL_EXPECT_ITSELF)
#undef KORVEL_EXPECT_ITSELF
}

TEST(PixelFormat, ClassAndBitsLeadToTheFormat) {
  const auto find = img::PixelFormatInfo_FromClassAndBits;
  EXPECT_EQ(find(16, 12), PixelFormatId::Mono12p);
  EXPECT_EQ(find(16, 10), PixelFormatId::Mono10p);
  EXPECT_EQ(find(16, 8), PixelFormatId::Invalid);
  EXPECT_EQ(find(12, 10), PixelFormatId::BayerBG10p);
  EXPECT_EQ(find(17, 10), PixelFormatId::_RawUnpacked1Ch10);
  EXPECT_EQ(find(20, 12), PixelFormatId::_RawPackedNoAlignment1Ch12);
  EXPECT_EQ(find(0, 8), PixelFormatId::Invalid);
  EXPECT_EQ(find(22, 8), PixelFormatId::Invalid);
  EXPECT_EQ(find(-1, 8), PixelFormatId::Invalid);
  EXPECT_EQ(find(5, 9), PixelFormatId::Invalid);
}

TEST(PixelFormat, EveryClassHasItsDepthsAndNoOther) {
  for (int32_t pixelClass = -2; pixelClass <= 30; ++pixelClass) {
    for (uint32_t bits = 0; bits <= 20; ++bits) {
      const bool unpacked = (pixelClass >= 1 && pixelClass <= 9) || (pixelClass >= 17 && pixelClass <= 19);
      const bool word = pixelClass == 10 || pixelClass == 11 || pixelClass == 21;
      const bool packed = (pixelClass >= 12 && pixelClass <= 16) || pixelClass == 20;
      const bool expected = (unpacked && (bits == 8 || bits == 10 || bits == 12)) || (word && bits == 10) ||
                            (packed && (bits == 10 || bits == 12));
      const PixelFormatId found = img::PixelFormatInfo_FromClassAndBits(pixelClass, bits);
      EXPECT_EQ(found != PixelFormatId::Invalid, expected) << pixelClass << ", " << bits;
      if (!expected) continue;
      EXPECT_EQ(static_cast<int32_t>(img::PixelFormatInfo_Class(found)), pixelClass);
      EXPECT_EQ(img::PixelFormatInfo_ComponentSignificantBits(found), bits);
    }
  }
}

TEST(PixelFormat, AnUnknownIdHasTheNameInvalid) {
  EXPECT_EQ(img::PixelFormatInfo_Name(PixelFormatId{0x01080002}), "Invalid");
  EXPECT_EQ(img::PixelFormatInfo_Name(PixelFormatId::Invalid), "Invalid");
}

template <class Query>
void ExpectUnknown(Query query, const std::string& location) {
  try {
    query(PixelFormatId{0x01080002});
    FAIL() << location;
  } catch (const ImgException& exception) {
    EXPECT_EQ(exception.GetStatus(), ImgStatusCode::InvalidParameterUtilx);
    EXPECT_EQ(exception.ModuleId(), 9000);
    EXPECT_EQ(exception.Location(), location);
    EXPECT_EQ(exception.Text(), "Unknown formatId: 17301506");
  }
}

TEST(PixelFormat, QueriesRefuseAnUnknownIdUnderTheirOwnNames) {
  using namespace img;
  ExpectUnknown(PixelFormatInfo_ComponentSignificantBits,
                "uint32_t img::PixelFormatInfo_ComponentSignificantBits(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_ComponentMaxValue, "uint32_t img::PixelFormatInfo_ComponentMaxValue(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_ComponentStorageBits,
                "uint32_t img::PixelFormatInfo_ComponentStorageBits(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_PixelComponents, "uint32_t img::PixelFormatInfo_PixelComponents(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_PixelSignificantBits,
                "uint32_t img::PixelFormatInfo_PixelSignificantBits(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_PixelStorageBits, "uint32_t img::PixelFormatInfo_PixelStorageBits(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_ByteOrder, "Endianness img::PixelFormatInfo_ByteOrder(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_Class, "PixelClass img::PixelFormatInfo_Class(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_Type, "PixelType img::PixelFormatInfo_Type(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_RawFormat, "PixelFormatId img::PixelFormatInfo_RawFormat(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_IsBayered, "bool img::PixelFormatInfo_IsBayered(PixelFormatId)");
  ExpectUnknown(PixelFormatInfo_IsPacked, "bool img::PixelFormatInfo_IsPacked(PixelFormatId)");
  ExpectUnknown([](PixelFormatId id) { return PixelFormatInfo_CalcSizeOfPixels(id, 1); },
                "size_t img::PixelFormatInfo_CalcSizeOfPixels(img::PixelFormatId, size_t)");
}

}  // namespace
