#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/last_error.h"

namespace {

using korvel_test::LastError;
using korvel_test::MarkLastError;
using korvel_test::ReadLastError;
using testing::Each;
using testing::EndsWith;
using testing::StartsWith;

constexpr size_t kMax = std::numeric_limits<size_t>::max();

constexpr uint32_t kUnknownId = 0x01080002;
constexpr uint32_t kLayoutId1Ch8 = 0xFFFF0108;
constexpr uint32_t kLayoutId4Ch8 = 0xFFFF0408;

// What a result pointer holds before a call, to see whether the call writes to it.
const auto kNoHandle = reinterpret_cast<KORVEL_IMAGE_HANDLE>(0x5A5A);
uint8_t* const kNoPointer = reinterpret_cast<uint8_t*>(0x5A5A);
constexpr size_t kNoSize = 0x5A5A;
constexpr uint32_t kNoFormat = 0x5A5A;

class Image {
 public:
  explicit Image(uint32_t format, size_t width, size_t height) {
    EXPECT_EQ(KORVEL_Image_Construct(format, width, height, &handle_), 0u);
  }
  Image(uint32_t format, uint8_t* memory, size_t memorySize, size_t width, size_t height) {
    EXPECT_EQ(KORVEL_Image_ConstructFromBuffer(format, memory, memorySize, width, height, &handle_), 0u);
  }
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  ~Image() { EXPECT_EQ(KORVEL_Image_Destruct(handle_), 0u); }

  KORVEL_IMAGE_HANDLE Handle() const { return handle_; }

  size_t Width() const { return SizeFrom(KORVEL_Image_GetWidth); }
  size_t Height() const { return SizeFrom(KORVEL_Image_GetHeight); }
  size_t ByteCount() const { return SizeFrom(KORVEL_Image_GetByteCount); }

  uint32_t Format() const {
    uint32_t format = kNoFormat;
    EXPECT_EQ(KORVEL_Image_GetPixelFormat(handle_, &format), 0u);
    return format;
  }

  uint8_t* Data() const {
    uint8_t* data = kNoPointer;
    EXPECT_EQ(KORVEL_Image_GetData(handle_, &data), 0u);
    return data;
  }

  uint8_t* PixelPointer(size_t x, size_t y) const {
    uint8_t* pointer = kNoPointer;
    EXPECT_EQ(KORVEL_Image_GetPixelPointer(handle_, x, y, &pointer), 0u);
    return pointer;
  }

 private:
  size_t SizeFrom(KORVEL_RETURN_CODE (*getter)(KORVEL_IMAGE_HANDLE, size_t*)) const {
    size_t value = kNoSize;
    EXPECT_EQ(getter(handle_, &value), 0u);
    return value;
  }

  KORVEL_IMAGE_HANDLE handle_ = kNoHandle;
};

KORVEL_IMAGE_HANDLE DestroyedHandle() {
  KORVEL_IMAGE_HANDLE handle = nullptr;
  EXPECT_EQ(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_Mono8, 2, 2, &handle), 0u);
  EXPECT_EQ(KORVEL_Image_Destruct(handle), 0u);
  return handle;
}

// A handle's value moved by some bytes.
KORVEL_IMAGE_HANDLE Beside(KORVEL_IMAGE_HANDLE handle, ptrdiff_t bytes) {
  return reinterpret_cast<KORVEL_IMAGE_HANDLE>(reinterpret_cast<intptr_t>(handle) + bytes);
}

// ---------------------------------------------------------------------------------------------------- construction --

TEST(ImageConstruct, MakesAZeroedImageOfEveryPublicFormat) {
  const LastError before = MarkLastError();
  size_t formats = 0;
#define KORVEL_EXPECT_ZEROED(name, id)                                          \
  {                                                                             \
    SCOPED_TRACE(#name);                                                        \
    ++formats;                                                                  \
    const Image image(id, 5, 3);                                                \
    EXPECT_EQ(image.Format(), id);                                              \
    EXPECT_EQ(image.Width(), 5u);                                               \
    EXPECT_EQ(image.Height(), 3u);                                              \
    const uint8_t* const data = image.Data();                                   \
    ASSERT_NE(data, nullptr);                                                   \
    EXPECT_THAT(std::vector<uint8_t>(data, data + image.ByteCount()), Each(0)); \
  }
  KORVEL_PIXEL_FORMATS(KORVEL_EXPECT_ZEROED)
#undef KORVEL_EXPECT_ZEROED
  EXPECT_EQ(formats, 49u);
  EXPECT_EQ(ReadLastError(), before);
}

TEST(ImageConstruct, CountsTheBytesOfEachKindOfFormat) {
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_Mono8, 5, 3).ByteCount(), 15u);
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_Mono10, 5, 3).ByteCount(), 30u);
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_BayerRG10p, 5, 3).ByteCount(), 19u);
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_Mono12g24Qrv, 5, 3).ByteCount(), 23u);
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_BGR8, 5, 3).ByteCount(), 45u);
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_RGB10p32, 5, 3).ByteCount(), 60u);
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_BGRa8, 5, 3).ByteCount(), 60u);
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_RGB12, 5, 3).ByteCount(), 90u);
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_RGBa10, 5, 3).ByteCount(), 120u);
  EXPECT_EQ(Image(KORVEL_PIXEL_FORMAT_Invalid, 5, 3).ByteCount(), 15u);
}

TEST(ImageConstruct, GivesEachImageAHandleAndMemoryOfItsOwn) {
  const Image first(KORVEL_PIXEL_FORMAT_Mono8, 5, 3);
  const Image second(KORVEL_PIXEL_FORMAT_Mono8, 5, 3);
  EXPECT_NE(first.Handle(), second.Handle());
  EXPECT_NE(first.Data(), second.Data());
}

TEST(ImageConstruct, ChecksItsPointerBeforeItsValues) {
  EXPECT_EQ(KORVEL_Image_Construct(kUnknownId, 0, 0, nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "imageHandle is not a valid pointer!"}));
}

// Constructs and expects a failure that leaves the handle unwritten.
LastError FailureOfConstruct(uint32_t format, size_t width, size_t height) {
  KORVEL_IMAGE_HANDLE handle = kNoHandle;
  const KORVEL_RETURN_CODE code = KORVEL_Image_Construct(format, width, height, &handle);
  EXPECT_NE(code, 0u);
  EXPECT_EQ(handle, kNoHandle);
  const LastError error = ReadLastError();
  EXPECT_EQ(error.code, code);
  return error;
}

TEST(ImageConstruct, RefusesAWidthOrHeightOfZeroWidthFirst) {
  EXPECT_EQ(FailureOfConstruct(KORVEL_PIXEL_FORMAT_Mono8, 0, 3),
            (LastError{6, "error: type=OutOfRange[6], module_id=9000, txt=Width must not be 0!"}));
  EXPECT_EQ(FailureOfConstruct(KORVEL_PIXEL_FORMAT_Mono8, 0, 0),
            (LastError{6, "error: type=OutOfRange[6], module_id=9000, txt=Width must not be 0!"}));
  EXPECT_EQ(FailureOfConstruct(KORVEL_PIXEL_FORMAT_Mono8, 3, 0),
            (LastError{6, "error: type=OutOfRange[6], module_id=9000, txt=Height must not be 0!"}));
}

TEST(ImageConstruct, RefusesAnIdThatIsNotPublic) {
  EXPECT_EQ(
      FailureOfConstruct(kUnknownId, 5, 3),
      (LastError{1, "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unsupported formatId: 17301506"}));
  EXPECT_EQ(
      FailureOfConstruct(kLayoutId1Ch8, 5, 3),
      (LastError{1, "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unsupported formatId: 4294902024"}));
  EXPECT_EQ(
      FailureOfConstruct(0xFFFFFFFF, 5, 3),
      (LastError{1, "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unsupported formatId: 4294967295"}));
}

TEST(ImageConstruct, RefusesASizeOfZeroBeforeAnIdThatIsNotPublic) {
  EXPECT_EQ(FailureOfConstruct(kUnknownId, 0, 3),
            (LastError{6, "error: type=OutOfRange[6], module_id=9000, txt=Width must not be 0!"}));
}

TEST(ImageConstruct, RefusesAnIdThatIsNotPublicBeforeASizeThatIsTooLarge) {
  EXPECT_THAT(FailureOfConstruct(kUnknownId, kMax, kMax).text, EndsWith("Unsupported formatId: 17301506"));
}

TEST(ImageConstruct, RefusesMoreMemoryThanThereIs) {
  const LastError error = FailureOfConstruct(KORVEL_PIXEL_FORMAT_Mono8, size_t{1} << 30, size_t{1} << 30);
  EXPECT_EQ(error.code, 1u);
  EXPECT_NE(error.text, "");
}

TEST(ImageConstruct, RefusesASizeThatWraps) {
  const auto expectError = [](uint32_t format, size_t width, size_t height) {
    const LastError error = FailureOfConstruct(format, width, height);
    EXPECT_EQ(error.code, 1u);
    EXPECT_NE(error.text, "");
  };
  expectError(KORVEL_PIXEL_FORMAT_Mono8, kMax, kMax);
  expectError(KORVEL_PIXEL_FORMAT_Mono8, size_t{1} << 32, size_t{1} << 32);
  expectError(KORVEL_PIXEL_FORMAT_Mono8, (size_t{1} << 62) + 3, 4);
  expectError(KORVEL_PIXEL_FORMAT_RGB8, 6148914691236517206u, 1);
  expectError(KORVEL_PIXEL_FORMAT_Mono10p, 1844674407370955162u, 1);
  expectError(KORVEL_PIXEL_FORMAT_Mono12g24Qrv, 1537228672809129302u, 1);
  expectError(KORVEL_PIXEL_FORMAT_Invalid, size_t{1} << 32, size_t{1} << 32);
}

TEST(ImageConstruct, MakesAnEmptyImageOfNoFormat) {
  const LastError before = MarkLastError();
  for (const auto& [width, height] : std::vector<std::pair<size_t, size_t>>{{0, 0}, {0, 7}, {7, 0}, {0, kMax}}) {
    const Image image(KORVEL_PIXEL_FORMAT_Invalid, width, height);
    EXPECT_EQ(image.Width(), width);
    EXPECT_EQ(image.Height(), height);
    EXPECT_EQ(image.Format(), 0u);
    EXPECT_EQ(image.ByteCount(), 0u);
    EXPECT_EQ(image.Data(), nullptr);
  }
  EXPECT_EQ(ReadLastError(), before);
}

// --------------------------------------------------------------------------------------------- the caller's memory --

TEST(ImageConstructFromBuffer, LivesInTheCallersMemory) {
  const LastError before = MarkLastError();
  std::vector<uint8_t> memory(15, 0xA5);
  const Image image(KORVEL_PIXEL_FORMAT_Mono8, memory.data(), memory.size(), 5, 3);
  EXPECT_EQ(image.Data(), memory.data());
  EXPECT_EQ(image.Width(), 5u);
  EXPECT_EQ(image.Height(), 3u);
  EXPECT_EQ(image.Format(), static_cast<uint32_t>(KORVEL_PIXEL_FORMAT_Mono8));
  EXPECT_EQ(image.ByteCount(), 15u);
  EXPECT_THAT(memory, Each(0xA5));
  EXPECT_EQ(ReadLastError(), before);
}

TEST(ImageConstructFromBuffer, LeavesTheMemoryAndItsSurplusAloneAfterItsEnd) {
  std::vector<uint8_t> memory(100, 0xA5);
  { const Image image(KORVEL_PIXEL_FORMAT_RGB8, memory.data(), memory.size(), 5, 3); }
  EXPECT_THAT(memory, Each(0xA5));
}

TEST(ImageConstructFromBuffer, TakesMemoryAtOddAddresses) {
  std::vector<uint8_t> memory(200);
  for (size_t offset = 0; offset < 8; ++offset) {
    const Image image(KORVEL_PIXEL_FORMAT_RGBa12, memory.data() + offset, 120, 5, 3);
    EXPECT_EQ(image.Data(), memory.data() + offset);
    EXPECT_EQ(image.PixelPointer(4, 2), memory.data() + offset + 112);
  }
}

TEST(ImageConstructFromBuffer, MakesTwoImagesOverTheSameMemory) {
  std::vector<uint8_t> memory(15);
  const Image first(KORVEL_PIXEL_FORMAT_Mono8, memory.data(), memory.size(), 5, 3);
  const Image second(KORVEL_PIXEL_FORMAT_BayerRG8, memory.data(), memory.size(), 3, 5);
  EXPECT_NE(first.Handle(), second.Handle());
  EXPECT_EQ(first.Data(), second.Data());
}

TEST(ImageConstructFromBuffer, NeedsExactlyTheBytesOfItsPixels) {
  struct Case {
    uint32_t format;
    size_t width;
    size_t height;
    size_t bytes;
  };
  for (const auto& [format, width, height, bytes] :
       {Case{KORVEL_PIXEL_FORMAT_Mono8, 5, 3, 15}, Case{KORVEL_PIXEL_FORMAT_Mono10p, 3, 1, 4},
        Case{KORVEL_PIXEL_FORMAT_Mono10p, 3, 3, 12}, Case{KORVEL_PIXEL_FORMAT_Mono12p, 3, 2, 9},
        Case{KORVEL_PIXEL_FORMAT_BayerGR10g40Qrv, 5, 1, 7}, Case{KORVEL_PIXEL_FORMAT_RGB10p32, 3, 1, 12},
        Case{KORVEL_PIXEL_FORMAT_BGR12, 2, 2, 24}, Case{KORVEL_PIXEL_FORMAT_RGBa10, 2, 2, 32},
        Case{KORVEL_PIXEL_FORMAT_Invalid, 5, 3, 15}}) {
    SCOPED_TRACE(format);
    std::vector<uint8_t> memory(bytes);
    EXPECT_EQ(Image(format, memory.data(), bytes, width, height).ByteCount(), bytes);
    KORVEL_IMAGE_HANDLE handle = kNoHandle;
    EXPECT_EQ(KORVEL_Image_ConstructFromBuffer(format, memory.data(), bytes - 1, width, height, &handle), 5u);
    EXPECT_EQ(handle, kNoHandle);
    EXPECT_EQ(ReadLastError(), (LastError{5, "*buffer is too small to hold the specified pixels!"}));
  }
}

TEST(ImageConstructFromBuffer, ChecksItsPointersInOrderAndBeforeItsValues) {
  uint8_t memory[4] = {};
  KORVEL_IMAGE_HANDLE handle = kNoHandle;
  EXPECT_EQ(KORVEL_Image_ConstructFromBuffer(kUnknownId, nullptr, 0, 0, 0, nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "buffer is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_Image_ConstructFromBuffer(kUnknownId, nullptr, 0, 0, 0, &handle), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "buffer is not a valid pointer!"}));
  EXPECT_EQ(handle, kNoHandle);
  EXPECT_EQ(KORVEL_Image_ConstructFromBuffer(kUnknownId, memory, 0, 0, 0, nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "imageHandle is not a valid pointer!"}));
}

LastError FailureOfConstructFromBuffer(uint32_t format, size_t memorySize, size_t width, size_t height) {
  static uint8_t memory[64];
  KORVEL_IMAGE_HANDLE handle = kNoHandle;
  const KORVEL_RETURN_CODE code = KORVEL_Image_ConstructFromBuffer(format, memory, memorySize, width, height, &handle);
  EXPECT_NE(code, 0u);
  EXPECT_EQ(handle, kNoHandle);
  const LastError error = ReadLastError();
  EXPECT_EQ(error.code, code);
  return error;
}

TEST(ImageConstructFromBuffer, SaysThatItCannotCalculateTheSizeOfAnUnknownId) {
  const LastError expected{1, "Calculating the required storage size failed!"};
  EXPECT_EQ(FailureOfConstructFromBuffer(kUnknownId, 64, 2, 2), expected);
  EXPECT_EQ(FailureOfConstructFromBuffer(kUnknownId, 0, 2, 2), expected);
  EXPECT_EQ(FailureOfConstructFromBuffer(kUnknownId, 64, 0, 0), expected);
  EXPECT_EQ(FailureOfConstructFromBuffer(kUnknownId, 64, kMax, kMax), expected);
}

TEST(ImageConstructFromBuffer, RefusesALayoutIdAfterItsSize) {
  EXPECT_EQ(
      FailureOfConstructFromBuffer(kLayoutId1Ch8, 4, 2, 2),
      (LastError{1, "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unsupported formatId: 4294902024"}));
  // Four channels count as three here.
  EXPECT_EQ(
      FailureOfConstructFromBuffer(kLayoutId4Ch8, 12, 2, 2),
      (LastError{1, "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unsupported formatId: 4294902792"}));
  EXPECT_EQ(FailureOfConstructFromBuffer(kLayoutId4Ch8, 11, 2, 2),
            (LastError{5, "*buffer is too small to hold the specified pixels!"}));
}

TEST(ImageConstructFromBuffer, RefusesAWidthOrHeightOfZeroWidthFirst) {
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono8, 64, 0, 0),
            (LastError{6, "error: type=OutOfRange[6], module_id=9000, txt=Width must not be 0!"}));
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono8, 0, 0, 3),
            (LastError{6, "error: type=OutOfRange[6], module_id=9000, txt=Width must not be 0!"}));
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono10p, 0, 3, 0),
            (LastError{6, "error: type=OutOfRange[6], module_id=9000, txt=Height must not be 0!"}));
}

TEST(ImageConstructFromBuffer, FindsAnyBufferTooSmallForASizeThatWraps) {
  const LastError expected{5, "*buffer is too small to hold the specified pixels!"};
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono8, 64, (size_t{1} << 62) + 3, 4), expected);
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono8, kMax, size_t{1} << 32, size_t{1} << 32), expected);
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_RGB8, kMax, 6148914691236517206u, 1), expected);
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_RGBa12, kMax, size_t{1} << 61, 1), expected);
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono10p, kMax, 1844674407370955162u, 1), expected);
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono12p, kMax, 1537228672809129301u, 1), expected);
  EXPECT_EQ(FailureOfConstructFromBuffer(KORVEL_PIXEL_FORMAT_Invalid, kMax, size_t{1} << 32, size_t{1} << 32),
            expected);
}

TEST(ImageConstructFromBuffer, MakesAnEmptyImageOfNoFormatOverTheMemory) {
  uint8_t memory[1] = {};
  const Image image(KORVEL_PIXEL_FORMAT_Invalid, memory, 0, 0, 0);
  EXPECT_EQ(image.Data(), memory);
  EXPECT_EQ(image.ByteCount(), 0u);
}

// ---------------------------------------------------------------------------------------- what all functions share --

struct Function {
  std::string name;
  std::string resultName;
  // With a result pointer that isn't null; tells whether the result was written.
  std::function<KORVEL_RETURN_CODE(KORVEL_IMAGE_HANDLE, bool&)> call;
  std::function<KORVEL_RETURN_CODE(KORVEL_IMAGE_HANDLE)> callWithNull;
};

template <class Value, class Getter>
Function GetterFunction(const std::string& name, const std::string& resultName, Getter getter, Value unwritten) {
  return {name, resultName,
          [=](KORVEL_IMAGE_HANDLE handle, bool& written) {
            Value value = unwritten;
            const KORVEL_RETURN_CODE code = getter(handle, &value);
            written = value != unwritten;
            return code;
          },
          [=](KORVEL_IMAGE_HANDLE handle) { return getter(handle, static_cast<Value*>(nullptr)); }};
}

std::vector<Function> FunctionsWithAResult() {
  const auto pixelPointer = [](KORVEL_IMAGE_HANDLE handle, uint8_t** result) {
    return KORVEL_Image_GetPixelPointer(handle, 0, 0, result);
  };
  return {GetterFunction("KORVEL_Image_GetWidth", "width", KORVEL_Image_GetWidth, kNoSize),
          GetterFunction("KORVEL_Image_GetHeight", "height", KORVEL_Image_GetHeight, kNoSize),
          GetterFunction("KORVEL_Image_GetByteCount", "byteCount", KORVEL_Image_GetByteCount, kNoSize),
          GetterFunction("KORVEL_Image_GetPixelFormat", "pixelFormat", KORVEL_Image_GetPixelFormat, kNoFormat),
          GetterFunction("KORVEL_Image_GetData", "data", KORVEL_Image_GetData, kNoPointer),
          GetterFunction("KORVEL_Image_GetPixelPointer", "pixelPointer", pixelPointer, kNoPointer)};
}

// Handles that stand for no image: null, destroyed, beside a good one, and addresses of other things.
void ForEachBadHandle(const std::function<void(KORVEL_IMAGE_HANDLE)>& test) {
  const Image image(KORVEL_PIXEL_FORMAT_Mono8, 2, 2);
  int local = 0;
  const std::vector<std::pair<std::string, KORVEL_IMAGE_HANDLE>> handles = {
      {"null", nullptr},
      {"destroyed", DestroyedHandle()},
      {"one byte off", Beside(image.Handle(), 1)},
      {"sixteen bytes off", Beside(image.Handle(), -16)},
      {"the image's pixels", reinterpret_cast<KORVEL_IMAGE_HANDLE>(image.Data())},
      {"a variable", reinterpret_cast<KORVEL_IMAGE_HANDLE>(&local)},
      {"all bits", reinterpret_cast<KORVEL_IMAGE_HANDLE>(kMax)},
  };
  for (const auto& [name, handle] : handles) {
    SCOPED_TRACE(name);
    test(handle);
  }
}

TEST(ImageFunctions, RefuseEveryHandleThatStandsForNoImage) {
  for (const Function& function : FunctionsWithAResult()) {
    SCOPED_TRACE(function.name);
    ForEachBadHandle([&](KORVEL_IMAGE_HANDLE handle) {
      MarkLastError();
      bool written = false;
      EXPECT_EQ(function.call(handle, written), 2u);
      EXPECT_FALSE(written);
      EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
    });
  }
}

TEST(ImageFunctions, CheckTheHandleBeforeThePointer) {
  for (const Function& function : FunctionsWithAResult()) {
    SCOPED_TRACE(function.name);
    ForEachBadHandle([&](KORVEL_IMAGE_HANDLE handle) {
      MarkLastError();
      EXPECT_EQ(function.callWithNull(handle), 2u);
      EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
    });
  }
}

TEST(ImageFunctions, RefuseANullPointerByItsName) {
  const Image image(KORVEL_PIXEL_FORMAT_Mono8, 2, 2);
  for (const Function& function : FunctionsWithAResult()) {
    SCOPED_TRACE(function.name);
    EXPECT_EQ(function.callWithNull(image.Handle()), 5u);
    EXPECT_EQ(ReadLastError(), (LastError{5, function.resultName + " is not a valid pointer!"}));
  }
}

TEST(ImageFunctions, WriteTheirResultAndLeaveTheRecordAloneOnSuccess) {
  const LastError before = MarkLastError();
  const Image image(KORVEL_PIXEL_FORMAT_Mono8, 2, 2);
  for (const Function& function : FunctionsWithAResult()) {
    SCOPED_TRACE(function.name);
    bool written = false;
    EXPECT_EQ(function.call(image.Handle(), written), 0u);
    EXPECT_TRUE(written);
    EXPECT_EQ(ReadLastError(), before);
  }
}

TEST(ImageFunctions, KnowAHandleInEveryThread) {
  const Image image(KORVEL_PIXEL_FORMAT_Mono8, 2, 2);
  std::thread([&] { EXPECT_EQ(image.Width(), 2u); }).join();
}

// -------------------------------------------------------------------------------------------------- pixel pointers --

TEST(ImageGetPixelPointer, StepsByThePixelsOfTheFormat) {
  const Image mono(KORVEL_PIXEL_FORMAT_Mono8, 5, 3);
  EXPECT_EQ(mono.PixelPointer(0, 0), mono.Data());
  EXPECT_EQ(mono.PixelPointer(4, 2), mono.Data() + 14);
  const Image color(KORVEL_PIXEL_FORMAT_BGR8, 5, 3);
  EXPECT_EQ(color.PixelPointer(1, 2), color.Data() + 33);
  const Image deep(KORVEL_PIXEL_FORMAT_RGB12, 5, 3);
  EXPECT_EQ(deep.PixelPointer(1, 2), deep.Data() + 66);
  const Image word(KORVEL_PIXEL_FORMAT_RGB10p32, 5, 3);
  EXPECT_EQ(word.PixelPointer(1, 2), word.Data() + 44);
}

TEST(ImageGetPixelPointer, CountsTwoBytesAPixelInABitStream) {
  for (const uint32_t format : {KORVEL_PIXEL_FORMAT_Mono10p, KORVEL_PIXEL_FORMAT_BayerRG12p,
                                KORVEL_PIXEL_FORMAT_Mono10g40Qrv, KORVEL_PIXEL_FORMAT_BayerGB12g24Qrv}) {
    const Image image(format, 5, 3);
    EXPECT_EQ(image.PixelPointer(1, 0), image.Data() + 2);
    EXPECT_EQ(image.PixelPointer(0, 1), image.Data() + 10);
    EXPECT_EQ(image.PixelPointer(4, 2), image.Data() + 28);
  }
}

TEST(ImageGetPixelPointer, ChecksEmptinessThenTheColumnThenTheRow) {
  const Image empty(KORVEL_PIXEL_FORMAT_Invalid, 0, 0);
  const Image image(KORVEL_PIXEL_FORMAT_Mono8, 5, 3);
  uint8_t* pointer = kNoPointer;
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(empty.Handle(), 9, 9, nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "pixelPointer is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(empty.Handle(), 9, 9, &pointer), 6u);
  EXPECT_EQ(ReadLastError(), (LastError{6, "Image is empty!"}));
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(image.Handle(), 5, 3, &pointer), 6u);
  EXPECT_EQ(ReadLastError(), (LastError{6, "xPos is out of range!"}));
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(image.Handle(), 4, 3, &pointer), 6u);
  EXPECT_EQ(ReadLastError(), (LastError{6, "yPos is out of range!"}));
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(image.Handle(), kMax, 0, &pointer), 6u);
  EXPECT_EQ(ReadLastError(), (LastError{6, "xPos is out of range!"}));
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(image.Handle(), 0, kMax, &pointer), 6u);
  EXPECT_EQ(ReadLastError(), (LastError{6, "yPos is out of range!"}));
  EXPECT_EQ(pointer, kNoPointer);
}

TEST(ImageGetPixelPointer, FindsAnImageEmptyIfOneOfItsSidesIsZero) {
  uint8_t* pointer = kNoPointer;
  const Image noWidth(KORVEL_PIXEL_FORMAT_Invalid, 0, 7);
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(noWidth.Handle(), 0, 0, &pointer), 6u);
  EXPECT_EQ(ReadLastError(), (LastError{6, "Image is empty!"}));
  const Image noHeight(KORVEL_PIXEL_FORMAT_Invalid, 7, 0);
  MarkLastError();
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(noHeight.Handle(), 0, 0, &pointer), 6u);
  EXPECT_EQ(ReadLastError(), (LastError{6, "Image is empty!"}));
  EXPECT_EQ(pointer, kNoPointer);
}

TEST(ImageGetPixelPointer, WrapsAtFourGigabytes) {
  // Nobody touches the pixels, so the memory needn't be there.
  uint8_t memory[64] = {};
  const Image image(KORVEL_PIXEL_FORMAT_Mono8, memory, size_t{1} << 33, 65536, 65537);
  EXPECT_EQ(image.PixelPointer(5, 65536), memory + 5);
  EXPECT_EQ(image.ByteCount(), 4295032832u);
}

// ------------------------------------------------------------------------------------------------------------- end --

TEST(ImageDestruct, EndsAHandleOnce) {
  KORVEL_IMAGE_HANDLE handle = nullptr;
  ASSERT_EQ(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_Mono8, 5, 3, &handle), 0u);
  const LastError before = MarkLastError();
  EXPECT_EQ(KORVEL_Image_Destruct(handle), 0u);
  EXPECT_EQ(ReadLastError(), before);
  EXPECT_EQ(KORVEL_Image_Destruct(handle), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
}

TEST(ImageDestruct, RefusesEveryHandleThatStandsForNoImage) {
  ForEachBadHandle([](KORVEL_IMAGE_HANDLE handle) {
    MarkLastError();
    EXPECT_EQ(KORVEL_Image_Destruct(handle), 2u);
    EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
  });
}

TEST(ImageDestruct, LeavesOtherImagesOverTheSameMemoryAlone) {
  std::vector<uint8_t> memory(15);
  const Image stays(KORVEL_PIXEL_FORMAT_Mono8, memory.data(), memory.size(), 5, 3);
  { const Image goes(KORVEL_PIXEL_FORMAT_Mono8, memory.data(), memory.size(), 5, 3); }
  EXPECT_EQ(stays.Data(), memory.data());
}

TEST(ImageDestruct, AnswersOneOfTwoThreadsWithSuccessAndOneWithAnInvalidHandle) {
  for (int round = 0; round < 200; ++round) {
    KORVEL_IMAGE_HANDLE handle = nullptr;
    ASSERT_EQ(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_Mono8, 5, 3, &handle), 0u);
    std::atomic<int> ready = 0;
    KORVEL_RETURN_CODE codes[2] = {99, 99};
    const auto destruct = [&](size_t thread) {
      ++ready;
      while (ready != 2) {
      }
      codes[thread] = KORVEL_Image_Destruct(handle);
    };
    std::thread other(destruct, 1);
    destruct(0);
    other.join();
    EXPECT_EQ(std::min(codes[0], codes[1]), 0u);
    EXPECT_EQ(std::max(codes[0], codes[1]), 2u);
  }
}

TEST(ImageDestruct, MayRunWhileAnotherThreadAsks) {
  for (int round = 0; round < 200; ++round) {
    KORVEL_IMAGE_HANDLE handle = nullptr;
    ASSERT_EQ(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_Mono8, 5, 3, &handle), 0u);
    std::thread asking([handle] {
      KORVEL_RETURN_CODE code = 0;
      while (code == 0) {
        size_t width = 0;
        code = KORVEL_Image_GetWidth(handle, &width);
        EXPECT_TRUE((code == 0 && width == 5) || (code == 2 && width == 0)) << code << ", " << width;
      }
    });
    EXPECT_EQ(KORVEL_Image_Destruct(handle), 0u);
    asking.join();
  }
}

}  // namespace
