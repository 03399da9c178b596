#include <gtest/gtest.h>

#include <map>
#include <string>

#include "Orrery/platform/posix/ProcessEnvironment.h"
#include "OrreryCore/testing/ScopedVariable.h"

namespace orrery::platform {
namespace {

std::string localeOf(std::map<std::string, std::string> variables) {
  return collationLocale([variables](const char* name) -> const char* {
    const auto found = variables.find(name);
    return found == variables.end() ? nullptr : found->second.c_str();
  });
}

TEST(CollationLocale, FollowsTheCLibrarysPrecedenceAndNeverTheCLocale) {
  EXPECT_EQ(localeOf({{"LANG", "sv_SE.UTF-8"}}), "sv_SE");
  EXPECT_EQ(localeOf({{"LANG", "sv_SE.UTF-8"}, {"LC_COLLATE", "de_CH.UTF-8@euro"}}), "de_CH");
  EXPECT_EQ(localeOf({{"LC_ALL", "POSIX"}, {"LC_COLLATE", "de_CH.UTF-8"}}), "en_US");
  EXPECT_EQ(localeOf({{"LANG", "C"}}), "en_US");
  // An empty variable counts as unset.
  EXPECT_EQ(localeOf({{"LC_ALL", ""}, {"LANG", "fr_FR"}}), "fr_FR");
  EXPECT_EQ(localeOf({}), "en_US");
}

TEST(ProcessVariables, ARelativeHomeComesFromTheUserDatabase) {
  const orrery::testing::ScopedVariable relative("HOME", "not/absolute");
  const VariableLookup variables = processVariables();
  const char* home = variables("HOME");
  ASSERT_NE(home, nullptr);
  EXPECT_EQ(home[0], '/');
  EXPECT_STRNE(home, "not/absolute");
}

}  // namespace
}  // namespace orrery::platform
