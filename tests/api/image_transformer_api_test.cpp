#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "tests/model/format_table.h"
#include "tests/model/geometry_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/exported_operations.h"
#include "tests/support/last_error.h"
#include "tests/support/seen_image.h"

namespace {

using korvel_test::Bytes;
using korvel_test::CallersMemory;
using korvel_test::ExportedConverter;
using korvel_test::ExportedImage;
using korvel_test::ExportedTransformer;
using korvel_test::Fill;
using korvel_test::FormatOf;
using korvel_test::FormatRow;
using korvel_test::kAllMotions;
using korvel_test::kFormatTable;
using korvel_test::LastError;
using korvel_test::MakeFilledImage;
using korvel_test::MarkLastError;
using korvel_test::ModelImage;
using korvel_test::ModelMotion;
using korvel_test::ModelMove;
using korvel_test::ModelRandom;
using korvel_test::NameOf;
using korvel_test::OddImage;
using korvel_test::ReadLastError;
using korvel_test::SeenImage;
using korvel_test::SeenOf;
using testing::ElementsAre;

using enum korvel_test::ModelMotion;

using Transformer = KORVEL_IMAGE_TRANSFORMER_HANDLE;
using Image = KORVEL_IMAGE_HANDLE;

const auto kNoHandle = reinterpret_cast<Image>(0x5A5A);

const LastError kPackedRefused{7, "ImageTransformer does not support packed pixel formats!"};
const LastError kNoOutputPointer{5, "outputImageHandle is not a valid pointer!"};
const LastError kBadAngle{
    1, "error: type=Error[1], module_id=9003, txt=img::ImageTransformer: Rotation mode not supported!"};

KORVEL_RETURN_CODE Move(Transformer transformer, Image input, ModelMotion motion, Image* output) {
  switch (motion) {
    case kMirrorLeftRight:
      return KORVEL_ImageTransformer_MirrorLeftRight(transformer, input, output);
    case kMirrorUpDown:
      return KORVEL_ImageTransformer_MirrorUpDown(transformer, input, output);
    case kMirrorBoth:
      return KORVEL_ImageTransformer_MirrorUpDownLeftRight(transformer, input, output);
    case kRotate90:
      return KORVEL_ImageTransformer_Rotate(transformer, input, output, 90);
    case kRotate180:
      return KORVEL_ImageTransformer_Rotate(transformer, input, output, 180);
    case kRotate270:
      return KORVEL_ImageTransformer_Rotate(transformer, input, output, 270);
  }
  return KORVEL_RETURN_CODE_Error;
}

KORVEL_RETURN_CODE MoveInPlace(Transformer transformer, Image image, ModelMotion motion) {
  switch (motion) {
    case kMirrorLeftRight:
      return KORVEL_ImageTransformer_MirrorLeftRightInPlace(transformer, image);
    case kMirrorUpDown:
      return KORVEL_ImageTransformer_MirrorUpDownInPlace(transformer, image);
    case kMirrorBoth:
      return KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace(transformer, image);
    case kRotate90:
      return KORVEL_ImageTransformer_RotateInPlace(transformer, image, 90);
    case kRotate180:
      return KORVEL_ImageTransformer_RotateInPlace(transformer, image, 180);
    case kRotate270:
      return KORVEL_ImageTransformer_RotateInPlace(transformer, image, 270);
  }
  return KORVEL_RETURN_CODE_Error;
}

// One pixel, single lines, odd and even sizes, and some beyond any tile or vector.
constexpr std::pair<size_t, size_t> kSizes[] = {
    {1, 1},   {2, 1},   {1, 2},   {5, 1},   {1, 6},    {2, 2},    {3, 3},    {3, 2},     {2, 3},     {4, 4},
    {16, 16}, {17, 18}, {31, 33}, {32, 30}, {33, 31},  {34, 63},  {64, 48},  {65, 66},   {1, 1000},  {1001, 1},
    {512, 3}, {3, 511}, {2, 257}, {258, 2}, {66, 130}, {127, 64}, {128, 65}, {130, 200}, {201, 129},
};

// Every format whose pixels are whole bytes and lie by themselves, and the one of images without a format.
std::vector<uint32_t> AcceptedFormats() {
  std::vector<uint32_t> formats = {KORVEL_PIXEL_FORMAT_Invalid};
  for (const uint32_t id : korvel_test::PublicFormats()) {
    if (!FormatOf(id).packed) formats.push_back(id);
  }
  return formats;
}

class ImageTransformerApi : public testing::Test {
 protected:
  SeenImage Moved(Image input, ModelMotion motion) {
    Image output = kNoHandle;
    EXPECT_EQ(Move(transformer.Handle(), input, motion, &output), 0u) << ReadLastError();
    return SeenOf(ExportedImage(output).Handle());
  }
  void MoveInPlace(Image image, ModelMotion motion) {
    EXPECT_EQ(::MoveInPlace(transformer.Handle(), image, motion), 0u) << ReadLastError();
  }
  void ExpectFailure(KORVEL_RETURN_CODE code, const LastError& expected) {
    EXPECT_EQ(code, expected.code);
    EXPECT_EQ(ReadLastError(), expected);
  }

  ExportedTransformer transformer;
};

class ImageTransformerSweep : public testing::TestWithParam<uint32_t> {
 protected:
  template <class Check>
  void ForEachCase(const Check& check) {
    uint64_t seed = GetParam();
    for (const auto& [width, height] : kSizes) {
      const ModelImage input = MakeFilledImage(GetParam(), width, height, Fill::kGarbage, ++seed);
      for (const ModelMotion motion : kAllMotions) {
        SCOPED_TRACE(testing::Message() << FormatOf(GetParam()).name << ", " << width << " x " << height << ", "
                                        << NameOf(motion) << ", seed " << seed);
        check(input, motion);
        if (testing::Test::HasFailure()) return;  // one is enough to repeat it
      }
    }
  }

  ExportedTransformer transformer;
};

TEST_P(ImageTransformerSweep, MakesNewImages) {
  ForEachCase([&](const ModelImage& input, ModelMotion motion) {
    const ExportedImage image(input.format, input.width, input.height, input.bytes);
    Image output = kNoHandle;
    ASSERT_EQ(Move(transformer.Handle(), image.Handle(), motion, &output), 0u) << ReadLastError();
    EXPECT_EQ(SeenOf(ExportedImage(output).Handle()), SeenOf(ModelMove(input, motion)));
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(input)) << "the input";
  });
}

TEST_P(ImageTransformerSweep, ChangesImagesInPlace) {
  ForEachCase([&](const ModelImage& input, ModelMotion motion) {
    const ExportedImage image(input.format, input.width, input.height, input.bytes);
    const uint8_t* const data = image.Data();
    ASSERT_EQ(MoveInPlace(transformer.Handle(), image.Handle(), motion), 0u) << ReadLastError();
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(ModelMove(input, motion)));
    EXPECT_EQ(image.Data(), data) << "the pixels stay in their memory";
  });
}

TEST_P(ImageTransformerSweep, StaysWithinTheCallersMemoryAtOddAddresses) {
  ForEachCase([&](const ModelImage& input, ModelMotion motion) {
    const OddImage image(input);
    Image output = kNoHandle;
    ASSERT_EQ(Move(transformer.Handle(), image.Handle(), motion, &output), 0u) << ReadLastError();
    const ModelImage expected = ModelMove(input, motion);
    EXPECT_EQ(SeenOf(ExportedImage(output).Handle()), SeenOf(expected));
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(input)) << "the input";
    ASSERT_EQ(MoveInPlace(transformer.Handle(), image.Handle(), motion), 0u) << ReadLastError();
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(expected)) << "in place";
    EXPECT_EQ(image.Content(), expected.bytes) << "the caller's bytes";
    EXPECT_TRUE(image.IsMarkedOutside());
  });
}

TEST_P(ImageTransformerSweep, ReadsNothingBehindTheImage) {
  ForEachCase([&](const ModelImage& input, ModelMotion motion) {
    const CallersMemory memory(input.bytes.size());
    std::memcpy(memory.Data(), input.bytes.data(), input.bytes.size());
    Image handle = nullptr;
    ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(input.format, memory.Data(), input.bytes.size(), input.width,
                                               input.height, &handle),
              0u);
    const ExportedImage image(handle);
    Image output = kNoHandle;
    ASSERT_EQ(Move(transformer.Handle(), image.Handle(), motion, &output), 0u) << ReadLastError();
    ASSERT_EQ(MoveInPlace(transformer.Handle(), image.Handle(), motion), 0u) << ReadLastError();
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(ExportedImage(output).Handle()));
  });
}

TEST_P(ImageTransformerSweep, UndoesItself) {
  ForEachCase([&](const ModelImage& input, ModelMotion motion) {
    const ExportedImage image(input.format, input.width, input.height, input.bytes);
    const int times = motion == kRotate90 || motion == kRotate270 ? 4 : 2;
    ModelImage expected = input;
    for (int i = 0; i < times; ++i) {
      ASSERT_EQ(MoveInPlace(transformer.Handle(), image.Handle(), motion), 0u) << ReadLastError();
      expected = ModelMove(expected, motion);
      EXPECT_EQ(SeenOf(image.Handle()), SeenOf(expected)) << "after " << i + 1;
    }
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(input));
  });
}

INSTANTIATE_TEST_SUITE_P(AcceptedFormats, ImageTransformerSweep, testing::ValuesIn(AcceptedFormats()),
                         [](const auto& format) { return std::string(FormatOf(format.param).name); });

TEST_F(ImageTransformerApi, RefusesPackedFormatsEverywhere) {
  size_t refused = 0;
  for (const uint32_t id : korvel_test::PublicFormats()) {
    if (!FormatOf(id).packed) continue;
    SCOPED_TRACE(FormatOf(id).name);
    const ModelImage input = MakeFilledImage(id, 6, 4, Fill::kGarbage, id);
    const ExportedImage image(id, 6, 4, input.bytes);
    Image output = kNoHandle;
    for (const ModelMotion motion : kAllMotions) {
      SCOPED_TRACE(NameOf(motion));
      ExpectFailure(Move(transformer.Handle(), image.Handle(), motion, &output), kPackedRefused);
      ExpectFailure(Move(transformer.Handle(), image.Handle(), motion, nullptr), kPackedRefused);
      ExpectFailure(::MoveInPlace(transformer.Handle(), image.Handle(), motion), kPackedRefused);
    }
    ExpectFailure(KORVEL_ImageTransformer_Rotate(transformer.Handle(), image.Handle(), &output, 45), kPackedRefused);
    ExpectFailure(KORVEL_ImageTransformer_RotateInPlace(transformer.Handle(), image.Handle(), 45), kPackedRefused);
    EXPECT_EQ(output, kNoHandle);
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(input));
    ++refused;
  }
  EXPECT_EQ(refused, 22u);
}

TEST_F(ImageTransformerApi, ChecksTransformerThenImageThenFormatThenPointerThenAngle) {
  const ExportedImage mono(KORVEL_PIXEL_FORMAT_Mono8, 2, 2);
  const ExportedImage packed(KORVEL_PIXEL_FORMAT_Mono10p, 2, 2);
  Image output = kNoHandle;
  for (const ModelMotion motion : kAllMotions) {
    SCOPED_TRACE(NameOf(motion));
    ExpectFailure(Move(nullptr, nullptr, motion, nullptr), {2, "imageTransformerHandle is invalid!"});
    ExpectFailure(Move(transformer.Handle(), nullptr, motion, nullptr), {2, "imageHandle is invalid!"});
    ExpectFailure(Move(transformer.Handle(), packed.Handle(), motion, nullptr), kPackedRefused);
    ExpectFailure(Move(transformer.Handle(), mono.Handle(), motion, nullptr), kNoOutputPointer);
    ExpectFailure(::MoveInPlace(nullptr, nullptr, motion), {2, "imageTransformerHandle is invalid!"});
    ExpectFailure(::MoveInPlace(transformer.Handle(), nullptr, motion), {2, "imageHandle is invalid!"});
    ExpectFailure(::MoveInPlace(transformer.Handle(), packed.Handle(), motion), kPackedRefused);
  }
  ExpectFailure(KORVEL_ImageTransformer_Rotate(nullptr, nullptr, nullptr, 1),
                {2, "imageTransformerHandle is invalid!"});
  ExpectFailure(KORVEL_ImageTransformer_Rotate(transformer.Handle(), nullptr, nullptr, 1),
                {2, "imageHandle is invalid!"});
  ExpectFailure(KORVEL_ImageTransformer_Rotate(transformer.Handle(), mono.Handle(), nullptr, 1), kNoOutputPointer);
  ExpectFailure(KORVEL_ImageTransformer_Rotate(transformer.Handle(), mono.Handle(), &output, 1), kBadAngle);
  EXPECT_EQ(output, kNoHandle);
}

TEST_F(ImageTransformerApi, TellsABadTransformerAtItsEndInTheConvertersWords) {
  Transformer handle = nullptr;
  ASSERT_EQ(KORVEL_ImageTransformer_Construct(&handle), 0u);
  ASSERT_EQ(KORVEL_ImageTransformer_Destruct(handle), 0u);
  ExpectFailure(KORVEL_ImageTransformer_Destruct(handle), {2, "imageConverterHandle is invalid!"});
  ExpectFailure(KORVEL_ImageTransformer_Destruct(nullptr), {2, "imageConverterHandle is invalid!"});
}

TEST_F(ImageTransformerApi, LeavesTheLastErrorAloneOnSuccess) {
  const LastError before = MarkLastError();
  const ExportedTransformer other;
  const ExportedImage image(KORVEL_PIXEL_FORMAT_BayerRG8, 4, 2);
  for (const ModelMotion motion : kAllMotions) {
    Moved(image.Handle(), motion);
    MoveInPlace(image.Handle(), motion);
  }
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(ImageTransformerApi, RefusesOtherAnglesBeforeAPixelMoves) {
  for (const uint32_t angle : {0u, 1u, 45u, 89u, 91u, 179u, 181u, 269u, 271u, 360u, 450u, 0xFFA6u, 0xFFFFu, 0x10000u,
                               0x1002Du, 0x5A0000u, 0xFFFFFFFFu}) {
    for (const uint32_t format : {KORVEL_PIXEL_FORMAT_BayerRG8, KORVEL_PIXEL_FORMAT_RGBa12}) {
      SCOPED_TRACE(testing::Message() << angle << ", " << FormatOf(format).name);
      const ModelImage input = MakeFilledImage(format, 4, 2, Fill::kRandom, angle);
      const ExportedImage image(format, 4, 2, input.bytes);
      Image output = kNoHandle;
      ExpectFailure(KORVEL_ImageTransformer_Rotate(transformer.Handle(), image.Handle(), &output, angle), kBadAngle);
      ExpectFailure(KORVEL_ImageTransformer_RotateInPlace(transformer.Handle(), image.Handle(), angle), kBadAngle);
      EXPECT_EQ(output, kNoHandle);
      EXPECT_EQ(SeenOf(image.Handle()), SeenOf(input));
    }
  }
}

TEST_F(ImageTransformerApi, ReadsTheLow16BitsOfTheAngle) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 2, 1, Bytes{1, 2});
  Image output = nullptr;
  ASSERT_EQ(KORVEL_ImageTransformer_Rotate(transformer.Handle(), image.Handle(), &output, 0x1005A), 0u);
  EXPECT_EQ(SeenOf(ExportedImage(output).Handle()), (SeenImage{KORVEL_PIXEL_FORMAT_Mono8, 1, 2, {2, 1}}));
  ASSERT_EQ(KORVEL_ImageTransformer_RotateInPlace(transformer.Handle(), image.Handle(), 0xFFFF010E), 0u);
  EXPECT_EQ(SeenOf(image.Handle()), (SeenImage{KORVEL_PIXEL_FORMAT_Mono8, 1, 2, {1, 2}}));
  ASSERT_EQ(KORVEL_ImageTransformer_RotateInPlace(transformer.Handle(), image.Handle(), 0x800000B4), 0u);
  EXPECT_EQ(SeenOf(image.Handle()), (SeenImage{KORVEL_PIXEL_FORMAT_Mono8, 1, 2, {2, 1}}));
}

struct FormatCase {
  ModelMotion motion;
  size_t width;
  size_t height;
  // What GR, RG, GB and BG become.
  std::string_view patterns[4];
};

constexpr FormatCase kFormatCases[] = {
    {kMirrorLeftRight, 640, 4, {"RG", "GR", "BG", "GB"}}, {kMirrorLeftRight, 641, 4, {"GR", "RG", "GB", "BG"}},
    {kMirrorUpDown, 4, 480, {"BG", "GB", "RG", "GR"}},    {kMirrorUpDown, 4, 481, {"GR", "RG", "GB", "BG"}},
    {kMirrorBoth, 4, 6, {"GB", "BG", "GR", "RG"}},        {kMirrorBoth, 5, 7, {"GR", "RG", "GB", "BG"}},
    {kMirrorBoth, 4, 7, {"RG", "GR", "BG", "GB"}},        {kMirrorBoth, 5, 6, {"BG", "GB", "RG", "GR"}},
    {kRotate90, 4, 6, {"RG", "GB", "BG", "GR"}},          {kRotate90, 4, 7, {"RG", "GB", "BG", "GR"}},
    {kRotate90, 5, 6, {"GB", "RG", "GR", "BG"}},          {kRotate90, 5, 7, {"GB", "RG", "GR", "BG"}},
    {kRotate270, 4, 6, {"BG", "GR", "RG", "GB"}},         {kRotate270, 5, 6, {"BG", "GR", "RG", "GB"}},
    {kRotate270, 4, 7, {"GB", "RG", "GR", "BG"}},         {kRotate270, 5, 7, {"GB", "RG", "GR", "BG"}},
    {kRotate180, 4, 6, {"GB", "BG", "GR", "RG"}},         {kRotate180, 4, 7, {"RG", "GR", "BG", "GB"}},
    {kRotate180, 5, 6, {"BG", "GB", "RG", "GR"}},         {kRotate180, 5, 7, {"GR", "RG", "GB", "BG"}},
};

TEST_F(ImageTransformerApi, GivesAMosaicTheFormatOfItsNewCorner) {
  constexpr std::string_view kPatterns[] = {"GR", "RG", "GB", "BG"};
  for (const FormatCase& formatCase : kFormatCases) {
    for (const FormatRow& row : kFormatTable) {
      if (!row.bayer || row.packed) continue;
      for (size_t i = 0; i < 4; ++i) {
        if (row.name.substr(5, 2) != kPatterns[i]) continue;
        SCOPED_TRACE(testing::Message() << row.name << ", " << NameOf(formatCase.motion) << ", " << formatCase.width
                                        << " x " << formatCase.height);
        const std::string expected = "Bayer" + std::string(formatCase.patterns[i]) + std::string(row.name.substr(7));
        const ExportedImage image(row.id, formatCase.width, formatCase.height);
        EXPECT_EQ(FormatOf(Moved(image.Handle(), formatCase.motion).format).name, expected);
        EXPECT_EQ(image.Format(), row.id);
        MoveInPlace(image.Handle(), formatCase.motion);
        EXPECT_EQ(FormatOf(image.Format()).name, expected);
      }
    }
  }
}

TEST_F(ImageTransformerApi, ReportsTheSizeAfterAQuarterTurnInPlace) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_BayerGR8, 640, 480);
  MoveInPlace(image.Handle(), kRotate90);
  EXPECT_EQ(image.Width(), 480u);
  EXPECT_EQ(image.Height(), 640u);
  EXPECT_EQ(image.Format(), uint32_t{KORVEL_PIXEL_FORMAT_BayerRG8});
  uint8_t* last = nullptr;
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(image.Handle(), 479, 639, &last), 0u);
  EXPECT_EQ(last, image.Data() + 640 * 480 - 1);
  EXPECT_EQ(KORVEL_Image_GetPixelPointer(image.Handle(), 480, 0, &last), 6u);
}

TEST_F(ImageTransformerApi, KeepsOnePixelAsItIs) {
  for (const ModelMotion motion : kAllMotions) {
    const ExportedImage image(KORVEL_PIXEL_FORMAT_RGB12, 1, 1, Bytes{1, 2, 3, 4, 5, 6});
    MoveInPlace(image.Handle(), motion);
    EXPECT_EQ(SeenOf(image.Handle()), (SeenImage{KORVEL_PIXEL_FORMAT_RGB12, 1, 1, {1, 2, 3, 4, 5, 6}}));
  }
}

TEST_F(ImageTransformerApi, TakesImagesWithoutPixels) {
  for (const auto& [width, height] : {std::pair<size_t, size_t>{0, 0}, {0, 3}, {3, 0}}) {
    for (const ModelMotion motion : kAllMotions) {
      SCOPED_TRACE(testing::Message() << width << " x " << height << ", " << NameOf(motion));
      const ExportedImage image(KORVEL_PIXEL_FORMAT_Invalid, width, height);
      EXPECT_EQ(Moved(image.Handle(), motion).bytes.size(), 0u);
      MoveInPlace(image.Handle(), motion);
      EXPECT_EQ(image.ByteCount(), 0u);
    }
  }
}

// Makes the same image in each of the ways in which memory comes to an image.
class ImageTransformerOrigins : public ImageTransformerApi {
 protected:
  static constexpr const char* kOrigins[] = {"own memory",
                                             "caller's memory",
                                             "transformer",
                                             "converter",
                                             "clone",
                                             "clone of caller's memory",
                                             "converted into caller's memory"};

  Image Make(size_t origin, const ModelImage& content) {
    Image handle = nullptr;
    if (origin == 0) {
      EXPECT_EQ(KORVEL_Image_Construct(content.format, content.width, content.height, &handle), 0u);
      Write(handle, content);
    } else if (origin == 1) {
      handle = MakeOverCallersMemory(content);
    } else if (origin == 2) {
      // Twice, so that pixels and format are the same again.
      const ExportedImage input(Make(0, content));
      Image turned = nullptr;
      EXPECT_EQ(Move(transformer.Handle(), input.Handle(), kRotate180, &turned), 0u);
      const ExportedImage halfWay(turned);
      EXPECT_EQ(Move(transformer.Handle(), turned, kRotate180, &handle), 0u);
    } else if (origin == 3) {
      const ExportedImage input(Make(0, content));
      EXPECT_EQ(KORVEL_ImageConverter_Convert(converter.Handle(), input.Handle(), content.format, &handle), 0u);
    } else if (origin == 4 || origin == 5) {
      const ExportedImage input(Make(origin == 4 ? 0 : 1, content));
      EXPECT_EQ(KORVEL_Image_Clone(input.Handle(), &handle), 0u);
    } else {
      const ExportedImage input(Make(0, content));
      callersBytes.push_back(std::make_unique<Bytes>(content.bytes.size()));
      EXPECT_EQ(KORVEL_Image_ConvertToBuffer(input.Handle(), content.format, callersBytes.back()->data(),
                                             content.bytes.size(), 1, &handle),
                0u);
    }
    EXPECT_EQ(SeenOf(handle), SeenOf(content)) << kOrigins[origin];
    return handle;
  }
  Image MakeOverCallersMemory(const ModelImage& content) {
    callersBytes.push_back(std::make_unique<Bytes>(content.bytes));
    Image handle = nullptr;
    EXPECT_EQ(KORVEL_Image_ConstructFromBuffer(content.format, callersBytes.back()->data(), content.bytes.size(),
                                               content.width, content.height, &handle),
              0u);
    return handle;
  }
  static void Write(Image handle, const ModelImage& content) {
    uint8_t* data = nullptr;
    EXPECT_EQ(KORVEL_Image_GetData(handle, &data), 0u);
    std::memcpy(data, content.bytes.data(), content.bytes.size());
  }

  ExportedConverter converter;
  std::vector<std::unique_ptr<Bytes>> callersBytes;
};

TEST_F(ImageTransformerOrigins, ChangeTheirFormatBackAndForthInPlace) {
  ModelRandom random(4711);
  for (const uint32_t format : {KORVEL_PIXEL_FORMAT_BayerGR8, KORVEL_PIXEL_FORMAT_BayerBG10,
                                KORVEL_PIXEL_FORMAT_BayerRG12, KORVEL_PIXEL_FORMAT_RGB8}) {
    for (const auto& [width, height] : {std::pair<size_t, size_t>{6, 4}, {7, 4}, {6, 5}, {7, 5}, {1, 2}}) {
      for (size_t origin = 0; origin < std::size(kOrigins); ++origin) {
        ModelImage expected = MakeFilledImage(format, width, height, Fill::kGarbage, random.Next());
        const ExportedImage image(Make(origin, expected));
        const uint8_t* const data = image.Data();
        std::string history;
        for (int step = 0; step < 24; ++step) {
          const ModelMotion motion = kAllMotions[random.Below(std::size(kAllMotions))];
          history += std::string(", ") + NameOf(motion);
          MoveInPlace(image.Handle(), motion);
          expected = ModelMove(expected, motion);
          ASSERT_EQ(SeenOf(image.Handle()), SeenOf(expected))
              << FormatOf(format).name << ", " << width << " x " << height << ", " << kOrigins[origin] << history;
          ASSERT_EQ(image.Data(), data) << kOrigins[origin] << history;
          // Objects that the change left behind give their addresses to new ones.
          const ExportedImage other(format, width, height);
          ASSERT_NE(other.Data(), data);
        }
        Image clone = nullptr;
        ASSERT_EQ(KORVEL_Image_Clone(image.Handle(), &clone), 0u);
        EXPECT_EQ(SeenOf(ExportedImage(clone).Handle()), SeenOf(expected));
        Image moved = nullptr;
        ASSERT_EQ(Move(transformer.Handle(), image.Handle(), kRotate90, &moved), 0u);
        EXPECT_EQ(SeenOf(ExportedImage(moved).Handle()), SeenOf(ModelMove(expected, kRotate90)));
      }
    }
  }
}

// The pool gives out the memory that came back last. Memory that came back twice would be given out twice, memory that
// didn't come back never again.
TEST_F(ImageTransformerOrigins, GiveTheirMemoryBackToThePoolOnce) {
  constexpr size_t kPooled[] = {2, 3};
  for (const size_t origin : kPooled) {
    for (int changes = 0; changes < 5; ++changes) {
      SCOPED_TRACE(testing::Message() << kOrigins[origin] << ", " << changes << " changes");
      const ModelImage content = MakeFilledImage(KORVEL_PIXEL_FORMAT_BayerGR10, 6, 4, Fill::kRandom, 1);
      const ExportedImage source(Make(0, content));
      const auto next = [&] {
        Image handle = nullptr;
        EXPECT_EQ(origin == 2 ? Move(transformer.Handle(), source.Handle(), kMirrorBoth, &handle)
                              : KORVEL_ImageConverter_Convert(converter.Handle(), source.Handle(),
                                                              KORVEL_PIXEL_FORMAT_BayerGR10, &handle),
                  0u);
        return handle;
      };
      const uint8_t* first = nullptr;
      {
        const ExportedImage image(Make(origin, content));
        first = image.Data();
        for (int i = 0; i < changes; ++i) {
          MoveInPlace(image.Handle(), i % 3 == 2 ? kRotate90 : kMirrorLeftRight);
          EXPECT_NE(ExportedImage(next()).Data(), first) << "it is still in use";
        }
        EXPECT_EQ(image.Data(), first);
      }
      const ExportedImage second(next());
      const ExportedImage third(next());
      const ExportedImage fourth(next());
      EXPECT_EQ(second.Data(), first);
      EXPECT_NE(third.Data(), first);
      EXPECT_NE(fourth.Data(), first);
      EXPECT_NE(fourth.Data(), third.Data());
    }
  }
}

TEST_F(ImageTransformerOrigins, GiveTheMemoryOfNewMosaicsBackOnce) {
  const ExportedImage source(KORVEL_PIXEL_FORMAT_BayerGR8, 6, 4);
  for (const ModelMotion motion : kAllMotions) {
    SCOPED_TRACE(NameOf(motion));
    Image handle = nullptr;
    ASSERT_EQ(Move(transformer.Handle(), source.Handle(), motion, &handle), 0u);
    const uint8_t* const first = ExportedImage(handle).Data();
    ASSERT_EQ(Move(transformer.Handle(), source.Handle(), motion, &handle), 0u);
    const ExportedImage second(handle);
    ASSERT_EQ(Move(transformer.Handle(), source.Handle(), motion, &handle), 0u);
    const ExportedImage third(handle);
    EXPECT_EQ(second.Data(), first);
    EXPECT_NE(third.Data(), first);
  }
}

TEST_F(ImageTransformerOrigins, OutliveTheirMaker) {
  ExportedTransformer other;
  ModelImage expected = MakeFilledImage(KORVEL_PIXEL_FORMAT_BayerGR12, 5, 4, Fill::kRandom, 8);
  const ExportedImage source(Make(0, expected));
  Image handle = nullptr;
  ASSERT_EQ(Move(other.Handle(), source.Handle(), kRotate270, &handle), 0u);
  const ExportedImage image(handle);
  other.Destruct();
  expected = ModelMove(expected, kRotate270);
  for (const ModelMotion motion : kAllMotions) {
    MoveInPlace(image.Handle(), motion);
    expected = ModelMove(expected, motion);
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(expected)) << NameOf(motion);
  }
  Image clone = nullptr;
  ASSERT_EQ(KORVEL_Image_Clone(image.Handle(), &clone), 0u);
  EXPECT_EQ(SeenOf(ExportedImage(clone).Handle()), SeenOf(expected));
}

TEST_F(ImageTransformerApi, KeepsTheCallersMemoryUnderAnImageThatIsDestroyed) {
  CallersMemory memory(6);
  std::memcpy(memory.Data(), "\1\2\3\4\5\6", 6);
  Image handle = nullptr;
  ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_BayerGR8, memory.Data(), 6, 3, 2, &handle), 0u);
  {
    const ExportedImage image(handle);
    MoveInPlace(handle, kRotate90);
    MoveInPlace(handle, kMirrorUpDown);
  }
  EXPECT_THAT(Bytes(memory.Data(), memory.Data() + 6), ElementsAre(1, 4, 2, 5, 3, 6));
}

TEST_F(ImageTransformerApi, RefusesImagesThatNoMemoryHolds) {
  // That the memory is as large as the caller says is trusted; nothing of it is touched here.
  uint8_t byte = 7;
  Image handle = nullptr;
  ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono8, &byte, SIZE_MAX, size_t{1} << 62, 1, &handle),
            0u);
  const ExportedImage huge(handle);
  Image output = kNoHandle;
  for (const ModelMotion motion : kAllMotions) {
    EXPECT_EQ(Move(transformer.Handle(), handle, motion, &output), 1u) << NameOf(motion);
    EXPECT_NE(ReadLastError().text, "");
  }
  EXPECT_EQ(::MoveInPlace(transformer.Handle(), handle, kRotate90), 1u) << "the copy that a quarter turn needs";
  EXPECT_EQ(::MoveInPlace(transformer.Handle(), handle, kRotate270), 1u);
  EXPECT_EQ(output, kNoHandle);
  EXPECT_EQ(huge.Width(), size_t{1} << 62);
  EXPECT_EQ(byte, 7);
}

TEST(ImageTransformerApiThreads, ServeTransformersOfTheirOwn) {
  const auto work = [](uint32_t format) {
    const ExportedTransformer transformer;
    ModelImage expected = MakeFilledImage(format, 33, 20, Fill::kRandom, format);
    const ExportedImage image(format, 33, 20, expected.bytes);
    for (int i = 0; i < 60; ++i) {
      const ModelMotion motion = kAllMotions[static_cast<size_t>(i) % std::size(kAllMotions)];
      Image output = nullptr;
      ASSERT_EQ(Move(transformer.Handle(), image.Handle(), motion, &output), 0u);
      ASSERT_EQ(MoveInPlace(transformer.Handle(), image.Handle(), motion), 0u);
      expected = ModelMove(expected, motion);
      ASSERT_EQ(SeenOf(ExportedImage(output).Handle()), SeenOf(expected));
      ASSERT_EQ(SeenOf(image.Handle()), SeenOf(expected));
    }
  };
  std::thread first(work, uint32_t{KORVEL_PIXEL_FORMAT_BayerGR8});
  std::thread second(work, uint32_t{KORVEL_PIXEL_FORMAT_BGRa10});
  first.join();
  second.join();
}

TEST(ImageTransformerApiThreads, ReadAnImageWhoseFormatChanges) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_BayerGR8, 4, 4);
  std::thread changer([&image] {
    const ExportedTransformer transformer;
    for (int i = 0; i < 500; ++i) {
      ASSERT_EQ(KORVEL_ImageTransformer_MirrorLeftRightInPlace(transformer.Handle(), image.Handle()), 0u);
    }
  });
  for (int i = 0; i < 500; ++i) {
    const uint32_t format = image.Format();
    ASSERT_TRUE(format == KORVEL_PIXEL_FORMAT_BayerGR8 || format == KORVEL_PIXEL_FORMAT_BayerRG8) << format;
  }
  changer.join();
  EXPECT_EQ(image.Format(), uint32_t{KORVEL_PIXEL_FORMAT_BayerGR8});
}

}  // namespace
