#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/last_error.h"

namespace {

using korvel_test::LastError;
using korvel_test::MarkLastError;
using korvel_test::ReadLastError;

TEST(LibraryVersion, IsOneFiveZero) {
  uint32_t major = 99;
  uint32_t minor = 99;
  uint32_t subminor = 99;
  EXPECT_EQ(KORVEL_Library_GetVersionMajor(&major), 0u);
  EXPECT_EQ(KORVEL_Library_GetVersionMinor(&minor), 0u);
  EXPECT_EQ(KORVEL_Library_GetVersionSubminor(&subminor), 0u);
  EXPECT_EQ(major, 1u);
  EXPECT_EQ(minor, 5u);
  EXPECT_EQ(subminor, 0u);
}

TEST(LibraryVersion, RefusesNullPointers) {
  EXPECT_EQ(KORVEL_Library_GetVersionMajor(nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "libraryVersionMajor is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_Library_GetVersionMinor(nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "libraryVersionMinor is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_Library_GetVersionSubminor(nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "libraryVersionSubminor is not a valid pointer!"}));
}

TEST(LastErrorRecord, IsEmptyInANewThread) {
  MarkLastError();
  std::thread([] {
    uint32_t code = 77;
    size_t size = 0;
    EXPECT_EQ(KORVEL_Library_GetLastError(&code, nullptr, &size), 0u);
    EXPECT_EQ(size, 1u);
    EXPECT_EQ(code, 77u) << "a question for the size leaves the code unwritten";
    char text[1] = {'x'};
    EXPECT_EQ(KORVEL_Library_GetLastError(&code, text, &size), 0u);
    EXPECT_EQ(code, 0u);
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(size, 1u);
  }).join();
}

TEST(LastErrorRecord, BelongsToItsThread) {
  const LastError mine = MarkLastError();
  std::thread([] {
    EXPECT_EQ(ReadLastError(), (LastError{0, ""}));
    EXPECT_EQ(KORVEL_Library_GetVersionMinor(nullptr), 5u);
  }).join();
  EXPECT_EQ(ReadLastError(), mine);
}

TEST(LastErrorRecord, StaysAfterASuccessAndAfterReading) {
  const LastError failure = MarkLastError();
  uint32_t major = 0;
  EXPECT_EQ(KORVEL_Library_GetVersionMajor(&major), 0u);
  EXPECT_EQ(ReadLastError(), failure);
  EXPECT_EQ(ReadLastError(), failure);
}

TEST(LastErrorRecord, IsReplacedWhenItsTextDoesNotFit) {
  MarkLastError();
  uint32_t code = 77;
  size_t needed = 0;
  ASSERT_EQ(KORVEL_Library_GetLastError(&code, nullptr, &needed), 0u);
  std::vector<char> text(needed, 'x');
  size_t size = needed - 1;
  EXPECT_EQ(KORVEL_Library_GetLastError(&code, text.data(), &size), 4u);
  EXPECT_EQ(size, needed - 1);
  EXPECT_EQ(code, 77u);
  EXPECT_EQ(text[0], 'x');
  EXPECT_EQ(ReadLastError(), (LastError{4, "lastErrorDescription is too small!"}));
}

TEST(LastErrorRecord, TakesALargerBufferAndTellsTheSizeUsed) {
  const LastError failure = MarkLastError();
  uint32_t code = 0;
  std::vector<char> text(500, 'x');
  size_t size = text.size();
  EXPECT_EQ(KORVEL_Library_GetLastError(&code, text.data(), &size), 0u);
  EXPECT_EQ(size, failure.text.size() + 1);
  EXPECT_EQ(text[size - 1], '\0');
  EXPECT_EQ(text[size], 'x');
}

TEST(LastErrorRecord, ChecksItsPointersInOrder) {
  uint32_t code = 0;
  size_t size = 0;
  EXPECT_EQ(KORVEL_Library_GetLastError(nullptr, nullptr, nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "lastErrorCode is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_Library_GetLastError(&code, nullptr, nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "lastErrorDescriptionSize is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_Library_GetLastError(nullptr, nullptr, &size), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "lastErrorCode is not a valid pointer!"}));
}

}  // namespace
