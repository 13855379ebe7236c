// Real store files, which lie outside the tree, in the folder that POSTMARKER_TESTDATA names.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace postmarker::test {

// Empty if there is no such folder.
inline std::filesystem::path SampleFolder() {
  const char* const name = std::getenv("POSTMARKER_TESTDATA");
  std::error_code failed;
  return name != nullptr && std::filesystem::is_directory(name, failed) ? name : "";
}

}  // namespace postmarker::test

// Skips the test without that folder. A sample that is missing from a folder that is there is a
// failure: a skip would hide it.
#define POSTMARKER_NEED_SAMPLES()                                                        \
  if (postmarker::test::SampleFolder().empty()) {                                        \
    GTEST_SKIP() << "POSTMARKER_TESTDATA names no folder of sample messages and stores"; \
  }
