#include <gtest/gtest.h>

#include <set>
#include <string>

#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/FlatMap.h"
#include "OrreryCore/base/Uuid.h"

namespace orrery {
namespace {

TEST(Uuid, RandomIsVersion4UpperCaseAndUnique) {
  std::set<Uuid> seen;
  for (int i = 0; i < 1000; ++i) {
    const Uuid id = Uuid::random();
    EXPECT_TRUE(seen.insert(id).second);
    const std::string text = id.text();
    ASSERT_EQ(text.size(), 36u);
    EXPECT_EQ(text[14], '4');
    EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos);
    for (char c : text) EXPECT_TRUE((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || c == '-');
    EXPECT_EQ(Uuid::parse(text), id);
  }
}

TEST(Uuid, ParsesEitherCaseAndRejectsOtherForms) {
  const auto lower = Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
  ASSERT_TRUE(lower);
  EXPECT_EQ(lower->text(), "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
  EXPECT_EQ(Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"), lower);
  for (const char* bad : {"", "E621E1F8C36C495A93FC0C247A3E6E5F", "{E621E1F8-C36C-495A-93FC-0C247A3E6E5F}",
                          "E621E1F8-C36C-495A-93FC-0C247A3E6E5G", "E621E1F8-C36C-495A-93FC-0C247A3E6E5",
                          "E621E1F8+C36C-495A-93FC-0C247A3E6E5F"})
    EXPECT_FALSE(Uuid::parse(bad)) << bad;
}

TEST(Date, ReferenceSecondsRoundTripAndClamp) {
  EXPECT_EQ(iso8601(referenceDate()), "2001-01-01T00:00:00Z");
  const Date date = dateFromReferenceSeconds(815'000'000.25);
  EXPECT_DOUBLE_EQ(secondsSinceReferenceDate(date), 815'000'000.25);
  EXPECT_EQ(iso8601(dateFromReferenceSeconds(-978307200)), "1970-01-01T00:00:00Z");
  // Hostile values from a file never overflow.
  EXPECT_GT(dateFromReferenceSeconds(1e300), dateFromReferenceSeconds(1e9));
  EXPECT_LT(dateFromReferenceSeconds(-1e300), referenceDate());
  EXPECT_EQ(dateFromReferenceSeconds(std::numeric_limits<double>::quiet_NaN()), referenceDate());
}

// Grows past its size hint, keeps the first value of a key, and still finds
// every key when all of them collide.
TEST(FlatMap, FindsEveryKeyThroughGrowthAndCollisions) {
  struct Collide {
    std::size_t operator()(int) const { return 7; }
  };
  FlatMap<int, int> spread(2);
  FlatMap<int, int, Collide> colliding;
  for (int i = 0; i < 1000; ++i) {
    ASSERT_TRUE(spread.tryEmplace(i * 37, i).second);
    ASSERT_TRUE(colliding.tryEmplace(i, -i).second);
  }
  EXPECT_FALSE(spread.tryEmplace(37, 99).second);
  EXPECT_EQ(*spread.tryEmplace(37, 99).first, 1);
  EXPECT_EQ(spread.size(), 1000u);
  for (int i = 0; i < 1000; ++i) {
    ASSERT_NE(spread.find(i * 37), nullptr);
    EXPECT_EQ(*spread.find(i * 37), i);
    EXPECT_EQ(*colliding.find(i), -i);
  }
  EXPECT_FALSE(spread.contains(1));
  EXPECT_FALSE(colliding.contains(1000));
}

}  // namespace
}  // namespace orrery
