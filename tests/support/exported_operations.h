// Exported functions that turn an image into another or change it, run on images over the caller's memory and compared
// with what a model says.
#pragma once

#include <korvel/korvel.h>

#include <functional>
#include <string>
#include <string_view>

#include "tests/model/conversion_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/last_error.h"

namespace korvel_test {

// An image over the caller's memory at an odd address. Marked bytes surround it, and the page behind them can't be
// touched.
class OddImage {
 public:
  explicit OddImage(const ModelImage& content);

  KORVEL_IMAGE_HANDLE Handle() const { return image_.Handle(); }
  Bytes Content() const { return Bytes(Data(), Data() + byteCount_); }
  uint8_t* Data() const { return memory_.Data() + kMargin; }
  bool IsMarkedOutside() const;

 private:
  static constexpr size_t kMargin = 64;
  static constexpr uint8_t kMark = 0xA5;

  KORVEL_IMAGE_HANDLE MakeHandle(const ModelImage& content) const;

  size_t byteCount_;
  size_t tail_;  // marked bytes behind the image, so that it begins at an odd address
  CallersMemory memory_;
  ExportedImage image_;
};

// Empty if both agree in every bit that the model gave a value.
std::string Difference(const ModelImage& expected, const Bytes& actual);

using MakesImage = std::function<KORVEL_RETURN_CODE(KORVEL_IMAGE_HANDLE, KORVEL_IMAGE_HANDLE*)>;
using ChangesImage = std::function<KORVEL_RETURN_CODE(KORVEL_IMAGE_HANDLE)>;

// What no function writes into a handle.
inline const auto kUnwrittenHandle = reinterpret_cast<KORVEL_IMAGE_HANDLE>(uintptr_t{0x5A5A});

// The call succeeds, gives the image and leaves input, surroundings and last error alone.
void ExpectNewImage(const ModelImage& input, const ModelImage& expected, const MakesImage& call);
// The call succeeds, makes the input the image and leaves surroundings and last error alone.
void ExpectChangedImage(const ModelImage& input, const ModelImage& expected, const ChangesImage& call);

// The call fails so, writes no handle and leaves the input alone.
void ExpectNoImage(const ModelImage& input, const LastError& expected, const MakesImage& call);
void ExpectUnchangedImage(const ModelImage& input, const LastError& expected, const ChangesImage& call);

// Gives check images of a format: sizes from 1 x 1 up, odd and even, with all kinds of content. A fixed sample by
// default; KORVEL_TEST_FULL_SWEEP=1 takes every size up to 33 x 33. The number is a seed of the image's own. Ends with
// the first image at which the test fails.
void ForEachSample(uint32_t format, const std::function<void(const ModelImage&, uint64_t)>& check);

// How functions refuse formats.
LastError RefusalAsPacked(std::string_view operation);
LastError RefusalOfFormat(uint32_t format);

}  // namespace korvel_test
