// Memory that an object needs while it works and would rather keep than take anew each time.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace img::processing {

// Keeps one block, for one caller at a time. Further callers, from other threads, get blocks of their own.
class KeptScratch {
 public:
  static constexpr size_t kAlignment = 64;

  struct Block {
    struct alignas(kAlignment) CacheLine {
      uint8_t bytes[kAlignment];
    };
    std::unique_ptr<CacheLine[]> lines;
    size_t count;
  };

  // Back into its place at the end.
  class Loan {
   public:
    Loan(KeptScratch& owner, size_t byteCount) : owner_(owner), block_(owner.kept_.exchange(nullptr)) {
      const size_t count = std::max<size_t>((byteCount + kAlignment - 1) / kAlignment, 1);
      if (!block_ || block_->count < count) {
        block_ = std::make_unique<Block>(Block{std::make_unique_for_overwrite<Block::CacheLine[]>(count), count});
      }
    }
    ~Loan() { delete owner_.kept_.exchange(block_.release()); }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;

    // Uninitialised, and aligned to kAlignment.
    uint8_t* Bytes() const { return block_->lines[0].bytes; }

   private:
    KeptScratch& owner_;
    std::unique_ptr<Block> block_;
  };

  KeptScratch() = default;
  ~KeptScratch() { delete kept_.load(); }
  KeptScratch(const KeptScratch&) = delete;
  KeptScratch& operator=(const KeptScratch&) = delete;

 private:
  std::atomic<Block*> kept_ = nullptr;
};

}  // namespace img::processing
