// The status exception that a call throws, as a value that tests compare and print.
#pragma once

#include <optional>
#include <ostream>
#include <string>

#include "status/exceptions.h"

namespace korvel_test {

struct Failure {
  int status;
  int module;
  std::string text;

  bool operator==(const Failure&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Failure& failure) {
  return stream << failure.status << ", " << failure.module << ", \"" << failure.text << "\"";
}

// With the signature of the function that threw.
struct LocatedFailure {
  int status;
  int module;
  std::string location;
  std::string text;

  bool operator==(const LocatedFailure&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const LocatedFailure& failure) {
  return stream << failure.status << ", " << failure.module << ", \"" << failure.location << "\", \"" << failure.text
                << "\"";
}

// Nothing if the call throws no status exception; others pass through.
template <class Call>
std::optional<LocatedFailure> LocatedFailureOf(Call&& call) {
  try {
    call();
  } catch (const korvel::internal::ImgException& exception) {
    return LocatedFailure{static_cast<int>(exception.GetStatus()), exception.ModuleId(), exception.Location(),
                          exception.Text()};
  }
  return std::nullopt;
}

template <class Call>
std::optional<Failure> FailureOf(Call&& call) {
  const auto failure = LocatedFailureOf(call);
  if (!failure) return std::nullopt;
  return Failure{failure->status, failure->module, failure->text};
}

}  // namespace korvel_test
