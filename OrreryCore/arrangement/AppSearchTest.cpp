#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "OrreryCore/arrangement/AppSearch.h"
#include "OrreryCore/testing/LayoutBuilders.h"

namespace orrery {
namespace {

using testing::appInfo;
using testing::idsOf;

using Ids = std::vector<std::string>;

// Every check runs through both entry points: the one-shot filter and the
// prebuilt index must never disagree.
std::vector<std::string> search(const std::vector<AppInfo>& apps, std::string_view query) {
  const Ids direct = idsOf(AppSearch::filter(apps, query));
  const auto index = std::make_shared<const AppSearch::Index>(apps);
  const Ids indexed = idsOf(index->filter(query));
  const Ids inPlace = idsOf(AppSearch::search(index, query).toVector());
  EXPECT_EQ(direct, indexed) << "query \"" << query << "\"";
  EXPECT_EQ(direct, inPlace) << "query \"" << query << "\"";
  return direct;
}

TEST(AppSearch, BlankQueriesReturnEveryAppAsGiven) {
  const std::vector<AppInfo> apps = {appInfo("z", "Zoo"), appInfo("a", "Atlas"), appInfo("m", "Mail")};
  for (const char* query : {"", "   ", "\t\n", "\u00a0\u3000"})
    EXPECT_EQ(search(apps, query), (Ids{"z", "a", "m"}));
  EXPECT_EQ(search({}, "a"), Ids{});
}

TEST(AppSearch, RanksStartThenLaterWordThenAnywhere) {
  const std::vector<AppInfo> apps = {
      appInfo("improv", "Improv"),         appInfo("logic", "Logic Pro"),      appInfo("none", "Notes"),
      appInfo("protools", "Pro Tools"),    appInfo("final", "Final Cut  pro"), appInfo("preview", "Preview"),
      appInfo("approach", "Approach Pro"), appInfo("projector", "projector"),
  };
  // Rank 0 by name, then rank 1, then rank 2. "Approach Pro" also holds
  // "pro" inside its first word, but the better rank counts.
  EXPECT_EQ(search(apps, "pro"), (Ids{"protools", "projector", "approach", "final", "logic", "improv"}));
  EXPECT_EQ(search(apps, "  PRO\n"), search(apps, "pro"));
  // A query with a space only matches across words as a whole.
  EXPECT_EQ(search(apps, "logic p"), Ids{"logic"});
  EXPECT_EQ(search(apps, "cut pro"), Ids{});  // two spaces in the name
}

TEST(AppSearch, FoldsCaseAndAccents) {
  const std::vector<AppInfo> apps = {appInfo("creme", "Crème Brûlée"), appInfo("cafe", "Cafe"),
                                     appInfo("kana", "がっこう")};
  EXPECT_EQ(search(apps, "BRULEE"), Ids{"creme"});
  EXPECT_EQ(search(apps, "café"), Ids{"cafe"});
  EXPECT_EQ(search(apps, "か"), Ids{});  // the voiced mark makes another letter
}

TEST(AppSearch, EqualRanksGoByNameThenID) {
  const std::vector<AppInfo> apps = {appInfo("c", "File 10"), appInfo("b", "file 2"), appInfo("a2", "FILE 2"),
                                     appInfo("a1", "File 2"), appInfo("d", "Filer")};
  EXPECT_EQ(search(apps, "file"), (Ids{"a1", "a2", "b", "c", "d"}));

  // The same app listed twice stays listed twice, in the given order.
  std::vector<AppInfo> twice = {appInfo("x", "Xcode"), appInfo("x", "Xcode")};
  twice[1].url = "/other/Xcode";
  const auto found = AppSearch::filter(twice, "x");
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[1].url, "/other/Xcode");
  EXPECT_EQ(AppSearch::Index(twice).filter("x"), found);
}

TEST(AppSearch, NamesStartingWithSpaceOrHoldingBadBytes) {
  const std::vector<AppInfo> apps = {appInfo("lead", " Pro Max"), appInfo("bad", "Pro\xff Tool"),
                                     appInfo("tail", "Tools ")};
  // " Pro Max" does not start with "pro", and its first word is "Pro", so
  // only "contains" applies; malformed bytes do not split words.
  EXPECT_EQ(search(apps, "pro"), (Ids{"bad", "lead"}));
  EXPECT_EQ(search(apps, "max"), Ids{"lead"});
  EXPECT_EQ(search(apps, "tool"), (Ids{"tail", "bad"}));
}

TEST(AppSearch, ResultsKeepTheirIndexAlive) {
  auto index = std::make_shared<const AppSearch::Index>(
      std::vector<AppInfo>{appInfo("n", "Notes"), appInfo("m", "Mail"), appInfo("k", "Keynote")});
  const AppSearch::Results results = AppSearch::search(index, "note");
  index.reset();
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(results.front().id, "n");
  EXPECT_EQ(results[1].name, "Keynote");
  Ids walked;
  for (const AppInfo& app : results) walked.push_back(app.id);
  EXPECT_EQ(walked, (Ids{"n", "k"}));
  EXPECT_EQ(results, AppSearch::search(std::make_shared<const AppSearch::Index>(results.toVector()), "note"));
  EXPECT_TRUE(AppSearch::search(nullptr, "a").empty());
}

TEST(AppSearch, IndexAgreesWithFilterOnRandomNames) {
  std::mt19937_64 random(4242);
  const std::vector<std::string> pieces = {"a", "b", "é", "E", " ", "  ", "pro", "Ö", "1", "10", "ß", "\t"};
  const auto randomText = [&](std::size_t maxPieces) {
    std::string text;
    const std::size_t count = std::uniform_int_distribution<std::size_t>(0, maxPieces)(random);
    for (std::size_t i = 0; i < count; ++i)
      text += pieces[std::uniform_int_distribution<std::size_t>(0, pieces.size() - 1)(random)];
    return text;
  };
  for (int round = 0; round < 50; ++round) {
    std::vector<AppInfo> apps;
    for (int i = 0; i < 40; ++i)
      apps.push_back(
          appInfo("id" + std::to_string(std::uniform_int_distribution<int>(0, 30)(random)), randomText(5)));
    const AppSearch::Index index(apps);
    for (int q = 0; q < 20; ++q) {
      const std::string query = randomText(3);
      EXPECT_EQ(index.filter(query), AppSearch::filter(apps, query)) << "query \"" << query << "\"";
    }
  }
}

}  // namespace
}  // namespace orrery
