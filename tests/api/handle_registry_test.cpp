#include "api/handle_registry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "api/converters.h"
#include "buffers/buffer_pool.h"
#include "buffers/pooled_image_buffer.h"
#include "buffers/vector_image_buffer.h"
#include "processing/geometry/image_transformer.h"
#include "processing/measure/collect_line.h"
#include "processing/measure/histogram.h"

namespace {

using img::PixelFormatId;
using img::Size2D;
using img::buffer::IfcFixedFormatBufferPool;
using img::buffer::IfcImageBuffer;
using img::buffer::PooledImageBuffer;
using img::buffer::VectorImageBuffer;
using korvel::internal::Handle;
using korvel::internal::HandleMap;
using korvel::internal::HandleRegistry;
using korvel::internal::ImageHandleMap;

using BufferPtr = std::shared_ptr<IfcImageBuffer>;

BufferPtr NewBuffer(size_t width = 1) { return VectorImageBuffer::AllocBuffer(PixelFormatId::Mono8, {width, 1}); }

template <class Call>
std::string RuntimeErrorOf(Call call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

// False if the call hangs; its thread is left behind then.
bool ComesToAnEnd(std::function<void()> call) {
  std::packaged_task<void()> task(std::move(call));
  std::future<void> done = task.get_future();
  std::thread(std::move(task)).detach();
  return done.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
}

// Runs one call in two threads at the same moment.
template <class Call>
void InTwoThreads(Call call) {
  std::atomic<int> ready = 0;
  const auto run = [&] {
    ++ready;
    while (ready != 2) {
    }
    call();
  };
  std::thread other(run);
  run();
  other.join();
}

struct Thing {
  std::function<void()> atItsEnd = [] {};
  ~Thing() { atItsEnd(); }
};

// A buffer that calls back when it ends, as one whose memory belongs to somebody else does.
class CallingPool final : public IfcFixedFormatBufferPool {
 public:
  explicit CallingPool(std::function<void()> atItsBuffersEnd) : atItsBuffersEnd_(std::move(atItsBuffersEnd)) {}

  BufferPtr AllocBuffer(PixelFormatId, const Size2D&) override { return nullptr; }
  void Reset() override {}
  void WaitUntilAllFree() override {}
  size_t NumBuffers() const override { return 0; }
  size_t NumBuffersInUse() const override { return 0; }
  size_t TotalByteCount() const override { return 0; }
  size_t BufferByteCount() const override { return 0; }
  size_t NumBuffersWanted() const override { return 0; }
  size_t BufferLimit() const override { return 0; }
  void SetNumBuffersWanted(size_t) override {}
  void ReleaseBuffer(size_t) override { atItsBuffersEnd_(); }

 private:
  std::function<void()> atItsBuffersEnd_;
};

BufferPtr BufferThatCalls(std::function<void()> atItsEnd) {
  return PooledImageBuffer::CreateBuffer(PixelFormatId::Invalid, nullptr, {0, 0}, 0,
                                         std::make_shared<CallingPool>(std::move(atItsEnd)), nullptr);
}

// ------------------------------------------------------------------------------------------------ objects of a kind --

TEST(HandleMap, GivesTheAddressOfAnObjectAsItsHandle) {
  HandleMap<Thing> things("already there");
  const auto thing = std::make_shared<Thing>();
  EXPECT_EQ(things.Add(thing), reinterpret_cast<Handle>(thing.get()));
}

TEST(HandleMap, FindsWhatItHolds) {
  HandleMap<Thing> things("already there");
  const auto first = std::make_shared<Thing>();
  const auto second = std::make_shared<Thing>();
  const Handle firstHandle = things.Add(first);
  const Handle secondHandle = things.Add(second);
  EXPECT_EQ(things.Find(firstHandle), first);
  EXPECT_EQ(things.Find(secondHandle), second);
}

TEST(HandleMap, FindsNothingForAnUnknownHandle) {
  HandleMap<Thing> things("already there");
  const Handle handle = things.Add(std::make_shared<Thing>());
  EXPECT_EQ(things.Find(0), nullptr);
  EXPECT_EQ(things.Find(handle + 1), nullptr);
}

TEST(HandleMap, KeepsAnObjectAliveUntilItIsRemoved) {
  HandleMap<Thing> things("already there");
  auto thing = std::make_shared<Thing>();
  const std::weak_ptr<Thing> watch = thing;
  const Handle handle = things.Add(std::move(thing));
  EXPECT_FALSE(watch.expired());
  things.Remove(handle);
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(things.Find(handle), nullptr);
}

TEST(HandleMap, LetsARunningCallKeepItsObject) {
  HandleMap<Thing> things("already there");
  const Handle handle = things.Add(std::make_shared<Thing>());
  std::shared_ptr<Thing> inUse = things.Find(handle);
  things.Remove(handle);
  EXPECT_EQ(inUse.use_count(), 1);
}

TEST(HandleMap, DoesNothingWhenItRemovesAnUnknownHandle) {
  HandleMap<Thing> things("already there");
  const Handle handle = things.Add(std::make_shared<Thing>());
  EXPECT_EQ(things.Remove(handle + 1), nullptr);
  EXPECT_NE(things.Find(handle), nullptr);
  EXPECT_NE(things.Remove(handle), nullptr);
  EXPECT_EQ(things.Remove(handle), nullptr);
}

TEST(HandleMap, RefusesAnObjectThatItHoldsWithItsOwnText) {
  HandleMap<Thing> gains("Given gammaCorrector was already added!");
  const auto thing = std::make_shared<Thing>();
  gains.Add(thing);
  EXPECT_EQ(RuntimeErrorOf([&] { gains.Add(thing); }), "Given gammaCorrector was already added!");
}

TEST(HandleRegistry, RefusesAConverterThatItHolds) {
  const auto converter = korvel::internal::MakeConverter(1);
  auto& converters = HandleRegistry::Instance().ImageConverters();
  const Handle handle = converters.Add(converter);
  EXPECT_EQ(RuntimeErrorOf([&] { converters.Add(converter); }), "Given imageConverter was already added!");
  EXPECT_EQ(converters.Remove(handle), converter);
}

template <class Object>
void ExpectRefusedTwice(HandleMap<Object>& objects, const std::shared_ptr<Object>& object, const std::string& text) {
  const Handle handle = objects.Add(object);
  EXPECT_EQ(RuntimeErrorOf([&] { objects.Add(object); }), text);
  EXPECT_EQ(objects.Remove(handle), object);
}

TEST(HandleRegistry, RefusesATransformerOrAMeasurementThatItHolds) {
  auto& registry = HandleRegistry::Instance();
  ExpectRefusedTwice(registry.ImageTransformers(), std::make_shared<img::processing::ImageTransformer>(nullptr),
                     "Given imageTransformer was already added!");
  ExpectRefusedTwice(registry.Histograms(), std::make_shared<img::processing::HistogramRecord>(),
                     "Given histogramData was already added!");
  ExpectRefusedTwice(registry.PixelLines(), std::make_shared<img::processing::LineRecord>(),
                     "Given lineData was already added!");
}

TEST(HandleMap, IsAsItWasAfterItRefusedAnObject) {
  HandleMap<Thing> things("already there");
  const auto thing = std::make_shared<Thing>();
  const Handle handle = things.Add(thing);
  EXPECT_THROW(things.Add(thing), std::runtime_error);
  EXPECT_EQ(thing.use_count(), 2);
  EXPECT_EQ(things.Find(handle), thing);
  things.Remove(handle);
  EXPECT_EQ(things.Find(handle), nullptr);
}

TEST(HandleMap, TakesAnObjectAgainOnceItWasRemoved) {
  HandleMap<Thing> things("already there");
  const auto thing = std::make_shared<Thing>();
  things.Remove(things.Add(thing));
  EXPECT_NE(things.Find(things.Add(thing)), nullptr);
}

TEST(HandleMap, LetsTheEndOfAnObjectUseTheSameMap) {
  const auto things = std::make_shared<HandleMap<Thing>>("already there");
  const auto thing = std::make_shared<Thing>();
  const Handle handle = things->Add(thing);
  thing->atItsEnd = [things, handle] {
    things->Find(handle);
    things->Remove(things->Add(std::make_shared<Thing>()));
  };
  EXPECT_TRUE(ComesToAnEnd([things, handle, last = thing]() mutable {
    last.reset();
    things->Remove(handle);
  }));
}

TEST(HandleMap, GivesAnObjectToOneOfTwoThreadsThatRemoveIt) {
  HandleMap<Thing> things("already there");
  for (int round = 0; round < 300; ++round) {
    const Handle handle = things.Add(std::make_shared<Thing>());
    std::atomic<int> got = 0;
    InTwoThreads([&] { got += things.Remove(handle) != nullptr; });
    EXPECT_EQ(got, 1);
  }
}

TEST(HandleMap, ServesThreadsThatAddFindAndRemoveAtOnce) {
  HandleMap<Thing> things("already there");
  std::atomic<int> wrong = 0;
  InTwoThreads([&] {
    for (int round = 0; round < 3000; ++round) {
      const auto thing = std::make_shared<Thing>();
      const Handle handle = things.Add(thing);
      wrong += things.Find(handle) != thing;
      wrong += things.Remove(handle) != thing;
    }
  });
  EXPECT_EQ(wrong, 0);
}

// ---------------------------------------------------------------------------------------------------------- images --

TEST(ImageHandleMap, GivesAHandleThatIsNotTheAddressOfTheBuffer) {
  ImageHandleMap images;
  const BufferPtr buffer = NewBuffer();
  const Handle handle = images.AddImage(buffer);
  EXPECT_NE(handle, reinterpret_cast<Handle>(buffer.get()));
  EXPECT_NE(handle, 0u);
  EXPECT_EQ(images.FindImage(handle), buffer);
}

TEST(ImageHandleMap, GivesEachImageAHandleOfItsOwn) {
  ImageHandleMap images;
  std::set<Handle> handles;
  for (int i = 0; i < 100; ++i) handles.insert(images.AddImage(NewBuffer()));
  EXPECT_EQ(handles.size(), 100u);
}

TEST(ImageHandleMap, FindsNothingForAnUnknownHandle) {
  ImageHandleMap images;
  const BufferPtr buffer = NewBuffer();
  const Handle handle = images.AddImage(buffer);
  EXPECT_EQ(images.FindImage(0), nullptr);
  EXPECT_EQ(images.FindImage(handle + 1), nullptr);
  EXPECT_EQ(images.FindImage(reinterpret_cast<Handle>(buffer.get())), nullptr);
}

TEST(ImageHandleMap, KeepsABufferAliveUntilItsImageIsRemoved) {
  ImageHandleMap images;
  BufferPtr buffer = NewBuffer();
  const std::weak_ptr<IfcImageBuffer> watch = buffer;
  const Handle handle = images.AddImage(std::move(buffer));
  EXPECT_FALSE(watch.expired());
  EXPECT_NE(images.RemoveImage(handle), nullptr);
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(images.FindImage(handle), nullptr);
}

TEST(ImageHandleMap, LetsARunningCallKeepItsBuffer) {
  ImageHandleMap images;
  const Handle handle = images.AddImage(NewBuffer());
  const BufferPtr inUse = images.FindImage(handle);
  images.RemoveImage(handle);
  EXPECT_EQ(inUse.use_count(), 1);
}

TEST(ImageHandleMap, DoesNothingWhenItRemovesAnUnknownHandle) {
  ImageHandleMap images;
  const Handle handle = images.AddImage(NewBuffer());
  EXPECT_EQ(images.RemoveImage(handle + 1), nullptr);
  EXPECT_NE(images.FindImage(handle), nullptr);
  EXPECT_NE(images.RemoveImage(handle), nullptr);
  EXPECT_EQ(images.RemoveImage(handle), nullptr);
}

TEST(ImageHandleMap, RefusesABufferThatItHolds) {
  ImageHandleMap images;
  const BufferPtr buffer = NewBuffer();
  const Handle handle = images.AddImage(buffer);
  EXPECT_EQ(RuntimeErrorOf([&] { images.AddImage(buffer); }), "Given imageBuffer was already added!");
  EXPECT_EQ(buffer.use_count(), 2);
  EXPECT_EQ(images.FindImage(handle), buffer);
}

TEST(ImageHandleMap, TakesABufferAgainOnceItsImageWasRemoved) {
  ImageHandleMap images;
  const BufferPtr buffer = NewBuffer();
  images.RemoveImage(images.AddImage(buffer));
  EXPECT_EQ(images.FindImage(images.AddImage(buffer)), buffer);
}

TEST(ReplaceImage, PutsANewBufferBehindTheSameHandle) {
  ImageHandleMap images;
  const Handle handle = images.AddImage(NewBuffer(3));
  const BufferPtr newBuffer = NewBuffer(7);
  images.ReplaceImage(handle, newBuffer);
  EXPECT_EQ(images.FindImage(handle), newBuffer);
}

TEST(ReplaceImage, LetsTheOldBufferGo) {
  ImageHandleMap images;
  BufferPtr buffer = NewBuffer();
  const std::weak_ptr<IfcImageBuffer> watch = buffer;
  const Handle handle = images.AddImage(std::move(buffer));
  images.ReplaceImage(handle, NewBuffer());
  EXPECT_TRUE(watch.expired());
}

TEST(ReplaceImage, LeavesTheOldBufferToARunningCall) {
  ImageHandleMap images;
  const Handle handle = images.AddImage(NewBuffer(3));
  const BufferPtr inUse = images.FindImage(handle);
  images.ReplaceImage(handle, NewBuffer(7));
  EXPECT_EQ(inUse->Size().width, 3u);
  EXPECT_EQ(inUse.use_count(), 1);
}

TEST(ReplaceImage, MakesTheOldBufferUnknownAndTheNewOneKnown) {
  ImageHandleMap images;
  const BufferPtr oldBuffer = NewBuffer();
  const BufferPtr newBuffer = NewBuffer();
  const Handle handle = images.AddImage(oldBuffer);
  images.ReplaceImage(handle, newBuffer);
  EXPECT_THROW(images.AddImage(newBuffer), std::runtime_error);
  EXPECT_EQ(images.FindImage(images.AddImage(oldBuffer)), oldBuffer);
}

TEST(ReplaceImage, RefusesAnUnknownHandle) {
  ImageHandleMap images;
  const BufferPtr buffer = NewBuffer();
  EXPECT_EQ(RuntimeErrorOf([&] { images.ReplaceImage(1, buffer); }),
            "Cannot replace image buffer since given imageHandle is invalid!");
  EXPECT_EQ(buffer.use_count(), 1);
  EXPECT_NE(images.AddImage(buffer), 0u) << "the failure left nothing behind";
}

TEST(ReplaceImage, TakesTheBufferThatTheHandleAlreadyHas) {
  ImageHandleMap images;
  const BufferPtr buffer = NewBuffer();
  const Handle handle = images.AddImage(buffer);
  images.ReplaceImage(handle, buffer);
  EXPECT_EQ(images.FindImage(handle), buffer);
  EXPECT_THROW(images.AddImage(buffer), std::runtime_error);
  EXPECT_EQ(images.RemoveImage(handle), buffer);
  EXPECT_NE(images.AddImage(buffer), 0u);
}

TEST(ReplaceImage, TakesABufferThatAnotherHandleHas) {
  ImageHandleMap images;
  const BufferPtr shared = NewBuffer();
  const Handle owner = images.AddImage(shared);
  const Handle handle = images.AddImage(NewBuffer());
  images.ReplaceImage(handle, shared);
  EXPECT_EQ(images.FindImage(handle), shared);
  EXPECT_EQ(images.FindImage(owner), shared);
  images.RemoveImage(owner);
  EXPECT_EQ(images.FindImage(handle), shared);
  images.RemoveImage(handle);
  EXPECT_EQ(shared.use_count(), 1);
  EXPECT_NE(images.AddImage(shared), 0u);
}

TEST(ImageHandleMap, LetsTheEndOfABufferUseTheSameMap) {
  const auto images = std::make_shared<ImageHandleMap>();
  const auto handle = std::make_shared<Handle>();
  const auto useTheMap = [images, handle] {
    images->FindImage(*handle);
    images->RemoveImage(images->AddImage(NewBuffer()));
  };
  *handle = images->AddImage(BufferThatCalls(useTheMap));
  EXPECT_TRUE(ComesToAnEnd([images, handle] { images->RemoveImage(*handle); })) << "at the image's removal";
  *handle = images->AddImage(BufferThatCalls(useTheMap));
  EXPECT_TRUE(ComesToAnEnd([images, handle] { images->ReplaceImage(*handle, NewBuffer()); })) << "at its replacement";
  EXPECT_TRUE(ComesToAnEnd([images, useTheMap] {
    EXPECT_THROW(images->ReplaceImage(1, BufferThatCalls(useTheMap)), std::runtime_error);
  })) << "at a replacement that failed";
}

TEST(ImageHandleMap, GivesABufferToOneOfTwoThreadsThatRemoveItsImage) {
  ImageHandleMap images;
  for (int round = 0; round < 300; ++round) {
    const Handle handle = images.AddImage(NewBuffer());
    std::atomic<int> got = 0;
    InTwoThreads([&] { got += images.RemoveImage(handle) != nullptr; });
    EXPECT_EQ(got, 1);
  }
}

TEST(ImageHandleMap, ServesAThreadThatReplacesAndOneThatFinds) {
  ImageHandleMap images;
  const Handle handle = images.AddImage(NewBuffer(1));
  std::atomic<bool> stop = false;
  std::atomic<int> wrong = 0;
  std::thread finder([&] {
    while (!stop) {
      const BufferPtr buffer = images.FindImage(handle);
      wrong += buffer == nullptr || buffer->Data() == nullptr;
    }
  });
  for (size_t i = 0; i < 2000; ++i) images.ReplaceImage(handle, NewBuffer(1 + i % 7));
  stop = true;
  finder.join();
  EXPECT_EQ(wrong, 0);
}

TEST(ImageHandleMap, LetsItsBuffersGoAtItsEnd) {
  std::weak_ptr<IfcImageBuffer> watch;
  {
    ImageHandleMap images;
    const BufferPtr buffer = NewBuffer();
    watch = buffer;
    images.AddImage(buffer);
  }
  EXPECT_TRUE(watch.expired());
}

TEST(HandleRegistry, IsOneForTheProcess) {
  EXPECT_EQ(&HandleRegistry::Instance(), &HandleRegistry::Instance());
  EXPECT_EQ(&HandleRegistry::Instance().Images(), &HandleRegistry::Instance().Images());
}

TEST(ExportedHandle, StandsForTheSameNumberInTheRegistry) {
  const Handle handle = 0x1234;
  EXPECT_EQ(korvel::internal::FromExported(korvel::internal::ToExported<KORVEL_IMAGE_HANDLE>(handle)), handle);
  EXPECT_EQ(korvel::internal::FromExported(KORVEL_IMAGE_HANDLE{nullptr}), 0u);
}

TEST(ExportedImageHandle, LeadsToItsBufferUntilItIsRemoved) {
  const BufferPtr buffer = NewBuffer();
  const KORVEL_IMAGE_HANDLE handle = korvel::internal::RegisterImage(buffer);
  EXPECT_EQ(korvel::internal::FindImage(handle), buffer);
  EXPECT_EQ(korvel::internal::RemoveImage(handle), buffer);
  EXPECT_EQ(korvel::internal::FindImage(handle), nullptr);
}

}  // namespace
