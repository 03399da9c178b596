// WorkspaceTrash: moves away from the calling thread, one request after the
// other, with a FileTrash that writes down what happened in which order.
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Orrery/trash/WorkspaceTrash.h"

namespace orrery::app {
namespace {

// Writes each step into a shared journal; paths ending in "!" stay.
class JournalTrash final : public FileTrash {
 public:
  struct Journal {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> events;
    std::vector<std::thread::id> threads;
    void add(std::string event) {
      std::lock_guard lock(mutex);
      events.push_back(std::move(event));
      threads.push_back(std::this_thread::get_id());
      changed.notify_all();
    }
    void waitFor(std::size_t count) {
      std::unique_lock lock(mutex);
      changed.wait(lock, [&] { return events.size() >= count; });
    }
  };

  explicit JournalTrash(Journal& journal) : journal_(journal) {}
  std::optional<TrashFailure> moveToTrash(const std::string& path) const override {
    journal_.add("move " + path);
    if (path.ends_with("!")) return TrashFailure{TrashFailure::Kind::other, "stays"};
    return std::nullopt;
  }

 private:
  Journal& journal_;
};

TEST(WorkspaceTrash, MovesOffTheCallingThreadOneRequestAfterTheOther) {
  JournalTrash::Journal journal;
  TrashService::Failures secondFailures;
  {
    WorkspaceTrash trash(std::make_unique<const JournalTrash>(journal));
    trash.moveToTrash({"/a", "/b"}, [&](const TrashService::Failures& failures) {
      journal.add("first done, " + std::to_string(failures.size()) + " failed");
    });
    trash.moveToTrash({"/c!", "/d"}, [&](TrashService::Failures failures) {
      secondFailures = std::move(failures);
      journal.add("second done");
    });
    journal.waitFor(6);
  }
  EXPECT_EQ(journal.events, (std::vector<std::string>{"move /a", "move /b", "first done, 0 failed",
                                                      "move /c!", "move /d", "second done"}));
  for (const std::thread::id thread : journal.threads) EXPECT_NE(thread, std::this_thread::get_id());
  ASSERT_EQ(secondFailures.size(), 1u);
  EXPECT_EQ(secondFailures.at("/c!").description, "stays");
}

TEST(WorkspaceTrash, RequestsMadeBeforeTheEndAreFinished) {
  JournalTrash::Journal journal;
  bool answered = false;
  {
    WorkspaceTrash trash(std::make_unique<const JournalTrash>(journal));
    trash.moveToTrash({"/a"}, [&](const TrashService::Failures&) { answered = true; });
  }
  EXPECT_TRUE(answered);
  EXPECT_EQ(journal.events, std::vector<std::string>{"move /a"});
}

}  // namespace
}  // namespace orrery::app
