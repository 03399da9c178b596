// FileTrash: the platform's operation that moves one file to the user's
// Trash, the way the desktop's file manager does.
//
// WorkspaceTrash calls it for each app of a confirmed move, on its own
// thread; the answer says why the file stayed, or nothing when it went.
//
// Thread rules: moveToTrash() blocks and is called from one worker thread
// at a time; implementations keep no state between calls.
#pragma once

#include <optional>
#include <string>

#include "OrreryCore/trash/TrashService.h"

namespace orrery::app {

class FileTrash {
 public:
  virtual ~FileTrash() = default;
  virtual std::optional<TrashFailure> moveToTrash(const std::string& path) const = 0;
};

}  // namespace orrery::app
