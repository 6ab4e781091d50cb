// Mean, darkest and brightest value of each channel of an image file, and a histogram of 16 bars:
//
//   histogram IMAGE
#include <algorithm>
#include <cstdio>
#include <korvel/korvel.hpp>
#include <numeric>
#include <string>
#include <vector>

namespace {

constexpr size_t kBars = 16;
constexpr double kBarLength = 60;

void PrintChannel(const korvel::Histogram& histogram, size_t channel) {
  const std::vector<uint64_t> bins = histogram.Bins(channel);
  const auto isUsed = [](uint64_t count) { return count != 0; };
  const auto darkest = std::find_if(bins.begin(), bins.end(), isUsed) - bins.begin();
  const auto brightest = bins.rend() - std::find_if(bins.rbegin(), bins.rend(), isUsed) - 1;
  const auto pixels = static_cast<double>(histogram.PixelCount(channel));
  std::printf("channel %zu: mean %.2f, from %td to %td\n", channel,
              static_cast<double>(histogram.PixelSum(channel)) / pixels, darkest, brightest);

  const auto valuesPerBar = static_cast<std::ptrdiff_t>(bins.size() / kBars);
  for (auto bar = bins.begin(); bar != bins.end(); bar += valuesPerBar) {
    const auto count = static_cast<double>(std::accumulate(bar, bar + valuesPerBar, uint64_t{0}));
    std::printf("%5td %s\n", bar - bins.begin(),
                std::string(static_cast<size_t>(kBarLength * count / pixels), '#').c_str());
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: histogram IMAGE\n");
    return 2;
  }
  try {
    const korvel::Histogram histogram(korvel::Image::Read(argv[1]));
    for (size_t channel = 0; channel < histogram.NumChannels(); ++channel) PrintChannel(histogram, channel);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "histogram: %s\n", error.what());
    return 1;
  }
  return 0;
}
