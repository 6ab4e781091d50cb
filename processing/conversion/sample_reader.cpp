#include "processing/conversion/sample_reader.h"

#include <algorithm>

#include "processing/conversion/unpack_packed.h"
#include "processing/streaming.h"
#include "processing/unaligned.h"

namespace img::processing {
namespace {

struct Group {
  size_t samples;
  size_t bytes;
};

constexpr Group GroupOf(SampleLayout layout) {
  switch (layout) {
    case SampleLayout::kWords:
      return {1, sizeof(uint16_t)};
    case SampleLayout::k10p:
    case SampleLayout::k10g40:
      return {4, 5};
    case SampleLayout::k12p:
    case SampleLayout::k12g24:
      return {2, 3};
    default:
      return {1, 1};
  }
}

constexpr unsigned ChangeDepth(unsigned value, uint32_t from, uint32_t to) {
  return from < to ? value << (to - from) : value >> (from - to);
}

template <class From, class To>
void ShiftSamples(const uint8_t* from, size_t count, uint32_t fromBits, uint8_t* to, uint32_t toBits) {
  for (size_t i = 0; i < count; ++i) {
    StoreSample(to, i, static_cast<To>(ChangeDepth(LoadSample<From>(from, i), fromBits, toBits)));
  }
}

template <class From>
void ShiftSamples(const uint8_t* from, size_t count, uint32_t fromBits, uint8_t* to, uint32_t toBits) {
  const auto shift = toBits == 8 ? ShiftSamples<From, uint8_t> : ShiftSamples<From, uint16_t>;
  shift(from, count, fromBits, to, toBits);
}

}  // namespace

std::optional<SampleLayout> SampleLayoutOf(const FormatFacts& facts) {
  switch (facts.layout) {
    case PixelLayout::Unpacked:
      return facts.storageBits == 8 ? SampleLayout::kBytes : SampleLayout::kWords;
    case PixelLayout::NoAlignment:
      return facts.significantBits == 10 ? SampleLayout::k10p : SampleLayout::k12p;
    case PixelLayout::Mipi:
      return facts.significantBits == 10 ? SampleLayout::k10g40 : SampleLayout::k12g24;
    default:
      return std::nullopt;
  }
}

SampleReader::SampleReader(const FormatFacts& format, const uint8_t* stream, size_t sampleCount, uint32_t depth,
                           InstructionSet set)
    : stream_(stream),
      sampleCount_(sampleCount),
      layout_(*SampleLayoutOf(format)),
      streamDepth_(format.significantBits),
      depth_(depth),
      samplesPerGroup_(GroupOf(layout_).samples),
      bytesPerGroup_(GroupOf(layout_).bytes),
      isAsWanted_(!format.IsPacked() && format.significantBits == depth) {
  if (const SampleKernels* const kernels = FindSampleKernels(set)) {
    vectors_ = (depth == 8 ? kernels->readBytes : kernels->readWords)[static_cast<size_t>(layout_)];
  }
}

void SampleReader::Read(size_t first, size_t count, uint8_t* to) const {
  if (vectors_ != nullptr) {
    ReadWithVectors(first, count, to, false);
  } else {
    ReadPlainly(first, count, to);
  }
}

const uint8_t* SampleReader::Find(size_t first, size_t count, uint8_t* scratch) const {
  if (isAsWanted_) return GroupAt(first);
  Read(first, count, scratch);
  return scratch;
}

void SampleReader::ReadAll(uint8_t* to) const {
  if (vectors_ == nullptr || !ShouldStream(sampleCount_ * BytesPerSample())) return Read(0, sampleCount_, to);
  // Whole groups come first until the output is aligned; where they never lead there, stores are ordinary ones.
  size_t head = 0;
  const auto isAligned = [&] {
    return reinterpret_cast<uintptr_t>(to + head * BytesPerSample()) % kStreamingAlignment == 0;
  };
  while (head < kStreamingAlignment && !isAligned()) head += samplesPerGroup_;
  if (!isAligned()) return Read(0, sampleCount_, to);
  ReadPlainly(0, head, to);
  ReadWithVectors(head, sampleCount_ - head, to + head * BytesPerSample(), true);
  EndStreaming();
}

void SampleReader::ReadWithVectors(size_t first, size_t count, uint8_t* to, bool pastCaches) const {
  const auto read = [&](size_t done, size_t steps, bool past) {
    vectors_(GroupAt(first + done), to + done * BytesPerSample(), steps, streamDepth_, depth_, past);
  };
  const size_t intoGroup = first % samplesPerGroup_;
  size_t done = intoGroup == 0 ? 0 : std::min(samplesPerGroup_ - intoGroup, count);
  ReadPlainly(first, done, to);

  const size_t head = done;
  const size_t steps = (count - done) / kSamplesPerStep;
  read(done, steps, pastCaches);
  done += steps * kSamplesPerStep;
  // What is left of a step goes together with samples before it once more, as long as it is whole groups.
  const size_t left = (count - done) / samplesPerGroup_ * samplesPerGroup_;
  if (left != 0 && done + left >= head + kSamplesPerStep) {
    done += left;
    read(done - kSamplesPerStep, 1, false);
  }
  ReadPlainly(first + done, count - done, to + done * BytesPerSample());
}

void SampleReader::ReadPlainly(size_t first, size_t count, uint8_t* to) const {
  if (layout_ == SampleLayout::kBytes) return ShiftSamples<uint8_t>(GroupAt(first), count, streamDepth_, to, depth_);
  if (layout_ == SampleLayout::kWords) return ShiftSamples<uint16_t>(GroupAt(first), count, streamDepth_, to, depth_);

  constexpr size_t kMost = 64;
  uint8_t words[kMost * sizeof(uint16_t)];
  while (count != 0) {
    const size_t intoGroup = first % samplesPerGroup_;
    const size_t taken = std::min(count, kMost - intoGroup);
    const size_t upToGroup = (intoGroup + taken + samplesPerGroup_ - 1) / samplesPerGroup_ * samplesPerGroup_;
    Unpack(first - intoGroup, std::min(upToGroup, sampleCount_ - (first - intoGroup)), words);
    ShiftSamples<uint16_t>(words + intoGroup * sizeof(uint16_t), taken, streamDepth_, to, depth_);
    first += taken;
    count -= taken;
    to += taken * BytesPerSample();
  }
}

void SampleReader::Unpack(size_t first, size_t count, uint8_t* words) const {
  const uint8_t* const from = GroupAt(first);
  const size_t byteCount = (count * streamDepth_ + 7) / 8;
  switch (layout_) {
    case SampleLayout::k10p:
      return Unpack10p(from, byteCount, words);
    case SampleLayout::k12p:
      return Unpack12p(from, byteCount, words);
    case SampleLayout::k10g40:
      return Unpack10g40(from, count, words);
    default:
      return Unpack12g24(from, count, words);
  }
}

}  // namespace img::processing
