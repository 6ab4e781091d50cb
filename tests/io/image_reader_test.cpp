#include "io/image_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "buffers/vector_image_buffer.h"
#include "io/bmp/bmp_reader.h"
#include "io/image_writer.h"
#include "io/jpeg/jpeg_reader.h"
#include "io/png/png_reader.h"
#include "io/raw/raw_reader.h"
#include "tests/model/file_model.h"
#include "tests/support/exported_files.h"
#include "tests/support/failure.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::buffer::IfcBufferFactory;
using img::buffer::IfcImageBuffer;
using img::io::ImageReader;
using korvel_test::Bytes;
using korvel_test::EndingOf;
using korvel_test::FileType;
using korvel_test::kFileTypes;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using korvel_test::TemporaryDirectory;
using korvel_test::TestImage;
using testing::HasSubstr;

// Counts what it is asked for.
class CountingFactory : public IfcBufferFactory {
 public:
  std::shared_ptr<IfcImageBuffer> AllocBuffer(PixelFormatId format, const img::Size2D& size) override {
    ++calls;
    return img::buffer::VectorImageBuffer::AllocBuffer(format, size);
  }

  int calls = 0;
};

class FactoryOfNothing : public IfcBufferFactory {
 public:
  std::shared_ptr<IfcImageBuffer> AllocBuffer(PixelFormatId, const img::Size2D&) override { return nullptr; }
};

class ImageReaderTest : public testing::Test {
 protected:
  std::string Written(FileType type) const {
    const TestImage image(PixelFormatId::Mono8, 3, 2, Bytes{10, 20, 30, 40, 50, 60});
    std::string path = directory.File("a" + EndingOf(type));
    img::io::ImageWriter::writeImage(*image, path);
    return path;
  }
  std::shared_ptr<IfcBufferFactory> Vectors() const {
    return std::make_shared<img::buffer::VectorImageBufferFactory>();
  }

  TemporaryDirectory directory;
};

void ExpectIo(const std::optional<LocatedFailure>& failure, const std::string& location, const std::string& text) {
  ASSERT_TRUE(failure.has_value()) << text;
  EXPECT_EQ(failure->status, 3);
  EXPECT_EQ(failure->module, 9001);
  EXPECT_EQ(failure->text, text);
  EXPECT_THAT(failure->location, HasSubstr(location));
}

TEST_F(ImageReaderTest, MakesTheInputOfTheEndingWithoutTouchingTheFile) {
  const std::shared_ptr<IfcBufferFactory> factory = Vectors();
  const auto make = [&](const char* path) { return ImageReader::createImageReader(path, factory); };
  EXPECT_NE(dynamic_cast<img::io::bmp::BMPInput*>(make("/missing/a.BMP").get()), nullptr);
  EXPECT_NE(dynamic_cast<img::io::png::PNGInput*>(make("/missing/a.png").get()), nullptr);
  EXPECT_NE(dynamic_cast<img::io::jpeg::JPEGInput*>(make("/missing/a.jpg").get()), nullptr);
  EXPECT_NE(dynamic_cast<img::io::jpeg::JPEGInput*>(make("a.JPEG").get()), nullptr);
  EXPECT_NE(dynamic_cast<img::io::raw::RAWInput*>(make("a.raw").get()), nullptr);
}

TEST_F(ImageReaderTest, TellsWhatIsWrongWithAPath) {
  const auto factory = Vectors();
  const std::string location = "img::io::ImageReader::createImageReader(";
  for (const char* path : {"", "/", "dir/", "a.png/"}) {
    ExpectIo(LocatedFailureOf([&] { ImageReader::createImageReader(path, factory); }), location,
             "ImageReader: Filename invalid!");
    ExpectIo(LocatedFailureOf([&] { ImageReader::readImage(path, factory); }), location,
             "ImageReader: Filename invalid!");
  }
  for (const char* path : {"a", "a.tif", ".bmp", "dir.png/a"}) {
    ExpectIo(LocatedFailureOf([&] { ImageReader::createImageReader(path, factory); }), location,
             "ImageReader: Unknown file format!");
    ExpectIo(LocatedFailureOf([&] { ImageReader::readImage(path, factory, PixelFormatId::Mono8); }), location,
             "ImageReader: Unknown file format!");
  }
}

TEST_F(ImageReaderTest, TellsThatNoImageWasMade) {
  const auto factory = std::make_shared<FactoryOfNothing>();
  for (const FileType type : kFileTypes) {
    const std::string path = Written(type);
    const size_t descriptors = korvel_test::OpenDescriptors();
    const std::string text = "ImageReader: Invalid file!";
    ExpectIo(LocatedFailureOf([&] { ImageReader::readImage(path, factory); }), "img::io::ImageReader::readImage(",
             text);
    ExpectIo(LocatedFailureOf([&] { ImageReader::readImage(path, factory, PixelFormatId::Mono8); }),
             "img::io::ImageReader::readImage(", text);
    EXPECT_EQ(korvel_test::OpenDescriptors(), descriptors);
  }
}

TEST_F(ImageReaderTest, TakesOneBufferFromTheFactory) {
  for (const FileType type : kFileTypes) {
    const auto factory = std::make_shared<CountingFactory>();
    const auto image = ImageReader::readImage(Written(type), factory);
    EXPECT_EQ(factory->calls, 1);
    EXPECT_EQ(image->Area().size.width, 3u);
    EXPECT_EQ(image->Area().size.height, 2u);
    EXPECT_EQ(image->PixelFormat(), PixelFormatId::Mono8);
    ImageReader::readImage(Written(type), factory, PixelFormatId::Mono8);
    EXPECT_EQ(factory->calls, 2);
    EXPECT_TRUE(LocatedFailureOf([&] { ImageReader::readImage(Written(type), factory, PixelFormatId::RGB12); }));
    EXPECT_EQ(factory->calls, 2) << "a refused request takes no memory";
  }
}

TEST_F(ImageReaderTest, TakesNoMemoryForAFileThatIsTooShort) {
  const auto factory = std::make_shared<CountingFactory>();
  const auto expectRefused = [&](FileType type, const Bytes& file) {
    const std::string path = directory.File("short" + EndingOf(type));
    korvel_test::WriteFile(path, file);
    ExpectIo(LocatedFailureOf([&] { ImageReader::readImage(path, factory); }), "Reader::readImage(",
             korvel_test::kCannotRead);
    EXPECT_EQ(factory->calls, 0) << EndingOf(type);
  };
  const auto image = korvel_test::MakeModelImage(korvel_test::IdOf("Mono8"), 4, 2, {1, 2, 3, 4, 5, 6, 7, 8});
  for (const auto& [type, file] : {std::pair<FileType, Bytes>{FileType::kBmp, korvel_test::BmpFile(image)},
                                   {FileType::kRaw, korvel_test::RawFile(image)}}) {
    expectRefused(type, Bytes(file.begin(), file.end() - 1));
  }
  expectRefused(FileType::kPng,
                korvel_test::Joined({korvel_test::PngSignature(), korvel_test::PngHeaderChunk(100000, 100000, 8, 0),
                                     korvel_test::PngChunk("IDAT", {0x78, 1})}));
}

TEST_F(ImageReaderTest, ReadsIntoAPoolWhoseMemoryHoldsOtherPixels) {
  const auto pool = std::make_shared<img::buffer::MultiFormatBufferPool>(
      std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1);
  for (const FileType type : kFileTypes) {
    const std::string path = Written(type);
    const Bytes expected = korvel_test::BytesOf(*ImageReader::readImage(path, Vectors()));
    {
      const auto used = pool->AllocBuffer(PixelFormatId::Mono8, img::Size2D{3, 2});
      std::memset(used->Data(), 0xEE, used->ByteCount());
    }
    EXPECT_EQ(korvel_test::BytesOf(*ImageReader::readImage(path, pool)), expected) << EndingOf(type);
  }
}

}  // namespace
