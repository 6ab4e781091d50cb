// Images of every format written to files of every type, and read back: the same pixels where the type keeps them, a
// failure of the documented kind elsewhere.
#include <korvel/korvel.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/input_layouts.h"
#include "fuzz/reading.h"

namespace {

using korvel_fuzz::HeldImage;
using korvel_fuzz::ReadOutcome;
using korvel_fuzz::WriteRequest;
using korvel_test::FileType;
using korvel_test::kFileTypes;
using korvel_test::kFormatTable;
using korvel_test::ModelImage;

// Samples of PNG files are shifted up by what they lack to 16 bits, so those above the format's maximum don't fit.
void KeepSignificantBits(ModelImage& image) {
  const korvel_test::FormatRow& format = korvel_test::FormatOf(image.format);
  const size_t pixels = image.width * image.height;
  auto samples = korvel_test::DecodeSamples(image.format, pixels, image.bytes);
  for (uint32_t& sample : samples) sample &= format.maximum;
  image.bytes = korvel_test::EncodeSamples(image.format, pixels, samples);
}

ModelImage ImageOf(FileType type, const WriteRequest& request, korvel_fuzz::ByteView pixels) {
  const korvel_test::FormatRow& format = kFormatTable[request.format % kFormatTable.size()];
  // Internal formats can't be made, so Invalid takes their turn.
  const uint32_t id = korvel_test::IsPublicFormat(format) ? format.id : uint32_t{KORVEL_PIXEL_FORMAT_Invalid};
  const size_t width = size_t{request.width} + 1;
  const size_t height = size_t{request.height} + 1;
  korvel_test::Bytes bytes(korvel_test::BytesOfImage(id, width, height));
  const size_t given = std::min(bytes.size(), pixels.size());
  std::copy_n(pixels.begin(), given, bytes.begin());
  korvel_test::ModelRandom random(request.seed);
  for (size_t i = given; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(random.Next());
  ModelImage image = korvel_test::MakeModelImage(id, width, height, std::move(bytes));
  if (type == FileType::kPng && korvel_test::HasPlace(type, id)) KeepSignificantBits(image);
  return image;
}

KORVEL_RETURN_CODE Write(FileType type, const WriteRequest& request, KORVEL_IMAGE_HANDLE image,
                         const std::string& path) {
  if (request.byEnding % 2 != 0) return KORVEL_ImageWriter_Write(image, path.data(), path.size());
  switch (type) {
    case FileType::kBmp:
      return KORVEL_ImageWriter_WriteAsBMP(image, path.data(), path.size());
    case FileType::kPng:
      return KORVEL_ImageWriter_WriteAsPNG(image, request.quality, path.data(), path.size());
    case FileType::kJpeg:
      return KORVEL_ImageWriter_WriteAsJPG(image, request.quality, path.data(), path.size());
    case FileType::kRaw:
      return KORVEL_ImageWriter_WriteAsRAW(image, path.data(), path.size());
  }
  std::abort();
}

// Levels run from -1 to 9, and the quality isn't guarded.
bool GivesCompressionLevel(uint32_t quality) { return quality >= 1 && quality < 120; }

KORVEL_RETURN_CODE ExpectedCode(FileType type, const WriteRequest& request, const ModelImage& image) {
  if (!korvel_test::HasPlace(type, image.format)) return KORVEL_RETURN_CODE_ImageFormatNotSupported;
  const bool fails = type == FileType::kPng && request.byEnding % 2 == 0 && !GivesCompressionLevel(request.quality);
  return fails ? KORVEL_RETURN_CODE_Io : KORVEL_RETURN_CODE_Success;
}

korvel_test::Bytes ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// At the best quality each coefficient is rounded to a whole number, so that no sample moves far.
bool IsClose(const ModelImage& written, const HeldImage& read) {
  constexpr int kLargestDifference = 8;
  return std::ranges::equal(written.bytes, read.Bytes(),
                            [](uint8_t a, uint8_t b) { return std::abs(int{a} - int{b}) <= kLargestDifference; });
}

void RequireReadsBack(FileType type, const WriteRequest& request, const ModelImage& image, const std::string& path) {
  const ReadOutcome outcome = korvel_fuzz::Read(path);
  KORVEL_FUZZ_REQUIRE(outcome.image);
  KORVEL_FUZZ_REQUIRE(outcome.image->Format() == korvel_test::ReadBackFormat(type, image.format));
  KORVEL_FUZZ_REQUIRE(outcome.image->Width() == image.width && outcome.image->Height() == image.height);
  if (type != FileType::kJpeg) {
    KORVEL_FUZZ_REQUIRE(std::ranges::equal(outcome.image->Bytes(), korvel_test::ReadBack(type, image).bytes));
  } else if (request.byEnding % 2 == 0 && request.quality >= 100 && korvel_test::FormatOf(image.format).channels == 1) {
    KORVEL_FUZZ_REQUIRE(IsClose(image, *outcome.image));
  }
}

void RoundTrip(const korvel_fuzz::Session& session, const WriteRequest& request, korvel_fuzz::ByteView pixels) {
  const korvel_fuzz::DescriptorCheck descriptors;
  const FileType type = kFileTypes[request.fileType % std::size(kFileTypes)];
  ModelImage image = ImageOf(type, request, pixels);
  const korvel_test::Bytes before = image.bytes;
  KORVEL_IMAGE_HANDLE handle = nullptr;
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_ConstructFromBuffer(image.format, image.bytes.data(), image.bytes.size(),
                                                       image.width, image.height,
                                                       &handle) == KORVEL_RETURN_CODE_Success);
  const std::string path = session.PathOf("image" + korvel_test::EndingOf(type));
  std::filesystem::remove(path);
  const KORVEL_RETURN_CODE code = Write(type, request, handle, path);
  KORVEL_FUZZ_REQUIRE(code == ExpectedCode(type, request, image));
  if (code == KORVEL_RETURN_CODE_Success) {
    RequireReadsBack(type, request, image, path);
    const korvel_test::Bytes file = ContentOf(path);
    KORVEL_FUZZ_REQUIRE(Write(type, request, handle, path) == KORVEL_RETURN_CODE_Success);
    KORVEL_FUZZ_REQUIRE(ContentOf(path) == file);
  } else {
    korvel_fuzz::RequireFailure(code);
    const bool mayLeaveFile = code == KORVEL_RETURN_CODE_Io;
    KORVEL_FUZZ_REQUIRE(mayLeaveFile || !std::filesystem::exists(path));
  }
  KORVEL_FUZZ_REQUIRE(image.bytes == before);
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_Destruct(handle) == KORVEL_RETURN_CODE_Success);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const korvel_fuzz::Session session;
  const WriteRequest request = korvel_fuzz::DecodeHead(korvel_fuzz::kWriteRequestLayout, data, size);
  RoundTrip(session, request, {data, size});
  return 0;
}
