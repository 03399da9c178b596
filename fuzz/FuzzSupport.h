// Shared pieces of the fuzz targets: the fuzzer's bytes as the source of
// choices for arrangements and edits (testing/LayoutChoices.h, shared with
// the property tests), and the check that stops a target when a promised
// property does not hold.
//
// Every target body is plain C++ so that the same code runs in two builds:
// under libFuzzer (clang, sanitizers) while exploring, and through the
// replay driver of the ordinary build, which feeds it every file kept in the
// target's corpus so that a fixed crash stays fixed.
//
// Thread rules: one FuzzInput per input; everything here is single-threaded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/LayoutChoices.h"

namespace orrery::fuzz {

// Reads choices from the input front to back. Once the bytes run out every
// choice is the smallest one, so short inputs still make complete values.
class FuzzInput final : public testing::Choices {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool exhausted() const { return next_ >= size_; }
  std::uint8_t byte() override { return next_ < size_ ? data_[next_++] : std::uint8_t{0}; }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t next_ = 0;
};

// Prints what failed, with the arrangements involved, and aborts so that the
// fuzzer keeps the input.
[[noreturn]] void fail(std::string_view what, const std::vector<const Layout*>& layouts = {});

// "app00", "app01", …: the app IDs the property targets draw from. A small
// universe makes the same app meet itself across operations and sides.
const std::vector<std::string>& universe();

// Arrangements over the universe.
inline Layout consistentLayout(FuzzInput& input) { return testing::consistentLayout(input, universe()); }
inline Layout arbitraryLayout(FuzzInput& input) { return testing::arbitraryLayout(input, universe()); }
using testing::applyOperation;

// Every app ID with its number of places (items, folders and hidden).
inline std::unordered_map<std::string, int> occurrences(const Layout& layout) {
  return testing::appOccurrences(layout);
}
// Aborts unless every app has exactly one place.
void requireEveryAppOnce(const Layout& layout, std::string_view context,
                         const std::vector<const Layout*>& inputs = {});
// The arrangement's readable shape: folder names and contents, apps, hidden;
// folder ids and the version left out.
inline std::string shape(const Layout& layout) { return testing::describe(layout); }

}  // namespace orrery::fuzz
