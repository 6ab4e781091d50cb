#include "tests/model/measure_model.h"

#include "tests/model/format_table.h"

namespace korvel_test {

std::vector<ModelHistogramChannel> ModelHistogram(const ModelImage& image) {
  const FormatRow& row = FormatOf(image.format);
  const std::vector<uint32_t> samples = DecodeSamples(image.format, image.width * image.height, image.bytes);
  std::vector<ModelHistogramChannel> channels(row.channels);
  for (ModelHistogramChannel& channel : channels) {
    channel.bins.resize(row.maximum + 1);
  }
  for (size_t i = 0; i < samples.size(); ++i) {
    const uint32_t sample = samples[i];
    ModelHistogramChannel& channel = channels[i % row.channels];
    channel.pixelSum += sample;
    channel.pixelCount += 1;
    channel.bins[sample > row.maximum ? row.maximum : sample] += 1;
  }
  return channels;
}

std::vector<ModelLineChannel> ModelLine(const ModelImage& image, uint32_t orientation, uint64_t offset) {
  const FormatRow& row = FormatOf(image.format);
  const std::vector<uint32_t> samples = DecodeSamples(image.format, image.width * image.height, image.bytes);
  std::vector<ModelLineChannel> channels(row.channels);
  for (size_t i = 0; i < samples.size(); ++i) {
    const size_t pixel = i / row.channels;
    const size_t place = orientation == 0 ? pixel / image.width : pixel % image.width;
    if (place == offset) channels[i % row.channels].push_back(samples[i]);
  }
  return channels;
}

}  // namespace korvel_test
