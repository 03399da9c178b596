// Runs a fuzz target's body over files, outside libFuzzer: every regular
// file under each argument (a file or a folder, searched recursively), in
// name order. A failing input aborts the program inside the target, so the
// test that runs it fails and names nothing but the file printed last.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    const std::filesystem::path root(argv[i]);
    if (std::filesystem::is_directory(root)) {
      for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
        if (entry.is_regular_file()) files.push_back(entry.path());
    } else if (std::filesystem::is_regular_file(root)) {
      files.push_back(root);
    } else {
      std::fprintf(stderr, "no such file or folder: %s\n", argv[i]);
      return 2;
    }
  }
  if (files.empty()) {
    std::fprintf(stderr, "no inputs to replay\n");
    return 2;
  }
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (!stream.good() && !stream.eof()) {
      std::fprintf(stderr, "cannot read %s\n", file.c_str());
      return 2;
    }
    std::fprintf(stderr, "%s\n", file.c_str());
    // A copy of exactly the file's size, so reading past the end is caught.
    std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  std::printf("replayed %zu inputs\n", files.size());
  return 0;
}
