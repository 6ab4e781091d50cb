#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "buffers/buffer_pool.h"
#include "buffers/pooled_image_buffer.h"
#include "buffers/raw_image_buffer.h"
#include "buffers/vector_image_buffer.h"
#include "core/image.h"
#include "status/exceptions.h"
#include "tests/support/failure.h"

namespace {

using img::ImageArea;
using img::PixelFormatId;
using img::Point2D;
using img::Size2D;
using img::buffer::IfcBufferFactory;
using img::buffer::IfcFixedFormatBufferPool;
using img::buffer::IfcImageBuffer;
using img::buffer::PooledImageBuffer;
using img::buffer::RawImageBuffer;
using img::buffer::VectorImageBuffer;
using img::buffer::VectorImageBufferFactory;
using korvel::internal::ImgException;
using korvel_test::Failure;
using korvel_test::FailureOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

using enum PixelFormatId;

using BufferPtr = std::shared_ptr<IfcImageBuffer>;
using Bytes = std::vector<uint8_t>;

constexpr size_t kMax = std::numeric_limits<size_t>::max();

template <class Call>
std::string RuntimeErrorOf(Call call) {
  try {
    call();
  } catch (const ImgException&) {
    return "a status exception";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

// Takes note of the memory that it gets back.
class RecordingPool final : public IfcFixedFormatBufferPool {
 public:
  std::vector<size_t> released;
  BufferPtr next;

  BufferPtr AllocBuffer(PixelFormatId, const Size2D&) override { return std::move(next); }
  void Reset() override {}
  void WaitUntilAllFree() override {}
  size_t NumBuffers() const override { return 0; }
  size_t NumBuffersInUse() const override { return 0; }
  size_t TotalByteCount() const override { return 0; }
  size_t BufferByteCount() const override { return 0; }
  size_t NumBuffersWanted() const override { return 0; }
  size_t BufferLimit() const override { return 0; }
  void SetNumBuffersWanted(size_t) override {}
  void ReleaseBuffer(size_t key) override { released.push_back(key); }
};

BufferPtr PooledBuffer(PixelFormatId format, uint8_t* data, const Size2D& size, size_t key,
                       const std::shared_ptr<IfcFixedFormatBufferPool>& pool,
                       const std::shared_ptr<IfcBufferFactory>& factory = nullptr) {
  return PooledImageBuffer::CreateBuffer(format, data, size, key, pool, factory);
}

struct Sizes {
  PixelFormatId format;
  size_t bytesOf15Pixels;
  size_t bytesOf5Pixels;
  size_t step;
};

// Bytes of 5 x 3 pixels, of one line of them, and from one pixel to the next.
const std::vector<Sizes>& SizesOfAllFormats() {
  static const std::vector<Sizes> sizes = {
      {Invalid, 15, 5, 1},         {Mono8, 15, 5, 1},           {BayerGR8, 15, 5, 1},
      {BayerRG8, 15, 5, 1},        {BayerGB8, 15, 5, 1},        {BayerBG8, 15, 5, 1},
      {Mono10p, 19, 7, 2},         {BayerBG10p, 19, 7, 2},      {BayerGB10p, 19, 7, 2},
      {BayerGR10p, 19, 7, 2},      {BayerRG10p, 19, 7, 2},      {BayerRG10g40Qrv, 19, 7, 2},
      {BayerGB10g40Qrv, 19, 7, 2}, {BayerGR10g40Qrv, 19, 7, 2}, {BayerBG10g40Qrv, 19, 7, 2},
      {Mono10g40Qrv, 19, 7, 2},    {Mono12p, 23, 8, 2},         {BayerBG12p, 23, 8, 2},
      {BayerGB12p, 23, 8, 2},      {BayerGR12p, 23, 8, 2},      {BayerRG12p, 23, 8, 2},
      {BayerRG12g24Qrv, 23, 8, 2}, {BayerGB12g24Qrv, 23, 8, 2}, {BayerGR12g24Qrv, 23, 8, 2},
      {BayerBG12g24Qrv, 23, 8, 2}, {Mono12g24Qrv, 23, 8, 2},    {Mono10, 30, 10, 2},
      {Mono12, 30, 10, 2},         {BayerGR10, 30, 10, 2},      {BayerRG10, 30, 10, 2},
      {BayerGB10, 30, 10, 2},      {BayerBG10, 30, 10, 2},      {BayerGR12, 30, 10, 2},
      {BayerRG12, 30, 10, 2},      {BayerGB12, 30, 10, 2},      {BayerBG12, 30, 10, 2},
      {RGB8, 45, 15, 3},           {BGR8, 45, 15, 3},           {RGBa8, 60, 20, 4},
      {BGRa8, 60, 20, 4},          {RGB10p32, 60, 20, 4},       {BGR10p32, 60, 20, 4},
      {RGB10, 90, 30, 6},          {BGR10, 90, 30, 6},          {RGB12, 90, 30, 6},
      {BGR12, 90, 30, 6},          {RGBa10, 120, 40, 8},        {BGRa10, 120, 40, 8},
      {RGBa12, 120, 40, 8},        {BGRa12, 120, 40, 8},
  };
  return sizes;
}

// ------------------------------------------------------------------------------------------------- all three kinds --

class EveryKind : public testing::TestWithParam<const char*> {
 protected:
  BufferPtr Make(PixelFormatId format, const Size2D& size) {
    const std::string kind = GetParam();
    if (kind == "Vector") return VectorImageBuffer::AllocBuffer(format, size);
    if (kind == "Raw") return RawImageBuffer::CreateBuffer(format, memory_.data(), size);
    return PooledBuffer(format, memory_.data(), size, 1, std::make_shared<RecordingPool>());
  }

 private:
  Bytes memory_ = Bytes(4096);
};

INSTANTIATE_TEST_SUITE_P(Buffers, EveryKind, testing::Values("Vector", "Raw", "Pooled"),
                         [](const auto& kind) { return std::string(kind.param); });

TEST_P(EveryKind, TellsItsFormatAndSize) {
  ASSERT_EQ(SizesOfAllFormats().size(), 50u);
  for (const Sizes& expected : SizesOfAllFormats()) {
    const BufferPtr buffer = Make(expected.format, {5, 3});
    EXPECT_EQ(buffer->Format(), expected.format);
    EXPECT_EQ(buffer->Size(), (Size2D{5, 3}));
  }
}

TEST_P(EveryKind, CountsItsBytesAndThoseOfALineInEveryFormat) {
  for (const Sizes& expected : SizesOfAllFormats()) {
    SCOPED_TRACE(static_cast<uint32_t>(expected.format));
    const BufferPtr buffer = Make(expected.format, {5, 3});
    EXPECT_EQ(buffer->ByteCount(), expected.bytesOf15Pixels);
    EXPECT_EQ(buffer->LineByteCount(), expected.bytesOf5Pixels);
  }
}

TEST_P(EveryKind, AddressesPixelsByTheStepOfTheFormat) {
  for (const Sizes& expected : SizesOfAllFormats()) {
    SCOPED_TRACE(static_cast<uint32_t>(expected.format));
    const BufferPtr buffer = Make(expected.format, {5, 3});
    EXPECT_EQ(buffer->PixelPointer(0, 0), buffer->Data());
    EXPECT_EQ(buffer->PixelPointer(1, 0), buffer->Data() + expected.step);
    EXPECT_EQ(buffer->PixelPointer(0, 1), buffer->Data() + 5 * expected.step);
    EXPECT_EQ(buffer->PixelPointer(1, 1), buffer->Data() + 6 * expected.step);
  }
}

TEST_P(EveryKind, MakesAnImageOverItsWholeThatKeepsItAlive) {
  BufferPtr buffer = Make(BGRa8, {5, 3});
  const std::weak_ptr<IfcImageBuffer> watch = buffer;
  auto image = buffer->CreateImage();
  EXPECT_EQ(image->Buffer(), buffer);
  EXPECT_EQ(image->PixelFormat(), BGRa8);
  EXPECT_EQ(image->Area(), (ImageArea{{0, 0}, {5, 3}}));
  buffer.reset();
  EXPECT_FALSE(watch.expired());
  image.reset();
  EXPECT_TRUE(watch.expired());
}

TEST_P(EveryKind, OverwritesItsSizeAndKeepsItsMemory) {
  const BufferPtr buffer = Make(Mono12p, {4, 2});
  uint8_t* const data = buffer->Data();
  buffer->SetSize({2, 3});
  EXPECT_EQ(buffer->Size(), (Size2D{2, 3}));
  EXPECT_EQ(buffer->ByteCount(), 9u);
  EXPECT_EQ(buffer->LineByteCount(), 3u);
  EXPECT_EQ(buffer->Data(), data);
}

// --------------------------------------------------------------------------------------------------- pixel pointers --

// Only addresses are computed here; no pixel is touched.
TEST(PixelPointer, WrapsAtFourGigabytesOfPixelData) {
  Bytes memory(64);
  const auto offset = [&](PixelFormatId format, const Size2D& size, size_t x, size_t y) {
    return RawImageBuffer::CreateBuffer(format, memory.data(), size)->PixelPointer(x, y) - memory.data();
  };
  EXPECT_EQ(offset(Mono8, {65536, 65537}, 5, 65535), 4294901765);
  EXPECT_EQ(offset(Mono8, {65536, 65537}, 5, 65536), 5);
  EXPECT_EQ(offset(Mono10, {65536, 40000}, 3, 32768), 6);
  EXPECT_EQ(offset(RGBa12, {65536, 10000}, 2, 8192), 16);
  // 3 * (65536 * 21846 + 1) = 2^32 + 131075
  EXPECT_EQ(offset(RGB8, {65536, 30000}, 1, 21846), 131075);
}

TEST(PixelPointer, WrapsInThePixelCountAsWell) {
  Bytes memory(64);
  const BufferPtr buffer = RawImageBuffer::CreateBuffer(RGBa8, memory.data(), {size_t{1} << 33, 4});
  EXPECT_EQ(buffer->PixelPointer(7, 3) - memory.data(), 28);
}

// ------------------------------------------------------------------------------------------------------------- raw --

TEST(RawBuffer, LivesInTheCallersMemory) {
  Bytes memory(15);
  const BufferPtr buffer = RawImageBuffer::CreateBuffer(Mono8, memory.data(), {5, 3});
  EXPECT_EQ(buffer->Data(), memory.data());
  *buffer->PixelPointer(4, 2) = 9;
  EXPECT_EQ(memory[14], 9);
}

TEST(RawBuffer, TakesMemoryAtAnyAddress) {
  Bytes memory(100);
  const BufferPtr buffer = RawImageBuffer::CreateBuffer(RGBa12, memory.data() + 1, {2, 2});
  EXPECT_EQ(buffer->Data(), memory.data() + 1);
  EXPECT_EQ(buffer->PixelPointer(1, 1), memory.data() + 25);
}

TEST(RawBuffer, LeavesTheCallersMemoryAsItWasAfterItsEnd) {
  Bytes memory(15, 0xA5);
  RawImageBuffer::CreateBuffer(Mono8, memory.data(), {5, 3});
  EXPECT_THAT(memory, Each(0xA5));
}

TEST(RawBuffer, CannotBeCloned) {
  Bytes memory(15);
  const BufferPtr buffer = RawImageBuffer::CreateBuffer(Mono8, memory.data(), {5, 3});
  EXPECT_EQ(FailureOf([&] { buffer->Clone(); }), (Failure{-1003, 9005, ""}));
}

TEST(RawBuffer, HasNoFactory) {
  Bytes memory(15);
  const BufferPtr buffer = RawImageBuffer::CreateBuffer(Mono8, memory.data(), {5, 3});
  EXPECT_EQ(FailureOf([&] { buffer->Factory(); }), (Failure{-1003, 9005, ""}));
}

TEST(RawBuffer, ChangesItsFormatOverTheSameMemory) {
  Bytes memory(15);
  const BufferPtr buffer = RawImageBuffer::CreateBuffer(BayerRG8, memory.data(), {5, 3});
  const BufferPtr changed = buffer->ChangeFormat(BayerGR8);
  EXPECT_EQ(changed->Format(), BayerGR8);
  EXPECT_EQ(changed->Size(), (Size2D{5, 3}));
  EXPECT_EQ(changed->Data(), memory.data());
  EXPECT_EQ(buffer->Data(), memory.data());
  EXPECT_EQ(buffer->Format(), BayerRG8);
}

TEST(RawBuffer, OfNoFormatMayBeEmpty) {
  Bytes memory(1);
  const BufferPtr buffer = RawImageBuffer::CreateBuffer(Invalid, memory.data(), {0, 0});
  EXPECT_EQ(buffer->Data(), memory.data());
  EXPECT_EQ(buffer->ByteCount(), 0u);
}

TEST(RawBuffer, RefusesAnEmptyImageWidthFirst) {
  Bytes memory(1);
  EXPECT_EQ(FailureOf([&] {
              RawImageBuffer::CreateBuffer(Mono8, memory.data(), {0, 0});
            }),
            (Failure{6, 9000, "Width must not be 0!"}));
  EXPECT_EQ(FailureOf([&] {
              RawImageBuffer::CreateBuffer(Mono8, memory.data(), {1, 0});
            }),
            (Failure{6, 9000, "Height must not be 0!"}));
}

TEST(RawBuffer, RefusesAnIdThatIsNotPublic) {
  Bytes memory(64);
  try {
    RawImageBuffer::CreateBuffer(_RawUnpacked1Ch8, memory.data(), {1, 1});
    FAIL() << "nothing was thrown";
  } catch (const ImgException& exception) {
    EXPECT_EQ(static_cast<int>(exception.GetStatus()), -1009);
    EXPECT_EQ(exception.Text(), "Unsupported formatId: 4294902024");
    EXPECT_EQ(exception.Location(),
              "std::unique_ptr<TClassIfc> img::MakeFormatClass(img::PixelFormatId, Args...) [T = TRawImageBuffer, "
              "TClassIfc = img::buffer::IfcImageBuffer, Args = <unsigned char *, img::Size2D>]");
  }
}

// ---------------------------------------------------------------------------------------------------------- vector --

TEST(VectorBuffer, IsZeroInEveryFormat) {
  for (const Sizes& sizes : SizesOfAllFormats()) {
    SCOPED_TRACE(static_cast<uint32_t>(sizes.format));
    const BufferPtr buffer = VectorImageBuffer::AllocBuffer(sizes.format, {5, 3});
    EXPECT_THAT(Bytes(buffer->Data(), buffer->Data() + sizes.bytesOf15Pixels), Each(0));
  }
}

TEST(VectorBuffer, OfNoFormatMayBeEmptyAndHasNoDataThen) {
  EXPECT_EQ(VectorImageBuffer::AllocBuffer(Invalid, {0, 3})->Data(), nullptr);
  EXPECT_EQ(VectorImageBuffer::AllocBuffer(Invalid, {3, 0})->Data(), nullptr);
  EXPECT_EQ(VectorImageBuffer::AllocBuffer(Invalid, {0, 0})->ByteCount(), 0u);
  EXPECT_EQ(VectorImageBuffer::CreateBuffer(Invalid, Bytes(), {0, 0})->Data(), nullptr);
  EXPECT_EQ(VectorImageBuffer::AllocBuffer(Invalid, {kMax, 0})->Data(), nullptr);
}

TEST(VectorBuffer, RefusesAnEmptyImageWidthFirst) {
  EXPECT_EQ(FailureOf([] {
              VectorImageBuffer::AllocBuffer(Mono8, {0, 0});
            }),
            (Failure{6, 9000, "Width must not be 0!"}));
  EXPECT_EQ(FailureOf([] {
              VectorImageBuffer::AllocBuffer(Mono8, {1, 0});
            }),
            (Failure{6, 9000, "Height must not be 0!"}));
  EXPECT_EQ(FailureOf([] {
              VectorImageBuffer::CreateBuffer(Mono8, Bytes(4), {0, 0});
            }),
            (Failure{6, 9000, "Width must not be 0!"}));
  EXPECT_EQ(FailureOf([] {
              VectorImageBuffer::CreateBuffer(Mono8, Bytes(4), {4, 0});
            }),
            (Failure{6, 9000, "Height must not be 0!"}));
}

TEST(VectorBuffer, RefusesAnEmptyImageBeforeAnIdThatIsNotPublic) {
  EXPECT_EQ(FailureOf([] {
              VectorImageBuffer::AllocBuffer(PixelFormatId{0x01080002}, {0, 1});
            }),
            (Failure{6, 9000, "Width must not be 0!"}));
}

TEST(VectorBuffer, RefusesAnIdThatIsNotPublicBeforeItComputesASize) {
  try {
    VectorImageBuffer::AllocBuffer(PixelFormatId{0x01080002}, {kMax, kMax});
    FAIL() << "nothing was thrown";
  } catch (const ImgException& exception) {
    EXPECT_EQ(static_cast<int>(exception.GetStatus()), -1009);
    EXPECT_EQ(exception.ModuleId(), 9000);
    EXPECT_EQ(exception.Text(), "Unsupported formatId: 17301506");
    EXPECT_EQ(exception.Location(),
              "std::unique_ptr<TClassIfc> img::MakeFormatClass(img::PixelFormatId, Args...) [T = TVectorImageBuffer, "
              "TClassIfc = img::buffer::IfcImageBuffer, Args = <img::Size2D>]");
  }
}

TEST(VectorBuffer, NamesTheVectorAmongItsArgumentsWhenItRefusesAnId) {
  try {
    VectorImageBuffer::CreateBuffer(_RawPacked10p32, Bytes(4), {1, 1});
    FAIL() << "nothing was thrown";
  } catch (const ImgException& exception) {
    EXPECT_EQ(exception.Text(), "Unsupported formatId: 4294906125");
    EXPECT_EQ(exception.Location(),
              "std::unique_ptr<TClassIfc> img::MakeFormatClass(img::PixelFormatId, Args...) [T = TVectorImageBuffer, "
              "TClassIfc = img::buffer::IfcImageBuffer, Args = <std::vector<unsigned char>, img::Size2D>]");
  }
}

TEST(VectorBuffer, RefusesMemoryThatCannotBeHad) {
  EXPECT_THROW(VectorImageBuffer::AllocBuffer(Mono8, {kMax, 1}), std::bad_alloc);
  EXPECT_THROW(VectorImageBuffer::AllocBuffer(RGB8, {size_t{1} << 40, size_t{1} << 20}), std::bad_alloc);
}

TEST(VectorBuffer, RefusesASizeThatWraps) {
  EXPECT_THROW(VectorImageBuffer::AllocBuffer(Mono8, {(size_t{1} << 62) + 3, 4}), std::bad_alloc);
  EXPECT_THROW(VectorImageBuffer::AllocBuffer(Mono10p, {1844674407370955162u, 1}), std::bad_alloc);
  EXPECT_THROW(VectorImageBuffer::AllocBuffer(Invalid, {size_t{1} << 32, size_t{1} << 32}), std::bad_alloc);
}

TEST(VectorBuffer, TakesAVectorOver) {
  Bytes storage = {1, 2, 3, 4};
  const uint8_t* const data = storage.data();
  const BufferPtr buffer = VectorImageBuffer::CreateBuffer(Mono8, std::move(storage), {2, 2});
  EXPECT_EQ(buffer->Data(), data);
  EXPECT_EQ(buffer->Data()[3], 4);
}

TEST(VectorBuffer, TakesAVectorOfAnyLength) {
  const BufferPtr buffer = VectorImageBuffer::CreateBuffer(Mono8, Bytes(3), {100, 100});
  EXPECT_EQ(buffer->ByteCount(), 10000u);
  EXPECT_EQ(VectorImageBuffer::CreateBuffer(Mono8, Bytes(), {100, 100})->Data(), nullptr);
}

TEST(VectorBuffer, LeavesTheVectorAloneWhereItCannotTakeIt) {
  Bytes storage = {1, 2, 3, 4};
  EXPECT_THROW(VectorImageBuffer::CreateBuffer(Mono8, std::move(storage), {0, 2}), ImgException);
  EXPECT_THROW(VectorImageBuffer::CreateBuffer(_RawUnpacked1Ch8, std::move(storage), {2, 2}), ImgException);
  EXPECT_THAT(storage, ElementsAre(1, 2, 3, 4));
}

TEST(VectorBuffer, IsClonedWithItsWholeVector) {
  const BufferPtr buffer = VectorImageBuffer::CreateBuffer(Mono8, Bytes{1, 2, 3, 4, 5}, {2, 2});
  const BufferPtr clone = buffer->Clone();
  EXPECT_EQ(clone->Format(), Mono8);
  EXPECT_EQ(clone->Size(), (Size2D{2, 2}));
  ASSERT_NE(clone->Data(), buffer->Data());
  EXPECT_THAT(Bytes(clone->Data(), clone->Data() + 5), ElementsAre(1, 2, 3, 4, 5));
  clone->Data()[0] = 9;
  EXPECT_EQ(buffer->Data()[0], 1);
}

TEST(VectorBuffer, HasAFactoryThatMakesVectorBuffers) {
  const auto factory = VectorImageBuffer::AllocBuffer(Mono8, {2, 2})->Factory();
  ASSERT_NE(factory, nullptr);
  EXPECT_NE(dynamic_cast<VectorImageBufferFactory*>(factory.get()), nullptr);
  const BufferPtr made = factory->AllocBuffer(RGB8, {5, 3});
  EXPECT_NE(dynamic_cast<VectorImageBuffer*>(made.get()), nullptr);
  EXPECT_EQ(made->ByteCount(), 45u);
}

TEST(VectorBuffer, HandsItsStorageOverWhenItChangesItsFormat) {
  const BufferPtr buffer = VectorImageBuffer::CreateBuffer(BayerRG8, Bytes{1, 2, 3, 4}, {2, 2});
  uint8_t* const data = buffer->Data();
  const BufferPtr changed = buffer->ChangeFormat(BayerGR8);
  EXPECT_EQ(changed->Format(), BayerGR8);
  EXPECT_EQ(changed->Size(), (Size2D{2, 2}));
  EXPECT_EQ(changed->Data(), data);
  EXPECT_EQ(buffer->Data(), nullptr);
  EXPECT_NE(dynamic_cast<VectorImageBuffer*>(changed.get()), nullptr);
}

TEST(VectorBuffer, KeepsItsStorageWhenItCannotChangeItsFormat) {
  const BufferPtr buffer = VectorImageBuffer::CreateBuffer(BayerRG8, Bytes{1, 2, 3, 4}, {2, 2});
  EXPECT_ANY_THROW(buffer->ChangeFormat(Mono10));
  EXPECT_ANY_THROW(buffer->ChangeFormat(_RawUnpacked1Ch8));
  EXPECT_THAT(Bytes(buffer->Data(), buffer->Data() + 4), ElementsAre(1, 2, 3, 4));
}

// ---------------------------------------------------------------------------------------------------------- pooled --

TEST(PooledBuffer, GivesItsMemoryBackOnceAtItsEnd) {
  const auto pool = std::make_shared<RecordingPool>();
  Bytes memory(15);
  {
    const BufferPtr buffer = PooledBuffer(Mono8, memory.data(), {5, 3}, 77, pool);
    EXPECT_EQ(buffer->Data(), memory.data());
    EXPECT_THAT(pool->released, IsEmpty());
  }
  EXPECT_THAT(pool->released, ElementsAre(77u));
}

TEST(PooledBuffer, KeepsItsPoolAndItsFactoryAlive) {
  auto pool = std::make_shared<RecordingPool>();
  auto factory = std::make_shared<RecordingPool>();
  const std::weak_ptr<RecordingPool> watchedPool = pool;
  const std::weak_ptr<RecordingPool> watchedFactory = factory;
  Bytes memory(15);
  BufferPtr buffer = PooledBuffer(Mono8, memory.data(), {5, 3}, 77, pool, factory);
  pool.reset();
  factory.reset();
  EXPECT_FALSE(watchedPool.expired());
  EXPECT_EQ(buffer->Factory(), watchedFactory.lock());
  buffer.reset();
  EXPECT_TRUE(watchedPool.expired());
  EXPECT_TRUE(watchedFactory.expired());
}

TEST(PooledBuffer, IsClonedFromItsFactory) {
  const auto pool = std::make_shared<RecordingPool>();
  const auto factory = std::make_shared<RecordingPool>();
  Bytes memory(9);
  std::iota(memory.begin(), memory.end(), uint8_t{1});
  factory->next = VectorImageBuffer::AllocBuffer(Mono12p, {3, 2});
  const BufferPtr expected = factory->next;
  const BufferPtr clone = PooledBuffer(Mono12p, memory.data(), {3, 2}, 77, pool, factory)->Clone();
  EXPECT_EQ(clone, expected);
  EXPECT_THAT(Bytes(clone->Data(), clone->Data() + 9), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
}

TEST(PooledBuffer, IsClonedFromItsPoolWhereItHasNoFactory) {
  const auto pool = std::make_shared<RecordingPool>();
  Bytes memory = {1, 2, 3, 4};
  pool->next = VectorImageBuffer::AllocBuffer(Mono8, {2, 2});
  const BufferPtr clone = PooledBuffer(Mono8, memory.data(), {2, 2}, 77, pool)->Clone();
  EXPECT_THAT(Bytes(clone->Data(), clone->Data() + 4), ElementsAre(1, 2, 3, 4));
}

TEST(PooledBuffer, HasNoCloneWithoutFactoryAndPool) {
  Bytes memory(4);
  EXPECT_EQ(PooledBuffer(Mono8, memory.data(), {2, 2}, 77, nullptr)->Clone(), nullptr);
}

TEST(PooledBuffer, HasNoFactoryIfItWasGivenNone) {
  Bytes memory(4);
  EXPECT_EQ(PooledBuffer(Mono8, memory.data(), {2, 2}, 77, std::make_shared<RecordingPool>())->Factory(), nullptr);
}

TEST(PooledBuffer, GivesNothingBackOnceAnotherBufferHasItsMemory) {
  const auto pool = std::make_shared<RecordingPool>();
  const auto factory = std::make_shared<RecordingPool>();
  Bytes memory(4);
  BufferPtr buffer = PooledBuffer(BayerRG8, memory.data(), {2, 2}, 77, pool, factory);
  BufferPtr changed = buffer->ChangeFormat(BayerGR8);
  EXPECT_EQ(changed->Format(), BayerGR8);
  EXPECT_EQ(changed->Size(), (Size2D{2, 2}));
  EXPECT_EQ(changed->Data(), memory.data());
  EXPECT_EQ(changed->Factory(), factory);
  EXPECT_NE(dynamic_cast<PooledImageBuffer*>(changed.get()), nullptr);
  buffer.reset();
  EXPECT_THAT(pool->released, IsEmpty());
  changed.reset();
  EXPECT_THAT(pool->released, ElementsAre(77u));
}

TEST(PooledBuffer, StillGivesItsMemoryBackIfItCouldNotChangeItsFormat) {
  const auto pool = std::make_shared<RecordingPool>();
  Bytes memory(4);
  BufferPtr buffer = PooledBuffer(BayerRG8, memory.data(), {2, 2}, 77, pool);
  EXPECT_ANY_THROW(buffer->ChangeFormat(BayerRG10));
  EXPECT_ANY_THROW(buffer->ChangeFormat(_RawUnpacked1Ch8));
  EXPECT_THAT(pool->released, IsEmpty());
  buffer.reset();
  EXPECT_THAT(pool->released, ElementsAre(77u));
}

TEST(PooledBuffer, GivesItsMemoryBackOnceHoweverOftenItsFormatChanges) {
  const auto pool = std::make_shared<RecordingPool>();
  Bytes memory(4);
  {
    const BufferPtr buffer = PooledBuffer(BayerRG8, memory.data(), {2, 2}, 77, pool);
    const BufferPtr changed = buffer->ChangeFormat(BayerGR8);
    const BufferPtr changedAgain = changed->ChangeFormat(Mono8);
  }
  EXPECT_THAT(pool->released, ElementsAre(77u));
}

TEST(PooledBuffer, DoesNotHandMemoryOverThatItNoLongerHas) {
  const auto pool = std::make_shared<RecordingPool>();
  Bytes memory(4);
  {
    const BufferPtr buffer = PooledBuffer(BayerRG8, memory.data(), {2, 2}, 77, pool);
    const BufferPtr first = buffer->ChangeFormat(BayerGR8);
    BufferPtr second;
    try {
      second = buffer->ChangeFormat(BayerGB8);
    } catch (const std::exception&) {
      // Refusing is as good as a buffer without a claim to the memory.
    }
  }
  EXPECT_EQ(pool->released.size(), 1u) << "two images would share the memory that came back twice";
}

TEST(PooledBuffer, NamesItsArgumentsWhenItRefusesAnId) {
  Bytes memory(4);
  try {
    PooledBuffer(_RawUnpacked1Ch8, memory.data(), {2, 2}, 77, nullptr);
    FAIL() << "nothing was thrown";
  } catch (const ImgException& exception) {
    EXPECT_EQ(exception.Text(), "Unsupported formatId: 4294902024");
    EXPECT_EQ(exception.Location(),
              "std::unique_ptr<TClassIfc> img::MakeFormatClass(img::PixelFormatId, Args...) [T = TPooledImageBuffer, "
              "TClassIfc = img::buffer::IfcImageBuffer, Args = <unsigned char *, img::Size2D, unsigned long, "
              "std::shared_ptr<img::buffer::IfcFixedFormatBufferPool>, "
              "std::shared_ptr<img::buffer::IfcBufferFactory>>]");
  }
}

// -------------------------------------------------------------------------------------------------- format changes --

const std::string kNotBayer = "Cannot change pixel format since !IsBayered<oldPixelFormat>!";
const std::string kOtherChannels =
    "Cannot change pixel format since NumPixelComponents<oldPixelFormat> != NumPixelComponents<newPixelFormat>!";
const std::string kOtherSignificantBits =
    "Cannot change pixel format since NumSignificantBitsPixelComponent<oldPixelFormat> != "
    "NumSignificantBitsPixelComponent<newPixelFormat>!";
const std::string kOtherStorageBits =
    "Cannot change pixel format since NumStorageBitsPixelComponent<oldPixelFormat> != "
    "NumStorageBitsPixelComponent<newPixelFormat>!";

TEST_P(EveryKind, RefusesToChangeAFormatThatIsNotBayer) {
  EXPECT_EQ(RuntimeErrorOf([&] { Make(Mono8, {2, 2})->ChangeFormat(BayerRG8); }), kNotBayer);
  EXPECT_EQ(RuntimeErrorOf([&] { Make(Mono8, {2, 2})->ChangeFormat(Mono8); }), kNotBayer);
  EXPECT_EQ(RuntimeErrorOf([&] { Make(RGB8, {2, 2})->ChangeFormat(BayerRG10); }), kNotBayer);
  EXPECT_EQ(RuntimeErrorOf([&] { Make(Invalid, {2, 2})->ChangeFormat(Mono8); }), kNotBayer);
}

TEST_P(EveryKind, RefusesAChangeOfTheChannelsBeforeThatOfTheBits) {
  EXPECT_EQ(RuntimeErrorOf([&] { Make(BayerRG8, {2, 2})->ChangeFormat(RGB8); }), kOtherChannels);
  EXPECT_EQ(RuntimeErrorOf([&] { Make(BayerRG8, {2, 2})->ChangeFormat(BGRa12); }), kOtherChannels);
}

TEST_P(EveryKind, RefusesAChangeOfTheSignificantBitsBeforeThatOfTheStorageBits) {
  EXPECT_EQ(RuntimeErrorOf([&] { Make(BayerRG10, {2, 2})->ChangeFormat(BayerRG12); }), kOtherSignificantBits);
  EXPECT_EQ(RuntimeErrorOf([&] { Make(BayerRG8, {2, 2})->ChangeFormat(BayerRG10); }), kOtherSignificantBits);
  EXPECT_EQ(RuntimeErrorOf([&] { Make(BayerRG10p, {2, 2})->ChangeFormat(BayerRG12p); }), kOtherSignificantBits);
}

TEST_P(EveryKind, RefusesAChangeOfTheStorageBits) {
  EXPECT_EQ(RuntimeErrorOf([&] { Make(BayerRG10, {2, 2})->ChangeFormat(BayerRG10p); }), kOtherStorageBits);
  EXPECT_EQ(RuntimeErrorOf([&] { Make(BayerRG12g24Qrv, {2, 2})->ChangeFormat(BayerRG12); }), kOtherStorageBits);
}

TEST_P(EveryKind, BecomesAnyFormatOfTheSameChannelsAndBits) {
  EXPECT_EQ(Make(BayerRG8, {2, 2})->ChangeFormat(BayerBG8)->Format(), BayerBG8);
  EXPECT_EQ(Make(BayerRG8, {2, 2})->ChangeFormat(Mono8)->Format(), Mono8);
  EXPECT_EQ(Make(BayerRG12, {2, 2})->ChangeFormat(Mono12)->Format(), Mono12);
  EXPECT_EQ(Make(BayerRG10p, {2, 2})->ChangeFormat(BayerGB10g40Qrv)->Format(), BayerGB10g40Qrv);
  EXPECT_EQ(Make(BayerRG8, {2, 2})->ChangeFormat(BayerRG8)->Format(), BayerRG8);
}

}  // namespace
