// Every byte of the files that the AVI layer writes.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "avi/qavi.h"
#include "tests/model/avi_model.h"
#include "tests/support/avi_files.h"
#include "tests/support/file_bytes.h"
#include "tests/support/temporary_directory.h"

namespace {

using avi::MainHeader;
using avi::QAVIError;
using avi::StreamHeader;
using avi::VideoFormat;
using korvel_test::AviBytes;
using korvel_test::AviFile;
using korvel_test::BuildAviFile;
using korvel_test::BuildAviFileBeforeClose;
using korvel_test::MakeAviFrames;
using korvel_test::PlainAvi;
using korvel_test::ReadFileBytes;

class AviLayout : public testing::Test {
 protected:
  korvel_test::TemporaryDirectory directory;
  std::string path = directory.File("a.avi");
};

std::string TextAt(const AviBytes& bytes, size_t offset, size_t count) {
  return {bytes.begin() + static_cast<ptrdiff_t>(offset), bytes.begin() + static_cast<ptrdiff_t>(offset + count)};
}

uint32_t NumberAt(const AviBytes& bytes, size_t offset, size_t count = 4) {
  uint32_t number = 0;
  for (size_t i = count; i > 0; --i) number = number << 8 | bytes.at(offset + i - 1);
  return number;
}

TEST_F(AviLayout, EndsWithFramesAndIndex) {
  AviFile file(AviFile::Create(path));
  file.Append({{1, 2, 3}, {4, 5}});
  file.Close();
  const AviBytes bytes = ReadFileBytes(path);
  ASSERT_EQ(bytes.size(), 306u);
  EXPECT_EQ(NumberAt(bytes, 4), 298u);
  EXPECT_EQ(AviBytes(bytes.begin() + 232, bytes.end()),
            (AviBytes{'L', 'I', 'S', 'T', 26, 0, 0, 0, 'm', 'o', 'v', 'i',              //
                      '0', '0', 'd', 'c', 3,  0, 0, 0, 1,   2,   3,   '0',              //
                      '0', '0', 'd', 'c', 2,  0, 0, 0, 4,   5,                          //
                      'i', 'd', 'x', '1', 32, 0, 0, 0,                                  //
                      '0', '0', 'd', 'c', 16, 0, 0, 0, 4,   0,   0,   0,   3, 0, 0, 0,  //
                      '0', '0', 'd', 'c', 16, 0, 0, 0, 16,  0,   0,   0,   2, 0, 0, 0}));
}

TEST_F(AviLayout, MatchesTheModelForEachNumberOfFrames) {
  for (const size_t count : {0u, 1u, 2u, 125u, 126u, 127u, 252u, 300u}) {
    SCOPED_TRACE(count);
    const auto frames = MakeAviFrames(count);
    AviFile file(AviFile::Create(path));
    file.Append(frames);
    file.Close();
    EXPECT_EQ(ReadFileBytes(path), BuildAviFile(PlainAvi(frames)));
  }
}

TEST_F(AviLayout, HasAnIndexOfAnyLength) {
  for (const size_t count : {511u, 512u, 513u, 1024u, 1500u}) {
    SCOPED_TRACE(count);
    const auto frames = MakeAviFrames(count);
    AviFile file(AviFile::Create(path));
    file.Append(frames);
    file.Close();
    ASSERT_EQ(ReadFileBytes(path), BuildAviFile(PlainAvi(frames)));
  }
}

TEST_F(AviLayout, HasNothingOnDiskBeforeTheFirstFrame) {
  const AviFile file(AviFile::Create(path));
  EXPECT_TRUE(ReadFileBytes(path).empty());
}

TEST_F(AviLayout, HoldsHeadersAndFramesWhileFramesAreWritten) {
  const auto frames = MakeAviFrames(253);
  AviFile file(AviFile::Create(path));
  for (size_t count = 1; count <= frames.size(); ++count) {
    file.Append({frames[count - 1]});
    const std::vector<AviBytes> sofar(frames.begin(), frames.begin() + static_cast<ptrdiff_t>(count));
    ASSERT_EQ(ReadFileBytes(path), BuildAviFileBeforeClose(PlainAvi(sofar))) << count << " frames";
  }
}

TEST_F(AviLayout, PutsTheHeaderToItsChunksHeadAtFrame126Alone) {
  const auto frames = MakeAviFrames(126);
  AviFile file(AviFile::Create(path));
  file.Append({frames.begin(), frames.end() - 1});
  EXPECT_EQ(TextAt(ReadFileBytes(path), 24, 4), "avih");
  file.Append({frames.back()});
  const AviBytes bytes = ReadFileBytes(path);
  EXPECT_EQ(NumberAt(bytes, 24), 0u) << "microseconds per frame, in place of the chunk's id";
  EXPECT_EQ(NumberAt(bytes, 24 + 16), 126u);
  EXPECT_EQ(NumberAt(bytes, 24 + 28), 23u) << "the largest frame";
  file.Close();
  EXPECT_EQ(TextAt(ReadFileBytes(path), 24, 4), "avih");
}

TEST_F(AviLayout, HasEachFieldOfTheHeadersInItsPlace) {
  AviFile file(AviFile::Create(path));
  ASSERT_EQ(avi::QAVIChangeMainHeader(file.Handle(),
                                      [](MainHeader& header) {
                                        header = {0x01020304, 0x11121314, 0x21222324, 0x31323334, 5,
                                                  0x41424344, 0x51525354, 6,          7,          8};
                                      }),
            QAVIError::Success);
  ASSERT_EQ(avi::QAVIChangeStreamHeader(file.Handle(), 0,
                                        [](StreamHeader& header) {
                                          header = {0x02030405, 0x12131415, 0x22232425, 0x3233, 0x4243, 0x52535455,
                                                    0x62636465, 0x72737475, 0x82838485, 9,      10,     0x92939495,
                                                    0xA2A3A4A5, 0xB2B3,     0xC2C3,     0xD2D3, 0xE2E3};
                                        }),
            QAVIError::Success);
  ASSERT_EQ(avi::QAVIChangeStreamFormat(file.Handle(), 0,
                                        [](VideoFormat& format) {
                                          format = {0x03040506, 0x13141516, 0x23242526, 0x3334,
                                                    0x4344,     0x53545556, 0x63646566};
                                        }),
            QAVIError::Success);
  file.Close();
  const AviBytes bytes = ReadFileBytes(path);
  ASSERT_EQ(bytes.size(), 252u);

  const auto expectNumbers = [&](size_t offset, const std::vector<uint32_t>& numbers) {
    for (const uint32_t number : numbers) {
      EXPECT_EQ(NumberAt(bytes, offset), number) << "at " << offset;
      offset += 4;
    }
  };
  // Frames and buffer size come from the stream.
  expectNumbers(32, {0x01020304, 0x11121314, 0x21222324, 0x31323334, 9, 0x41424344, 0x51525354, 10, 7, 8, 0, 0, 0, 0});
  expectNumbers(108, {0x02030405, 0x12131415, 0x22232425, 0x42433233, 0x52535455, 0x62636465, 0x72737475, 0x82838485, 9,
                      10, 0x92939495, 0xA2A3A4A5, 0xC2C3B2B3, 0xE2E3D2D3});
  expectNumbers(172, {0x03040506, 0x13141516, 0x23242526, 0x43443334, 0x53545556, 0x63646566, 0, 0, 0, 0});
}

TEST_F(AviLayout, HasAListForEachStream) {
  struct Expected {
    size_t streams;
    uint32_t hdrlSize;
  };
  // Lists of 136 bytes for video, 116 for sound and 96 for streams without a format, 8 more for their heads.
  for (const auto& [streams, hdrlSize] : {Expected{1, 212}, Expected{2, 336}, Expected{3, 440}, Expected{4, 544}}) {
    SCOPED_TRACE(streams);
    AviFile file(AviFile::Create(path, streams));
    file.Close();
    const AviBytes bytes = ReadFileBytes(path);
    EXPECT_EQ(NumberAt(bytes, 16), hdrlSize);
    EXPECT_EQ(NumberAt(bytes, 32 + 24), 1u) << "streams, until somebody sets them";
    EXPECT_EQ(TextAt(bytes, 20 + hdrlSize, 4) + TextAt(bytes, 28 + hdrlSize, 4), "LISTmovi");
    EXPECT_EQ(bytes.size(), hdrlSize + 40);
    EXPECT_EQ(NumberAt(bytes, 4), bytes.size() - 8);
  }
}

TEST_F(AviLayout, HasADefaultFormatForSound) {
  AviFile file(AviFile::Create(path, 2));
  file.Close();
  const AviBytes bytes = ReadFileBytes(path);
  EXPECT_EQ(TextAt(bytes, 232, 4) + TextAt(bytes, 240, 8), "LISTstrlstrh");
  EXPECT_EQ(NumberAt(bytes, 236), 116u);
  EXPECT_EQ(TextAt(bytes, 252, 8), "vidsMJPG");
  EXPECT_EQ(TextAt(bytes, 308, 4), "strf");
  const AviBytes format(bytes.begin() + 312, bytes.begin() + 336);
  EXPECT_EQ(format, (AviBytes{20, 0, 0, 0, 1, 0, 2, 0, 0x44, 0xAC, 0, 0, 0, 0, 0, 0, 4, 0, 16, 0, 0, 0, 0, 0}));
  EXPECT_EQ(TextAt(bytes, 336, 4), "strn");
}

TEST_F(AviLayout, NamesFramesAfterTheirStreamAndItsType) {
  AviFile file(AviFile::Create(path, 4));
  const auto setType = [&](size_t stream, uint32_t type) {
    EXPECT_EQ(avi::QAVIChangeStreamHeader(file.Handle(), stream, [&](StreamHeader& header) { header.type = type; }),
              QAVIError::Success);
  };
  setType(1, 0x73647561);  // "auds"
  setType(2, 0x73747874);  // "txts"
  setType(3, 0x79786F62);  // of no kind that is known
  for (size_t stream = 0; stream < 4; ++stream) file.Append({{1}}, stream);
  const AviBytes bytes = ReadFileBytes(path);
  const size_t first = 544 + 32;
  EXPECT_EQ(TextAt(bytes, first, 4), "00dc");
  EXPECT_EQ(TextAt(bytes, first + 10, 4), "01wb");
  EXPECT_EQ(TextAt(bytes, first + 20, 4), "02xx");
  EXPECT_EQ(TextAt(bytes, first + 30, 4), "03db");
}

TEST_F(AviLayout, PadsANameOfOddSizeWithTheChunksFirstLetter) {
  AviFile file(AviFile::Create(path));
  ASSERT_EQ(avi::QAVISetStreamName(file.Handle(), 0, "ab"), QAVIError::Success);
  file.Append({{1, 2}});
  file.Close();
  const AviBytes bytes = ReadFileBytes(path);
  EXPECT_EQ(AviBytes(bytes.begin() + 212, bytes.begin() + 240),
            (AviBytes{'s', 't', 'r', 'n', 3, 0, 0,   0,   'a', 'b', 0,   's', 'L', 'I',
                      'S', 'T', 14,  0,   0, 0, 'm', 'o', 'v', 'i', '0', '0', 'd', 'c'}));
  EXPECT_EQ(NumberAt(bytes, 16), 204u);
  EXPECT_EQ(NumberAt(bytes, 92), 128u);
  EXPECT_EQ(NumberAt(bytes, 4), bytes.size() - 8);
}

TEST_F(AviLayout, KeepsFlagsOfFramesInTheIndex) {
  AviFile file(AviFile::Create(path));
  const AviBytes frame = {1, 2};
  ASSERT_EQ(avi::QAVISetData(file.Handle(), 0, frame, 0), QAVIError::Success);
  ASSERT_EQ(avi::QAVISetData(file.Handle(), 0, frame, 0x12345678), QAVIError::Success);
  file.Close();
  const AviBytes bytes = ReadFileBytes(path);
  EXPECT_EQ(NumberAt(bytes, 244 + 20 + 8 + 4), 0u);
  EXPECT_EQ(NumberAt(bytes, 244 + 20 + 8 + 16 + 4), 0x12345678u);
}

TEST_F(AviLayout, TakesFramesOfNoBytes) {
  AviFile file(AviFile::Create(path));
  file.Append({{}, {7}, {}});
  file.Close();
  EXPECT_EQ(ReadFileBytes(path), BuildAviFile(PlainAvi({{}, {7}, {}})));
}

TEST(AviModel, RefusesAFileThatDiffersInOneByte) {
  const AviBytes file = BuildAviFile(PlainAvi({{1, 2, 3}}));
  EXPECT_EQ(korvel_test::ParseAviFile(file).frames, (std::vector<AviBytes>{{1, 2, 3}}));
  for (const size_t offset : {4u, 12u, 100u, 128u, 216u, 255u, 256u}) {
    AviBytes damaged = file;
    damaged[offset] ^= 1;
    EXPECT_ANY_THROW(korvel_test::ParseAviFile(damaged)) << offset;
  }
}

}  // namespace
