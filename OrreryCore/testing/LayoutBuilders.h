// Short ways to write arrangements in tests:
//
//   Layout layout = layoutOf({app("a"), folder("Games", {"b", "c"}), app("d")});
//
// Folders made here get deterministic UUIDs from their name unless one is
// given, so expectations can be written without capturing ids. Needs no test
// framework: the fuzz targets use these too.
//
// Thread rules: test code; plain functions.
#pragma once

#include <initializer_list>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"

namespace orrery::testing {

// A stable UUID derived from a short label ("F1" always gives the same id).
Uuid uuidFor(std::string_view label);

LayoutItem app(std::string appID);
LayoutItem folder(std::string name, std::vector<std::string> appIDs);
LayoutItem folder(Uuid id, std::string name, std::vector<std::string> appIDs);

Layout layoutOf(std::vector<LayoutItem> items, std::set<std::string> hidden = {});

// Apps named after their IDs unless a name is given.
AppInfo appInfo(std::string id, std::string name = {});
std::vector<AppInfo> appInfos(std::initializer_list<std::string> ids);
// The apps' IDs in their order; the apps by ID (the first record of an ID wins).
std::vector<std::string> idsOf(const std::vector<AppInfo>& apps);
std::unordered_map<std::string, AppInfo> byID(const std::vector<AppInfo>& apps);

// A compact one-line picture of the items: "a [Games: b c] d | hidden: x".
std::string describe(const Layout& layout);

// Every app ID of the arrangement with its number of places (items, folders
// and hidden together).
std::unordered_map<std::string, int> appOccurrences(const Layout& layout);

}  // namespace orrery::testing

namespace orrery {
// Readable GoogleTest output for arrangements.
void PrintTo(const Layout& layout, std::ostream* out);
}  // namespace orrery
