#include "tests/support/exported_operations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

namespace korvel_test {

std::string Difference(const ModelImage& expected, const Bytes& actual) {
  if (actual.size() != expected.bytes.size()) {
    return std::to_string(actual.size()) + " bytes instead of " + std::to_string(expected.bytes.size());
  }
  for (size_t i = 0; i < actual.size(); ++i) {
    if (((static_cast<unsigned>(actual[i]) ^ expected.bytes[i]) & expected.written[i]) != 0) {
      return "byte " + std::to_string(i) + " of " + std::to_string(actual.size()) + " is " + std::to_string(actual[i]) +
             " instead of " + std::to_string(expected.bytes[i]);
    }
  }
  return "";
}

OddImage::OddImage(const ModelImage& content)
    : byteCount_(content.bytes.size()),
      tail_(byteCount_ % 2 == 0 ? 1 : 2),
      memory_(kMargin + byteCount_ + tail_),
      image_(MakeHandle(content)) {}

KORVEL_IMAGE_HANDLE OddImage::MakeHandle(const ModelImage& content) const {
  EXPECT_EQ(reinterpret_cast<uintptr_t>(Data()) % 2, 1u);
  std::memset(memory_.Data(), kMark, kMargin + byteCount_ + tail_);
  std::copy(content.bytes.begin(), content.bytes.end(), Data());
  KORVEL_IMAGE_HANDLE handle = nullptr;
  EXPECT_EQ(
      KORVEL_Image_ConstructFromBuffer(content.format, Data(), byteCount_, content.width, content.height, &handle), 0u)
      << ReadLastError();
  return handle;
}

bool OddImage::IsMarkedOutside() const {
  const auto areMarked = [](const uint8_t* first, const uint8_t* end) {
    return std::all_of(first, end, [](uint8_t byte) { return byte == kMark; });
  };
  return areMarked(memory_.Data(), Data()) && areMarked(Data() + byteCount_, Data() + byteCount_ + tail_);
}

void ExpectNewImage(const ModelImage& input, const ModelImage& expected, const MakesImage& call) {
  const OddImage image(input);
  const LastError before = MarkLastError();
  KORVEL_IMAGE_HANDLE output = kUnwrittenHandle;
  ASSERT_EQ(call(image.Handle(), &output), 0u) << ReadLastError();
  ASSERT_NE(output, kUnwrittenHandle);
  ASSERT_NE(output, image.Handle());
  EXPECT_EQ(ReadLastError(), before);
  const ExportedImage result(output);
  EXPECT_EQ(result.Format(), expected.format);
  EXPECT_EQ(result.Width(), expected.width);
  EXPECT_EQ(result.Height(), expected.height);
  EXPECT_EQ(Difference(expected, result.Content()), "");
  EXPECT_EQ(image.Content(), input.bytes);
  EXPECT_TRUE(image.IsMarkedOutside());
}

void ExpectChangedImage(const ModelImage& input, const ModelImage& expected, const ChangesImage& call) {
  const OddImage image(input);
  const LastError before = MarkLastError();
  ASSERT_EQ(call(image.Handle()), 0u) << ReadLastError();
  EXPECT_EQ(ReadLastError(), before);
  EXPECT_EQ(Difference(expected, image.Content()), "");
  EXPECT_TRUE(image.IsMarkedOutside());
}

void ExpectNoImage(const ModelImage& input, const LastError& expected, const MakesImage& call) {
  const OddImage image(input);
  KORVEL_IMAGE_HANDLE output = kUnwrittenHandle;
  EXPECT_EQ(call(image.Handle(), &output), expected.code);
  EXPECT_EQ(ReadLastError(), expected);
  EXPECT_EQ(output, kUnwrittenHandle);
  EXPECT_EQ(image.Content(), input.bytes);
  EXPECT_TRUE(image.IsMarkedOutside());
}

void ExpectUnchangedImage(const ModelImage& input, const LastError& expected, const ChangesImage& call) {
  const OddImage image(input);
  EXPECT_EQ(call(image.Handle()), expected.code);
  EXPECT_EQ(ReadLastError(), expected);
  EXPECT_EQ(image.Content(), input.bytes);
  EXPECT_TRUE(image.IsMarkedOutside());
}

void ForEachSample(uint32_t format, const std::function<void(const ModelImage&, uint64_t)>& check) {
  constexpr size_t kSampled = 12;
  constexpr size_t kLargest = 33;
  const char* const sweep = std::getenv("KORVEL_TEST_FULL_SWEEP");
  const bool isFull = sweep != nullptr && std::string_view(sweep) == "1";
  std::vector<std::pair<size_t, size_t>> sizes = {{1, 1},   {2, 1},   {1, 2},   {2, 2},   {3, 2},   {3, 3},
                                                  {4, 4},   {5, 4},   {4, 5},   {5, 5},   {7, 3},   {8, 8},
                                                  {16, 16}, {17, 16}, {16, 17}, {15, 16}, {34, 18}, {601, 17}};
  ModelRandom random(format);
  for (size_t i = 0; i < kSampled; ++i) sizes.emplace_back(1 + random.Below(kLargest), 1 + random.Below(kLargest));
  uint64_t seed = random.Next() >> 40;
  const auto checkOne = [&](size_t width, size_t height, Fill fill) {
    const ModelImage image = MakeFilledImage(format, width, height, fill, ++seed);
    SCOPED_TRACE(std::string(FormatOf(format).name) + ", " + std::to_string(width) + " x " + std::to_string(height) +
                 ", " + NameOf(fill) + ", seed " + std::to_string(seed));
    check(image, seed);
    return !testing::Test::HasFailure();
  };
  const auto anyFill = [&] { return kAllFills[random.Below(std::size(kAllFills))]; };
  for (const auto& [width, height] : sizes) {
    for (const Fill fill : {Fill::kRandom, Fill::kGarbage, anyFill()}) {
      if (!checkOne(width, height, fill)) return;
    }
  }
  for (size_t i = 0; isFull && i < kLargest * kLargest; ++i) {
    if (!checkOne(1 + i % kLargest, 1 + i / kLargest, anyFill())) return;
  }
}

LastError RefusalAsPacked(std::string_view operation) {
  return {7, std::string(operation) + " does not support packed pixel formats!"};
}

LastError RefusalOfFormat(uint32_t format) {
  return {7, "Pixel format " + std::string(FormatOf(format).name) + " is not supported!"};
}

}  // namespace korvel_test
