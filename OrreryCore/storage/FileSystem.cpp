#include "OrreryCore/storage/FileSystem.h"

#include <system_error>

#include "OrreryCore/text/Localized.h"

namespace orrery {

std::string_view operationName(FileOperation operation) {
  switch (operation) {
    case FileOperation::read:
      return "read";
    case FileOperation::createNew:
      return "createNew";
    case FileOperation::write:
      return "write";
    case FileOperation::sync:
      return "sync";
    case FileOperation::close:
      return "close";
    case FileOperation::rename:
      return "rename";
    case FileOperation::renameNoReplace:
      return "renameNoReplace";
    case FileOperation::syncDirectory:
      return "syncDirectory";
    case FileOperation::listDirectory:
      return "listDirectory";
    case FileOperation::remove:
      return "remove";
    case FileOperation::createDirectories:
      return "createDirectories";
    case FileOperation::stat:
      return "stat";
  }
  return "unknown";
}

std::string FileError::description() const {
  // Users know files by name, not by the folder path of the support folder.
  std::string name = path.filename().string();
  if (name.empty()) name = path.string();
  const char* comment = "File error shown after a failed save; %1 is the file name";
  switch (code) {
    case Code::notFound:
      return text::arg(text::localized("The file “%1” doesn’t exist.", comment), {name});
    case Code::accessDenied:
      return text::arg(text::localized("You don’t have permission to access “%1”.", comment), {name});
    case Code::noSpace:
      return text::arg(text::localized("There isn’t enough space on the disk to save “%1”.", comment),
                       {name});
    case Code::ioError:
      return text::arg(text::localized("A disk error occurred while accessing “%1”.", comment), {name});
    case Code::exists:
      return text::arg(text::localized("“%1” already exists.", comment), {name});
    case Code::notADirectory:
      return text::arg(text::localized("A part of the path to “%1” isn’t a folder.", comment), {name});
    case Code::isADirectory:
      return text::arg(text::localized("“%1” is a folder.", comment), {name});
    case Code::other:
      break;
  }
  const std::string reason =
      errorNumber != 0 ? std::generic_category().message(errorNumber) : (detail.empty() ? "?" : detail);
  return text::arg(text::localized("“%1” couldn’t be accessed (%2).",
                                   "File error shown after a failed save; %1 is the file name, %2 the "
                                   "system's reason"),
                   {name, reason});
}

}  // namespace orrery
