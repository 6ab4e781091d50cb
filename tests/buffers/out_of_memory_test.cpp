// What buffers, pools and recordings keep, and what the exported frame says, when memory runs out in the middle of a
// call. A program of its own, since it replaces the allocation functions.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <numeric>
#include <stdexcept>
#include <string>

#include "api/export_frame.h"
#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/vector_image_buffer.h"
#include "korvel/korvel.h"
#include "tests/model/avi_model.h"
#include "tests/support/file_bytes.h"
#include "tests/support/temporary_directory.h"

namespace {

// What new memory holds, so that nothing is taken for zero that nobody has set.
constexpr uint8_t kUnset = 0xA5;

// The allocation of this thread that fails, counted down; negative for none.
thread_local long allocationsUntilFailure = -1;

void* AllocateOrFail(std::size_t size, std::align_val_t alignment = std::align_val_t{alignof(std::max_align_t)}) {
  if (allocationsUntilFailure >= 0 && allocationsUntilFailure-- == 0) throw std::bad_alloc();
  const auto unit = static_cast<std::size_t>(alignment);
  if (void* const memory = std::aligned_alloc(unit, (size / unit + 1) * unit)) return std::memset(memory, kUnset, size);
  throw std::bad_alloc();
}

}  // namespace

// Where one of a pair is inlined and the other is not, compilers see a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) { return AllocateOrFail(size); }
[[gnu::noinline]] void* operator new[](std::size_t size) { return AllocateOrFail(size); }
[[gnu::noinline]] void* operator new[](std::size_t size, std::align_val_t alignment) {
  return AllocateOrFail(size, alignment);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }

namespace {

using img::PixelFormatId;
using img::Size2D;
using img::buffer::FixedFormatVectorBufferPool;
using img::buffer::IfcBufferFactory;
using img::buffer::IfcImageBuffer;
using img::buffer::VectorImageBuffer;

constexpr Size2D kSize{4, 4};

// Runs operation once for each of its allocations, which then fails, and check after each failure; returns how many
// there were.
template <class Operation, class Check>
long FailEachAllocation(Operation&& operation, Check&& check) {
  for (long failing = 0;; ++failing) {
    allocationsUntilFailure = failing;
    try {
      operation();
      allocationsUntilFailure = -1;
      return failing;
    } catch (const std::bad_alloc&) {
      allocationsUntilFailure = -1;
      SCOPED_TRACE(failing);
      check();
    }
  }
}

TEST(OutOfMemory, LeavesAPoolsMemoryFree) {
  const auto pool = std::make_shared<FixedFormatVectorBufferPool>(16, 1, 2, std::weak_ptr<IfcBufferFactory>());
  std::shared_ptr<IfcImageBuffer> buffer;
  const long allocations = FailEachAllocation([&] { buffer = pool->AllocBuffer(PixelFormatId::BayerRG8, kSize); },
                                              [&] { EXPECT_EQ(pool->NumBuffersInUse(), 0u); });
  EXPECT_GE(allocations, 1);
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  EXPECT_EQ(pool->NumBuffers(), 1u);
}

TEST(OutOfMemory, LosesNoMemoryThatAPoolMakesOnDemand) {
  const auto pool = std::make_shared<FixedFormatVectorBufferPool>(16, 0, 1, std::weak_ptr<IfcBufferFactory>());
  std::shared_ptr<IfcImageBuffer> buffer;
  const long allocations = FailEachAllocation([&] { buffer = pool->AllocBuffer(PixelFormatId::BayerRG8, kSize); },
                                              [&] { EXPECT_EQ(pool->NumBuffersInUse(), 0u); });
  EXPECT_GE(allocations, 3);
  EXPECT_EQ(pool->NumBuffersInUse(), 1u) << "the one buffer below the limit can still be had";
}

TEST(OutOfMemory, LosesNoMemoryThatAPoolMakesAheadOfTime) {
  const auto pool = std::make_shared<FixedFormatVectorBufferPool>(16, 0, 3, std::weak_ptr<IfcBufferFactory>());
  const long allocations =
      FailEachAllocation([&] { pool->SetNumBuffersWanted(3); }, [&] { EXPECT_EQ(pool->NumBuffersInUse(), 0u); });
  EXPECT_GE(allocations, 3);
  EXPECT_EQ(pool->NumBuffers(), 3u);
}

TEST(OutOfMemory, IsTheAnswerWhereAFailuresOwnTextCanNotBeKept) {
  const std::runtime_error failure("a text that is too long for a string to hold without memory of its own");
  const auto code = korvel::internal::ExportFrame([&]() -> korvel::internal::ReturnCode {
    allocationsUntilFailure = 0;
    throw failure;
  });
  allocationsUntilFailure = -1;
  EXPECT_EQ(code, 1u);
  EXPECT_EQ(korvel::internal::LastErrorRecord::OfThisThread().Code(), 1u);
  EXPECT_EQ(korvel::internal::LastErrorRecord::OfThisThread().Text(), "std::bad_alloc");
}

TEST(OutOfMemory, LeavesTheClaimToAPoolsMemoryWhereItWas) {
  const auto pool = std::make_shared<FixedFormatVectorBufferPool>(16, 1, 2, std::weak_ptr<IfcBufferFactory>());
  std::shared_ptr<IfcImageBuffer> buffer = pool->AllocBuffer(PixelFormatId::BayerRG8, kSize);
  std::shared_ptr<IfcImageBuffer> changed;
  const long allocations = FailEachAllocation([&] { changed = buffer->ChangeFormat(PixelFormatId::BayerGR8); },
                                              [&] { EXPECT_EQ(pool->NumBuffersInUse(), 1u); });
  EXPECT_GE(allocations, 1);
  buffer.reset();
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  changed.reset();
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

TEST(OutOfMemory, LeavesTheBytesOfAVectorWhereTheyWere) {
  const auto buffer = VectorImageBuffer::AllocBuffer(PixelFormatId::BayerRG8, kSize);
  const uint8_t* const data = buffer->Data();
  std::shared_ptr<IfcImageBuffer> changed;
  const long allocations = FailEachAllocation([&] { changed = buffer->ChangeFormat(PixelFormatId::BayerGR8); },
                                              [&] { EXPECT_EQ(buffer->Data(), data); });
  EXPECT_GE(allocations, 1);
  EXPECT_EQ(changed->Data(), data);
  EXPECT_EQ(buffer->Data(), nullptr);
}

// Every allocation of a call fails in turn. An exported call never throws, so that its code tells the end.
TEST(ImageTransformer, LeavesAnImageAsItWasWhenMemoryRunsOut) {
  constexpr uint32_t kBayer = KORVEL_PIXEL_FORMAT_BayerRG8;
  constexpr size_t kByteCount = 12;
  using Call = KORVEL_RETURN_CODE (*)(KORVEL_IMAGE_TRANSFORMER_HANDLE, KORVEL_IMAGE_HANDLE);
  for (const Call call : {KORVEL_ImageTransformer_MirrorLeftRightInPlace, KORVEL_ImageTransformer_MirrorUpDownInPlace,
                          KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace}) {
    KORVEL_IMAGE_TRANSFORMER_HANDLE transformer = nullptr;
    ASSERT_EQ(KORVEL_ImageTransformer_Construct(&transformer), 0u);
    for (const bool isPooled : {false, true}) {
      KORVEL_IMAGE_HANDLE own = nullptr;
      ASSERT_EQ(KORVEL_Image_Construct(kBayer, 4, 3, &own), 0u);
      KORVEL_IMAGE_HANDLE image = own;
      // Turned by no more than a mirror of an odd height, which keeps the format.
      if (isPooled) {
        ASSERT_EQ(KORVEL_ImageTransformer_MirrorUpDown(transformer, own, &image), 0u);
      }
      uint8_t* data = nullptr;
      ASSERT_EQ(KORVEL_Image_GetData(image, &data), 0u);
      std::array<uint8_t, kByteCount> pixels;
      std::iota(pixels.begin(), pixels.end(), uint8_t{1});
      std::copy(pixels.begin(), pixels.end(), data);

      KORVEL_RETURN_CODE code = KORVEL_RETURN_CODE_Error;
      for (long failing = 0; code != KORVEL_RETURN_CODE_Success; ++failing) {
        ASSERT_LT(failing, 1000);
        SCOPED_TRACE(failing);
        allocationsUntilFailure = failing;
        code = call(transformer, image);
        allocationsUntilFailure = -1;
        uint8_t* now = nullptr;
        ASSERT_EQ(KORVEL_Image_GetData(image, &now), 0u);
        ASSERT_EQ(now, data);
        if (code == KORVEL_RETURN_CODE_Success) break;
        EXPECT_EQ(code, uint32_t{KORVEL_RETURN_CODE_Error});
        EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), data));
        uint32_t format = 0;
        ASSERT_EQ(KORVEL_Image_GetPixelFormat(image, &format), 0u);
        EXPECT_EQ(format, kBayer);
      }
      EXPECT_FALSE(std::equal(pixels.begin(), pixels.end(), data));
      EXPECT_EQ(KORVEL_Image_Destruct(image), 0u);
      if (isPooled) {
        EXPECT_EQ(KORVEL_Image_Destruct(own), 0u);
      }
    }
    EXPECT_EQ(KORVEL_ImageTransformer_Destruct(transformer), 0u);
  }
}

// A conversion that writes every byte takes memory as it comes. Should it fail in between, the next one, which may
// leave pixels as they are, doesn't find that memory.
TEST(ImageConverter, ShowsNoUnsetMemoryAfterAConversionThatRanOutOfIt) {
  constexpr uint32_t kOutput = KORVEL_PIXEL_FORMAT_BGRa8;
  KORVEL_IMAGE_HANDLE square = nullptr;
  KORVEL_IMAGE_HANDLE line = nullptr;  // of as many pixels, too low to be converted
  ASSERT_EQ(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_BayerRG12p, 64, 64, &square), 0u);
  ASSERT_EQ(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_BayerRG8, 4096, 1, &line), 0u);
  long failures = 0;
  for (bool isFailing = true; isFailing; failures += isFailing ? 1 : 0) {
    ASSERT_LT(failures, 1000);
    SCOPED_TRACE(failures);
    KORVEL_IMAGE_CONVERTER_HANDLE converter = nullptr;
    ASSERT_EQ(KORVEL_ImageConverter_Construct(&converter), 0u);
    KORVEL_IMAGE_HANDLE output = nullptr;
    allocationsUntilFailure = failures;
    isFailing = KORVEL_ImageConverter_Convert(converter, square, kOutput, &output) != KORVEL_RETURN_CODE_Success;
    allocationsUntilFailure = -1;
    if (isFailing) {
      ASSERT_EQ(KORVEL_ImageConverter_Convert(converter, line, kOutput, &output), 0u);
      uint8_t* pixels = nullptr;
      ASSERT_EQ(KORVEL_Image_GetData(output, &pixels), 0u);
      EXPECT_EQ(std::count(pixels, pixels + 4 * 4096, kUnset), 0);
    }
    EXPECT_EQ(KORVEL_Image_Destruct(output), 0u);
    EXPECT_EQ(KORVEL_ImageConverter_Destruct(converter), 0u);
  }
  EXPECT_GE(failures, 3);
  EXPECT_EQ(KORVEL_Image_Destruct(square), 0u);
  EXPECT_EQ(KORVEL_Image_Destruct(line), 0u);
}

// No call leaves a file open, and what a recording has written is whole when it is closed.
TEST(VideoWriter, LosesNoFileWhenMemoryRunsOut) {
  const korvel_test::TemporaryDirectory directory;
  const std::string path = directory.File("a.avi");
  KORVEL_IMAGE_HANDLE image = nullptr;
  ASSERT_EQ(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_RGB8, 64, 48, &image), 0u);
  // Runs a call until none of its allocations fails.
  const auto repeat = [](auto&& call, auto&& check) {
    for (long failing = 0;; ++failing) {
      allocationsUntilFailure = failing;
      const KORVEL_RETURN_CODE code = call();
      allocationsUntilFailure = -1;
      if (code == KORVEL_RETURN_CODE_Success) return;
      SCOPED_TRACE(failing);
      ASSERT_LT(failing, 1000);
      EXPECT_EQ(code, uint32_t{KORVEL_RETURN_CODE_Error});
      check();
    }
  };
  const size_t descriptors = korvel_test::OpenDescriptors();
  KORVEL_VIDEO_HANDLE video = nullptr;
  repeat(
      [&] {
        return KORVEL_VideoWriter_Video_Open(&video, path.c_str(), KORVEL_VIDEO_CONTAINER_AVI,
                                             KORVEL_VIDEO_ENCODER_MJPEG);
      },
      [&] {
        EXPECT_EQ(korvel_test::OpenDescriptors(), descriptors);
        EXPECT_EQ(video, nullptr);
        std::filesystem::remove(path);
      });
  repeat([&] { return KORVEL_VideoWriter_Video_Append(video, image); }, [] {});
  repeat([&] { return KORVEL_VideoWriter_Video_Close(video); },
         [] { ADD_FAILURE() << "the end of a file takes no memory"; });
  EXPECT_EQ(korvel_test::OpenDescriptors(), descriptors);
  EXPECT_EQ(korvel_test::ParseAviFile(korvel_test::ReadFileBytes(path)).frames.size(), 1u);
  EXPECT_EQ(KORVEL_Image_Destruct(image), 0u);
}

}  // namespace
