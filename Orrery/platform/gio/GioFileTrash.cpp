#include "Orrery/platform/gio/GioFileTrash.h"

#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include "OrreryCore/text/Localized.h"

namespace orrery::platform {

namespace {

// Whether the entry belongs to someone else than the user: a package's
// entry (root's) or another account's. The user cannot fix that alone.
bool ownedByOtherUser(const std::string& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) return false;
  return info.st_uid != ::geteuid();
}

TrashFailure failureFor(const std::string& path, const GError& error) {
  if (error.domain == G_IO_ERROR) {
    switch (error.code) {
      case G_IO_ERROR_PERMISSION_DENIED:
      case G_IO_ERROR_READ_ONLY:
        if (ownedByOtherUser(path)) return {TrashFailure::Kind::systemOwned, {}};
        return {TrashFailure::Kind::other,
                text::localized("You may not change the folder it is in.",
                                "Reason why an app could not be moved to the Trash: no write permission")};
      case G_IO_ERROR_NOT_SUPPORTED:
        return {TrashFailure::Kind::other,
                text::localized("Its file system has no Trash.",
                                "Reason why an app could not be moved to the Trash: the disk has no Trash")};
      case G_IO_ERROR_NOT_FOUND:
        return {TrashFailure::Kind::other,
                text::localized("It is no longer there.",
                                "Reason why an app could not be moved to the Trash: the file is gone")};
      default:
        break;
    }
  }
  return {TrashFailure::Kind::other, error.message != nullptr ? std::string(error.message) : std::string()};
}

}  // namespace

std::optional<TrashFailure> GioFileTrash::moveToTrash(const std::string& path) const {
  GFile* file = g_file_new_for_path(path.c_str());
  GError* error = nullptr;
  const gboolean moved = g_file_trash(file, nullptr, &error);
  g_object_unref(file);
  if (moved) return std::nullopt;
  TrashFailure failure = error != nullptr ? failureFor(path, *error) : TrashFailure{};
  if (error != nullptr) g_error_free(error);
  return failure;
}

}  // namespace orrery::platform
