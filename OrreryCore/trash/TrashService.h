// TrashService: the platform's operation that moves files to the Trash.
//
// It is asynchronous and callback-based: moveToTrash() returns at once, does
// the work wherever the platform likes (a worker thread, the platform's own
// queue) and calls the completion exactly once, on any thread, with the
// paths that could not be moved. Callers that hold main-thread state marshal
// the completion to the main thread themselves (a queued call in the
// application); nothing here assumes a thread.
//
// The platform also says whether a failure means the file belongs to the
// system rather than the user, because only it can tell a permission
// problem from any other error; the core turns that into the texts the
// user sees (ConfirmedTrash, TrashOutcome).
//
// Thread rules: implementations must be callable from the main thread and
// must keep what the completion needs alive until they have called it.
#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace orrery {

// Why one path stayed where it was.
struct TrashFailure {
  enum class Kind { systemOwned, other };
  Kind kind = Kind::other;
  std::string description;  // the platform's localized error text; may be empty

  friend bool operator==(const TrashFailure&, const TrashFailure&) = default;
};

class TrashService {
 public:
  using Failures = std::unordered_map<std::string, TrashFailure>;  // path -> why
  using Completion = std::function<void(Failures failures)>;

  virtual ~TrashService() = default;

  // Moves every path (a bundle or a desktop entry) to the Trash; paths not
  // in the completion's failures were moved.
  virtual void moveToTrash(std::vector<std::string> paths, Completion completion) = 0;
};

}  // namespace orrery
