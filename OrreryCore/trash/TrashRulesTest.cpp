#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "OrreryCore/testing/TemporaryDirectory.h"
#include "OrreryCore/trash/TrashRules.h"

namespace orrery {
namespace {

namespace fs = std::filesystem;

const std::string self = "ch.lumenfold.orrery";
const TrashRules::ParentWritable writable = [](const std::string&) { return true; };
// Paths without links resolve to themselves.
const TrashRules::PathResolver noLinks = [](const std::string& path) { return path; };

bool deletable(std::string_view path, const std::optional<std::string>& bundleID = std::nullopt) {
  return TrashRules::isDeletable(path, bundleID, self, writable, noLinks);
}

TEST(TrashRules, ProtectedAppsAndLocations) {
  EXPECT_TRUE(TrashRules::isProtected("/Applications/Orrery.app", self, self));
  EXPECT_TRUE(TrashRules::isProtected("/Applications/Safari.app", "com.apple.Safari", self));
  EXPECT_TRUE(TrashRules::isProtected("/Users/me/Safari copy.app", "com.apple.Safari", self));
  EXPECT_FALSE(TrashRules::isProtected("/Applications/Safari.app", "com.apple.safari", self));
  EXPECT_FALSE(TrashRules::isProtected("/Applications/Nameless.app", "", ""));

  // By location: macOS's system volume (by the standardized path) and what
  // Linux package managers own.
  const std::pair<const char*, bool> locations[] = {
      {"/Applications/Pages.app", false},
      {"/System", true},
      {"/System/Applications/Calculator.app", true},
      {"//System//Applications/Chess.app/", true},
      {"/Applications/../System/Applications/Chess.app", true},
      {"/System/../Applications/Chess.app", false},
      {"/Systemic/Tool.app", false},
      {"/Applications/System/Tool.app", false},
      {"/usr/share/applications/firefox.desktop", true},
      {"/usr/local/share/applications/tool.desktop", true},
      {"/var/lib/flatpak/exports/share/applications/org.gimp.GIMP.desktop", true},
      {"/home/me/.local/share/flatpak/exports/share/applications/org.gimp.GIMP.desktop", true},
      {"/var/lib/snapd/desktop/applications/vlc_vlc.desktop", true},
      {"/usrlocal/x.desktop", false},
      {"/home/me/.local/share/applications/mine.desktop", false},
  };
  for (const auto& [path, expected] : locations)
    EXPECT_EQ(TrashRules::isProtected(path, std::nullopt, self), expected) << path;
}

TEST(TrashRules, OnlyBundlesAndDesktopEntriesByExactExtension) {
  EXPECT_TRUE(deletable("/Applications/Pages.app"));
  EXPECT_TRUE(deletable("/Applications/Pages.app/"));
  EXPECT_TRUE(deletable("/home/me/.local/share/applications/mine.desktop"));
  EXPECT_FALSE(deletable("/Applications/Pages.APP"));
  EXPECT_FALSE(deletable("/Applications/Pages.app.zip"));
  EXPECT_FALSE(deletable("/Applications/Pages"));
  EXPECT_FALSE(deletable("/Applications/.app"));
  EXPECT_FALSE(deletable("/home/me/bin/tool.sh"));
  // Relative or empty paths can't be judged.
  EXPECT_FALSE(deletable("Applications/Pages.app"));
  EXPECT_FALSE(deletable(""));
  // Protected ones never, whatever the folder allows.
  EXPECT_FALSE(deletable("/Applications/Safari.app", "com.apple.Safari"));
  EXPECT_FALSE(deletable("/Applications/Orrery.app", self));
  EXPECT_FALSE(deletable("/System/Applications/Chess.app"));
  EXPECT_FALSE(deletable("/usr/share/applications/firefox.desktop"));
}

TEST(TrashRules, TheFolderMustBeWritable) {
  std::vector<std::string> asked;
  const TrashRules::ParentWritable rootOnly = [&](const std::string& folder) {
    asked.push_back(folder);
    return folder.starts_with("/home/");
  };
  EXPECT_FALSE(TrashRules::isDeletable("/Applications/Pages.app", std::nullopt, self, rootOnly, noLinks));
  EXPECT_TRUE(TrashRules::isDeletable("/home/me/Applications/../Apps/Pages.app/", std::nullopt, self,
                                      rootOnly, noLinks));
  EXPECT_EQ(asked, (std::vector<std::string>{"/Applications", "/home/me/Apps"}));
  EXPECT_FALSE(TrashRules::isDeletable("/home/me/Pages.app", std::nullopt, self, nullptr, noLinks));
}

TEST(TrashRules, LinksIntoTheSystemAreNotDeletable) {
  const TrashRules::PathResolver intoSystem = [](const std::string&) {
    return std::optional<std::string>("/System/Applications/Chess.app");
  };
  const TrashRules::PathResolver intoNixStore = [](const std::string&) {
    return std::optional<std::string>("/nix/store/abc-firefox/share/applications/firefox.desktop");
  };
  const TrashRules::PathResolver loop = [](const std::string&) { return std::optional<std::string>(); };
  EXPECT_FALSE(TrashRules::isDeletable("/Applications/Chess.app", std::nullopt, self, writable, intoSystem));
  EXPECT_FALSE(TrashRules::isDeletable("/home/me/.local/share/applications/firefox.desktop", std::nullopt,
                                       self, writable, intoNixStore));
  EXPECT_FALSE(TrashRules::isDeletable("/Applications/Chess.app", std::nullopt, self, writable, loop));
}

TEST(TrashRules, ResolvingFollowsRealLinks) {
  const orrery::testing::TemporaryDirectory temporary("orrery-trash");
  // Resolved paths come back canonical, so the expectations must be too.
  const fs::path root = fs::canonical(temporary.path());
  fs::create_directories(root / "Apps");
  fs::create_directories(root / "Real");
  fs::create_symlink("/System/Applications/Chess.app", root / "Apps/Chess.app");  // dangling here
  fs::create_symlink("../Real", root / "Apps/Folder");
  fs::create_symlink("Folder/../Real/Tool.app", root / "Apps/Tool.app");
  fs::create_symlink("Loop2.app", root / "Apps/Loop1.app");
  fs::create_symlink("Loop1.app", root / "Apps/Loop2.app");

  const std::string apps = (root / "Apps").string();
  const std::string real = (root / "Real").string();
  EXPECT_EQ(TrashRules::resolvingSymlinks(apps + "/Chess.app"), "/System/Applications/Chess.app");
  EXPECT_EQ(TrashRules::resolvingSymlinks(apps + "/Folder/Editor.app"), real + "/Editor.app");
  EXPECT_EQ(TrashRules::resolvingSymlinks(apps + "/Tool.app"), real + "/Tool.app");
  EXPECT_EQ(TrashRules::resolvingSymlinks(apps + "/./Plain.app/"), apps + "/Plain.app");
  EXPECT_FALSE(TrashRules::resolvingSymlinks(apps + "/Loop1.app"));

  // With the real resolver: the link's own folder is writable, its target
  // is the system's.
  EXPECT_FALSE(TrashRules::isDeletable(apps + "/Chess.app", std::nullopt, self, writable));
  EXPECT_TRUE(TrashRules::isDeletable(apps + "/Tool.app", std::nullopt, self, writable));
  EXPECT_FALSE(TrashRules::isDeletable(apps + "/Loop1.app", std::nullopt, self, writable));
}

}  // namespace
}  // namespace orrery
