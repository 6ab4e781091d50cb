#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

#include "io/jpeg/jpeg_reader.h"
#include "io/jpeg/jpeg_writer.h"
#include "tests/model/file_model.h"
#include "tests/support/handmade_files.h"
#include "tests/support/jpeg_files.h"
#include "tests/support/test_images.h"

namespace {

using img::io::JPEGParameter;
using img::io::jpeg::JPEGReader;
using img::io::jpeg::JPEGWriter;
using korvel_test::AllocationLimit;
using korvel_test::Bytes;
using korvel_test::ContentOf;
using korvel_test::DecodeJpeg;
using korvel_test::EncodeJpeg;
using korvel_test::FileType;
using korvel_test::Fill;
using korvel_test::FirstBytes;
using korvel_test::Holds;
using korvel_test::IdOf;
using korvel_test::IoError;
using korvel_test::Joined;
using korvel_test::JpegRecipe;
using korvel_test::kCannotRead;
using korvel_test::LastError;
using korvel_test::MakeFilledImage;
using korvel_test::MakeModelImage;
using korvel_test::ModelImage;
using korvel_test::QuantizationTable;
using korvel_test::ReadOutcome;
using korvel_test::TestImage;
using korvel_test::UnsupportedError;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr uint32_t kMono8 = IdOf("Mono8");
constexpr uint32_t kRgb8 = IdOf("RGB8");

const LastError kEndsEarly = IoError("Premature end of JPEG file");
const LastError kDataEndsEarly = IoError("Corrupt JPEG data: premature end of data segment");

JpegRecipe Recipe(J_COLOR_SPACE pixels, int components, uint32_t width = 21, uint32_t height = 17) {
  JpegRecipe recipe{.width = width, .height = height, .pixels = pixels, .components = components};
  korvel_test::ModelRandom random(width);
  for (size_t i = 0; i < size_t{width} * height * static_cast<size_t>(components); ++i) {
    recipe.bytes.push_back(static_cast<uint8_t>(random.Below(256)));
  }
  return recipe;
}

ModelImage ImageOf(const Bytes& file) {
  const korvel_test::JpegContent content = DecodeJpeg(file);
  return MakeModelImage(content.components == 1 ? kMono8 : kRgb8, content.width, content.height, content.samples);
}

class JpegFiles : public korvel_test::HandmadeFiles {
 protected:
  JpegFiles() : HandmadeFiles(FileType::kJpeg) {}
};

// ------------------------------------------------------------------------------------------------- files from
// elsewhere --

TEST_F(JpegFiles, OfAnyCodingReadAsTheCodecReadsThem) {
  for (JpegRecipe recipe : {Recipe(JCS_GRAYSCALE, 1), Recipe(JCS_RGB, 3), Recipe(JCS_GRAYSCALE, 1, 1, 1)}) {
    for (const bool progressive : {false, true}) {
#ifdef D_ARITH_CODING_SUPPORTED
      const bool arithmetics[] = {false, true};
#else
      const bool arithmetics[] = {false};
#endif
      for (const bool arithmetic : arithmetics) {
        recipe.progressive = progressive;
        recipe.arithmetic = arithmetic;
        const Bytes file = EncodeJpeg(recipe);
        EXPECT_TRUE(Holds(ReadBytes(file), ImageOf(file)))
            << recipe.components << " components" << (progressive ? ", progressive" : "")
            << (arithmetic ? ", arithmetic" : "");
      }
    }
  }
}

TEST_F(JpegFiles, OfColourAreRgb) {
  JpegRecipe recipe = Recipe(JCS_RGB, 3);
  for (const J_COLOR_SPACE inFile : {JCS_RGB, JCS_YCbCr}) {
    recipe.inFile = inFile;
    const Bytes file = EncodeJpeg(recipe);
    const ReadOutcome outcome = ReadBytes(file);
    EXPECT_EQ(outcome.format, kRgb8);
    EXPECT_TRUE(Holds(outcome, ImageOf(file)));
  }
}

TEST_F(JpegFiles, OfFourColoursAreRefused) {
  JpegRecipe recipe = Recipe(JCS_CMYK, 4);
  for (const J_COLOR_SPACE inFile : {JCS_CMYK, JCS_YCCK}) {
    for (const bool progressive : {false, true}) {
      recipe.inFile = inFile;
      recipe.progressive = progressive;
      EXPECT_EQ(ReadBytes(EncodeJpeg(recipe)).error, UnsupportedError()) << inFile;
    }
  }
  EXPECT_EQ(ReadBytesAs(EncodeJpeg(recipe), kRgb8).error, UnsupportedError()) << "before the request";
}

TEST_F(JpegFiles, OfOtherComponentsAreRefused) {
  for (const int components : {2, 4}) {
    EXPECT_EQ(ReadBytes(EncodeJpeg(Recipe(JCS_UNKNOWN, components))).error, UnsupportedError()) << components;
  }
}

TEST_F(JpegFiles, OfTwelveBitsAreRefused) {
  Bytes file = EncodeJpeg(Recipe(JCS_GRAYSCALE, 1));
  file.at(korvel_test::MarkerOffset(file, 0xC0) + 3) = 12;
  EXPECT_EQ(ReadBytes(file).error, IoError("Unsupported JPEG data precision %d"));
}

TEST_F(JpegFiles, WithoutLinesAreRefused) {
  Bytes file = EncodeJpeg(Recipe(JCS_GRAYSCALE, 1));
  const size_t frame = korvel_test::MarkerOffset(file, 0xC0);
  file.at(frame + 4) = file.at(frame + 5) = 0;
  EXPECT_EQ(ReadBytes(file).error, IoError("Empty JPEG image (DNL not supported)"));
}

TEST_F(JpegFiles, OfOtherContentAreRefusedInTheCodecsOwnWords) {
  EXPECT_EQ(ReadBytes({}).error, IoError("Empty input file"));
  EXPECT_EQ(ReadBytes(Bytes(100, 'x')).error, IoError("Not a JPEG file: starts with 0x%02x 0x%02x"));
  EXPECT_EQ(ReadBytes({0xFF, 0xD8, 0xFF, 0xD9}).error, IoError("JPEG datastream contains no image"));
}

TEST_F(JpegFiles, ReadWithOtherWarnings) {
  const Bytes file = EncodeJpeg(Recipe(JCS_RGB, 3));
  Bytes extraneous = FirstBytes(file, file.size() - 2);
  extraneous = Joined({extraneous, {1, 2, 3, 4, 0xFF, 0xD9}});
  testing::internal::CaptureStderr();
  const ReadOutcome outcome = ReadBytes(extraneous);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(Holds(outcome, ImageOf(file)));
  EXPECT_TRUE(Holds(ReadBytes(Joined({file, Bytes(50, 7)})), ImageOf(file))) << "bytes behind the image don't count";
}

TEST_F(JpegFiles, AreRefusedWhereverTheyAreCut) {
  for (const bool progressive : {false, true}) {
    JpegRecipe recipe = Recipe(JCS_RGB, 3, 9, 9);
    recipe.progressive = progressive;
    const Bytes file = EncodeJpeg(recipe);
    ASSERT_EQ(ReadBytes(file).code, 0u);
    for (size_t size = 1; size < file.size(); ++size) {
      EXPECT_EQ(ReadBytes(FirstBytes(file, size)).error, kEndsEarly) << size << " of " << file.size();
    }
  }
}

TEST_F(JpegFiles, OfMissingDataAreRefusedThoughTheyHaveAnEnd) {
  for (const bool progressive : {false, true}) {
    JpegRecipe recipe = Recipe(JCS_GRAYSCALE, 1, 64, 64);
    recipe.progressive = progressive;
    const Bytes file = EncodeJpeg(recipe);
    const Bytes cut = Joined({FirstBytes(file, file.size() * 3 / 4), {0, 0xFF, 0xD9}});
    EXPECT_EQ(ReadBytes(cut).error, kDataEndsEarly);
  }
}

TEST_F(JpegFiles, AboveTheLimitAreRefused) {
  for (const bool progressive : {false, true}) {
    JpegRecipe fits = Recipe(JCS_GRAYSCALE, 1, 40, 25);
    JpegRecipe above = Recipe(JCS_GRAYSCALE, 1, 40, 26);
    fits.progressive = above.progressive = progressive;
    // Progressive files are decoded through the coefficients of the whole image, of two bytes each.
    const AllocationLimit limit(progressive ? 1000 + 2 * 40 * 32 : 1000);
    EXPECT_EQ(ReadBytes(EncodeJpeg(fits)).code, 0u);
    EXPECT_EQ(ReadBytes(EncodeJpeg(above)).error, IoError(kCannotRead));
  }
  const AllocationLimit limit(1000);
  EXPECT_EQ(ReadBytes(EncodeJpeg(Recipe(JCS_RGB, 3, 18, 18))).code, 0u);
  EXPECT_EQ(ReadBytes(EncodeJpeg(Recipe(JCS_RGB, 3, 19, 18))).error, IoError(kCannotRead));
}

TEST_F(JpegFiles, OfVeryManyScansAreRefused) {
  // Each scan costs the time of the whole image, however few bytes it has.
  JpegRecipe recipe = Recipe(JCS_GRAYSCALE, 1);
  recipe.progressive = true;
  const Bytes file = EncodeJpeg(recipe);
  const size_t scan = korvel_test::MarkerOffset(file, 0xDA) - 1;
  size_t end = scan + 2;
  while (file.at(end) != 0xFF || file.at(end + 1) == 0) ++end;
  const auto at = [&](size_t offset) { return file.begin() + static_cast<ptrdiff_t>(offset); };
  const auto withScans = [&](int count) {
    Bytes many = FirstBytes(file, scan);
    for (int i = 0; i < count; ++i) many.insert(many.end(), at(scan), at(end));
    many.insert(many.end(), at(end), file.end());
    return many;
  };
  EXPECT_TRUE(Holds(ReadBytes(withScans(1)), ImageOf(file)));
  EXPECT_EQ(ReadBytes(withScans(100)).code, 0u);
  EXPECT_EQ(ReadBytes(withScans(2000)).error, IoError(kCannotRead));
}

TEST_F(JpegFiles, OfHugeSizesAreRefusedBeforeMemoryIsTaken) {
  for (const bool progressive : {false, true}) {
    JpegRecipe recipe = Recipe(JCS_RGB, 3);
    recipe.progressive = progressive;
    Bytes file = EncodeJpeg(recipe);
    const size_t frame = korvel_test::MarkerOffset(file, progressive ? 0xC2 : 0xC0);
    for (const size_t at : {size_t{4}, size_t{6}}) {
      file.at(frame + at) = 0xFF;
      file.at(frame + at + 1) = 0x00;
    }
    const AllocationLimit limit(size_t{64} * 1024 * 1024);
    EXPECT_EQ(ReadBytes(file).error, IoError(kCannotRead));
  }
}

TEST_F(JpegFiles, ExitByExceptionsWithTheTableText) {
  jpeg_error_mgr errors;
  jpeg_compress_struct codec{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  errors.msg_code = 1;  // whatever it is, its words come as they stand in the table
  const std::string words = errors.jpeg_message_table[1];
  const std::optional<korvel_test::LocatedFailure> failure =
      korvel_test::LocatedFailureOf([&] { JPEGReader::JpegErrorExit(reinterpret_cast<j_common_ptr>(&codec)); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->status, 3);
  EXPECT_EQ(failure->module, 9001);
  EXPECT_EQ(failure->text, words);
  EXPECT_THAT(failure->location, HasSubstr("img::io::jpeg::JPEGReader::JpegErrorExit("));
  EXPECT_EQ(codec.mem, nullptr) << "the structure is destroyed";
}

// ---------------------------------------------------------------------------------------------------------------
// writer --

class JpegWriter : public JpegFiles {
 protected:
  Bytes Write(img::PixelFormatId format, uint32_t quality) const {
    const ModelImage model = MakeFilledImage(static_cast<uint32_t>(format), 20, 10, Fill::kRandom, 1);
    const TestImage image(format, 20, 10, model.bytes);
    JPEGWriter::writeImage(Path(), *image, JPEGParameter(quality));
    return ContentOf(Path());
  }
};

TEST_F(JpegWriter, HasTheTablesOfItsQuality) {
  using enum img::PixelFormatId;
  // At 50 the tables are those of the standard.
  const std::vector<uint16_t> luminance = QuantizationTable(Write(RGB8, 50), 0);
  const std::vector<uint16_t> chrominance = QuantizationTable(Write(RGB8, 50), 1);
  EXPECT_THAT(FirstBytes(Bytes(luminance.begin(), luminance.end()), 8), ElementsAre(16, 11, 12, 14, 12, 10, 16, 14));
  EXPECT_THAT(FirstBytes(Bytes(chrominance.begin(), chrominance.end()), 8),
              ElementsAre(17, 18, 18, 24, 21, 24, 47, 26));
  for (const uint32_t best : {100u, 101u, 200u, 0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFFu}) {
    EXPECT_THAT(QuantizationTable(Write(Mono8, best), 0), Each(1)) << best;
  }
  // 75 halves the tables. Nothing keeps those below 25 in a byte.
  EXPECT_EQ(QuantizationTable(Write(Mono8, 75), 0).at(0), 8);
  EXPECT_EQ(QuantizationTable(Write(Mono8, 1), 0).at(0), 800);
  EXPECT_EQ(QuantizationTable(Write(Mono8, 0), 0).at(0), 800);
  EXPECT_EQ(QuantizationTable(Write(Mono8, 10), 0).at(63), 495);
  EXPECT_THAT(QuantizationTable(Write(Mono8, 75), 1), ElementsAre()) << "grey has one table";
}

TEST_F(JpegWriter, LeavesTheRestToTheCodec) {
  using enum img::PixelFormatId;
  EXPECT_THAT(korvel_test::SamplingFactors(Write(BGR8, 75)), ElementsAre(0x22, 0x11, 0x11));
  EXPECT_THAT(korvel_test::SamplingFactors(Write(BGRa8, 100)), ElementsAre(0x22, 0x11, 0x11));
  EXPECT_THAT(korvel_test::SamplingFactors(Write(BayerRG8, 75)), ElementsAre(0x11));
  EXPECT_EQ(JPEGParameter().quality, 75u);
}

TEST_F(JpegWriter, FailsInTheCodecsOwnWords) {
  const TestImage wide(img::PixelFormatId::Mono8, 65501, 1, Bytes(65501, 0));
  const std::optional<korvel_test::LocatedFailure> failure =
      korvel_test::LocatedFailureOf([&] { JPEGWriter::writeImage(Path(), *wide, JPEGParameter()); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->status, 3);
  EXPECT_EQ(failure->module, 9001);
  EXPECT_EQ(failure->text, "Maximum supported image dimension is %u pixels");
  EXPECT_THAT(failure->location, HasSubstr("img::io::jpeg::JPEGReader::JpegErrorExit("));
}

TEST_F(JpegWriter, RefusesFormatsBeforeItOpensAFile) {
  for (const uint32_t format : korvel_test::PublicFormats()) {
    if (korvel_test::HasPlace(FileType::kJpeg, format)) continue;
    const TestImage image(img::PixelFormatId{format}, 4, 2);
    EXPECT_EQ(korvel_test::FailureOf([&] { JPEGWriter::writeImage("/no such directory/a", *image, JPEGParameter()); }),
              (korvel_test::Failure{7, 9001, "Unsupported pixel format"}));
  }
}

}  // namespace
