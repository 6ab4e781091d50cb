#include "processing/conversion/mono_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "processing/conversion/bayer_to_mono_2x2.h"
#include "processing/streaming.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::processing::DemosaicKernels;
using korvel_test::Bytes;
using korvel_test::RunnableInstructionSets;

void ExpectModule(PixelFormatId from, PixelFormatId to, size_t width, size_t height) {
  const img::FormatFacts facts = *img::FindFacts(to);
  const size_t lineBytes = facts.ByteCount(width);
  std::mt19937 random(static_cast<uint32_t>(width));
  Bytes samples(lineBytes * height);
  std::generate(samples.begin(), samples.end(), [&] { return static_cast<uint8_t>(random()); });

  const korvel_test::TestImage input(from, width, height, samples);
  const korvel_test::TestImage output(to, width, height);
  img::processing::BayerToMono2x2Simple().Process(*input, *output);
  const Bytes expected = output.Content();

  const auto heavy = img::processing::HeavySampleOf(img::FindFacts(from)->pixelClass);
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    const DemosaicKernels* const kernels = img::processing::FindDemosaicKernels(set);
    if (kernels == nullptr) continue;
    for (const bool isStreamed : {false, true}) {
      Bytes converted(samples.size(), 0);
      for (size_t y = 0; y < height; ++y) {
        const size_t upper = std::min(y, height - 2);
        img::processing::MakeMonoLine({.upper = samples.data() + upper * lineBytes,
                                       .lower = samples.data() + (upper + 1) * lineBytes,
                                       .output = converted.data() + y * lineBytes,
                                       .width = width,
                                       .isUpperHeavy = upper % 2 == heavy.line,
                                       .heavyColumn = heavy.column,
                                       .maximum = facts.maxValue,
                                       .isStreamed = isStreamed},
                                      *kernels);
      }
      img::processing::EndStreaming();
      ASSERT_EQ(converted, expected) << facts.name << " " << width << " x " << height << " " << set;
    }
  }
}

TEST(MonoLine, IsTheModulesLine) {
  using enum PixelFormatId;
  for (size_t width = 2; width < 80; ++width) {
    ExpectModule(BayerRG8, Mono8, width, 4);
    ExpectModule(BayerBG8, Mono8, width, 3);
    ExpectModule(BayerGR10, Mono10, width, 3);
    ExpectModule(BayerGB12, Mono12, width, 5);
  }
}

}  // namespace
