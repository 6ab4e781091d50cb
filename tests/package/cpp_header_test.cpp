// The C++ header, in both of its forms, against the shared library.
#include <gtest/gtest.h>
#include <korvel/korvel.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/temporary_directory.h"

namespace {

using korvel::PixelFormat;
using korvel::ReturnCode;
using Bytes = std::vector<uint8_t>;

// The code of the korvel::Error that body throws, Success if it throws none.
template <class Body>
ReturnCode CodeOf(Body&& body) {
  try {
    body();
  } catch (const korvel::Error& error) {
    return error.Code();
  }
  return ReturnCode::Success;
}

// Makes another owner of what object holds. What stays behind can be looked at.
template <class To, class From>
To TakeFrom(From& object) {
  return To(std::move(object));
}

Bytes RandomBytes(size_t size, unsigned seed) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
  return bytes;
}

Bytes PixelsOf(const korvel::Image& image) { return Bytes(image.Data(), image.Data() + image.ByteCount()); }

// A ramp of values, each within the depth.
korvel::Image MakeRamp(PixelFormat format, size_t width, size_t height) {
  korvel::Image image(format, width, height);
  const unsigned maximum = korvel::FindPixelFormat(format)->MaximumValue();
  image.Visit([&](auto pixels) {
    unsigned value = 0;
    for (auto& sample : pixels.Samples()) {
      sample = static_cast<std::remove_reference_t<decltype(sample)>>(value++ * 7 % (maximum + 1));
    }
  });
  return image;
}

// ---------------------------------------------------------------------------------------------------------- owners --

// What makes an object of each kind, and one call on it that fails with InvalidHandle where there is none.
template <class T>
struct Kind;

template <>
struct Kind<korvel::Image> {
  static korvel::Image Make() { return korvel::Image(PixelFormat::Mono8, 4, 2); }
  static void Use(korvel::Image& image) { EXPECT_EQ(image.Width(), 4u); }
};
template <>
struct Kind<korvel::ImageConverter> {
  static korvel::ImageConverter Make() { return korvel::ImageConverter(); }
  static void Use(korvel::ImageConverter& converter) { EXPECT_EQ(converter.Mode(), korvel::ConversionMode::Fast); }
};
template <>
struct Kind<korvel::Gain> {
  static korvel::Gain Make() { return korvel::Gain(); }
  static void Use(korvel::Gain& gain) { EXPECT_EQ(gain.Master(), 1.0f); }
};
template <>
struct Kind<korvel::GammaCorrector> {
  static korvel::GammaCorrector Make() { return korvel::GammaCorrector(); }
  static void Use(korvel::GammaCorrector& corrector) { EXPECT_EQ(corrector.Gamma(), 1.0f); }
};
template <>
struct Kind<korvel::ColorCorrector> {
  static korvel::ColorCorrector Make() { return korvel::ColorCorrector(); }
  static void Use(korvel::ColorCorrector& corrector) { EXPECT_EQ(corrector.Factors()[0], 1.0f); }
};
template <>
struct Kind<korvel::AdaptiveHotpixelCorrector> {
  static korvel::AdaptiveHotpixelCorrector Make() { return korvel::AdaptiveHotpixelCorrector(); }
  static void Use(korvel::AdaptiveHotpixelCorrector& corrector) { EXPECT_EQ(corrector.Sensitivity(), 3u); }
};
template <>
struct Kind<korvel::Binning> {
  static korvel::Binning Make() { return korvel::Binning(); }
  static void Use(korvel::Binning& binning) { EXPECT_EQ(binning.X(), 1); }
};
template <>
struct Kind<korvel::ImageTransformer> {
  static korvel::ImageTransformer Make() { return korvel::ImageTransformer(); }
  static void Use(korvel::ImageTransformer& transformer) {
    EXPECT_EQ(transformer.MirrorUpDown(korvel::Image(PixelFormat::Mono8, 4, 2)).Height(), 2u);
  }
};
template <>
struct Kind<korvel::Histogram> {
  static korvel::Histogram Make() { return korvel::Histogram(korvel::Image(PixelFormat::RGB8, 4, 2)); }
  static void Use(korvel::Histogram& histogram) { EXPECT_EQ(histogram.NumChannels(), 3u); }
};
template <>
struct Kind<korvel::PixelLine> {
  static korvel::PixelLine Make() {
    return korvel::PixelLine(korvel::Image(PixelFormat::RGB8, 4, 2), korvel::LineOrientation::Vertical, 3);
  }
  static void Use(korvel::PixelLine& line) { EXPECT_EQ(line.Offset(), 3u); }
};
template <>
struct Kind<korvel::Video> {
  static korvel::Video Make() {
    static const korvel_test::TemporaryDirectory directory;
    static int files = 0;
    return korvel::Video(directory.File(std::to_string(files++) + ".avi"));
  }
  static void Use(korvel::Video& video) { EXPECT_EQ(video.Quality(), 75); }
};

template <class T>
class CppHeaderOwner : public testing::Test {};

using Kinds = testing::Types<korvel::Image, korvel::ImageConverter, korvel::Gain, korvel::GammaCorrector,
                             korvel::ColorCorrector, korvel::AdaptiveHotpixelCorrector, korvel::Binning,
                             korvel::ImageTransformer, korvel::Histogram, korvel::PixelLine, korvel::Video>;
TYPED_TEST_SUITE(CppHeaderOwner, Kinds);

TYPED_TEST(CppHeaderOwner, MovesAndDoesNotCopy) {
  static_assert(std::is_nothrow_move_constructible_v<TypeParam> && std::is_nothrow_move_assignable_v<TypeParam>);
  static_assert(!std::is_copy_constructible_v<TypeParam> && !std::is_copy_assignable_v<TypeParam>);
  static_assert(sizeof(TypeParam) == sizeof(void*));

  TypeParam first = Kind<TypeParam>::Make();
  Kind<TypeParam>::Use(first);
  TypeParam second(std::move(first));
  Kind<TypeParam>::Use(second);
  TypeParam third{nullptr};
  third = std::move(second);
  Kind<TypeParam>::Use(third);
}

TYPED_TEST(CppHeaderOwner, HoldsNothingOnceMovedFrom) {
  TypeParam object = Kind<TypeParam>::Make();
  const auto taken = TakeFrom<TypeParam>(object);
  EXPECT_FALSE(object);
  EXPECT_EQ(object.Get(), nullptr);
  EXPECT_EQ(CodeOf([&] { Kind<TypeParam>::Use(object); }), ReturnCode::InvalidHandle);
  EXPECT_TRUE(taken);
}

TYPED_TEST(CppHeaderOwner, EndsItsObject) {
  auto object = std::make_unique<TypeParam>(Kind<TypeParam>::Make());
  TypeParam sameHandle(object->Get());
  object.reset();
  EXPECT_EQ(CodeOf([&] { Kind<TypeParam>::Use(sameHandle); }), ReturnCode::InvalidHandle);
  sameHandle.Release();
}

TYPED_TEST(CppHeaderOwner, EndsTheObjectThatAnAssignmentReplaces) {
  TypeParam object = Kind<TypeParam>::Make();
  TypeParam replaced(object.Get());
  object = Kind<TypeParam>::Make();
  EXPECT_EQ(CodeOf([&] { Kind<TypeParam>::Use(replaced); }), ReturnCode::InvalidHandle);
  replaced.Release();
  Kind<TypeParam>::Use(object);
}

TYPED_TEST(CppHeaderOwner, SurvivesAssignmentToItself) {
  TypeParam object = Kind<TypeParam>::Make();
  TypeParam& same = object;
  object = std::move(same);
  Kind<TypeParam>::Use(object);
}

TYPED_TEST(CppHeaderOwner, HandsItsHandleOver) {
  TypeParam object = Kind<TypeParam>::Make();
  TypeParam adopted(object.Release());
  EXPECT_FALSE(object);
  Kind<TypeParam>::Use(adopted);
}

// ------------------------------------------------------------------------------------------------------- two forms --

TEST(CppHeaderFailures, ThrownOnesCarryCodeAndText) {
  try {
    korvel::Image::Read("no such file.png");
    FAIL() << "nothing was thrown";
  } catch (const std::exception& thrown) {
    const auto* const error = dynamic_cast<const korvel::Error*>(&thrown);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->Code(), ReturnCode::Io);
    EXPECT_NE(std::string(thrown.what()).find("Error opening file."), std::string::npos) << thrown.what();
    EXPECT_STREQ(thrown.what(), korvel::LastError().what());
    EXPECT_EQ(korvel::LastError().Code(), ReturnCode::Io);
  }
}

TEST(CppHeaderFailures, ReturnedOnesCarryTheSame) {
  const korvel::Result<korvel::nothrow::Image> image = korvel::nothrow::Image::Read("no such file.png");
  EXPECT_FALSE(image);
  EXPECT_FALSE(image.HasValue());
  EXPECT_EQ(image.Code(), ReturnCode::Io);
  EXPECT_STREQ(image.Failure().what(), korvel::LastError().what());
  EXPECT_EQ(CodeOf([&] { image.Value(); }), ReturnCode::Io);
  EXPECT_EQ(CodeOf([&] { static_cast<void>(image->Width()); }), ReturnCode::Io);
  EXPECT_EQ(CodeOf([&] { static_cast<void>((*image).Width()); }), ReturnCode::Io);
}

TEST(CppHeaderFailures, SuccessesHaveAValue) {
  auto image = korvel::nothrow::Image::Make(PixelFormat::Mono8, 5, 3);
  ASSERT_TRUE(image);
  EXPECT_EQ(image.Code(), ReturnCode::Success);
  EXPECT_EQ(image.Failure().Code(), ReturnCode::Success);
  EXPECT_EQ(*image->Width(), 5u);
  korvel::nothrow::Image moved = *std::move(image);
  EXPECT_EQ(moved.Height().Value(), 3u);
}

TEST(CppHeaderFailures, AValueOutlivesTheResultThatItCameFrom) {
  const auto image = korvel::nothrow::Image::Make(PixelFormat::Mono8, 3, 2);
  size_t samples = 0;
  for (const auto row : *image->Pixels<uint8_t>()) samples += row.size();
  EXPECT_EQ(samples, 6u);
}

TEST(CppHeaderFailures, ResultsWithoutAValueTellSuccess) {
  auto gain = korvel::nothrow::Gain::Make();
  const korvel::Result<void> good = gain->SetMaster(2.0f);
  EXPECT_TRUE(good);
  EXPECT_EQ(good.Code(), ReturnCode::Success);
  EXPECT_EQ(CodeOf([&] { good.Value(); }), ReturnCode::Success);
  const korvel::Result<void> bad = gain->SetMaster(9.0f);
  EXPECT_FALSE(bad);
  EXPECT_EQ(bad.Code(), ReturnCode::InvalidArgument);
  EXPECT_EQ(CodeOf([&] { bad.Value(); }), ReturnCode::InvalidArgument);
  EXPECT_EQ(*gain->Master(), 2.0f);
}

TEST(CppHeaderFailures, AFailureWithoutATextHasTheNameOfItsCode) {
  const korvel_test::TemporaryDirectory directory;
  const auto video = korvel::nothrow::Video::Open(directory.File("a.avi"));
  ASSERT_TRUE(video);
  const auto range = video->FramesPerSecondRange();
  EXPECT_EQ(range.Code(), ReturnCode::NotSupported);
  EXPECT_STREQ(range.Failure().what(), "NotSupported");
}

TEST(CppHeaderFailures, ObjectsPassFromOneFormToTheOther) {
  korvel::Gain loud;
  loud.SetRed(3.0f);
  auto quiet = TakeFrom<korvel::nothrow::Gain>(loud);
  EXPECT_FALSE(loud);
  EXPECT_EQ(quiet.Red().Value(), 3.0f);
  const korvel::Gain again(std::move(quiet));
  EXPECT_EQ(again.Red(), 3.0f);
}

TEST(CppHeaderFailures, ArgumentsMayBeOfEitherForm) {
  const auto image = korvel::nothrow::Image::Make(PixelFormat::Mono8, 4, 4);
  korvel::Gain gain;
  EXPECT_EQ(gain.Process(*image).Width(), 4u);
}

TEST(CppHeaderFailures, EachCodeHasAName) {
  EXPECT_STREQ(Name(ReturnCode::BufferToSmall), "BufferToSmall");
  for (uint32_t code = 0; code <= KORVEL_RETURN_CODE_Timeout; ++code) {
    EXPECT_STRNE(Name(static_cast<ReturnCode>(code)), "unknown") << code;
  }
  EXPECT_STREQ(Name(static_cast<ReturnCode>(KORVEL_RETURN_CODE_Timeout + 1)), "unknown");
}

// --------------------------------------------------------------------------------------------------- pixel formats --

TEST(CppHeaderPixelFormats, FactsAreThoseOfTheLibrary) {
  using korvel::FormatQueries;
  for (const korvel::PixelFormatFacts& facts : korvel::kPixelFormats) {
    SCOPED_TRACE(facts.name);
    EXPECT_EQ(facts.Channels(), FormatQueries::NumChannels(facts.format));
    EXPECT_EQ(facts.significantBits, FormatQueries::SignificantBitsPerChannel(facts.format));
    EXPECT_EQ(facts.MaximumValue(), FormatQueries::MaximumValuePerChannel(facts.format));
    EXPECT_EQ(facts.BitsPerPixel(), FormatQueries::StorageBitsPerPixel(facts.format));
    EXPECT_EQ(facts.Channels() * facts.significantBits, FormatQueries::SignificantBitsPerPixel(facts.format));
    EXPECT_EQ((facts.BitsPerPixel() * 33 + 7) / 8, FormatQueries::StorageSizeOfPixels(facts.format, 33));
    EXPECT_EQ(FormatQueries::Endianness(facts.format), korvel::ByteOrder::Little);
    EXPECT_EQ(facts.IsBayer(), facts.name.substr(0, 5) == "Bayer");
    EXPECT_EQ(facts.IsColor(), facts.Channels() > 1);
    EXPECT_EQ(korvel::FindPixelFormat(facts.format), &facts);
    EXPECT_EQ(korvel::FindPixelFormat(facts.name), &facts);
    EXPECT_EQ(Name(facts.format), facts.name);
  }
  EXPECT_EQ(std::size(korvel::kPixelFormats), 49u);
  EXPECT_EQ(FormatQueries::StorageBitsPerChannel(PixelFormat::BayerRG12), 16u);
}

TEST(CppHeaderPixelFormats, AreKnownWhenAProgramIsCompiled) {
  static_assert(korvel::FindPixelFormat(PixelFormat::BayerRG12p)->IsPacked());
  static_assert(korvel::FindPixelFormat("RGBa10")->Channels() == 4);
  static_assert(std::is_same_v<korvel::SampleOf<PixelFormat::Mono8>, uint8_t>);
  static_assert(std::is_same_v<korvel::SampleOf<PixelFormat::BGR12>, uint16_t>);
  static_assert(std::is_same_v<korvel::SampleOf<PixelFormat::RGB10p32>, uint32_t>);
  EXPECT_EQ(static_cast<uint32_t>(PixelFormat::Mono12p), uint32_t{KORVEL_PIXEL_FORMAT_Mono12p});
}

TEST(CppHeaderPixelFormats, NumbersThatAreNoneHaveNoFacts) {
  EXPECT_EQ(korvel::FindPixelFormat(PixelFormat::Invalid), nullptr);
  EXPECT_EQ(korvel::FindPixelFormat("Mono9"), nullptr);
  EXPECT_EQ(Name(static_cast<PixelFormat>(77)), "Invalid");
  EXPECT_EQ(CodeOf([] { korvel::FormatQueries::NumChannels(static_cast<PixelFormat>(77)); }), ReturnCode::Error);
}

TEST(CppHeaderLibrary, TellsItsVersion) {
  uint32_t part = 77;
  const korvel::LibraryVersion version = korvel::Library::Version();
  ASSERT_EQ(KORVEL_Library_GetVersionMajor(&part), 0u);
  EXPECT_EQ(version.majorPart, part);
  ASSERT_EQ(KORVEL_Library_GetVersionMinor(&part), 0u);
  EXPECT_EQ(version.minorPart, part);
  ASSERT_EQ(KORVEL_Library_GetVersionSubminor(&part), 0u);
  EXPECT_EQ(version.subminorPart, part);
}

// ----------------------------------------------------------------------------------------------------------- views --

TEST(CppHeaderViews, AddressEachChannelOfEachUnpackedFormat) {
  constexpr size_t kWidth = 5;
  constexpr size_t kHeight = 3;
  for (const korvel::PixelFormatFacts& facts : korvel::kPixelFormats) {
    if (facts.IsPacked()) continue;
    SCOPED_TRACE(facts.name);
    korvel::Image image(facts.format, kWidth, kHeight);
    const size_t bytesPerSample = facts.significantBits == 8 ? 1 : 2;
    image.Visit([&](auto pixels) {
      EXPECT_EQ(sizeof pixels(0, 0), bytesPerSample);
      EXPECT_EQ(pixels.Format(), facts.format);
      EXPECT_EQ(pixels.Width(), kWidth);
      EXPECT_EQ(pixels.Height(), kHeight);
      EXPECT_EQ(pixels.Channels(), facts.Channels());
      pixels(4, 1, facts.Channels() - 1) = 0x5A;
      EXPECT_EQ(pixels.Pixel(4, 1)[facts.Channels() - 1], 0x5A);
      EXPECT_EQ(pixels.Row(1)[kWidth * facts.Channels() - 1], 0x5A);
      EXPECT_EQ(pixels.Samples().size(), kWidth * kHeight * facts.Channels());
      size_t rows = 0;
      unsigned sum = 0;
      for (const auto row : pixels) {
        ++rows;
        EXPECT_EQ(row.size(), kWidth * facts.Channels());
        sum = std::accumulate(row.begin(), row.end(), sum);
      }
      EXPECT_EQ(rows, kHeight);
      EXPECT_EQ(sum, 0x5Au);
    });
    // Two whole rows, and then the last sample.
    Bytes expected(kWidth * kHeight * facts.Channels() * bytesPerSample);
    expected[(2 * kWidth * facts.Channels() - 1) * bytesPerSample] = 0x5A;
    EXPECT_EQ(PixelsOf(image), expected);
  }
}

TEST(CppHeaderViews, GiveTheWordsOf10p32) {
  korvel::Image image(PixelFormat::RGB10p32, 3, 2);
  auto pixels = image.Pixels<uint32_t>();
  EXPECT_EQ(pixels.Channels(), 1u);
  pixels(2, 1) = 0x12345678;
  EXPECT_EQ(image.Visit([](auto seen) { return static_cast<uint32_t>(seen(2, 1)); }), 0x12345678u);
  const Bytes bytes = PixelsOf(image);
  EXPECT_EQ(bytes[20], 0x78);
  EXPECT_EQ(bytes[23], 0x12);
}

TEST(CppHeaderViews, RefuseFormatsOfOtherSamples) {
  for (const korvel::PixelFormatFacts& facts : korvel::kPixelFormats) {
    SCOPED_TRACE(facts.name);
    const auto made = korvel::nothrow::Image::Make(facts.format, 4, 4);
    const korvel::nothrow::Image& image = *made;
    const auto codeFor = [&](size_t size) {
      return facts.SampleBytes() == size ? ReturnCode::Success : ReturnCode::ImageFormatNotSupported;
    };
    EXPECT_EQ(image.Pixels<uint8_t>().Code(), codeFor(1));
    EXPECT_EQ(image.Pixels<uint16_t>().Code(), codeFor(2));
    EXPECT_EQ(image.Pixels<uint32_t>().Code(), codeFor(4));
    bool visited = false;
    const auto visit = image.Visit([&](auto) { visited = true; });
    EXPECT_EQ(visit.HasValue(), facts.SampleBytes() != 0);
    EXPECT_EQ(visited, facts.SampleBytes() != 0);
  }
  korvel::Image nothing(PixelFormat::Invalid, 4, 4);
  EXPECT_EQ(CodeOf([&] { nothing.Pixels<uint8_t>(); }), ReturnCode::ImageFormatNotSupported);
}

TEST(CppHeaderViews, RefuseMemoryThatIsNotAligned) {
  alignas(2) std::array<uint8_t, 9> memory{};
  korvel::Image odd(PixelFormat::Mono12, memory.data() + 1, 8, 2, 2);
  EXPECT_EQ(CodeOf([&] { odd.Pixels<uint16_t>(); }), ReturnCode::InvalidArgument);
  EXPECT_EQ(odd.Clone().Pixels<uint16_t>().Samples().size(), 4u);
  korvel::Image even(PixelFormat::Mono12, memory.data(), 8, 2, 2);
  EXPECT_EQ(static_cast<void*>(even.Pixels<uint16_t>().Samples().data()), memory.data());
}

TEST(CppHeaderViews, OfConstImagesAreConst) {
  const korvel::Image image = MakeRamp(PixelFormat::Mono8, 4, 2);
  const auto pixels = image.Pixels<uint8_t>();
  static_assert(std::is_same_v<decltype(pixels(0, 0)), const uint8_t&>);
  static_assert(std::is_same_v<decltype(image.Data()), const uint8_t*>);
  EXPECT_EQ(pixels(1, 1), 35);
  korvel::Image writable = image.Clone();
  const korvel::Span<const uint8_t> row = writable.Pixels<uint8_t>().Row(1);
  EXPECT_EQ(row[1], 35);
  EXPECT_FALSE(row.empty());
}

// ------------------------------------------------------------------------------------------- buffers of other layouts
// --

// The bits of each line, one after the other without padding: bit i of a stream is bit i % 8 of its byte i / 8.
Bytes WithoutPadding(const Bytes& padded, size_t stride, size_t bitsPerLine, size_t height) {
  Bytes stream((bitsPerLine * height + 7) / 8);
  for (size_t y = 0; y < height; ++y) {
    for (size_t i = 0; i < bitsPerLine; ++i) {
      const size_t to = y * bitsPerLine + i;
      const unsigned bit = padded[y * stride + i / 8] >> i % 8 & 1u;
      stream[to / 8] = static_cast<uint8_t>(stream[to / 8] | bit << to % 8);
    }
  }
  return stream;
}

TEST(CppHeaderPaddedLines, AreCopiedWithoutTheirPadding) {
  constexpr size_t kHeight = 5;
  for (const korvel::PixelFormatFacts& facts : korvel::kPixelFormats) {
    for (const size_t width : {1u, 2u, 3u, 4u, 5u, 7u, 8u, 12u, 13u}) {
      if (facts.layout == korvel::PixelLayout::Mipi && width % (facts.significantBits == 10 ? 4 : 2) != 0) continue;
      for (const size_t padding : {0u, 1u, 6u}) {
        SCOPED_TRACE(std::string(facts.name) + ", width " + std::to_string(width) + ", " + std::to_string(padding));
        const size_t bits = width * facts.BitsPerPixel();
        const size_t stride = (bits + 7) / 8 + padding;
        // No byte more than needed: there is no padding behind the last line.
        const Bytes padded = RandomBytes(stride * kHeight - padding, static_cast<unsigned>(bits));
        const Bytes expected = WithoutPadding(padded, stride, bits, kHeight);
        const korvel::Image image =
            korvel::Image::CopyPaddedLines(facts.format, padded.data(), padded.size(), width, kHeight, stride);
        EXPECT_EQ(PixelsOf(image), expected);

        korvel::Image other(facts.format, width, kHeight);
        std::fill_n(other.Data(), other.ByteCount(), uint8_t{0xFF});
        other.AssignPaddedLines(padded.data(), padded.size(), stride);
        Bytes reused = PixelsOf(other);
        const size_t used = bits * kHeight % 8;  // bits of the last byte beyond the image are nobody's
        if (used != 0) reused.back() = static_cast<uint8_t>(reused.back() & ((1u << used) - 1));
        EXPECT_EQ(reused, expected);
      }
    }
  }
}

TEST(CppHeaderPaddedLines, RefuseWhatCannotBe) {
  using korvel::nothrow::Image;
  const Bytes bytes(100);
  EXPECT_EQ(Image::CopyPaddedLines(PixelFormat::Mono8, bytes.data(), 100, 10, 10, 9).Code(),
            ReturnCode::InvalidArgument);
  EXPECT_EQ(Image::CopyPaddedLines(PixelFormat::Mono8, bytes.data(), 97, 8, 10, 10).Code(),
            ReturnCode::InvalidArgument);
  EXPECT_TRUE(Image::CopyPaddedLines(PixelFormat::Mono8, bytes.data(), 98, 8, 10, 10));
  EXPECT_EQ(Image::CopyPaddedLines(PixelFormat::Mono8, bytes.data(), 7, 8, 1, 10).Code(), ReturnCode::InvalidArgument);
  EXPECT_EQ(Image::CopyPaddedLines(PixelFormat::Mono8, nullptr, 100, 10, 10, 10).Code(), ReturnCode::InvalidArgument);
  EXPECT_EQ(Image::CopyPaddedLines(PixelFormat::Mono8, bytes.data(), 100, 8, 10, SIZE_MAX).Code(),
            ReturnCode::InvalidArgument);
  EXPECT_EQ(Image::CopyPaddedLines(PixelFormat::Mono10g40Qrv, bytes.data(), 100, 6, 2, 20).Code(),
            ReturnCode::InvalidArgument);
  EXPECT_EQ(Image::CopyPaddedLines(PixelFormat::Invalid, bytes.data(), 100, 8, 2, 20).Code(),
            ReturnCode::InvalidArgument);
  EXPECT_EQ(Image::CopyPaddedLines(PixelFormat::Mono8, bytes.data(), 100, 0, 2, 20).Code(), ReturnCode::OutOfRange);
  EXPECT_EQ(Image(nullptr).AssignPaddedLines(bytes.data(), 100, 20).Code(), ReturnCode::InvalidHandle);
}

struct LegacyCase {
  korvel::LegacyPixelFormat legacy;
  unsigned bits;
  PixelFormat packed;
  PixelFormat unpacked;
};

constexpr LegacyCase kLegacyCases[] = {
    {korvel::LegacyPixelFormat::Mono10Packed, 10, PixelFormat::Mono10g40Qrv, PixelFormat::Mono10},
    {korvel::LegacyPixelFormat::Mono12Packed, 12, PixelFormat::Mono12g24Qrv, PixelFormat::Mono12},
    {korvel::LegacyPixelFormat::BayerGR10Packed, 10, PixelFormat::BayerGR10g40Qrv, PixelFormat::BayerGR10},
    {korvel::LegacyPixelFormat::BayerRG10Packed, 10, PixelFormat::BayerRG10g40Qrv, PixelFormat::BayerRG10},
    {korvel::LegacyPixelFormat::BayerGB10Packed, 10, PixelFormat::BayerGB10g40Qrv, PixelFormat::BayerGB10},
    {korvel::LegacyPixelFormat::BayerBG10Packed, 10, PixelFormat::BayerBG10g40Qrv, PixelFormat::BayerBG10},
    {korvel::LegacyPixelFormat::BayerGR12Packed, 12, PixelFormat::BayerGR12g24Qrv, PixelFormat::BayerGR12},
    {korvel::LegacyPixelFormat::BayerRG12Packed, 12, PixelFormat::BayerRG12g24Qrv, PixelFormat::BayerRG12},
    {korvel::LegacyPixelFormat::BayerGB12Packed, 12, PixelFormat::BayerGB12g24Qrv, PixelFormat::BayerGB12},
    {korvel::LegacyPixelFormat::BayerBG12Packed, 12, PixelFormat::BayerBG12g24Qrv, PixelFormat::BayerBG12},
};

// What a camera sends: two values in three bytes, the low bits of both in the middle one.
Bytes Packed(const std::vector<uint16_t>& values, unsigned bits) {
  const unsigned shift = bits - 8;
  const unsigned mask = (1u << shift) - 1;
  Bytes bytes;
  for (size_t i = 0; i < values.size(); i += 2) {
    const unsigned first = values[i];
    const unsigned second = i + 1 < values.size() ? values[i + 1] : 0;
    bytes.push_back(static_cast<uint8_t>(first >> shift));
    bytes.push_back(static_cast<uint8_t>((first & mask) | (second & mask) << 4));
    if (i + 1 < values.size()) bytes.push_back(static_cast<uint8_t>(second >> shift));
  }
  return bytes;
}

TEST(CppHeaderLegacyPacked, KeepsEachValue) {
  std::mt19937 random(7);
  korvel::ImageConverter converter;
  for (const LegacyCase& row : kLegacyCases) {
    for (const auto& [width, height] :
         {std::pair<size_t, size_t>{8, 4}, {6, 2}, {6, 3}, {5, 4}, {5, 3}, {7, 2}, {1, 1}, {2, 1}}) {
      const size_t pixels = width * height;
      SCOPED_TRACE(std::string(Name(row.packed)) + ", " + std::to_string(width) + " by " + std::to_string(height));
      std::vector<uint16_t> values(pixels);
      for (uint16_t& value : values) value = static_cast<uint16_t>(random() & ((1u << row.bits) - 1));
      Bytes camera = Packed(values, row.bits);
      if (row.bits == 10) {  // two bits behind each pair of low bits are unused
        for (size_t i = 1; i < camera.size(); i += 3) camera[i] = static_cast<uint8_t>(camera[i] | 0xCC);
      }
      ASSERT_EQ(camera.size(), korvel::LegacyByteCount(width, height));
      static_assert(korvel::LegacyByteCount(12297829382473034411u, 1) == std::numeric_limits<size_t>::max());

      const PixelFormat target = pixels % (row.bits == 10 ? 4 : 2) == 0 ? row.packed : row.unpacked;
      EXPECT_EQ(korvel::TargetFormat(row.legacy, width, height), target);
      korvel::Image image = korvel::Image::CopyLegacyPacked(row.legacy, camera.data(), camera.size(), width, height);
      EXPECT_EQ(image.Format(), target);
      const korvel::Image words = converter.Convert(image, row.unpacked);
      const auto samples = words.Pixels<uint16_t>().Samples();
      EXPECT_EQ(std::vector<uint16_t>(samples.begin(), samples.end()), values);

      korvel::Image other(target, width, height);
      other.AssignLegacyPacked(row.legacy, camera.data(), camera.size());
      EXPECT_EQ(PixelsOf(other), PixelsOf(image));
    }
  }
}

TEST(CppHeaderLegacyPacked, RefusesWhatCannotBe) {
  using korvel::LegacyPixelFormat;
  using korvel::nothrow::Image;
  const Bytes bytes(12);
  EXPECT_TRUE(Image::CopyLegacyPacked(LegacyPixelFormat::Mono12Packed, bytes.data(), 12, 4, 2));
  EXPECT_EQ(Image::CopyLegacyPacked(LegacyPixelFormat::Mono12Packed, bytes.data(), 11, 4, 2).Code(),
            ReturnCode::InvalidArgument);
  EXPECT_EQ(Image::CopyLegacyPacked(LegacyPixelFormat::Mono12Packed, nullptr, 12, 4, 2).Code(),
            ReturnCode::InvalidArgument);
  EXPECT_EQ(Image::CopyLegacyPacked(LegacyPixelFormat{77}, bytes.data(), 12, 4, 2).Code(), ReturnCode::InvalidArgument);
  EXPECT_EQ(Image::CopyLegacyPacked(LegacyPixelFormat::Mono12Packed, bytes.data(), 12, 4, 0).Code(),
            ReturnCode::OutOfRange);
  EXPECT_FALSE(Image::CopyLegacyPacked(LegacyPixelFormat::Mono12Packed, bytes.data(), 12, SIZE_MAX, 4));
  auto other = Image::Make(PixelFormat::Mono10g40Qrv, 4, 2);
  EXPECT_EQ(other->AssignLegacyPacked(LegacyPixelFormat::Mono12Packed, bytes.data(), 12).Code(),
            ReturnCode::InvalidArgument);
  EXPECT_EQ(Image(nullptr).AssignLegacyPacked(LegacyPixelFormat::Mono12Packed, bytes.data(), 12).Code(),
            ReturnCode::InvalidHandle);
}

// ---------------------------------------------------------------------------------------------------------- images --

TEST(CppHeaderImage, LiesOverTheCallersMemory) {
  Bytes memory(12);
  korvel::Image image(PixelFormat::Mono8, memory.data(), memory.size(), 4, 3);
  EXPECT_EQ(image.Data(), memory.data());
  EXPECT_EQ(image.PixelPointer(1, 2), memory.data() + 9);
  EXPECT_EQ(std::as_const(image).PixelPointer(1, 2), memory.data() + 9);
  EXPECT_EQ(image.ByteCount(), 12u);
  EXPECT_EQ(image.Height(), 3u);
  EXPECT_EQ(image.Format(), PixelFormat::Mono8);
  EXPECT_EQ(CodeOf([&] { image.PixelPointer(4, 0); }), ReturnCode::OutOfRange);
  EXPECT_EQ(CodeOf([&] { korvel::Image(PixelFormat::Mono8, memory.data(), 11, 4, 3); }), ReturnCode::InvalidArgument);
}

TEST(CppHeaderImage, Converts) {
  const korvel::Image mono = MakeRamp(PixelFormat::Mono8, 4, 2);
  const korvel::Image color = mono.ConvertTo(PixelFormat::RGB8, korvel::ConversionMode::Fast);
  EXPECT_EQ(color.Pixels<uint8_t>()(3, 1, 2), 49);
  Bytes memory(24);
  const korvel::Image inBuffer = mono.ConvertToBuffer(PixelFormat::RGB8, memory.data(), memory.size());
  EXPECT_EQ(inBuffer.Data(), memory.data());
  EXPECT_EQ(memory, PixelsOf(color));
}

TEST(CppHeaderImage, GoesThroughFilesOfEachType) {
  const korvel_test::TemporaryDirectory directory;
  const korvel::Image image = MakeRamp(PixelFormat::Mono8, 16, 8);
  const auto expectSame = [&](const std::string& path) {
    EXPECT_EQ(PixelsOf(korvel::Image::Read(path)), PixelsOf(image)) << path;
  };
  image.Write(directory.File("a.png"));
  expectSame(directory.File("a.png"));
  image.WriteAsPng(directory.File("b.png"), 10);
  expectSame(directory.File("b.png"));
  image.WriteAsBmp(directory.File("a.bmp"));
  expectSame(directory.File("a.bmp"));
  image.WriteAsRaw(directory.File("a.raw"));
  expectSame(directory.File("a.raw"));
  image.WriteAsJpg(directory.File("a.jpg"), 90);
  EXPECT_EQ(korvel::Image::Read(directory.File("a.jpg")).Width(), 16u);
  EXPECT_EQ(korvel::Image::ReadAs(directory.File("a.png"), PixelFormat::BayerGB8).Format(), PixelFormat::BayerGB8);
  EXPECT_EQ(CodeOf([&] { image.Write({}); }), ReturnCode::InvalidArgument);
}

TEST(CppHeaderImageConverter, ConvertsStreams) {
  korvel::ImageConverter converter;
  converter.SetMode(korvel::ConversionMode::HighQuality);
  EXPECT_EQ(converter.Mode(), korvel::ConversionMode::HighQuality);
  converter.PreAllocate(PixelFormat::BayerRG12, PixelFormat::RGB8, 16, 8, 2);
  const korvel::Image frame = MakeRamp(PixelFormat::BayerRG12, 16, 8);
  const korvel::Image picture = converter.Convert(frame, PixelFormat::RGB8);
  EXPECT_EQ(PixelsOf(picture), PixelsOf(frame.ConvertTo(PixelFormat::RGB8)));
  Bytes memory(PixelsOf(picture).size());
  const korvel::Image inBuffer = converter.ConvertToBuffer(frame, PixelFormat::RGB8, memory.data(), memory.size());
  EXPECT_EQ(PixelsOf(inBuffer), PixelsOf(picture));
  EXPECT_EQ(memory, PixelsOf(picture));
  EXPECT_EQ(CodeOf([&] { converter.PreAllocate(PixelFormat::Mono8, PixelFormat::RGB8, 0, 8, 2); }),
            ReturnCode::OutOfRange);
}

TEST(CppHeaderImageConverter, ListsOutputs) {
  const std::vector<PixelFormat> outputs = korvel::ImageConverter().SupportedOutputs(PixelFormat::RGBa8);
  EXPECT_EQ(std::count(outputs.begin(), outputs.end(), PixelFormat::RGBa8), 1);
  EXPECT_EQ(std::count(outputs.begin(), outputs.end(), PixelFormat::RGBa12), 1);
  EXPECT_EQ(std::count(outputs.begin(), outputs.end(), PixelFormat::Mono8), 0);
  EXPECT_EQ(korvel::nothrow::ImageConverter(nullptr).SupportedOutputs(PixelFormat::RGB8).Code(),
            ReturnCode::InvalidHandle);
}

// -------------------------------------------------------------------------------------------- corrections and others
// --

TEST(CppHeaderGain, SetsAndAppliesEachGain) {
  korvel::Gain gain;
  gain.SetMaster(1.5f);
  gain.SetRed(2.0f);
  gain.SetGreen(3.0f);
  gain.SetBlue(4.0f);
  EXPECT_EQ(gain.Master(), 1.5f);
  EXPECT_EQ(gain.Red(), 2.0f);
  EXPECT_EQ(gain.Green(), 3.0f);
  EXPECT_EQ(gain.Blue(), 4.0f);
  for (const auto range : {gain.MasterRange(), gain.RedRange(), gain.GreenRange(), gain.BlueRange()}) {
    EXPECT_EQ(range.min, 1.0f);
    EXPECT_EQ(range.max, 8.0f);
  }
  EXPECT_TRUE(gain.IsSupported(PixelFormat::BayerRG8));
  EXPECT_FALSE(gain.IsSupported(PixelFormat::RGB8));

  korvel::Image image(PixelFormat::BayerRG8, 2, 2);
  std::fill_n(image.Data(), 4, uint8_t{10});
  const Bytes expected = {30, 45, 45, 60};
  EXPECT_EQ(PixelsOf(gain.Process(image)), expected);
  gain.ProcessInPlace(image);
  EXPECT_EQ(PixelsOf(image), expected);
}

TEST(CppHeaderGammaCorrector, SetsAndAppliesGamma) {
  korvel::GammaCorrector corrector;
  corrector.SetGamma(2.0f);
  EXPECT_EQ(corrector.Gamma(), 2.0f);
  EXPECT_EQ(corrector.GammaRange().min, 0.3f);
  EXPECT_EQ(corrector.GammaRange().max, 3.0f);
  EXPECT_TRUE(corrector.IsSupported(PixelFormat::RGB8));
  EXPECT_FALSE(corrector.IsSupported(PixelFormat::Mono12p));

  korvel::Image image(PixelFormat::Mono8, 2, 1);
  image.Pixels<uint8_t>()(0, 0) = 64;
  const Bytes expected = {127, 0};  // 255 * sqrt(64 / 255) is 127.7
  EXPECT_EQ(PixelsOf(corrector.Process(image)), expected);
  corrector.ProcessInPlace(image);
  EXPECT_EQ(PixelsOf(image), expected);
}

TEST(CppHeaderColorCorrector, SetsAndAppliesTheMatrix) {
  korvel::ColorCorrector corrector;
  const korvel::ColorCorrector::Matrix exchange = {0, 0, 1, 0, 2, 0, 1, 0, 0};
  corrector.SetFactors(exchange);
  EXPECT_EQ(corrector.Factors(), exchange);
  EXPECT_TRUE(corrector.IsSupported(PixelFormat::BGR8));
  EXPECT_FALSE(corrector.IsSupported(PixelFormat::Mono8));

  Bytes memory = {10, 20, 30};
  korvel::Image image(PixelFormat::RGB8, memory.data(), memory.size(), 1, 1);
  const Bytes expected = {30, 40, 10};
  EXPECT_EQ(PixelsOf(corrector.Process(image)), expected);
  corrector.ProcessInPlace(image);
  EXPECT_EQ(memory, expected);
}

TEST(CppHeaderAdaptiveHotpixelCorrector, FindsAndCorrects) {
  korvel::AdaptiveHotpixelCorrector corrector;
  corrector.SetSensitivity(5);
  EXPECT_EQ(corrector.Sensitivity(), 5u);
  corrector.SetGainFactorPercent(120);
  EXPECT_EQ(corrector.GainFactorPercent(), 120u);
  EXPECT_TRUE(corrector.Hotpixels().empty());

  korvel::Image image(PixelFormat::Mono8, 16, 16);
  image.Pixels<uint8_t>()(7, 5) = 200;
  corrector.Detect(image);
  const std::vector<korvel::Point> points = corrector.Hotpixels();
  ASSERT_EQ(points.size(), 1u);
  EXPECT_EQ(points[0].x, 7u);
  EXPECT_EQ(points[0].y, 5u);
  const Bytes black(256);
  EXPECT_EQ(PixelsOf(corrector.Correct(image, points)), black);
  EXPECT_EQ(PixelsOf(corrector.Correct(image, {points[0]})),
            PixelsOf(corrector.Correct(image, std::vector<korvel::Point>{points[0]})));
  EXPECT_EQ(PixelsOf(corrector.CorrectAdaptive(image)), black);
  EXPECT_EQ(CodeOf([&] { corrector.SetSensitivity(0); }), ReturnCode::Error);
}

TEST(CppHeaderAdaptiveHotpixelCorrector, CopiesForAnEmptyList) {
  korvel::AdaptiveHotpixelCorrector corrector;
  const korvel::Image image = MakeRamp(PixelFormat::Mono8, 8, 8);
  const korvel::Image copy = corrector.Correct(image, std::vector<korvel::Point>());
  EXPECT_EQ(PixelsOf(copy), PixelsOf(image));
  EXPECT_NE(copy.Data(), image.Data());
}

TEST(CppHeaderBinning, SetsAndBins) {
  korvel::Binning binning;
  binning.SetX(2);
  binning.SetY(4);
  binning.SetMode(korvel::BinningMode::Average);
  EXPECT_EQ(binning.X(), 2);
  EXPECT_EQ(binning.Y(), 4);
  EXPECT_EQ(binning.Mode(), korvel::BinningMode::Average);
  EXPECT_EQ(binning.FactorRange().min, 1);
  EXPECT_EQ(binning.FactorRange().max, 8);
  EXPECT_TRUE(binning.IsSupported(PixelFormat::Mono12));
  EXPECT_FALSE(binning.IsSupported(PixelFormat::Mono12p));
  const korvel::ImageSize size = binning.ExpectedOutputSize({16, 16}, PixelFormat::Mono8);
  EXPECT_EQ(size.width, 8u);
  EXPECT_EQ(size.height, 4u);

  korvel::Image image(PixelFormat::Mono8, 16, 16);
  std::fill_n(image.Data(), 256, uint8_t{9});
  EXPECT_EQ(PixelsOf(binning.Process(image)), Bytes(32, 9));
}

TEST(CppHeaderImageTransformer, MirrorsAndRotates) {
  using korvel::RotationAngle;
  korvel::ImageTransformer transformer;
  const auto make = [](const Bytes& pixels, size_t width, size_t height) {
    korvel::Image image(PixelFormat::Mono8, width, height);
    std::copy(pixels.begin(), pixels.end(), image.Data());
    return image;
  };
  const korvel::Image image = make({1, 2, 3, 4, 5, 6}, 3, 2);
  EXPECT_EQ(PixelsOf(transformer.MirrorUpDown(image)), (Bytes{4, 5, 6, 1, 2, 3}));
  EXPECT_EQ(PixelsOf(transformer.MirrorLeftRight(image)), (Bytes{3, 2, 1, 6, 5, 4}));
  EXPECT_EQ(PixelsOf(transformer.MirrorUpDownLeftRight(image)), (Bytes{6, 5, 4, 3, 2, 1}));
  EXPECT_EQ(PixelsOf(transformer.Rotate(image, RotationAngle::Degree90)), (Bytes{3, 6, 2, 5, 1, 4}));

  korvel::Image changed = image.Clone();
  transformer.MirrorUpDownInPlace(changed);
  EXPECT_EQ(PixelsOf(changed), (Bytes{4, 5, 6, 1, 2, 3}));
  transformer.MirrorLeftRightInPlace(changed);
  EXPECT_EQ(PixelsOf(changed), (Bytes{6, 5, 4, 3, 2, 1}));
  transformer.MirrorUpDownLeftRightInPlace(changed);
  EXPECT_EQ(PixelsOf(changed), (Bytes{1, 2, 3, 4, 5, 6}));
  transformer.RotateInPlace(changed, RotationAngle::Degree270);
  EXPECT_EQ(PixelsOf(changed), (Bytes{4, 1, 5, 2, 6, 3}));
  EXPECT_EQ(changed.Width(), 2u);
}

TEST(CppHeaderHistogram, CountsEachChannel) {
  Bytes memory = {1, 2, 3, 1, 5, 6};
  const korvel::Image image(PixelFormat::RGB8, memory.data(), memory.size(), 2, 1);
  const korvel::Histogram histogram(image);
  EXPECT_EQ(histogram.Format(), PixelFormat::RGB8);
  EXPECT_EQ(histogram.NumChannels(), 3u);
  EXPECT_EQ(histogram.PixelSum(2), 9u);
  EXPECT_EQ(histogram.PixelCount(0), 2u);
  const std::vector<uint64_t> bins = histogram.Bins(0);
  ASSERT_EQ(bins.size(), 256u);
  EXPECT_EQ(bins[1], 2u);
  EXPECT_EQ(CodeOf([&] { histogram.Bins(3); }), ReturnCode::OutOfRange);
}

TEST(CppHeaderPixelLine, ReadsRowsAndColumns) {
  const korvel::Image image = MakeRamp(PixelFormat::Mono12, 3, 2);
  const korvel::PixelLine row(image, korvel::LineOrientation::Horizontal, 1);
  EXPECT_EQ(row.Values(0), (std::vector<uint32_t>{21, 28, 35}));
  EXPECT_EQ(row.Format(), PixelFormat::Mono12);
  EXPECT_EQ(row.NumChannels(), 1u);
  const korvel::PixelLine column(image, korvel::LineOrientation::Vertical, 2);
  EXPECT_EQ(column.Values(0), (std::vector<uint32_t>{14, 35}));
  EXPECT_EQ(column.Orientation(), korvel::LineOrientation::Vertical);
  EXPECT_EQ(column.Offset(), 2u);
  const korvel::PixelLine empty(image, korvel::LineOrientation::Vertical, 3);
  EXPECT_TRUE(empty.Values(0).empty());
}

// ----------------------------------------------------------------------------------------------------------- video --

TEST(CppHeaderVideo, RecordsAndCounts) {
  const korvel_test::TemporaryDirectory directory;
  const std::string path = directory.File("a.avi");
  korvel::Video video(path);
  EXPECT_TRUE(video.IsOpen());
  video.SetQuality(90);
  EXPECT_EQ(video.Quality(), 90);
  EXPECT_EQ(video.QualityRange().min, 1);
  EXPECT_EQ(video.QualityRange().max, 100);
  EXPECT_EQ(video.QualityRange().increment, 1);
  video.SetFramesPerSecond(12.0);
  EXPECT_EQ(video.FramesPerSecond(), 12.0);
  EXPECT_EQ(video.QueueRange().min, 1u);
  EXPECT_EQ(video.QueueRange().max, 1000u);
  video.SetQueueSize(40);
  EXPECT_EQ(video.QueueSize(), 40u);

  const korvel::Image image(PixelFormat::Mono8, 32, 16);
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(video.Append(image));
  EXPECT_TRUE(video.WaitUntilQueueEmpty(std::chrono::minutes(1)));
  EXPECT_TRUE(video.WaitUntilFrameDone(std::chrono::minutes(1)));
  EXPECT_EQ(video.Queued(), 0u);
  EXPECT_EQ(video.EncodedFrames(), 5u);
  EXPECT_EQ(video.DroppedFrames(), 0u);
  EXPECT_GT(video.FileSize(), 0u);
  video.ResetFrameCounters();
  EXPECT_EQ(video.EncodedFrames(), 0u);
  video.Close();
  EXPECT_FALSE(video);
  EXPECT_FALSE(video.IsOpen());
  EXPECT_GT(std::filesystem::file_size(path), 0u);
  EXPECT_EQ(CodeOf([&] { video.Close(); }), ReturnCode::InvalidHandle);
  EXPECT_EQ(CodeOf([&] { korvel::Video again(path); }), ReturnCode::AccessFailed);
}

TEST(CppHeaderVideo, TellsADropAndATimeoutAsFalse) {
  const korvel_test::TemporaryDirectory directory;
  korvel::Video video(directory.File("a.avi"));
  video.SetQueueSize(1);
  // Large enough that the worker can't keep up with copies.
  const korvel::Image image = MakeRamp(PixelFormat::RGB8, 4096, 2048);
  bool dropped = false;
  for (int i = 0; i < 1000 && !dropped; ++i) dropped = !video.Append(image);
  EXPECT_TRUE(dropped);
  bool timedOut = false;
  for (int i = 0; i < 1000 && !timedOut; ++i) {
    video.Append(image);
    timedOut = !video.WaitUntilQueueEmpty(std::chrono::milliseconds(-5));
  }
  EXPECT_TRUE(timedOut);
  EXPECT_GE(video.DroppedFrames(), 1u);
  EXPECT_EQ(CodeOf([&] { video.Append(MakeRamp(PixelFormat::RGB12, 16, 16)); }), ReturnCode::ImageFormatNotSupported);
}

TEST(CppHeaderVideo, ListsWhatCanBeCombined) {
  using korvel::Video;
  using korvel::VideoContainer;
  using korvel::VideoEncoder;
  EXPECT_EQ(Video::EncodersFor(VideoContainer::Avi), std::vector<VideoEncoder>{VideoEncoder::Mjpeg});
  EXPECT_EQ(Video::ContainersFor(VideoEncoder::Mjpeg), std::vector<VideoContainer>{VideoContainer::Avi});
  EXPECT_EQ(Video::PixelFormatsFor(VideoEncoder::Mjpeg).size(), 5u);
  EXPECT_EQ(korvel::nothrow::Video::PixelFormatsFor(VideoEncoder{9}).Code(), ReturnCode::Error);
}

}  // namespace
