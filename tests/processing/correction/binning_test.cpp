#include "processing/correction/binning.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "tests/model/correction_model.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::Size2D;
using img::buffer::FixedFormatVectorBufferPool;
using img::buffer::MultiFormatBufferPool;
using img::processing::Binning;
using img::processing::BinningMode;
using korvel_test::BinningSettings;
using korvel_test::Bytes;
using korvel_test::BytesOf;
using korvel_test::Fill;
using korvel_test::IdOf;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using korvel_test::MakeFilledImage;
using korvel_test::ModelBin;
using korvel_test::ModelImage;
using korvel_test::TestImage;
using korvel_test::Words32;
using korvel_test::WordsOfBytes;

constexpr const char* kProcess =
    "std::shared_ptr<img::IfcImage> img::processing::Binning::Process(const img::IfcImage &) const";

class BinningTest : public testing::Test {
 protected:
  void Set(const BinningSettings& settings) {
    binning.SetBinningX(static_cast<uint8_t>(settings.x));
    binning.SetBinningY(static_cast<uint8_t>(settings.y));
    binning.SetMode(settings.average ? BinningMode::Average : BinningMode::Sum);
  }

  const std::shared_ptr<MultiFormatBufferPool> pool =
      std::make_shared<MultiFormatBufferPool>(std::make_shared<FixedFormatVectorBufferPool::Factory>(), 1);
  Binning binning{pool};
};

TEST_F(BinningTest, TellsWhichSetterRefusedAValue) {
  EXPECT_EQ(LocatedFailureOf([&] { binning.SetBinningX(0); }),
            (LocatedFailure{5, 9003, "void img::processing::Binning::SetBinningX(uint8_t)",
                            "img::processing::Binning::SetBinningX: binning value not supported!"}));
  EXPECT_EQ(LocatedFailureOf([&] { binning.SetBinningY(9); }),
            (LocatedFailure{5, 9003, "void img::processing::Binning::SetBinningY(uint8_t)",
                            "img::processing::Binning::SetBinningX: binning value not supported!"}));
  EXPECT_EQ(LocatedFailureOf([&] { binning.SetMode(BinningMode{256}); }),
            (LocatedFailure{5, 9003, "void img::processing::Binning::SetMode(img::processing::BinningMode)",
                            "img::processing::Binning::SetMode: mode not supported!"}));
}

TEST_F(BinningTest, RefusesFormatsWithItsSignature) {
  for (const auto& [format, text] : {std::pair{PixelFormatId::BGR10p32, "Pixel format BGR10p32 is not supported!"},
                                     std::pair{PixelFormatId::Mono10p, "Pixel format Mono10p is not supported!"},
                                     std::pair{PixelFormatId::Invalid, "Pixel format Invalid is not supported!"}}) {
    const TestImage image(format, 16, 16);
    for (const uint8_t factor : {uint8_t{1}, uint8_t{2}}) {
      binning.SetBinningX(factor);
      EXPECT_EQ(LocatedFailureOf([&] { binning.Process(*image); }), (LocatedFailure{7, 9003, kProcess, text}));
    }
    EXPECT_EQ(
        LocatedFailureOf([&, id = format] {
          binning.ExpectedOutputSize(Size2D{64, 64}, id);
        }),
        (LocatedFailure{
            5, 9003,
            "img::Size2D img::processing::Binning::ExpectedOutputSize(const img::Size2D, const img::PixelFormatId) "
            "const",
            "img::processing::Binning::ExpectedOutputSize: pixelFormat value not supported!"}));
  }
  EXPECT_EQ(pool->NumBuffers(), 0u);
}

TEST_F(BinningTest, RefusesSmallImagesWithItsSignature) {
  Set({2, 2});
  const TestImage image(PixelFormatId::Mono8, 7, 3);
  EXPECT_EQ(LocatedFailureOf([&] { binning.Process(*image); }),
            (LocatedFailure{5, 9003, kProcess, "img::processing::Binning::Process: The image is too small!"}));
  EXPECT_EQ(pool->NumBuffers(), 0u);
}

// What the exported function refuses as packed.
TEST_F(BinningTest, BinsWordsOfThreeChannels) {
  for (const BinningSettings& settings :
       {BinningSettings{2, 3, false}, {2, 3, true}, {8, 8, false}, {7, 1, true}, {1, 1, false}}) {
    Set(settings);
    for (const size_t width : {size_t{37}, size_t{70}, size_t{3001}}) {
      const ModelImage input = MakeFilledImage(IdOf("RGB10p32"), width, 19, Fill::kGarbage, width);
      const TestImage image(PixelFormatId::RGB10p32, width, 19, input.bytes);
      const ModelImage expected = ModelBin(input, settings).value();
      const auto output = binning.Process(*image);
      ASSERT_EQ(output->Area().size, (Size2D{expected.width, expected.height}));
      const Bytes bytes = BytesOf(*output);
      for (size_t i = 0; i < bytes.size(); ++i) {
        ASSERT_EQ(bytes[i] & expected.written[i], expected.bytes[i] & expected.written[i]) << width << ", byte " << i;
      }
      EXPECT_EQ(image.Content(), input.bytes);
    }
  }
}

TEST_F(BinningTest, KeepsTheUnusedBitsThatTheMemoryHeld) {
  {
    const TestImage before(PixelFormatId::RGB10p32, 4, 2,
                           Words32{0xC0000000, 0x40000000, 0x80000001, 0, 0xFFFFFFFF, 0, 0, 0x7FFFFFFF});
    const auto copy = binning.Process(*before);
  }
  Set({2, 1});
  const TestImage image(PixelFormatId::RGB10p32, 8, 2, Words32(16, 0xC0000000 | 1 | 2 << 10 | 600 << 20));
  const auto output = binning.Process(*image);
  EXPECT_EQ(pool->NumBuffers(), 1u);
  constexpr uint32_t kSum = 2 | 4 << 10 | 1023 << 20;
  EXPECT_EQ(WordsOfBytes<uint32_t>(BytesOf(*output)),
            (Words32{0xC0000000 | kSum, 0x40000000 | kSum, 0x80000000 | kSum, kSum, 0xC0000000 | kSum, kSum, kSum,
                     0x40000000 | kSum}));
}

TEST_F(BinningTest, DrawsImagesFromItsPool) {
  const TestImage image(PixelFormatId::BayerRG8, 32, 16);
  for (const uint32_t factor : {1u, 2u, 2u, 1u}) {
    Set({factor, factor});
    const auto output = binning.Process(*image);
    EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  }
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_EQ(pool->NumBuffers(), 2u) << "one of each size";
}

}  // namespace
