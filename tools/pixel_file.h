// Files of bare pixels, as cameras and their programs dump them, and the writing of any bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace korvel::tools {

struct PixelFileRequest {
  std::string path;
  uint64_t skip = 0;      // bytes before the first pixel
  size_t byte_count = 0;  // bytes of the pixels
  std::string pixels;     // what they are, for messages: "640x480 pixels of Mono8"
};

struct PixelFile {
  std::unique_ptr<uint8_t[]> bytes;
  uint64_t bytes_left = 0;  // of a regular file, those behind the pixels
};

// Reads exactly byte_count bytes behind the first skip ones. Regular files, pipes and devices serve. Throws ToolError
// with the bytes that were expected and found.
PixelFile ReadPixelFile(const PixelFileRequest& request);

// Writes count bytes, and nothing else, to a file, in place of one that is there. Throws ToolError.
void WriteBytes(const std::string& path, const uint8_t* bytes, size_t count);

}  // namespace korvel::tools
