#include "support/TextPool.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace postmarker {

void TextPool::Resize(Block* block, size_t capacity) {
  std::unique_ptr<char[]> bytes(new char[capacity]);
  if (block->used != 0) {
    std::memcpy(bytes.get(), block->bytes.get(), block->used);
  }
  block->bytes = std::move(bytes);
  block->capacity = static_cast<uint32_t>(capacity);
}

// Makes room in the first block, as long as it is the only one.
bool TextPool::GrowFirst(size_t needed) {
  if (BlockCount() != 1 || (needed > kBlockSize && m_first.used != 0)) {
    return false;
  }
  const size_t doubled = std::min<size_t>(kBlockSize, size_t{2} * m_first.capacity);
  Resize(&m_first, std::max({needed, doubled, size_t{kFirstSize}}));
  return true;
}

// The last block has no room: grows it, or begins another.
uint32_t TextPool::AllocateMore(size_t size) {
  if (size > std::numeric_limits<uint32_t>::max() / 2) {
    throw std::bad_alloc();
  }
  if (!GrowFirst(Last()->used + size)) {
    if (BlockCount() > kBlockMask) {
      throw std::bad_alloc();
    }
    if (m_more == nullptr) {
      m_more = std::make_unique<std::vector<Block>>();
    }
    Block block;
    Resize(&block, std::max<size_t>(size, kBlockSize));
    m_more->push_back(std::move(block));
  }
  return Allocate(size);
}

uint32_t TextPool::Add(std::string_view text) {
  const uint32_t offset = Allocate(text.size());
  if (!text.empty()) {
    std::memcpy(At(offset), text.data(), text.size());
  }
  return offset;
}

uint32_t TextPool::End() const {
  const size_t last = BlockCount() - 1;
  return static_cast<uint32_t>((last << kBlockBits) + std::min(BlockAt(last).used, kBlockSize));
}

uint32_t TextPool::After(uint32_t offset, size_t size) const {
  const uint32_t block = offset >> kBlockBits;
  const size_t position = (offset & kBlockMask) + size;
  return position < BlockAt(block).used ? offset + static_cast<uint32_t>(size)
                                        : (block + 1) << kBlockBits;
}

void TextPool::Clear() {
  m_more.reset();
  m_first.used = 0;
}

void TextPool::Shrink() {
  if (m_first.used < m_first.capacity) {
    Resize(&m_first, m_first.used);
  }
}

}  // namespace postmarker
