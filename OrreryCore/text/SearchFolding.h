// Search folding: the form in which names and queries are compared when the
// user types in the search field.
//
// Full case folding ("Straße" and "STRASSE" both become "strasse"), then the
// combining marks of Latin, Greek and Cyrillic letters are dropped ("Crème"
// matches "creme", "Ελλάδα" matches "ελλαδα"). Marks on other scripts stay:
// in Japanese the voiced mark turns か into が, a different letter, so
// removing it would make unrelated names match. The result is NFC UTF-8.
//
// Thread rules: a pure function, safe from any thread.
#pragma once

#include <string>
#include <string_view>

namespace orrery::text {

std::string searchFolded(std::string_view text);

}  // namespace orrery::text
