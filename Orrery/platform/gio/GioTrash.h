// GioTrash: moves desktop entries to the user's Trash with GIO's
// g_file_trash, the way the desktop's file managers do it.
//
// GIO picks the right trash for each file (the home trash for files on the
// home file system, "$topdir/.Trash-$uid" elsewhere) and writes the
// ".trashinfo" record with the percent-encoded original path, so the
// desktop's Trash can restore the entry. Each failure becomes a sentence for
// the user: an entry owned by another user (a package's, root's) counts as
// system-owned; a folder the user may not write, a file system without a
// trash and anything else get their own texts.
//
// Thread rules: moveToTrash() may be called from the main thread; the work
// runs on a thread of its own and the completion is called there, once.
// Moves are done one after the other; the destructor waits for the one
// running.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "OrreryCore/trash/TrashService.h"

namespace orrery::platform {

class GioTrash final : public TrashService {
 public:
  GioTrash();
  ~GioTrash() override;
  GioTrash(const GioTrash&) = delete;
  GioTrash& operator=(const GioTrash&) = delete;

  void moveToTrash(std::vector<std::string> paths, Completion completion) override;

  // Moves one file; nothing when it went, else why not. Blocking.
  static std::optional<TrashFailure> trashOne(const std::string& path);

 private:
  struct Job {
    std::vector<std::string> paths;
    Completion completion;
  };
  void run();

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Job> jobs_;
  bool stopping_ = false;
  std::thread worker_;  // last: started when everything it uses exists
};

}  // namespace orrery::platform
