// The bytes of one fuzz input, taken from the front as the numbers that a target wants.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace korvel_fuzz {

// Behind the last byte come zeros without end, so that every input means something.
class FuzzInput {
 public:
  FuzzInput(const uint8_t* data, size_t size) : rest_(data, size) {}

  bool IsEmpty() const { return rest_.empty(); }

  uint8_t TakeByte() {
    if (rest_.empty()) return 0;
    const uint8_t byte = rest_.front();
    rest_ = rest_.subspan(1);
    return byte;
  }

  // Little endian.
  template <class Number>
  Number Take() {
    uint64_t value = 0;
    for (size_t i = 0; i < sizeof(Number); ++i) value |= uint64_t{TakeByte()} << (8 * i);
    return static_cast<Number>(value);
  }

  // Below bound, which is above 0.
  size_t TakeBelow(size_t bound) { return Take<uint16_t>() % bound; }

  template <class Element, size_t count>
  const Element& TakeOneOf(const Element (&elements)[count]) {
    return elements[TakeByte() % count];
  }

 private:
  std::span<const uint8_t> rest_;
};

}  // namespace korvel_fuzz
