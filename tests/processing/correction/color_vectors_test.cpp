#include "processing/correction/color_vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

#include "processing/correction/color_matrix.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"

namespace {

using img::PixelFormatId;
using img::processing::ColorFactors;
using img::processing::ColorKernels;
using img::processing::CorrectColors;
using img::processing::Rounding;
using img::processing::SumOrder;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

constexpr ColorFactors kMatrices[] = {
    img::processing::kIdentityFactors,
    {1.62f, -0.41f, -0.21f, -0.28f, 1.57f, -0.29f, 0.02f, -0.63f, 1.61f},
    {0.5f, 1.0f, -1.0f, 0.0f, 1.5f, -0.5f, 0.25f, 0.25f, 0.5f},                               // halves
    {1.0f, 0x1p24f, -0x1p24f, -0x1p23f, 0x1p23f, 0.75f, 0x1p22f, 0.3f, -0x1p22f},             // depend on the order
    {1e30f, 0.0f, 0.0f, -1e30f, 0.0f, 0.0f, 0x1p31f, -0x1p31f, 0.0f},                         // beyond integers
    {kInfinity, 0.0f, 0.0f, -kInfinity, 1.0f, 0.0f, kNan, 1.0f, 1.0f},                        // beyond numbers
    {-0.0f, 0.0f, -0.0f, std::numeric_limits<float>::denorm_min(), 0.0f, 0.0f, 1.0f, 0, -1},  // around zero
};

// behind is how many bytes the kernel may read behind its pixels.
template <PixelFormatId format, SumOrder order>
void TestEveryCount(CorrectColors ColorKernels::*kernel, size_t behind) {
  constexpr img::FormatFacts kFormat = img::kFacts<format>;
  constexpr size_t kMost = 70;
  const size_t pixelBytes = kFormat.PixelByteCount();
  GuardedMemory from(kMost * pixelBytes + behind);
  GuardedMemory to(kMost * pixelBytes);
  std::mt19937 random(1);
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    const ColorKernels* const kernels = img::processing::FindColorKernels(set);
    if (kernels == nullptr) continue;
    for (const Placement placement : {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress}) {
      for (size_t count = 0; count <= kMost; ++count) {
        for (const ColorFactors& factors : kMatrices) {
          SCOPED_TRACE(testing::Message() << kFormat.name << ", " << set << ", " << count << ", factor " << factors[0]);
          const size_t bytes = count * pixelBytes;
          uint8_t* const in = from.Place(bytes + behind, placement);
          uint8_t* const out = to.Place(bytes, placement);
          std::generate(in, in + bytes + behind, [&] { return static_cast<uint8_t>(random()); });
          const std::vector<uint8_t> before(in, in + bytes + behind);
          std::vector<uint8_t> expected(bytes + 1);
          img::processing::CorrectPixels<format, Rounding::ToNearestEven, order>(in, expected.data(), count, factors);
          ColorFactors inMemoryOrder = factors;
          if (order == SumOrder::BlueFirst) std::reverse(inMemoryOrder.begin(), inMemoryOrder.end());
          to.Mark(out, bytes);
          const size_t done = (kernels->*kernel)(in, out, count, inMemoryOrder.data(), kFormat.maxValue);
          ASSERT_LE(done, count);
          ASSERT_LT(count - done, 8u);
          ASSERT_TRUE(std::equal(out, out + done * pixelBytes, expected.begin()));
          ASSERT_TRUE(to.IsMarkedOutside(out, done * pixelBytes));
          ASSERT_EQ((kernels->*kernel)(in, in, count, inMemoryOrder.data(), kFormat.maxValue), done);
          ASSERT_TRUE(std::equal(out, out + done * pixelBytes, in)) << "in place";
          const auto rest = static_cast<ptrdiff_t>(done * pixelBytes);
          ASSERT_TRUE(std::equal(before.begin() + rest, before.end(), in + rest));
        }
      }
    }
  }
}

TEST(ColorKernels, RoundAsPlainCodeAtEveryCountAndAddress) {
  using enum PixelFormatId;
  TestEveryCount<RGB8, SumOrder::RedFirst>(&ColorKernels::tripleBytes, 4);
  TestEveryCount<BGR8, SumOrder::BlueFirst>(&ColorKernels::tripleBytes, 4);
  TestEveryCount<RGBa8, SumOrder::RedFirst>(&ColorKernels::quadBytes, 0);
  TestEveryCount<BGRa8, SumOrder::BlueFirst>(&ColorKernels::quadBytes, 0);
  TestEveryCount<RGB10, SumOrder::RedFirst>(&ColorKernels::tripleWords, 0);
  TestEveryCount<RGB12, SumOrder::RedFirst>(&ColorKernels::tripleWords, 0);
  TestEveryCount<RGB10p32, SumOrder::RedFirst>(&ColorKernels::tripleTens, 0);
}

}  // namespace
