#include "Orrery/trash/WorkspaceTrash.h"

#include <utility>

namespace orrery::app {

WorkspaceTrash::WorkspaceTrash(std::unique_ptr<const FileTrash> files)
    : files_(std::move(files)), worker_([this] { run(); }) {}

WorkspaceTrash::~WorkspaceTrash() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  worker_.join();
}

void WorkspaceTrash::moveToTrash(std::vector<std::string> paths, Completion completion) {
  {
    std::lock_guard lock(mutex_);
    jobs_.push_back({std::move(paths), std::move(completion)});
  }
  wake_.notify_one();
}

void WorkspaceTrash::run() {
  for (;;) {
    Job job;
    {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
      if (jobs_.empty()) return;
      job = std::move(jobs_.front());
      jobs_.pop_front();
    }
    Failures failures;
    for (const std::string& path : job.paths)
      if (std::optional<TrashFailure> failure = files_->moveToTrash(path))
        failures.emplace(path, std::move(*failure));
    if (job.completion) job.completion(std::move(failures));
  }
}

}  // namespace orrery::app
