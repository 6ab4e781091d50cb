// Files as whole values, and the exported functions that write and read them, told apart by file type.
#pragma once

#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>

#include "tests/model/file_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/last_error.h"

namespace korvel_test {

inline Bytes ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("no file " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteFile(const std::string& path, const Bytes& content) {
  // Some file systems bring a file to the disk at once when it is truncated and written again.
  std::filesystem::remove(path);
  std::ofstream file(path, std::ios::binary);
  if (!content.empty()) {
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
  }
  if (!file.flush()) throw std::runtime_error("can't write " + path);
}

inline uint32_t DefaultQuality(FileType type) { return type == FileType::kPng ? 100 : 75; }

inline KORVEL_RETURN_CODE WriteAs(FileType type, KORVEL_IMAGE_HANDLE image, const std::string& path, uint32_t quality) {
  switch (type) {
    case FileType::kBmp:
      return KORVEL_ImageWriter_WriteAsBMP(image, path.data(), path.size());
    case FileType::kPng:
      return KORVEL_ImageWriter_WriteAsPNG(image, quality, path.data(), path.size());
    case FileType::kJpeg:
      return KORVEL_ImageWriter_WriteAsJPG(image, quality, path.data(), path.size());
    case FileType::kRaw:
      return KORVEL_ImageWriter_WriteAsRAW(image, path.data(), path.size());
  }
  throw std::logic_error("no such file type");
}

inline KORVEL_RETURN_CODE WriteAs(FileType type, KORVEL_IMAGE_HANDLE image, const std::string& path) {
  return WriteAs(type, image, path, DefaultQuality(type));
}

inline KORVEL_RETURN_CODE WriteByEnding(KORVEL_IMAGE_HANDLE image, const std::string& path) {
  return KORVEL_ImageWriter_Write(image, path.data(), path.size());
}

inline const std::string kCannotOpen = "Error opening file. Check name and file permissions.";
inline const std::string kCannotRead = "Error reading file.";
inline const std::string kCannotWrite = "Error writing file.";

// The records that the failures of files leave.
inline LastError IoError(const std::string& text) { return {3, "error: type=Io[3], module_id=9001, txt=" + text}; }

inline LastError UnsupportedError() {
  return {7, "error: type=ImageFormatNotSupported[7], module_id=9001, txt=Unsupported pixel format"};
}

inline LastError InterpretationError() {
  return {8,
          "error: type=ImageFormatInterpretationError[8], module_id=9001, txt=Can not interpret image with this pixel "
          "format"};
}

// What a writing function left, for a call that must fail.
inline LastError ErrorOf(KORVEL_RETURN_CODE code) {
  if (code == KORVEL_RETURN_CODE_Success) return {0, "no failure"};
  const LastError error = ReadLastError();
  EXPECT_EQ(error.code, code);
  return error;
}

// The image that a reading function gave, or the failure that it left.
struct ReadOutcome {
  KORVEL_RETURN_CODE code = 0;
  LastError error{};
  uint32_t format = 0;
  size_t width = 0;
  size_t height = 0;
  Bytes bytes;
};

inline ReadOutcome OutcomeOfRead(KORVEL_RETURN_CODE code, KORVEL_IMAGE_HANDLE handle) {
  ReadOutcome outcome;
  outcome.code = code;
  if (code != KORVEL_RETURN_CODE_Success) {
    EXPECT_EQ(handle, nullptr);
    outcome.error = ErrorOf(code);
    return outcome;
  }
  const ExportedImage image(handle);
  EXPECT_EQ(KORVEL_Image_GetWidth(handle, &outcome.width), 0u);
  EXPECT_EQ(KORVEL_Image_GetHeight(handle, &outcome.height), 0u);
  outcome.format = image.Format();
  outcome.bytes = image.Content();
  return outcome;
}

inline ReadOutcome Read(const std::string& path) {
  KORVEL_IMAGE_HANDLE handle = nullptr;
  const KORVEL_RETURN_CODE code = KORVEL_ImageReader_Read(path.data(), path.size(), &handle);
  return OutcomeOfRead(code, handle);
}

inline ReadOutcome ReadAs(const std::string& path, uint32_t format) {
  KORVEL_IMAGE_HANDLE handle = nullptr;
  const KORVEL_RETURN_CODE code = KORVEL_ImageReaderRead_ReadAsPixelFormat(path.data(), path.size(), format, &handle);
  return OutcomeOfRead(code, handle);
}

inline ::testing::AssertionResult Holds(const ReadOutcome& outcome, const ModelImage& expected) {
  if (outcome.code != 0) return ::testing::AssertionFailure() << outcome.error;
  if (outcome.format != expected.format) return ::testing::AssertionFailure() << "format " << outcome.format;
  if (outcome.width != expected.width || outcome.height != expected.height) {
    return ::testing::AssertionFailure() << outcome.width << " by " << outcome.height;
  }
  if (outcome.bytes != expected.bytes) return ::testing::AssertionFailure() << "other pixels";
  return ::testing::AssertionSuccess();
}

}  // namespace korvel_test
