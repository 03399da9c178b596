// GioFileTrash: moves a desktop entry to the user's Trash with GIO's
// g_file_trash, the way the desktop's file managers do it.
//
// GIO picks the right trash for each file (the home trash for files on the
// home file system, "$topdir/.Trash-$uid" elsewhere) and writes the
// ".trashinfo" record with the percent-encoded original path, so the
// desktop's Trash can restore the entry. Each failure becomes a sentence for
// the user: an entry owned by another user (a package's, root's) counts as
// system-owned; a folder the user may not change, a file system without a
// trash, a file that is gone and anything else get their own texts.
//
// Thread rules: moveToTrash() blocks; any thread, several at once.
#pragma once

#include "Orrery/trash/FileTrash.h"

namespace orrery::platform {

class GioFileTrash final : public app::FileTrash {
 public:
  std::optional<TrashFailure> moveToTrash(const std::string& path) const override;
};

}  // namespace orrery::platform
