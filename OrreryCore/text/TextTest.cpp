#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "OrreryCore/text/Collation.h"
#include "OrreryCore/text/Localized.h"
#include "OrreryCore/text/SearchFolding.h"

namespace orrery::text {
namespace {

TEST(Collation, FinderLikeOrder) {
  const NameCollator collator("en_US");
  std::vector<std::string> names = {"App 10", "zebra", "Äpfel", "app 9", "Apricot", "Zebra", "Bär", "Bar"};
  std::stable_sort(names.begin(), names.end(),
                   [&](const auto& a, const auto& b) { return collator.compare(a, b) < 0; });
  // Numbers by value, case ignored, umlauts with their base letter.
  EXPECT_EQ(names, (std::vector<std::string>{"Äpfel", "app 9", "App 10", "Apricot", "Bar", "Bär", "zebra",
                                             "Zebra"}));
  EXPECT_EQ(collator.compare("Safari", "safari"), 0);
  EXPECT_LT(collator.compare("Cafe", "Café"), 0);  // accents count, after the base letters
  EXPECT_LT(collator.compare("File 2", "File 10"), 0);
}

TEST(Collation, SortKeysAgreeWithCompare) {
  const NameCollator collator("de_DE");
  const std::vector<std::string> names = {"Zebra",   "äpfel",  "Apfel", "Übung", "uber",
                                          "App 100", "App 20", "",      "日本語"};
  for (const auto& a : names)
    for (const auto& b : names) {
      const int byCompare = collator.compare(a, b);
      const int byKey = collator.sortKey(a).compare(collator.sortKey(b));
      EXPECT_EQ(byCompare < 0, byKey < 0) << a << " vs " << b;
      EXPECT_EQ(byCompare == 0, byKey == 0) << a << " vs " << b;
    }
}

TEST(Collation, TheDefaultLocaleIsAlwaysARealOne) {
  const std::string before = defaultLocale();
  EXPECT_EQ(before, "en_US");
  setDefaultLocale("sv_SE");
  EXPECT_EQ(NameCollator().locale(), "sv_SE");
  // Swedish sorts "ä" after "z"; English next to "a".
  EXPECT_GT(NameCollator().compare("\u00e4pple", "zebra"), 0);
  setDefaultLocale("");
  EXPECT_EQ(defaultLocale(), "en_US");
  EXPECT_LT(NameCollator().compare("App 9", "App 10"), 0);
  EXPECT_LT(NameCollator().compare("\u00e4pple", "zebra"), 0);
  setDefaultLocale(before);
}

TEST(Collation, TiesFallBackToIdentifiers) {
  EXPECT_TRUE(nameOrderLess("Notes", "b.notes", "notes", "c.notes"));
  EXPECT_FALSE(nameOrderLess("Notes", "c.notes", "notes", "b.notes"));
  EXPECT_TRUE(nameOrderLess("Alpha", "z", "beta", "a"));
}

TEST(SearchFolding, FoldsCaseAndLatinGreekCyrillicAccents) {
  EXPECT_EQ(searchFolded("Straße"), "strasse");
  EXPECT_EQ(searchFolded("STRASSE"), "strasse");
  EXPECT_EQ(searchFolded("Crème Brûlée"), "creme brulee");
  EXPECT_EQ(searchFolded("Ελλάδα"), "ελλαδα");
  EXPECT_EQ(searchFolded("Йогурт"), "иогурт");  // й is и with a breve
  EXPECT_EQ(searchFolded("Ñandú"), "nandu");
  EXPECT_EQ(searchFolded("Plain ASCII 42"), "plain ascii 42");
}

TEST(SearchFolding, KeepsMarksThatMakeOtherLetters) {
  // が is か with the voiced mark: a different kana, never folded away.
  EXPECT_EQ(searchFolded("ガレージ"), "ガレージ");
  EXPECT_NE(searchFolded("が"), searchFolded("か"));
  // Output is composed, so it compares equal to composed queries.
  EXPECT_EQ(searchFolded("\xE3\x81\x8B\xE3\x82\x99"), "が");
}

TEST(SearchFolding, SurvivesInvalidUtf8) {
  const std::string folded = searchFolded(std::string("Caf\xC3", 4));
  EXPECT_EQ(folded.substr(0, 3), "caf");
}

TEST(Localized, EnglishSourceUntilATranslatorIsInstalled) {
  EXPECT_EQ(localized("New Folder", "Default name of a new folder"), "New Folder");
  setTranslator([](std::string_view source, std::string_view comment) {
    return std::string(comment) + "|" + std::string(source);
  });
  EXPECT_EQ(localized("New Folder", "c"), "c|New Folder");
  setTranslator({});
  EXPECT_EQ(localized("New Folder", "c"), "New Folder");
}

TEST(Localized, ArgFillsPlaceholdersOnce) {
  EXPECT_EQ(arg("Move %1 apps to %2?", {"3", "Trash"}), "Move 3 apps to Trash?");
  EXPECT_EQ(arg("%1 and %1", {"x"}), "x and x");
  EXPECT_EQ(arg("%2 stays", {"a"}), "%2 stays");
  EXPECT_EQ(arg("%1", {"100%2"}), "100%2");  // arguments are not scanned again
  EXPECT_EQ(arg("50%", {}), "50%");
}

}  // namespace
}  // namespace orrery::text
