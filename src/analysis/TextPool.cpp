#include "analysis/TextPool.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace postmarker {

TextPool::TextPool(const TextPool& other) {
  m_blocks.resize(other.m_blocks.size());
  for (size_t i = 0; i < m_blocks.size(); ++i) {
    const Block& source = other.m_blocks[i];
    Resize(&m_blocks[i], source.used);
    m_blocks[i].used = source.used;
    if (source.used != 0) {
      std::memcpy(m_blocks[i].bytes.get(), source.bytes.get(), source.used);
    }
  }
}

void TextPool::Resize(Block* block, size_t capacity) {
  std::unique_ptr<char[]> bytes(new char[capacity]);
  if (block->used != 0) {
    std::memcpy(bytes.get(), block->bytes.get(), block->used);
  }
  block->bytes = std::move(bytes);
  block->capacity = capacity;
}

bool TextPool::GrowFirst(size_t needed) {
  if (m_blocks.size() != 1 || needed > kBlockSize) {
    return false;
  }
  Block& first = m_blocks.front();
  Resize(&first, std::min<size_t>(kBlockSize, std::max(needed, 2 * first.capacity)));
  return true;
}

uint32_t TextPool::Allocate(size_t size) {
  if (m_blocks.empty()) {
    m_blocks.emplace_back();
    Resize(&m_blocks.back(), std::max<size_t>(size, kFirstSize));
  }
  const size_t needed = m_blocks.back().used + size;
  const bool fits =
      needed <= m_blocks.back().capacity && (needed <= kBlockSize || m_blocks.back().used == 0);
  if (!fits && !GrowFirst(needed)) {
    if (m_blocks.size() > kBlockMask) {
      throw std::bad_alloc();
    }
    m_blocks.emplace_back();
    Resize(&m_blocks.back(), std::max<size_t>(size, kBlockSize));
  }
  Block& block = m_blocks.back();
  const auto offset = static_cast<uint32_t>(((m_blocks.size() - 1) << kBlockBits) + block.used);
  block.used += size;
  return offset;
}

uint32_t TextPool::Add(std::string_view text) {
  const uint32_t offset = Allocate(text.size());
  if (!text.empty()) {
    std::memcpy(At(offset), text.data(), text.size());
  }
  return offset;
}

uint32_t TextPool::End() const {
  if (m_blocks.empty()) {
    return 0;
  }
  const size_t used = std::min<size_t>(m_blocks.back().used, kBlockSize);
  return static_cast<uint32_t>(((m_blocks.size() - 1) << kBlockBits) + used);
}

uint32_t TextPool::After(uint32_t offset, size_t size) const {
  const uint32_t block = offset >> kBlockBits;
  const size_t position = (offset & kBlockMask) + size;
  return position < m_blocks[block].used ? offset + static_cast<uint32_t>(size)
                                         : (block + 1) << kBlockBits;
}

void TextPool::Clear() {
  if (m_blocks.size() > 1) {
    m_blocks.resize(1);
  }
  if (!m_blocks.empty()) {
    m_blocks.front().used = 0;
  }
}

void TextPool::Shrink() {
  if (!m_blocks.empty() && m_blocks.front().used < m_blocks.front().capacity) {
    Resize(&m_blocks.front(), m_blocks.front().used);
  }
}

}  // namespace postmarker
