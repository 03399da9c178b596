// Seeded random arrangements and random edits, for property tests.
//
// A test draws from a fixed universe of app IDs ("app000", "app001", …),
// builds a consistent random arrangement (every app at most once across
// items, folders and hidden; folders of two or more apps) and then applies
// random operations of Layout with random, sometimes invalid, arguments —
// out-of-range indices, unknown folders, hidden apps — exactly as a buggy
// caller or a foreign file might. The engine's output is the byte source of
// the choices the fuzz targets make from their input (LayoutChoices.h), so
// both explore the same way; every draw comes from the given engine, so a
// failing seed replays.
//
// Thread rules: test code; an engine per test.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery::testing {

using Random = std::mt19937_64;

std::vector<std::string> appUniverse(std::size_t count);

// A consistent arrangement over a random part of the universe.
Layout randomLayout(Random& random, const std::vector<std::string>& universe);

// A random subset of the universe, each app kept with the given chance.
AppIDSet randomSubset(Random& random, const std::vector<std::string>& universe, double chance);

// Applies one random operation and says which, for failure messages.
// `includeScans` adds reconciled() with random scans to the mix.
std::string applyRandomOperation(Layout& layout, Random& random, const std::vector<std::string>& universe,
                                 bool includeScans = true);

}  // namespace orrery::testing
