#include "processing/conversion/fused_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "buffers/raw_image_buffer.h"
#include "processing/conversion/image_converter.h"
#include "processing/streaming.h"

namespace {

using img::IfcImage;
using img::PixelFormatId;
using img::ProcessorFeatures;
using img::Size2D;
using img::processing::FusedConversion;
using img::processing::ImageConverter;

constexpr ProcessorFeatures kAvx = {.avx = 1};
constexpr ProcessorFeatures kAvx2 = {.avx = 1, .avx2 = 1};

bool RunsVectors() { return img::InstructionSetOf(kAvx2) != img::InstructionSet::Baseline; }

std::unique_ptr<ImageConverter> MakeConverter(const ProcessorFeatures& features) {
  return std::make_unique<ImageConverter>(std::make_shared<img::buffer::MultiFormatBufferPool>(
                                              std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1),
                                          features);
}

class Frame {
 public:
  Frame(PixelFormatId format, const Size2D& size, unsigned seed)
      : bytes_(img::PixelFormatInfo_CalcSizeOfPixels(format, size.width * size.height)) {
    std::mt19937 random(seed);
    std::generate(bytes_.begin(), bytes_.end(), [&] { return static_cast<uint8_t>(random()); });
    image_ = img::buffer::RawImageBuffer::CreateBuffer(format, bytes_.data(), size)->CreateImage();
  }
  const std::shared_ptr<IfcImage>& Image() const { return image_; }
  std::vector<uint8_t>& Bytes() { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
  std::shared_ptr<IfcImage> image_;
};

std::vector<uint8_t> BytesOf(const IfcImage& image) {
  const uint8_t* const first = image.PixelPointer(0, 0);
  return {first, first + image.ByteCount()};
}

bool HasPlan(const ProcessorFeatures& features, PixelFormatId from, PixelFormatId to, uint32_t mode,
             const Size2D& size = {64, 48}) {
  const Frame frame(from, size, 1);
  return FusedConversion(features).FindPlan(*frame.Image(), to, mode).has_value();
}

TEST(FusedConversion, TakesWhatOnePassDoesFaster) {
  if (!RunsVectors()) GTEST_SKIP() << "needs AVX";
  using enum PixelFormatId;
  EXPECT_TRUE(HasPlan(kAvx2, BayerRG8, BGRa8, 2));
  EXPECT_TRUE(HasPlan(kAvx, BayerGB8, BGRa8, 1));
  EXPECT_TRUE(HasPlan(kAvx, BayerRG12p, RGB12, 2));
  EXPECT_TRUE(HasPlan(kAvx2, BayerRG12, BGRa8, 1));
  EXPECT_TRUE(HasPlan(kAvx2, BayerBG10g40Qrv, Mono8, 7));
}

TEST(FusedConversion, LeavesTheRestToTheChain) {
  using enum PixelFormatId;
  EXPECT_FALSE(HasPlan({}, BayerRG8, BGRa8, 2)) << "no vectors";
  EXPECT_FALSE(HasPlan(kAvx2, BayerRG8, BGRa8, 1)) << "a fast path by itself";
  EXPECT_FALSE(HasPlan(kAvx2, BayerRG12p, BGRa8, 3)) << "classic";
  EXPECT_FALSE(HasPlan(kAvx2, BayerRG8, BGR10p32, 2)) << "no such conversion";
  EXPECT_FALSE(HasPlan(kAvx2, BayerRG8, Mono12p, 2)) << "no such conversion";
  EXPECT_FALSE(HasPlan(kAvx2, BayerRG8, BayerRG12, 2)) << "no demosaic";
  EXPECT_FALSE(HasPlan(kAvx2, Mono8, BGRa8, 2)) << "no mosaic";
  EXPECT_FALSE(HasPlan(kAvx2, BayerRG8, BGRa8, 2, {35, 48})) << "too narrow";
  EXPECT_FALSE(HasPlan(kAvx2, BayerRG8, BGRa8, 2, {64, 4})) << "too low";
}

TEST(FusedConversion, KeepsTheUnusedBitsOfMemoryAsTheChainDoes) {
  using enum PixelFormatId;
  const Size2D size{41, 16};
  const Frame before(RGB10p32, size, 2);
  const Frame mosaic(BayerGR10, size, 3);
  for (const uint32_t mode : {1u, 2u}) {
    const auto convert = [&](const ProcessorFeatures& features) {
      const auto converter = MakeConverter(features);
      converter->SetConversionMode(mode);
      converter->ConvertPixelFormat(before.Image(), RGB10p32);  // and back to the pool
      return BytesOf(*converter->ConvertPixelFormat(mosaic.Image(), RGB10p32));
    };
    const std::vector<uint8_t> chain = convert({});
    EXPECT_EQ(convert(kAvx), chain) << mode;
    EXPECT_EQ(convert(kAvx2), chain) << mode;
  }
}

TEST(FusedConversion, LeavesPartsOfImagesToTheChain) {
  const Frame frame(PixelFormatId::BayerRG8, {80, 48}, 1);
  const std::shared_ptr<IfcImage> part = frame.Image()->Region({0, 0}, {64, 48});
  EXPECT_FALSE(FusedConversion(kAvx2).FindPlan(*part, PixelFormatId::BGRa8, 2));
}

// Outputs that are written past the caches; the chain of a processor without vectors tells what they hold.
TEST(FusedConversion, MakesWhatTheChainMakesOfLargeImages) {
  struct Pair {
    PixelFormatId from;
    PixelFormatId to;
    uint32_t mode;
  };
  using enum PixelFormatId;
  const Size2D size{2051, 1501};
  for (const Pair& pair : {Pair{BayerRG8, BGRa8, 2},
                           {BayerGR8, RGBa8, 7},
                           {BayerRG12p, RGB12, 2},
                           {BayerGB10g40Qrv, BGRa10, 2},
                           {BayerBG10, RGB10p32, 2},
                           {BayerGB12g24Qrv, RGB12, 1},
                           {BayerGB8, RGBa8, 1},
                           {BayerRG12, RGB8, 1}}) {
    Frame frame(pair.from, size, 2);
    const auto convert = [&](const ProcessorFeatures& features) {
      const std::unique_ptr<ImageConverter> converter = MakeConverter(features);
      converter->SetConversionMode(pair.mode);
      return BytesOf(*converter->ConvertPixelFormat(frame.Image(), pair.to));
    };
    const std::vector<uint8_t> expected = convert({});
    if (img::processing::ShouldStream(expected.size())) {
      std::vector<uint8_t> output(expected.size() + 7);
      for (const size_t offset : {0u, 1u, 4u, 6u}) {
        const std::unique_ptr<ImageConverter> converter = MakeConverter(kAvx2);
        converter->SetConversionMode(pair.mode);
        converter->ConvertPixelFormat(frame.Image(), pair.to, output.data() + offset, expected.size());
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), output.begin() + static_cast<ptrdiff_t>(offset)))
            << img::PixelFormatInfo_Name(pair.from) << " " << offset;
      }
    }
    EXPECT_EQ(convert(kAvx), expected) << img::PixelFormatInfo_Name(pair.from);
    EXPECT_EQ(convert(kAvx2), expected) << img::PixelFormatInfo_Name(pair.from);
  }
}

TEST(FusedConversion, ConvertsIntoMemoryThatOverlapsTheInput) {
  const Size2D size{64, 48};
  const auto convert = [&](const ProcessorFeatures& features) {
    std::vector<uint8_t> memory(size.width * size.height * 5);
    std::mt19937 random(3);
    std::generate(memory.begin(), memory.end(), [&] { return static_cast<uint8_t>(random()); });
    const std::shared_ptr<IfcImage> image =
        img::buffer::RawImageBuffer::CreateBuffer(PixelFormatId::BayerRG8, memory.data() + 64, size)->CreateImage();
    const std::unique_ptr<ImageConverter> converter = MakeConverter(features);
    converter->SetConversionMode(2);
    converter->ConvertPixelFormat(image, PixelFormatId::BGRa8, memory.data(), size.width * size.height * 4);
    return memory;
  };
  EXPECT_EQ(convert(kAvx2), convert({}));
}

TEST(FusedConversion, ServesSeveralThreadsAtATime) {
  if (!RunsVectors()) GTEST_SKIP() << "needs AVX";
  const FusedConversion conversion(kAvx2);
  const auto run = [&](unsigned seed) {
    const Size2D size{seed % 2 == 0 ? 200u : 96u, 64};
    const Frame frame(PixelFormatId::BayerRG12p, size, seed);
    const auto plan = conversion.FindPlan(*frame.Image(), PixelFormatId::RGB12, 2);
    std::vector<uint8_t> first(size.width * size.height * 6);
    std::vector<uint8_t> again(first.size());
    conversion.Convert(*plan, *frame.Image(), first.data());
    for (int i = 0; i < 50; ++i) {
      conversion.Convert(*plan, *frame.Image(), again.data());
      if (again != first) return false;
    }
    return true;
  };
  bool results[4] = {};
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < 4; ++i) threads.emplace_back([&, i] { results[i] = run(i); });
  for (std::thread& thread : threads) thread.join();
  for (const bool result : results) EXPECT_TRUE(result);
}

}  // namespace
