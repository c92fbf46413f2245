// Replays kept inputs, each in turn: TARGET FILE|FOLDER...
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/entry_points.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> files_at(const fs::path &place) {
  if (!fs::is_directory(place)) return {place};
  std::vector<fs::path> files;
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(place)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// False where the file cannot be read. Its name comes first: a process that dies says nothing afterwards.
bool replay_file(const fs::path &file) {
  std::fprintf(stderr, "%s\n", file.c_str());
  std::ifstream in(file, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
  if (!in.is_open() || in.bad()) {
    std::fprintf(stderr, "cannot read %s\n", file.c_str());
    return false;
  }
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char **argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  int replayed = 0;
  bool all_read = true;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path &file : files_at(argv[i])) {
      all_read = replay_file(file) && all_read;
      ++replayed;
    }
  }
  std::printf("%d inputs\n", replayed);
  return all_read && replayed > 0 ? 0 : 1;
}
