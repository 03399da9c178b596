// SingleInstance: one running program per data folder.
//
// Two programs on the same folder would both save layout.json and undo each
// other's work. The first one to start holds a lock file in the folder for
// its whole life; a second one finds it held and leaves. A lock left behind
// by a program that crashed is recognised (its process is gone) and taken
// over. Programs with different data folders (a test's temporary tree) run
// side by side.
//
// Thread rules: main thread, at start.
#pragma once

#include <QLockFile>

#include <filesystem>
#include <memory>

namespace orrery::app {

struct InstanceClaim {
  // Held for the life of the program; null when the folder could not be claimed.
  std::unique_ptr<QLockFile> lock;
  // Another running program holds the folder.
  bool anotherIsRunning = false;
};

InstanceClaim claimDataDirectory(const std::filesystem::path& directory);

}  // namespace orrery::app
