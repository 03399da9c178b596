// WorkspaceTrash: the TrashService of the program, moving the entries of a
// confirmed request one by one with the platform's FileTrash, away from
// the UI thread.
//
// Moves run on a thread of the object's own, one after the other: a second
// request waits until the first has answered (the flow does not ask for
// one while a move runs, but nothing here relies on that).
//
// Thread rules: moveToTrash() from the main thread; the completion is
// called on the worker thread, once per request. The destructor finishes
// the requests already made (half a move would leave the user guessing what
// went) and then waits for the thread.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Orrery/trash/FileTrash.h"
#include "OrreryCore/trash/TrashService.h"

namespace orrery::app {

class WorkspaceTrash final : public TrashService {
 public:
  explicit WorkspaceTrash(std::unique_ptr<const FileTrash> files);
  ~WorkspaceTrash() override;
  WorkspaceTrash(const WorkspaceTrash&) = delete;
  WorkspaceTrash& operator=(const WorkspaceTrash&) = delete;

  void moveToTrash(std::vector<std::string> paths, Completion completion) override;

 private:
  struct Job {
    std::vector<std::string> paths;
    Completion completion;
  };
  void run();

  std::unique_ptr<const FileTrash> files_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Job> jobs_;
  bool stopping_ = false;
  std::thread worker_;  // last: started when everything it uses exists
};

}  // namespace orrery::app
