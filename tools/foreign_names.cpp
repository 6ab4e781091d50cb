#include "foreign_names.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <functional>

#include "korvel/korvel.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

constexpr std::string_view kDark =
    "takes the values for 16-bit ones, and the picture is dark unless they are multiplied by 64 (10 bits) or 16 (12 "
    "bits)";
constexpr std::string_view kFromGStreamer124 = "from GStreamer 1.24 on";
constexpr std::string_view kNewerThanLinux61 = "not in the headers of Linux 6.1; newer ones have it";
constexpr std::string_view kNewerThanLibcamera003 = "not in libcamera 0.0.3; newer versions have it";

struct Row {
  uint32_t format;
  std::array<ForeignName, kVocabularyCount> names;  // in the order of Vocabulary
};

// Formats that have a name in none of them have no row. OpenCV names a mosaic by the second and third pixels of its
// second line, and V4L2, libcamera and GStreamer by all four of its pattern. libcamera names colours from the high
// bits of a little-endian word down, which is the other way round in memory; so does V4L2 for ABGR32, but not for
// RGBA32, and FFmpeg for x2bgr10le.
constexpr Row kRows[] = {
    {KORVEL_PIXEL_FORMAT_Mono8,
     {{{"CV_8UC1", "COLOR_GRAY2BGR"}, {"V4L2_PIX_FMT_GREY", "GREY"}, {"R8"}, {"video/x-raw,format=GRAY8"}, {"gray"}}}},
    {KORVEL_PIXEL_FORMAT_Mono10,
     {{{"CV_16UC1", "COLOR_GRAY2BGR"},
       {"V4L2_PIX_FMT_Y10", "Y10 "},
       {"R10"},
       {"video/x-raw,format=GRAY16_LE", "", kDark},
       {"gray10le"}}}},
    {KORVEL_PIXEL_FORMAT_Mono12,
     {{{"CV_16UC1", "COLOR_GRAY2BGR"},
       {"V4L2_PIX_FMT_Y12", "Y12 "},
       {"R12"},
       {"video/x-raw,format=GRAY16_LE", "", kDark},
       {"gray12le"}}}},
    {KORVEL_PIXEL_FORMAT_Mono10g40Qrv, {{{}, {"V4L2_PIX_FMT_Y10P", "Y10P"}, {"R10_CSI2P"}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_Mono12g24Qrv,
     {{{}, {"V4L2_PIX_FMT_Y12P", "Y12P", kNewerThanLinux61}, {"R12_CSI2P", "", kNewerThanLibcamera003}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_BayerGR8,
     {{{"CV_8UC1", "COLOR_BayerGB2BGR"},
       {"V4L2_PIX_FMT_SGRBG8", "GRBG"},
       {"SGRBG8"},
       {"video/x-bayer,format=grbg"},
       {"bayer_grbg8"}}}},
    {KORVEL_PIXEL_FORMAT_BayerRG8,
     {{{"CV_8UC1", "COLOR_BayerBG2BGR"},
       {"V4L2_PIX_FMT_SRGGB8", "RGGB"},
       {"SRGGB8"},
       {"video/x-bayer,format=rggb"},
       {"bayer_rggb8"}}}},
    {KORVEL_PIXEL_FORMAT_BayerGB8,
     {{{"CV_8UC1", "COLOR_BayerGR2BGR"},
       {"V4L2_PIX_FMT_SGBRG8", "GBRG"},
       {"SGBRG8"},
       {"video/x-bayer,format=gbrg"},
       {"bayer_gbrg8"}}}},
    {KORVEL_PIXEL_FORMAT_BayerBG8,
     {{{"CV_8UC1", "COLOR_BayerRG2BGR"},
       {"V4L2_PIX_FMT_SBGGR8", "BA81"},
       {"SBGGR8"},
       {"video/x-bayer,format=bggr"},
       {"bayer_bggr8"}}}},
    {KORVEL_PIXEL_FORMAT_BayerGR10,
     {{{"CV_16UC1", "COLOR_BayerGB2BGR"},
       {"V4L2_PIX_FMT_SGRBG10", "BA10"},
       {"SGRBG10"},
       {"video/x-bayer,format=grbg10le", "", kFromGStreamer124},
       {"bayer_grbg16le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BayerRG10,
     {{{"CV_16UC1", "COLOR_BayerBG2BGR"},
       {"V4L2_PIX_FMT_SRGGB10", "RG10"},
       {"SRGGB10"},
       {"video/x-bayer,format=rggb10le", "", kFromGStreamer124},
       {"bayer_rggb16le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BayerGB10,
     {{{"CV_16UC1", "COLOR_BayerGR2BGR"},
       {"V4L2_PIX_FMT_SGBRG10", "GB10"},
       {"SGBRG10"},
       {"video/x-bayer,format=gbrg10le", "", kFromGStreamer124},
       {"bayer_gbrg16le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BayerBG10,
     {{{"CV_16UC1", "COLOR_BayerRG2BGR"},
       {"V4L2_PIX_FMT_SBGGR10", "BG10"},
       {"SBGGR10"},
       {"video/x-bayer,format=bggr10le", "", kFromGStreamer124},
       {"bayer_bggr16le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BayerGR12,
     {{{"CV_16UC1", "COLOR_BayerGB2BGR"},
       {"V4L2_PIX_FMT_SGRBG12", "BA12"},
       {"SGRBG12"},
       {"video/x-bayer,format=grbg12le", "", kFromGStreamer124},
       {"bayer_grbg16le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BayerRG12,
     {{{"CV_16UC1", "COLOR_BayerBG2BGR"},
       {"V4L2_PIX_FMT_SRGGB12", "RG12"},
       {"SRGGB12"},
       {"video/x-bayer,format=rggb12le", "", kFromGStreamer124},
       {"bayer_rggb16le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BayerGB12,
     {{{"CV_16UC1", "COLOR_BayerGR2BGR"},
       {"V4L2_PIX_FMT_SGBRG12", "GB12"},
       {"SGBRG12"},
       {"video/x-bayer,format=gbrg12le", "", kFromGStreamer124},
       {"bayer_gbrg16le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BayerBG12,
     {{{"CV_16UC1", "COLOR_BayerRG2BGR"},
       {"V4L2_PIX_FMT_SBGGR12", "BG12"},
       {"SBGGR12"},
       {"video/x-bayer,format=bggr12le", "", kFromGStreamer124},
       {"bayer_bggr16le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BayerRG10g40Qrv, {{{}, {"V4L2_PIX_FMT_SRGGB10P", "pRAA"}, {"SRGGB10_CSI2P"}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_BayerGB10g40Qrv, {{{}, {"V4L2_PIX_FMT_SGBRG10P", "pGAA"}, {"SGBRG10_CSI2P"}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_BayerGR10g40Qrv, {{{}, {"V4L2_PIX_FMT_SGRBG10P", "pgAA"}, {"SGRBG10_CSI2P"}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_BayerBG10g40Qrv, {{{}, {"V4L2_PIX_FMT_SBGGR10P", "pBAA"}, {"SBGGR10_CSI2P"}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_BayerRG12g24Qrv, {{{}, {"V4L2_PIX_FMT_SRGGB12P", "pRCC"}, {"SRGGB12_CSI2P"}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_BayerGB12g24Qrv, {{{}, {"V4L2_PIX_FMT_SGBRG12P", "pGCC"}, {"SGBRG12_CSI2P"}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_BayerGR12g24Qrv, {{{}, {"V4L2_PIX_FMT_SGRBG12P", "pgCC"}, {"SGRBG12_CSI2P"}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_BayerBG12g24Qrv, {{{}, {"V4L2_PIX_FMT_SBGGR12P", "pBCC"}, {"SBGGR12_CSI2P"}, {}, {}}}},
    {KORVEL_PIXEL_FORMAT_RGB8,
     {{{"CV_8UC3", "COLOR_RGB2BGR"},
       {"V4L2_PIX_FMT_RGB24", "RGB3"},
       {"BGR888"},
       {"video/x-raw,format=RGB"},
       {"rgb24"}}}},
    {KORVEL_PIXEL_FORMAT_BGR8,
     {{{"CV_8UC3"}, {"V4L2_PIX_FMT_BGR24", "BGR3"}, {"RGB888"}, {"video/x-raw,format=BGR"}, {"bgr24"}}}},
    {KORVEL_PIXEL_FORMAT_RGBa8,
     {{{"CV_8UC4", "COLOR_RGBA2BGR"},
       {"V4L2_PIX_FMT_RGBA32", "AB24"},
       {"ABGR8888"},
       {"video/x-raw,format=RGBA"},
       {"rgba"}}}},
    {KORVEL_PIXEL_FORMAT_BGRa8,
     {{{"CV_8UC4", "COLOR_BGRA2BGR"},
       {"V4L2_PIX_FMT_ABGR32", "AR24"},
       {"ARGB8888"},
       {"video/x-raw,format=BGRA"},
       {"bgra"}}}},
    {KORVEL_PIXEL_FORMAT_RGB10p32, {{{}, {}, {}, {}, {"x2bgr10le"}}}},
    {KORVEL_PIXEL_FORMAT_BGR10p32, {{{}, {}, {}, {}, {"x2rgb10le"}}}},
    {KORVEL_PIXEL_FORMAT_RGB10, {{{"CV_16UC3", "COLOR_RGB2BGR"}, {}, {}, {}, {"rgb48le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BGR10, {{{"CV_16UC3"}, {}, {}, {}, {"bgr48le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_RGBa10,
     {{{"CV_16UC4", "COLOR_RGBA2BGR"}, {}, {}, {"video/x-raw,format=RGBA64_LE", "", kDark}, {"rgba64le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BGRa10,
     {{{"CV_16UC4", "COLOR_BGRA2BGR"}, {}, {}, {"video/x-raw,format=BGRA64_LE", "", kDark}, {"bgra64le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_RGB12, {{{"CV_16UC3", "COLOR_RGB2BGR"}, {}, {}, {}, {"rgb48le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BGR12, {{{"CV_16UC3"}, {}, {}, {}, {"bgr48le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_RGBa12,
     {{{"CV_16UC4", "COLOR_RGBA2BGR"}, {}, {}, {"video/x-raw,format=RGBA64_LE", "", kDark}, {"rgba64le", "", kDark}}}},
    {KORVEL_PIXEL_FORMAT_BGRa12,
     {{{"CV_16UC4", "COLOR_BGRA2BGR"}, {}, {}, {"video/x-raw,format=BGRA64_LE", "", kDark}, {"bgra64le", "", kDark}}}},
};

constexpr VocabularyFacts kVocabularies[] = {
    {Vocabulary::kOpenCv, "opencv", "OpenCV", "cv::", "cvtColor"},
    {Vocabulary::kV4l2, "v4l2", "V4L2", "V4L2_PIX_FMT_", "fourcc"},
    {Vocabulary::kLibcamera, "libcamera", "libcamera", "formats::", ""},
    {Vocabulary::kGStreamer, "gstreamer", "GStreamer", "", ""},
    {Vocabulary::kFfmpeg, "ffmpeg", "FFmpeg", "AV_PIX_FMT_", ""},
};

constexpr std::string_view kAll = "all";

char Lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

bool IsSameLetters(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

// Whether a vocabulary's name for a format, the name without what all have before it, or its detail is the one that is
// looked for.
template <class IsSame>
bool IsCalled(const VocabularyFacts& vocabulary, const NamedFormat& format, std::string_view wanted, IsSame&& is_same) {
  const ForeignName foreign = NameIn(vocabulary.vocabulary, format);
  std::string_view bare = foreign.name;
  if (bare.starts_with(vocabulary.prefix)) bare.remove_prefix(vocabulary.prefix.size());
  if (IsSameLetters(wanted.substr(0, vocabulary.prefix.size()), vocabulary.prefix)) {
    wanted.remove_prefix(vocabulary.prefix.size());
  }
  if (foreign.name.empty() || wanted.empty()) return false;
  const std::string_view value = bare.substr(bare.rfind('=') + 1);  // of GStreamer's caps
  return is_same(wanted, bare) || is_same(wanted, value) || is_same(wanted, foreign.detail);
}

template <class IsSame>
std::vector<NamedFormat> Collect(std::string_view name, std::optional<Vocabulary> wanted, IsSame&& is_same) {
  std::vector<NamedFormat> formats;
  for (const NamedFormat& format : AllFormats()) {
    const bool is_called = std::any_of(std::begin(kVocabularies), std::end(kVocabularies), [&](const auto& vocabulary) {
      return (!wanted || vocabulary.vocabulary == *wanted) && IsCalled(vocabulary, format, name, is_same);
    });
    if (is_called) formats.push_back(format);
  }
  return formats;
}

}  // namespace

std::span<const VocabularyFacts> AllVocabularies() { return kVocabularies; }

std::string WordsOfAs(std::string_view separator) {
  std::string words;
  for (const VocabularyFacts& vocabulary : kVocabularies) words.append(vocabulary.option).append(separator);
  return words.append(kAll);
}

std::optional<Vocabulary> ParseVocabulary(std::string_view option) {
  for (const VocabularyFacts& vocabulary : kVocabularies) {
    if (option == vocabulary.option) return vocabulary.vocabulary;
  }
  if (option == kAll) return std::nullopt;
  throw ToolError("--as: there are no names for '" + std::string(option) + "'", "Give one of " + WordsOfAs(", ") + ".");
}

ForeignName NameIn(Vocabulary vocabulary, const NamedFormat& format) {
  const auto* const row =
      std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& r) { return r.format == format.id; });
  return row == std::end(kRows) ? ForeignName{} : row->names[static_cast<size_t>(vocabulary)];
}

std::vector<NamedFormat> FormatsCalled(std::string_view name, std::optional<Vocabulary> vocabulary) {
  for (const NamedFormat& format : AllFormats()) {
    if (format.name == name) return {format};
  }
  std::vector<NamedFormat> formats = Collect(name, vocabulary, std::equal_to<>());
  if (formats.empty()) formats = Collect(name, vocabulary, IsSameLetters);
  if (formats.empty()) formats.push_back(FindFormat(name, "NAME"));  // which tells those that come near
  return formats;
}

}  // namespace korvel::tools
