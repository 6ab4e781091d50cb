// Still-image files worked out byte by byte: what a file of an image holds, what comes back when it is read, and files
// as other programs could have made them. Tests compare the library with it, so it shares nothing with the library nor
// with the codecs, except zlib.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/model/conversion_model.h"
#include "tests/model/format_table.h"

namespace korvel_test {

using Bytes = std::vector<uint8_t>;

enum class FileType { kBmp, kPng, kJpeg, kRaw };

inline constexpr FileType kFileTypes[] = {FileType::kBmp, FileType::kPng, FileType::kJpeg, FileType::kRaw};

// The first ending of the type, with its dot.
const std::string& EndingOf(FileType type);

// -------------------------------------------------------------------------------------- what goes into which file --

struct FormatInBmp {
  uint16_t bits;  // 0 if BMP has no place for the format
  uint32_t compression;
  std::optional<std::array<uint32_t, 3>> masks;  // red, green, blue
  bool colourTable;
  uint32_t readBack;
};

struct FormatInPng {
  uint8_t depth;  // 0 if PNG has no place for the format
  uint8_t colourType;
  uint8_t significantBits;  // of every channel; 0 without the chunk
  bool blueFirst;
  uint32_t readBack;
};

struct FormatInJpeg {
  uint8_t components;  // 0 if JPEG has no place for the format
  bool blueFirst;
  uint32_t readBack;
};

struct FormatInFiles {
  uint32_t id;
  FormatInBmp bmp;
  FormatInPng png;
  FormatInJpeg jpeg;
};

// For the public formats and Invalid. A RAW file has a place for every public format.
const FormatInFiles& PlaceInFiles(uint32_t format);
bool HasPlace(FileType type, uint32_t format);

// The format in which an image of a format comes back without a request.
uint32_t ReadBackFormat(FileType type, uint32_t format);

// The format of the image when a file in which a format was found is read as another one; nothing if that is refused.
std::optional<uint32_t> FormatWhenReadAs(FileType type, uint32_t found, uint32_t requested);

// The image that comes back without a request; not for JPEG, which changes pixels.
ModelImage ReadBack(FileType type, const ModelImage& image);

// ------------------------------------------------------------------------------------------------------- BMP files --

struct BmpHeaderFields {
  uint16_t magic = 19778;
  uint32_t fileSize = 0;
  uint16_t reserved1 = 0;
  uint16_t reserved2 = 0;
  uint32_t pixelOffset = 54;
  uint32_t infoSize = 40;
  int32_t width = 0;
  int32_t height = 0;
  uint16_t planes = 1;
  uint16_t bitsPerPixel = 0;
  uint32_t compression = 0;
  uint32_t imageSize = 0;
  uint32_t resolutionX = 0;
  uint32_t resolutionY = 0;
  uint32_t coloursUsed = 0;
  uint32_t coloursImportant = 0;
};

inline constexpr size_t kBmpHeaderBytes = 54;

Bytes BmpHeader(const BmpHeaderFields& fields);
Bytes BmpMasks(const std::array<uint32_t, 3>& masks);
Bytes GreyColourTable();

// The bytes that follow a line of so many bytes in a BMP file.
size_t BmpPadding(size_t lineBytes);

// The whole file of an image.
Bytes BmpFile(const ModelImage& image);

// ------------------------------------------------------------------------------------------------------- RAW files --

inline constexpr size_t kRawHeaderBytes = 28;

Bytes RawHeader(uint32_t format, uint64_t byteCount, uint64_t width, uint64_t height);
Bytes RawFile(const ModelImage& image);

// ------------------------------------------------------------------------------------------------------- PNG files --

struct PngContent {
  uint32_t width = 0;
  uint32_t height = 0;
  uint8_t depth = 0;
  uint8_t colourType = 0;
  uint8_t interlace = 0;
  Bytes significantBits;            // the content of the sBIT chunk
  std::vector<std::string> chunks;  // names in file order, a run of IDAT as one
  int levelClass = 0;               // what zlib notes of the compression level: 0 fastest to 3 slowest
  std::vector<uint16_t> samples;    // of 8 or 16 bits, from the first row to the last
};

// Throws std::runtime_error unless the bytes are a PNG file of 8 or 16 bits without interlacing whose checksums hold.
PngContent ParsePng(const Bytes& file);

// The samples that a PNG file of an image holds, in the file's order of channels, before they are shifted to the top.
std::vector<uint16_t> PngSamples(const ModelImage& image);

struct PngRecipe {
  uint32_t width = 0;
  uint32_t height = 0;
  uint8_t depth = 8;
  uint8_t colourType = 0;
  bool interlaced = false;
  Bytes significantBits = {};          // an sBIT chunk, unless empty
  Bytes palette = {};                  // a PLTE chunk, unless empty
  Bytes transparency = {};             // a tRNS chunk, unless empty
  std::vector<uint16_t> samples = {};  // width * height * channels of them
};

Bytes MakePng(const PngRecipe& recipe);

// Pieces of a PNG file, for those that no writer makes.
Bytes PngSignature();
Bytes PngChunk(std::string_view name, const Bytes& content);
Bytes PngHeaderChunk(uint32_t width, uint32_t height, uint8_t depth, uint8_t colourType, uint8_t interlace = 0);

Bytes Joined(std::initializer_list<Bytes> parts);

}  // namespace korvel_test
