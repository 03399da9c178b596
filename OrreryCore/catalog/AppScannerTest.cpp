#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>
#include <thread>

#include "OrreryCore/catalog/AppScanner.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A format small enough to read at a glance: a candidate is "*.app" (or
// "*.entry" files when `kind` says so); its id comes from a file "id"
// inside (else the path), its name from a file "name" (else the file name
// without extension), and a file "unlisted" makes it claim its id only.
class TestFormat final : public BundleFormat {
 public:
  explicit TestFormat(Kind kind = Kind::directory) : kind_(kind) {}

  std::vector<std::string> defaultRoots() const override { return {}; }
  bool isCandidate(std::string_view name) const override {
    return name.ends_with(kind_ == Kind::directory ? ".app" : ".entry");
  }
  Kind candidateKind() const override { return kind_; }

  std::unique_ptr<Reader> startScan() const override {
    struct Records final : Reader {
      explicit Records(const TestFormat& owner) : format(owner) {}
      BundleRecord read(const std::string& path, std::string_view relativePath) override {
        return format.read(path, relativePath);
      }
      const TestFormat& format;
    };
    return std::make_unique<Records>(*this);
  }

  BundleRecord read(const std::string& path, std::string_view relativePath) const {
    const fs::path bundle(path);
    BundleRecord record;
    record.app.url = path;
    record.app.id = contents(bundle / "id").value_or(path);
    record.app.name = contents(bundle / "name").value_or(bundle.stem().string());
    record.listed = !fs::exists(bundle / "unlisted");
    const std::lock_guard lock(mutex_);
    relativePaths_.insert(std::string(relativePath));
    return record;
  }

  std::set<std::string> relativePaths() const {
    const std::lock_guard lock(mutex_);
    return relativePaths_;
  }

 private:
  static std::optional<std::string> contents(const fs::path& file) {
    std::ifstream in(file);
    std::string text;
    if (!in || !std::getline(in, text)) return std::nullopt;
    return text;
  }

  Kind kind_;
  mutable std::mutex mutex_;
  mutable std::set<std::string> relativePaths_;
};

// The POSIX reader with faults: folders that cannot be opened and paths
// whose resolved type cannot be read.
class FaultyReader final : public DirectoryReader {
 public:
  std::set<std::string> unreadableFolders;
  std::set<std::string> unresolvable;

  bool list(const std::string& folder, std::vector<Entry>& entries) const override {
    if (unreadableFolders.contains(folder)) return false;
    return posix()->list(folder, entries);
  }
  Type resolvedType(const std::string& path) const override {
    if (unresolvable.contains(path)) return Type::unknown;
    return posix()->resolvedType(path);
  }
};

class AppScannerTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(base_.empty()); }

  std::string at(const std::string& relative) const { return (base_ / relative).string(); }

  // A bundle at `relative`, optionally with an id, a name and the unlisted mark.
  std::string bundle(const std::string& relative, const std::string& id = {}, const std::string& name = {},
                     bool listed = true) const {
    const fs::path path = base_ / relative;
    fs::create_directories(path);
    if (!id.empty()) std::ofstream(path / "id") << id << "\n";
    if (!name.empty()) std::ofstream(path / "name") << name << "\n";
    if (!listed) std::ofstream(path / "unlisted");
    return path.string();
  }

  void file(const std::string& relative, const std::string& text = "x") const {
    fs::create_directories((base_ / relative).parent_path());
    std::ofstream(base_ / relative) << text;
  }

  std::vector<std::string> scanUrls(
      std::vector<std::string> roots, int maxDepth,
      std::shared_ptr<const BundleFormat> format = std::make_shared<TestFormat>(),
      std::shared_ptr<const DirectoryReader> reader = DirectoryReader::posix()) const {
    const AppScanner scanner{std::move(roots), maxDepth, std::move(format), std::move(reader)};
    std::vector<std::string> urls;
    for (const AppInfo& app : scanner.scan()) urls.push_back(app.url);
    return urls;
  }

  orrery::testing::TemporaryDirectory temporary_{"orrery-scan"};
  const fs::path base_ = temporary_.path();
};

TEST_F(AppScannerTest, WalksToTheDepthAndSkipsHiddenEntriesAndBundleContents) {
  bundle("root/A.app");
  bundle("root/F/B.app");
  bundle("root/F/G/C.app");
  bundle("root/F/G/H/D.app");                // depth 3
  bundle("root/A.app/Contents/Nested.app");  // inside a bundle
  bundle("root/.hidden/E.app");
  bundle("root/.X.app");
  bundle("root/Foo.APP/G.app");  // Foo.APP is an ordinary folder
  file("root/File.app");         // a file is no bundle
  bundle("outside/Target.app", "", "Linked");
  fs::create_directory_symlink(at("outside/Target.app"), at("root/Linked.app"));
  bundle("outside/Folder/Z.app");
  fs::create_directory_symlink(at("outside/Folder"),
                               at("root/LinkedFolder"));  // links to folders are not followed
  fs::create_directory_symlink(at("nowhere"), at("root/Dangling.app"));

  EXPECT_THAT(scanUrls({at("root")}, 2),
              ElementsAre(at("root/A.app"), at("root/F/B.app"), at("root/F/G/C.app"),
                          at("root/Foo.APP/G.app"), at("root/Linked.app")));
  EXPECT_THAT(scanUrls({at("root")}, 0), ElementsAre(at("root/A.app"), at("root/Linked.app")));
  EXPECT_THAT(scanUrls({at("root")}, -1), IsEmpty());
}

TEST_F(AppScannerTest, EarlierRootAndShorterPathWinDuplicatesEvenUnlisted) {
  bundle("first/Deep/Deeper/Mail.app", "com.mail", "Mail (deep)");
  bundle("second/Mail.app", "com.mail", "Mail (second root)");
  // Within one root the shallower copy wins whatever the names say.
  bundle("second/Old/Notes.app", "com.notes", "Aardvark");
  bundle("second/Notes.app", "com.notes", "Zebra");
  // Equal lengths: plain path order decides.
  bundle("second/b/Tool.app", "com.tool", "Tool b");
  bundle("second/a/Tool.app", "com.tool", "Tool a");
  // "éé" written decomposed is six bytes but two characters, so this copy
  // is the shorter path although "abc" has fewer bytes.
  const std::string accents =
      "e\xcc\x81"
      "e\xcc\x81";
  bundle("second/" + accents + "/X.app", "com.x");
  bundle("second/abc/X.app", "com.x");
  // An unlisted record still claims its id, for the later root and deeper copies.
  bundle("first/Editor.app", "editor", "", false);
  bundle("second/Editor.app", "editor");
  bundle("second/Viewer.app", "viewer", "", false);
  bundle("second/More/Viewer.app", "viewer");

  const AppScanner scanner{{at("first"), at("second")}, 2, std::make_shared<TestFormat>()};
  const auto apps = scanner.scan();
  ASSERT_EQ(apps.size(), 4u);
  EXPECT_EQ(apps[0], (AppInfo{"com.mail", "Mail (deep)", at("first/Deep/Deeper/Mail.app"), std::nullopt}));
  EXPECT_EQ(apps[1].url, at("second/a/Tool.app"));
  EXPECT_EQ(apps[2].url, at("second/" + accents + "/X.app"));
  EXPECT_EQ(apps[3].url, at("second/Notes.app"));
}

TEST_F(AppScannerTest, SortsByFinderNameOrderThenPath) {
  bundle("root/x/Ten.app", "", "App 10");
  bundle("root/Nine.app", "", "App 9");
  bundle("root/One.app", "", "app 1");
  bundle("root/b/Same.app", "", "Same");
  bundle("root/a/Same.app", "", "same");

  const AppScanner scanner{{at("root")}, 2, std::make_shared<TestFormat>()};
  std::vector<std::string> names;
  for (const AppInfo& app : scanner.scan())
    names.push_back(app.name + " @ " + app.url.substr(at("root").size()));
  EXPECT_THAT(names, ElementsAre("app 1 @ /One.app", "App 9 @ /Nine.app", "App 10 @ /x/Ten.app",
                                 "same @ /a/Same.app", "Same @ /b/Same.app"));
}

TEST_F(AppScannerTest, RootsAreStandardizedAndMissingRootsContributeNothing) {
  bundle("root/A.app", "a");
  bundle("root/Sub/B.app", "b");
  const std::string messy = at("root/Sub/../") + "./";
  EXPECT_THAT(scanUrls({at("missing"), "", messy}, 2), ElementsAre(at("root/A.app"), at("root/Sub/B.app")));

  auto format = std::make_shared<TestFormat>();
  scanUrls({messy}, 2, format);
  EXPECT_EQ(format->relativePaths(), (std::set<std::string>{"A.app", "Sub/B.app"}));

  EXPECT_THAT((AppScanner{{at("root")}, 2, nullptr}.scan()), IsEmpty());
}

TEST_F(AppScannerTest, UnreadableFoldersAndLinksAreSkippedNotFatal) {
  bundle("root/A.app", "a");
  bundle("root/Locked/B.app", "b");
  bundle("root/Open/C.app", "c");
  bundle("elsewhere/D.app", "d");
  fs::create_directory_symlink(at("elsewhere/D.app"), at("root/D.app"));

  auto reader = std::make_shared<FaultyReader>();
  reader->unreadableFolders = {at("root/Locked")};
  reader->unresolvable = {at("root/D.app")};
  EXPECT_THAT(scanUrls({at("root")}, 2, std::make_shared<TestFormat>(), reader),
              ElementsAre(at("root/A.app"), at("root/Open/C.app")));

  reader->unreadableFolders = {at("root")};
  bundle("other/E.app", "e");
  EXPECT_THAT(scanUrls({at("root"), at("other")}, 2, std::make_shared<TestFormat>(), reader),
              ElementsAre(at("other/E.app")));
}

TEST_F(AppScannerTest, FileFormatsTakeFilesAndLinksToFiles) {
  file("root/a.entry");
  file("root/sub/b.entry");
  file("elsewhere/c.entry");
  fs::create_symlink(at("elsewhere/c.entry"), at("root/c.entry"));
  file("root/folder.entry/d.entry");  // a folder named like an entry is neither read nor opened
  const auto format = std::make_shared<TestFormat>(BundleFormat::Kind::regularFile);
  EXPECT_THAT(scanUrls({at("root")}, 2, format),
              ElementsAre(at("root/a.entry"), at("root/sub/b.entry"), at("root/c.entry")));
}

TEST_F(AppScannerTest, OneScannerScansOnSeveralThreadsAtOnce) {
  for (int i = 0; i < 50; ++i) bundle("root/F" + std::to_string(i % 5) + "/App" + std::to_string(i) + ".app");
  const AppScanner scanner{{at("root")}, 2, std::make_shared<TestFormat>()};
  const auto expected = scanner.scan();
  ASSERT_EQ(expected.size(), 50u);
  std::vector<std::vector<AppInfo>> results(4);
  std::vector<std::thread> threads;
  for (auto& result : results) threads.emplace_back([&] { result = scanner.scan(); });
  for (auto& thread : threads) thread.join();
  for (const auto& result : results) EXPECT_EQ(result, expected);
}

}  // namespace
}  // namespace orrery
