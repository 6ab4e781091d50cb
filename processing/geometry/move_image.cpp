#include "processing/geometry/move_image.h"

#include <cstring>

#include "core/image_lines.h"
#include "processing/geometry/move_kernels.h"
#include "processing/streaming.h"

namespace img::processing {
namespace {

// The first line of some, and the step to the next one: from the top, or from the bottom.
template <class Byte>
struct LineWalk {
  LineWalk(const ImageLines<Byte>& lines, bool isUpward)
      : first(isUpward ? lines[lines.size.height - 1] : lines.first),
        step(isUpward ? -static_cast<ptrdiff_t>(lines.step) : static_cast<ptrdiff_t>(lines.step)) {}

  Byte* first;
  ptrdiff_t step;
};

// A turn writes its target in pieces of lines, which the cache keeps no more than half as well as whole ones.
constexpr size_t kSmallestStreamedTurn = kSmallestStreamedOutput / 2;

template <class Byte>
bool IsEmpty(const ImageLines<Byte>& lines) {
  return lines.size.width == 0 || lines.size.height == 0;
}

// A transposition exchanges rows and columns. Of the source's lines from the bottom it is a turn clockwise, and of the
// target's a turn counter-clockwise.
void Turn(const ImageLines<const uint8_t>& source, const ImageLines<uint8_t>& target, size_t pixelByteCount,
          QuarterTurn turn, InstructionSet set) {
  const bool isClockwise = turn == QuarterTurn::Clockwise;
  const LineWalk from(source, isClockwise);
  const LineWalk to(target, !isClockwise);
  const Size2D& size = source.size;
  MoveKernelsFor(set).transpose[pixelByteCount]({from.first, from.step, to.first, to.step, size.width, size.height,
                                                 size.width * size.height * pixelByteCount >= kSmallestStreamedTurn});
}

}  // namespace

uint8_t* MoveScratch::Take(size_t byteCount) {
  if (byteCount > byteCount_) {
    bytes_.reset();
    byteCount_ = 0;
    bytes_.reset(new uint8_t[byteCount]);
    byteCount_ = byteCount;
  }
  return bytes_.get();
}

void CopyMirrored(const IfcImage& input, IfcImage& output, Mirrors mirrors, InstructionSet set) {
  const auto source = LinesOf(input);
  const auto target = LinesOf(output);
  if (IsEmpty(source)) return;
  const MoveKernels& kernels = MoveKernelsFor(set);
  // Lines that are reversed as well are read backwards, but forward past the caches; so goes the whole image.
  const bool isPastCaches = ShouldStream(input.ByteCount());
  const LineWalk from(source, mirrors.upDown && !isPastCaches);
  const LineWalk to(target, mirrors.upDown && isPastCaches);
  const auto copyLines = mirrors.leftRight ? kernels.copyLinesReversed[input.PixelByteCount()] : kernels.copyLines;
  const size_t byteCount = input.LineByteCount();
  const size_t height = source.size.height;
  if (mirrors.leftRight && mirrors.upDown && source.step == byteCount && target.step == byteCount) {
    // One long line, which has fewer ends.
    return copyLines({source.first, 0, target.first, 0, byteCount * height, 1, isPastCaches});
  }
  copyLines({from.first, from.step, to.first, to.step, byteCount, height, isPastCaches});
}

void MirrorInPlace(IfcImage& image, Mirrors mirrors, InstructionSet set) {
  const auto lines = LinesOf(image);
  if (IsEmpty(lines)) return;
  const MoveKernels& kernels = MoveKernelsFor(set);
  const size_t width = lines.size.width;
  const size_t height = lines.size.height;
  const size_t pixelByteCount = image.PixelByteCount();
  const auto swapReversed = kernels.swapLinesReversed[pixelByteCount];
  const auto reverseLines = [&](size_t first, size_t count) {
    const auto step = static_cast<ptrdiff_t>(lines.step);
    const size_t half = width / 2;
    swapReversed(
        {lines[first], step, lines[first] + (width - half) * pixelByteCount, step, half * pixelByteCount, count});
  };
  if (!mirrors.upDown) return reverseLines(0, height);

  const LineWalk upper(lines, false);
  const LineWalk lower(lines, true);
  const auto swapLines = mirrors.leftRight ? swapReversed : kernels.swapLines;
  swapLines({upper.first, upper.step, lower.first, lower.step, image.LineByteCount(), height / 2});
  if (mirrors.leftRight && height % 2 != 0) reverseLines(height / 2, 1);
}

void CopyTurned(const IfcImage& input, IfcImage& output, QuarterTurn turn, InstructionSet set) {
  const auto source = LinesOf(input);
  if (IsEmpty(source)) return;
  Turn(source, LinesOf(output), input.PixelByteCount(), turn, set);
}

void TurnInPlace(IfcImage& image, QuarterTurn turn, MoveScratch& scratch, InstructionSet set) {
  const auto lines = LinesOf(image);
  const Size2D before = image.Area().size;
  const Size2D after{before.height, before.width};
  if (!IsEmpty(lines)) {
    const size_t pixelByteCount = image.PixelByteCount();
    const size_t byteCount = ByteCountToAllocate(image.PixelFormat(), before);
    uint8_t* const copy = scratch.Take(byteCount);
    std::memcpy(copy, lines.first, byteCount);  // through the caches, as the turn reads it
    Turn({copy, before.width * pixelByteCount, before}, {lines.first, after.width * pixelByteCount, after},
         pixelByteCount, turn, set);
  }
  image.SetSize(after);
  image.Buffer()->SetSize(after);
}

}  // namespace img::processing
