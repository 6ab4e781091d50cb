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

#include "tests/support/temporary_directory.h"

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

// A frame's life: an image over the camera's memory, the work on it, and the end of both. Work that changes the image
// itself makes no output.
template <class Work>
void RunFrame(uint32_t format, std::vector<uint8_t>& frame, Work& work) {
  KORVEL_IMAGE_HANDLE input = nullptr;
  ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(format, frame.data(), frame.size(), kWidth, kHeight, &input), 0u);
  KORVEL_IMAGE_HANDLE output = nullptr;
  ASSERT_EQ(work(input, &output), 0u);
  if (output != nullptr) {
    ASSERT_EQ(KORVEL_Image_Destruct(output), 0u);
  }
  ASSERT_EQ(KORVEL_Image_Destruct(input), 0u);
}

// With vectors, an image becomes another in one pass, otherwise in stages with an image each.
size_t WithVectors(size_t blocksOfOnePass, size_t blocksOfStages) {
  return __builtin_cpu_supports("avx") != 0 ? blocksOfOnePass : blocksOfStages;
}

// Calls check after each frame of a steady loop.
template <class Work, class Check>
void RunSteadyLoop(uint32_t format, Work& work, const Check& check) {
  size_t byteCount = 0;
  ASSERT_EQ(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(format, kWidth * kHeight, &byteCount), 0u);
  std::vector<uint8_t> frame(byteCount, 0x5A);
  for (int i = 0; i < 3; ++i) RunFrame(format, frame, work);
  for (int i = 0; i < kFrames; ++i) {
    blocks = frees = largest = 0;
    isCounting = true;
    RunFrame(format, frame, work);
    isCounting = false;
    check();
    if (testing::Test::HasFatalFailure()) return;
  }
}

template <class Convert>
void ExpectSmallBlocks(size_t blocksPerFrame, Convert convert) {
  RunSteadyLoop(KORVEL_PIXEL_FORMAT_BayerRG12p, convert, [&] {
    ASSERT_LE(largest, kLargestSmallBlock);
    ASSERT_EQ(blocks, blocksPerFrame);
    ASSERT_EQ(frees, blocksPerFrame);
  });
}

// No memory for pixels, and none that stays.
template <class Work>
void ExpectSmallBlocksOf(uint32_t format, Work work) {
  RunSteadyLoop(format, work, [] {
    ASSERT_LE(largest, kLargestSmallBlock);
    ASSERT_EQ(blocks, frees);
  });
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

TEST_F(SteadyLoop, TakesSmallBlocksIntoMemoryInTheFastMode) {
  ExpectOfBufferForm(KORVEL_CONVERSION_MODE_Fast, WithVectors(12, 24));
}

TEST_F(SteadyLoop, TakesSmallBlocksIntoMemoryInTheHighQualityMode) {
  ExpectOfBufferForm(KORVEL_CONVERSION_MODE_HighQuality, WithVectors(12, 24));
}

TEST_F(SteadyLoop, TakesSmallBlocksIntoImagesInTheFastMode) {
  ExpectOfImageForm(KORVEL_CONVERSION_MODE_Fast, WithVectors(14, 22));
}

TEST_F(SteadyLoop, TakesSmallBlocksIntoImagesInTheClassicMode) {
  ExpectOfImageForm(KORVEL_CONVERSION_MODE_Classic, 22);
}

TEST(SteadyLoopOfCorrections, TakesSmallBlocksForGain) {
  KORVEL_GAIN_HANDLE gain = nullptr;
  ASSERT_EQ(KORVEL_Gain_Construct(&gain), 0u);
  for (const float value : {1.0f, 2.0f}) {
    ASSERT_EQ(KORVEL_Gain_SetMasterGainValue(gain, &value), 0u);
    ExpectSmallBlocksOf(KORVEL_PIXEL_FORMAT_BayerRG12, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE* output) {
      return KORVEL_Gain_Process(gain, input, output);
    });
    ExpectSmallBlocksOf(KORVEL_PIXEL_FORMAT_Mono8, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE*) {
      return KORVEL_Gain_ProcessInPlace(gain, input);
    });
  }
  EXPECT_EQ(KORVEL_Gain_Destruct(gain), 0u);
}

TEST(SteadyLoopOfCorrections, TakesSmallBlocksForGamma) {
  KORVEL_GAMMA_CORRECTOR_HANDLE corrector = nullptr;
  ASSERT_EQ(KORVEL_GammaCorrector_Construct(&corrector), 0u);
  for (const float value : {1.0f, 2.0f}) {
    ASSERT_EQ(KORVEL_GammaCorrector_SetGammaCorrectionValue(corrector, &value), 0u);
    ExpectSmallBlocksOf(KORVEL_PIXEL_FORMAT_BGRa8, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE* output) {
      return KORVEL_GammaCorrector_Process(corrector, input, output);
    });
    ExpectSmallBlocksOf(KORVEL_PIXEL_FORMAT_RGB10p32, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE*) {
      return KORVEL_GammaCorrector_ProcessInPlace(corrector, input);
    });
  }
  EXPECT_EQ(KORVEL_GammaCorrector_Destruct(corrector), 0u);
}

TEST(SteadyLoopOfCorrections, TakesSmallBlocksForColours) {
  KORVEL_COLOR_CORRECTOR_HANDLE corrector = nullptr;
  ASSERT_EQ(KORVEL_ColorCorrector_Construct(&corrector), 0u);
  for (const uint32_t format : {uint32_t{KORVEL_PIXEL_FORMAT_RGB8}, uint32_t{KORVEL_PIXEL_FORMAT_BGR12}}) {
    ExpectSmallBlocksOf(format, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE* output) {
      return KORVEL_ColorCorrector_Process(corrector, input, output);
    });
    ExpectSmallBlocksOf(format, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE*) {
      return KORVEL_ColorCorrector_ProcessInPlace(corrector, input);
    });
  }
  EXPECT_EQ(KORVEL_ColorCorrector_Destruct(corrector), 0u);
}

TEST(SteadyLoopOfCorrections, TakesSmallBlocksForBinning) {
  KORVEL_BINNING_HANDLE binning = nullptr;
  ASSERT_EQ(KORVEL_Binning_Construct(&binning), 0u);
  for (const uint8_t factor : {uint8_t{1}, uint8_t{2}, uint8_t{3}}) {
    ASSERT_EQ(KORVEL_Binning_SetBinningX(binning, &factor), 0u);
    ASSERT_EQ(KORVEL_Binning_SetBinningY(binning, &factor), 0u);
    for (const uint32_t format : {uint32_t{KORVEL_PIXEL_FORMAT_BayerGB10}, uint32_t{KORVEL_PIXEL_FORMAT_RGBa8}}) {
      ExpectSmallBlocksOf(format, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE* output) {
        return KORVEL_Binning_Process(binning, input, output);
      });
    }
  }
  EXPECT_EQ(KORVEL_Binning_Destruct(binning), 0u);
}

// The list keeps its memory. The corrected image has memory of its own.
TEST(SteadyLoopOfCorrections, TakesNoMemoryForTheListOfHotPixels) {
  KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE corrector = nullptr;
  ASSERT_EQ(KORVEL_AdaptiveHotpixelCorrector_Construct(&corrector), 0u);
  ExpectSmallBlocksOf(KORVEL_PIXEL_FORMAT_BayerRG8, [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE*) {
    return KORVEL_AdaptiveHotpixelCorrector_Detect(corrector, input);
  });
  const auto correct = [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE* output) {
    return KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(corrector, input, output);
  };
  RunSteadyLoop(KORVEL_PIXEL_FORMAT_BayerRG8, correct, [] {
    ASSERT_EQ(largest, kWidth * kHeight);
    ASSERT_EQ(blocks, frees);
  });
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_Destruct(corrector), 0u);
}

// The worker gives the memory of frames back to the queue.
TEST(SteadyLoopOfRecording, TakesNoMemoryForFrames) {
  const korvel_test::TemporaryDirectory directory;
  KORVEL_VIDEO_HANDLE video = nullptr;
  ASSERT_EQ(KORVEL_VideoWriter_Video_Open(&video, directory.File("a.avi").c_str(), KORVEL_VIDEO_CONTAINER_AVI,
                                          KORVEL_VIDEO_ENCODER_MJPEG),
            0u);
  const auto append = [&](KORVEL_IMAGE_HANDLE input, KORVEL_IMAGE_HANDLE*) {
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_Append(video, input);
    // A wait may end early.
    uint32_t queued = 1;
    while (queued != 0) {
      KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(video, 1000);
      KORVEL_VideoWriter_Queue_GetQueued(video, &queued);
    }
    return code;
  };
  RunSteadyLoop(KORVEL_PIXEL_FORMAT_RGB8, append, [] { ASSERT_LT(largest, kWidth * kHeight); });
  EXPECT_EQ(KORVEL_VideoWriter_Video_Close(video), 0u);
}

}  // namespace
