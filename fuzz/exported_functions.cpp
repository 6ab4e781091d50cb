// A random sequence of calls of the exported functions, with handles dead, alive and foreign, sizes from 0 to huge, and
// formats valid and not. Every call gives a result or a failure with a code and a text, checks run in the documented
// order, and a failure changes nothing.
//
// A new function is a row of kOperations, and a new kind of handle is a row of World's pools. Functions whose arguments
// have one of the common shapes are called by Call<>, which goes by the function's type; the others have an operation
// of their own.
#include <korvel/korvel.h>
#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/reading.h"

namespace {

using korvel_fuzz::FuzzInput;
using korvel_fuzz::RequireFailure;
using korvel_fuzz::ScratchFile;
using korvel_fuzz::Session;
using korvel_test::kFormatTable;

// Small, so that many calls fit into a second.
constexpr size_t kLargestAllocation = size_t{1} * 1024 * 1024;
constexpr size_t kMostCalls = 32;

// ------------------------------------------------------------------------------------------------------- arguments --

size_t TakeSize(FuzzInput& input) {
  static constexpr uint64_t kEdges[] = {0x7FFF'FFFF,           0x8000'0000,           0xFFFF'FFFF,
                                        0x1'0000'0000,         0x1'0000'0001,         0x1000'0000'0000'0000,
                                        0x5555'5555'5555'5556, 0x7FFF'FFFF'FFFF'FFFF, 0x8000'0000'0000'0000,
                                        0xFFFF'FFFF'FFFF'FFFF};
  const uint8_t kind = input.TakeByte() % 16;
  if (kind < 9) return input.TakeByte() % 40u + 1;
  if (kind < 12) return input.TakeByte() + 1u;
  if (kind == 12) return 0;
  if (kind == 13) return input.Take<uint16_t>();
  if (kind == 14) return input.TakeOneOf(kEdges);
  return input.Take<size_t>();
}

uint32_t TakeFormat(FuzzInput& input) {
  const size_t kind = input.TakeByte();
  return kind < 4 * kFormatTable.size() - 8 ? kFormatTable[kind % kFormatTable.size()].id : input.Take<uint32_t>();
}

// What a function writes its result to: seldom null.
template <class Value>
class Result {
 public:
  Result(FuzzInput& input, Value initial) : initial_(initial), value_(initial), isGiven_(input.TakeByte() % 16 != 0) {}

  Value* Pointer() { return isGiven_ ? &value_ : nullptr; }
  bool IsGiven() const { return isGiven_; }
  bool IsUntouched() const { return value_ == initial_; }
  Value Get() const { return value_; }

 private:
  Value initial_;
  Value value_;
  bool isGiven_;
};

// Handles of one kind.
template <class Handle>
class HandlePool {
 public:
  HandlePool(KORVEL_RETURN_CODE (*destruct)(Handle)) : destruct_(destruct) {}
  HandlePool(const HandlePool&) = delete;
  HandlePool& operator=(const HandlePool&) = delete;
  ~HandlePool() {
    while (!alive_.empty()) DestroyOldest();
  }

  bool IsAlive(Handle handle) const { return std::ranges::find(alive_, handle) != alive_.end(); }
  Handle Oldest() const { return alive_.empty() ? nullptr : alive_.front(); }

  void Add(Handle handle) {
    KORVEL_FUZZ_REQUIRE(handle != nullptr && !IsAlive(handle));
    alive_.push_back(handle);
    constexpr size_t kMostAlive = 12;
    if (alive_.size() > kMostAlive) DestroyOldest();
  }

  // Tells that a handle was destroyed.
  void Bury(Handle handle) {
    alive_.erase(std::ranges::find(alive_, handle));
    dead_.push_back(handle);
  }

  // foreign is the handle of another kind of object.
  Handle Take(FuzzInput& input, uintptr_t foreign) const {
    const uint8_t kind = input.TakeByte() % 16;
    if (kind == 0) return nullptr;
    if (kind == 1) return reinterpret_cast<Handle>(input.Take<uintptr_t>());
    if (kind == 2) return reinterpret_cast<Handle>(foreign);
    const std::vector<Handle>& handles = kind == 3 ? dead_ : alive_;
    return handles.empty() ? nullptr : handles[input.TakeBelow(handles.size())];
  }

 private:
  void DestroyOldest() {
    const Handle handle = alive_.front();
    KORVEL_FUZZ_REQUIRE(destruct_(handle) == KORVEL_RETURN_CODE_Success);
    Bury(handle);
  }

  KORVEL_RETURN_CODE (*destruct_)(Handle);
  std::vector<Handle> alive_;
  std::vector<Handle> dead_;
};

// ----------------------------------------------------------------------------------------------------------- world --

// Files and their directory, for all inputs.
class Place {
 public:
  Place() {
    namespace fs = std::filesystem;
    fs::create_directory(session_.PathOf("directory.raw"));
    fs::create_symlink("a.bmp", session_.PathOf("link.bmp"));
    fs::create_symlink("/dev/full", session_.PathOf("full.png"));
    fs::create_symlink("/dev/zero", session_.PathOf("zero.raw"));
    if (mkfifo(session_.PathOf("pipe.jpg").c_str(), 0600) != 0) throw std::runtime_error("can't make a pipe");
  }

  void RemoveWrittenFiles() const {
    for (const auto& entry : std::filesystem::directory_iterator(session_.PathOf(""))) {
      if (!entry.is_symlink() && entry.is_regular_file()) std::filesystem::remove(entry.path());
    }
  }

  // Of the video that each input begins with.
  std::string FirstVideo() const { return session_.PathOf("first.avi"); }

  // Mostly of a new file, since videos take the place of none.
  std::string TakePathToRecord(FuzzInput& input) const {
    const uint8_t kind = input.TakeByte();
    return kind % 4 == 0 ? TakePath(input) : session_.PathOf(std::to_string(kind % 8) + ".avi");
  }

  std::string TakeFile(FuzzInput& input) const { return session_.PathOf(input.TakeOneOf(kFiles)); }

  std::string TakePath(FuzzInput& input) const {
    const uint8_t kind = input.TakeByte();
    if (kind < 192) return session_.PathOf(kFiles[kind % std::size(kFiles)]);
    switch (kind % 16) {
      case 0:
        return session_.PathOf("missing/a.raw");
      case 1:
        return session_.PathOf("directory.raw");
      case 2:
        return session_.PathOf("a.tif");
      case 3:
        return session_.PathOf("");
      case 4:
        return session_.PathOf(".raw");
      case 5:
        return session_.PathOf("full.png");
      case 6:
        return session_.PathOf("zero.raw");
      case 7:
        return session_.PathOf(std::string(300, 'x') + ".raw");
      case 8:
        return session_.PathOf(std::string("a.raw\0.raw", 10));
      case 9:
        return session_.PathOf("directory.raw/..");
      case 10:
        return session_.PathOf("link.bmp");
      default:
        return session_.PathOf("directory.raw/../a.raw");
    }
  }

  // Opening a pipe for writing waits for its reader.
  std::string TakePathToRead(FuzzInput& input) const {
    return input.TakeByte() % 16 == 0 ? session_.PathOf("pipe.jpg") : TakePath(input);
  }

 private:
  static constexpr const char* kFiles[] = {"a.raw", "a.bmp", "a.png", "a.jpg", "a.JPEG", "\xC3\xA4 \xFF.raw"};

  Session session_{kLargestAllocation};
};

// Fails unless all properties of a new image agree, and its pixels can be read and have values.
void CheckImage(KORVEL_IMAGE_HANDLE image) {
  uint32_t format = 0;
  size_t width = 0;
  size_t height = 0;
  size_t byteCount = 0;
  size_t expected = 0;
  uint8_t* data = nullptr;
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetPixelFormat(image, &format) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetWidth(image, &width) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetHeight(image, &height) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetByteCount(image, &byteCount) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetData(image, &data) == KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(korvel_fuzz::IsPublic(format) || format == KORVEL_PIXEL_FORMAT_Invalid);
  KORVEL_FUZZ_REQUIRE(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(format, width * height, &expected) ==
                      KORVEL_RETURN_CODE_Success);
  KORVEL_FUZZ_REQUIRE(byteCount == expected);
  KORVEL_FUZZ_REQUIRE(byteCount == 0 || data != nullptr);
  const korvel_fuzz::ByteView pixels(data, byteCount);
  KORVEL_FUZZ_REQUIRE(std::ranges::equal(std::vector<uint8_t>(pixels.begin(), pixels.end()), pixels));
}

// What one input has made.
class World {
 public:
  explicit World(const Place& place) : place_(place) {
    // The second one can be recorded.
    AdoptNew<KORVEL_IMAGE_HANDLE>(
        [](auto* image) { return KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_BayerRG8, 18, 16, image); });
    AdoptNew<KORVEL_IMAGE_HANDLE>(
        [](auto* image) { return KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_RGB8, 16, 16, image); });
    AdoptNew(KORVEL_ImageConverter_Construct);
    AdoptNew(KORVEL_Gain_Construct);
    AdoptNew(KORVEL_GammaCorrector_Construct);
    AdoptNew(KORVEL_ColorCorrector_Construct);
    AdoptNew(KORVEL_Binning_Construct);
    AdoptNew(KORVEL_AdaptiveHotpixelCorrector_Construct);
    AdoptNew(KORVEL_ImageTransformer_Construct);
    AdoptNew<KORVEL_VIDEO_HANDLE>([&](auto* video) {
      return KORVEL_VideoWriter_Video_Open(video, place.FirstVideo().c_str(), KORVEL_VIDEO_CONTAINER_AVI,
                                           KORVEL_VIDEO_ENCODER_MJPEG);
    });
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World() { place_.RemoveWrittenFiles(); }

  template <class Handle>
  Handle Take(FuzzInput& input) const {
    return std::get<HandlePool<Handle>>(pools_).Take(input, ForeignTo<Handle>());
  }

  template <class Handle>
  bool IsAlive(Handle handle) const {
    return std::get<HandlePool<Handle>>(pools_).IsAlive(handle);
  }

  // Takes over the handle of a new object.
  template <class Handle>
  void Adopt(Handle handle) {
    if constexpr (std::is_same_v<Handle, KORVEL_IMAGE_HANDLE>) CheckImage(handle);
    std::get<HandlePool<Handle>>(pools_).Add(handle);
  }

  template <class Handle>
  void Bury(Handle handle) {
    std::get<HandlePool<Handle>>(pools_).Bury(handle);
  }

  // Memory of the caller, which stays until all handles are gone.
  uint8_t* Allocate(size_t byteCount) { return memory_.emplace_back(new uint8_t[byteCount]()).get(); }

  const Place& Files() const { return place_; }

  // Calls a function that fails without a text.
  template <class Function>
  void CallUnrecorded(KORVEL_RETURN_CODE expected, Function&& function) {
    MarkLastFailure();
    KORVEL_FUZZ_REQUIRE(function() == expected);
    KORVEL_FUZZ_REQUIRE(IsLastFailureMarked());
  }

  // Calls a function. The failures of its checks come in the order of handles, pointers, values; a success leaves the
  // last failure alone.
  template <class Function>
  bool Call(bool handlesAlive, bool pointersGiven, Function&& function) {
    MarkLastFailure();
    const KORVEL_RETURN_CODE code = function();
    if (code == KORVEL_RETURN_CODE_Success) {
      KORVEL_FUZZ_REQUIRE(handlesAlive && pointersGiven);
      KORVEL_FUZZ_REQUIRE(IsLastFailureMarked());
      return true;
    }
    RequireFailure(code);
    KORVEL_FUZZ_REQUIRE((code == KORVEL_RETURN_CODE_InvalidHandle) == !handlesAlive);
    // Some families look at the image's format before the pointers.
    KORVEL_FUZZ_REQUIRE(!handlesAlive || pointersGiven || code == KORVEL_RETURN_CODE_InvalidArgument ||
                        code == KORVEL_RETURN_CODE_ImageFormatNotSupported);
    return false;
  }

  // The same with a result, which a failure leaves alone.
  template <class Value, class Function>
  bool CallFor(Result<Value>& result, bool handlesAlive, bool otherPointersGiven, Function&& function) {
    const bool succeeded =
        Call(handlesAlive, otherPointersGiven && result.IsGiven(), [&] { return function(result.Pointer()); });
    KORVEL_FUZZ_REQUIRE(succeeded || result.IsUntouched());
    return succeeded;
  }

  // The same with the handle of a new object for a result.
  template <class Handle, class Function>
  void CallForNew(FuzzInput& input, bool handlesAlive, bool otherPointersGiven, Function&& function) {
    Result<Handle> result(input, nullptr);
    if (CallFor(result, handlesAlive, otherPointersGiven, function)) Adopt(result.Get());
  }

 private:
  template <class Handle, class Construct>
  void AdoptNew(Construct&& construct) {
    Handle handle = nullptr;
    KORVEL_FUZZ_REQUIRE(construct(&handle) == KORVEL_RETURN_CODE_Success);
    Adopt(handle);
  }

  template <class Handle>
  void AdoptNew(KORVEL_RETURN_CODE (*construct)(Handle*)) {
    AdoptNew<Handle>([&](Handle* handle) { return construct(handle); });
  }

  // A living handle of another kind.
  template <class Handle>
  uintptr_t ForeignTo() const {
    uintptr_t foreign = 0;
    const auto look = [&](const auto& pool) {
      if constexpr (!std::is_same_v<decltype(pool), const HandlePool<Handle>&>) {
        if (foreign == 0) foreign = reinterpret_cast<uintptr_t>(pool.Oldest());
      }
    };
    std::apply([&](const auto&... pool) { (look(pool), ...); }, pools_);
    return foreign;
  }

  static void MarkLastFailure() {
    KORVEL_FUZZ_REQUIRE(KORVEL_Library_GetVersionMajor(nullptr) == KORVEL_RETURN_CODE_InvalidArgument);
  }

  static bool IsLastFailureMarked() {
    uint32_t code = 0;
    char text[64];
    size_t size = sizeof text;
    return KORVEL_Library_GetLastError(&code, text, &size) == KORVEL_RETURN_CODE_Success &&
           code == KORVEL_RETURN_CODE_InvalidArgument &&
           std::strcmp(text, "libraryVersionMajor is not a valid pointer!") == 0;
  }

  const Place& place_;
  std::vector<std::unique_ptr<uint8_t[]>> memory_;  // outlives the images over it
  std::tuple<HandlePool<KORVEL_IMAGE_HANDLE>, HandlePool<KORVEL_IMAGE_CONVERTER_HANDLE>, HandlePool<KORVEL_GAIN_HANDLE>,
             HandlePool<KORVEL_GAMMA_CORRECTOR_HANDLE>, HandlePool<KORVEL_COLOR_CORRECTOR_HANDLE>,
             HandlePool<KORVEL_BINNING_HANDLE>, HandlePool<KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE>,
             HandlePool<KORVEL_IMAGE_TRANSFORMER_HANDLE>, HandlePool<KORVEL_HISTOGRAM_HANDLE>,
             HandlePool<KORVEL_PIXEL_LINE_HANDLE>, HandlePool<KORVEL_VIDEO_HANDLE>>
      pools_{
          KORVEL_Image_Destruct,
          KORVEL_ImageConverter_Destruct,
          KORVEL_Gain_Destruct,
          KORVEL_GammaCorrector_Destruct,
          KORVEL_ColorCorrector_Destruct,
          KORVEL_Binning_Destruct,
          KORVEL_AdaptiveHotpixelCorrector_Destruct,
          KORVEL_ImageTransformer_Destruct,
          KORVEL_Histogram_Destruct,
          KORVEL_PixelLine_Destruct,
          KORVEL_VideoWriter_Video_Close,
      };
};

// Memory for an image of a format and size: mostly what it needs, else a little less or more, or anything, or none;
// never much above the bound, beyond which no image can be made of it anyway.
struct CallersMemory {
  CallersMemory(World& world, FuzzInput& input, uint32_t format, size_t width, size_t height) {
    size_t needed = 0;
    if (KORVEL_PixelFormat_CalculateStorageSizeOfPixels(format, width * height, &needed) !=
        KORVEL_RETURN_CODE_Success) {
      needed = 0;
    }
    const uint8_t kind = input.TakeByte() % 16;
    byteCount = std::min(needed, kLargestAllocation);
    if (kind == 0 && byteCount > 0) --byteCount;
    if (kind == 1) ++byteCount;
    if (kind == 2) byteCount = input.TakeByte();
    data = kind == 3 ? nullptr : world.Allocate(byteCount);
  }

  uint8_t* data;
  size_t byteCount;
};

size_t PropertyOf(KORVEL_RETURN_CODE (*function)(KORVEL_IMAGE_HANDLE, size_t*), KORVEL_IMAGE_HANDLE image) {
  size_t value = 0;
  KORVEL_FUZZ_REQUIRE(function(image, &value) == KORVEL_RETURN_CODE_Success);
  return value;
}

// ------------------------------------------------------------------------------------------------------ operations --

constexpr uint8_t kUnwrittenByte = 0xA5;

template <class Value>
Value Unwritten() {
  Value value;
  std::memset(&value, kUnwrittenByte, sizeof value);
  return value;
}

// Functions of one result.
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(uint32_t*)) {
  Result result(input, Unwritten<uint32_t>());
  const bool succeeded = world.CallFor(result, true, true, function);
  KORVEL_FUZZ_REQUIRE(succeeded == result.IsGiven());
}

// Properties of formats.
template <class Value>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(uint32_t, Value*)) {
  const uint32_t format = TakeFormat(input);
  Result result(input, Unwritten<Value>());
  const bool succeeded = world.CallFor(result, true, true, [&](Value* value) { return function(format, value); });
  KORVEL_FUZZ_REQUIRE(!result.IsGiven() || succeeded == (korvel_test::FindFormat(format) != nullptr));
}

// Properties of objects.
template <class Object, class Value>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, Value*)) {
  Object* const object = world.Take<Object*>(input);
  const bool isAlive = world.IsAlive(object);
  Result result(input, Unwritten<Value>());
  const bool succeeded = world.CallFor(result, isAlive, true, [&](Value* value) { return function(object, value); });
  KORVEL_FUZZ_REQUIRE(succeeded == (isAlive && result.IsGiven()));
}

// Objects made of nothing.
template <class Object>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object**)) {
  world.CallForNew<Object*>(input, true, true, function);
}

// Images made of another object.
template <class Object>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, KORVEL_IMAGE_HANDLE*)) {
  Object* const object = world.Take<Object*>(input);
  world.CallForNew<KORVEL_IMAGE_HANDLE>(input, world.IsAlive(object), true,
                                        [&](auto* handle) { return function(object, handle); });
}

// The end of an object.
template <class Object>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*)) {
  Object* const object = world.Take<Object*>(input);
  const bool isAlive = world.IsAlive(object);
  const bool succeeded = world.Call(isAlive, true, [&] { return function(object); });
  KORVEL_FUZZ_REQUIRE(succeeded == isAlive);
  if (succeeded) world.Bury(object);
}

// Settings, mostly in or near their ranges, else any bits.
template <class Value>
Value TakeSetting(FuzzInput& input) {
  if constexpr (std::is_same_v<Value, float>) {
    return input.TakeByte() % 4 == 0 ? std::bit_cast<float>(input.Take<uint32_t>())
                                     : static_cast<float>(input.Take<int16_t>()) / 1024.0f;
  } else {
    return input.TakeByte() % 4 == 0 ? input.Take<Value>() : static_cast<Value>(input.TakeByte() % 16);
  }
}

// Setters.
template <class Object, class Value>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, const Value*)) {
  Object* const object = world.Take<Object*>(input);
  const auto setting = TakeSetting<Value>(input);
  const Value* const pointer = input.TakeByte() % 16 == 0 ? nullptr : &setting;
  world.Call(world.IsAlive(object), pointer != nullptr, [&] { return function(object, pointer); });
}

template <class Object>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, uint32_t)) {
  Object* const object = world.Take<Object*>(input);
  const auto setting = TakeSetting<uint32_t>(input);
  world.Call(world.IsAlive(object), true, [&] { return function(object, setting); });
}

// Whether an operation takes a format.
template <class Object>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, uint32_t, bool*)) {
  Object* const object = world.Take<Object*>(input);
  const uint32_t format = TakeFormat(input);
  Result result(input, false);
  world.Call(world.IsAlive(object), result.IsGiven(), [&] { return function(object, format, result.Pointer()); });
}

// Operations that make an image of another one.
template <class Object>
void Run(World& world, FuzzInput& input,
         KORVEL_RETURN_CODE (*function)(Object*, KORVEL_IMAGE_HANDLE, KORVEL_IMAGE_HANDLE*)) {
  Object* const object = world.Take<Object*>(input);
  KORVEL_IMAGE_HANDLE const image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  world.CallForNew<KORVEL_IMAGE_HANDLE>(input, world.IsAlive(object) && world.IsAlive(image), true,
                                        [&](auto* handle) { return function(object, image, handle); });
}

// Operations on an image in its own memory, or that only look at it.
template <class Object>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, KORVEL_IMAGE_HANDLE)) {
  Object* const object = world.Take<Object*>(input);
  KORVEL_IMAGE_HANDLE const image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  world.Call(world.IsAlive(object) && world.IsAlive(image), true, [&] { return function(object, image); });
  if (world.IsAlive(image)) CheckImage(image);
}

// Rotations.
template <class Object>
void Run(World& world, FuzzInput& input,
         KORVEL_RETURN_CODE (*function)(Object*, KORVEL_IMAGE_HANDLE, KORVEL_IMAGE_HANDLE*, uint32_t)) {
  Object* const object = world.Take<Object*>(input);
  KORVEL_IMAGE_HANDLE const image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const auto angle = TakeSetting<uint32_t>(input);
  world.CallForNew<KORVEL_IMAGE_HANDLE>(input, world.IsAlive(object) && world.IsAlive(image), true,
                                        [&](auto* handle) { return function(object, image, handle, angle); });
}

template <class Object>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, KORVEL_IMAGE_HANDLE, uint32_t)) {
  Object* const object = world.Take<Object*>(input);
  KORVEL_IMAGE_HANDLE const image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const auto angle = TakeSetting<uint32_t>(input);
  world.Call(world.IsAlive(object) && world.IsAlive(image), true, [&] { return function(object, image, angle); });
  if (world.IsAlive(image)) CheckImage(image);
}

// Figures of a channel.
template <class Object, class Value>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, size_t, Value*)) {
  Object* const object = world.Take<Object*>(input);
  const size_t channel = input.TakeByte() % 8 == 0 ? TakeSize(input) : input.TakeByte() % 4;
  Result result(input, Unwritten<Value>());
  world.CallFor(result, world.IsAlive(object), true, [&](Value* value) { return function(object, channel, value); });
}

// Arrays that are filled in two calls. call takes the array, or null, and the pointer to its size.
template <class Element, class Function>
void FillArray(World& world, FuzzInput& input, bool handlesAlive, size_t mostElements, Function&& call) {
  const size_t room = input.Take<uint16_t>() % (mostElements + 1);
  Result size(input, room);
  const bool hasArray = input.TakeByte() % 4 != 0;
  // Exactly as large as it is said to be, so that the sanitizer sees what goes beyond.
  const std::unique_ptr<Element[]> elements(new Element[room]());
  const bool succeeded = world.CallFor(size, handlesAlive, true,
                                       [&](size_t* value) { return call(hasArray ? elements.get() : nullptr, value); });
  if (succeeded && hasArray) KORVEL_FUZZ_REQUIRE(size.Get() <= room);
}

template <class Object, class Element>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, size_t, Element*, size_t*)) {
  Object* const object = world.Take<Object*>(input);
  const size_t channel = input.TakeByte() % 8 == 0 ? TakeSize(input) : input.TakeByte() % 4;
  FillArray<Element>(world, input, world.IsAlive(object), 4200,
                     [&](Element* array, size_t* size) { return function(object, channel, array, size); });
}

template <class Object, class Element>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(Object*, Element*, size_t*)) {
  Object* const object = world.Take<Object*>(input);
  FillArray<Element>(world, input, world.IsAlive(object), 300,
                     [&](Element* array, size_t* size) { return function(object, array, size); });
}

// A path as functions take it; seldom null or empty.
struct PathArgument {
  PathArgument(FuzzInput& input, const std::string& path) {
    const uint8_t kind = input.TakeByte() % 32;
    bytes = kind == 0 ? nullptr : path.data();
    size = kind == 1 ? 0 : path.size();
  }

  const char* bytes;
  size_t size;
};

// Writers without and with a quality.
template <class Function>
void Write(World& world, FuzzInput& input, Function&& write) {
  KORVEL_IMAGE_HANDLE const image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const std::string path = world.Files().TakePath(input);
  const PathArgument argument(input, path);
  world.Call(world.IsAlive(image), argument.bytes != nullptr,
             [&] { return write(image, argument.bytes, argument.size); });
}

void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(KORVEL_IMAGE_HANDLE, const char*, size_t)) {
  Write(world, input, function);
}

void Run(World& world, FuzzInput& input,
         KORVEL_RETURN_CODE (*function)(KORVEL_IMAGE_HANDLE, uint32_t, const char*, size_t)) {
  const uint32_t quality = input.TakeByte() % 8 == 0 ? input.Take<uint32_t>() : input.TakeByte() % 128;
  Write(world, input,
        [&](KORVEL_IMAGE_HANDLE image, const char* path, size_t size) { return function(image, quality, path, size); });
}

// Numbers of containers and encoders.
uint16_t TakeKind(FuzzInput& input) {
  return input.TakeByte() % 4 == 0 ? input.Take<uint16_t>() : static_cast<uint16_t>(input.TakeByte() % 3);
}

void OpenVideo(World& world, FuzzInput& input) {
  // Most callers give a handle that they have set to null.
  const KORVEL_VIDEO_HANDLE before = input.TakeByte() % 4 == 0 ? world.Take<KORVEL_VIDEO_HANDLE>(input) : nullptr;
  Result result(input, before);
  const std::string path = world.Files().TakePathToRecord(input);
  const char* const fileName = input.TakeByte() % 32 == 0 ? nullptr : path.c_str();
  const bool isUsual = input.TakeByte() % 8 != 0;
  const uint16_t container = isUsual ? uint16_t{KORVEL_VIDEO_CONTAINER_AVI} : TakeKind(input);
  const uint16_t encoder = isUsual ? uint16_t{KORVEL_VIDEO_ENCODER_MJPEG} : TakeKind(input);
  const bool succeeded = world.CallFor(result, true, !world.IsAlive(before), [&](KORVEL_VIDEO_HANDLE* handle) {
    return KORVEL_VideoWriter_Video_Open(handle, fileName, container, encoder);
  });
  if (!succeeded) return;
  KORVEL_FUZZ_REQUIRE(fileName != nullptr && std::filesystem::exists(fileName));
  KORVEL_FUZZ_REQUIRE(container == KORVEL_VIDEO_CONTAINER_AVI && encoder == KORVEL_VIDEO_ENCODER_MJPEG);
  world.Adopt(result.Get());
}

void IsVideoOpen(World& world, FuzzInput& input) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  Result isOpen(input, Unwritten<uint8_t>());
  const bool succeeded =
      world.CallFor(isOpen, true, true, [&](uint8_t* value) { return KORVEL_VideoWriter_Video_IsOpen(video, value); });
  KORVEL_FUZZ_REQUIRE(succeeded == isOpen.IsGiven());
  if (succeeded) KORVEL_FUZZ_REQUIRE(isOpen.Get() == (world.IsAlive(video) ? 1 : 0));
}

bool CanBeRecorded(KORVEL_IMAGE_HANDLE image) {
  static constexpr uint32_t kFormats[] = {KORVEL_PIXEL_FORMAT_Mono8, KORVEL_PIXEL_FORMAT_RGB8, KORVEL_PIXEL_FORMAT_BGR8,
                                          KORVEL_PIXEL_FORMAT_RGBa8, KORVEL_PIXEL_FORMAT_BGRa8};
  uint32_t format = 0;
  KORVEL_FUZZ_REQUIRE(KORVEL_Image_GetPixelFormat(image, &format) == KORVEL_RETURN_CODE_Success);
  const size_t width = PropertyOf(KORVEL_Image_GetWidth, image);
  return std::ranges::find(kFormats, format) != std::end(kFormats) && width >= 16 && width % 8 == 0 &&
         PropertyOf(KORVEL_Image_GetHeight, image) >= 16;
}

void AppendToVideo(World& world, FuzzInput& input) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  const KORVEL_IMAGE_HANDLE image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const bool succeeded = world.Call(world.IsAlive(video) && world.IsAlive(image), true,
                                    [&] { return KORVEL_VideoWriter_Video_Append(video, image); });
  if (succeeded) KORVEL_FUZZ_REQUIRE(CanBeRecorded(image));
}

// While another thread appends and waits.
void CloseVideoInUse(World& world, FuzzInput& input) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  const KORVEL_IMAGE_HANDLE image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const bool isAlive = world.IsAlive(video);
  std::thread user([&] {
    constexpr int kRounds = 3;
    for (int i = 0; i < kRounds; ++i) {
      for (const KORVEL_RETURN_CODE code :
           {KORVEL_VideoWriter_Video_Append(video, image), KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(video, 1)}) {
        KORVEL_FUZZ_REQUIRE(code <= KORVEL_RETURN_CODE_Timeout);
      }
    }
  });
  const bool succeeded = world.Call(isAlive, true, [&] { return KORVEL_VideoWriter_Video_Close(video); });
  user.join();
  KORVEL_FUZZ_REQUIRE(succeeded == isAlive);
  if (succeeded) world.Bury(video);
}

// An option's number, mostly one that there is.
uint32_t TakeOption(FuzzInput& input) { return input.TakeByte() % 8 == 0 ? input.Take<uint32_t>() : 0; }

// Memory for an option's value of exactly the size that is told, as far as any option goes.
struct OptionValue {
  explicit OptionValue(FuzzInput& input) {
    const uint8_t kind = input.TakeByte() % 8;
    size = kind == 0 ? TakeSize(input) : kind % 2 == 0 ? sizeof(double) : sizeof(int32_t);
    constexpr size_t kMostBytes = 16;
    room = std::min(size, kMostBytes);
    bytes.reset(new uint8_t[room]);
    std::memset(bytes.get(), kUnwrittenByte, room);
    pointer = input.TakeByte() % 16 == 0 ? nullptr : bytes.get();
  }

  bool IsUntouched() const {
    return std::all_of(bytes.get(), bytes.get() + room, [](uint8_t byte) { return byte == kUnwrittenByte; });
  }

  size_t size;
  size_t room;
  std::unique_ptr<uint8_t[]> bytes;
  uint8_t* pointer;
};

// Small numbers of either type, or any bits.
void TakeValue(FuzzInput& input, OptionValue& value) {
  const uint8_t kind = input.TakeByte() % 4;
  const int32_t whole = input.TakeByte();
  const double real = whole;
  if (kind == 0) {
    std::generate_n(value.bytes.get(), value.room, [&] { return input.TakeByte(); });
  } else if (value.room == sizeof whole) {
    std::memcpy(value.bytes.get(), &whole, sizeof whole);
  } else if (value.room == sizeof real) {
    std::memcpy(value.bytes.get(), &real, sizeof real);
  }
}

void Run(World& world, FuzzInput& input,
         KORVEL_RETURN_CODE (*function)(KORVEL_VIDEO_HANDLE, uint32_t, const void*, size_t)) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  const uint32_t option = TakeOption(input);
  OptionValue value(input);
  TakeValue(input, value);
  world.Call(world.IsAlive(video), value.pointer != nullptr,
             [&] { return function(video, option, value.pointer, value.size); });
}

void Run(World& world, FuzzInput& input,
         KORVEL_RETURN_CODE (*function)(KORVEL_VIDEO_HANDLE, uint32_t, void*, size_t, size_t*)) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  const uint32_t option = TakeOption(input);
  const OptionValue value(input);
  Result sizeWritten(input, Unwritten<size_t>());
  const bool succeeded = world.Call(world.IsAlive(video), value.pointer != nullptr, [&] {
    return function(video, option, value.pointer, value.size, sizeWritten.Pointer());
  });
  if (succeeded) {
    KORVEL_FUZZ_REQUIRE(!sizeWritten.IsGiven() || sizeWritten.Get() == value.size);
  } else {
    KORVEL_FUZZ_REQUIRE(value.IsUntouched() && sizeWritten.IsUntouched());
  }
}

void GetEncoderOptionRange(World& world, FuzzInput& input) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  const uint32_t option = TakeOption(input);
  Result minimum(input, Unwritten<int32_t>());
  Result maximum(input, Unwritten<int32_t>());
  Result increment(input, Unwritten<int32_t>());
  const bool areGiven = minimum.IsGiven() && maximum.IsGiven() && increment.IsGiven();
  const bool succeeded = world.Call(world.IsAlive(video), areGiven, [&] {
    return KORVEL_VideoWriter_Encoder_OptionRange(video, option, minimum.Pointer(), maximum.Pointer(),
                                                  increment.Pointer());
  });
  if (succeeded) {
    KORVEL_FUZZ_REQUIRE(minimum.Get() <= maximum.Get() && increment.Get() > 0);
  } else {
    KORVEL_FUZZ_REQUIRE(minimum.IsUntouched() && maximum.IsUntouched() && increment.IsUntouched());
  }
}

void GetContainerOptionRange(World& world, FuzzInput& input) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  const uint32_t option = TakeOption(input);
  world.CallUnrecorded(KORVEL_RETURN_CODE_NotSupported, [&] {
    return KORVEL_VideoWriter_Container_OptionRange(video, option, nullptr, nullptr, nullptr);
  });
}

// Lists, whose length has to be asked for, since the room that an array has isn't told.
template <class Element>
void Run(World& world, FuzzInput& input, KORVEL_RETURN_CODE (*function)(uint16_t, Element*, size_t*)) {
  const uint16_t kind = TakeKind(input);
  Result size(input, Unwritten<size_t>());
  // A number that there isn't may be told before a missing pointer.
  const bool isKnown = kind <= KORVEL_VIDEO_ENCODER_MJPEG;
  const bool succeeded =
      world.Call(true, size.IsGiven() || !isKnown, [&] { return function(kind, nullptr, size.Pointer()); });
  KORVEL_FUZZ_REQUIRE(succeeded || size.IsUntouched());
  if (!succeeded) return;
  const std::unique_ptr<Element[]> elements(new Element[size.Get()]);
  size_t again = input.TakeByte();
  KORVEL_FUZZ_REQUIRE(function(kind, elements.get(), &again) == KORVEL_RETURN_CODE_Success && again == size.Get());
}

void ResetFrameCounters(World& world, FuzzInput& input) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  const bool isAlive = world.IsAlive(video);
  const bool succeeded = world.Call(isAlive, true, [&] { return KORVEL_VideoWriter_Video_ResetFrameCounters(video); });
  KORVEL_FUZZ_REQUIRE(succeeded == isAlive);
}

void GetQueueRange(World& world, FuzzInput& input) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  Result smallest(input, Unwritten<uint32_t>());
  Result largest(input, Unwritten<uint32_t>());
  const bool succeeded = world.Call(world.IsAlive(video), smallest.IsGiven() && largest.IsGiven(), [&] {
    return KORVEL_VideoWriter_Queue_GetRange(video, smallest.Pointer(), largest.Pointer());
  });
  if (succeeded) {
    KORVEL_FUZZ_REQUIRE(smallest.Get() <= largest.Get());
  } else {
    KORVEL_FUZZ_REQUIRE(smallest.IsUntouched() && largest.IsUntouched());
  }
}

// Short waits, or any for a queue that is empty, since nobody fills it meanwhile.
template <KORVEL_RETURN_CODE (*function)(KORVEL_VIDEO_HANDLE, uint32_t)>
void Wait(World& world, FuzzInput& input) {
  const KORVEL_VIDEO_HANDLE video = world.Take<KORVEL_VIDEO_HANDLE>(input);
  const bool isAlive = world.IsAlive(video);
  uint32_t queued = 0;
  if (isAlive) KORVEL_FUZZ_REQUIRE(KORVEL_VideoWriter_Queue_GetQueued(video, &queued) == KORVEL_RETURN_CODE_Success);
  const uint32_t timeoutMs = queued == 0 ? input.Take<uint32_t>() : input.TakeByte() % 3u;
  const bool succeeded = world.Call(isAlive, true, [&] { return function(video, timeoutMs); });
  KORVEL_FUZZ_REQUIRE(queued != 0 || succeeded == isAlive);
}

template <auto function>
void Call(World& world, FuzzInput& input) {
  Run(world, input, function);
}

void GetLastError(World& world, FuzzInput& input) {
  Result code(input, Unwritten<uint32_t>());
  const size_t room = TakeSize(input) % 128;
  Result size(input, room);
  const bool hasText = input.TakeByte() % 4 != 0;
  std::vector<char> text(room + 1, static_cast<char>(kUnwrittenByte));
  KORVEL_RETURN_CODE returned = 0;
  const bool succeeded = world.Call(true, code.IsGiven() && size.IsGiven(), [&] {
    returned = KORVEL_Library_GetLastError(code.Pointer(), hasText ? text.data() : nullptr, size.Pointer());
    return returned;
  });
  KORVEL_FUZZ_REQUIRE(static_cast<uint8_t>(text[room]) == kUnwrittenByte);
  if (succeeded && hasText) KORVEL_FUZZ_REQUIRE(size.Get() <= room && text[size.Get() - 1] == '\0');
  if (!succeeded && code.IsGiven() && size.IsGiven()) KORVEL_FUZZ_REQUIRE(returned == KORVEL_RETURN_CODE_BufferToSmall);
}

void CalculateStorageSizeOfPixels(World& world, FuzzInput& input) {
  const uint32_t format = TakeFormat(input);
  const size_t pixels = TakeSize(input);
  Result size(input, Unwritten<size_t>());
  const bool succeeded = world.CallFor(size, true, true, [&](size_t* value) {
    return KORVEL_PixelFormat_CalculateStorageSizeOfPixels(format, pixels, value);
  });
  const korvel_test::FormatRow* const row = korvel_test::FindFormat(format);
  KORVEL_FUZZ_REQUIRE(!size.IsGiven() || succeeded == (row != nullptr));
  if (succeeded) KORVEL_FUZZ_REQUIRE(size.Get() == korvel_test::BytesOfRun(row->runBytes, pixels));
}

void ConstructImage(World& world, FuzzInput& input) {
  const uint32_t format = TakeFormat(input);
  const size_t width = TakeSize(input);
  const size_t height = TakeSize(input);
  world.CallForNew<KORVEL_IMAGE_HANDLE>(
      input, true, true, [&](auto* handle) { return KORVEL_Image_Construct(format, width, height, handle); });
}

void ConstructImageFromBuffer(World& world, FuzzInput& input) {
  const uint32_t format = TakeFormat(input);
  const size_t width = TakeSize(input);
  const size_t height = TakeSize(input);
  const CallersMemory memory(world, input, format, width, height);
  for (size_t i = 0; memory.data != nullptr && i < memory.byteCount && !input.IsEmpty() && i < 64; ++i) {
    memory.data[i] = input.TakeByte();
  }
  world.CallForNew<KORVEL_IMAGE_HANDLE>(input, true, memory.data != nullptr, [&](auto* handle) {
    return KORVEL_Image_ConstructFromBuffer(format, memory.data, memory.byteCount, width, height, handle);
  });
}

void GetPixelPointer(World& world, FuzzInput& input) {
  const KORVEL_IMAGE_HANDLE image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const size_t x = TakeSize(input);
  const size_t y = TakeSize(input);
  Result pixel(input, Unwritten<uint8_t*>());
  const bool isAlive = world.IsAlive(image);
  const bool succeeded = world.CallFor(
      pixel, isAlive, true, [&](uint8_t** value) { return KORVEL_Image_GetPixelPointer(image, x, y, value); });
  if (!isAlive || !pixel.IsGiven()) return;
  const bool isInside = x < PropertyOf(KORVEL_Image_GetWidth, image) && y < PropertyOf(KORVEL_Image_GetHeight, image);
  KORVEL_FUZZ_REQUIRE(succeeded == isInside);
}

void ConvertImage(World& world, FuzzInput& input) {
  const KORVEL_IMAGE_HANDLE image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const uint32_t format = TakeFormat(input);
  const uint32_t mode = input.TakeByte();
  world.CallForNew<KORVEL_IMAGE_HANDLE>(input, world.IsAlive(image), true, [&](auto* handle) {
    return KORVEL_Image_ConvertTo(image, format, mode, handle);
  });
}

CallersMemory MemoryForResult(World& world, FuzzInput& input, uint32_t format, KORVEL_IMAGE_HANDLE image) {
  const bool isAlive = world.IsAlive(image);
  return {world, input, format, isAlive ? PropertyOf(KORVEL_Image_GetWidth, image) : 4,
          isAlive ? PropertyOf(KORVEL_Image_GetHeight, image) : 4};
}

void ConvertImageToBuffer(World& world, FuzzInput& input) {
  const KORVEL_IMAGE_HANDLE image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const uint32_t format = TakeFormat(input);
  const uint32_t mode = input.TakeByte();
  const CallersMemory memory = MemoryForResult(world, input, format, image);
  world.CallForNew<KORVEL_IMAGE_HANDLE>(input, world.IsAlive(image), memory.data != nullptr, [&](auto* handle) {
    return KORVEL_Image_ConvertToBuffer(image, format, memory.data, memory.byteCount, mode, handle);
  });
}

void PreAllocateConversion(World& world, FuzzInput& input) {
  const KORVEL_IMAGE_CONVERTER_HANDLE converter = world.Take<KORVEL_IMAGE_CONVERTER_HANDLE>(input);
  const uint32_t from = TakeFormat(input);
  const uint32_t to = TakeFormat(input);
  const size_t width = TakeSize(input);
  const size_t height = TakeSize(input);
  const size_t count = TakeSize(input);
  world.Call(world.IsAlive(converter), true,
             [&] { return KORVEL_ImageConverter_PreAllocateConversion(converter, from, to, width, height, count); });
}

void SetConversionMode(World& world, FuzzInput& input) {
  const KORVEL_IMAGE_CONVERTER_HANDLE converter = world.Take<KORVEL_IMAGE_CONVERTER_HANDLE>(input);
  const uint32_t mode = input.TakeByte() % 8 == 0 ? input.Take<uint32_t>() : input.TakeByte() % 4;
  const bool isAlive = world.IsAlive(converter);
  const bool succeeded =
      world.Call(isAlive, true, [&] { return KORVEL_ImageConverter_SetConversionMode(converter, mode); });
  KORVEL_FUZZ_REQUIRE(succeeded == isAlive);
}

void GetSupportedOutputPixelFormats(World& world, FuzzInput& input) {
  const KORVEL_IMAGE_CONVERTER_HANDLE converter = world.Take<KORVEL_IMAGE_CONVERTER_HANDLE>(input);
  const uint32_t format = TakeFormat(input);
  const size_t room = input.TakeByte() % 32u;
  Result size(input, room);
  const bool hasArray = input.TakeByte() % 4 != 0;
  std::vector<uint32_t> formats(room + 1, Unwritten<uint32_t>());
  const bool succeeded = world.CallFor(size, world.IsAlive(converter), true, [&](size_t* value) {
    return KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter, format, hasArray ? formats.data() : nullptr,
                                                                value);
  });
  KORVEL_FUZZ_REQUIRE(formats[room] == Unwritten<uint32_t>());
  if (!succeeded || !hasArray) return;
  KORVEL_FUZZ_REQUIRE(size.Get() <= room);
  for (size_t i = 0; i < size.Get(); ++i) KORVEL_FUZZ_REQUIRE(korvel_test::FindFormat(formats[i]) != nullptr);
}

void Convert(World& world, FuzzInput& input) {
  const KORVEL_IMAGE_CONVERTER_HANDLE converter = world.Take<KORVEL_IMAGE_CONVERTER_HANDLE>(input);
  const KORVEL_IMAGE_HANDLE image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const uint32_t format = TakeFormat(input);
  world.CallForNew<KORVEL_IMAGE_HANDLE>(
      input, world.IsAlive(converter) && world.IsAlive(image), true,
      [&](auto* handle) { return KORVEL_ImageConverter_Convert(converter, image, format, handle); });
}

void ConvertToBuffer(World& world, FuzzInput& input) {
  const KORVEL_IMAGE_CONVERTER_HANDLE converter = world.Take<KORVEL_IMAGE_CONVERTER_HANDLE>(input);
  const KORVEL_IMAGE_HANDLE image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const uint32_t format = TakeFormat(input);
  const CallersMemory memory = MemoryForResult(world, input, format, image);
  world.CallForNew<KORVEL_IMAGE_HANDLE>(
      input, world.IsAlive(converter) && world.IsAlive(image), memory.data != nullptr, [&](auto* handle) {
        return KORVEL_ImageConverter_ConvertToBuffer(converter, image, format, memory.data, memory.byteCount, handle);
      });
}

// Not a call, but something to read.
void PutFile(World& world, FuzzInput& input) {
  std::vector<uint8_t> content(input.TakeByte());
  std::ranges::generate(content, [&] { return input.TakeByte(); });
  ScratchFile(world.Files().TakeFile(input)).Rewrite(content);
}

void ReadFile(World& world, FuzzInput& input) {
  const std::string path = world.Files().TakePathToRead(input);
  const PathArgument argument(input, path);
  world.CallForNew<KORVEL_IMAGE_HANDLE>(input, true, argument.bytes != nullptr, [&](auto* handle) {
    return KORVEL_ImageReader_Read(argument.bytes, argument.size, handle);
  });
}

void ReadFileAsPixelFormat(World& world, FuzzInput& input) {
  const std::string path = world.Files().TakePathToRead(input);
  const PathArgument argument(input, path);
  const uint32_t format = TakeFormat(input);
  world.CallForNew<KORVEL_IMAGE_HANDLE>(input, true, argument.bytes != nullptr, [&](auto* handle) {
    return KORVEL_ImageReaderRead_ReadAsPixelFormat(argument.bytes, argument.size, format, handle);
  });
}

void SetColorCorrectionFactors(World& world, FuzzInput& input) {
  const auto corrector = world.Take<KORVEL_COLOR_CORRECTOR_HANDLE>(input);
  float factors[9];
  for (float& factor : factors) factor = TakeSetting<float>(input);
  const bool isGiven = input.TakeByte() % 16 != 0;
  world.Call(world.IsAlive(corrector), isGiven,
             [&] { return KORVEL_ColorCorrector_SetColorCorrectionFactors(corrector, isGiven ? factors : nullptr); });
}

void ExpectedOutputSize(World& world, FuzzInput& input) {
  const auto binning = world.Take<KORVEL_BINNING_HANDLE>(input);
  const uint32_t format = TakeFormat(input);
  const size_t width = TakeSize(input);
  const size_t height = TakeSize(input);
  Result outputWidth(input, Unwritten<size_t>());
  Result outputHeight(input, Unwritten<size_t>());
  const bool succeeded = world.Call(world.IsAlive(binning), outputWidth.IsGiven() && outputHeight.IsGiven(), [&] {
    return KORVEL_Binning_ExpectedOutputSize(binning, outputWidth.Pointer(), outputHeight.Pointer(), width, height,
                                             format);
  });
  KORVEL_FUZZ_REQUIRE(succeeded || (outputWidth.IsUntouched() && outputHeight.IsUntouched()));
  if (succeeded) KORVEL_FUZZ_REQUIRE(outputWidth.Get() <= width && outputHeight.Get() <= height);
}

void CorrectHotpixels(World& world, FuzzInput& input) {
  const auto corrector = world.Take<KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE>(input);
  KORVEL_IMAGE_HANDLE const image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  std::vector<KORVEL_POINT_2D> points(input.TakeByte() % 16 + 1u);
  for (KORVEL_POINT_2D& point : points) {
    point.x = static_cast<decltype(point.x)>(TakeSize(input));
    point.y = static_cast<decltype(point.y)>(TakeSize(input));
  }
  const bool isGiven = input.TakeByte() % 16 != 0;
  world.CallForNew<KORVEL_IMAGE_HANDLE>(
      input, world.IsAlive(corrector) && world.IsAlive(image), isGiven, [&](auto* handle) {
        return KORVEL_AdaptiveHotpixelCorrector_Correct(corrector, image, isGiven ? points.data() : nullptr,
                                                        points.size(), handle);
      });
}

void ConstructHistogram(World& world, FuzzInput& input) {
  KORVEL_IMAGE_HANDLE const image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  world.CallForNew<KORVEL_HISTOGRAM_HANDLE>(input, world.IsAlive(image), true,
                                            [&](auto* handle) { return KORVEL_Histogram_Construct(image, handle); });
}

void ConstructPixelLine(World& world, FuzzInput& input) {
  KORVEL_IMAGE_HANDLE const image = world.Take<KORVEL_IMAGE_HANDLE>(input);
  const auto orientation = TakeSetting<uint32_t>(input);
  const size_t offset = TakeSize(input);
  world.CallForNew<KORVEL_PIXEL_LINE_HANDLE>(input, world.IsAlive(image), true, [&](auto* handle) {
    return KORVEL_PixelLine_Construct(image, orientation, offset, handle);
  });
}

constexpr void (*kOperations[])(World&, FuzzInput&) = {
    Call<KORVEL_Library_GetVersionMajor>,
    Call<KORVEL_Library_GetVersionMinor>,
    Call<KORVEL_Library_GetVersionSubminor>,
    GetLastError,

    Call<KORVEL_PixelFormat_GetNumChannels>,
    Call<KORVEL_PixelFormat_GetNumSignificantBitsPerChannel>,
    Call<KORVEL_PixelFormat_GetNumStorageBitsPerChannel>,
    Call<KORVEL_PixelFormat_GetMaximumValuePerChannel>,
    Call<KORVEL_PixelFormat_GetNumSignificantBitsPerPixel>,
    Call<KORVEL_PixelFormat_GetNumStorageBitsPerPixel>,
    Call<KORVEL_PixelFormat_GetEndianness>,
    CalculateStorageSizeOfPixels,

    ConstructImage,
    ConstructImageFromBuffer,
    Call<KORVEL_Image_GetWidth>,
    Call<KORVEL_Image_GetHeight>,
    Call<KORVEL_Image_GetByteCount>,
    Call<KORVEL_Image_GetPixelFormat>,
    Call<KORVEL_Image_GetData>,
    GetPixelPointer,
    Call<KORVEL_Image_Clone>,
    ConvertImage,
    ConvertImageToBuffer,
    Call<KORVEL_Image_Destruct>,

    Call<KORVEL_ImageConverter_Construct>,
    PreAllocateConversion,
    Call<KORVEL_ImageConverter_GetConversionMode>,
    SetConversionMode,
    GetSupportedOutputPixelFormats,
    Convert,
    ConvertToBuffer,
    Call<KORVEL_ImageConverter_Destruct>,

    Call<KORVEL_Gain_Construct>,
    Call<KORVEL_Gain_SetMasterGainValue>,
    Call<KORVEL_Gain_SetRedGainValue>,
    Call<KORVEL_Gain_SetGreenGainValue>,
    Call<KORVEL_Gain_SetBlueGainValue>,
    Call<KORVEL_Gain_GetMasterGainValue>,
    Call<KORVEL_Gain_GetRedGainValue>,
    Call<KORVEL_Gain_GetGreenGainValue>,
    Call<KORVEL_Gain_GetBlueGainValue>,
    Call<KORVEL_Gain_GetMasterGainMin>,
    Call<KORVEL_Gain_GetRedGainMin>,
    Call<KORVEL_Gain_GetGreenGainMin>,
    Call<KORVEL_Gain_GetBlueGainMin>,
    Call<KORVEL_Gain_GetMasterGainMax>,
    Call<KORVEL_Gain_GetRedGainMax>,
    Call<KORVEL_Gain_GetGreenGainMax>,
    Call<KORVEL_Gain_GetBlueGainMax>,
    Call<KORVEL_Gain_GetIsPixelFormatSupported>,
    Call<KORVEL_Gain_Process>,
    Call<KORVEL_Gain_ProcessInPlace>,
    Call<KORVEL_Gain_Destruct>,

    Call<KORVEL_GammaCorrector_Construct>,
    Call<KORVEL_GammaCorrector_SetGammaCorrectionValue>,
    Call<KORVEL_GammaCorrector_GetGammaCorrectionValue>,
    Call<KORVEL_GammaCorrector_GetGammaCorrectionMin>,
    Call<KORVEL_GammaCorrector_GetGammaCorrectionMax>,
    Call<KORVEL_GammaCorrector_GetIsPixelFormatSupported>,
    Call<KORVEL_GammaCorrector_Process>,
    Call<KORVEL_GammaCorrector_ProcessInPlace>,
    Call<KORVEL_GammaCorrector_Destruct>,

    Call<KORVEL_ColorCorrector_Construct>,
    SetColorCorrectionFactors,
    Call<KORVEL_ColorCorrector_GetColorCorrectionFactors>,
    Call<KORVEL_ColorCorrector_GetIsPixelFormatSupported>,
    Call<KORVEL_ColorCorrector_Process>,
    Call<KORVEL_ColorCorrector_ProcessInPlace>,
    Call<KORVEL_ColorCorrector_Destruct>,

    Call<KORVEL_Binning_Construct>,
    Call<KORVEL_Binning_SetBinningX>,
    Call<KORVEL_Binning_SetBinningY>,
    Call<KORVEL_Binning_GetBinningX>,
    Call<KORVEL_Binning_GetBinningY>,
    Call<KORVEL_Binning_GetBinningMin>,
    Call<KORVEL_Binning_GetBinningMax>,
    ExpectedOutputSize,
    Call<KORVEL_Binning_SetBinningMode>,
    Call<KORVEL_Binning_GetBinningMode>,
    Call<KORVEL_Binning_IsPixelformatSupported>,
    Call<KORVEL_Binning_Process>,
    Call<KORVEL_Binning_Destruct>,

    Call<KORVEL_AdaptiveHotpixelCorrector_Construct>,
    Call<KORVEL_AdaptiveHotpixelCorrector_SetSensitivity>,
    Call<KORVEL_AdaptiveHotpixelCorrector_GetSensitivity>,
    Call<KORVEL_AdaptiveHotpixelCorrector_SetGainFactorPercent>,
    Call<KORVEL_AdaptiveHotpixelCorrector_GetGainFactorPercent>,
    Call<KORVEL_AdaptiveHotpixelCorrector_Detect>,
    Call<KORVEL_AdaptiveHotpixelCorrector_GetHotpixels>,
    CorrectHotpixels,
    Call<KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive>,
    Call<KORVEL_AdaptiveHotpixelCorrector_Destruct>,

    Call<KORVEL_ImageTransformer_Construct>,
    Call<KORVEL_ImageTransformer_MirrorUpDown>,
    Call<KORVEL_ImageTransformer_MirrorLeftRight>,
    Call<KORVEL_ImageTransformer_MirrorUpDownLeftRight>,
    Call<KORVEL_ImageTransformer_MirrorUpDownInPlace>,
    Call<KORVEL_ImageTransformer_MirrorLeftRightInPlace>,
    Call<KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace>,
    Call<KORVEL_ImageTransformer_Rotate>,
    Call<KORVEL_ImageTransformer_RotateInPlace>,
    Call<KORVEL_ImageTransformer_Destruct>,

    ConstructHistogram,
    Call<KORVEL_Histogram_GetPixelFormat>,
    Call<KORVEL_Histogram_GetNumChannels>,
    Call<KORVEL_Histogram_GetPixelSumForChannel>,
    Call<KORVEL_Histogram_GetPixelCountForChannel>,
    Call<KORVEL_Histogram_GetBinsForChannel>,
    Call<KORVEL_Histogram_Destruct>,

    ConstructPixelLine,
    Call<KORVEL_PixelLine_GetPixelFormat>,
    Call<KORVEL_PixelLine_GetOrientation>,
    Call<KORVEL_PixelLine_GetOffset>,
    Call<KORVEL_PixelLine_GetNumChannels>,
    Call<KORVEL_PixelLine_GetValuesForChannel>,
    Call<KORVEL_PixelLine_Destruct>,

    Call<KORVEL_ImageWriter_WriteAsRAW>,
    Call<KORVEL_ImageWriter_WriteAsBMP>,
    Call<KORVEL_ImageWriter_WriteAsPNG>,
    Call<KORVEL_ImageWriter_WriteAsJPG>,
    Call<KORVEL_ImageWriter_Write>,
    PutFile,
    ReadFile,
    ReadFileAsPixelFormat,

    OpenVideo,
    IsVideoOpen,
    Call<KORVEL_VideoWriter_Video_Close>,
    CloseVideoInUse,
    AppendToVideo,
    Call<KORVEL_VideoWriter_Encoder_SetOption>,
    Call<KORVEL_VideoWriter_Container_SetOption>,
    Call<KORVEL_VideoWriter_Encoder_GetOption>,
    Call<KORVEL_VideoWriter_Container_GetOption>,
    GetEncoderOptionRange,
    GetContainerOptionRange,
    Call<KORVEL_VideoWriter_GetSupportedEncodersForAContainer>,
    Call<KORVEL_VideoWriter_GetSupportedContainersForAnEncoder>,
    Call<KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats>,
    Call<KORVEL_VideoWriter_Video_GetEncodedFrames>,
    Call<KORVEL_VideoWriter_Video_GetDroppedFrames>,
    Call<KORVEL_VideoWriter_Video_GetFileSize>,
    ResetFrameCounters,
    Call<KORVEL_VideoWriter_Queue_SetSize>,
    Call<KORVEL_VideoWriter_Queue_GetSize>,
    GetQueueRange,
    Call<KORVEL_VideoWriter_Queue_GetQueued>,
    Wait<KORVEL_VideoWriter_Video_WaitUntilFrameDone>,
    Wait<KORVEL_VideoWriter_Video_WaitUntilQueueEmpty>,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Place place;
  const korvel_fuzz::DescriptorCheck descriptors;
  FuzzInput input(data, size);
  World world(place);
  for (size_t i = 0; i < kMostCalls && !input.IsEmpty(); ++i) {
    kOperations[input.TakeByte() % std::size(kOperations)](world, input);
  }
  return 0;
}
