// What the tests of the stores share: a fixture with a store over an
// in-memory file system and a settable clock, and a journal check.
//
// Thread rules: test code; one fixture per test.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "OrreryCore/base/Date.h"
#include "OrreryCore/storage/MemoryFileSystem.h"

namespace orrery::testing {

inline const std::filesystem::path kFolder = "/home/user/.local/share/Orrery";
// 2026-03-05T14:07:31Z, and its stamp in dated names.
inline const Date kMoment = Date(std::chrono::seconds(1772719651));
inline const std::string kStamp = "2026-03-05T14-07-31Z";

// Whether the journal shows a file created, renamed or removed.
inline bool wrote(const std::vector<MemoryFileSystem::Event>& journal) {
  return std::any_of(journal.begin(), journal.end(), [](const auto& event) {
    return event.operation == FileOperation::createNew || event.operation == FileOperation::rename ||
           event.operation == FileOperation::renameNoReplace || event.operation == FileOperation::remove;
  });
}

// store() makes a Store in kFolder over fs_, with now_ as its clock.
template <typename Store>
class MemoryStoreTest : public ::testing::Test {
 protected:
  Store store() {
    return Store(kFolder, fs_, [this] { return now_; });
  }

  MemoryFileSystem fs_;
  Date now_ = kMoment;
};

}  // namespace orrery::testing
