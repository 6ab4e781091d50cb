#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "core/image.h"
#include "core/memory_limit.h"
#include "status/exceptions.h"
#include "tests/support/failure.h"

namespace {

using img::PixelFormatId;
using img::Size2D;
using img::buffer::FixedFormatVectorBufferPool;
using img::buffer::IfcBufferFactory;
using img::buffer::IfcFixedFormatBufferPool;
using img::buffer::IfcFixedFormatBufferPoolFactory;
using img::buffer::IfcImageBuffer;
using img::buffer::MultiFormatBufferPool;
using korvel::internal::ImgException;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using testing::Each;
using testing::ElementsAre;

using enum PixelFormatId;

using BufferPtr = std::shared_ptr<IfcImageBuffer>;
using Bytes = std::vector<uint8_t>;

constexpr size_t kMax = std::numeric_limits<size_t>::max();

std::shared_ptr<FixedFormatVectorBufferPool> FixedPool(size_t byteCount, size_t numBuffers, size_t limit,
                                                       const std::weak_ptr<IfcBufferFactory>& parent = {}) {
  return std::make_shared<FixedFormatVectorBufferPool>(byteCount, numBuffers, limit, parent);
}

std::shared_ptr<MultiFormatBufferPool> MultiPool(size_t defaultNumBuffers) {
  return std::make_shared<MultiFormatBufferPool>(std::make_shared<FixedFormatVectorBufferPool::Factory>(),
                                                 defaultNumBuffers);
}

const LocatedFailure kExhausted{-1020, 9005, "size_t img::buffer::FixedFormatVectorBufferPool::AllocBuffer()",
                                "Buffer pool exhausted! (Reached buffer limit)"};

// Runs a call in a thread of its own. A call that never returns keeps its thread, and the test goes on.
class Background {
 public:
  explicit Background(std::function<void()> call) {
    std::packaged_task<void()> task(std::move(call));
    done_ = task.get_future();
    std::thread(std::move(task)).detach();
  }

  bool IsDoneWithin(std::chrono::milliseconds time) { return done_.wait_for(time) == std::future_status::ready; }

 private:
  std::future<void> done_;
};

constexpr std::chrono::milliseconds kWhile{50};
constexpr std::chrono::milliseconds kLong{20'000};

// ---------------------------------------------------------------------------------------------------- the one size --

TEST(FixedPool, BeginsWithTheBuffersWanted) {
  const auto pool = FixedPool(12, 3, 5);
  EXPECT_EQ(pool->NumBuffers(), 3u);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_EQ(pool->TotalByteCount(), 36u);
  EXPECT_EQ(pool->BufferByteCount(), 12u);
  EXPECT_EQ(pool->NumBuffersWanted(), 3u);
  EXPECT_EQ(pool->BufferLimit(), 5u);
}

TEST(FixedPool, ServesAnyFormatOfItsByteSize) {
  const auto pool = FixedPool(12, 0, 5);
  for (const auto& [format, size] : std::vector<std::pair<PixelFormatId, Size2D>>{
           {RGB8, {2, 2}}, {Mono8, {12, 1}}, {Mono10, {3, 2}}, {Mono12p, {8, 1}}, {Invalid, {4, 3}}}) {
    const BufferPtr buffer = pool->AllocBuffer(format, size);
    EXPECT_EQ(buffer->Format(), format);
    EXPECT_EQ(buffer->Size(), size);
    EXPECT_EQ(buffer->ByteCount(), 12u);
  }
}

TEST(FixedPool, RefusesAnyOtherByteSize) {
  const auto pool = FixedPool(12, 1, 5);
  for (const size_t width : {size_t{11}, size_t{13}, size_t{0}}) {
    const auto failure = LocatedFailureOf([&] { pool->AllocBuffer(Mono8, {width, 1}); });
    ASSERT_TRUE(failure.has_value()) << width;
    EXPECT_EQ(failure->status, -1009);
    EXPECT_EQ(failure->module, 9005);
    EXPECT_EQ(failure->text, "Pool: Invalid buffer format!");
  }
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

TEST(FixedPool, RefusesASizeThatHasItsBytesOnlyBecauseItWraps) {
  // 4 * (2^62 + 3) is 12 modulo 2^64.
  const auto pool = FixedPool(12, 1, 5);
  EXPECT_ANY_THROW(pool->AllocBuffer(Mono8, {(size_t{1} << 62) + 3, 4}));
  // 3 * 12297829382473034415 is 2 * 2^64 + 13.
  EXPECT_ANY_THROW(FixedPool(13, 1, 5)->AllocBuffer(RGB8, {12297829382473034415u, 1}));
}

TEST(FixedPool, RefusesTheByteSizeBeforeItIsExhausted) {
  const auto pool = FixedPool(12, 0, 0);
  const auto failure = LocatedFailureOf([&] { pool->AllocBuffer(Mono8, {11, 1}); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->text, "Pool: Invalid buffer format!");
  EXPECT_EQ(LocatedFailureOf([&] { pool->AllocBuffer(Mono8, {12, 1}); }), kExhausted);
}

TEST(FixedPool, LosesNoMemoryToAnIdThatIsNotPublic) {
  const auto pool = FixedPool(12, 1, 1);
  EXPECT_THROW(pool->AllocBuffer(_RawUnpacked1Ch8, {12, 1}), ImgException);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_NE(pool->AllocBuffer(Mono8, {12, 1}), nullptr);
}

TEST(FixedPool, MustBeHeldByASharedPointer) {
  FixedFormatVectorBufferPool pool(12, 1, 1, {});
  EXPECT_THROW(pool.AllocBuffer(Mono8, {12, 1}), std::bad_weak_ptr);
}

// --------------------------------------------------------------------------------------------------------- limits --

TEST(FixedPool, IsExhaustedAtItsLimitAtOnce) {
  const auto pool = FixedPool(12, 0, 2);
  const BufferPtr first = pool->AllocBuffer(Mono8, {12, 1});
  const BufferPtr second = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(LocatedFailureOf([&] { pool->AllocBuffer(Mono8, {12, 1}); }), kExhausted);
  EXPECT_EQ(pool->NumBuffers(), 2u);
  EXPECT_EQ(pool->NumBuffersInUse(), 2u);
}

TEST(FixedPool, GivesTheMemoryJustReleasedAtItsLimit) {
  const auto pool = FixedPool(12, 0, 2);
  const BufferPtr first = pool->AllocBuffer(Mono8, {12, 1});
  BufferPtr second = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(LocatedFailureOf([&] { pool->AllocBuffer(Mono8, {12, 1}); }), kExhausted);
  const uint8_t* const memory = second->Data();
  second.reset();
  EXPECT_EQ(pool->AllocBuffer(Mono8, {12, 1})->Data(), memory);
}

TEST(FixedPool, CannotBeginWithMoreThanItsLimit) {
  EXPECT_EQ(LocatedFailureOf([] { FixedPool(12, 3, 2); }), kExhausted);
}

TEST(FixedPool, GrowsOnDemandAndDoesNotShrink) {
  const auto pool = FixedPool(12, 1, 10);
  {
    std::vector<BufferPtr> buffers;
    for (int i = 0; i < 4; ++i) buffers.push_back(pool->AllocBuffer(Mono8, {12, 1}));
    EXPECT_EQ(pool->NumBuffers(), 4u);
    EXPECT_EQ(pool->NumBuffersInUse(), 4u);
    EXPECT_EQ(pool->TotalByteCount(), 48u);
  }
  EXPECT_EQ(pool->NumBuffers(), 4u);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_EQ(pool->NumBuffersWanted(), 1u);
}

// ---------------------------------------------------------------------------------------------------------- reuse --

TEST(FixedPool, HandsOutTheMemoryThatCameBackLast) {
  const auto pool = FixedPool(12, 0, 10);
  BufferPtr a = pool->AllocBuffer(Mono8, {12, 1});
  BufferPtr b = pool->AllocBuffer(Mono8, {12, 1});
  BufferPtr c = pool->AllocBuffer(Mono8, {12, 1});
  const std::vector<const uint8_t*> memory = {a->Data(), b->Data(), c->Data()};
  b.reset();
  c.reset();
  a.reset();
  a = pool->AllocBuffer(Mono8, {12, 1});
  b = pool->AllocBuffer(Mono8, {12, 1});
  c = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(a->Data(), memory[0]);
  EXPECT_EQ(b->Data(), memory[2]);
  EXPECT_EQ(c->Data(), memory[1]);
}

TEST(FixedPool, ClearsNewMemoryAndNotReusedMemory) {
  const auto pool = FixedPool(12, 1, 1);
  {
    const BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
    EXPECT_THAT(Bytes(buffer->Data(), buffer->Data() + 12), Each(0));
    std::fill_n(buffer->Data(), 12, uint8_t{0xA5});
  }
  const BufferPtr buffer = pool->AllocBuffer(RGB8, {2, 2});
  EXPECT_THAT(Bytes(buffer->Data(), buffer->Data() + 12), Each(0xA5));
}

// Leaves memory of a size that isn't zero to whoever asks for such a size next.
void LeaveDirtyMemory(size_t byteCount) {
  std::vector<std::vector<uint8_t>> blocks;
  for (int i = 0; i < 20; ++i) blocks.emplace_back(byteCount, uint8_t{0xEE});
}

TEST(FixedPool, ZeroesMemoryThatItMadeAndNeverHandedOut) {
  LeaveDirtyMemory(100);
  const auto pool = FixedPool(100, 3, 5);
  const BufferPtr filled = pool->AllocBufferToFill(Mono8, {10, 10});
  EXPECT_EQ(filled->Size(), (Size2D{10, 10}));
  EXPECT_EQ(filled->Format(), Mono8);
  std::vector<BufferPtr> buffers;
  for (int i = 0; i < 4; ++i) {
    buffers.push_back(pool->AllocBuffer(Mono8, {10, 10}));
    EXPECT_THAT(std::vector<uint8_t>(buffers.back()->Data(), buffers.back()->Data() + 100), Each(0)) << i;
  }
  EXPECT_EQ(LocatedFailureOf([&] { pool->AllocBufferToFill(Mono8, {10, 10}); }), kExhausted);
}

TEST(FixedPool, ZeroesItsFreeMemoryAheadOfTime) {
  LeaveDirtyMemory(100);
  const auto pool = FixedPool(100, 1, 2);
  BufferPtr buffer = pool->AllocBufferToFill(Mono8, {10, 10});
  buffer->Data()[5] = 7;
  buffer.reset();
  pool->SetNumBuffersWanted(2);
  pool->ZeroFreeBuffers();
  const BufferPtr made = pool->AllocBufferToFill(Mono8, {10, 10});
  EXPECT_THAT(std::vector<uint8_t>(made->Data(), made->Data() + 100), Each(0));
  EXPECT_EQ(pool->AllocBuffer(Mono8, {10, 10})->Data()[5], 7) << "what was in use isn't cleared";
}

// From a size on, memory is asked of the system in another way.
TEST(FixedPool, HandsOutLargeMemory) {
  constexpr size_t kLarge = (size_t{33} << 20) + 5;
  const auto pool = FixedPool(kLarge, 1, 1);
  const BufferPtr buffer = pool->AllocBuffer(Mono8, {kLarge, 1});
  EXPECT_EQ(buffer->Data()[0], 0);
  EXPECT_EQ(buffer->Data()[kLarge - 1], 0);
  std::fill_n(buffer->Data(), kLarge, uint8_t{1});
}

TEST(FixedPool, KeepsMemoryInUseWhenTheFormatOfItsBufferChanges) {
  const auto pool = FixedPool(12, 1, 2);
  BufferPtr buffer = pool->AllocBuffer(BayerRG8, {4, 3});
  BufferPtr changed = buffer->ChangeFormat(BayerGR8);
  buffer.reset();
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  EXPECT_NE(pool->AllocBuffer(BayerRG8, {4, 3})->Data(), changed->Data());
  changed.reset();
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

TEST(FixedPool, ClonesABufferIntoOtherMemoryOfItsOwn) {
  const auto pool = FixedPool(12, 1, 2);
  const BufferPtr buffer = pool->AllocBuffer(BayerRG8, {4, 3});
  buffer->Data()[11] = 5;
  const BufferPtr clone = buffer->Clone();
  EXPECT_EQ(pool->NumBuffersInUse(), 2u);
  EXPECT_NE(clone->Data(), buffer->Data());
  EXPECT_EQ(clone->Data()[11], 5);
  EXPECT_EQ(LocatedFailureOf([&] { buffer->Clone(); }), kExhausted);
}

TEST(FixedPool, LivesAsLongAsItsBuffers) {
  auto pool = FixedPool(12, 1, 2);
  const std::weak_ptr<FixedFormatVectorBufferPool> watch = pool;
  BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  pool.reset();
  EXPECT_FALSE(watch.expired());
  buffer->Data()[11] = 1;
  buffer.reset();
  EXPECT_TRUE(watch.expired());
}

TEST(FixedPool, HandsItsParentToItsBuffers) {
  const auto parent = MultiPool(1);
  const auto pool = FixedPool(12, 1, 2, parent);
  EXPECT_EQ(pool->AllocBuffer(Mono8, {12, 1})->Factory(), parent);
}

TEST(FixedPool, HandsOutNoFactoryOnceItsParentIsGone) {
  auto parent = MultiPool(1);
  const auto pool = FixedPool(12, 1, 2, parent);
  parent.reset();
  EXPECT_EQ(pool->AllocBuffer(Mono8, {12, 1})->Factory(), nullptr);
}

// ------------------------------------------------------------------------------------------- resetting and waiting --

TEST(FixedPool, MakesTheBuffersWantedAnewWhenItIsReset) {
  const auto pool = FixedPool(12, 2, 10);
  {
    std::vector<BufferPtr> buffers;
    for (int i = 0; i < 4; ++i) {
      buffers.push_back(pool->AllocBuffer(Mono8, {12, 1}));
      buffers.back()->Data()[0] = 0xA5;
    }
  }
  pool->Reset();
  EXPECT_EQ(pool->NumBuffers(), 2u);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  const BufferPtr first = pool->AllocBuffer(Mono8, {12, 1});
  const BufferPtr second = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(first->Data()[0], 0);
  EXPECT_EQ(second->Data()[0], 0);
}

TEST(FixedPool, DoesNotWaitWhenAllIsFree) {
  const auto pool = FixedPool(12, 2, 10);
  EXPECT_TRUE(Background([pool] { pool->WaitUntilAllFree(); }).IsDoneWithin(kLong));
  EXPECT_TRUE(Background([pool] { pool->Reset(); }).IsDoneWithin(kLong));
  const auto empty = FixedPool(12, 0, 10);
  EXPECT_TRUE(Background([empty] { empty->WaitUntilAllFree(); }).IsDoneWithin(kLong));
}

TEST(FixedPool, WaitsForEveryBufferAndWakesUpWithTheLast) {
  const auto pool = FixedPool(12, 2, 10);
  BufferPtr first = pool->AllocBuffer(Mono8, {12, 1});
  BufferPtr second = pool->AllocBuffer(Mono8, {12, 1});
  Background wait([pool] { pool->WaitUntilAllFree(); });
  EXPECT_FALSE(wait.IsDoneWithin(kWhile));
  first.reset();
  EXPECT_FALSE(wait.IsDoneWithin(kWhile));
  second.reset();
  EXPECT_TRUE(wait.IsDoneWithin(kLong));
}

TEST(FixedPool, WaitsForEveryBufferBeforeItIsReset) {
  const auto pool = FixedPool(12, 1, 10);
  BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  Background reset([pool] { pool->Reset(); });
  EXPECT_FALSE(reset.IsDoneWithin(kWhile));
  buffer->Data()[0] = 1;
  buffer.reset();
  EXPECT_TRUE(reset.IsDoneWithin(kLong));
}

TEST(FixedPool, WakesUpAllThatWait) {
  const auto pool = FixedPool(12, 1, 10);
  BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  std::vector<std::unique_ptr<Background>> waits;
  for (int i = 0; i < 3; ++i) waits.push_back(std::make_unique<Background>([pool] { pool->WaitUntilAllFree(); }));
  EXPECT_FALSE(waits[0]->IsDoneWithin(kWhile));
  buffer.reset();
  for (const auto& wait : waits) EXPECT_TRUE(wait->IsDoneWithin(kLong));
}

// --------------------------------------------------------------------------------------------------- more on demand --

TEST(FixedPool, MakesBuffersUntilItHasThoseWanted) {
  const auto pool = FixedPool(12, 1, 10);
  pool->SetNumBuffersWanted(4);
  EXPECT_EQ(pool->NumBuffers(), 4u);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_EQ(pool->NumBuffersWanted(), 4u);
}

TEST(FixedPool, NeverMakesFewerBuffers) {
  const auto pool = FixedPool(12, 4, 10);
  pool->SetNumBuffersWanted(2);
  EXPECT_EQ(pool->NumBuffers(), 4u);
  EXPECT_EQ(pool->NumBuffersWanted(), 2u);
  pool->Reset();
  EXPECT_EQ(pool->NumBuffers(), 2u);
}

TEST(FixedPool, CannotMakeMoreBuffersThanItsLimit) {
  const auto pool = FixedPool(12, 1, 3);
  EXPECT_EQ(LocatedFailureOf([&] { pool->SetNumBuffersWanted(4); }), kExhausted);
  EXPECT_EQ(pool->NumBuffers(), 3u);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

// ------------------------------------------------------------------------------------------------------ zero bytes --

TEST(FixedPoolOfZeroBytes, GivesBuffersWithoutData) {
  const auto pool = FixedPool(0, 0, 10);
  const BufferPtr first = pool->AllocBuffer(Invalid, {0, 0});
  const BufferPtr second = pool->AllocBuffer(Invalid, {0, 7});
  EXPECT_EQ(first->Data(), nullptr);
  EXPECT_EQ(second->Data(), nullptr);
  EXPECT_EQ(second->Size(), (Size2D{0, 7}));
  EXPECT_EQ(pool->TotalByteCount(), 0u);
}

TEST(FixedPoolOfZeroBytes, ClonesABufferWithoutData) {
  const auto pool = FixedPool(0, 1, 10);
  EXPECT_EQ(pool->AllocBuffer(Invalid, {0, 0})->Clone()->Data(), nullptr);
}

TEST(FixedPoolOfZeroBytes, ComesToAnEndWhenItMakesSeveralBuffers) {
  const auto make = [] {
    const auto pool = FixedPool(0, 3, 10);
    pool->SetNumBuffersWanted(5);
    pool->Reset();
  };
  EXPECT_TRUE(Background(make).IsDoneWithin(kLong));
}

TEST(FixedPoolOfZeroBytes, HasNothingInUseBeforeAnythingIsTaken) {
  EXPECT_EQ(FixedPool(0, 3, 10)->NumBuffersInUse(), 0u);
}

TEST(FixedPoolOfZeroBytes, DoesNotWaitForBuffersThatAllCameBack) {
  const auto pool = FixedPool(0, 0, 10);
  {
    const BufferPtr first = pool->AllocBuffer(Invalid, {0, 0});
    const BufferPtr second = pool->AllocBuffer(Invalid, {0, 0});
  }
  EXPECT_TRUE(Background([pool] { pool->WaitUntilAllFree(); }).IsDoneWithin(kLong));
  EXPECT_TRUE(Background([pool] { pool->Reset(); }).IsDoneWithin(kLong));
}

// --------------------------------------------------------------------------------------------------------- threads --

TEST(FixedPool, GivesNoMemoryToTwoThreadsAtOnce) {
  constexpr size_t kThreads = 4;
  constexpr int kRounds = 2000;
  constexpr size_t kBytes = 64;
  const auto pool = FixedPool(kBytes, 1, kThreads * 2);
  std::atomic<int> mixedUp = 0;
  std::vector<std::thread> threads;
  for (size_t id = 0; id < kThreads; ++id) {
    threads.emplace_back([&, id] {
      for (int round = 0; round < kRounds; ++round) {
        const BufferPtr first = pool->AllocBuffer(Mono8, {kBytes, 1});
        const BufferPtr second = pool->AllocBuffer(Mono8, {kBytes, 1});
        std::fill_n(first->Data(), kBytes, static_cast<uint8_t>(2 * id + 1));
        std::fill_n(second->Data(), kBytes, static_cast<uint8_t>(2 * id + 2));
        std::this_thread::yield();
        for (size_t i = 0; i < kBytes; ++i) {
          if (first->Data()[i] != 2 * id + 1 || second->Data()[i] != 2 * id + 2) ++mixedUp;
        }
        if (pool->NumBuffersInUse() > 2 * kThreads || pool->NumBuffers() > 2 * kThreads) ++mixedUp;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mixedUp, 0);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_LE(pool->NumBuffers(), 2 * kThreads);
}

TEST(FixedPool, TakesMemoryBackFromAnotherThread) {
  const auto pool = FixedPool(12, 0, 1);
  BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  std::thread([taken = std::move(buffer)]() mutable { taken.reset(); }).join();
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

TEST(FixedPool, MayBeResetWhileOthersUseIt) {
  const auto pool = FixedPool(64, 2, kMax);
  std::atomic<bool> stop = false;
  std::thread user([&] {
    while (!stop) pool->AllocBuffer(Mono8, {64, 1})->Data()[63] = 1;
  });
  for (int i = 0; i < 200; ++i) pool->Reset();
  stop = true;
  user.join();
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

// ----------------------------------------------------------------------------------------------------- every size --

TEST(MultiPool, MakesAPoolForEachByteSizeWithItsDefaultNumber) {
  const auto pool = MultiPool(5);
  EXPECT_EQ(pool->NumBuffers(), 0u);
  const BufferPtr small = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(pool->NumBuffers(), 5u);
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  EXPECT_EQ(pool->TotalByteCount(), 60u);
  const BufferPtr sameSize = pool->AllocBuffer(RGB8, {2, 2});
  EXPECT_EQ(pool->NumBuffers(), 5u);
  const BufferPtr large = pool->AllocBuffer(Mono8, {100, 1});
  EXPECT_EQ(pool->NumBuffers(), 10u);
  EXPECT_EQ(pool->NumBuffersInUse(), 3u);
  EXPECT_EQ(pool->TotalByteCount(), 560u);
}

TEST(MultiPool, IsTheFactoryOfItsBuffers) {
  const auto pool = MultiPool(1);
  EXPECT_EQ(pool->AllocBuffer(Mono8, {12, 1})->Factory(), pool);
}

TEST(MultiPool, ServesAllFormatsFromOneSize) {
  const auto pool = MultiPool(1);
  EXPECT_EQ(pool->AllocBuffer(Mono12p, {3, 2})->ByteCount(), 9u);
  EXPECT_EQ(pool->AllocBuffer(RGB8, {3, 1})->ByteCount(), 9u);
  EXPECT_EQ(pool->NumBuffers(), 1u);
}

TEST(MultiPool, HasNoLimit) {
  const auto pool = MultiPool(1);
  std::vector<BufferPtr> buffers;
  for (int i = 0; i < 100; ++i) buffers.push_back(pool->AllocBuffer(Mono8, {12, 1}));
  EXPECT_EQ(pool->NumBuffersInUse(), 100u);
}

TEST(MultiPool, CountsNothingForAnUnknownId) {
  const auto pool = MultiPool(5);
  EXPECT_EQ(LocatedFailureOf([&] {
              pool->AllocBuffer(PixelFormatId{0x01080002}, {1, 1});
            }),
            (LocatedFailure{-1009, 9000, "size_t img::PixelFormatInfo_CalcSizeOfPixels(img::PixelFormatId, size_t)",
                            "Unknown formatId: 17301506"}));
  EXPECT_EQ(pool->NumBuffers(), 0u);
}

TEST(MultiPool, RefusesASizeThatWrapsOrExceedsTheMemory) {
  const auto pool = MultiPool(5);
  EXPECT_THROW(pool->AllocBuffer(Mono8, {(size_t{1} << 62) + 3, 4}), std::bad_alloc);
  EXPECT_THROW(pool->AllocBuffer(Mono8, {kMax, 1}), std::bad_alloc);
  EXPECT_THROW(pool->PreAllocate(Mono8, {(size_t{1} << 62) + 3, 4}, 1), std::bad_alloc);
  EXPECT_EQ(pool->NumBuffers(), 0u);
}

TEST(MultiPool, MayGoBeforeItsBuffers) {
  auto pool = MultiPool(2);
  BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  BufferPtr other = pool->AllocBuffer(RGB8, {12, 1});
  pool.reset();
  buffer->Data()[11] = 1;
  buffer.reset();
  other->Data()[35] = 1;
  other.reset();
}

TEST(MultiPool, LetsItsPoolsGoWhenItIsResetAndTheirBuffersLiveOn) {
  const auto pool = MultiPool(2);
  BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  pool->Reset();
  EXPECT_EQ(pool->NumBuffers(), 0u);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_EQ(pool->TotalByteCount(), 0u);
  buffer->Data()[11] = 1;
  const BufferPtr next = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  buffer.reset();
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  EXPECT_EQ(pool->NumBuffers(), 2u);
}

TEST(MultiPool, WaitsForTheBuffersOfAllItsPools) {
  const auto pool = MultiPool(1);
  BufferPtr small = pool->AllocBuffer(Mono8, {12, 1});
  BufferPtr large = pool->AllocBuffer(Mono8, {100, 1});
  Background wait([pool] { pool->WaitUntilAllFree(); });
  EXPECT_FALSE(wait.IsDoneWithin(kWhile));
  large.reset();
  EXPECT_FALSE(wait.IsDoneWithin(kWhile));
  small.reset();
  EXPECT_TRUE(wait.IsDoneWithin(kLong));
}

TEST(MultiPool, ServesAnEmptyImageOfNoFormat) {
  const auto pool = MultiPool(5);
  const auto use = [pool] {
    const BufferPtr first = pool->AllocBuffer(Invalid, {0, 0});
    const BufferPtr second = pool->AllocBuffer(Invalid, {0, 0});
    EXPECT_EQ(first->Data(), nullptr);
    EXPECT_EQ(second->Data(), nullptr);
  };
  EXPECT_TRUE(Background(use).IsDoneWithin(kLong));
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

// --------------------------------------------------------------------------------------------------- pre-allocation --

TEST(PreAllocate, MakesBuffersAheadAndTellsTheirNumber) {
  const auto pool = MultiPool(1);
  EXPECT_EQ(pool->PreAllocate(Mono8, {12, 1}, 3), 3u);
  EXPECT_EQ(pool->NumBuffers(), 3u);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

TEST(PreAllocate, MayAddToAPoolWhileAnotherThreadGivesBuffersBack) {
  const auto pool = MultiPool(1);
  std::atomic<bool> done = false;
  std::thread user([&] {
    while (!done) pool->AllocBuffer(Mono8, {4, 4});
  });
  for (size_t count = 1; count <= 200; ++count) pool->PreAllocate(Mono8, {4, 4}, count);
  done = true;
  user.join();
  EXPECT_GE(pool->NumBuffers(), 200u);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

TEST(PreAllocate, AddsToAPoolThatIsThere) {
  const auto pool = MultiPool(1);
  const BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(pool->PreAllocate(RGB8, {2, 2}, 4), 4u);
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
}

TEST(PreAllocate, NeverTakesBuffersAway) {
  const auto pool = MultiPool(1);
  EXPECT_EQ(pool->PreAllocate(Mono8, {12, 1}, 5), 5u);
  EXPECT_EQ(pool->PreAllocate(Mono8, {12, 1}, 2), 5u);
  EXPECT_EQ(pool->PreAllocate(Mono8, {12, 1}, 0), 5u);
}

TEST(PreAllocate, SetsTheNumberThatOtherSizesBeginWith) {
  const auto pool = MultiPool(1);
  pool->PreAllocate(Mono8, {12, 1}, 3);
  const BufferPtr other = pool->AllocBuffer(Mono8, {100, 1});
  EXPECT_EQ(pool->NumBuffers(), 6u);
}

TEST(PreAllocate, OfNoBuffersLeavesAUsablePool) {
  const auto pool = MultiPool(5);
  EXPECT_EQ(pool->PreAllocate(Mono8, {12, 1}, 0), 0u);
  const BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(pool->NumBuffers(), 1u);
}

TEST(PreAllocate, RefusesANumberWhoseBytesExceedHalfOfTheMemoryBeforeItMakesAny) {
  const auto pool = MultiPool(5);
  EXPECT_THROW(pool->PreAllocate(Mono8, {1 << 20, 1}, img::LargestAllocation() / (1 << 20) + 1), std::bad_alloc);
  EXPECT_THROW(pool->PreAllocate(Mono8, {12, 1}, kMax), std::bad_alloc);
  EXPECT_EQ(pool->NumBuffers(), 0u);
  const BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(pool->NumBuffers(), 5u) << "the default number is as it was";
}

TEST(PreAllocate, EndsForBuffersOfZeroBytes) {
  const auto pool = MultiPool(5);
  EXPECT_TRUE(Background([pool] { pool->PreAllocate(Invalid, {0, 0}, 3); }).IsDoneWithin(kLong));
}

// --------------------------------------------------------------------------------------------- the pool of the pools
// --

// Takes note of what it is asked for.
class RecordingFactory final : public IfcFixedFormatBufferPoolFactory {
 public:
  struct Request {
    size_t byteCount;
    size_t numBuffers;
    size_t limit;
    IfcBufferFactory* parent;

    bool operator==(const Request&) const = default;
  };

  std::vector<Request> requests;
  std::function<void()> beforeCreation = [] {};

  std::shared_ptr<IfcFixedFormatBufferPool> Create(size_t byteCount, size_t numBuffers, size_t limit,
                                                   std::weak_ptr<IfcBufferFactory> parent) override {
    requests.push_back({byteCount, numBuffers, limit, parent.lock().get()});
    beforeCreation();
    return factory_.Create(byteCount, numBuffers, limit, parent);
  }

 private:
  FixedFormatVectorBufferPool::Factory factory_;
};

TEST(MultiPool, AsksItsFactoryForAPoolWithoutALimitOnce) {
  const auto factory = std::make_shared<RecordingFactory>();
  const auto pool = std::make_shared<MultiFormatBufferPool>(factory, 2);
  pool->AllocBuffer(Mono8, {12, 1});
  pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_THAT(factory->requests, ElementsAre(RecordingFactory::Request{12, 2, kMax, pool.get()}));
}

TEST(MultiPool, HandsOutMemoryToFillFromThePoolOfItsSize) {
  const auto pool = MultiPool(1);
  const uint8_t* const memory = pool->AllocBufferToFill(Mono8, {12, 1})->Data();
  EXPECT_EQ(pool->AllocBuffer(RGB8, {2, 2})->Data(), memory);
  EXPECT_EQ(pool->NumBuffers(), 1u);
}

TEST(MultiPool, AsksItsFactoryForTheNumberThatIsPreAllocated) {
  const auto factory = std::make_shared<RecordingFactory>();
  const auto pool = std::make_shared<MultiFormatBufferPool>(factory, 2);
  pool->PreAllocate(Mono8, {12, 1}, 7);
  EXPECT_THAT(factory->requests, ElementsAre(RecordingFactory::Request{12, 7, kMax, pool.get()}));
}

TEST(MultiPool, KeepsThePoolThatAnotherThreadMadeMeanwhile) {
  const auto factory = std::make_shared<RecordingFactory>();
  const auto pool = std::make_shared<MultiFormatBufferPool>(factory, 1);
  BufferPtr ofTheOther;
  factory->beforeCreation = [&] {
    if (factory->requests.size() == 1) ofTheOther = pool->AllocBuffer(Mono8, {12, 1});
  };
  const BufferPtr buffer = pool->AllocBuffer(Mono8, {12, 1});
  EXPECT_EQ(factory->requests.size(), 2u);
  EXPECT_EQ(pool->NumBuffers(), 2u) << "both come from one pool, which had to grow";
  EXPECT_EQ(pool->NumBuffersInUse(), 2u);
}

TEST(MultiPool, IsUsableAfterAPoolCouldNotBeMade) {
  const auto factory = std::make_shared<RecordingFactory>();
  const auto pool = std::make_shared<MultiFormatBufferPool>(factory, 1);
  factory->beforeCreation = [] { throw std::bad_alloc(); };
  EXPECT_THROW(pool->AllocBuffer(Mono8, {12, 1}), std::bad_alloc);
  EXPECT_EQ(pool->NumBuffers(), 0u);
  factory->beforeCreation = [] {};
  EXPECT_NE(pool->AllocBuffer(Mono8, {12, 1}), nullptr);
}

TEST(MultiPool, ServesSeveralThreads) {
  constexpr size_t kThreads = 4;
  const auto pool = MultiPool(1);
  std::atomic<int> mixedUp = 0;
  std::vector<std::thread> threads;
  for (size_t id = 0; id < kThreads; ++id) {
    threads.emplace_back([&, id] {
      for (size_t round = 0; round < 1000; ++round) {
        const size_t width = 8 + round % 5;
        const BufferPtr buffer = pool->AllocBuffer(Mono8, {width, 2});
        std::fill_n(buffer->Data(), 2 * width, static_cast<uint8_t>(id));
        std::this_thread::yield();
        for (size_t i = 0; i < 2 * width; ++i) mixedUp += buffer->Data()[i] != id;
        if (round % 100 == 0) pool->Reset();
        pool->NumBuffersInUse();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mixedUp, 0);
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
}

}  // namespace
