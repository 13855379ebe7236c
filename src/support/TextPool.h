// Storage for many short texts that are addressed by 32-bit numbers.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace postmarker {

// Texts are only added, in blocks of memory that are never copied once they are full-sized, so the
// pool never holds its content twice. Addresses of texts may change with the next Allocate; their
// offsets don't. Offsets grow with each text. One thread at a time.
class TextPool {
 public:
  TextPool() = default;
  TextPool(const TextPool&) = delete;
  TextPool& operator=(const TextPool&) = delete;
  TextPool(TextPool&&) noexcept = default;
  TextPool& operator=(TextPool&&) noexcept = default;
  ~TextPool() = default;

  // Room for `size` bytes in one piece, to be filled at At(). Throws std::bad_alloc, also when the
  // offsets run out at 4 GiB.
  uint32_t Allocate(size_t size) {
    Block* const last = Last();
    if (size > last->capacity - last->used || (last->used + size > kBlockSize && last->used != 0)) {
      return AllocateMore(size);
    }
    const auto offset = static_cast<uint32_t>(((BlockCount() - 1) << kBlockBits) + last->used);
    last->used += static_cast<uint32_t>(size);
    return offset;
  }

  // Adds a text and gives its offset.
  uint32_t Add(std::string_view text);

  // REQUIRES: `offset` lies within a text of the pool.
  [[nodiscard]] char* At(uint32_t offset) {
    return const_cast<char*>(static_cast<const TextPool*>(this)->At(offset));
  }
  [[nodiscard]] const char* At(uint32_t offset) const {
    return BlockAt(offset >> kBlockBits).bytes.get() + (offset & kBlockMask);
  }

  // The offset that no text so far has reached.
  [[nodiscard]] uint32_t End() const;

  // The offset of the text that was added after the one of `size` bytes at `offset`; End() or more
  // after the last. REQUIRES: all texts were added with Allocate or Add and none was empty.
  [[nodiscard]] uint32_t After(uint32_t offset, size_t size) const;

  // Empties the pool. One block is kept for what comes next.
  void Clear();

  // Gives back what the first block has to spare. The other blocks are left as they are.
  void Shrink();

 private:
  static constexpr uint32_t kBlockBits = 16;
  static constexpr uint32_t kBlockSize = 1U << kBlockBits;
  static constexpr uint32_t kBlockMask = kBlockSize - 1;
  static constexpr uint32_t kFirstSize = 64;

  struct Block {
    std::unique_ptr<char[]> bytes;
    uint32_t used = 0;
    uint32_t capacity = 0;
  };

  [[nodiscard]] const Block& BlockAt(size_t index) const {
    return index == 0 ? m_first : (*m_more)[index - 1];
  }
  [[nodiscard]] size_t BlockCount() const { return 1 + (m_more == nullptr ? 0 : m_more->size()); }
  Block* Last() { return m_more == nullptr || m_more->empty() ? &m_first : &m_more->back(); }
  uint32_t AllocateMore(size_t size);
  bool GrowFirst(size_t needed);
  void Resize(Block* block, size_t capacity);

  // The first block stands apart, so that a pool of a few texts is small.
  Block m_first;
  std::unique_ptr<std::vector<Block>> m_more;
};

}  // namespace postmarker
