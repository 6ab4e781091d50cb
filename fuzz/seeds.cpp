#include "fuzz/seeds.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "fuzz/avi_seeds.h"
#include "fuzz/input_layouts.h"
#include "fuzz/seed_edits.h"
#include "tests/model/file_model.h"
#include "tests/support/jpeg_files.h"

namespace korvel_fuzz {
namespace {

using korvel_test::FileType;
using korvel_test::IdOf;
using korvel_test::kFileTypes;
using korvel_test::kFormatTable;
using korvel_test::ModelImage;

ModelImage SmallImage(uint32_t format, size_t width = 5, size_t height = 3) {
  return korvel_test::MakeFilledImage(format, width, height, korvel_test::Fill::kRandom, format);
}

std::vector<uint32_t> FormatsOf(FileType type) {
  std::vector<uint32_t> formats;
  for (const uint32_t format : korvel_test::PublicFormats()) {
    if (korvel_test::HasPlace(type, format)) formats.push_back(format);
  }
  return formats;
}

std::string NameOf(uint32_t format) { return std::string(korvel_test::FormatOf(format).name); }

// ------------------------------------------------------------------------------------------------------------- BMP --

constexpr HeaderField kBmpFields[] = {
    {"magic", 0, 2},         {"file_size", 2, 4},     {"reserved1", 6, 2},     {"reserved2", 8, 2},
    {"pixel_offset", 10, 4}, {"info_size", 14, 4},    {"width", 18, 4},        {"height", 22, 4},
    {"planes", 26, 2},       {"bits", 28, 2},         {"compression", 30, 4},  {"image_size", 34, 4},
    {"resolution_x", 38, 4}, {"resolution_y", 42, 4}, {"colours_used", 46, 4}, {"colours_important", 50, 4},
    {"mask_red", 54, 4},     {"mask_green", 58, 4},   {"mask_blue", 62, 4},
};

constexpr HeaderField kRawFields[] = {{"format", 0, 4}, {"byte_count", 4, 8}, {"width", 12, 8}, {"height", 20, 8}};

Seeds BmpSeeds() {
  Seeds seeds;
  for (const uint32_t format : FormatsOf(FileType::kBmp)) {
    const SeedBytes file = korvel_test::BmpFile(SmallImage(format));
    AppendWithCuts(seeds, NameOf(format), file);
    AppendFieldEdges(seeds, NameOf(format), file, kBmpFields);
  }
  // A height below 0 means lines from the top; a head may be longer than the pixels' offset tells.
  SeedBytes topDown = korvel_test::BmpFile(SmallImage(IdOf("RGB8")));
  SetNumber(topDown, kBmpFields[7], static_cast<uint32_t>(-3));
  AppendWithCuts(seeds, "RGB8_top_down", topDown);
  const korvel_test::BmpHeaderFields plain{.width = 5, .height = 3, .bitsPerPixel = 24};
  AppendWithCuts(seeds, "RGB8_without_masks", korvel_test::Joined({korvel_test::BmpHeader(plain), SeedBytes(54, 7)}));
  for (const uint32_t offset : {55u, 100u, 1090u}) {
    korvel_test::BmpHeaderFields moved = plain;
    moved.pixelOffset = offset;
    AppendWithCuts(seeds, "RGB8_pixels_at_" + Text(offset),
                   korvel_test::Joined({korvel_test::BmpHeader(moved), SeedBytes(offset, 7)}));
  }
  return seeds;
}

// ------------------------------------------------------------------------------------------------------------- RAW --

Seeds RawSeeds() {
  Seeds seeds;
  for (const uint32_t format : FormatsOf(FileType::kRaw)) {
    const SeedBytes file = korvel_test::RawFile(SmallImage(format));
    AppendWithCuts(seeds, NameOf(format), file);
    AppendFieldEdges(seeds, NameOf(format), file, kRawFields);
    SeedBytes longer = file;
    longer.push_back(0);
    seeds.push_back({NameOf(format) + "_one_byte_more", std::move(longer)});
  }
  for (const korvel_test::FormatRow& row : kFormatTable) {
    if (korvel_test::IsPublicFormat(row)) continue;
    seeds.push_back(
        {std::string(row.name), korvel_test::Joined({korvel_test::RawHeader(row.id, 15, 5, 3), SeedBytes(15, 1)})});
  }
  // Products that wrap at 64 bits to the bytes that are there.
  const uint64_t half = uint64_t{1} << 32;
  seeds.push_back({"pixels_wrap", korvel_test::Joined({korvel_test::RawHeader(IdOf("Mono8"), 0, half, half)})});
  seeds.push_back({"bytes_wrap", korvel_test::RawHeader(IdOf("RGBa12"), 0, half, half / 8)});
  seeds.push_back({"bits_wrap", korvel_test::RawHeader(IdOf("Mono12p"), 0, half, half / 4)});
  return seeds;
}

// ------------------------------------------------------------------------------------------------------------- PNG --

struct PngKind {
  const char* name;
  uint8_t colourType;
  size_t channels;
  std::vector<uint8_t> depths;
};

const std::vector<PngKind> kPngKinds = {
    {"grey", 0, 1, {1, 2, 4, 8, 16}}, {"rgb", 2, 3, {8, 16}},       {"palette", 3, 1, {1, 2, 4, 8}},
    {"grey_alpha", 4, 2, {8, 16}},    {"rgb_alpha", 6, 4, {8, 16}},
};

korvel_test::PngRecipe PngOf(const PngKind& kind, uint8_t depth, bool interlaced) {
  korvel_test::PngRecipe recipe{.depth = depth, .colourType = kind.colourType, .interlaced = interlaced};
  // Only an image of 5 by 5 pixels has all passes.
  recipe.width = 5;
  recipe.height = interlaced ? 5 : 3;
  if (kind.colourType == 3) recipe.palette = SeedBytes(size_t{3} << depth, 0x40);
  korvel_test::ModelRandom random(depth);
  const size_t samples = size_t{recipe.width} * recipe.height * kind.channels;
  for (size_t i = 0; i < samples; ++i) {
    recipe.samples.push_back(static_cast<uint16_t>(random.Below(uint32_t{1} << depth)));
  }
  return recipe;
}

struct SignificantBits {
  const char* name;
  SeedBytes perChannel;  // empty for no chunk
};

const std::vector<SignificantBits> kSignificantBits = {
    {"no_sbit", {}},
    {"sbit_8", {8, 8, 8, 8}},
    {"sbit_10", {10, 10, 10, 10}},
    {"sbit_12", {12, 12, 12, 12}},
    {"sbit_mixed", {10, 12, 8, 5}},
    {"sbit_zero", {0, 0, 0, 0}},
    {"sbit_17", {17, 17, 17, 17}},
};

SeedBytes PngFromChunks(std::initializer_list<SeedBytes> chunks) {
  SeedBytes file = korvel_test::PngSignature();
  for (const SeedBytes& chunk : chunks) file.insert(file.end(), chunk.begin(), chunk.end());
  return file;
}

// The chunks of a file behind its header chunk.
SeedBytes BehindHeader(const SeedBytes& file) { return {file.begin() + 33, file.end()}; }

Seeds PngSeeds() {
  Seeds seeds;
  for (const PngKind& kind : kPngKinds) {
    for (const uint8_t depth : kind.depths) {
      for (const bool interlaced : {false, true}) {
        for (const SignificantBits& bits : kSignificantBits) {
          korvel_test::PngRecipe recipe = PngOf(kind, depth, interlaced);
          const size_t channels = kind.colourType == 3 ? 3 : kind.channels;
          recipe.significantBits = bits.perChannel;
          recipe.significantBits.resize(std::min(channels, recipe.significantBits.size()));
          const std::string name = kind.name + Text(depth) + (interlaced ? "_interlaced_" : "_") + bits.name;
          AppendWithCuts(seeds, name, korvel_test::MakePng(recipe));
        }
      }
    }
  }

  using korvel_test::PngChunk;
  using korvel_test::PngHeaderChunk;
  const SeedBytes grey = korvel_test::MakePng(PngOf(kPngKinds[0], 8, false));
  const SeedBytes rest = BehindHeader(grey);
  for (const uint32_t side : {0u, 1u, 4u, 6u, 1'000'000u, 1'000'001u, 0x7FFF'FFFFu, 0x8000'0000u, 0xFFFF'FFFFu}) {
    seeds.push_back({"width_" + Text(side), PngFromChunks({PngHeaderChunk(side, 3, 8, 0), rest})});
    seeds.push_back({"height_" + Text(side), PngFromChunks({PngHeaderChunk(5, side, 8, 0), rest})});
    seeds.push_back({"both_sides_" + Text(side), PngFromChunks({PngHeaderChunk(side, side, 8, 0), rest})});
  }
  for (const uint8_t depth : std::initializer_list<uint8_t>{0, 3, 5, 32, 255}) {
    seeds.push_back({"depth_" + Text(depth), PngFromChunks({PngHeaderChunk(5, 3, depth, 0), rest})});
  }
  for (const uint8_t colourType : std::initializer_list<uint8_t>{1, 5, 7, 255}) {
    seeds.push_back({"colour_type_" + Text(colourType), PngFromChunks({PngHeaderChunk(5, 3, 8, colourType), rest})});
  }
  seeds.push_back({"interlace_2", PngFromChunks({PngHeaderChunk(5, 3, 8, 0, 2), rest})});
  const SeedBytes header = PngHeaderChunk(5, 3, 8, 0);
  for (const char* name :
       {"tRNS", "gAMA", "cHRM", "iCCP", "sRGB", "tEXt", "zTXt", "iTXt", "bKGD", "hIST", "pHYs", "sPLT", "tIME",
        "eXIf", "oFFs", "pCAL", "sCAL", "sBIT", "PLTE", "IHDR", "IDAT", "IEND", "acTL", "korv", "KORV"}) {
    for (const size_t size : {size_t{0}, size_t{1}, size_t{2}, size_t{6}, size_t{64}}) {
      const SeedBytes chunk = PngChunk(name, SeedBytes(size, uint8_t{1}));
      seeds.push_back({std::string(name) + "_of_" + Text(size), PngFromChunks({header, chunk, rest})});
      seeds.push_back(
          {std::string(name) + "_of_" + Text(size) + "_twice", PngFromChunks({header, chunk, chunk, rest})});
      seeds.push_back({std::string(name) + "_of_" + Text(size) + "_behind",
                       korvel_test::Joined({SeedBytes(grey.begin(), grey.end() - 12), chunk, PngChunk("IEND", {})})});
    }
  }
  return seeds;
}

// ------------------------------------------------------------------------------------------------------------ JPEG --

Seeds JpegSeeds() {
  struct Kind {
    const char* name;
    J_COLOR_SPACE pixels;
    int components;
    J_COLOR_SPACE inFile;
  };
  constexpr Kind kKinds[] = {{"grey", JCS_GRAYSCALE, 1, JCS_GRAYSCALE},
                             {"ycbcr", JCS_RGB, 3, JCS_YCbCr},
                             {"rgb", JCS_RGB, 3, JCS_RGB},
                             {"cmyk", JCS_CMYK, 4, JCS_CMYK},
                             {"ycck", JCS_CMYK, 4, JCS_YCCK},
                             {"unknown", JCS_UNKNOWN, 2, JCS_UNKNOWN}};
  Seeds seeds;
  for (const Kind& kind : kKinds) {
    for (const bool progressive : {false, true}) {
      for (const bool arithmetic : {false, true}) {
        korvel_test::JpegRecipe recipe{.width = 17, .height = 9, .pixels = kind.pixels, .components = kind.components};
        recipe.progressive = progressive;
        recipe.arithmetic = arithmetic;
        if (kind.inFile != JCS_UNKNOWN) recipe.inFile = kind.inFile;
        korvel_test::ModelRandom random(static_cast<uint64_t>(kind.components));
        recipe.bytes.resize(size_t{17} * 9 * static_cast<size_t>(kind.components));
        for (uint8_t& byte : recipe.bytes) byte = static_cast<uint8_t>(random.Below(64) + 96);
        const std::string name =
            std::string(kind.name) + (progressive ? "_progressive" : "_baseline") + (arithmetic ? "_arithmetic" : "");
        const SeedBytes file = korvel_test::EncodeJpeg(recipe);
        AppendWithCuts(seeds, name, file);
        // Behind its marker, the frame header has length, precision, height, width, components, ids and samplings.
        for (const uint8_t marker : std::initializer_list<uint8_t>{0xC0, 0xC1, 0xC2, 0xC9, 0xCA}) {
          const SeedBytes bytes = {0xFF, marker};
          const auto found = std::search(file.begin(), file.end(), bytes.begin(), bytes.end());
          if (found == file.end()) continue;
          const size_t frame = static_cast<size_t>(found - file.begin()) + 2;
          for (size_t offset = 0; offset < 11; ++offset) {
            for (const uint8_t value : std::initializer_list<uint8_t>{0, 1, 0x11, 0x44, 0x7F, 0x80, 0xFF}) {
              SeedBytes changed = file;
              changed.at(frame + offset) = value;
              seeds.push_back({name + "_frame_" + Text(offset) + "_is_" + Text(value), std::move(changed)});
            }
          }
        }
      }
    }
  }
  return seeds;
}

// ----------------------------------------------------------------------------------------------------- other inputs --

template <class Layout, class Head>
SeedBytes WithHead(const Layout& layout, const Head& head, const SeedBytes& rest) {
  const auto bytes = layout.Encode(head);
  SeedBytes input(bytes.begin(), bytes.end());
  input.insert(input.end(), rest.begin(), rest.end());
  return input;
}

// Every format that a file can hold, asked for as every format there is.
Seeds ReadAsFormatSeeds() {
  Seeds seeds;
  for (size_t i = 0; i < std::size(kFileTypes); ++i) {
    const FileType type = kFileTypes[i];
    ReadRequest request{.fileType = static_cast<uint8_t>(i)};
    for (const uint32_t format : FormatsOf(type)) {
      if (korvel_test::ReadBackFormat(type, format) != format) continue;
      const SeedBytes file = FileOf(type, SmallImage(format));
      for (const korvel_test::FormatRow& requested : kFormatTable) {
        request.format = requested.id;
        seeds.push_back({NameOf(format) + korvel_test::EndingOf(type) + "_as_" + std::string(requested.name),
                         WithHead(kReadRequestLayout, request, file)});
      }
      request.format = 0x0108'0002;
      seeds.push_back(
          {NameOf(format) + korvel_test::EndingOf(type) + "_as_nothing", WithHead(kReadRequestLayout, request, file)});
    }
  }
  return seeds;
}

// Every format into every file type, at widths that leave every remainder of the line's length.
Seeds RoundTripSeeds() {
  Seeds seeds;
  for (size_t type = 0; type < std::size(kFileTypes); ++type) {
    const std::string ending = korvel_test::EndingOf(kFileTypes[type]);
    for (size_t format = 0; format < kFormatTable.size(); ++format) {
      WriteRequest request{.fileType = static_cast<uint8_t>(type), .format = static_cast<uint8_t>(format)};
      const std::string name = std::string(kFormatTable[format].name) + ending;
      request.quality = 100;
      for (const uint8_t width : std::initializer_list<uint8_t>{0, 1, 2, 3, 4, 16}) {
        request.byEnding = width;
        request.width = width;
        request.height = static_cast<uint8_t>(width / 2);
        request.seed = width;
        seeds.push_back({name + "_" + Text(width + 1u) + "_wide", WithHead(kWriteRequestLayout, request, {})});
      }
      request.byEnding = 0;
      for (const uint32_t quality :
           {0u, 1u, 9u, 10u, 55u, 99u, 101u, 119u, 120u, 0x7FFF'FFFFu, 0x8000'0000u, 0xFFFF'FFFFu}) {
        request.quality = quality;
        seeds.push_back({name + "_quality_" + Text(quality), WithHead(kWriteRequestLayout, request, {})});
      }
    }
  }
  return seeds;
}

// Calls are bytes, all of them meaningful: each function once with each kind of first argument, and sequences.
Seeds ExportedFunctionsSeeds() {
  Seeds seeds;
  korvel_test::ModelRandom random(1);
  const auto randomBytes = [&](size_t count) {
    SeedBytes bytes(count);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random.Next());
    return bytes;
  };
  constexpr uint8_t kMoreThanFunctions = 160;
  for (uint8_t function = 0; function < kMoreThanFunctions; ++function) {
    for (uint8_t argument = 0; argument < 16; ++argument) {
      seeds.push_back({"function_" + Text(function) + "_argument_" + Text(argument),
                       korvel_test::Joined({{function, argument}, randomBytes(40)})});
    }
  }
  constexpr size_t kSequences = 500;
  for (size_t i = 0; i < kSequences; ++i) seeds.push_back({"sequence_" + Text(i), randomBytes(400)});
  return seeds;
}

// --------------------------------------------------------------------------------------------------------- targets --

std::vector<SeedBytes> IdWords() {
  std::vector<SeedBytes> words;
  for (const korvel_test::FormatRow& row : kFormatTable) {
    SeedBytes word(4);
    SetNumber(word, {"", 0, 4}, row.id);
    words.push_back(std::move(word));
  }
  return words;
}

std::vector<SeedBytes> BmpWords() {
  std::vector<SeedBytes> words;
  for (const uint32_t format : FormatsOf(FileType::kBmp)) {
    if (const auto& masks = korvel_test::PlaceInFiles(format).bmp.masks) words.push_back(korvel_test::BmpMasks(*masks));
  }
  for (const uint32_t number : {54u, 66u, 1078u, 1090u, 256u}) {
    SeedBytes word(4);
    SetNumber(word, {"", 0, 4}, number);
    words.push_back(std::move(word));
  }
  return words;
}

std::vector<SeedBytes> PngWords() {
  std::vector<SeedBytes> words;
  for (const char* name : {"IHDR", "PLTE", "IDAT", "IEND", "sBIT", "tRNS", "gAMA", "iCCP", "zTXt", "iTXt", "tEXt",
                           "sPLT", "hIST", "eXIf"}) {
    words.emplace_back(name, name + 4);
  }
  return words;
}

std::vector<SeedBytes> JpegWords() {
  std::vector<SeedBytes> words;
  for (const uint8_t marker : std::initializer_list<uint8_t>{0xC0, 0xC1, 0xC2, 0xC4, 0xC9, 0xCA, 0xCC, 0xD0, 0xD7, 0xD8,
                                                             0xD9, 0xDA, 0xDB, 0xDC, 0xDD, 0xE0, 0xEE, 0xFE}) {
    words.push_back({0xFF, marker});
  }
  words.push_back({'A', 'd', 'o', 'b', 'e'});
  words.push_back({'J', 'F', 'I', 'F', 0});
  return words;
}

std::vector<SeedBytes> NoWords() { return {}; }

struct Target {
  std::string_view name;
  Seeds (*seeds)();
  std::vector<SeedBytes> (*words)();
};

constexpr Target kTargets[] = {
    {"read_bmp", BmpSeeds, BmpWords},
    {"read_png", PngSeeds, PngWords},
    {"read_jpeg", JpegSeeds, JpegWords},
    {"read_raw", RawSeeds, IdWords},
    {"read_avi", AviSeeds, AviWords},
    {"repair_avi", RepairAviSeeds, AviWords},
    {"round_trip", RoundTripSeeds, NoWords},
    {"read_as_format", ReadAsFormatSeeds, IdWords},
    {"exported_functions", ExportedFunctionsSeeds, NoWords},
};

const Target& FindTarget(std::string_view name) {
  for (const Target& target : kTargets) {
    if (target.name == name) return target;
  }
  throw std::invalid_argument("no target " + std::string(name));
}

}  // namespace

SeedBytes FileOf(FileType type, const ModelImage& image) {
  switch (type) {
    case FileType::kBmp:
      return korvel_test::BmpFile(image);
    case FileType::kPng: {
      const korvel_test::FormatInPng& place = korvel_test::PlaceInFiles(image.format).png;
      korvel_test::PngRecipe recipe{.width = static_cast<uint32_t>(image.width),
                                    .height = static_cast<uint32_t>(image.height),
                                    .depth = place.depth,
                                    .colourType = place.colourType,
                                    .samples = korvel_test::PngSamples(image)};
      if (place.significantBits != 0) {
        const uint32_t channels = korvel_test::FormatOf(image.format).channels;
        recipe.significantBits.assign(channels, place.significantBits);
        for (uint16_t& sample : recipe.samples) sample = static_cast<uint16_t>(sample << (16 - place.significantBits));
      }
      return korvel_test::MakePng(recipe);
    }
    case FileType::kJpeg:
      return korvel_test::EncodeJpeg(image, 75);
    case FileType::kRaw:
      return korvel_test::RawFile(image);
  }
  throw std::logic_error("no such file type");
}

std::vector<Seed> SeedsOf(std::string_view target) { return FindTarget(target).seeds(); }

std::vector<SeedBytes> WordsOf(std::string_view target) { return FindTarget(target).words(); }

}  // namespace korvel_fuzz
