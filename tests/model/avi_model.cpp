#include "tests/model/avi_model.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace korvel_test {
namespace {

constexpr size_t kFramesBetweenFixUps = 126;
constexpr uint32_t kMjpg = 0x47504A4D;  // "MJPG", its first letter in the low byte

void Put16(AviBytes& bytes, size_t offset, uint32_t value) {
  bytes.at(offset) = static_cast<uint8_t>(value);
  bytes.at(offset + 1) = static_cast<uint8_t>(value >> 8);
}

void Put32(AviBytes& bytes, size_t offset, size_t value) {
  Put16(bytes, offset, static_cast<uint32_t>(value) & 0xFFFF);
  Put16(bytes, offset + 2, static_cast<uint32_t>(value) >> 16);
}

void PutText(AviBytes& bytes, size_t offset, const std::string& text) {
  for (size_t i = 0; i < text.size(); ++i) bytes.at(offset + i) = static_cast<uint8_t>(text[i]);
}

uint16_t Get16(const AviBytes& bytes, size_t offset) {
  return static_cast<uint16_t>(bytes.at(offset) | bytes.at(offset + 1) << 8);
}

uint32_t Get32(const AviBytes& bytes, size_t offset) {
  return uint32_t{Get16(bytes, offset)} | uint32_t{Get16(bytes, offset + 2)} << 16;
}

size_t LargestOf(const std::vector<AviBytes>& frames, size_t count) {
  size_t largest = 0;
  for (size_t i = 0; i < count; ++i) largest = std::max(largest, frames[i].size());
  return largest;
}

// The 56 bytes of "avih" when so many frames have been written.
AviBytes MainHeader(const AviModel& model, size_t frameCount) {
  AviBytes bytes(56);
  Put32(bytes, 0, model.microSecondsPerFrame);
  Put32(bytes, 12, model.flags);
  Put32(bytes, 16, frameCount);
  Put32(bytes, 24, 1);  // streams
  Put32(bytes, 28, LargestOf(model.frames, frameCount));
  Put32(bytes, 32, model.width);
  Put32(bytes, 36, model.height);
  return bytes;
}

// All that comes before the first frame.
AviBytes Headers(const AviModel& model, size_t frameCount, size_t frameByteCount) {
  AviBytes bytes(kAviHeaderByteCount);
  PutText(bytes, 0, "RIFF");
  Put32(bytes, 4, 236 + frameByteCount + 8 + 16 * frameCount);
  PutText(bytes, 8, "AVI ");

  PutText(bytes, 12, "LIST");
  Put32(bytes, 16, 212);
  PutText(bytes, 20, "hdrl");
  PutText(bytes, 24, "avih");
  Put32(bytes, 28, 56);
  const AviBytes mainHeader = MainHeader(model, frameCount);
  std::copy(mainHeader.begin(), mainHeader.end(), bytes.begin() + 32);

  PutText(bytes, 88, "LIST");
  Put32(bytes, 92, 136);
  PutText(bytes, 96, "strl");
  PutText(bytes, 100, "strh");
  Put32(bytes, 104, 56);
  PutText(bytes, 108, "vids");
  PutText(bytes, 112, "MJPG");
  Put32(bytes, 128, 1);  // scale
  Put32(bytes, 132, model.rate);
  Put32(bytes, 140, frameCount);
  Put32(bytes, 144, LargestOf(model.frames, frameCount));
  Put32(bytes, 148, model.quality);
  Put16(bytes, 160, model.frameRight);
  Put16(bytes, 162, model.frameBottom);

  PutText(bytes, 164, "strf");
  Put32(bytes, 168, 40);
  Put32(bytes, 172, model.formatSize);
  Put32(bytes, 176, model.formatWidth);
  Put32(bytes, 180, model.formatHeight);
  Put16(bytes, 184, 1);  // planes
  Put16(bytes, 186, model.bitCount);
  Put32(bytes, 188, model.compression);

  PutText(bytes, 212, "strn");
  Put32(bytes, 216, 12);
  PutText(bytes, 220, "stream name");

  PutText(bytes, 232, "LIST");
  Put32(bytes, 236, 4 + frameByteCount);
  PutText(bytes, 240, "movi");
  return bytes;
}

// The chunks of all frames, one behind the other.
AviBytes FrameChunks(const std::vector<AviBytes>& frames) {
  AviBytes bytes;
  for (const AviBytes& frame : frames) {
    AviBytes head(8);
    PutText(head, 0, "00dc");
    Put32(head, 4, frame.size());
    bytes.insert(bytes.end(), head.begin(), head.end());
    bytes.insert(bytes.end(), frame.begin(), frame.end());
    if (frame.size() % 2 != 0) bytes.push_back(0x30);
  }
  return bytes;
}

}  // namespace

AviModel RecordedAvi(uint32_t width, uint32_t height, std::vector<AviBytes> frames, uint32_t microSecondsPerFrame,
                     uint32_t rate) {
  AviModel model;
  model.microSecondsPerFrame = microSecondsPerFrame;
  model.flags = 0x10;
  model.width = width;
  model.height = height;
  model.rate = rate;
  model.quality = 3000;
  // Swapped, and the image's size in place of the structure's, as long as there is an image.
  model.frameRight = static_cast<uint16_t>(height);
  model.frameBottom = static_cast<uint16_t>(width);
  model.formatSize = width == 0 && height == 0 ? 40 : 4 * width * height;
  model.formatWidth = width;
  model.formatHeight = height;
  model.bitCount = 32;
  model.compression = kMjpg;
  model.frames = std::move(frames);
  return model;
}

AviModel PlainAvi(std::vector<AviBytes> frames) {
  AviModel model;
  model.flags = 0x810;
  model.rate = 25;
  model.formatSize = 40;
  model.bitCount = 24;
  model.frames = std::move(frames);
  return model;
}

AviBytes BuildAviFile(const AviModel& model) {
  const AviBytes chunks = FrameChunks(model.frames);
  AviBytes file = Headers(model, model.frames.size(), chunks.size());
  file.insert(file.end(), chunks.begin(), chunks.end());

  AviBytes index(8 + 16 * model.frames.size());
  PutText(index, 0, "idx1");
  Put32(index, 4, 16 * model.frames.size());
  size_t offset = 4;
  for (size_t i = 0; i < model.frames.size(); ++i) {
    const size_t size = model.frames[i].size();
    PutText(index, 8 + 16 * i, "00dc");
    Put32(index, 12 + 16 * i, 16);
    Put32(index, 16 + 16 * i, offset);
    Put32(index, 20 + 16 * i, size);
    offset += 8 + size + size % 2;
  }
  file.insert(file.end(), index.begin(), index.end());
  return file;
}

AviBytes BuildAviFileBeforeClose(const AviModel& model) {
  AviBytes file = Headers(model, 0, 0);
  const AviBytes chunks = FrameChunks(model.frames);
  file.insert(file.end(), chunks.begin(), chunks.end());
  const size_t fixedUp = model.frames.size() / kFramesBetweenFixUps * kFramesBetweenFixUps;
  if (fixedUp != 0) {
    const AviBytes mainHeader = MainHeader(model, fixedUp);
    std::copy(mainHeader.begin(), mainHeader.end(), file.begin() + 24);
  }
  return file;
}

AviModel ParseAviFile(const AviBytes& file) {
  if (file.size() < kAviHeaderByteCount + 8) throw std::runtime_error("the file is too short for its headers");
  AviModel model;
  model.microSecondsPerFrame = Get32(file, 32);
  model.flags = Get32(file, 44);
  model.width = Get32(file, 64);
  model.height = Get32(file, 68);
  model.rate = Get32(file, 132);
  model.quality = Get32(file, 148);
  model.frameRight = Get16(file, 160);
  model.frameBottom = Get16(file, 162);
  model.formatSize = Get32(file, 172);
  model.formatWidth = Get32(file, 176);
  model.formatHeight = Get32(file, 180);
  model.bitCount = Get16(file, 186);
  model.compression = Get32(file, 188);

  const size_t indexOffset = size_t{240} + Get32(file, 236);
  if (indexOffset > file.size() - 8) throw std::runtime_error("there is no index behind the frames");
  const size_t frameCount = (file.size() - indexOffset - 8) / 16;
  for (size_t i = 0; i < frameCount; ++i) {
    const size_t frame = size_t{240} + Get32(file, indexOffset + 16 + 16 * i) + 8;
    const size_t size = Get32(file, indexOffset + 20 + 16 * i);
    if (frame > file.size() || size > file.size() - frame) throw std::runtime_error("the index points out of the file");
    const auto first = file.begin() + static_cast<ptrdiff_t>(frame);
    model.frames.emplace_back(first, first + static_cast<ptrdiff_t>(size));
  }
  if (BuildAviFile(model) != file) throw std::runtime_error("the file differs from what its headers and frames make");
  return model;
}

}  // namespace korvel_test
