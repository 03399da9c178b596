#include <QCoreApplication>
#include <QSignalSpy>
#include <QThread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "Orrery/overlay/AppLauncher.h"
#include "Orrery/platform/PlatformFactory.h"
#include "Orrery/tests/LogCapture.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::app {
namespace {

namespace fs = std::filesystem;
using testing::LogCapture;

constexpr int kPatience = 60'000;  // ms; only a broken launch takes this long

// Lets a reader waiting on the FIFO through: opening the other end and
// closing it gives the reader an empty file. False when nobody waits there.
bool releaseReader(const fs::path& fifo) {
  const int fd = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK);
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

class AppLauncherTest : public ::testing::Test {
 protected:
  AppInfo entry(const std::string& name, const std::string& exec) const {
    const fs::path path = temporary.path() / (name + ".desktop");
    std::ofstream(path) << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=" << exec << "\n";
    return app(name, path);
  }
  static AppInfo app(const std::string& name, const fs::path& path) {
    return AppInfo{"org.example." + name + ".desktop", name, path.string(), std::nullopt};
  }
  // Exec for a program that leaves a file behind at `marker`.
  static std::string touching(const fs::path& marker) { return "touch \"" + marker.string() + "\""; }

  orrery::testing::TemporaryDirectory temporary{"orrery-launcher"};
  AppLauncher launcher{platform::makeAppOpener()};
};

TEST_F(AppLauncherTest, FailuresComeBackAsASentenceForTheUserAndALogLine) {
  const fs::path plain = temporary.path() / "plain.sh";
  std::ofstream(plain) << "#!/bin/sh\n";
  fs::permissions(plain, fs::perms::owner_read | fs::perms::owner_write);
  const AppInfo gone = app("Gone", temporary.path() / "gone.desktop");
  const AppInfo notRunnable = entry("Plain", "\"" + plain.string() + "\"");
  LogCapture log;
  QSignalSpy failed(&launcher, &AppLauncher::launchFailed);
  QSignalSpy launched(&launcher, &AppLauncher::launched);

  launcher.launch(gone);
  launcher.launch(notRunnable);
  EXPECT_EQ(failed.count(), 0);
  while (failed.count() < 2) ASSERT_TRUE(failed.wait(kPatience));

  std::map<std::string, std::string> messages;
  for (const QList<QVariant>& failure : failed)
    messages[failure.at(0).toString().toStdString()] = failure.at(1).toString().toStdString();
  EXPECT_EQ(messages[gone.id], "Couldn't open “Gone”. It's no longer installed.");
  EXPECT_EQ(messages[notRunnable.id], "Couldn't open “Plain”. The program it starts isn't allowed to run.");
  EXPECT_EQ(launched.count(), 0);
  EXPECT_TRUE(log.containsPrefix("ch.lumenfold.orrery.launch: „Gone“"));
  EXPECT_TRUE(log.containsPrefix("ch.lumenfold.orrery.launch: „Plain“"));
}

// An entry on a mount that stopped answering: here a FIFO, which blocks
// whoever opens it until someone opens the other end.
TEST_F(AppLauncherTest, AnEntryThatHangsHoldsUpNeitherTheMainThreadNorTheNextLaunch) {
  const fs::path fifo = temporary.path() / "stuck.desktop";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const AppInfo stuck = app("Stuck", fifo);
  const fs::path marker = temporary.path() / "ran";
  const AppInfo next = entry("Next", touching(marker));

  // Should launch() block after all, this lets it go on after a while, so
  // the test fails instead of hanging.
  std::mutex mutex;
  std::condition_variable changed;
  bool released = false;
  std::thread watchdog([&] {
    std::unique_lock lock(mutex);
    if (!changed.wait_for(lock, std::chrono::milliseconds(kPatience), [&] { return released; }))
      releaseReader(fifo);
  });

  QThread* reportedOn = nullptr;
  QObject::connect(&launcher, &AppLauncher::launched, [&] { reportedOn = QThread::currentThread(); });
  QSignalSpy launched(&launcher, &AppLauncher::launched);
  QSignalSpy failed(&launcher, &AppLauncher::launchFailed);
  launcher.launch(stuck);
  launcher.launch(next);
  EXPECT_EQ(launched.count() + failed.count(), 0);  // launch() only hands the work over
  const bool nextArrived = launched.wait(kPatience);
  const int failedMeanwhile = static_cast<int>(failed.count());
  {
    std::lock_guard lock(mutex);
    released = true;
  }
  changed.notify_one();
  watchdog.join();
  // The stuck launch may not have reached the FIFO yet; it is let through
  // once it waits there.
  for (int attempt = 0; attempt < kPatience / 10 && failed.count() == 0 && !releaseReader(fifo); ++attempt)
    failed.wait(10);

  ASSERT_TRUE(nextArrived);
  EXPECT_EQ(launched.at(0).at(0).toString().toStdString(), next.id);
  EXPECT_EQ(reportedOn, QCoreApplication::instance()->thread());
  // launched() means spawned; the program itself may still be on its way.
  for (int attempt = 0; attempt < kPatience / 20 && !fs::exists(marker); ++attempt)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_TRUE(fs::exists(marker));
  EXPECT_EQ(failedMeanwhile, 0);
  ASSERT_TRUE(failed.count() > 0 || failed.wait(kPatience));
  EXPECT_EQ(failed.at(0).at(0).toString().toStdString(), stuck.id);
  EXPECT_TRUE(failed.at(0).at(1).toString().startsWith(QStringLiteral("Couldn't open “Stuck”.")));
}

}  // namespace
}  // namespace orrery::app
