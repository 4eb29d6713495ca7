// Runs a target over files and directories of inputs, for builds without a fuzzer. Each input is
// also cut short at a few places, so that a corpus of whole inputs covers truncated ones too.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/frame.h"

namespace {

void replay(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  const auto *data = reinterpret_cast<const uint8_t *>(bytes.data());
  for (const size_t size : {bytes.size(), bytes.size() / 2, bytes.size() * 9 / 10, size_t{0}}) {
    const std::vector<uint8_t> exact(data, data + size);  // so that an overrun is seen
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
  }
}

}  // namespace

int main(int argc, char **argv) {
  size_t count = 0;
  std::vector<std::filesystem::path> paths;
  for (int i = 1; i < argc; ++i) {
    const auto path = std::filesystem::absolute(argv[i]);
    if (!std::filesystem::is_directory(path)) {
      paths.push_back(path);
      continue;
    }
    for (const auto &entry : std::filesystem::directory_iterator(path)) paths.push_back(entry);
  }
  for (const auto &path : paths) {
    replay(path);
    ++count;
  }
  std::printf("%zu inputs replayed\n", count);
  return count == 0;
}
