#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <map>

#include <plist/plist.h>

#include "Orrery/platform/bundle/AppBundleFormat.h"
#include "OrreryCore/catalog/AppScanner.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::platform {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

std::string binaryPlist(const std::map<std::string, std::string>& strings) {
  plist_t dict = plist_new_dict();
  for (const auto& [key, value] : strings)
    plist_dict_set_item(dict, key.c_str(), plist_new_string(value.c_str()));
  char* bytes = nullptr;
  uint32_t length = 0;
  plist_to_bin(dict, &bytes, &length);
  std::string result(bytes, length);
  plist_to_bin_free(bytes);
  plist_free(dict);
  return result;
}

Date setModified(const fs::path& path, long seconds, bool followLink = true) {
  const timespec times[2] = {{seconds, 0}, {seconds, 500}};
  EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, followLink ? 0 : AT_SYMLINK_NOFOLLOW), 0);
  return Date(std::chrono::seconds(seconds)) +
         std::chrono::duration_cast<Date::duration>(std::chrono::nanoseconds(500));
}

class AppBundleFormatTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(base_.empty()); }

  std::string at(const std::string& relative) const { return (base_ / relative).string(); }

  // A bundle with the given Info.plist bytes (none when empty).
  std::string bundle(const std::string& relative, const std::string& infoPlist = {}) const {
    const fs::path contents = base_ / relative / "Contents";
    fs::create_directories(contents / "MacOS");
    if (!infoPlist.empty()) std::ofstream(contents / "Info.plist", std::ios::binary) << infoPlist;
    return (base_ / relative).string();
  }

  std::vector<AppInfo> scan(std::vector<std::string> roots) const {
    return AppScanner{std::move(roots), AppScanner::kDefaultMaxDepth,
                      std::make_shared<AppBundleFormat>("/home/u")}
        .scan();
  }

  orrery::testing::TemporaryDirectory temporary_{"orrery-bundles"};
  const fs::path base_ = temporary_.path();
};

// The name is the first non-empty string of the display name, the name and
// the folder's name; the id the bundle id, else the path. Missing,
// malformed, truncated or non-dictionary plists still give a record.
TEST_F(AppBundleFormatTest, NamesAndIdsFallBackToTheFolder) {
  const AppBundleFormat format("/home/u");
  const std::string full = binaryPlist({{"CFBundleName", "Cut"}});
  for (const auto& [folder, plist, name, id] : std::vector<std::array<std::string, 4>>{
           {"Mail.app",
            "<plist><dict><key>CFBundleDisplayName</key><string>Mail &amp; "
            "More</string><key>CFBundleName</key>"
            "<string>MailName</string><key>CFBundleIdentifier</key><string>com.apple.mail</string></dict></"
            "plist>",
            "Mail & More", "com.apple.mail"},
           // As Xcode writes it; and binary, where anything beyond ASCII is UTF-16.
           {"Preview.app",
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST "
            "1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n<dict>\n"
            "\t<key>CFBundleName</key>\n\t<string>Vorschau \xe2\x9c\x8e</string>\n"
            "\t<key>CFBundleIdentifier</key>\n\t<string>com.apple.Preview</string>\n</dict>\n</plist>\n",
            "Vorschau \xe2\x9c\x8e", "com.apple.Preview"},
           {"Notes.app", binaryPlist({{"CFBundleName", "Notizen \xe2\x9c\x8e"}, {"CFBundleIdentifier", "n"}}),
            "Notizen \xe2\x9c\x8e", "n"},
           {"Calc.app",
            binaryPlist(
                {{"CFBundleDisplayName", ""}, {"CFBundleName", "Calculator"}, {"CFBundleIdentifier", ""}}),
            "Calculator", ""},
           {"My.Tool.app",
            "<plist><dict><key>CFBundleName</key><integer>3</integer>"
            "<key>CFBundleIdentifier</key><array/></dict></plist>",
            "My.Tool", ""},
           {"Missing.app", "", "Missing", ""},
           {"Garbage.app", "\x01\x02not a plist at all", "Garbage", ""},
           {"Truncated.app", full.substr(0, full.size() / 2), "Truncated", ""},
           {"Array.app", "<plist><array><string>x</string></array></plist>", "Array", ""}}) {
    const auto path = bundle(folder, plist);
    const AppInfo app = format.read(path).app;
    EXPECT_EQ(app, (AppInfo{id.empty() ? path : id, name, path, app.modified})) << folder;
  }
}

TEST_F(AppBundleFormatTest, ScansATreeOfBundlesLikeTheFinderShowsIt) {
  bundle("Applications/Safari.app",
         binaryPlist({{"CFBundleName", "Safari"}, {"CFBundleIdentifier", "com.apple.Safari"}}));
  bundle("Applications/Utilities/Terminal.app",
         binaryPlist({{"CFBundleName", "Terminal"}, {"CFBundleIdentifier", "com.apple.Terminal"}}));
  bundle("Applications/A/B/Deep.app", binaryPlist({{"CFBundleIdentifier", "deep"}}));
  bundle("Applications/A/B/C/TooDeep.app", binaryPlist({{"CFBundleIdentifier", "too.deep"}}));
  bundle("Applications/Safari.app/Contents/Helpers/Helper.app",
         binaryPlist({{"CFBundleIdentifier", "helper"}}));
  bundle("Applications/.Trashes/Old.app", binaryPlist({{"CFBundleIdentifier", "old"}}));
  bundle("Applications/.Sneaky.app", binaryPlist({{"CFBundleIdentifier", "sneaky"}}));
  bundle("Applications/Games.APP/Chess.app", binaryPlist({{"CFBundleIdentifier", "com.apple.Chess"}}));
  bundle("Elsewhere/Tool.app", binaryPlist({{"CFBundleName", "Tool"}, {"CFBundleIdentifier", "tool"}}));
  fs::create_directory_symlink(at("Elsewhere/Tool.app"), at("Applications/Tool.app"));
  const Date linkDate = setModified(at("Applications/Tool.app"), 1'000'000'000, false);
  setModified(at("Elsewhere/Tool.app"), 1'100'000'000);
  const Date safariDate = setModified(at("Applications/Safari.app"), 1'200'000'000);
  // The same bundle id in the user's and the system folder: the user's wins.
  bundle("User/Safari.app",
         binaryPlist({{"CFBundleName", "Safari (user)"}, {"CFBundleIdentifier", "com.apple.Safari"}}));
  bundle("System/Maps.app",
         binaryPlist({{"CFBundleName", "Maps"}, {"CFBundleIdentifier", "com.apple.Maps"}}));
  bundle("System/Terminal.app",
         binaryPlist({{"CFBundleName", "Terminal (system)"}, {"CFBundleIdentifier", "com.apple.Terminal"}}));

  const auto apps = scan({at("Applications"), at("User"), at("System")});
  std::vector<std::string> seen;
  for (const AppInfo& app : apps) seen.push_back(app.id + " " + app.url.substr(base_.string().size()));
  EXPECT_THAT(
      seen,
      ElementsAre("com.apple.Chess /Applications/Games.APP/Chess.app", "deep /Applications/A/B/Deep.app",
                  "com.apple.Maps /System/Maps.app", "com.apple.Safari /Applications/Safari.app",
                  "com.apple.Terminal /Applications/Utilities/Terminal.app", "tool /Applications/Tool.app"));
  EXPECT_EQ(apps[3].modified, safariDate);
  // A linked bundle is read through the link but keeps the link's own path and date.
  EXPECT_EQ(apps[5].name, "Tool");
  EXPECT_EQ(apps[5].modified, linkDate);
}

TEST(AppBundleFormatRoots, AreTheSystemUserAndBuiltInFolders) {
  EXPECT_THAT(AppBundleFormat("/Users/anna/").defaultRoots(),
              ElementsAre("/Applications", "/Users/anna/Applications", "/System/Applications"));
  EXPECT_THAT(AppBundleFormat("").defaultRoots(), ElementsAre("/Applications", "/System/Applications"));
  const AppBundleFormat format("/Users/anna");
  EXPECT_TRUE(format.isCandidate("Mail.app"));
  EXPECT_FALSE(format.isCandidate("Mail.APP"));
  EXPECT_FALSE(format.isCandidate("Mail.app.zip"));
}

}  // namespace
}  // namespace orrery::platform
