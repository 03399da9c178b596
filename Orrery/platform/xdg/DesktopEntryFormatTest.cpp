#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "Orrery/platform/xdg/DesktopEntryFormat.h"
#include "OrreryCore/catalog/AppScanner.h"
#include "OrreryCore/testing/ScopedVariable.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::platform {
namespace {

namespace fs = std::filesystem;
using orrery::testing::ScopedVariable;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAreArray;

class DesktopEntryFormatTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(base_.empty());
    fs::create_directories(base_ / "bin");
    std::ofstream(base_ / "bin/present-tool") << "#!/bin/sh\n";
    fs::permissions(base_ / "bin/present-tool", fs::perms(0755));
    std::ofstream(base_ / "bin/not-executable") << "#!/bin/sh\n";
    fs::permissions(base_ / "bin/not-executable", fs::perms(0644));
    environment_.searchPath = "/nonexistent-bin:" + at("bin");
    environment_.currentDesktops = {"X-Cinnamon", "GNOME"};
  }

  std::string at(const std::string& relative) const { return (base_ / relative).string(); }

  // An application entry with the given lines, runnable unless they say
  // otherwise about Exec.
  std::string entry(const std::string& relative, const std::string& lines = "Name=App\n") const {
    const bool ownExec = ("\n" + lines).find("\nExec=") != std::string::npos;
    return write(relative, "[Desktop Entry]\nType=Application\n" +
                               std::string(ownExec ? "" : "Exec=present-tool %U\n") + lines);
  }

  std::string write(const std::string& relative, const std::string& text) const {
    fs::create_directories((base_ / relative).parent_path());
    std::ofstream(base_ / relative, std::ios::binary) << text;
    return at(relative);
  }

  std::vector<AppInfo> scan(std::vector<std::string> roots) const {
    return AppScanner{std::move(roots), AppScanner::kDefaultMaxDepth,
                      std::make_shared<DesktopEntryFormat>(environment_)}
        .scan();
  }

  // "id @ path below the temp folder" for each app.
  std::vector<std::string> scanned(std::vector<std::string> roots) const {
    std::vector<std::string> lines;
    for (const AppInfo& app : scan(std::move(roots)))
      lines.push_back(app.id + " @ " + app.url.substr(base_.string().size() + 1));
    return lines;
  }

  orrery::testing::TemporaryDirectory temporary_{"orrery-entries"};
  const fs::path base_ = temporary_.path();
  DesktopEnvironment environment_;
};

TEST_F(DesktopEntryFormatTest, NamesFollowTheMessageLanguage) {
  const ScopedVariable noAll("LC_ALL", "");
  entry("apps/files.desktop",
        "Name=Files\nName[de]=Dateien\nName[de_CH]=Dateie\nName[fr]=\nGenericName[de]=Dateiverwaltung\n");
  entry("apps/unnamed.tool.desktop", "Comment=No name at all\n");
  entry("apps/emptyname.desktop", "Name=\n");
  // Comments, spacing and translated actions around the name change nothing.
  entry("apps/spaced.desktop",
        "# Translators: the name\n  Name = Spaced\n\n  Name[de] = Mit Abstand\nName[fr]=Espac\u00e9\n"
        "[Desktop Action new]\nName=New\nName[de]=Neu\nName[fr]=Nouveau\nExec=present-tool --new\n");
  // Files the key-file parser rejects anywhere are not listed.
  entry("apps/broken-action.desktop", "Name=Broken\n[Desktop Action x]\nName[de]]=Kaputt\n");
  write("apps/key-before-group.desktop", "Name[de]=Vorne\n[Desktop Entry]\nType=Application\nName=Front\n");
  const auto names = [&] {
    std::vector<std::string> result;
    for (const AppInfo& app : scan({at("apps")})) result.push_back(app.name);
    return result;
  };
  {
    const ScopedVariable language("LANGUAGE", "de_CH.UTF-8");
    EXPECT_THAT(names(), ElementsAre("Dateie", "emptyname", "Mit Abstand", "unnamed.tool"));
  }
  {
    // An empty translation is passed over, not shown as a blank name.
    const ScopedVariable language("LANGUAGE", "fr:de");
    EXPECT_THAT(names(), ElementsAre("Dateien", "emptyname", "Espac\u00e9", "unnamed.tool"));
  }
}

// Whether an entry is listed with the current desktops X-Cinnamon:GNOME and
// with none named; one that is not listed still hides a later one with its id.
TEST_F(DesktopEntryFormatTest, ListedEntriesAndTheOnesTheyHide) {
  struct Case {
    std::string name, lines;
    bool listed, listedWithoutDesktops;
  };
  const std::vector<Case> cases{
      {"only-gnome", "OnlyShowIn=GNOME;\n", true, false},
      {"not-kde", "NotShowIn=KDE;\n", true, true},
      {"onlykde", "OnlyShowIn=KDE;LXQt;\n", false, false},
      {"notgnome", "NotShowIn=GNOME;\n", false, true},
      // The first current desktop that either list names decides.
      {"cinnamon-first", "OnlyShowIn=X-Cinnamon;\nNotShowIn=GNOME;\n", true, false},
      {"tryexec-in-path", "TryExec=present-tool\n", true, true},
      {"tryexec-absolute", "TryExec=" + at("bin/present-tool") + "\n", true, true},
      {"dbus", "Exec=\nDBusActivatable=true\n", true, true},
      {"hidden", "Hidden=true\n", false, false},
      {"nodisplay", "NoDisplay=true\n", false, false},
      {"tryexec-missing", "TryExec=no-such-tool\n", false, false},
      {"tryexec-not-executable", "TryExec=" + at("bin/not-executable") + "\n", false, false},
      {"exec-missing", "Exec=/opt/gone/bin/tool --flag\n", false, false},
      {"exec-unparsable", "Exec=present-tool \"unterminated\n", false, false},
      {"foreign-encoding", "Encoding=ISO-8859-1\n", false, false},
  };
  for (const Case& c : cases) {
    entry("user/applications/" + c.name + ".desktop", "Name=" + c.name + "\n" + c.lines);
    entry("system/applications/" + c.name + ".desktop", "Name=" + c.name + " (system)\n");
  }
  write("user/applications/link.desktop", "[Desktop Entry]\nType=Link\nURL=https://example.org\n");
  write("user/applications/broken.desktop", "this is not a key file\n\x01\x02");
  write("user/applications/othergroup.desktop", "[Other]\nA=b\n[Desktop Entry]\nType=Application\nName=X\n");
  for (const char* name : {"link", "broken", "othergroup"})
    entry("system/applications/" + std::string(name) + ".desktop");

  const auto expected = [&](bool Case::*listed) {
    std::vector<std::string> lines;
    for (const Case& c : cases)
      if (c.*listed) lines.push_back(c.name + ".desktop @ user/applications/" + c.name + ".desktop");
    return lines;
  };
  const std::vector<std::string> roots{at("user/applications"), at("system/applications")};
  EXPECT_THAT(scanned(roots), UnorderedElementsAreArray(expected(&Case::listed)));
  environment_.currentDesktops = {};
  EXPECT_THAT(scanned(roots), UnorderedElementsAreArray(expected(&Case::listedWithoutDesktops)));
  // Without the masking entries, the system's copies come through.
  fs::remove_all(base_ / "user");
  EXPECT_EQ(scanned(roots).size(), cases.size() + 3);
}

TEST_F(DesktopEntryFormatTest, ProgramsAreLookedUpAgainOnEveryScan) {
  entry("apps/later.desktop", "Name=Later\nTryExec=later-tool\nExec=later-tool %U\n");
  entry("apps/now.desktop", "Name=Now\n");
  const auto format = std::make_shared<DesktopEntryFormat>(environment_);
  const AppScanner scanner{{at("apps")}, AppScanner::kDefaultMaxDepth, format};
  ASSERT_EQ(scanner.scan().size(), 1u);
  // Installed after the first scan: the same format finds it the next time.
  std::ofstream(base_ / "bin/later-tool") << "#!/bin/sh\n";
  fs::permissions(base_ / "bin/later-tool", fs::perms(0755));
  EXPECT_EQ(scanner.scan().size(), 2u);
}

TEST_F(DesktopEntryFormatTest, SubfoldersMakeIdsAndTheFirstRootWins) {
  entry("home/applications/kde/konsole.desktop", "Name=Konsole (user)\n");
  entry("home/applications/firefox.desktop", "Name=Firefox (user)\n");
  entry("usr/applications/firefox.desktop", "Name=Firefox\n");
  entry("usr/applications/kde-konsole.desktop", "Name=Konsole\n");
  entry("usr/applications/a/b/deep.desktop", "Name=Deep\n");
  entry("usr/applications/a/b/c/too-deep.desktop", "Name=Too deep\n");
  entry("usr/applications/.hidden/secret.desktop", "Name=Secret\n");
  write("usr/applications/notes.txt", "not an entry");
  write("usr/applications/bad-\xff.desktop", "[Desktop Entry]\nType=Application\nName=Latin-1 file name\n");
  EXPECT_THAT(scanned({at("home/applications"), at("usr/applications")}),
              ElementsAre("a-b-deep.desktop @ usr/applications/a/b/deep.desktop",
                          "firefox.desktop @ home/applications/firefox.desktop",
                          "kde-konsole.desktop @ home/applications/kde/konsole.desktop"));
}

TEST_F(DesktopEntryFormatTest, FlatpakExportLinksAreReadThroughAndDatedByTheirTarget) {
  const std::string target =
      entry("flatpak/app/org.gnome.Maps/current/active/export/share/applications/org.gnome.Maps.desktop",
            "Name=Maps\nExec=present-tool run org.gnome.Maps\n");
  const timespec times[2] = {{1'500'000'000, 0}, {1'500'000'000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, target.c_str(), times, 0), 0);
  fs::create_directories(base_ / "flatpak/exports/share/applications");
  fs::create_symlink(target, at("flatpak/exports/share/applications/org.gnome.Maps.desktop"));
  fs::create_symlink(at("nowhere.desktop"), at("flatpak/exports/share/applications/dangling.desktop"));

  const auto apps = scan({at("flatpak/exports/share/applications")});
  ASSERT_EQ(apps.size(), 1u);
  EXPECT_EQ(apps[0], (AppInfo{"org.gnome.Maps.desktop", "Maps",
                              at("flatpak/exports/share/applications/org.gnome.Maps.desktop"),
                              Date(std::chrono::seconds(1'500'000'000))}));
}

TEST(DesktopEnvironment, FollowsTheBaseDirectoryDefaults) {
  const auto from = [](std::map<std::string, std::string> variables) {
    return DesktopEnvironment::fromVariables([variables](const char* name) -> const char* {
      const auto found = variables.find(name);
      return found == variables.end() ? nullptr : found->second.c_str();
    });
  };
  const DesktopEnvironment defaults = from({{"HOME", "/home/anna/"}});
  EXPECT_THAT(defaults.currentDesktops, IsEmpty());
  EXPECT_EQ(defaults.searchPath, "/bin:/usr/bin:.");
  EXPECT_THAT(DesktopEntryFormat(defaults).defaultRoots(),
              ElementsAre("/home/anna/.local/share/applications", "/usr/local/share/applications",
                          "/usr/share/applications"));

  // Relative and empty entries are ignored; repeated folders are scanned once.
  const DesktopEnvironment custom =
      from({{"HOME", "/home/anna"},
            {"XDG_DATA_HOME", "relative/share"},
            {"XDG_DATA_DIRS", "/var/lib/flatpak/exports/share::relative:/usr/share/:/usr/share"},
            {"XDG_CURRENT_DESKTOP", "ubuntu:GNOME"},
            {"PATH", "/usr/bin"}});
  EXPECT_THAT(custom.currentDesktops, ElementsAre("ubuntu", "GNOME"));
  EXPECT_EQ(custom.searchPath, "/usr/bin");
  EXPECT_THAT(DesktopEntryFormat(custom).defaultRoots(),
              ElementsAre("/home/anna/.local/share/applications",
                          "/var/lib/flatpak/exports/share/applications", "/usr/share/applications"));

  EXPECT_THAT(DesktopEntryFormat(from({})).defaultRoots(),
              ElementsAre("/usr/local/share/applications", "/usr/share/applications"));
}

}  // namespace
}  // namespace orrery::platform
