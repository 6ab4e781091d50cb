// The samples of an image as one flat stream, whatever their layout, for code that works through an image by strips.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/instruction_set.h"
#include "core/pixel_format.h"
#include "processing/conversion/sample_vectors.h"

namespace img::processing {

// The layout of a format's samples; nothing for those whose pixels fill 32-bit words.
std::optional<SampleLayout> SampleLayoutOf(const FormatFacts& facts);

// Reads what the modules that unpack and change depths, one after the other, would make of the samples: every bit of
// them, also where 16-bit words hold more than their depth, and without the low bits that lie beyond an incomplete last
// group of 10g40 and 12g24.
class SampleReader {
 public:
  // stream holds sampleCount samples of a format that has a SampleLayout, with no alignment, and is never read beyond
  // their bytes. depth, one of 8, 10 and 12, is that of the samples read.
  SampleReader(const FormatFacts& format, const uint8_t* stream, size_t sampleCount, uint32_t depth,
               InstructionSet set);

  // Writes samples [first, first + count) to `to`, as bytes at a depth of 8, otherwise as 16-bit words without
  // alignment. first may lie within a group of a packed stream.
  void Read(size_t first, size_t count, uint8_t* to) const;

  // The same samples where they lie in the stream, if they lie there as they are wanted; otherwise in scratch, which
  // has room for them.
  const uint8_t* Find(size_t first, size_t count, uint8_t* scratch) const;

  // Writes all samples, past the caches if they are many.
  void ReadAll(uint8_t* to) const;

  size_t BytesPerSample() const { return depth_ == 8 ? 1 : sizeof(uint16_t); }

 private:
  void ReadWithVectors(size_t first, size_t count, uint8_t* to, bool pastCaches) const;
  void ReadPlainly(size_t first, size_t count, uint8_t* to) const;

  // Unpacks samples from the first of a group on, to the end of a group or of the stream.
  void Unpack(size_t first, size_t count, uint8_t* words) const;

  // Where a group begins, by the first of its samples.
  const uint8_t* GroupAt(size_t sample) const { return stream_ + sample / samplesPerGroup_ * bytesPerGroup_; }

  const uint8_t* stream_;
  size_t sampleCount_;
  SampleLayout layout_;
  uint32_t streamDepth_;
  uint32_t depth_;
  size_t samplesPerGroup_;
  size_t bytesPerGroup_;
  bool isAsWanted_;
  SampleKernels::Read vectors_ = nullptr;  // null for plain code
};

}  // namespace img::processing
