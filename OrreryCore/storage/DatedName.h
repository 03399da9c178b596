// Dated names for copies set aside: a damaged file moved out of the way, the
// arrangement kept before a sync replaced it.
//
// The name is a prefix, the moment as an ISO 8601 UTC stamp with every ":"
// turned into "-" (colons are not allowed in file names everywhere), and
// ".json": "layout.corrupt-2026-03-05T14-07-31Z.json". A second copy in the
// same second gets "-2" before ".json", the next "-3", and so on, so a copy
// never replaces another one.
//
// Thread rules: plain functions; moving aside is safe against another writer
// racing for the same name (the move never replaces).
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "OrreryCore/base/Date.h"
#include "OrreryCore/storage/FileSystem.h"

namespace orrery {

// prefix + stamp + ".json" for counter 1, prefix + stamp + "-" + counter + ".json" above.
std::string datedName(std::string_view prefix, Date date, int counter = 1);

// The first dated name for `prefix` and `now` not taken in `directory`.
// Fails only when the folder cannot be looked into.
Expected<std::filesystem::path, FileError> uniqueURL(FileSystem& fileSystem,
                                                     const std::filesystem::path& directory,
                                                     std::string_view prefix, Date now);

// Moves `file` to a fresh dated name in its own folder without ever
// replacing a file (a name taken in the meantime makes it pick the next one).
// Returns the new path, or the error of the move. The move is not flushed:
// the next replacement in the folder flushes it, and losing it to a power
// cut only brings back the file that was to be set aside.
Expected<std::filesystem::path, FileError> moveAside(FileSystem& fileSystem,
                                                     const std::filesystem::path& file,
                                                     std::string_view prefix, Date now);

}  // namespace orrery
