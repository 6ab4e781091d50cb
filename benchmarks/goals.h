// How fast each operation is meant to be, beside what the machine allows and beside other libraries.
#pragma once

#include <optional>
#include <string>

namespace korvel::benchmarks {

// The most that a call may take, in multiples of the memory limit and of the fastest peer; nothing where there is none.
struct Goal {
  std::optional<double> overLimit;
  std::optional<double> overPeer;
};

// Where a peer is so fast that its multiple lies below this multiple of the limit, this is the goal.
inline constexpr double kLeastOverLimit = 1.05;

// The goal of an operation at a size, if it has one.
std::optional<Goal> FindGoal(const std::string& operation, const std::string& size);

// Multiples are compared as they are printed, with two decimals.
bool IsMet(double multiple, double most);

}  // namespace korvel::benchmarks
