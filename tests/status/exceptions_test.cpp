#include "status/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "status/ensure.h"
#include "tests/support/syslog_capture.h"

namespace {

using cfg_libimg::Modules;
using korvel::internal::Ensure;
using korvel::internal::ImgException;
using korvel::internal::ImgStatusCode;
using korvel::internal::ImgStatusCodeToString;
using korvel_test::TakeLogRecords;
using testing::HasSubstr;

TEST(StatusText, GivesTheNameAndTheNumber) {
  EXPECT_EQ(ImgStatusCodeToString(ImgStatusCode::ImageFormatNotSupported), "ImageFormatNotSupported[7]");
  EXPECT_EQ(ImgStatusCodeToString(ImgStatusCode::InvalidParameterUtilx), "InvalidParameterUtilx[-1009]");
  EXPECT_EQ(ImgStatusCodeToString(ImgStatusCode{99}), "Unknown[99]");
  EXPECT_EQ(ImgStatusCodeToString(ImgStatusCode::Success), "Success[0]");
}

TEST(StatusText, HoldsAllThirtyTwoEntries) {
  const std::pair<int, const char*> expected[] = {
      {0, "Success"},
      {-1001, "ErrorUtilx"},
      {-1002, "NotInitializedUtilx"},
      {-1003, "NotImplementedUtilx"},
      {-1004, "ResourceInUseUtilx"},
      {-1005, "AccessDeniedUtilx"},
      {-1006, "InvalidHandleUtilx"},
      {-1007, "InvalidIdUtilx"},
      {-1008, "NoDataUtilx"},
      {-1009, "InvalidParameterUtilx"},
      {-1010, "IoUtilx"},
      {-1011, "TimeoutUtilx"},
      {-1012, "AbortUtilx"},
      {-1013, "InvalidBufferUtilx"},
      {-1014, "NotAvailableUtilx"},
      {-1015, "InvalidAddressUtilx"},
      {-1016, "BufferToSmallUtilx"},
      {-1017, "InvalidIndexUtilx"},
      {-1018, "ParsingChunkDataUtilx"},
      {-1019, "InvalidValueUtilx"},
      {-1020, "ResourceExhaustedUtilx"},
      {-1021, "OutOfMemoryUtilx"},
      {-1022, "BusyUtilx"},
      {-10000, "CustomIdUtilx"},
      {1, "Error"},
      {2, "InvalidHandle"},
      {3, "Io"},
      {4, "BufferToSmall"},
      {5, "InvalidArgument"},
      {6, "OutOfRange"},
      {7, "ImageFormatNotSupported"},
      {8, "ImageFormatInterpretationError"},
  };
  static_assert(std::size(expected) == 32);
  for (const auto& [value, name] : expected) {
    const std::string text = std::string(name) + "[" + std::to_string(value) + "]";
    EXPECT_EQ(ImgStatusCodeToString(ImgStatusCode{value}), text);
    EXPECT_EQ(utilx::conversion::StatusToText(utilx::StatusCode{value}), text);
  }
}

TEST(StatusException, CarriesStatusModuleLocationAndText) {
  const ImgException exception(ImgStatusCode::ResourceExhaustedUtilx, utilx::ExceptionModule<Modules::Buffer>{},
                               "where it was thrown", "Buffer pool exhausted! (Reached buffer limit)");
  EXPECT_STREQ(exception.what(),
               "error: type=ResourceExhaustedUtilx[-1020], module_id=9005, txt=Buffer pool exhausted! "
               "(Reached buffer limit)");
  EXPECT_EQ(exception.GetStatus(), ImgStatusCode::ResourceExhaustedUtilx);
  EXPECT_EQ(exception.ModuleId(), 9005);
  EXPECT_EQ(exception.Location(), "where it was thrown");
  EXPECT_EQ(exception.Text(), "Buffer pool exhausted! (Reached buffer limit)");
}

template <Modules module>
void ExpectModule(int number, const std::string& paddedLogName) {
  TakeLogRecords();
  const ImgException exception(ImgStatusCode::Error, utilx::ExceptionModule<module>{}, "here", "message");
  EXPECT_EQ(exception.ModuleId(), number);
  EXPECT_STREQ(exception.what(),
               ("error: type=Error[1], module_id=" + std::to_string(number) + ", txt=message").c_str());
  const auto records = TakeLogRecords();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].priority, 11);
  EXPECT_EQ(records[0].format, "%s");
  EXPECT_EQ(records[0].text, "|X| " + paddedLogName + "| Exception (status=Error[1], location=here, txt=message)\n");
}

TEST(StatusException, WritesOneLogLineThatNamesItsModule) {
  ExpectModule<Modules::Default>(9000, "libimg_Default      ");
  ExpectModule<Modules::Io>(9001, "libimg_io           ");
  ExpectModule<Modules::Processing>(9003, "libimg_processing   ");
  ExpectModule<Modules::Pixel>(9004, "libimg_pixel        ");
  ExpectModule<Modules::Buffer>(9005, "libimg_buffer       ");
}

TEST(Ensure, DoesNothingWhenTheConditionHolds) {
  TakeLogRecords();
  EXPECT_NO_THROW(Ensure(true, "a function", ImgStatusCode::InvalidParameterUtilx));
  EXPECT_TRUE(TakeLogRecords().empty());
}

TEST(Ensure, NamesTheFunctionWhenTheConditionFails) {
  try {
    Ensure(false, "void f(int)", ImgStatusCode::InvalidParameterUtilx);
    FAIL() << "nothing was thrown";
  } catch (const ImgException& exception) {
    EXPECT_EQ(exception.GetStatus(), ImgStatusCode::InvalidParameterUtilx);
    EXPECT_EQ(exception.ModuleId(), 9003);
    EXPECT_EQ(exception.Text(), "Ensure failed @ void f(int)");
    EXPECT_EQ(exception.Location(),
              "void korvel::internal::Ensure(bool, const std::string &, korvel::internal::ImgStatusCode) [Module = "
              "utilx::ExceptionModule<cfg_libimg::Modules::Processing>]");
  }
}

}  // namespace
