#include "processing/conversion/filter_vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "processing/conversion/filter_rule.h"
#include "processing/unaligned.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"

namespace {

using img::InstructionSet;
using img::PixelFormatId;
using img::processing::ColourLayout;
using img::processing::FilterKernels;
using img::processing::FilterTask;
using img::processing::SiteColour;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;

constexpr size_t kLines = 5;
constexpr size_t kWidest = 140;
constexpr Placement kPlacements[] = {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress};

// Gives the kernels of each instruction set that has any.
template <class Check>
void ForEachKernels(Check&& check) {
  for (const InstructionSet set : RunnableInstructionSets()) {
    const FilterKernels* const kernels = img::processing::FindFilterKernels(set);
    if (kernels != nullptr) check(set, *kernels);
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(FilterVectors, SplitEveryWidthOfBytes) {
  std::mt19937 random(1);
  GuardedMemory line(kWidest);
  GuardedMemory even(kWidest);
  GuardedMemory odd(kWidest);
  ForEachKernels([&](InstructionSet set, const FilterKernels& kernels) {
    for (size_t width = img::processing::kFewestFilteredColumns; width <= kWidest; ++width) {
      uint8_t* const bytes = line.Place(width, Placement::kEndsAtPage);
      std::generate(bytes, bytes + width, [&] { return static_cast<uint8_t>(random()); });
      auto* const evens = reinterpret_cast<uint16_t*>(even.Place((width + 1) / 2 * 2, Placement::kEndsAtPage));
      auto* const odds = reinterpret_cast<uint16_t*>(odd.Place(width / 2 * 2, Placement::kEndsAtPage));
      kernels.splitBytes(bytes, width, evens, odds);
      for (size_t x = 0; x < width; ++x) {
        ASSERT_EQ((x % 2 == 0 ? evens : odds)[x / 2], bytes[x]) << set << " " << width << " " << x;
      }
    }
  });
}

TEST(FilterVectors, SplitEveryWidthOfWordsAndSeeAllTheirBits) {
  std::mt19937 random(2);
  GuardedMemory line(2 * kWidest);
  GuardedMemory even(kWidest);
  GuardedMemory odd(kWidest);
  ForEachKernels([&](InstructionSet set, const FilterKernels& kernels) {
    for (size_t width = img::processing::kFewestFilteredColumns; width <= kWidest; ++width) {
      for (const Placement placement : kPlacements) {
        uint8_t* const words = line.Place(2 * width, placement);
        uint32_t bits = 0;
        for (size_t x = 0; x < width; ++x) {
          // One stray bit at a time, anywhere.
          const uint32_t stray = random() % width == 0 ? 0x8000 >> random() % 4 : 0;
          const auto word = static_cast<uint16_t>(random() % 4096 | stray);
          img::processing::StoreSample(words, x, word);
          bits |= word;
        }
        auto* const evens = reinterpret_cast<uint16_t*>(even.Place((width + 1) / 2 * 2, Placement::kEndsAtPage));
        auto* const odds = reinterpret_cast<uint16_t*>(odd.Place(width / 2 * 2, Placement::kEndsAtPage));
        ASSERT_EQ(kernels.splitWords(words, width, evens, odds), bits) << set << " " << width;
        for (size_t x = 0; x < width; ++x) {
          ASSERT_EQ((x % 2 == 0 ? evens : odds)[x / 2], img::processing::LoadSample<uint16_t>(words, x))
              << set << " " << width << " " << x;
        }
      }
    }
  });
}

enum class Fill { kRandom, kExtremes, kLargestInLanes };

// Five lines, as the plain rule reads them and as the kernels do.
class Mosaic {
 public:
  Mosaic(size_t width, uint32_t maximum, Fill fill, std::mt19937& random) : plain_(kLines * width * 2) {
    for (size_t line = 0; line < kLines; ++line) {
      auto* const evens =
          reinterpret_cast<uint16_t*>(memory_.Place(kLines * PlaneBytes(width) * 2, kEnd)) + line * PlaneBytes(width);
      evens_[line] = evens;
      for (size_t x = 0; x < width; ++x) {
        const uint32_t largest = fill == Fill::kLargestInLanes ? img::processing::kLargestFilteredSample : maximum;
        const auto sample =
            static_cast<uint16_t>(fill == Fill::kExtremes ? random() % 2 * maximum : random() % (largest + 1));
        img::processing::StoreSample(plain_.data(), line * width + x, sample);
        (x % 2 == 0 ? evens : evens + Odd(width))[x / 2] = sample;
      }
    }
  }

  static size_t Odd(size_t width) { return (width + 1) / 2; }
  const uint16_t* Even(size_t line) const { return evens_[line]; }
  const uint8_t* Plain(size_t line, size_t width) const { return plain_.data() + line * width * 2; }

 private:
  static constexpr Placement kEnd = Placement::kEndsAtPage;
  static size_t PlaneBytes(size_t width) { return width; }  // in samples: both planes of a line

  std::vector<uint8_t> plain_;
  GuardedMemory memory_{kLines * kWidest * 2};
  const uint16_t* evens_[kLines];
};

template <PixelFormatId format, bool kRedLine>
void MakePlainly(const Mosaic& mosaic, size_t width, size_t ownColumn, size_t first, size_t last, uint8_t* output) {
  using Line = img::processing::SampleLine<uint16_t>;
  const img::processing::FilterRule<uint16_t, static_cast<int32_t>(img::kFacts<format>.maxValue)> rule{
      Line(mosaic.Plain(0, width)), Line(mosaic.Plain(1, width)), Line(mosaic.Plain(2, width)),
      Line(mosaic.Plain(3, width)), Line(mosaic.Plain(4, width))};
  for (size_t x = first; x < last; ++x) {
    const SiteColour colour = x % 2 == ownColumn ? rule.AtOwn(x) : rule.AtGreen(x);
    img::processing::StoreColour<format, kRedLine, true>(output + x * img::kFacts<format>.PixelByteCount(), colour);
  }
}

template <PixelFormatId format>
void ExpectThePlainRule(ColourLayout layout) {
  constexpr size_t kPixel = img::kFacts<format>.PixelByteCount();
  std::mt19937 random(3);
  GuardedMemory output(kWidest * kPixel);
  size_t count = 0;
  ForEachKernels([&](InstructionSet set, const FilterKernels& kernels) {
    for (size_t width = img::processing::kFewestFilteredColumns + 4; width <= kWidest; ++width, ++count) {
      // Samples above their depth exist in words alone.
      const bool hasWords = img::kFacts<format>.storageBits != 8;
      const Fill fill = count % 3 == 0               ? Fill::kExtremes
                        : count % 3 == 1 && hasWords ? Fill::kLargestInLanes
                                                     : Fill::kRandom;
      const Mosaic mosaic(width, img::kFacts<format>.maxValue, fill, random);
      for (unsigned variant = 0; variant < 8; ++variant) {
        const bool isRedLine = (variant & 1) != 0;
        const size_t ownColumn = variant >> 1 & 1;
        const bool isStreamed = (variant & 4) != 0;
        const size_t spare = width - 4 - img::processing::kFewestFilteredColumns;
        const size_t first = 2 + random() % (spare / 2 + 1);
        const size_t last = width - 2 - random() % (spare / 2 + 1);
        uint8_t* const line = output.Place(width * kPixel, kPlacements[(count + variant) % 3]);
        output.Mark(line, width * kPixel);
        std::vector<uint8_t> expected(line, line + width * kPixel);
        if (isRedLine) {
          MakePlainly<format, true>(mosaic, width, ownColumn, first, last, expected.data());
        } else {
          MakePlainly<format, false>(mosaic, width, ownColumn, first, last, expected.data());
        }
        FilterTask task{.even = {mosaic.Even(0), mosaic.Even(1), mosaic.Even(2), mosaic.Even(3), mosaic.Even(4)},
                        .odd = static_cast<ptrdiff_t>(Mosaic::Odd(width)),
                        .output = line,
                        .first = first,
                        .last = last,
                        .ownColumn = ownColumn,
                        .isOwnFirst = isRedLine != img::processing::IsBlueFirst(img::kFacts<format>),
                        .maximum = img::kFacts<format>.maxValue,
                        .isStreamed = isStreamed};
        kernels.filter[static_cast<size_t>(layout)](task);
        const auto what = [&] {
          return "width " + std::to_string(width) + ", columns " + std::to_string(first) + " to " +
                 std::to_string(last) + ", variant " + std::to_string(variant);
        };
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), line)) << set << " " << what();
        ASSERT_TRUE(output.IsMarkedOutside(line, width * kPixel)) << set << " " << what();
      }
    }
  });
}

TEST(FilterVectors, MakeBytes) {
  ExpectThePlainRule<PixelFormatId::RGB8>(ColourLayout::Bytes3);
  ExpectThePlainRule<PixelFormatId::BGRa8>(ColourLayout::Bytes4);
}

TEST(FilterVectors, MakeWords) {
  ExpectThePlainRule<PixelFormatId::RGB10>(ColourLayout::Words3);
  ExpectThePlainRule<PixelFormatId::BGR12>(ColourLayout::Words3);
  ExpectThePlainRule<PixelFormatId::RGBa12>(ColourLayout::Words4);
  ExpectThePlainRule<PixelFormatId::BGRa10>(ColourLayout::Words4);
}

TEST(FilterVectors, MakeWordsOf32BitsAndKeepWhatCarriesNothing) {
  ExpectThePlainRule<PixelFormatId::RGB10p32>(ColourLayout::Word32Kept);
}

}  // namespace
