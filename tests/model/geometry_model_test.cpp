// The model of mirrors and turns against pictures and a table that were written out by hand.
#include "tests/model/geometry_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/model/format_table.h"

namespace korvel_test {
namespace {

using testing::ElementsAre;

using enum ModelMotion;

ModelImage Letters(uint32_t format, size_t width, size_t height, std::string_view letters) {
  return MakeModelImage(format, width, height, std::vector<uint8_t>(letters.begin(), letters.end()));
}

struct Moved {
  size_t width;
  size_t height;
  std::string letters;

  bool operator==(const Moved&) const = default;
};

void PrintTo(const Moved& moved, std::ostream* stream) {
  *stream << moved.width << " x " << moved.height << " " << moved.letters;
}

Moved MovedOf(const ModelImage& input, ModelMotion motion) {
  const ModelImage output = ModelMove(input, motion);
  return {output.width, output.height, std::string(output.bytes.begin(), output.bytes.end())};
}

TEST(GeometryModel, MovesPixelsOfOneByte) {
  // a b c
  // d e f
  const ModelImage image = Letters(IdOf("Mono8"), 3, 2, "abcdef");
  EXPECT_EQ(MovedOf(image, kMirrorLeftRight), (Moved{3, 2, "cbafed"}));
  EXPECT_EQ(MovedOf(image, kMirrorUpDown), (Moved{3, 2, "defabc"}));
  EXPECT_EQ(MovedOf(image, kMirrorBoth), (Moved{3, 2, "fedcba"}));
  EXPECT_EQ(MovedOf(image, kRotate180), (Moved{3, 2, "fedcba"}));
  // c f     d a
  // b e     e b
  // a d     f c
  EXPECT_EQ(MovedOf(image, kRotate90), (Moved{2, 3, "cfbead"}));
  EXPECT_EQ(MovedOf(image, kRotate270), (Moved{2, 3, "daebfc"}));
}

TEST(GeometryModel, MovesPixelsWhole) {
  const ModelImage image = Letters(IdOf("BGR8"), 2, 2, "abcdefghijkl");
  EXPECT_EQ(MovedOf(image, kMirrorLeftRight), (Moved{2, 2, "defabcjklghi"}));
  EXPECT_EQ(MovedOf(image, kRotate90), (Moved{2, 2, "defjklabcghi"}));
  EXPECT_EQ(MovedOf(Letters(IdOf("Mono10"), 3, 1, "aAbBcC"), kRotate270), (Moved{1, 3, "aAbBcC"}));
  EXPECT_EQ(MovedOf(Letters(IdOf("Mono10"), 3, 1, "aAbBcC"), kRotate90), (Moved{1, 3, "cCbBaA"}));
}

struct FormatCase {
  ModelMotion motion;
  size_t width;
  size_t height;
  // What GR, RG, GB and BG become.
  std::string_view patterns[4];
};

constexpr FormatCase kFormatCases[] = {
    {kMirrorLeftRight, 640, 480, {"RG", "GR", "BG", "GB"}}, {kMirrorLeftRight, 640, 481, {"RG", "GR", "BG", "GB"}},
    {kMirrorLeftRight, 641, 480, {"GR", "RG", "GB", "BG"}}, {kMirrorLeftRight, 1, 1, {"GR", "RG", "GB", "BG"}},
    {kMirrorUpDown, 640, 480, {"BG", "GB", "RG", "GR"}},    {kMirrorUpDown, 641, 480, {"BG", "GB", "RG", "GR"}},
    {kMirrorUpDown, 640, 481, {"GR", "RG", "GB", "BG"}},    {kMirrorUpDown, 1, 1, {"GR", "RG", "GB", "BG"}},
    {kMirrorBoth, 640, 480, {"GB", "BG", "GR", "RG"}},      {kMirrorBoth, 641, 481, {"GR", "RG", "GB", "BG"}},
    {kMirrorBoth, 640, 481, {"RG", "GR", "BG", "GB"}},      {kMirrorBoth, 641, 480, {"BG", "GB", "RG", "GR"}},
    {kRotate90, 640, 480, {"RG", "GB", "BG", "GR"}},        {kRotate90, 640, 481, {"RG", "GB", "BG", "GR"}},
    {kRotate90, 641, 480, {"GB", "RG", "GR", "BG"}},        {kRotate90, 1, 1, {"GB", "RG", "GR", "BG"}},
    {kRotate270, 640, 480, {"BG", "GR", "RG", "GB"}},       {kRotate270, 641, 480, {"BG", "GR", "RG", "GB"}},
    {kRotate270, 640, 481, {"GB", "RG", "GR", "BG"}},       {kRotate270, 1, 1, {"GB", "RG", "GR", "BG"}},
    {kRotate180, 640, 480, {"GB", "BG", "GR", "RG"}},       {kRotate180, 640, 481, {"RG", "GR", "BG", "GB"}},
    {kRotate180, 641, 480, {"BG", "GB", "RG", "GR"}},       {kRotate180, 641, 481, {"GR", "RG", "GB", "BG"}},
};

TEST(GeometryModel, TellsTheFormatOfAMosaic) {
  constexpr std::string_view kPatterns[] = {"GR", "RG", "GB", "BG"};
  size_t compared = 0;
  for (const FormatCase& formatCase : kFormatCases) {
    for (const FormatRow& row : kFormatTable) {
      if (!row.bayer || row.packed) continue;
      for (size_t i = 0; i < 4; ++i) {
        if (row.name.substr(5, 2) != kPatterns[i]) continue;
        const uint32_t after = ModelFormatAfter(row.id, formatCase.width, formatCase.height, formatCase.motion);
        EXPECT_EQ(FormatOf(after).name, "Bayer" + std::string(formatCase.patterns[i]) + std::string(row.name.substr(7)))
            << NameOf(formatCase.motion) << ", " << formatCase.width << " x " << formatCase.height;
        ++compared;
      }
    }
  }
  EXPECT_EQ(compared, std::size(kFormatCases) * 12);
}

TEST(GeometryModel, KeepsTheFormatOfOtherImages) {
  for (const FormatRow& row : kFormatTable) {
    if (row.bayer && !row.packed) continue;
    for (const ModelMotion motion : kAllMotions) {
      EXPECT_EQ(ModelFormatAfter(row.id, 640, 480, motion), row.id) << row.name << ", " << NameOf(motion);
    }
  }
}

TEST(GeometryModel, GivesTheResultItsFormat) {
  const ModelImage output = ModelMove(Letters(IdOf("BayerGR8"), 2, 3, "abcdef"), kRotate90);
  EXPECT_EQ(output.format, IdOf("BayerRG8"));
  EXPECT_THAT(output.bytes, ElementsAre('b', 'd', 'f', 'a', 'c', 'e'));
}

}  // namespace
}  // namespace korvel_test
