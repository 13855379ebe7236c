// A file that an installation fills.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Place.h"

namespace postmarker::install {

// A path from UTF-16 units, and the other way round.
std::filesystem::path ToPath(const std::wstring& path);
std::wstring ToWide(const std::filesystem::path& path);

// `path` is absolute. A new content lies beside the file, under a name of its own, until it is
// whole, and then takes its place: a full disk leaves the old one. A link is no file.
class FilePlace : public Place {
 public:
  explicit FilePlace(std::filesystem::path path) : m_path(std::move(path)) {}

  [[nodiscard]] std::string Name() const override;
  bool Read(Content* content) const override;
  bool Write(const Content& content) override;
  [[nodiscard]] std::vector<std::string> MissingParents() const override;
  void RemoveParent(const std::string& parent) override;

 private:
  [[nodiscard]] bool Replace(const std::string& bytes) const;

  std::filesystem::path m_path;
};

}  // namespace postmarker::install
