#include "benchmarks/goals.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "benchmarks/test_frames.h"

namespace korvel::benchmarks {
namespace {

constexpr double kNone = 0;

// At the one and at the other of kFrameSizes.
struct Row {
  const char* operation;
  double overLimit[2];
  double overPeer[2];
};

constexpr Row kRows[] = {
    {"convert_mode1/BayerRG8/BGRa8", {1.9, 1.1}, {0.45, 0.5}},
    {"convert_mode1/BayerGR8/BGRa8", {1.9, 1.1}, {0.45, 0.5}},
    {"convert_mode1/BayerGB8/BGRa8", {1.9, 1.1}, {0.45, 0.5}},
    {"convert_mode1/BayerBG8/BGRa8", {1.9, 1.1}, {0.45, 0.5}},
    {"convert_mode1/BayerRG8/RGB8", {2.5, 1.25}, {0.4, 0.4}},
    {"convert_mode1/BayerRG8/Mono8", {8, 5.5}, {0.7, 0.75}},
    {"convert_mode2/BayerRG8/Mono8", {8, 5.5}, {0.7, 0.75}},
    {"convert_mode3/BayerRG8/Mono8", {8, 5.5}, {0.7, 0.75}},
    {"convert_mode2/BayerRG8/BGRa8", {3.2, 1.9}, {0.6, 0.65}},
    {"convert_mode2/BayerRG8/RGB8", {4.6, 2.45}, {0.6, 0.6}},
    {"convert_mode3/BayerRG8/BGRa8", {2.5, 1.3}, {0.6, 0.6}},
    {"convert_mode1/BayerRG10/RGB10p32", {2, 1.3}, {kNone, kNone}},
    {"convert_mode1/BayerRG12/BGRa8", {2.2, 1.4}, {0.4, 0.5}},
    {"convert_mode1/BayerRG12p/BGRa8", {2.4, 1.5}, {kNone, kNone}},
    {"convert_mode1/BayerRG12g24Qrv/BGRa8", {2.4, 1.5}, {kNone, kNone}},
    {"convert_mode1/BayerRG10p/BGRa8", {2.4, 1.5}, {kNone, kNone}},
    {"convert_mode1/BayerRG10g40Qrv/BGRa8", {2.4, 1.5}, {kNone, kNone}},
    {"convert_mode1/BayerRG12p/BayerRG12", {1.2, 1.1}, {kNone, kNone}},
    {"convert_mode1/BayerRG12g24Qrv/BayerRG12", {1.2, 1.1}, {kNone, kNone}},
    {"convert_mode1/BayerRG10p/BayerRG10", {1.2, 1.15}, {kNone, kNone}},
    {"convert_mode1/BayerRG10g40Qrv/BayerRG10", {1.2, 1.15}, {kNone, kNone}},
    {"convert_mode1/Mono12p/Mono8", {1.5, 1.4}, {kNone, kNone}},
    {"convert_mode2/BayerRG12p/RGB12", {3.5, 2.3}, {0.2, 0.2}},
    {"convert_mode1/Mono12/Mono8", {1.05, 1.2}, {1.05, 0.95}},
    {"convert_mode1/Mono8/BGRa8", {1.05, 1.05}, {1.1, 0.75}},
    {"convert_mode1/RGB8/BGR8", {1.4, 1.3}, {0.75, 0.6}},
    {"clone/BayerRG8", {1.3, 1.7}, {1.1, 1.1}},
    {"gain_in_place/Mono8", {5.8, 5.5}, {0.11, 0.11}},
    {"gain_in_place/BayerRG8", {5.8, 5.5}, {0.11, 0.11}},
    {"gain_in_place/Mono12", {3, 1.6}, {kNone, kNone}},
    {"gain_in_place/BayerRG12", {3, 1.6}, {kNone, kNone}},
    {"gamma_in_place/RGB8", {11, 5}, {0.65, 0.65}},
    {"gamma_in_place/BGRa8", {11, 5}, {0.8, 0.8}},
    {"gamma_in_place/Mono12", {12, 5.3}, {kNone, kNone}},
    {"color_in_place/BGRa8", {6, 2.8}, {1.1, 1.15}},
    {"color_in_place/RGB10p32", {6.6, 3}, {kNone, kNone}},
    {"color_in_place/RGB8", {9, 4}, {0.7, 0.25}},
    {"hotpixels/BayerRG8", {9.5, 7.5}, {kNone, kNone}},
    {"hotpixels/Mono8", {6.5, 5}, {kNone, kNone}},
    {"hotpixels/BayerRG12", {9, 5}, {kNone, kNone}},
    {"binning_average_2x2/Mono8", {1.4, 1.4}, {1, 1}},
    {"binning_sum_2x2/Mono8", {1.4, 1.4}, {kNone, kNone}},
    {"binning_average_2x2/BayerRG8", {1.7, 1.7}, {kNone, kNone}},
    {"binning_average_2x2/RGB8", {2.3, 1.25}, {0.4, 0.6}},
    {"mirror_left_right/Mono8", {1.2, 1.2}, {1, 0.8}},
    {"mirror_left_right/BGRa8", {1.2, 1.2}, {1, 0.8}},
    {"mirror_left_right/RGB8", {1.2, 1.2}, {1, 0.8}},
    {"rotate_180/BayerRG12", {1.2, 1.2}, {1, 0.8}},
    {"mirror_up_down/Mono8", {1.05, 1.1}, {1.05, 1}},
    {"mirror_up_down/RGB8", {1.05, 1.1}, {0.8, 0.8}},
    {"mirror_up_down/BGRa8", {1.05, 1.1}, {0.8, 0.8}},
    {"mirror_both/Mono8", {1.05, 1.1}, {1.05, 1}},
    {"mirror_both/RGB8", {1.05, 1.1}, {0.8, 0.8}},
    {"mirror_both/BGRa8", {1.05, 1.1}, {0.8, 0.8}},
    {"mirror_left_right_in_place/Mono8", {2, 2}, {0.95, 0.9}},
    {"mirror_left_right_in_place/RGB8", {2, 2}, {0.95, 0.9}},
    {"mirror_left_right_in_place/BGRa8", {2, 2}, {0.95, 0.9}},
    {"mirror_up_down_in_place/Mono8", {2, 2}, {0.95, 0.9}},
    {"mirror_up_down_in_place/RGB8", {2, 2}, {0.95, 0.9}},
    {"mirror_up_down_in_place/BGRa8", {2, 2}, {0.95, 0.9}},
    {"mirror_both_in_place/Mono8", {2, 2}, {0.95, 0.9}},
    {"mirror_both_in_place/RGB8", {2, 2}, {0.95, 0.9}},
    {"mirror_both_in_place/BGRa8", {2, 2}, {0.95, 0.9}},
    {"rotate_90/Mono8", {2.9, 6}, {0.75, 0.75}},
    {"rotate_270/Mono8", {2.9, 6}, {0.75, 0.75}},
    {"rotate_90/BGRa8", {2.1, 3}, {0.4, 0.4}},
    {"rotate_270/BGRa8", {2.1, 3}, {0.4, 0.4}},
    {"rotate_90_in_place/Mono8", {kNone, kNone}, {1, 1}},
    {"rotate_270_in_place/Mono8", {kNone, kNone}, {1, 1}},
    {"rotate_90_in_place/BGRa8", {kNone, kNone}, {1, 1}},
    {"rotate_270_in_place/BGRa8", {kNone, kNone}, {1, 1}},
    {"histogram/Mono8", {kNone, kNone}, {0.95, 0.95}},
    {"histogram/RGB8", {kNone, kNone}, {0.75, 0.75}},
    {"histogram/Mono12", {kNone, kNone}, {0.2, 0.2}},
    {"write_png_quality80/Mono8", {kNone, kNone}, {1.03, 1.03}},
    {"write_png_quality80/RGB8", {kNone, kNone}, {1.03, 1.03}},
    {"write_png_quality100/RGB8", {kNone, kNone}, {1.03, 1.03}},
    {"write_jpeg_quality75/Mono8", {kNone, kNone}, {1.03, 1.03}},
    {"write_jpeg_quality75/RGB8", {kNone, kNone}, {1.03, 1.03}},
    {"write_bmp/Mono8", {kNone, kNone}, {1.2, 1.2}},
    {"write_bmp/RGB8", {kNone, kNone}, {1.2, 1.2}},
    {"write_bmp/BGRa8", {kNone, kNone}, {1.2, 1.2}},
    {"write_raw/Mono8", {kNone, kNone}, {1.05, 1.05}},
    {"write_raw/BGRa8", {kNone, kNone}, {1.05, 1.05}},
    {"record_encode/Mono8", {kNone, kNone}, {1.05, 1.05}},
    {"record_encode/RGB8", {kNone, kNone}, {1.05, 1.05}},
    {"record_encode/BGRa8", {kNone, kNone}, {1.05, 1.05}},
    {"record_append/Mono8", {kNone, kNone}, {1.25, 1.25}},
    {"record_append/RGB8", {kNone, kNone}, {1.25, 1.25}},
    {"record_append/BGRa8", {kNone, kNone}, {1.25, 1.25}},
};

// Work too small for vectors must not pay for them.
constexpr const char* kSmallWork[] = {"construct_converter", "convert_small/BayerRG8/BGRa8"};

std::optional<double> Optional(double goal) { return goal == kNone ? std::nullopt : std::optional(goal); }

}  // namespace

std::optional<Goal> FindGoal(const std::string& operation, const std::string& size) {
  const auto isIts = [&](const char* other) { return operation == other; };
  if (size == kSmallSize.Name()) {
    if (std::none_of(std::begin(kSmallWork), std::end(kSmallWork), isIts)) return std::nullopt;
    return Goal{.overLimit = {}, .overPeer = 1.0};
  }
  const Row* const row =
      std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) { return isIts(each.operation); });
  if (row == std::end(kRows)) return std::nullopt;
  const size_t i = size == kFrameSizes[0].Name() ? 0 : 1;
  return Goal{.overLimit = Optional(row->overLimit[i]), .overPeer = Optional(row->overPeer[i])};
}

bool IsMet(double multiple, double most) { return std::lround(multiple * 100) <= std::lround(most * 100); }

}  // namespace korvel::benchmarks
