// What an installation fills: files, and values of the registry.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace postmarker::install {

// The bytes of a file; for a value of the registry, 4 bytes with its type, the lowest first, and
// its bytes. Nothing if there is no such file or value.
using Content = std::optional<std::string>;

// What is larger than this many bytes is not kept for later, and so not replaced.
inline constexpr size_t kMaxContentBytes = size_t{64} * 1024 * 1024;

// One file or value. For one thread.
class Place {
 public:
  Place() = default;
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;
  virtual ~Place() = default;

  // By this people know it, and a record of an installation: its path, in UTF-8. The same in each
  // run.
  [[nodiscard]] virtual std::string Name() const = 0;

  // False for what can't be kept: it can't be read, is too large, or is no file.
  virtual bool Read(Content* content) const = 0;

  // Puts `content` there; nothing deletes what is there. Makes the parents that are missing. False
  // if that can't be done: the place then holds what it held, but parents may have been made.
  virtual bool Write(const Content& content) = 0;

  // The folders or keys on the way to it that are missing, the outermost first.
  [[nodiscard]] virtual std::vector<std::string> MissingParents() const = 0;

  // Deletes one of the parents if there is nothing in it.
  virtual void RemoveParent(const std::string& parent) = 0;
};

}  // namespace postmarker::install
