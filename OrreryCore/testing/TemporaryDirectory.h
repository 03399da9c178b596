// TemporaryDirectory: a fresh folder on the real disk for one test, removed
// with everything in it when the test ends.
//
// Made with mkdtemp under the system's temporary folder (TMPDIR) or a given
// parent, so tests running in parallel never share one.
//
// Thread rules: test code; one owner.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace orrery::testing {

class TemporaryDirectory {
 public:
  explicit TemporaryDirectory(const std::string& label = "orrery-test",
                              const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
    std::string pattern = (parent / (label + "-XXXXXX")).string();
    if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  // Empty when the folder could not be made.
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace orrery::testing
