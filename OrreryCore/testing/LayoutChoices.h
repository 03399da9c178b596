// Arrangements and edits made from a source of choices, shared by the
// property tests (choices from a seeded random engine) and the fuzz targets
// (choices read from the fuzzer's input).
//
// Every choice comes from Choices::byte(), so the same bytes make the same
// choices and a failing seed or a saved fuzz input replays. (Layout gives
// the folders it makes random ids, and sortedByName breaks ties between
// equal names by id, so a replay may order such twins differently.)
// The edits apply every operation of Layout with arguments that are
// sometimes invalid (out-of-range indices, unknown folders, hidden apps), as
// a buggy caller or a foreign file might.
//
// Needs no test framework, so the fuzz build (which has none) links it too.
//
// Thread rules: test code; one Choices per test or input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"

namespace orrery::testing {

class Choices {
 public:
  virtual ~Choices() = default;

  virtual std::uint8_t byte() = 0;
  bool flag() { return (byte() & 1u) != 0; }
  // A number in [0, bound); 0 when bound is 0.
  std::size_t below(std::size_t bound);
  // An index into a list of `count`, usually valid and sometimes just
  // outside (-1, count) or far outside, as a careless caller might pass.
  Index index(std::size_t count);
};

// A consistent arrangement over part of `apps`: every app at most once
// across items, folders and hidden, folders of two or more apps.
Layout consistentLayout(Choices& choices, const std::vector<std::string>& apps);
// Any arrangement of `apps`: duplicates, empty and one-app folders, hidden
// apps that are also placed, repeated folder ids. What a damaged or foreign
// file may hold after decoding.
Layout arbitraryLayout(Choices& choices, const std::vector<std::string>& apps);

// Applies one operation of Layout, drawing apps from `apps`. Scans
// (reconciled, over all of `apps`) are included when `includeScans`.
// Returns the operation with its arguments, for failure messages.
std::string applyOperation(Layout& layout, Choices& choices, const std::vector<std::string>& apps,
                           bool includeScans);

}  // namespace orrery::testing
