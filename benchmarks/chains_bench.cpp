#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "benchmarks/exported_calls.h"
#include "benchmarks/plain_kernels.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"

namespace korvel::benchmarks {
namespace {

using img::PixelFormatId;
using img::Size2D;

constexpr FrameSize kSmall{{64, 64}, 9};
constexpr size_t kSmallCalls = 200;
constexpr size_t kLookUps = 20000;

struct PlainStage {
  PlainKernel run;
  PixelFormatId out;
};

struct Chain {
  PixelFormatId in;
  PixelFormatId out;
  KORVEL_CONVERSION_MODE mode;
  bool isToBuffer;  // the form that writes into the caller's memory
  std::vector<PlainStage> plain;
  Agreement agreement;

  std::string Name() const {
    return std::string(isToBuffer ? "convert_to_buffer" : "convert") + "_mode" + std::to_string(mode) + "/" +
           img::PixelFormatInfo_Name(in) + "/" + img::PixelFormatInfo_Name(out);
  }
};

// The plain stages one after the other, each into memory of its own.
class PlainChain {
 public:
  PlainChain(std::vector<PlainStage> stages, const Size2D& size) : stages_(std::move(stages)), size_(size) {
    for (const PlainStage& stage : stages_) memory_.emplace_back(ByteCount(stage.out, size));
  }

  void Run(const uint8_t* input) {
    for (size_t i = 0; i < stages_.size(); ++i) {
      stages_[i].run(input, size_, memory_[i].data());
      input = memory_[i].data();
    }
  }

  std::vector<uint8_t>& Result() { return memory_.back(); }

 private:
  std::vector<PlainStage> stages_;
  Size2D size_;
  std::vector<std::vector<uint8_t>> memory_;
};

void RunChain(benchmark::State& state, const Chain& chain, const Size2D& size, size_t calls) {
  const std::vector<uint8_t> frame = MakeFrame(chain.in, size);
  std::vector<uint8_t> input = frame;
  std::vector<uint8_t> display(ByteCount(chain.out, size));
  PlainChain plain(chain.plain, size);
  ImageConverter converter;
  Require(KORVEL_ImageConverter_Construct(converter.Out()));
  Require(KORVEL_ImageConverter_SetConversionMode(converter.Get(), chain.mode));

  // What an application does with every frame: a handle for it, the conversion, and both handles' end.
  Image output;
  const auto convert = [&] {
    const Image source = ImageOver(input, chain.in, size);
    Require(chain.isToBuffer
                ? KORVEL_ImageConverter_ConvertToBuffer(converter.Get(), source.Get(), Id(chain.out), display.data(),
                                                        display.size(), output.Out())
                : KORVEL_ImageConverter_Convert(converter.Get(), source.Get(), Id(chain.out), output.Out()));
  };

  convert();
  plain.Run(frame.data());
  if (const auto difference = FindDifference(DataOf(output), plain.Result().data(), chain.out, size, chain.agreement)) {
    state.SkipWithError(difference->c_str());
    return;
  }
  input = frame;  // a flip changes it

  const auto repeat = [calls](auto&& run) {
    for (size_t i = 0; i < calls; ++i) run();
  };
  Measure(state, {.subject = [&] { repeat(convert); },
                  .peer = [&] { repeat([&] { plain.Run(input.data()); }); },
                  .read = input,
                  .written = plain.Result(),
                  .pixels = size.width * size.height,
                  .calls = calls});
}

void Add(const Chain& chain) {
  for (const FrameSize& frame : kFrameSizes) {
    Register(chain.Name() + "/" + frame.Name(), frame.rounds,
             [=](benchmark::State& state) { RunChain(state, chain, frame.size, 1); });
  }
}

// From a Bayer format to 8 bits: the plain stages up to BayerRG8.
template <PixelFormatId in>
std::vector<PlainStage> PlainTo8Bits() {
  constexpr PixelFormatId kUnpacked = img::kFacts<in>.significantBits == 8    ? PixelFormatId::BayerRG8
                                      : img::kFacts<in>.significantBits == 10 ? PixelFormatId::BayerRG10
                                                                              : PixelFormatId::BayerRG12;
  std::vector<PlainStage> stages;
  if constexpr (img::kFacts<in>.IsPacked()) stages.push_back({PlainUnpack<in>, kUnpacked});
  if constexpr (img::kFacts<in>.significantBits > 8) {
    stages.push_back({PlainDepth<kUnpacked, PixelFormatId::BayerRG8>, PixelFormatId::BayerRG8});
  }
  return stages;
}

template <PixelFormatId in, PixelFormatId out>
Chain MakeBayerChain(KORVEL_CONVERSION_MODE mode, bool isToBuffer = false) {
  constexpr PixelFormatId kMosaic = PixelFormatId::BayerRG8;
  Chain chain{in, out, mode, isToBuffer, PlainTo8Bits<in>(), {.margin = 2}};
  PlainKernel last = nullptr;
  if (mode == KORVEL_CONVERSION_MODE_Fast) {
    last = PlainDemosaic3x3<kMosaic, out>;
    // Luminance rounds in its own way at the ends of lines.
    if (out == PixelFormatId::Mono8) chain.agreement.maximum = 1;
  } else if constexpr (out == PixelFormatId::Mono8) {
    last = PlainMono2x2<kMosaic, out>;
  } else {
    last = mode == KORVEL_CONVERSION_MODE_Classic ? PlainClassic<kMosaic, out> : PlainDemosaic5x5<kMosaic, out>;
  }
  chain.plain.push_back({last, out});
  return chain;
}

template <PixelFormatId in>
void AddBayerChains() {
  for (const KORVEL_CONVERSION_MODE mode :
       {KORVEL_CONVERSION_MODE_Fast, KORVEL_CONVERSION_MODE_HighQuality, KORVEL_CONVERSION_MODE_Classic}) {
    Add(MakeBayerChain<in, PixelFormatId::BGRa8>(mode));
    Add(MakeBayerChain<in, PixelFormatId::RGB8>(mode));
    Add(MakeBayerChain<in, PixelFormatId::Mono8>(mode));
  }
}

void RunClone(benchmark::State& state, const Size2D& size) {
  std::vector<uint8_t> input = MakeFrame(PixelFormatId::BGRa8, size);
  std::vector<uint8_t> output(input.size());
  const Image source = ImageOver(input, PixelFormatId::BGRa8, size);
  Measure(state, {.subject =
                      [&] {
                        Image clone;
                        Require(KORVEL_Image_Clone(source.Get(), clone.Out()));
                      },
                  .peer =
                      [&] {
                        const auto copy = std::make_unique_for_overwrite<uint8_t[]>(input.size());
                        std::memcpy(copy.get(), input.data(), input.size());
                        benchmark::DoNotOptimize(copy.get());
                      },
                  .read = input,
                  .written = output,
                  .pixels = size.width * size.height});
}

// The least that a call by handle has to do, beside a look-up that keeps the object alive.
void RunLookUp(benchmark::State& state) {
  std::vector<uint8_t> memory = MakeFrame(PixelFormatId::Mono8, kSmall.size);
  const Image image = ImageOver(memory, PixelFormatId::Mono8, kSmall.size);
  const auto object = std::make_shared<Size2D>(kSmall.size);
  std::mutex mutex;
  std::unordered_map<const void*, std::shared_ptr<Size2D>> objects{{object.get(), object}};
  const auto findObject = [&](const void* handle) {
    const std::lock_guard lock(mutex);
    const auto found = objects.find(handle);
    return found == objects.end() ? nullptr : found->second;
  };
  Measure(state, {.subject =
                      [&] {
                        for (size_t i = 0; i < kLookUps; ++i) {
                          size_t width = 0;
                          Require(KORVEL_Image_GetWidth(image.Get(), &width));
                          benchmark::DoNotOptimize(width);
                        }
                      },
                  .peer =
                      [&] {
                        for (size_t i = 0; i < kLookUps; ++i) {
                          size_t width = findObject(object.get())->width;
                          benchmark::DoNotOptimize(width);
                        }
                      },
                  .calls = kLookUps});
}

}  // namespace

void RegisterChains() {
  using enum PixelFormatId;

  Register("handle_look_up/64x64", kSmall.rounds, RunLookUp);
  const Chain small = MakeBayerChain<BayerRG8, BGRa8>(KORVEL_CONVERSION_MODE_Fast);
  Register(small.Name() + "/" + kSmall.Name(), kSmall.rounds,
           [=](benchmark::State& state) { RunChain(state, small, kSmall.size, kSmallCalls); });

  AddBayerChains<BayerRG8>();
  AddBayerChains<BayerRG12>();
  AddBayerChains<BayerRG12p>();
  AddBayerChains<BayerRG10p>();
  AddBayerChains<BayerRG10g40Qrv>();
  AddBayerChains<BayerRG12g24Qrv>();
  Add(MakeBayerChain<BayerRG8, BGRa8>(KORVEL_CONVERSION_MODE_Fast, true));
  Add(MakeBayerChain<BayerRG12p, BGRa8>(KORVEL_CONVERSION_MODE_Fast, true));

  const KORVEL_CONVERSION_MODE mode = KORVEL_CONVERSION_MODE_Fast;
  Add({Mono12p, Mono8, mode, false, {{PlainUnpack<Mono12p>, Mono12}, {PlainDepth<Mono12, Mono8>, Mono8}}, {}});
  Add({Mono8, BGRa8, mode, false, {{PlainExtend<Mono8, BGRa8>, BGRa8}}, {}});
  Add({RGB8, BGR8, mode, false, {{PlainFlip<RGB8>, BGR8}}, {}});

  for (const FrameSize& frame : kFrameSizes) {
    Register("image_clone/BGRa8/" + frame.Name(), frame.rounds,
             [=](benchmark::State& state) { RunClone(state, frame.size); });
  }
}

}  // namespace korvel::benchmarks
