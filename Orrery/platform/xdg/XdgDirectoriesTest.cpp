#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "Orrery/platform/xdg/XdgDirectories.h"

namespace orrery::platform {
namespace {

using ::testing::ElementsAre;

XdgDirectories from(std::map<std::string, std::string> variables) {
  return XdgDirectories::fromVariables([variables](const char* name) -> const char* {
    const auto found = variables.find(name);
    return found == variables.end() ? nullptr : found->second.c_str();
  });
}

TEST(XdgDirectories, FallsBackToTheDefaultsUnderHome) {
  const XdgDirectories defaults = from({{"HOME", "/home/anna/"}});
  EXPECT_EQ(defaults.home, "/home/anna");
  EXPECT_EQ(defaults.dataHome, "/home/anna/.local/share");
  EXPECT_EQ(defaults.configHome, "/home/anna/.config");
  EXPECT_THAT(defaults.dataDirs, ElementsAre("/usr/local/share", "/usr/share"));
  EXPECT_THAT(defaults.configDirs, ElementsAre("/etc/xdg"));

  // The root as home must not give "//.config".
  EXPECT_EQ(from({{"HOME", "/"}}).configHome, "/.config");
}

TEST(XdgDirectories, IgnoresRelativeEntriesAndNeverPointsAtTheWorkingFolder) {
  const XdgDirectories custom = from({{"HOME", "/home/anna"},
                                      {"XDG_DATA_HOME", "relative/share"},
                                      {"XDG_CONFIG_HOME", "/cfg/"},
                                      {"XDG_DATA_DIRS", "/opt/share::relative:/usr/share/"},
                                      {"XDG_CONFIG_DIRS", "relative"}});
  EXPECT_EQ(custom.dataHome, "/home/anna/.local/share");
  EXPECT_EQ(custom.configHome, "/cfg");
  EXPECT_THAT(custom.dataDirs, ElementsAre("/opt/share", "/usr/share"));
  // Set, but with nothing usable: no folder rather than the defaults.
  EXPECT_TRUE(custom.configDirs.empty());

  const XdgDirectories homeless = from({{"HOME", "relative/home"}});
  EXPECT_EQ(homeless.home, "");
  EXPECT_EQ(homeless.dataHome, "");
  EXPECT_EQ(homeless.configHome, "");
}

}  // namespace
}  // namespace orrery::platform
