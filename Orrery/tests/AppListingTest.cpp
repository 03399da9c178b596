// "orrery --list-apps": the apps in the overlay's order, and with --all the
// entries left out with their reasons, read from real desktop entries and a
// saved arrangement that is never written.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Orrery/platform/xdg/DesktopEntryFormat.h"
#include "Orrery/shell/AppListing.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::app {
namespace {

namespace fs = std::filesystem;

class AppListingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(user());
    fs::create_directories(system());
    entry(system() / "alpha.desktop", "Alpha", "");
    entry(system() / "beta.desktop", "Beta", "");
    entry(system() / "gamma.desktop", "Gamma", "");
    entry(system() / "delta.desktop", "Delta", "");
    entry(system() / "settings.desktop", "Settings", "NoDisplay=true\n");
    entry(system() / "kde-only.desktop", "Konsole", "OnlyShowIn=KDE;\n");
    entry(system() / "missing.desktop", "Missing", "TryExec=no-such-program-anywhere\n");
    // The user's copy masks the system's entry with the same id.
    entry(system() / "masked.desktop", "Masked", "");
    entry(user() / "masked.desktop", "Masked", "Hidden=true\n");
  }

  fs::path user() const { return tree() / "user/applications"; }
  fs::path system() const { return tree() / "system/applications"; }
  fs::path layoutFile() const { return tree() / "layout.json"; }
  const fs::path& tree() const { return temporary.path(); }

  static void entry(const fs::path& file, const std::string& name, const std::string& extra) {
    std::ofstream(file) << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=true\n" << extra;
  }

  AppScanner scanner() const {
    platform::DesktopEnvironment environment;
    environment.dataHome = (tree() / "user").string();
    environment.dataDirs = {(tree() / "system").string()};
    environment.currentDesktops = {"GNOME"};
    environment.searchPath = "/usr/bin:/bin";
    auto format = std::make_shared<const platform::DesktopEntryFormat>(environment);
    return AppScanner{format->defaultRoots(), AppScanner::kDefaultMaxDepth, format};
  }

  std::string list(bool all, std::string* errors = nullptr) const {
    std::ostringstream out;
    std::ostringstream problems;
    EXPECT_EQ(listApps(scanner(), layoutFile(), all, out, problems), 0);
    if (errors) *errors = problems.str();
    return out.str();
  }

  testing::TemporaryDirectory temporary{"orrery-listing"};
};

TEST_F(AppListingTest, FollowsTheSavedArrangementAndNeverWritesIt) {
  const std::string saved =
      R"({"hidden": ["beta.desktop"], "items": [{"folder": {"_0": {"appIDs": ["gamma.desktop", "delta.desktop"], )"
      R"("id": "6B29FC40-CA47-1067-B31D-00DD010662DA", "name": "Tools"}}}, {"app": {"_0": "alpha.desktop"}}], )"
      R"("version": 1})";
  std::ofstream(layoutFile()) << saved;
  const auto written = fs::last_write_time(layoutFile());

  const std::string folder = system().string();
  EXPECT_EQ(list(false),
            "# Folder: Tools\n"
            "gamma.desktop\tGamma\t" +
                folder +
                "/gamma.desktop\n"
                "delta.desktop\tDelta\t" +
                folder +
                "/delta.desktop\n"
                "alpha.desktop\tAlpha\t" +
                folder + "/alpha.desktop\n");
  EXPECT_EQ(list(true), list(false) + "beta.desktop\tBeta\t" + folder +
                            "/beta.desktop\twithheld: hidden in Orrery\n"
                            "kde-only.desktop\t\t" +
                            folder +
                            "/kde-only.desktop\twithheld: OnlyShowIn/NotShowIn\n"
                            "masked.desktop\t\t" +
                            user().string() +
                            "/masked.desktop\twithheld: Hidden\n"
                            "masked.desktop\t\t" +
                            folder + "/masked.desktop\twithheld: masked by " + user().string() +
                            "/masked.desktop\n"
                            "missing.desktop\t\t" +
                            folder +
                            "/missing.desktop\twithheld: TryExec program not installed\n"
                            "settings.desktop\t\t" +
                            folder + "/settings.desktop\twithheld: NoDisplay\n");
  std::ifstream in(layoutFile());
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), saved);
  EXPECT_EQ(fs::last_write_time(layoutFile()), written);
}

TEST_F(AppListingTest, ADamagedArrangementIsReportedAndLeftWhereItIs) {
  std::ofstream(layoutFile()) << "{ not json";
  std::string errors;
  const std::string listing = list(false, &errors);
  EXPECT_NE(errors.find("cannot be read"), std::string::npos);
  // Name order, as a first scan would place them.
  EXPECT_EQ(listing.substr(0, listing.find('\t')), "alpha.desktop");
  EXPECT_LT(listing.find("delta.desktop"), listing.find("gamma.desktop"));
  EXPECT_NE(listing.find("gamma.desktop"), std::string::npos);
  EXPECT_EQ(std::distance(fs::directory_iterator(tree()), fs::directory_iterator()),
            3);  // user, system, layout.json
}

}  // namespace
}  // namespace orrery::app
