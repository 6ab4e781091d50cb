#include "core/pixel_format.h"

#include <gtest/gtest.h>

#include "status/exceptions.h"

namespace {

using img::PixelFormatId;
using korvel::internal::ImgException;
using korvel::internal::ImgStatusCode;

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
