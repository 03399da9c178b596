// Shared pieces of the fuzz targets: a reader that turns the fuzzer's bytes
// into choices, arrangements and edits built from those choices, and the
// check that stops a target when a promised property does not hold.
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

#include "arrangement/Layout.h"

namespace orrery::fuzz {

// Reads choices from the input front to back. Once the bytes run out every
// choice is the smallest one, so short inputs still make complete values.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool exhausted() const { return next_ >= size_; }
  std::uint8_t byte();
  bool flag() { return (byte() & 1u) != 0; }
  // A number in [0, bound); 0 when bound is 0.
  std::size_t below(std::size_t bound);
  // An index into a list of `count`, usually valid and sometimes just
  // outside (-1, count) or far outside, as a careless caller might pass.
  Index index(std::size_t count);

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

// A folder id that depends only on the input, so a saved input replays to
// the same arrangement.
Uuid folderID(FuzzInput& input);

// A consistent arrangement over part of the universe: every app at most once
// across items, folders and hidden, folders of two or more apps.
Layout consistentLayout(FuzzInput& input);
// Any arrangement of universe apps: duplicates, empty and one-app folders,
// hidden apps that are also placed, repeated folder ids. What a damaged or
// foreign file may hold after decoding.
Layout arbitraryLayout(FuzzInput& input);

// Applies one operation of Layout with arguments from the input, sometimes
// invalid ones, drawing apps from `apps`. Scans (reconciled) are included
// when `includeScans`. Returns the operation's name for failure messages.
std::string applyOperation(Layout& layout, FuzzInput& input, const std::vector<std::string>& apps,
                           bool includeScans);

// Every app ID with its number of places (items, folders and hidden).
std::unordered_map<std::string, int> occurrences(const Layout& layout);
// Aborts unless every app has exactly one place.
void requireEveryAppOnce(const Layout& layout, std::string_view context,
                         const std::vector<const Layout*>& inputs = {});
// The arrangement's readable shape: folder names and contents, apps, hidden;
// folder ids and the version left out.
std::string shape(const Layout& layout);

}  // namespace orrery::fuzz
