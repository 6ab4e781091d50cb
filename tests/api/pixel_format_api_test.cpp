#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <string>

#include "tests/support/last_error.h"

namespace {

using korvel_test::LastError;
using korvel_test::MarkLastError;
using korvel_test::ReadLastError;

constexpr uint32_t kUnknownId = 0x01080002;

// query takes a format and a pointer to its result.
template <class Result, class Query>
void ExpectChecks(const char* resultName, Query query) {
  SCOPED_TRACE(resultName);
  EXPECT_EQ(query(KORVEL_PIXEL_FORMAT_Mono8, nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, std::string(resultName) + " is not a valid pointer!"}));
  EXPECT_EQ(query(kUnknownId, nullptr), 5u) << "the pointer is checked first";

  Result result = 77;
  EXPECT_EQ(query(kUnknownId, &result), 1u);
  EXPECT_EQ(ReadLastError(),
            (LastError{1, "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unknown formatId: 17301506"}));
  EXPECT_EQ(result, Result{77}) << "a failed call writes nothing";

  const LastError before = MarkLastError();
  EXPECT_EQ(query(KORVEL_PIXEL_FORMAT_Invalid, &result), 0u);
  EXPECT_EQ(query(0xFFFF010A, &result), 0u) << "internal ids have properties as well";
  EXPECT_EQ(ReadLastError(), before);
}

TEST(PixelFormatQueries, CheckTheirPointerAndTheirId) {
  ExpectChecks<size_t>("numChannels", KORVEL_PixelFormat_GetNumChannels);
  ExpectChecks<size_t>("numSignificantBits", KORVEL_PixelFormat_GetNumSignificantBitsPerChannel);
  ExpectChecks<size_t>("numStorageBits", KORVEL_PixelFormat_GetNumStorageBitsPerChannel);
  ExpectChecks<uint32_t>("channelMaximumValue", KORVEL_PixelFormat_GetMaximumValuePerChannel);
  ExpectChecks<size_t>("numSignificantBits", KORVEL_PixelFormat_GetNumSignificantBitsPerPixel);
  ExpectChecks<size_t>("numStorageBits", KORVEL_PixelFormat_GetNumStorageBitsPerPixel);
  ExpectChecks<uint32_t>("endianness", KORVEL_PixelFormat_GetEndianness);
  ExpectChecks<size_t>("size", [](uint32_t format, size_t* size) {
    return KORVEL_PixelFormat_CalculateStorageSizeOfPixels(format, 1, size);
  });
}

TEST(PixelFormatQueries, AnswerForAFormat) {
  size_t size = 0;
  uint32_t value = 0;
  EXPECT_EQ(KORVEL_PixelFormat_GetNumChannels(KORVEL_PIXEL_FORMAT_Invalid, &size), 0u);
  EXPECT_EQ(size, 1u);
  EXPECT_EQ(KORVEL_PixelFormat_GetNumChannels(KORVEL_PIXEL_FORMAT_BGRa10, &size), 0u);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(KORVEL_PixelFormat_GetNumSignificantBitsPerChannel(KORVEL_PIXEL_FORMAT_BGRa10, &size), 0u);
  EXPECT_EQ(size, 10u);
  EXPECT_EQ(KORVEL_PixelFormat_GetNumStorageBitsPerChannel(KORVEL_PIXEL_FORMAT_BGRa10, &size), 0u);
  EXPECT_EQ(size, 16u);
  EXPECT_EQ(KORVEL_PixelFormat_GetMaximumValuePerChannel(KORVEL_PIXEL_FORMAT_BGRa10, &value), 0u);
  EXPECT_EQ(value, 1023u);
  EXPECT_EQ(KORVEL_PixelFormat_GetNumSignificantBitsPerPixel(KORVEL_PIXEL_FORMAT_BGRa10, &size), 0u);
  EXPECT_EQ(size, 40u);
  EXPECT_EQ(KORVEL_PixelFormat_GetNumStorageBitsPerPixel(KORVEL_PIXEL_FORMAT_BGRa10, &size), 0u);
  EXPECT_EQ(size, 64u);
  value = 77;
  EXPECT_EQ(KORVEL_PixelFormat_GetEndianness(KORVEL_PIXEL_FORMAT_BGRa10, &value), 0u);
  EXPECT_EQ(value, KORVEL_ENDIANNESS_Little + 0u);
}

TEST(PixelFormatQueries, RoundTheBytesOfAPackedRunUpOnce) {
  const auto bytes = [](uint32_t format, size_t pixels) {
    size_t size = 0;
    EXPECT_EQ(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(format, pixels, &size), 0u);
    return size;
  };
  EXPECT_EQ(bytes(KORVEL_PIXEL_FORMAT_Mono12p, 3), 5u);
  EXPECT_EQ(bytes(KORVEL_PIXEL_FORMAT_Mono10p, 5), 7u);
  EXPECT_EQ(bytes(KORVEL_PIXEL_FORMAT_BGRa12, 3), 24u);
  EXPECT_EQ(bytes(KORVEL_PIXEL_FORMAT_RGB10p32, 3), 12u);
  EXPECT_EQ(bytes(KORVEL_PIXEL_FORMAT_Mono10, size_t{1} << 63), 0u) << "wraps at 64 bits";
}

}  // namespace
