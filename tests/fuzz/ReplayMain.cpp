// Gives files to a fuzz target once each, where it is built without a fuzzer: kept findings and
// seeds stay tested in every build. Usage: TARGET FILE|FOLDER...
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool Replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return false;
  }
  const std::vector<char> read((std::istreambuf_iterator<char>(file)), {});
  // A block of exactly this size, so that a read after it is seen.
  const std::vector<uint8_t> bytes(read.begin(), read.end());
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  int replayed = 0;
  for (int i = 1; i < argc; ++i) {
    const std::filesystem::path path(argv[i]);
    if (!std::filesystem::is_directory(path)) {
      replayed += Replay(path) ? 1 : 0;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      replayed += entry.is_regular_file() && Replay(entry.path()) ? 1 : 0;
    }
  }
  std::printf("%d inputs replayed\n", replayed);
  return replayed > 0 ? 0 : 1;
}
