// FakeScanner: a Scanner whose results and timing a test controls.
//
// scan() returns the apps last given to setApps(). While hold() is in
// force, a scan that starts waits until release(), so a test can make
// things happen while a scan is running.
//
// Thread rules: scan() runs on the catalog's scan thread; everything else on
// the test's thread. All state is behind one lock.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Orrery/catalog/Scanner.h"

namespace orrery::app::testing {

class FakeScanner final : public Scanner {
 public:
  explicit FakeScanner(std::vector<AppInfo> apps = {}, std::vector<std::string> roots = {})
      : apps_(std::move(apps)), roots_(std::move(roots)) {}

  std::vector<std::string> roots() const override { return roots_; }
  int maxDepth() const override { return 2; }
  bool isCandidate(std::string_view name) const override { return name.ends_with(".desktop"); }

  std::vector<AppInfo> scan() const override {
    std::unique_lock lock(mutex_);
    ++started_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !holding_; });
    return apps_;
  }

  // What the next scan finds.
  std::vector<AppInfo> apps() const {
    std::lock_guard lock(mutex_);
    return apps_;
  }
  void setApps(std::vector<AppInfo> apps) {
    std::lock_guard lock(mutex_);
    apps_ = std::move(apps);
  }
  void hold() {
    std::lock_guard lock(mutex_);
    holding_ = true;
  }
  void release() {
    std::lock_guard lock(mutex_);
    holding_ = false;
    changed_.notify_all();
  }
  // Scans begun (a held one included).
  int started() const {
    std::lock_guard lock(mutex_);
    return started_;
  }
  // Waits until `count` scans have begun (a held scan is then in place);
  // false when that does not happen within a few seconds.
  bool waitUntilStarted(int count) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), [&] { return started_ >= count; });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<AppInfo> apps_;
  std::vector<std::string> roots_;
  bool holding_ = false;
  mutable int started_ = 0;
};

}  // namespace orrery::app::testing
