#include "api/export_frame.h"

#include <gtest/gtest.h>

#include <system_error>

#include "status/exceptions.h"

namespace {

using korvel::internal::ExportFrame;
using korvel::internal::FillArray;
using korvel::internal::ImgException;
using korvel::internal::ImgStatusCode;
using korvel::internal::kSuccess;
using korvel::internal::LastErrorRecord;
using korvel::internal::RecordFailure;
using korvel::internal::ReturnCode;

struct Outcome {
  ReturnCode code;
  std::string text;
};

template <class Exception>
Outcome FrameThatThrows(const Exception& exception) {
  const ReturnCode code = ExportFrame([&]() -> ReturnCode { throw exception; });
  EXPECT_EQ(code, LastErrorRecord::OfThisThread().Code());
  return {code, LastErrorRecord::OfThisThread().Text()};
}

ImgException StatusException(ImgStatusCode status) {
  return ImgException(status, utilx::ExceptionModule<cfg_libimg::Modules::Pixel>{}, "here", "message");
}

TEST(ExportFrame, LeavesTheRecordAloneOnSuccess) {
  RecordFailure(KORVEL_RETURN_CODE_Timeout, "an old failure");
  EXPECT_EQ(ExportFrame([] { return kSuccess; }), KORVEL_RETURN_CODE_Success);
  EXPECT_EQ(LastErrorRecord::OfThisThread().Code(), KORVEL_RETURN_CODE_Timeout + 0u);
  EXPECT_EQ(LastErrorRecord::OfThisThread().Text(), "an old failure");
}

TEST(ExportFrame, TakesTheCodeThatAReturnCodeExceptionCarries) {
  const auto outcome = FrameThatThrows(korvel::internal::util::limgReturnCodeException(
      KORVEL_RETURN_CODE_InvalidArgument, "The option parameter is an invalid pointer!"));
  EXPECT_EQ(outcome.code, KORVEL_RETURN_CODE_InvalidArgument + 0u);
  EXPECT_EQ(outcome.text, "The option parameter is an invalid pointer!");
}

TEST(ExportFrame, LooksTheValueOfASystemErrorUpWhateverItsCategory) {
  constexpr ReturnCode expected[] = {0, 1, 9, 10, 2, 5, 11, 12, 10, 9};
  for (int value = 0; value < 10; ++value) {
    EXPECT_EQ(FrameThatThrows(std::system_error(value, std::generic_category())).code, expected[value]) << value;
    EXPECT_EQ(FrameThatThrows(std::system_error(value, std::system_category())).code, expected[value]) << value;
  }
  EXPECT_EQ(FrameThatThrows(std::system_error(10, std::generic_category())).code, 1u);
  EXPECT_EQ(FrameThatThrows(std::system_error(100, std::generic_category())).code, 1u);
  EXPECT_EQ(FrameThatThrows(std::system_error(-1, std::generic_category())).code, 1u);
}

TEST(ExportFrame, PassesAStatusOfZeroOrMoreAndTurnsANegativeOneIntoError) {
  for (int32_t status = 0; status <= 8; ++status) {
    EXPECT_EQ(FrameThatThrows(StatusException(ImgStatusCode{status})).code, static_cast<ReturnCode>(status));
  }
  const auto outcome = FrameThatThrows(StatusException(ImgStatusCode::InvalidParameterUtilx));
  EXPECT_EQ(outcome.code, 1u);
  EXPECT_EQ(outcome.text, "error: type=InvalidParameterUtilx[-1009], module_id=9004, txt=message");
}

TEST(ExportFrame, TurnsAGenericStatusAndAnyOtherExceptionIntoError) {
  using GenericException = utilx::CustomException<utilx::StatusCode, &utilx::conversion::StatusToText>;
  const auto generic = FrameThatThrows(GenericException(utilx::StatusCode::Io, "generic text"));
  EXPECT_EQ(generic.code, 1u);
  EXPECT_EQ(generic.text, "generic text");
  const auto other = FrameThatThrows(std::out_of_range("map::at"));
  EXPECT_EQ(other.code, 1u);
  EXPECT_EQ(other.text, "map::at");
}

TEST(FillArray, AnswersAQuestionForTheSize) {
  const int elements[] = {7, 8, 9};
  size_t size = 0;
  EXPECT_EQ(FillArray(elements, 3, static_cast<int*>(nullptr), &size, "*array is too small!"),
            KORVEL_RETURN_CODE_Success + 0u);
  EXPECT_EQ(size, 3u);
}

TEST(FillArray, CopiesAndTellsHowMuchOfTheArrayWasUsed) {
  const int elements[] = {7, 8, 9};
  int array[5] = {};
  size_t size = 5;
  EXPECT_EQ(FillArray(elements, 3, array, &size, "*array is too small!"), KORVEL_RETURN_CODE_Success + 0u);
  EXPECT_EQ(size, 3u);
  EXPECT_EQ(array[2], 9);
  EXPECT_EQ(array[3], 0);
}

TEST(FillArray, RefusesAnArrayThatIsOneTooSmall) {
  const int elements[] = {7, 8, 9};
  int array[2] = {1, 2};
  size_t size = 2;
  EXPECT_EQ(FillArray(elements, 3, array, &size, "*array is too small!"), KORVEL_RETURN_CODE_BufferToSmall + 0u);
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(array[0], 1);
  EXPECT_EQ(LastErrorRecord::OfThisThread().Text(), "*array is too small!");
}

}  // namespace
