// FileSystem: every file operation the stores perform, behind one interface.
//
// The stores never touch the disk directly. They go through this interface so
// that a test can put an in-memory file system with injected faults in place
// of the real one (MemoryFileSystem) and check what a full disk, an I/O
// error, an unreadable file or a failed rename does to the user's data: CI
// runs as root, and permission bits do not stop root. The operations are the
// small set a durable atomic replacement needs, each reporting its failure as
// a FileError whose code separates the cases the stores treat differently.
//
// Paths are absolute. A WritableFile is a file opened for writing by
// createNew(); it must not outlive the FileSystem that made it.
//
// Implementations: PosixFileSystem (the disk) and MemoryFileSystem (tests).
//
// Thread rules: both implementations may be called from any thread; a
// WritableFile belongs to one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "OrreryCore/base/Expected.h"

namespace orrery {

// The operations of FileSystem and WritableFile, for errors and fault injection.
enum class FileOperation {
  read,
  createNew,
  write,
  sync,
  close,
  rename,
  renameNoReplace,
  syncDirectory,
  listDirectory,
  remove,
  createDirectories,
  stat,
};

std::string_view operationName(FileOperation operation);

struct FileError {
  enum class Code {
    notFound,       // the file or a folder on its path does not exist
    accessDenied,   // permissions, a read-only volume, a locked file
    noSpace,        // the volume or the user's quota is full; a write that stored fewer bytes than given
    ioError,        // the device failed
    exists,         // the name is taken (exclusive creation, rename without replacing)
    notADirectory,  // a component of the path is a file
    isADirectory,   // a file operation named a folder
    other,          // anything else; errorNumber tells what
  };

  Code code = Code::other;
  FileOperation operation = FileOperation::read;
  std::filesystem::path path;
  int errorNumber = 0;  // errno where the system reported one, else 0
  std::string detail;   // optional extra words for logs, e.g. "wrote 10 of 4096 bytes"

  // A sentence for the user in their language, naming the file.
  std::string description() const;

  friend bool operator==(const FileError&, const FileError&) = default;
};

// Success without a value, for operations that only can fail.
using FileResult = Expected<std::monostate, FileError>;
inline FileResult fileOK() { return std::monostate{}; }

struct FileStatus {
  enum class Kind { regular, directory, other };
  Kind kind = Kind::regular;
  std::uintmax_t size = 0;

  friend bool operator==(const FileStatus&, const FileStatus&) = default;
};

class WritableFile {
 public:
  virtual ~WritableFile() = default;

  // Writes from the current end. Returns how many bytes were stored, which a
  // full disk may make fewer than given; callers must treat that as failure.
  virtual Expected<std::size_t, FileError> write(std::string_view bytes) = 0;
  // Flushes the file's data and size to the device (F_FULLFSYNC where the
  // system has it, else fsync), so it survives a power loss.
  virtual FileResult sync() = 0;
  // Closes the file; errors the system reports late (network volumes) show here.
  // Destroying an open file closes it and ignores any error.
  virtual FileResult close() = 0;
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // The whole content of a regular file.
  virtual Expected<std::string, FileError> readFile(const std::filesystem::path& path) = 0;
  // Creates a new empty file for writing; fails with `exists` if the name is taken.
  virtual Expected<std::unique_ptr<WritableFile>, FileError> createNew(const std::filesystem::path& path) = 0;
  // Renames atomically, replacing an existing file at `to`.
  virtual FileResult rename(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
  // Renames atomically unless `to` exists, which fails with `exists`.
  virtual FileResult renameNoReplace(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
  // Makes the folder's entries (created, renamed, removed names) durable.
  virtual FileResult syncDirectory(const std::filesystem::path& path) = 0;
  // The names in a folder, "." and ".." left out, in byte order.
  virtual Expected<std::vector<std::string>, FileError> listDirectory(const std::filesystem::path& path) = 0;
  // Removes a file (not a folder).
  virtual FileResult remove(const std::filesystem::path& path) = 0;
  // Creates the folder and any missing parents; succeeds if it already
  // exists. Folders it creates are durable when it returns.
  virtual FileResult createDirectories(const std::filesystem::path& path) = 0;
  // What is at the path, without following a symbolic link there.
  virtual Expected<FileStatus, FileError> stat(const std::filesystem::path& path) = 0;
};

}  // namespace orrery
