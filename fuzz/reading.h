// Reading files through the exported functions, with what holds for every file checked on the way.
#pragma once

#include <korvel/korvel.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/session.h"
#include "tests/model/file_model.h"

namespace korvel_fuzz {

// Whether images may have this format.
bool IsPublic(uint32_t format);

// A handle and what it stands for; the handle is destroyed with it. Fails unless the image has a public format, at
// least one pixel, and the bytes of all its pixels in memory that can be read.
class HeldImage {
 public:
  explicit HeldImage(KORVEL_IMAGE_HANDLE handle);

  uint32_t Format() const { return format_; }
  size_t Width() const { return width_; }
  size_t Height() const { return height_; }
  ByteView Bytes() const { return bytes_; }

  bool HasSamePixels(const HeldImage& other) const;

 private:
  struct Destroyer {
    void operator()(KORVEL_IMAGE_HANDLE handle) const;
  };

  std::unique_ptr<KORVEL_IMAGE_HANDLE_S, Destroyer> handle_;
  uint32_t format_ = 0;
  size_t width_ = 0;
  size_t height_ = 0;
  ByteView bytes_;
};

// What a failed call leaves: its code in the thread's record, and a text. Fails if it is a success.
void RequireFailure(KORVEL_RETURN_CODE code);

struct ReadOutcome {
  KORVEL_RETURN_CODE code = KORVEL_RETURN_CODE_Success;
  std::optional<HeldImage> image = std::nullopt;  // after a success
};

ReadOutcome Read(const std::string& path);
ReadOutcome ReadAs(const std::string& path, uint32_t format);

// Reads inputs as files of one type. After each of them a sound file must still be read right, and no descriptor may be
// left open.
class ReaderSession {
 public:
  // Failures of a reader may have these codes alone.
  ReaderSession(korvel_test::FileType type, std::vector<KORVEL_RETURN_CODE> codesOfFailures);

  // Calls check, unless it is null, with what the reader made of the input.
  void Run(ByteView file, void (*check)(ByteView file, const ReadOutcome& outcome));

 private:
  void RequireSoundFileReads() const;

  Session session_;
  std::vector<KORVEL_RETURN_CODE> codesOfFailures_;
  ScratchFile file_;
  std::string soundPath_;
  korvel_test::ModelImage soundImage_;
};

}  // namespace korvel_fuzz
