// Files that the library writes, as programs see them that nobody here wrote: pngcheck, ImageMagick and djpeg.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/model/file_model.h"
#include "tests/support/exported_files.h"
#include "tests/support/exported_objects.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_images.h"

namespace {

using korvel_test::Bytes;
using korvel_test::ExportedImage;
using korvel_test::FileType;
using korvel_test::Fill;
using korvel_test::IdOf;
using korvel_test::MakeFilledImage;
using korvel_test::ModelImage;

// What a command prints. It must succeed.
Bytes OutputOf(const std::string& command) {
  FILE* const pipe = popen(command.c_str(), "re");
  if (pipe == nullptr) throw std::runtime_error("no shell");
  Bytes output;
  Bytes block(65536);
  for (size_t count = 0; (count = std::fread(block.data(), 1, block.size(), pipe)) != 0;) {
    output.insert(output.end(), block.begin(), block.begin() + static_cast<ptrdiff_t>(count));
  }
  const int status = pclose(pipe);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
      << command << ": scripts/install-dependencies.sh installs what is missing here";
  return output;
}

class ForeignPrograms : public testing::Test {
 protected:
  std::string Written(FileType type, const ModelImage& model) const {
    const ExportedImage image(model.format, model.width, model.height, model.bytes);
    std::string path = directory.File("a" + korvel_test::EndingOf(type));
    EXPECT_EQ(korvel_test::WriteByEnding(image.Handle(), path), 0u);
    return path;
  }
  // The samples that ImageMagick finds in a file, in its order of channels, as words of the machine. It is told not to
  // compare a BMP file's length with the header's, which doesn't count masks and colour table.
  std::vector<uint16_t> Magick(const std::string& path, const std::string& channels) const {
    return korvel_test::WordsOfBytes<uint16_t>(OutputOf("convert-im6.q16 -define bmp:ignore-filesize=true '" + path +
                                                        "' -depth 16 -endian LSB " + channels + ":-"));
  }

  korvel_test::TemporaryDirectory directory;
};

// Samples of 8 bits as those of 16 that mean the same.
std::vector<uint16_t> Widened(const Bytes& samples) {
  std::vector<uint16_t> words;
  for (const uint8_t sample : samples) words.push_back(static_cast<uint16_t>(sample * 257));
  return words;
}

const char* MagickChannels(uint8_t colourType) { return colourType == 0 ? "gray" : colourType == 2 ? "rgb" : "rgba"; }

TEST_F(ForeignPrograms, FindPngFilesSoundAndTheirSamplesInPlace) {
  for (const uint32_t format : korvel_test::PublicFormats()) {
    if (!korvel_test::HasPlace(FileType::kPng, format)) continue;
    SCOPED_TRACE(korvel_test::FormatOf(format).name);
    const ModelImage model = MakeFilledImage(format, 23, 11, Fill::kRandom, format);
    const std::string path = Written(FileType::kPng, model);
    const Bytes report = OutputOf("pngcheck -v '" + path + "'");
    EXPECT_NE(std::string(report.begin(), report.end()).find("No errors detected"), std::string::npos);
    const korvel_test::FormatInPng& place = korvel_test::PlaceInFiles(format).png;
    const std::vector<uint16_t> expected = korvel_test::PngSamples(model);
    const std::vector<uint16_t> found = Magick(path, MagickChannels(place.colourType));
    ASSERT_EQ(found.size(), expected.size());
    const int shift = place.depth == 8 ? 8 : 16 - place.significantBits;
    for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(found[i] >> shift, expected[i]) << "sample " << i;
  }
}

// The samples of an image of 8 bits without alpha, red first.
Bytes RedGreenBlue(const ModelImage& model, size_t channels, bool blueFirst) {
  Bytes samples;
  for (size_t i = 0; i < model.bytes.size(); i += channels) {
    for (size_t channel = 0; channel < 3; ++channel) {
      samples.push_back(model.bytes[i + (blueFirst ? 2 - channel : channel)]);
    }
  }
  return samples;
}

TEST_F(ForeignPrograms, SeeTheColoursOfBmpFilesWhoseLinesArePlain) {
  // A line's padding is what other programs expect where its remainder by 4 is 0 or 2.
  const struct {
    uint32_t format;
    size_t channels;
    bool blueFirst;
    std::vector<size_t> widths;
  } cases[] = {
      {IdOf("Mono8"), 1, false, {4, 6, 22}},    {IdOf("BayerRG8"), 1, false, {8, 10}},
      {IdOf("RGB8"), 3, false, {4, 6, 22}},     {IdOf("BGR8"), 3, true, {4, 6, 22}},
      {IdOf("RGBa8"), 4, false, {1, 3, 4, 22}}, {IdOf("BGRa8"), 4, true, {1, 3, 4, 22}},
  };
  for (const auto& [format, channels, blueFirst, widths] : cases) {
    for (const size_t width : widths) {
      SCOPED_TRACE(testing::Message() << korvel_test::FormatOf(format).name << ", width " << width);
      const ModelImage model = MakeFilledImage(format, width, 7, Fill::kRandom, width);
      const std::string path = Written(FileType::kBmp, model);
      if (channels == 1) {
        EXPECT_EQ(Magick(path, "gray"), Widened(model.bytes));
      } else {
        EXPECT_EQ(Magick(path, "rgb"), Widened(RedGreenBlue(model, channels, blueFirst)));
      }
    }
  }
}

TEST_F(ForeignPrograms, DecodeJpegFilesToThePixelsThatTheLibraryReads) {
  for (const uint32_t format : korvel_test::PublicFormats()) {
    if (!korvel_test::HasPlace(FileType::kJpeg, format)) continue;
    SCOPED_TRACE(korvel_test::FormatOf(format).name);
    const ModelImage model = MakeFilledImage(format, 23, 11, Fill::kRandom, format);
    const std::string path = Written(FileType::kJpeg, model);
    const Bytes decoded = OutputOf("djpeg -pnm '" + path + "'");
    const korvel_test::ReadOutcome outcome = korvel_test::Read(path);
    ASSERT_EQ(outcome.code, 0u);
    const std::string head = outcome.format == IdOf("Mono8") ? "P5\n23 11\n255\n" : "P6\n23 11\n255\n";
    ASSERT_EQ(std::string(decoded.begin(), decoded.begin() + static_cast<ptrdiff_t>(head.size())), head);
    EXPECT_EQ(Bytes(decoded.begin() + static_cast<ptrdiff_t>(head.size()), decoded.end()), outcome.bytes);
  }
}

}  // namespace
