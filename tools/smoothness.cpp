#include "smoothness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace korvel::tools {
namespace {

constexpr size_t kTileCells = 8;  // along each side; even, so that the patterns of signs below cancel out

// Means over the 2 x 2 cells of a tile.
struct Tile {
  std::array<double, 4> mean{};  // of each place of the cell: line by line
  // Diagonal against diagonal, with the signs of four patterns: all the same, and three that alternate from cell
  // to cell. Colour is the same in neighbouring cells, and only counts in the first; detail counts in all.
  std::array<double, 4> diagonals{};
};

Tile MeasureTile(const Samples& samples, size_t left, size_t top) {
  Tile tile;
  for (size_t row = 0; row < kTileCells; ++row) {
    const uint16_t* const upper = samples.values.data() + (top + 2 * row) * samples.width + left;
    const uint16_t* const lower = upper + samples.width;
    for (size_t column = 0; column < kTileCells; ++column) {
      const std::array<double, 4> cell{
          static_cast<double>(upper[2 * column]), static_cast<double>(upper[2 * column + 1]),
          static_cast<double>(lower[2 * column]), static_cast<double>(lower[2 * column + 1])};
      for (size_t place = 0; place < cell.size(); ++place) tile.mean[place] += cell[place];
      const double difference = (cell[0] + cell[3] - cell[1] - cell[2]) / 2;
      const double by_column = column % 2 == 0 ? difference : -difference;
      tile.diagonals[0] += difference;
      tile.diagonals[1] += by_column;
      tile.diagonals[2] += row % 2 == 0 ? difference : -difference;
      tile.diagonals[3] += row % 2 == 0 ? by_column : -by_column;
    }
  }
  constexpr double kCells = kTileCells * kTileCells;
  for (double& mean : tile.mean) mean /= kCells;
  for (double& sum : tile.diagonals) sum /= kCells;
  return tile;
}

template <class Use>
void ForEachTile(const Samples& samples, Use&& use) {
  constexpr size_t kSide = 2 * kTileCells;
  for (size_t top = 0; top + kSide <= samples.height; top += kSide) {
    for (size_t left = 0; left + kSide <= samples.width; left += kSide) use(MeasureTile(samples, left, top));
  }
}

}  // namespace

Roughness MeasureRoughness(const Samples& samples, unsigned greatest_value) {
  const size_t step = samples.channels == 1 ? 2 : 1;
  const size_t counted = std::min<size_t>(samples.channels, 3);
  const size_t line = samples.width * samples.channels;
  const size_t far = samples.values.size() / samples.channels / 2 * samples.channels;
  uint64_t across = 0;
  uint64_t down = 0;
  uint64_t anywhere = 0;
  uint64_t count_across = 0;
  uint64_t count_down = 0;
  uint64_t count_anywhere = 0;
  const auto difference = [&](size_t a, size_t b) {
    return static_cast<uint64_t>(std::abs(int{samples.values[a]} - int{samples.values[b]}));
  };
  for (size_t row = 0; row < samples.height; ++row) {
    for (size_t column = 0; column < samples.width; ++column) {
      for (size_t channel = 0; channel < counted; ++channel) {
        const size_t here = row * line + column * samples.channels + channel;
        if (column + step < samples.width) {
          across += difference(here, here + step * samples.channels);
          ++count_across;
        }
        if (row + step < samples.height) {
          down += difference(here, here + step * line);
          ++count_down;
        }
        if (here + far < samples.values.size()) {
          anywhere += difference(here, here + far);
          ++count_anywhere;
        }
      }
    }
  }
  const auto mean = [&](uint64_t sum, uint64_t count) {
    return count == 0 ? 0 : static_cast<double>(sum) / static_cast<double>(count) / greatest_value;
  };
  return {
      .across = mean(across, count_across), .down = mean(down, count_down), .anywhere = mean(anywhere, count_anywhere)};
}

CellDifferences MeasureCells(const Samples& samples, unsigned greatest_value) {
  CellDifferences sums;
  size_t tiles = 0;
  ForEachTile(samples, [&](const Tile& tile) {
    ++tiles;
    sums.diagonals += std::abs(tile.diagonals[0]);
    sums.chance += (std::abs(tile.diagonals[1]) + std::abs(tile.diagonals[2]) + std::abs(tile.diagonals[3])) / 3;
    sums.falling += std::abs(tile.mean[0] - tile.mean[3]);
    sums.rising += std::abs(tile.mean[1] - tile.mean[2]);
  });
  if (tiles == 0) return {};
  const double scale = 1 / (static_cast<double>(tiles) * greatest_value);
  return {.diagonals = sums.diagonals * scale,
          .chance = sums.chance * scale,
          .falling = sums.falling * scale,
          .rising = sums.rising * scale};
}

}  // namespace korvel::tools
