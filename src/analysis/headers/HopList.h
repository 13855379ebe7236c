// The hops that the headers of a message tell of.
#pragma once

#include <cstddef>
#include <string>

#include "analysis/headers/Received.h"
#include "analysis/message/HeaderMap.h"

namespace postmarker {

// A list that holds the headers, and reads a line of them when somebody comes to its hop: a message
// may have very many hops, each of which is much larger than its line. Lines that name no host give
// no hop. One thread at a time.
class HopList {
 public:
  struct End {};

  // Valid until the list is changed.
  class Iterator {
   public:
    explicit Iterator(const HeaderMap* headers) : m_headers(headers) { Next(); }
    const ReceivedHop& operator*() const { return m_hop; }
    const ReceivedHop* operator->() const { return &m_hop; }
    Iterator& operator++() {
      Next();
      return *this;
    }
    friend bool operator==(const Iterator& iterator, End) { return iterator.m_atEnd; }

   private:
    void Next();
    bool ReadLine();

    const HeaderMap* m_headers;
    size_t m_line = 0;  // the next one
    bool m_atEnd = false;
    ReceivedHop m_hop;
  };

  HopList() = default;
  // Shares the headers' bytes. Later changes of `headers` are not seen.
  explicit HopList(const HeaderMap& headers) : m_headers(headers) {}

  [[nodiscard]] Iterator begin() const { return Iterator(&m_headers); }
  [[nodiscard]] End end() const { return {}; }
  [[nodiscard]] bool IsEmpty() const { return begin() == end(); }

  // Reads all lines.
  [[nodiscard]] size_t CountHops() const;

  // Reads the lines up to the hop. REQUIRES: `index` is below CountHops().
  [[nodiscard]] ReceivedHop ReadHop(size_t index) const;

 private:
  HeaderMap m_headers;
};

}  // namespace postmarker
