#include "processing/conversion/stream_conversion.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "core/geometry.h"
#include "processing/conversion/sample_reader.h"
#include "processing/conversion/sample_vectors.h"
#include "processing/conversion/unpack_packed.h"
#include "processing/copy_bytes.h"
#include "processing/streaming.h"
#include "processing/unaligned.h"

namespace img::processing {
namespace {

// The pixels that go through scratch memory at a time where a conversion takes two kernels; whole steps of them.
constexpr size_t kStripPixels = 32 * kSamplesPerStep;
constexpr size_t kColorChannels = 3;
constexpr size_t kMostPixelBytes = kColorChannels * sizeof(uint16_t);

enum class Step { kCopy, kRead, kExtend, kSwap };

bool IsColor(PixelClass pixelClass) {
  return pixelClass == PixelClass::RGB || pixelClass == PixelClass::BGR || pixelClass == PixelClass::RGBa ||
         pixelClass == PixelClass::BGRa;
}

bool AreSwapped(PixelClass from, PixelClass to) {
  return (from == PixelClass::RGB && to == PixelClass::BGR) || (from == PixelClass::BGR && to == PixelClass::RGB);
}

// What a conversion takes beyond unpacking and a change of depth; nothing if it takes something else.
std::optional<Step> StepBetween(const FormatFacts& from, const FormatFacts& to) {
  if (from.id == to.id) return Step::kCopy;
  if (to.IsPacked() || !SampleLayoutOf(from)) return std::nullopt;
  const PixelClass unpacked = from.IsPacked() ? UnpackedClass(from.pixelClass) : from.pixelClass;
  if (unpacked == to.pixelClass) return Step::kRead;
  if (unpacked == PixelClass::Mono && IsColor(to.pixelClass)) return Step::kExtend;
  if (AreSwapped(unpacked, to.pixelClass)) return Step::kSwap;
  return std::nullopt;
}

// Modules find lines by a sum of 32 bits.
bool HasPlainAddresses(const FormatFacts& format, const Size2D& size) {
  const std::optional<size_t> byteCount = CheckedByteCount(format, size);
  return byteCount && *byteCount <= std::numeric_limits<uint32_t>::max();
}

template <class Sample>
void ExtendPlainly(const uint8_t* from, uint8_t* to, size_t count, size_t channels) {
  for (size_t i = 0; i < count; ++i) {
    const auto value = LoadSample<Sample>(from, i);
    for (size_t channel = 0; channel < kColorChannels; ++channel) StoreSample(to, i * channels + channel, value);
    if (channels > kColorChannels) StoreSample(to, i * channels + kColorChannels, Sample{255});
  }
}

template <class Sample>
void SwapPlainly(const uint8_t* from, uint8_t* to, uint8_t* also, size_t count) {
  for (size_t i = 0; i < count * kColorChannels; i += kColorChannels) {
    const Sample pixel[] = {LoadSample<Sample>(from, i + 2), LoadSample<Sample>(from, i + 1),
                            LoadSample<Sample>(from, i)};
    for (size_t channel = 0; channel < kColorChannels; ++channel) {
      StoreSample(to, i + channel, pixel[channel]);
      if (also != nullptr) StoreSample(also, i + channel, pixel[channel]);
    }
  }
}

// The pixels from the front of an output up to an address at which stores may go past the caches; nothing if there is
// none, or if the output had better stay in the caches.
std::optional<size_t> PixelsBeforeStreaming(const uint8_t* output, size_t pixelBytes, size_t count) {
  if (!ShouldStream(count * pixelBytes)) return std::nullopt;
  for (size_t pixels = 0; pixels < kStreamingAlignment; ++pixels) {
    if (reinterpret_cast<uintptr_t>(output + pixels * pixelBytes) % kStreamingAlignment == 0) return pixels;
  }
  return std::nullopt;
}

// Calls for one strip after the other, with the first of its pixels, their number and whether to store past the caches.
template <class Strip>
void ForEachStrip(const uint8_t* output, size_t pixelBytes, size_t count, Strip strip) {
  const std::optional<size_t> head = PixelsBeforeStreaming(output, pixelBytes, count);
  size_t done = head.value_or(0);
  if (done != 0) strip(0, done, false);
  for (; done < count; done += kStripPixels) strip(done, std::min(kStripPixels, count - done), head.has_value());
  if (head) EndStreaming();
}

void Extend(const SampleKernels& kernels, const SampleReader& reader, size_t count, size_t channels, uint8_t* output) {
  const size_t sampleBytes = reader.BytesPerSample();
  const size_t pixelBytes = channels * sampleBytes;
  const auto extend = (sampleBytes == 1 ? kernels.extendBytes : kernels.extendWords)[channels - kColorChannels];
  const auto extendPlainly = sampleBytes == 1 ? ExtendPlainly<uint8_t> : ExtendPlainly<uint16_t>;
  uint8_t scratch[kStripPixels * sizeof(uint16_t)];
  ForEachStrip(output, pixelBytes, count, [&](size_t first, size_t pixels, bool pastCaches) {
    const uint8_t* const samples = reader.Find(first, pixels, scratch);
    uint8_t* const to = output + first * pixelBytes;
    const size_t steps = pixels / kSamplesPerStep;
    const size_t whole = steps * kSamplesPerStep;
    extend(samples, to, steps, pastCaches);
    extendPlainly(samples + whole * sampleBytes, to + whole * pixelBytes, pixels - whole, channels);
  });
}

// Swaps pixels of which the kernel reads beyond both ends.
void Swap(const SampleKernels& kernels, size_t sampleBytes, const uint8_t* from, uint8_t* to, uint8_t* also,
          size_t count, bool pastCaches) {
  const auto swap = sampleBytes == 1 ? kernels.swapBytes : kernels.swapWords;
  const auto swapPlainly = sampleBytes == 1 ? SwapPlainly<uint8_t> : SwapPlainly<uint16_t>;
  const size_t steps = count / kSamplesPerStep;
  const size_t done = steps * kSamplesPerStep * kColorChannels * sampleBytes;
  swap(from, to, also, steps, pastCaches);
  swapPlainly(from + done, to + done, also == nullptr ? nullptr : also + done, count - steps * kSamplesPerStep);
}

void SwapToo(const SampleKernels& kernels, size_t sampleBytes, uint8_t* input, size_t count, uint8_t* output) {
  const size_t pixelBytes = kColorChannels * sampleBytes;
  const auto swapPlainly = sampleBytes == 1 ? SwapPlainly<uint8_t> : SwapPlainly<uint16_t>;
  const std::optional<size_t> unaligned = PixelsBeforeStreaming(output, pixelBytes, count);
  // The first and the last pixel have no neighbour for the kernel to read.
  size_t head = std::min<size_t>(1, count);
  if (unaligned) head = *unaligned == 0 ? kSamplesPerStep : *unaligned;
  swapPlainly(input, output, input, head);
  const size_t between = count - head == 0 ? 0 : count - head - 1;
  const size_t at = head * pixelBytes;
  Swap(kernels, sampleBytes, input + at, output + at, input + at, between, unaligned.has_value());
  const size_t end = (head + between) * pixelBytes;
  swapPlainly(input + end, output + end, input + end, count - head - between);
  if (unaligned) EndStreaming();
}

void SwapAfterReading(const SampleKernels& kernels, const SampleReader& reader, size_t count, uint8_t* output) {
  const size_t sampleBytes = reader.BytesPerSample();
  const size_t pixelBytes = kColorChannels * sampleBytes;
  uint8_t scratch[(kStripPixels + 2) * kMostPixelBytes];
  uint8_t* const samples = scratch + pixelBytes;
  ForEachStrip(output, pixelBytes, count, [&](size_t first, size_t pixels, bool pastCaches) {
    reader.Read(first * kColorChannels, pixels * kColorChannels, samples);
    Swap(kernels, sampleBytes, samples, output + first * pixelBytes, nullptr, pixels, pastCaches);
  });
}

}  // namespace

StreamConversion::StreamConversion(const ProcessorFeatures& features) : set_(InstructionSetOf(features)) {}

bool StreamConversion::Takes(const IfcImage& input, PixelFormatId output) const {
  const std::optional<FormatFacts> from = FindFacts(input.PixelFormat());
  const std::optional<FormatFacts> to = FindFacts(output);
  if (FindSampleKernels(set_) == nullptr || !from || !to || !from->IsPublic()) return false;
  const std::optional<Step> step = StepBetween(*from, *to);
  if (!step) return false;
  const Size2D& size = input.Area().size;
  const uint8_t* const pixels = input.PixelPointer(0, 0);
  if (pixels == nullptr || !HasPlainAddresses(*from, size) || !HasPlainAddresses(*to, size)) return false;
  if (input.ByteCount() == 0 || input.ByteCount() != from->ByteCount(size.width * size.height)) return false;
  // Copies and packed images go by the first pixel, whatever the image is a part of.
  return step == Step::kCopy || from->IsPacked() || input.PixelPointer(0, size.height) == pixels + input.ByteCount();
}

void StreamConversion::Convert(IfcImage& input, PixelFormatId output, uint8_t* pixels) const {
  const FormatFacts from = *FindFacts(input.PixelFormat());
  const FormatFacts to = *FindFacts(output);
  const SampleKernels& kernels = *FindSampleKernels(set_);
  uint8_t* const source = input.PixelPointer(0, 0);
  const Step step = *StepBetween(from, to);
  if (step == Step::kCopy) return CopyBytes(source, pixels, input.ByteCount(), set_);

  const size_t count = input.Area().size.width * input.Area().size.height;
  const SampleReader reader(from, source, count * from.channels, to.significantBits, set_);
  if (step == Step::kRead) return reader.ReadAll(pixels);
  if (step == Step::kExtend) return Extend(kernels, reader, count, to.channels, pixels);
  if (from.significantBits == to.significantBits) {
    SwapToo(kernels, reader.BytesPerSample(), source, count, pixels);
  } else {
    SwapAfterReading(kernels, reader, count, pixels);
  }
}

}  // namespace img::processing
