// A process killed at a random moment while saving, over and over: the
// arrangement file must never be torn (half old, half new, or empty) or lost
// (missing, or older than the last save that reported success).
//
// SIGKILL leaves the kernel's page cache intact, so this checks the order of
// the steps (temporary file, rename), not the flushes; those are checked by
// the power-cut tests over MemoryFileSystem. It therefore runs in /dev/shm
// where there is one, which keeps a thousand rounds to a few seconds. By hand:
//   ORRERY_KILL_ITERATIONS=100000 ORRERY_KILL_DIRECTORY=/var/tmp
//   orrery_core_storage_tests --gtest_filter='LayoutStoreKill*'
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include "OrreryCore/storage/AtomicWrite.h"
#include "OrreryCore/storage/LayoutStore.h"
#include "OrreryCore/storage/PosixFileSystem.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery {
namespace {

constexpr long kDefaultIterations = 1000;

long iterations() {
  if (const char* text = std::getenv("ORRERY_KILL_ITERATIONS")) {
    const long value = std::strtol(text, nullptr, 10);
    if (value > 0) return value;
  }
  return kDefaultIterations;
}

std::filesystem::path workParent() {
  if (const char* text = std::getenv("ORRERY_KILL_DIRECTORY"); text != nullptr && text[0] != '\0')
    return text;
  std::error_code error;
  if (std::filesystem::is_directory("/dev/shm", error) && ::access("/dev/shm", W_OK) == 0) return "/dev/shm";
  return std::filesystem::temp_directory_path();
}

// A few kilobytes, so a save takes a few writes' worth of time; the first
// item names the generation.
Layout generation(std::uint64_t number) {
  std::vector<LayoutItem> items{testing::app("generation." + std::to_string(number))};
  for (int i = 0; i < 60; ++i) items.push_back(testing::app("com.example.application-" + std::to_string(i)));
  items.push_back(testing::folder("Utilities", {"org.tool.one", "org.tool.two", "org.tool.three"}));
  return testing::layoutOf(std::move(items), {"com.example.hidden"});
}

// The generation a file holds; nothing when it is missing or not a whole layout.
std::optional<std::uint64_t> generationIn(const std::filesystem::path& file) {
  const auto bytes = PosixFileSystem::shared().readFile(file);
  if (!bytes) return std::nullopt;
  const auto layout = Layout::decode(*bytes);
  if (!layout || layout->items.empty() || !layout->items.front().appID()) return std::nullopt;
  const std::string& id = *layout->items.front().appID();
  constexpr std::string_view kPrefix = "generation.";
  if (id.rfind(kPrefix, 0) != 0) return std::nullopt;
  return std::stoull(id.substr(kPrefix.size()));
}

bool writeAll(int descriptor, const void* data, std::size_t size) {
  const auto* bytes = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = ::write(descriptor, bytes, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

// The child: start like the application (load, which clears stray
// temporary files), say so, then save generation after generation and
// report each one that completed. Never returns.
[[noreturn]] void saveForever(const std::filesystem::path& folder, std::uint64_t first, int report) {
  const pid_t parent = ::getppid();
  const LayoutStore store(folder);
  if (store.loadWithStatus().mainUnreadable) ::_exit(3);
  const std::uint64_t ready = 0;
  if (!writeAll(report, &ready, sizeof ready)) ::_exit(4);
  for (std::uint64_t number = first;; ++number) {
    if (!store.save(generation(number))) ::_exit(5);
    if (!writeAll(report, &number, sizeof number)) ::_exit(6);
    if (::getppid() != parent) ::_exit(0);  // the test is gone; do not run on
  }
}

TEST(LayoutStoreKill, AKilledSaveNeverTearsOrLosesTheFile) {
  testing::TemporaryDirectory temporary("orrery-kill", workParent());
  ASSERT_FALSE(temporary.path().empty());
  const std::filesystem::path folder = temporary.path() / "Orrery";
  const std::filesystem::path main = folder / "layout.json";
  const std::filesystem::path backup = folder / "layout.backup.json";

  // How long one save takes here, so kills land inside the first few saves
  // of each child rather than mostly in its start-up.
  const LayoutStore store(folder);
  constexpr int kWarmUp = 20;
  const auto started = std::chrono::steady_clock::now();
  for (int i = 1; i <= kWarmUp; ++i) ASSERT_TRUE(store.save(generation(static_cast<std::uint64_t>(i))));
  const auto saveTime = (std::chrono::steady_clock::now() - started) / kWarmUp;
  std::uint64_t committed = kWarmUp;

  std::mt19937_64 random(std::random_device{}());
  std::uniform_int_distribution<long long> delay(
      0, std::chrono::duration_cast<std::chrono::nanoseconds>(4 * saveTime).count());
  long interruptedMidWrite = 0;
  long renamedButUnreported = 0;
  const long rounds = iterations();

  for (long round = 0; round < rounds; ++round) {
    int channel[2];
    ASSERT_EQ(::pipe(channel), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::close(channel[0]);
      saveForever(folder, committed + 1, channel[1]);
    }
    ::close(channel[1]);

    std::uint64_t message = 0;
    ASSERT_EQ(::read(channel[0], &message, sizeof message), static_cast<ssize_t>(sizeof message))
        << "round " << round << ": the child did not start";
    // Sleeping rather than spinning leaves the processor to the child on a
    // busy machine; a sleep's coarseness only shifts where kills land.
    std::this_thread::sleep_for(std::chrono::nanoseconds(delay(random)));
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "round " << round << ": the child ended by itself, status "
                                     << WEXITSTATUS(status);

    std::optional<std::uint64_t> reported;
    for (;;) {
      const ssize_t count = ::read(channel[0], &message, sizeof message);
      if (count != static_cast<ssize_t>(sizeof message)) break;
      reported = message;
    }
    ::close(channel[0]);

    const std::uint64_t lastSaved = reported.value_or(committed);
    const auto held = generationIn(main);
    ASSERT_TRUE(held) << "round " << round << ": layout.json is torn or missing";
    // The save after the last reported one may have got past its rename.
    ASSERT_TRUE(*held == lastSaved || *held == lastSaved + 1)
        << "round " << round << ": layout.json holds generation " << *held << ", last saved " << lastSaved;
    const auto backedUp = generationIn(backup);
    ASSERT_TRUE(backedUp) << "round " << round << ": layout.backup.json is torn or missing";
    ASSERT_LE(*backedUp, *held);

    if (*held == lastSaved + 1) ++renamedButUnreported;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      if (isTemporaryName(entry.path().filename().string(), "layout.")) {
        ++interruptedMidWrite;
        break;
      }
    }
    committed = *held;
  }

  // The next start clears what the last child left behind.
  EXPECT_FALSE(store.loadWithStatus().mainUnreadable);
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    EXPECT_FALSE(isTemporaryName(entry.path().filename().string(), "")) << entry.path();

  std::cout << "[ kill     ] " << rounds << " rounds in " << workParent().string() << ", "
            << interruptedMidWrite << " killed while a temporary file was open, " << renamedButUnreported
            << " after a rename but before reporting, "
            << std::chrono::duration_cast<std::chrono::microseconds>(saveTime).count() << " us per save, "
            << committed << " generations\n";
}

}  // namespace
}  // namespace orrery
