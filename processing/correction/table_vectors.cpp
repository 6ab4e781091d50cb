#include "processing/correction/table_vectors.h"

#include <cstring>

#include "processing/vector_numbers.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

#if KORVEL_VECTOR_BYTES == 32

// A table of 256 bytes as sixteen shuffles of 16. A shuffle takes the lowest four bits of an index, or gives 0 if the
// highest is set. Each part holds what changes from the part before, so that the shuffles of all parts up to the
// value's own leave its entry, and those of the others, where value - 16 * part is negative, leave it alone.
class ByteTable {
 public:
  explicit ByteTable(const uint8_t* table) {
    for (size_t half = 0; half < 2; ++half) {
      Bytes before = hn::Zero(kBytes);
      for (size_t part = 0; part < kParts; ++part) {
        const Bytes entries = hn::LoadDup128(kBytes, table + 16 * (kParts * half + part));
        changes_[half][part] = hn::Xor(entries, before);
        before = entries;
      }
    }
  }

  HWY_INLINE Bytes Of(Bytes values) const {
    Bytes lower = values;
    Bytes upper = hn::Xor(values, hn::Set(kBytes, 0x80));
    Bytes ofLower = hn::TableLookupBytesOr0(changes_[0][0], lower);
    Bytes ofUpper = hn::TableLookupBytesOr0(changes_[1][0], upper);
    for (size_t part = 1; part < kParts; ++part) {
      lower = WithoutPart(lower);
      upper = WithoutPart(upper);
      ofLower = hn::Xor(ofLower, hn::TableLookupBytesOr0(changes_[0][part], lower));
      ofUpper = hn::Xor(ofUpper, hn::TableLookupBytesOr0(changes_[1][part], upper));
    }
    return hn::Xor(ofLower, ofUpper);
  }

 private:
  static constexpr size_t kParts = 8;  // of values below 128, and of those above

  static HWY_INLINE Bytes WithoutPart(Bytes values) {
    constexpr hn::RebindToSigned<decltype(kBytes)> kSigned;
    return hn::BitCast(kBytes, hn::SaturatedSub(hn::BitCast(kSigned, values), hn::Set(kSigned, 16)));
  }

  Bytes changes_[2][kParts];
};

size_t LookBytesUp(const uint8_t* in, uint8_t* out, size_t count, const uint8_t* table) {
  constexpr size_t kLanes = KORVEL_VECTOR_BYTES;
  const ByteTable entries(table);
  size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) hn::StoreU(entries.Of(hn::LoadU(kBytes, in + i)), kBytes, out + i);
  return i;
}

#endif

// Entries of 16 bits are loaded one by one: gathering is faster on some processors, and many times slower on others.
size_t LookWordsUp(const uint8_t* in, uint8_t* out, size_t count, const uint16_t* table, uint16_t maximum) {
  constexpr hn::FixedTag<uint16_t, 8> kEight;
  constexpr hn::FixedTag<uint64_t, 2> kTwo;
  const auto limit = hn::Set(kEight, maximum);
  const auto look = [table, out](size_t first, uint64_t four) HWY_ATTR {
    for (size_t i = 0; i < 4; ++i) {
      std::memcpy(out + 2 * (first + i), table + (four >> 16 * i & 0xFFFF), sizeof(uint16_t));
    }
  };
  size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    const auto samples = hn::LoadU(hn::FixedTag<uint8_t, 16>(), in + 2 * i);
    const auto limited = hn::BitCast(kTwo, hn::Min(hn::BitCast(kEight, samples), limit));
    look(i, hn::ExtractLane(limited, 0));
    look(i + 4, hn::ExtractLane(limited, 1));
  }
  return i;
}

}  // namespace

extern const TableKernels kTableKernels = {
#if KORVEL_VECTOR_BYTES == 32
    .bytes = LookBytesUp,
#else
    .bytes = nullptr,
#endif
    .words = LookWordsUp};

}  // namespace img::processing::KORVEL_VECTORS
