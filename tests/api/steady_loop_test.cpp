// What a loop over camera frames allocates once it runs: no memory for pixels, and a few small objects a frame.
//
// This program replaces the C library's allocation functions, which operator new ends in as well.
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* memory);
}

namespace {

std::atomic<bool> isCounting = false;
std::atomic<size_t> blocks = 0;
std::atomic<size_t> frees = 0;
std::atomic<size_t> largest = 0;

void Count(size_t size) {
  if (!isCounting) return;
  ++blocks;
  size_t before = largest;
  while (before < size && !largest.compare_exchange_weak(before, size)) {
  }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void* malloc(size_t size) {
  Count(size);
  return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(size_t count, size_t size) {
  Count(count * size);
  return __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* memory, size_t size) {
  Count(size);
  return __libc_realloc(memory, size);
}

__attribute__((visibility("default"))) void* memalign(size_t alignment, size_t size) {
  Count(size);
  return __libc_memalign(alignment, size);
}

__attribute__((visibility("default"))) void* aligned_alloc(size_t alignment, size_t size) {
  Count(size);
  return __libc_memalign(alignment, size);
}

__attribute__((visibility("default"))) int posix_memalign(void** memory, size_t alignment, size_t size) {
  Count(size);
  *memory = __libc_memalign(alignment, size);
  return *memory == nullptr ? ENOMEM : 0;
}

__attribute__((visibility("default"))) void free(void* memory) {
  if (isCounting && memory != nullptr) ++frees;
  __libc_free(memory);
}

}  // extern "C"

namespace {

constexpr size_t kWidth = 640;
constexpr size_t kHeight = 480;
constexpr size_t kLargestSmallBlock = 1024;
constexpr int kFrames = 50;

// A frame's life: an image over the camera's memory, its conversion, and the end of both.
template <class Convert>
void RunFrame(std::vector<uint8_t>& frame, Convert& convert) {
  KORVEL_IMAGE_HANDLE input = nullptr;
  ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_BayerRG12p, frame.data(), frame.size(), kWidth,
                                             kHeight, &input),
            0u);
  KORVEL_IMAGE_HANDLE output = nullptr;
  ASSERT_EQ(convert(input, &output), 0u);
  ASSERT_EQ(KORVEL_Image_Destruct(output), 0u);
  ASSERT_EQ(KORVEL_Image_Destruct(input), 0u);
}

template <class Convert>
void ExpectSmallBlocks(size_t blocksPerFrame, Convert convert) {
  std::vector<uint8_t> frame(kWidth * kHeight * 3 / 2, 0x5A);
  for (int i = 0; i < 3; ++i) RunFrame(frame, convert);
  for (int i = 0; i < kFrames; ++i) {
    blocks = frees = largest = 0;
    isCounting = true;
    RunFrame(frame, convert);
    isCounting = false;
    ASSERT_LE(largest, kLargestSmallBlock) << "frame " << i;
    ASSERT_EQ(blocks, blocksPerFrame) << "frame " << i;
    ASSERT_EQ(frees, blocksPerFrame) << "frame " << i;
  }
}

class SteadyLoop : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(KORVEL_ImageConverter_Construct(&converter), 0u); }
  void TearDown() override { EXPECT_EQ(KORVEL_ImageConverter_Destruct(converter), 0u); }

  void ExpectOfBufferForm(uint32_t mode, size_t blocksPerFrame) {
    ASSERT_EQ(KORVEL_ImageConverter_SetConversionMode(converter, mode), 0u);
    std::vector<uint8_t> picture(kWidth * kHeight * 4);
    ExpectSmallBlocks(blocksPerFrame, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE* output) {
      return KORVEL_ImageConverter_ConvertToBuffer(converter, input, KORVEL_PIXEL_FORMAT_BGRa8, picture.data(),
                                                   picture.size(), output);
    });
  }

  void ExpectOfImageForm(uint32_t mode, size_t blocksPerFrame) {
    ASSERT_EQ(KORVEL_ImageConverter_SetConversionMode(converter, mode), 0u);
    ExpectSmallBlocks(blocksPerFrame, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE* output) {
      return KORVEL_ImageConverter_Convert(converter, input, KORVEL_PIXEL_FORMAT_BGRa8, output);
    });
  }

  KORVEL_IMAGE_CONVERTER_HANDLE converter = nullptr;
};

TEST_F(SteadyLoop, CountsWhatTheLibraryAllocates) {
  blocks = largest = 0;
  isCounting = true;
  KORVEL_IMAGE_HANDLE image = nullptr;
  const KORVEL_RETURN_CODE code = KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_Mono8, 300, 200, &image);
  isCounting = false;
  EXPECT_EQ(code, 0u);
  EXPECT_GT(blocks, 1u);
  EXPECT_EQ(largest, 60000u);
  EXPECT_EQ(KORVEL_Image_Destruct(image), 0u);
}

TEST_F(SteadyLoop, TakesSmallBlocksIntoMemoryInTheFastMode) { ExpectOfBufferForm(KORVEL_CONVERSION_MODE_Fast, 24); }

TEST_F(SteadyLoop, TakesSmallBlocksIntoMemoryInTheHighQualityMode) {
  ExpectOfBufferForm(KORVEL_CONVERSION_MODE_HighQuality, 24);
}

TEST_F(SteadyLoop, TakesSmallBlocksIntoImagesInTheFastMode) { ExpectOfImageForm(KORVEL_CONVERSION_MODE_Fast, 22); }

TEST_F(SteadyLoop, TakesSmallBlocksIntoImagesInTheClassicMode) {
  ExpectOfImageForm(KORVEL_CONVERSION_MODE_Classic, 22);
}

}  // namespace
