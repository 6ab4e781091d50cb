#include "processing/conversion/mono_line.h"

#include <cstring>

void img::processing::MakeMonoLine(const MonoLine& line, const DemosaicKernels& kernels) {
  const bool hasBytes = line.maximum <= 0xFF;
  const size_t sampleBytes = hasBytes ? 1 : 2;
  const auto convert = hasBytes ? kernels.mono8 : kernels.mono16;
  MonoTask task = {.heavyLine = line.isUpperHeavy ? line.upper : line.lower,
                   .lightLine = line.isUpperHeavy ? line.lower : line.upper,
                   .output = line.output,
                   .first = 0,
                   .last = line.width - 1,
                   .heavyColumn = line.heavyColumn,
                   .maximum = line.maximum,
                   .isStreamed = line.isStreamed};
  convert(task);

  // The last block once more, which costs less than to read streamed pixels back.
  const size_t lastBlock = line.width - 2;
  uint8_t pixel[2];
  task.heavyLine += lastBlock * sampleBytes;
  task.lightLine += lastBlock * sampleBytes;
  task.output = pixel;
  task.last = 1;
  task.heavyColumn = (line.heavyColumn + lastBlock) % 2;
  convert(task);
  std::memcpy(line.output + (lastBlock + 1) * sampleBytes, pixel, sampleBytes);
}
