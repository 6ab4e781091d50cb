// Headers of files, described once: where each number lies, so that reading and writing follow the same description.
//
//   struct Header { uint32_t format; uint64_t width; };
//   constexpr auto kLayout = MakeFixedLayout<12>(Field{0, &Header::format}, Field{4, &Header::width});
//   kLayout.Decode(kLayout.Encode(header))
//
// Numbers are little endian, without padding between them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <tuple>
#include <type_traits>

namespace img {

template <class Record, class Number>
struct Field {
  constexpr Field(size_t fieldOffset, Number Record::*fieldMember) : offset(fieldOffset), member(fieldMember) {}

  size_t offset;
  Number Record::*member;
};

template <size_t byteCount, class Record, class... Numbers>
class FixedLayout {
 public:
  static constexpr size_t kByteCount = byteCount;
  using Bytes = std::array<uint8_t, byteCount>;

  constexpr explicit FixedLayout(Field<Record, Numbers>... fields) : fields_(fields...) {
    const bool isWithin = ((sizeof(Numbers) <= byteCount && fields.offset <= byteCount - sizeof(Numbers)) && ...);
    if (!isWithin) throw std::out_of_range("a field reaches beyond its layout");
  }

  // Bytes that no field covers are zero.
  constexpr Bytes Encode(const Record& record) const {
    Bytes bytes{};
    std::apply([&](const auto&... field) { (EncodeField(bytes, field, record), ...); }, fields_);
    return bytes;
  }

  constexpr Record Decode(const Bytes& bytes) const {
    Record record{};
    std::apply([&](const auto&... field) { (DecodeField(bytes, field, record), ...); }, fields_);
    return record;
  }

 private:
  template <class Number>
  static constexpr void EncodeField(Bytes& bytes, const Field<Record, Number>& field, const Record& record) {
    const auto value = static_cast<std::make_unsigned_t<Number>>(record.*field.member);
    for (size_t i = 0; i < sizeof value; ++i) bytes.at(field.offset + i) = static_cast<uint8_t>(value >> (8 * i));
  }

  template <class Number>
  static constexpr void DecodeField(const Bytes& bytes, const Field<Record, Number>& field, Record& record) {
    using Unsigned = std::make_unsigned_t<Number>;
    Unsigned value = 0;
    for (size_t i = 0; i < sizeof value; ++i) {
      value = static_cast<Unsigned>(value | static_cast<Unsigned>(Unsigned{bytes.at(field.offset + i)} << (8 * i)));
    }
    record.*field.member = static_cast<Number>(value);
  }

  std::tuple<Field<Record, Numbers>...> fields_;
};

// A layout of byteCount bytes. Used for a constant, a field that reaches beyond them doesn't compile.
template <size_t byteCount, class Record, class... Numbers>
constexpr auto MakeFixedLayout(Field<Record, Numbers>... fields) {
  return FixedLayout<byteCount, Record, Numbers...>(fields...);
}

}  // namespace img
