#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "benchmarks/parameters.h"
#include "benchmarks/peers.h"

namespace korvel::benchmarks {
namespace {

using Calls = std::function<void()>;

cv::Mat Over(uint8_t* data, const img::Size2D& size, int type) {
  return {static_cast<int>(size.height), static_cast<int>(size.width), type, data};
}

cv::Mat Picture(const PeerMemory& memory, int type) { return Over(memory.picture, memory.size, type); }
cv::Mat Result(const PeerMemory& memory, int type) { return Over(memory.result, memory.resultSize, type); }

// A call that reads the picture and makes the result, of these types of pixels.
template <class Call>
auto Making(int pictureType, int resultType, Call call) {
  return [=](const PeerMemory& memory) -> Calls {
    return [=, picture = Picture(memory, pictureType), result = Result(memory, resultType)]() mutable {
      call(picture, result);
    };
  };
}

template <class Call>
auto InPlace(int type, Call call) {
  return [=](const PeerMemory& memory) -> Calls {
    return [=, picture = Picture(memory, type)]() mutable { call(picture); };
  };
}

auto Converting(int pictureType, int resultType, int code) {
  return Making(pictureType, resultType, [=](const cv::Mat& picture, cv::Mat& result) {
    cv::cvtColor(picture, result, code, CV_MAT_CN(resultType));
  });
}

// Mosaics are called by the second line's second and third pixel.
void AddDemosaics(std::vector<PeerMethod>& methods) {
  const auto demosaic = [&](const std::string& operation, const char* name, int resultType, int code) {
    methods.push_back({operation, name, Converting(CV_8UC1, resultType, code)});
  };
  constexpr const char* kBilinear = "OpenCV bilinear";
  demosaic("convert_mode1/BayerRG8/BGRa8", kBilinear, CV_8UC4, cv::COLOR_BayerBG2BGRA);
  demosaic("convert_mode1/BayerGR8/BGRa8", kBilinear, CV_8UC4, cv::COLOR_BayerGB2BGRA);
  demosaic("convert_mode1/BayerGB8/BGRa8", kBilinear, CV_8UC4, cv::COLOR_BayerGR2BGRA);
  demosaic("convert_mode1/BayerBG8/BGRa8", kBilinear, CV_8UC4, cv::COLOR_BayerRG2BGRA);
  demosaic("convert_mode3/BayerRG8/BGRa8", kBilinear, CV_8UC4, cv::COLOR_BayerBG2BGRA);
  demosaic("convert_mode1/BayerRG8/RGB8", kBilinear, CV_8UC3, cv::COLOR_BayerBG2RGB);
  for (const char* const mode : {"1", "2", "3"}) {
    demosaic(std::string("convert_mode") + mode + "/BayerRG8/Mono8", "OpenCV", CV_8UC1, cv::COLOR_BayerBG2GRAY);
  }
  demosaic("convert_mode2/BayerRG8/RGB8", "OpenCV edge-aware", CV_8UC3, cv::COLOR_BayerBG2RGB_EA);
  demosaic("convert_mode2/BayerRG8/BGRa8", "OpenCV edge-aware to BGR8", CV_8UC3, cv::COLOR_BayerBG2BGR_EA);

  methods.push_back({"convert_mode1/BayerRG12/BGRa8", "OpenCV in two steps", [](const PeerMemory& memory) -> Calls {
                       return [picture = Picture(memory, CV_16UC1), result = Result(memory, CV_8UC4),
                               mosaic = cv::Mat()]() mutable {
                         picture.convertTo(mosaic, CV_8U, 1.0 / 16);
                         cv::cvtColor(mosaic, result, cv::COLOR_BayerBG2BGRA, 4);
                       };
                     }});
  // Of samples that are unpacked already.
  methods.push_back({"convert_mode2/BayerRG12p/RGB12", "OpenCV edge-aware without the unpacking",
                     [](const PeerMemory& memory) -> Calls {
                       cv::Mat mosaic(static_cast<int>(memory.size.height), static_cast<int>(memory.size.width),
                                      CV_16U);
                       cv::randu(mosaic, 0, 4096);
                       return [mosaic, result = Result(memory, CV_16UC3)]() mutable {
                         cv::cvtColor(mosaic, result, cv::COLOR_BayerBG2RGB_EA, 3);
                       };
                     }});
}

void AddConversions(std::vector<PeerMethod>& methods) {
  methods.push_back({"convert_mode1/Mono12/Mono8", "OpenCV", Making(CV_16UC1, CV_8UC1, [](auto& picture, auto& result) {
                       picture.convertTo(result, CV_8U, 1.0 / 16);
                     })});
  methods.push_back({"convert_mode1/Mono8/BGRa8", "OpenCV", Converting(CV_8UC1, CV_8UC4, cv::COLOR_GRAY2BGRA)});
  methods.push_back(
      {"convert_mode1/RGB8/BGR8", "OpenCV, then a copy", Making(CV_8UC3, CV_8UC3, [](auto& picture, auto& result) {
         cv::cvtColor(picture, result, cv::COLOR_RGB2BGR);
         result.copyTo(picture);
       })});
  methods.push_back({"clone/BayerRG8", "OpenCV",
                     InPlace(CV_8UC1, [](const cv::Mat& picture) { const cv::Mat clone = picture.clone(); })});
}

cv::Mat GainTable(float gain) {
  cv::Mat table(1, 256, CV_8U);
  for (int i = 0; i < 256; ++i) {
    table.at<uint8_t>(i) = static_cast<uint8_t>(std::min(gain * static_cast<float>(i), 255.0f));
  }
  return table;
}

cv::Mat GammaTable(int channels) {
  cv::Mat table(1, 256, CV_8UC(channels));
  for (int i = 0; i < 256; ++i) {
    for (int channel = 0; channel < channels; ++channel) {
      const float value = std::pow(static_cast<float>(i) / 255, 1 / kGamma) * 255;
      table.ptr(0)[i * channels + channel] = static_cast<uint8_t>(channel == 3 ? static_cast<float>(i) : value);
    }
  }
  return table;
}

void AddCorrections(std::vector<PeerMethod>& methods) {
  const auto lookUp = [](const cv::Mat& table) { return [=](cv::Mat& picture) { cv::LUT(picture, table, picture); }; };
  methods.push_back({"gain_in_place/Mono8", "OpenCV look-up", InPlace(CV_8UC1, lookUp(GainTable(kGains.master)))});
  // Lines of red and green, and of green and blue, are pictures with two channels each.
  methods.push_back(
      {"gain_in_place/BayerRG8", "OpenCV look-up", [](const PeerMemory& memory) -> Calls {
         std::array<cv::Mat, 2> lines;
         std::array<cv::Mat, 2> tables;
         const float gains[] = {kGains.red, kGains.green, kGains.blue};
         for (size_t i = 0; i < 2; ++i) {
           lines[i] = cv::Mat(static_cast<int>(memory.size.height / 2), static_cast<int>(memory.size.width / 2),
                              CV_8UC2, memory.picture + i * memory.size.width, 2 * memory.size.width);
           cv::merge(std::vector<cv::Mat>{GainTable(gains[i] * kGains.master), GainTable(gains[i + 1] * kGains.master)},
                     tables[i]);
         }
         return [=]() mutable {
           for (size_t i = 0; i < 2; ++i) cv::LUT(lines[i], tables[i], lines[i]);
         };
       }});
  methods.push_back({"gain_in_place/Mono12", "OpenCV product and minimum", InPlace(CV_16UC1, [](cv::Mat& picture) {
                       picture.convertTo(picture, CV_16U, double{kGains.master});
                       cv::min(picture, 4095, picture);
                     })});
  methods.push_back({"gamma_in_place/RGB8", "OpenCV look-up", InPlace(CV_8UC3, lookUp(GammaTable(3)))});
  methods.push_back({"gamma_in_place/BGRa8", "OpenCV look-up", InPlace(CV_8UC4, lookUp(GammaTable(4)))});

  const cv::Matx33f factors(kFactors.data());
  methods.push_back({"color_in_place/RGB8", "OpenCV",
                     InPlace(CV_8UC3, [=](cv::Mat& picture) { cv::transform(picture, picture, factors); })});
  cv::Mat fourFactors = cv::Mat::eye(4, 4, CV_32F);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) fourFactors.at<float>(2 - i, 2 - j) = factors(i, j);
  }
  methods.push_back({"color_in_place/BGRa8", "OpenCV",
                     InPlace(CV_8UC4, [=](cv::Mat& picture) { cv::transform(picture, picture, fourFactors); })});

  const auto area = [](int type) {
    return Making(type, type, [](const cv::Mat& picture, cv::Mat& result) {
      cv::resize(picture, result, result.size(), 0, 0, cv::INTER_AREA);
    });
  };
  methods.push_back({"binning_average_2x2/Mono8", "OpenCV area", area(CV_8UC1)});
  methods.push_back({"binning_average_2x2/RGB8", "OpenCV area", area(CV_8UC3)});
}

void AddMoves(std::vector<PeerMethod>& methods) {
  struct Flip {
    const char* name;
    int code;
  };
  struct Format {
    const char* name;
    int type;
  };
  for (const Format& format : {Format{"/Mono8", CV_8UC1}, {"/RGB8", CV_8UC3}, {"/BGRa8", CV_8UC4}}) {
    for (const Flip& flip : {Flip{"mirror_left_right", 1}, {"mirror_up_down", 0}, {"mirror_both", -1}}) {
      const int code = flip.code;
      const auto run = [=](const cv::Mat& picture, cv::Mat& result) { cv::flip(picture, result, code); };
      methods.push_back({std::string(flip.name) + format.name, "OpenCV", Making(format.type, format.type, run)});
      methods.push_back({std::string(flip.name) + "_in_place" + format.name, "OpenCV",
                         InPlace(format.type, [=](cv::Mat& picture) { cv::flip(picture, picture, code); })});
    }
    for (const Flip& turn :
         {Flip{"rotate_90", cv::ROTATE_90_COUNTERCLOCKWISE}, {"rotate_270", cv::ROTATE_90_CLOCKWISE}}) {
      const int code = turn.code;
      const auto run = [=](const cv::Mat& picture, cv::Mat& result) { cv::rotate(picture, result, code); };
      methods.push_back({std::string(turn.name) + format.name, "OpenCV", Making(format.type, format.type, run)});
    }
  }
  methods.push_back({"rotate_180/BayerRG12", "OpenCV",
                     Making(CV_16UC1, CV_16UC1, [](auto& picture, auto& result) { cv::flip(picture, result, -1); })});
}

auto Histograms(int type, int bins) {
  return [=](const PeerMemory& memory) -> Calls {
    return [=, picture = Picture(memory, type), result = memory.result] {
      cv::Mat counts;
      for (int channel = 0; channel < picture.channels(); ++channel) {
        const float range[] = {0, static_cast<float>(bins)};
        const float* ranges[] = {range};
        cv::calcHist(&picture, 1, &channel, cv::noArray(), counts, 1, &bins, ranges);
        auto* const target = reinterpret_cast<uint64_t*>(result) + static_cast<ptrdiff_t>(channel) * bins;
        for (int i = 0; i < bins; ++i) target[i] = static_cast<uint64_t>(counts.at<float>(i));
      }
    };
  };
}

}  // namespace

std::vector<PeerMethod> OpenCvMethods() {
  cv::setNumThreads(1);
  std::vector<PeerMethod> methods;
  AddDemosaics(methods);
  AddConversions(methods);
  AddCorrections(methods);
  AddMoves(methods);
  methods.push_back({"histogram/Mono8", "OpenCV", Histograms(CV_8UC1, 256)});
  methods.push_back({"histogram/RGB8", "OpenCV", Histograms(CV_8UC3, 256)});
  methods.push_back({"histogram/Mono12", "OpenCV", Histograms(CV_16UC1, 4096)});
  return methods;
}

}  // namespace korvel::benchmarks
