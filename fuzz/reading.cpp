#include "fuzz/reading.h"

#include <algorithm>
#include <utility>

#include "fuzz/seeds.h"

namespace korvel_fuzz {
namespace {

using korvel_test::FileType;
using korvel_test::ModelImage;

// A flat image, which comes back from a JPEG file as it was.
ModelImage SoundImage() {
  return korvel_test::MakeModelImage(KORVEL_PIXEL_FORMAT_Mono8, 3, 2, std::vector<uint8_t>(6, 0x55));
}

ReadOutcome OutcomeOf(KORVEL_RETURN_CODE code, KORVEL_IMAGE_HANDLE handle) {
  ReadOutcome outcome;
  outcome.code = code;
  if (code == KORVEL_RETURN_CODE_Success) {
    outcome.image.emplace(handle);
  } else {
    RequireFailure(code);
    KORVEL_FUZZ_REQUIRE(handle == nullptr);
  }
  return outcome;
}

}  // namespace

bool IsPublic(uint32_t format) {
  const korvel_test::FormatRow* const row = korvel_test::FindFormat(format);
  return row != nullptr && korvel_test::IsPublicFormat(*row);
}

HeldImage::HeldImage(KORVEL_IMAGE_HANDLE handle) : handle_(handle) {
  size_t byteCount = 0;
  uint8_t* data = nullptr;
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetPixelFormat(handle, &format_) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetWidth(handle, &width_) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetHeight(handle, &height_) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetByteCount(handle, &byteCount) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetData(handle, &data) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(IsPublic(format_));
  KORVEL_FUZZ_REQUIRE(width_ >= 1 && height_ >= 1);
  KORVEL_FUZZ_REQUIRE(byteCount == korvel_test::BytesOfImage(format_, width_, height_));
  KORVEL_FUZZ_REQUIRE(byteCount <= Session::kLargestAllocation);
  KORVEL_FUZZ_REQUIRE(data != nullptr);
  bytes_ = {data, byteCount};
}

void HeldImage::Destroyer::operator()(KORVEL_IMAGE_HANDLE handle) const {
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_Destruct(handle) == KORVEL_RETURN_CODE_Success);
}

bool HeldImage::HasSamePixels(const HeldImage& other) const {
  return width_ == other.width_ && height_ == other.height_ && std::ranges::equal(bytes_, other.bytes_);
}

void RequireFailure(KORVEL_RETURN_CODE code) {
  KORVEL_FUZZ_REQUIRE(code != KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(code <= KORVEL_RETURN_CODE_Timeout);
  uint32_t recorded = 0;
  size_t size = 0;
  KORVEL_FUZZ_REQUIRE(KORVEL_Library_GetLastError(&recorded, nullptr, &size) == KORVEL_RETURN_CODE_Success);
  std::string text(size, '\xFF');
  KORVEL_FUZZ_REQUIRE(KORVEL_Library_GetLastError(&recorded, text.data(), &size) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(recorded == code);
  KORVEL_FUZZ_REQUIRE(size == text.size() && size > 1 && text.find('\0') == size - 1);
}

ReadOutcome Read(const std::string& path) {
  KORVEL_IMAGE_HANDLE handle = nullptr;
  const KORVEL_RETURN_CODE code = KORVEL_ImageReader_Read(path.data(), path.size(), &handle);
  return OutcomeOf(code, handle);
}

ReadOutcome ReadAs(const std::string& path, uint32_t format) {
  KORVEL_IMAGE_HANDLE handle = nullptr;
  const KORVEL_RETURN_CODE code = KORVEL_ImageReaderRead_ReadAsPixelFormat(path.data(), path.size(), format, &handle);
  return OutcomeOf(code, handle);
}

ReaderSession::ReaderSession(FileType type, std::vector<KORVEL_RETURN_CODE> codesOfFailures)
    : codesOfFailures_(std::move(codesOfFailures)),
      file_(session_.PathOf("input" + korvel_test::EndingOf(type))),
      soundPath_(session_.PathOf("sound" + korvel_test::EndingOf(type))),
      soundImage_(SoundImage()) {
  ScratchFile(soundPath_).Rewrite(FileOf(type, soundImage_));
}

void ReaderSession::Run(ByteView file, void (*check)(ByteView file, const ReadOutcome& outcome)) {
  const DescriptorCheck descriptors;
  file_.Rewrite(file);
  const ReadOutcome outcome = Read(file_.Path());
  if (outcome.image) {
    const ReadOutcome again = ReadAs(file_.Path(), outcome.image->Format());
    KORVEL_FUZZ_REQUIRE(again.image && again.image->Format() == outcome.image->Format());
    KORVEL_FUZZ_REQUIRE(again.image->HasSamePixels(*outcome.image));
  } else {
    KORVEL_FUZZ_REQUIRE(std::ranges::find(codesOfFailures_, outcome.code) != codesOfFailures_.end());
  }
  if (check != nullptr) check(file, outcome);
  RequireSoundFileReads();
}

void ReaderSession::RequireSoundFileReads() const {
  const ReadOutcome outcome = Read(soundPath_);
  KORVEL_FUZZ_REQUIRE(outcome.image);
  KORVEL_FUZZ_REQUIRE(outcome.image->Width() == soundImage_.width && outcome.image->Height() == soundImage_.height);
  KORVEL_FUZZ_REQUIRE(std::ranges::equal(outcome.image->Bytes(), soundImage_.bytes));
}

}  // namespace korvel_fuzz
