// Durable atomic replacement of a file, and the temporary files it uses.
//
// A reader of the target sees either the old content or the new, never a
// mix, and after a crash or power loss the target holds one of the two:
// the bytes go to a fresh temporary file in the same folder (so the rename
// stays within one volume), every write is checked (a write that stores
// fewer bytes than given fails the whole replacement), the file is flushed
// to the device and closed, renamed over the target, and the folder is
// flushed so the rename itself survives.
//
// Temporary files are named "." + stem + "tmp-" + a fresh UUID, e.g.
// ".layout.json.tmp-E621E1F8-C36C-495A-93FC-0C247A3E6E5F": hidden, tied to
// the file they belong to, and never mistaken for a real file. One left
// behind by a crash is garbage; the stores delete them when they load
// (removeStrayTemporaries) and never read them.
//
// Errors name the file being replaced (the one the user knows); `detail`
// names the temporary file and the step that failed.
//
// Thread rules: plain functions; safe to call from any thread as long as no
// two calls replace the same target at once.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "OrreryCore/storage/FileSystem.h"

namespace orrery {

// "." + stem + "tmp-" + a fresh UUID.
std::string temporaryName(std::string_view stem);

// Whether `name` is a temporary name made by temporaryName() from a stem
// starting with `stemPrefix`.
bool isTemporaryName(std::string_view name, std::string_view stemPrefix);

// Writes `bytes` to a new temporary file "." + stem + "tmp-<UUID>" in
// `directory`, flushed and closed; returns its path. On failure the file is
// removed again (as far as the file system lets us).
Expected<std::filesystem::path, FileError> writeTemporaryFile(FileSystem& fileSystem,
                                                              const std::filesystem::path& directory,
                                                              std::string_view stem, std::string_view bytes);

// Replaces (or creates) `target` with `bytes`, durably and atomically. On
// failure before the rename the target is untouched; a failure of the final
// folder flush is reported although the new content is already in place.
FileResult replaceAtomically(FileSystem& fileSystem, const std::filesystem::path& target,
                             std::string_view bytes);

// Deletes the temporary files left in `directory` by crashed writes whose
// stems start with `stemPrefix` (e.g. "layout." for ".layout.json.tmp-…").
// Failures are ignored: a leftover is harmless and tried again next time.
// Returns how many were deleted.
std::size_t removeStrayTemporaries(FileSystem& fileSystem, const std::filesystem::path& directory,
                                   std::string_view stemPrefix);

}  // namespace orrery
