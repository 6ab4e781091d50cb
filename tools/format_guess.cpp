#include "format_guess.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <tuple>
#include <utility>

#include "colours.h"
#include "image_input.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "progress_bar.h"
#include "samples.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

// Differences between the diagonals of cells have to be this much above those that detail makes before they are taken
// for the colours of a mosaic. Grey pictures reach 1; mosaics of coloured scenes 10 and more.
constexpr double kColourLimit = 1.3;

// Above it, of steps between neighbours to those between any pixels, nothing of a picture is left.
constexpr double kNoPicture = 0.6;

// Lines that differ from each other this much more than columns do are not those of one picture.
constexpr double kWrongWidth = 3;

size_t ChannelsOf(const NamedFormat& format) {
  size_t channels = 0;
  Require(KORVEL_PixelFormat_GetNumChannels(format.id, &channels), "look up the number of channels", kVersionAdvice);
  return channels;
}

// The formats that make the same samples of the same bytes, and differ in what these mean.
std::vector<std::vector<NamedFormat>> Layouts() {
  std::vector<std::vector<NamedFormat>> layouts;
  const auto key = [](const NamedFormat& format) { return std::tuple(format.layout, format.bits, ChannelsOf(format)); };
  for (const NamedFormat& format : AllFormats()) {
    const auto known = std::find_if(layouts.begin(), layouts.end(),
                                    [&](const auto& layout) { return key(layout.front()) == key(format); });
    if (known == layouts.end()) {
      layouts.push_back({format});
    } else {
      known->push_back(format);
    }
  }
  return layouts;
}

void Refuse(Findings& findings, const std::vector<NamedFormat>& formats, const std::string& reason) {
  auto known = std::find_if(findings.refusals.begin(), findings.refusals.end(),
                            [&](const Refusal& refusal) { return refusal.reason == reason; });
  if (known == findings.refusals.end()) known = findings.refusals.insert(known, {.formats = {}, .reason = reason});
  known->formats.insert(known->formats.end(), formats.begin(), formats.end());
}

// Why words of 16 bits aren't samples of this depth, and what they may be. Nothing where they can be.
std::optional<std::string> BeyondRange(const Samples& samples) {
  const unsigned maximum = (1U << samples.format.bits) - 1;
  uint16_t greatest = 0;
  uint16_t greatest_swapped = 0;
  unsigned all = 0;
  for (const uint16_t value : samples.values) {
    greatest = std::max(greatest, value);
    greatest_swapped = std::max(greatest_swapped, static_cast<uint16_t>(value << 8 | value >> 8));
    all |= value;
  }
  if (greatest <= maximum) return std::nullopt;
  const std::string bits = std::to_string(samples.format.bits) + " bits";
  std::string reason = "holds values up to " + std::to_string(greatest) + ", more than " + bits;
  const unsigned shift = 16 - samples.format.bits;
  if ((all & ((1U << shift) - 1)) == 0) {
    reason += "; the low " + std::to_string(shift) + " bits are 0: shift all words right by them";
  } else if (greatest_swapped <= maximum) {
    reason += "; with the bytes of each word exchanged they fit: it may be big-endian";
  }
  return reason;
}

double Warmth(Samples& samples, const NamedFormat& format) {
  samples.format = format;
  double warmth = 0;
  for (const ColourStatistics& row : Measure(samples)) {
    if (row.colour == Colour::kRed) warmth += row.mean;
    if (row.colour == Colour::kBlue) warmth -= row.mean;
  }
  return warmth;
}

bool GreenOnFallingDiagonal(const NamedFormat& format) { return ColourAt(format, 0, 0, 0) == Colour::kGreen; }

// What of the differences within cells a format doesn't explain.
double Unexplained(const NamedFormat& format, const CellDifferences& cells) {
  const double beyond_chance = cells.diagonals - kColourLimit * cells.chance;
  if (format.family == PixelFamily::kMono) return std::max(0.0, beyond_chance);
  if (!IsBayer(format)) return 0;
  const double greens = GreenOnFallingDiagonal(format) ? cells.falling : cells.rising;
  double least = std::min(cells.falling, cells.rising);
  if (std::abs(cells.falling - cells.rising) <= cells.chance) least = greens;  // too near to each other to tell
  return std::max(0.0, -beyond_chance) + greens - least;
}

// The places in the file where the pixels may begin.
std::vector<uint64_t> PossibleSkips(const Dump& dump, uint64_t frame_bytes) {
  std::vector<uint64_t> skips{dump.skip};
  const uint64_t left = dump.bytes - dump.skip - frame_bytes;
  if (left > 0 && !dump.skip_is_known) skips.push_back(dump.skip + left);
  return skips;
}

void TryLayout(const Dump& dump, const std::vector<NamedFormat>& layout, uint64_t skip, Findings& findings) {
  const NamedFormat& first = layout.front();
  const std::string size = std::to_string(dump.size.width) + "x" + std::to_string(dump.size.height);
  LoadedImage loaded =
      LoadImage(dump.path, {.format = std::string(first.name), .size = size, .skip = std::to_string(skip)});
  Unpack(loaded.image);
  Samples samples = ReadSamples(loaded.image);
  loaded = {};
  if (first.layout == PixelLayout::kUnpacked && first.bits > 8) {
    if (const auto reason = BeyondRange(samples)) {
      const bool is_one_place = dump.skip_is_known || findings.size_fits;
      Refuse(findings, layout, is_one_place ? *reason : "behind " + std::to_string(skip) + " bytes " + *reason);
      return;
    }
  }
  // The depths that these words may have make one range of them, so that all have the same score.
  unsigned maximum = (1U << first.bits) - 1;
  if (first.layout == PixelLayout::kUnpacked && first.bits == 12) {
    constexpr unsigned kTenBits = 1023;
    if (*std::max_element(samples.values.begin(), samples.values.end()) <= kTenBits) maximum = kTenBits;
  }
  const Roughness roughness = MeasureRoughness(samples, maximum);
  const CellDifferences cells = samples.channels == 1 ? MeasureCells(samples, maximum) : CellDifferences{};
  for (const NamedFormat& format : layout) {
    findings.guesses.push_back({.format = format,
                                .skip = skip,
                                .roughness = roughness,
                                .score = roughness.Mean() + Unexplained(format, cells),
                                .warmth = Warmth(samples, format)});
  }
}

// Scores of what can't be told apart are equal, since they come from the same numbers.
void Rank(std::vector<Guess>& guesses) {
  const auto is_mosaic = [](const Guess& guess) { return IsBayer(guess.format); };
  std::stable_sort(guesses.begin(), guesses.end(), [&](const Guess& a, const Guess& b) {
    if (a.score != b.score) return a.score < b.score;
    if (a.format.bits != b.format.bits) return a.format.bits < b.format.bits;
    if (is_mosaic(a) != is_mosaic(b)) return is_mosaic(b);
    return a.warmth > b.warmth;
  });
  for (size_t i = 0; i < guesses.size(); ++i) {
    const bool is_tied = i > 0 && guesses[i].score == guesses[i - 1].score;
    guesses[i].rank = is_tied ? guesses[i - 1].rank : i + 1;
  }
}

// What can't be told of those of the first rank.
std::vector<std::string> Doubts(const std::vector<Guess>& guesses) {
  const Guess& best = guesses.front();
  bool other_depth = false;
  bool other_order = false;
  bool other_skip = false;
  for (const Guess& guess : guesses) {
    if (guess.rank != best.rank) break;
    other_depth = other_depth || guess.format.bits != best.format.bits;
    other_order = other_order || guess.format.family != best.format.family;
    other_skip = other_skip || guess.skip != best.skip;
  }
  std::vector<std::string> doubts;
  if (best.format.family == PixelFamily::kMono) {
    doubts.emplace_back("No colours are seen; a mosaic of a scene without any would look the same.");
  } else if (other_order) {
    doubts.emplace_back(
        "The order of the colours cannot be told within the first rank; its first has more red than blue, as most "
        "scenes have.");
  }
  if (other_depth) doubts.emplace_back("10 bits or 12 cannot be told: no value is above 1023.");
  if (other_skip) doubts.emplace_back("Whether bytes lie before the pixels or behind them cannot be told.");
  if (best.roughness.Mean() > kNoPicture * best.roughness.anywhere) {
    doubts.emplace_back(
        "Neighbours differ about as much as pixels far apart: this is noise, as in a dark frame, or the size or the "
        "begin of the pixels is another one.");
  } else if (best.roughness.down > kWrongWidth * best.roughness.across) {
    doubts.emplace_back("Lines differ far more from each other than columns do: check the width.");
  }
  return doubts;
}

}  // namespace

uint64_t FrameBytes(const NamedFormat& format, const PictureSize& size) {
  size_t bits = 0;
  Require(KORVEL_PixelFormat_GetNumStorageBitsPerPixel(format.id, &bits), "compute the size of a frame",
          kVersionAdvice);
  const uint64_t pixels = size.width * size.height;  // fits: ParseSize saw to it
  if (pixels > (std::numeric_limits<uint64_t>::max() - 7) / bits) return std::numeric_limits<uint64_t>::max();
  return (pixels * bits + 7) / 8;
}

Findings GuessFormat(const Dump& dump) {
  const std::vector<std::vector<NamedFormat>> layouts = Layouts();
  const uint64_t available = dump.bytes - std::min(dump.bytes, dump.skip);
  Findings findings;
  findings.size_fits = std::any_of(layouts.begin(), layouts.end(), [&](const auto& layout) {
    return FrameBytes(layout.front(), dump.size) == available;
  });
  const ProgressBar bar("trying", layouts.size());
  for (size_t i = 0; i < layouts.size(); ++i) {
    bar.Show(i);
    const uint64_t frame_bytes = FrameBytes(layouts[i].front(), dump.size);
    if (frame_bytes > available || (findings.size_fits && frame_bytes != available)) {
      Refuse(findings, layouts[i], "takes " + std::to_string(frame_bytes) + " bytes");
      continue;
    }
    for (const uint64_t skip : PossibleSkips(dump, frame_bytes)) TryLayout(dump, layouts[i], skip, findings);
  }
  Rank(findings.guesses);
  if (!findings.guesses.empty()) findings.doubts = Doubts(findings.guesses);
  return findings;
}

}  // namespace korvel::tools
