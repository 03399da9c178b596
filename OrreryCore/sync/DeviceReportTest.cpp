#include "OrreryCore/sync/DeviceReport.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace orrery {
namespace {

using nlohmann::json;
using std::chrono::seconds;

const Uuid kA = *Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
const Uuid kB = *Uuid::parse("0C247A3E-C36C-495A-93FC-E621E1F86E5F");
const Uuid kC = *Uuid::parse("11111111-2222-4333-8444-555555555555");
const Date kNow = dateFromReferenceSeconds(800'000'000);

TEST(DeviceReport, RoundTripsSortedAndUpperCase) {
  const DeviceReport report{kA, {"org.z", "com.b", "com.a"}, dateFromReferenceSeconds(795'000'000.5)};
  const std::string bytes = report.encoded();
  EXPECT_EQ(bytes, R"({"deviceID":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F",)"
                   R"("installed":["com.a","com.b","org.z"],"lastSeen":795000000.5})");
  EXPECT_EQ(DeviceReport::decode(bytes), report);

  for (const char* bad :
       {R"({"installed":[],"lastSeen":1})",
        R"({"deviceID":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","installed":[1],"lastSeen":1})",
        R"({"deviceID":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","installed":"a","lastSeen":1})",
        R"({"deviceID":"E621E1F8","installed":[],"lastSeen":1})",
        R"({"deviceID":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","installed":[]})", "[]", "{"}) {
    EXPECT_FALSE(DeviceReport::decode(bad)) << bad;
  }
}

TEST(DeviceReports, LiveAppIDsCountOnlyRecentNonEmptyReports) {
  const DeviceReport recent{kA, {"com.a", "com.b"}, kNow - seconds(3600)};
  const DeviceReport almostOld{kB, {"com.c"}, kNow - DeviceReports::window + seconds(1)};
  const DeviceReport exactlyOld{kC, {"com.old"}, kNow - DeviceReports::window};
  const DeviceReport emptyScan{kC, {}, kNow};
  const DeviceReport future{kC, {"com.f"}, kNow + seconds(600)};  // a machine with a fast clock

  EXPECT_EQ(DeviceReports::liveAppIDs({recent, almostOld, exactlyOld, emptyScan, future}, kNow),
            (AppIDSet{"com.a", "com.b", "com.c", "com.f"}));
  // No report counts: nothing, which is not "no apps".
  EXPECT_EQ(DeviceReports::liveAppIDs({exactlyOld, emptyScan}, kNow), std::nullopt);
  EXPECT_EQ(DeviceReports::liveAppIDs({}, kNow), std::nullopt);
}

TEST(DeviceReports, NotingWriterKeepsTheLatestAndForgetsTheOld) {
  Writers writers{{kA, kNow - seconds(10)}, {kB, kNow - DeviceReports::window}};
  // An older write than the one known keeps the known date; kB, exactly 30
  // days old, goes on every call.
  Writers noted = DeviceReports::notingWriter(kA, kNow - seconds(100), writers, kNow);
  EXPECT_EQ(noted, (Writers{{kA, kNow - seconds(10)}}));
  noted = DeviceReports::notingWriter(kA, kNow, noted, kNow);
  EXPECT_EQ(noted.at(kA), kNow);
  noted =
      DeviceReports::notingWriter(kC, kNow + seconds(5), noted, kNow + DeviceReports::window - seconds(1));
  EXPECT_EQ(noted, (Writers{{kA, kNow}, {kC, kNow + seconds(5)}}));
  noted = DeviceReports::notingWriter(kC, kNow, noted, kNow + DeviceReports::window);
  EXPECT_EQ(noted, (Writers{{kC, kNow + seconds(5)}}));
  // A write noted with a date already out of the window is dropped at once.
  EXPECT_TRUE(DeviceReports::notingWriter(kB, kNow - DeviceReports::window - seconds(1), {}, kNow).empty());
}

}  // namespace
}  // namespace orrery
