#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "OrreryCore/storage/MemoryFileSystem.h"
#include "OrreryCore/storage/PosixFileSystem.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery {
namespace {

using Code = FileError::Code;
using Fault = MemoryFileSystem::Fault;
using Persistence = MemoryFileSystem::Persistence;

// Writes a whole new file through the interface, checking every step.
void create(FileSystem& fileSystem, const std::filesystem::path& path, std::string_view content) {
  auto file = fileSystem.createNew(path);
  ASSERT_TRUE(file) << file.error().description();
  auto written = (*file)->write(content);
  ASSERT_TRUE(written);
  ASSERT_EQ(*written, content.size());
  ASSERT_TRUE((*file)->sync());
  ASSERT_TRUE((*file)->close());
}

// Writes a new file in memory, flushing its data or not, and closes it.
bool writeNew(MemoryFileSystem& fs, const std::filesystem::path& path, std::string_view content, bool sync) {
  auto file = fs.createNew(path);
  return file && (*file)->write(content) && (!sync || (*file)->sync()) && (*file)->close();
}

template <typename T>
Code codeOf(const Expected<T, FileError>& result) {
  return result ? Code::other : result.error().code;
}

// The same expectations hold for the disk and for the in-memory file system:
// code tested against the fake must behave the same on disk.
class FileSystemContract : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (GetParam() == "posix") {
      temporary_ = std::make_unique<testing::TemporaryDirectory>("orrery-fs");
      ASSERT_FALSE(temporary_->path().empty());
      fileSystem_ = &PosixFileSystem::shared();
      root_ = temporary_->path();
    } else {
      memory_ = std::make_unique<MemoryFileSystem>();
      memory_->makeDirectory("/data");
      fileSystem_ = memory_.get();
      root_ = "/data";
    }
  }

  FileSystem& fs() { return *fileSystem_; }
  std::filesystem::path at(std::string_view name) const { return root_ / name; }

 private:
  std::unique_ptr<testing::TemporaryDirectory> temporary_;
  std::unique_ptr<MemoryFileSystem> memory_;
  FileSystem* fileSystem_ = nullptr;
  std::filesystem::path root_;
};

TEST_P(FileSystemContract, CreatesWritesReadsAndReportsWhatIsInTheWay) {
  create(fs(), at("a.json"), "hello");
  EXPECT_EQ(fs().readFile(at("a.json")).value(), "hello");
  create(fs(), at("empty"), "");
  EXPECT_EQ(fs().readFile(at("empty")).value(), "");

  EXPECT_EQ(codeOf(fs().createNew(at("a.json"))), Code::exists);
  EXPECT_EQ(fs().readFile(at("a.json")).value(), "hello");  // untouched by the refused creation
  EXPECT_EQ(codeOf(fs().readFile(at("missing"))), Code::notFound);
  EXPECT_EQ(codeOf(fs().readFile(at("no/such/folder"))), Code::notFound);
  EXPECT_EQ(codeOf(fs().createNew(at("no/such/file"))), Code::notFound);
  EXPECT_EQ(codeOf(fs().readFile(at("a.json/inside"))), Code::notADirectory);

  ASSERT_TRUE(fs().createDirectories(at("folder")));
  EXPECT_EQ(codeOf(fs().readFile(at("folder"))), Code::isADirectory);

  const auto error = fs().readFile(at("missing")).error();
  EXPECT_EQ(error.operation, FileOperation::read);
  EXPECT_EQ(error.path, at("missing"));
  EXPECT_EQ(error.description(), "The file “missing” doesn’t exist.");

  // Writes append; a closed file refuses more.
  auto file = fs().createNew(at("log"));
  ASSERT_TRUE(file);
  EXPECT_EQ((*file)->write("one ").value(), 4u);
  EXPECT_EQ((*file)->write("two").value(), 3u);
  EXPECT_EQ((*file)->write("").value(), 0u);
  ASSERT_TRUE((*file)->sync());
  ASSERT_TRUE((*file)->close());
  EXPECT_FALSE((*file)->write("three"));
  EXPECT_FALSE((*file)->close());
  EXPECT_EQ(fs().readFile(at("log")).value(), "one two");
  EXPECT_EQ(fs().stat(at("log")).value(), (FileStatus{FileStatus::Kind::regular, 7}));
}

TEST_P(FileSystemContract, RenameReplacesButRenameNoReplaceNeverDoes) {
  create(fs(), at("new"), "new");
  create(fs(), at("old"), "old");
  ASSERT_TRUE(fs().rename(at("new"), at("old")));
  EXPECT_EQ(fs().readFile(at("old")).value(), "new");
  EXPECT_EQ(codeOf(fs().stat(at("new"))), Code::notFound);

  create(fs(), at("other"), "other");
  EXPECT_EQ(codeOf(fs().renameNoReplace(at("other"), at("old"))), Code::exists);
  EXPECT_EQ(fs().readFile(at("old")).value(), "new");
  EXPECT_EQ(fs().readFile(at("other")).value(), "other");

  ASSERT_TRUE(fs().renameNoReplace(at("other"), at("aside")));
  EXPECT_EQ(fs().readFile(at("aside")).value(), "other");
  EXPECT_EQ(codeOf(fs().stat(at("other"))), Code::notFound);

  EXPECT_EQ(codeOf(fs().rename(at("gone"), at("x"))), Code::notFound);
  EXPECT_EQ(codeOf(fs().renameNoReplace(at("gone"), at("x"))), Code::notFound);
  ASSERT_TRUE(fs().createDirectories(at("folder")));
  EXPECT_EQ(codeOf(fs().rename(at("old"), at("folder"))), Code::isADirectory);
  ASSERT_TRUE(fs().syncDirectory(at("")));
}

TEST_P(FileSystemContract, FoldersAreCreatedListedAndProtected) {
  ASSERT_TRUE(fs().createDirectories(at("a/b/c")));
  ASSERT_TRUE(fs().createDirectories(at("a/b/c")));  // already there: fine
  ASSERT_TRUE(fs().createDirectories(at("a/b/c/")));
  EXPECT_EQ(fs().stat(at("a/b")).value().kind, FileStatus::Kind::directory);

  create(fs(), at("a/file"), "x");
  EXPECT_EQ(codeOf(fs().createDirectories(at("a/file"))), Code::notADirectory);
  EXPECT_EQ(codeOf(fs().createDirectories(at("a/file/below"))), Code::notADirectory);

  create(fs(), at("a/.hidden"), "");
  EXPECT_EQ(fs().listDirectory(at("a")).value(), (std::vector<std::string>{".hidden", "b", "file"}));
  EXPECT_EQ(codeOf(fs().listDirectory(at("nothing"))), Code::notFound);
  EXPECT_EQ(codeOf(fs().listDirectory(at("a/file"))), Code::notADirectory);

  ASSERT_TRUE(fs().remove(at("a/file")));
  EXPECT_EQ(codeOf(fs().remove(at("a/file"))), Code::notFound);
  EXPECT_FALSE(fs().remove(at("a/b")));  // a folder is not removed as a file
  EXPECT_EQ(fs().stat(at("a/b")).value().kind, FileStatus::Kind::directory);
  EXPECT_EQ(codeOf(fs().syncDirectory(at("nothing"))), Code::notFound);
}

INSTANTIATE_TEST_SUITE_P(BothImplementations, FileSystemContract, ::testing::Values("posix", "memory"),
                         [](const auto& test) { return test.param; });

// --- Faults of the in-memory file system ------------------------------------

TEST(MemoryFileSystem, FailsTheNthMatchingOperationOnceOrFromThenOn) {
  MemoryFileSystem fs;
  fs.writeFile("/d/a", "a");
  fs.inject(Fault::error(Code::noSpace, 2));
  EXPECT_TRUE(fs.stat("/d/a"));
  EXPECT_EQ(codeOf(fs.readFile("/d/a")), Code::noSpace);
  EXPECT_TRUE(fs.readFile("/d/a"));

  fs.clearFaults();
  fs.inject(Fault::error(Code::accessDenied, 2, Persistence::fromThenOn));
  EXPECT_TRUE(fs.stat("/d/a"));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(codeOf(fs.readFile("/d/a")), Code::accessDenied);

  // Only operations of the named kind on the named path count.
  fs.clearFaults();
  fs.inject(Fault::error(Code::ioError, 1, Persistence::fromThenOn).only(FileOperation::read).onPath("/d/b"));
  fs.writeFile("/d/b", "b");
  EXPECT_TRUE(fs.stat("/d/b"));
  EXPECT_TRUE(fs.readFile("/d/a"));
  EXPECT_EQ(codeOf(fs.readFile("/d/b")), Code::ioError);
  EXPECT_EQ(codeOf(fs.readFile("/d/./b")), Code::ioError);

  // A rename matches on either of its paths.
  fs.clearFaults();
  fs.inject(Fault::error(Code::accessDenied, 1, Persistence::fromThenOn).onPath("/d/target"));
  EXPECT_EQ(codeOf(fs.rename("/d/a", "/d/target")), Code::accessDenied);
  EXPECT_EQ(fs.contents("/d/a"), "a");

  const auto journal = fs.journal();
  ASSERT_FALSE(journal.empty());
  EXPECT_EQ(journal.back(), (MemoryFileSystem::Event{FileOperation::rename, "/d/a", true}));
}

TEST(MemoryFileSystem, ShortWriteStoresOnlyPartAndSaysSo) {
  MemoryFileSystem fs;
  fs.makeDirectory("/d");
  fs.inject(Fault::shortWriteOf(3, 2));
  auto file = fs.createNew("/d/f");
  ASSERT_TRUE(file);
  EXPECT_EQ((*file)->write("abcdef").value(), 6u);
  EXPECT_EQ((*file)->write("ghijkl").value(), 3u);
  EXPECT_EQ((*file)->write("mno").value(), 3u);
  EXPECT_EQ(fs.contents("/d/f"), "abcdefghimno");
}

TEST(MemoryFileSystem, PowerLossKeepsOnlyWhatWasFlushed) {
  MemoryFileSystem fs;
  fs.writeFile("/d/kept", "old");  // setup is durable
  // Created folders are durable at once (which flushes their parent too).
  ASSERT_TRUE(fs.createDirectories("/d/e/f"));

  // Data written but never flushed is lost even though the name survives.
  ASSERT_TRUE(writeNew(fs, "/d/unsynced", "data", false));
  ASSERT_TRUE(fs.syncDirectory("/d"));
  // Data flushed but whose name was never flushed is lost with its name.
  ASSERT_TRUE(writeNew(fs, "/d/nameless", "data", true));
  // A rename over a file counts only once the folder is flushed.
  ASSERT_TRUE(writeNew(fs, "/d/next", "new", true));
  ASSERT_TRUE(fs.rename("/d/next", "/d/kept"));
  EXPECT_EQ(fs.contents("/d/kept"), "new");

  fs.simulateCrash();
  EXPECT_EQ(fs.contents("/d/kept"), "old");
  EXPECT_EQ(fs.contents("/d/unsynced"), "");
  EXPECT_FALSE(fs.exists("/d/nameless"));
  EXPECT_TRUE(fs.exists("/d/e/f"));
  EXPECT_EQ(fs.names("/d"), (std::vector<std::string>{"e", "kept", "unsynced"}));

  // Flushed all the way, the new content survives.
  ASSERT_TRUE(writeNew(fs, "/d/next", "new", true));
  ASSERT_TRUE(fs.rename("/d/next", "/d/kept"));
  ASSERT_TRUE(fs.syncDirectory("/d"));
  fs.simulateCrash();
  EXPECT_EQ(fs.contents("/d/kept"), "new");
}

TEST(MemoryFileSystem, RejectsRelativePathsAndFoldersMovingIntoThemselves) {
  MemoryFileSystem fs;
  fs.makeDirectory("/a/b");
  EXPECT_EQ(codeOf(fs.readFile("relative")), Code::notFound);
  EXPECT_EQ(codeOf(fs.createDirectories("relative/x")), Code::notFound);
  EXPECT_FALSE(fs.rename("/a", "/a/b/c"));
  ASSERT_TRUE(fs.rename("/a/b", "/c"));
  EXPECT_TRUE(fs.exists("/c"));
  EXPECT_FALSE(fs.exists("/a/b"));
}

}  // namespace
}  // namespace orrery
