#include "processing/conversion/demosaic_vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <vector>

#include "processing/conversion/bayer_sites.h"
#include "processing/conversion/debayering_optimized.h"
#include "processing/conversion/fast_demosaic.h"
#include "processing/streaming.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"

namespace {

using img::InstructionSet;
using img::PixelFormatId;
using img::processing::BilinearRule;
using img::processing::BilinearTask;
using img::processing::ClassicTask;
using img::processing::ColourLayout;
using img::processing::DebayeringOptimized;
using img::processing::DemosaicKernels;
using img::processing::FindDemosaicKernels;
using img::processing::MonoTask;
using img::processing::SampleLine;
using img::processing::SampleOf;
using img::processing::SiteColour;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;

constexpr size_t kWidest = 2 * 32 + 10;
constexpr std::array kPlacements = {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress};

std::mt19937& Random() {
  static std::mt19937 random(7);
  return random;
}

// Half of the bytes are extreme, so that sums are too.
void Fill(uint8_t* bytes, size_t count) {
  std::generate(bytes, bytes + count, [] {
    const auto value = static_cast<uint32_t>(Random()());
    return static_cast<uint8_t>(value % 4 == 0 ? 0 : value % 4 == 1 ? 255 : value >> 8);
  });
}

// Lines of a mosaic between pages that can't be touched, and an output likewise.
class Lines {
 public:
  static constexpr size_t kMost = 4;

  // Lays count lines of so many bytes, and as many bytes of output as a kernel writes to, that many behind the line's
  // first pixel.
  void Place(Placement placement, size_t count, size_t lineBytes, size_t outputOffset, size_t outputBytes) {
    for (size_t i = 0; i < count; ++i) {
      lines_[i] = memories_[i].Place(lineBytes, placement);
      Fill(lines_[i], lineBytes);
    }
    written_ = output_.Place(outputBytes, placement);
    outputBytes_ = outputBytes;
    outputOffset_ = outputOffset;
    output_.Mark(written_, outputBytes);
  }

  const uint8_t* operator[](size_t i) const { return lines_[i]; }
  uint8_t* Output() { return written_ - outputOffset_; }

  void Expect(const std::vector<uint8_t>& expected) {
    ASSERT_EQ(std::vector<uint8_t>(written_, written_ + outputBytes_), expected);
    ASSERT_TRUE(output_.IsMarkedOutside(written_, outputBytes_));
  }

 private:
  GuardedMemory memories_[kMost] = {GuardedMemory(2 * kWidest), GuardedMemory(2 * kWidest), GuardedMemory(2 * kWidest),
                                    GuardedMemory(2 * kWidest)};
  GuardedMemory output_{8 * kWidest};
  uint8_t* lines_[kMost] = {};
  uint8_t* written_ = nullptr;
  size_t outputBytes_ = 0;
  size_t outputOffset_ = 0;
};

struct LineRun {
  InstructionSet set;
  const DemosaicKernels* kernels;
  Placement placement;
  size_t first;
  size_t last;
  size_t parity;
  bool isStreamed;
};

std::ostream& operator<<(std::ostream& out, const LineRun& run) {
  return out << run.set << ", placement " << static_cast<int>(run.placement) << ", columns " << run.first << " to "
             << run.last << ", parity " << run.parity << (run.isStreamed ? ", streamed" : "");
}

// Calls test with every instruction set, placement, range of columns from 0 or 1 on, parity, and way to write.
template <class Test>
void ForEachRun(Test&& test) {
  for (const InstructionSet set : RunnableInstructionSets()) {
    const DemosaicKernels* const kernels = FindDemosaicKernels(set);
    if (kernels == nullptr) continue;
    for (const Placement placement : kPlacements) {
      for (const size_t first : {1u, 2u}) {
        for (size_t last = first; last + 2 < kWidest; ++last) {
          for (const size_t parity : {0u, 1u}) {
            for (const bool isStreamed : {false, true}) {
              const LineRun run = {set, kernels, placement, first, last, parity, isStreamed};
              SCOPED_TRACE(testing::Message() << run);
              test(run);
              if (testing::Test::HasFatalFailure()) return;
            }
          }
        }
      }
    }
  }
}

// ---------------------------------------------------------------------------------------------------------- Bilinear
// --

// The kernel of a layout against the plain rule, through a format of that layout.
template <PixelFormatId format, bool kKeepsUnusedBits = false>
void ExpectBilinear() {
  constexpr img::FormatFacts kFormat = img::kFacts<format>;
  constexpr size_t kPixel = kFormat.PixelByteCount();
  using Sample = SampleOf<format>;
  Lines lines;
  ForEachRun([&](const LineRun& run) {
    const size_t width = run.last + 1;
    const size_t columns = run.last - run.first;
    lines.Place(run.placement, 3, width * sizeof(Sample), run.first * kPixel, columns * kPixel);
    const bool isRedLine = Random()() % 2 == 0;

    std::vector<uint8_t> expected(lines.Output() + run.first * kPixel, lines.Output() + run.last * kPixel);
    using Line = SampleLine<Sample>;
    const BilinearRule<Sample> rule{Line(lines[0]), Line(lines[1]), Line(lines[2])};
    for (size_t x = run.first; x < run.last; ++x) {
      const SiteColour colour = x % 2 == run.parity ? rule.AtOwn(x) : rule.AtGreen(x);
      uint8_t* const to = expected.data() + (x - run.first) * kPixel;
      if (isRedLine) {
        img::processing::StoreColour<format, true, kKeepsUnusedBits>(to, colour);
      } else {
        img::processing::StoreColour<format, false, kKeepsUnusedBits>(to, colour);
      }
    }

    const auto layout = kKeepsUnusedBits ? ColourLayout::Word32Kept : img::processing::ColourLayoutOf(kFormat);
    run.kernels->bilinear[static_cast<size_t>(layout)](
        {.above = lines[0],
         .here = lines[1],
         .below = lines[2],
         .output = lines.Output(),
         .first = run.first,
         .last = run.last,
         .ownColumn = run.parity,
         .isOwnFirst = isRedLine != img::processing::IsBlueFirst(kFormat),
         .alpha = kFormat.maxValue,
         .isStreamed = run.isStreamed});
    img::processing::EndStreaming();
    lines.Expect(expected);
  });
}

TEST(DemosaicVectors, BilinearIsThePlainRuleInEveryLayout) {
  ExpectBilinear<PixelFormatId::RGB8>();
  ExpectBilinear<PixelFormatId::BGRa8>();
  ExpectBilinear<PixelFormatId::RGB10p32>();
  ExpectBilinear<PixelFormatId::RGB10p32, true>();
}

TEST(DemosaicVectors, BilinearOfWordsCountsAllTheirBits) {
  ExpectBilinear<PixelFormatId::BGR12>();
  ExpectBilinear<PixelFormatId::RGBa10>();
}

TEST(DemosaicVectors, LuminanceIsThatOfLanes) {
  Lines lines;
  ForEachRun([&](const LineRun& run) {
    lines.Place(run.placement, 3, run.last + 1, run.first, run.last - run.first);
    const bool isRedLine = Random()() % 2 == 0;
    using Line = SampleLine<uint8_t>;
    const BilinearRule<uint8_t> rule{Line(lines[0]), Line(lines[1]), Line(lines[2])};
    std::vector<uint8_t> expected;
    for (size_t x = run.first; x < run.last; ++x) {
      const SiteColour colour = x % 2 == run.parity ? rule.AtOwn(x) : rule.AtGreen(x);
      const float red = 0.299f * static_cast<float>(isRedLine ? colour.own : colour.other);
      const float green = 0.587f * static_cast<float>(colour.green);
      const float blue = 0.114f * static_cast<float>(isRedLine ? colour.other : colour.own);
      expected.push_back(static_cast<uint8_t>((red + green) + blue));
    }
    run.kernels->luminance({.above = lines[0],
                            .here = lines[1],
                            .below = lines[2],
                            .output = lines.Output(),
                            .first = run.first,
                            .last = run.last,
                            .ownColumn = run.parity,
                            .isOwnFirst = isRedLine,
                            .alpha = 0,
                            .isStreamed = run.isStreamed});
    img::processing::EndStreaming();
    lines.Expect(expected);
  });
}

// Sums of the three products that single precision puts on a whole number, or just below it, where exact ones are on
// it.
TEST(DemosaicVectors, LuminanceRoundsAsSinglePrecision) {
  constexpr size_t kWidth = 258;
  for (const InstructionSet set : RunnableInstructionSets()) {
    const DemosaicKernels* const kernels = FindDemosaicKernels(set);
    if (kernels == nullptr) continue;
    std::vector<uint8_t> here(kWidth);
    std::vector<uint8_t> beside(kWidth);
    std::vector<uint8_t> output(kWidth);
    for (int red = 0; red < 256; ++red) {
      for (int blue = 0; blue < 256; ++blue) {
        // Own is red at even columns; green runs through all values, by pairs of columns.
        for (size_t x = 0; x < kWidth; ++x) {
          here[x] = static_cast<uint8_t>(red);
          beside[x] = static_cast<uint8_t>(blue);
        }
        for (size_t x = 1; x < kWidth; x += 2)
          here[x] = static_cast<uint8_t>((x * 37 + static_cast<size_t>(blue)) % 256);
        kernels->luminance({.above = beside.data(),
                            .here = here.data(),
                            .below = beside.data(),
                            .output = output.data(),
                            .first = 1,
                            .last = kWidth - 1,
                            .ownColumn = 0,
                            .isOwnFirst = true,
                            .alpha = 0,
                            .isStreamed = false});
        for (size_t x = 1; x + 1 < kWidth; x += 2) {
          const float sum = (0.299f * static_cast<float>(red) + 0.587f * static_cast<float>(here[x])) +
                            0.114f * static_cast<float>(blue);
          ASSERT_EQ(output[x], static_cast<uint8_t>(sum)) << set << ": " << red << " " << +here[x] << " " << blue;
        }
      }
    }
  }
}

// ----------------------------------------------------------------------------------------------------------- Classic
// --

template <size_t kChannels>
void ExpectClassic() {
  Lines lines;
  ForEachRun([&](const LineRun& run) {
    // Two more columns than are written: first - 1 and last + 1 are read.
    lines.Place(run.placement, 4, run.last + 2, run.first * kChannels, (run.last - run.first) * kChannels);
    const bool isEvenFirst = run.parity == 0;
    const ClassicTask task = {.planes = {{lines[0], lines[2]}, {lines[1], lines[3]}},
                              .green = {lines[1], lines[2]},
                              .output = lines.Output(),
                              .first = run.first,
                              .last = run.last,
                              .isEvenFirst = isEvenFirst,
                              .alpha = 255,
                              .isStreamed = run.isStreamed};
    std::vector<uint8_t> expected;
    for (size_t x = run.first; x < run.last; ++x) {
      const auto value = [&](size_t plane) {
        const auto& [near, far] = task.planes[plane];
        const size_t on = x % 2 == plane ? x : x + 1;
        const size_t next = x % 2 == plane ? x + 2 : x - 1;
        return static_cast<uint8_t>((9 * near[on] + 3 * near[next] + 3 * far[on] + far[next]) >> 4);
      };
      expected.push_back(value(isEvenFirst ? 0 : 1));
      expected.push_back(static_cast<uint8_t>((task.green[x % 2][x] + task.green[1 - x % 2][x + 1]) >> 1));
      expected.push_back(value(isEvenFirst ? 1 : 0));
      if (kChannels == 4) expected.push_back(255);
    }
    (kChannels == 3 ? run.kernels->classic3 : run.kernels->classic4)(task);
    img::processing::EndStreaming();
    lines.Expect(expected);
  });
}

TEST(DemosaicVectors, ClassicWeighsFourSamplesOfAPlane) {
  ExpectClassic<3>();
  ExpectClassic<4>();
}

// -------------------------------------------------------------------------------------------------------------- Mono
// --

template <class Sample>
uint32_t SampleAt(const uint8_t* line, size_t x) {
  return static_cast<uint32_t>(SampleLine<Sample>(line)[x]);
}

template <class Sample>
Sample PlainMono(const MonoTask& task, size_t x) {
  const bool isHeavy = x % 2 == task.heavyColumn;
  const auto heavy = [&](size_t at) { return SampleAt<Sample>(task.heavyLine, at); };
  const auto light = [&](size_t at) { return SampleAt<Sample>(task.lightLine, at); };
  const size_t heavyAt = isHeavy ? x : x + 1;
  const size_t lightAt = isHeavy ? x + 1 : x;
  const uint32_t sum = 299 * heavy(heavyAt) + 293 * heavy(lightAt) + 293 * light(heavyAt) + 114 * light(lightAt);
  return static_cast<Sample>(std::min(sum / 999, task.maximum));
}

template <class Sample>
void ExpectMono(uint32_t maximum) {
  Lines lines;
  ForEachRun([&](const LineRun& run) {
    lines.Place(run.placement, 2, (run.last + 1) * sizeof(Sample), run.first * sizeof(Sample),
                (run.last - run.first) * sizeof(Sample));
    const MonoTask task = {.heavyLine = lines[0],
                           .lightLine = lines[1],
                           .output = lines.Output(),
                           .first = run.first,
                           .last = run.last,
                           .heavyColumn = run.parity,
                           .maximum = maximum,
                           .isStreamed = run.isStreamed};
    std::vector<uint8_t> expected((run.last - run.first) * sizeof(Sample));
    for (size_t x = run.first; x < run.last; ++x) {
      img::processing::StoreSample(expected.data(), x - run.first, PlainMono<Sample>(task, x));
    }
    (sizeof(Sample) == 1 ? run.kernels->mono8 : run.kernels->mono16)(task);
    img::processing::EndStreaming();
    lines.Expect(expected);
  });
}

TEST(DemosaicVectors, MonoWeighsBlocks) {
  ExpectMono<uint8_t>(255);
  ExpectMono<uint16_t>(1023);
  ExpectMono<uint16_t>(4095);
}

// One sample of a block at a time reaches sums near every multiple of 999, all of them together every quotient.
TEST(DemosaicVectors, MonoDividesEverySumExactly) {
  constexpr size_t kWidth = 4098;
  for (const InstructionSet set : RunnableInstructionSets()) {
    const DemosaicKernels* const kernels = FindDemosaicKernels(set);
    if (kernels == nullptr) continue;
    std::vector<uint16_t> heavy(kWidth);
    std::vector<uint16_t> light(kWidth);
    std::vector<uint16_t> output(kWidth);
    const auto bytes = [](auto& words) { return reinterpret_cast<uint8_t*>(words.data()); };
    for (uint16_t round = 0; round < 64; ++round) {
      for (size_t x = 0; x < kWidth; ++x) {
        heavy[x] = static_cast<uint16_t>(std::min<size_t>(x, 4095));
        light[x] = static_cast<uint16_t>(std::min<size_t>(x + round, 4095));
      }
      const MonoTask task = {.heavyLine = bytes(heavy),
                             .lightLine = bytes(light),
                             .output = bytes(output),
                             .first = 0,
                             .last = kWidth - 1,
                             .heavyColumn = round % size_t{2},
                             .maximum = 4095,
                             .isStreamed = false};
      kernels->mono16(task);
      for (size_t x = 0; x + 1 < kWidth; ++x) ASSERT_EQ(output[x], PlainMono<uint16_t>(task, x)) << set << " " << x;
    }
  }
}

// --------------------------------------------------------------------------------------------------- Lines and images
// --

// Streamed lines go out in parts, each beginning where the one before it left a cache line unfinished.
TEST(DemosaicVectors, StreamedLinesAreTheSame) {
  constexpr size_t kWidestLine = 4300;
  std::vector<uint8_t> samples(4 * 2 * kWidestLine);
  Fill(samples.data(), samples.size());
  const auto line = [&](size_t i) { return samples.data() + i * 2 * kWidestLine; };
  std::vector<uint8_t> usual(8 * kWidestLine + 64);
  std::vector<uint8_t> streamed(usual.size());
  for (const InstructionSet set : RunnableInstructionSets()) {
    const DemosaicKernels* const kernels = FindDemosaicKernels(set);
    if (kernels == nullptr) continue;
    std::vector<std::function<void(uint8_t*, size_t, bool)>> calls;
    const auto bilinear = [&](auto convert) {
      calls.emplace_back([&, convert](uint8_t* output, size_t last, bool isStreamed) {
        convert(BilinearTask{line(0), line(1), line(2), output, 1, last, 0, true, 1023, isStreamed});
      });
    };
    for (const auto convert : kernels->bilinear) bilinear(convert);
    bilinear(kernels->luminance);
    for (const auto convert : {kernels->classic3, kernels->classic4}) {
      calls.emplace_back([&, convert](uint8_t* output, size_t last, bool isStreamed) {
        convert({{{line(0), line(1)}, {line(2), line(3)}}, {line(1), line(2)}, output, 1, last, true, 255, isStreamed});
      });
    }
    for (const auto convert : {kernels->mono8, kernels->mono16}) {
      calls.emplace_back([&, convert](uint8_t* output, size_t last, bool isStreamed) {
        convert({line(0), line(1), output, 1, last, 1, 255, isStreamed});
      });
    }
    for (const auto& call : calls) {
      for (const size_t last : {250u, 337u, 530u, 705u, 2060u, 2079u, 2080u, 2081u, 4200u, 4298u}) {
        for (const size_t offset : {0u, 1u, 6u, 32u, 63u}) {
          std::fill(usual.begin(), usual.end(), uint8_t{0xA5});
          streamed = usual;
          call(usual.data() + offset, last, false);
          call(streamed.data() + offset, last, true);
          img::processing::EndStreaming();
          ASSERT_TRUE(streamed == usual) << set << ", to " << last << ", offset " << offset;
        }
      }
    }
  }
}

TEST(FastDemosaic, IsTheSameWithAndWithoutVectors) {
  for (const PixelFormatId format : {PixelFormatId::RGB8, PixelFormatId::BGR8, PixelFormatId::RGBa8,
                                     PixelFormatId::BGRa8, PixelFormatId::RGB10p32, PixelFormatId::Mono8}) {
    const img::FormatFacts facts = *img::FindFacts(format);
    const size_t sampleBytes = format == PixelFormatId::RGB10p32 ? 2 : 1;
    for (size_t width = 16; width < 110; ++width) {
      std::vector<uint8_t> samples(3 * width * sampleBytes);
      Fill(samples.data(), samples.size());
      for (const size_t missing : {0u, 1u, 2u}) {  // none, the line above, the line below
        for (const size_t lanes : {16u, 32u}) {
          const bool isRedLine = Random()() % 2 == 0;
          const size_t ownColumn = Random()() % 2;
          const auto convert = [&](InstructionSet set) {
            std::vector<uint8_t> output(facts.ByteCount(width), 0xCD);
            img::processing::FindFastLine(format)(
                {.above = missing == 1 ? nullptr : samples.data(),
                 .here = samples.data() + width * sampleBytes,
                 .below = missing == 2 ? nullptr : samples.data() + 2 * width * sampleBytes,
                 .output = output.data(),
                 .width = width,
                 .isRedLine = isRedLine,
                 .ownColumn = ownColumn,
                 .set = set,
                 .isStreamed = false,
                 .luminanceLanes = lanes});
            return output;
          };
          const std::vector<uint8_t> expected = convert(InstructionSet::Baseline);
          for (const InstructionSet set : RunnableInstructionSets()) {
            ASSERT_EQ(convert(set), expected) << facts.name << ", width " << width << ", " << set;
          }
        }
      }
    }
  }
}

// Large enough to go past the caches, at any address. A record without vectors takes the plain code.
TEST(DebayeringOptimized, GivesLargeImagesAsSmallOnes) {
  constexpr size_t kWidth = 2002;
  constexpr size_t kHeight = 2000;
  static_assert(img::processing::ShouldStream(kWidth * kHeight * 3));
  std::vector<uint8_t> samples(kWidth * kHeight);
  Fill(samples.data(), samples.size());
  for (const PixelFormatId format : {PixelFormatId::RGB8, PixelFormatId::BGRa8}) {
    const size_t size = img::FindFacts(format)->ByteCount(samples.size());
    for (const size_t offset : {0u, 1u}) {
      for (const uint32_t mode : {1u, 3u}) {
        std::vector<uint8_t> expected;
        for (const img::ProcessorFeatures features : {img::ProcessorFeatures{}, {.avx = 1}, {.avx = 1, .avx2 = 1}}) {
          std::vector<uint8_t> output(size + offset);
          const bool isConverted = DebayeringOptimized(features).Convert(
              samples.data(), kWidth, kHeight, PixelFormatId::BayerGR8, output.data() + offset, size, format, mode);
          if (!isConverted) continue;
          if (expected.empty()) expected = output;
          ASSERT_TRUE(output == expected) << "mode " << mode << ", offset " << offset;
        }
        ASSERT_FALSE(expected.empty());
      }
    }
  }
}

}  // namespace
