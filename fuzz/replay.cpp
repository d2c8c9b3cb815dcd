// Runs inputs through targets: fuzz_replay FOLDER... takes each folder's subfolders as named by target,
// fuzz_replay TARGET FILE... one target's inputs.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "fuzz/targets.h"

namespace {

void Run(const fuzz::NamedTarget& target, const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
  // A block of its own, so that a read behind the input is found.
  std::vector<uint8_t> input(bytes.begin(), bytes.end());
  std::cerr << target.name << ' ' << path.filename().string() << '\n';
  target.run(input.data(), input.size());
}

size_t RunFolder(const fuzz::NamedTarget& target, const std::filesystem::path& folder) {
  size_t count = 0;
  if (!std::filesystem::is_directory(folder)) return 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    Run(target, entry.path());
    ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  size_t count = 0;
  for (const fuzz::NamedTarget& target : fuzz::kTargets) {
    if (argc > 2 && std::strcmp(argv[1], target.name) == 0) {
      for (int i = 2; i < argc; ++i, ++count) Run(target, argv[i]);
      continue;
    }
    for (int i = 1; i < argc; ++i) {
      count += RunFolder(target, std::filesystem::path(argv[i]) / target.name);
      if (target.run == &fuzz::Insight || target.run == &fuzz::Core || target.run == &fuzz::Edit)
        count += RunFolder(target, std::filesystem::path(argv[i]) / "filter");
    }
  }
  std::cout << count << " inputs replayed\n";
  return count == 0;
}
