// MemoryFileSystem: a complete file system in memory, with faults on demand.
//
// Behaves like a POSIX file system for the operations of FileSystem (same
// error codes for missing files, taken names, folders in the way), so code
// tested against it behaves the same on disk. Two additions make it useful
// for testing what failures do to stored data:
//
// - Faults: fail the n-th operation (optionally only of one kind, or only on
//   one path) with a chosen error, once or from then on, or let a write store
//   only part of its bytes. Counting starts when the fault is injected.
// - Power loss: every file keeps the content it had when last flushed, every
//   folder the entries it had when last flushed; simulateCrash() throws away
//   everything newer, as a machine that loses power would. A writer that
//   renames before flushing its data, or never flushes the folder, is caught.
//
// The setup and inspection helpers (writeFile, contents, names) bypass
// faults and counting, and what they write is already durable.
//
// Paths must be absolute; "." and ".." are resolved lexically. There are no
// symbolic links, permissions or times.
//
// Thread rules: every call takes one internal lock; any thread. A
// WritableFile must not outlive its MemoryFileSystem.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "OrreryCore/storage/FileSystem.h"

namespace orrery {

class MemoryFileSystem final : public FileSystem {
 public:
  enum class Persistence { once, fromThenOn };

  struct Fault {
    // The at-th matching operation from now on (1 = the next one) fails.
    std::size_t at = 1;
    Persistence persistence = Persistence::once;
    FileError::Code code = FileError::Code::ioError;
    // Only operations of this kind count (and fail).
    std::optional<FileOperation> operation;
    // Only operations on this path count (for renames, either path).
    std::optional<std::filesystem::path> path;
    // Instead of an error, a write stores only this many of its bytes and
    // reports that count. Only writes match such a fault.
    std::optional<std::size_t> shortWrite;

    // Fault::error(Code::noSpace, 3).only(FileOperation::write).onPath(p)
    static Fault error(FileError::Code code, std::size_t at = 1,
                       Persistence persistence = Persistence::once) {
      Fault fault;
      fault.code = code;
      fault.at = at;
      fault.persistence = persistence;
      return fault;
    }
    static Fault shortWriteOf(std::size_t bytes, std::size_t at = 1,
                              Persistence persistence = Persistence::once) {
      Fault fault;
      fault.shortWrite = bytes;
      fault.at = at;
      fault.persistence = persistence;
      return fault;
    }
    Fault only(FileOperation kind) const {
      Fault fault = *this;
      fault.operation = kind;
      return fault;
    }
    Fault onPath(std::filesystem::path where) const {
      Fault fault = *this;
      fault.path = std::move(where);
      return fault;
    }
  };

  // One operation as it was called, for tests that check what was done.
  struct Event {
    FileOperation operation;
    std::filesystem::path path;
    bool failed = false;

    friend bool operator==(const Event&, const Event&) = default;
  };

  MemoryFileSystem();
  ~MemoryFileSystem() override;
  MemoryFileSystem(const MemoryFileSystem&) = delete;
  MemoryFileSystem& operator=(const MemoryFileSystem&) = delete;

  // --- FileSystem -------------------------------------------------------------

  Expected<std::string, FileError> readFile(const std::filesystem::path& path) override;
  Expected<std::unique_ptr<WritableFile>, FileError> createNew(const std::filesystem::path& path) override;
  FileResult rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  FileResult renameNoReplace(const std::filesystem::path& from, const std::filesystem::path& to) override;
  FileResult syncDirectory(const std::filesystem::path& path) override;
  Expected<std::vector<std::string>, FileError> listDirectory(const std::filesystem::path& path) override;
  FileResult remove(const std::filesystem::path& path) override;
  FileResult createDirectories(const std::filesystem::path& path) override;
  Expected<FileStatus, FileError> stat(const std::filesystem::path& path) override;

  // --- Faults -------------------------------------------------------------------

  void inject(Fault fault);
  void clearFaults();

  // --- Power loss ---------------------------------------------------------------

  // Everything not flushed is lost: file contents fall back to what they held
  // at their last sync, folders to their entries at their last syncDirectory
  // (or creation by createDirectories). Open files stay usable but write to
  // files that may no longer be reachable.
  void simulateCrash();

  // --- Setup and inspection (no faults, not counted, durable at once) ------------

  // Creates the file (and missing folders) or replaces its content.
  void writeFile(const std::filesystem::path& path, std::string_view content);
  void makeDirectory(const std::filesystem::path& path);
  // The content of a regular file; nothing when there is none.
  std::optional<std::string> contents(const std::filesystem::path& path) const;
  // The names in a folder in byte order; empty when it does not exist.
  std::vector<std::string> names(const std::filesystem::path& directory) const;
  bool exists(const std::filesystem::path& path) const;

  // Every operation called through FileSystem and WritableFile so far.
  std::vector<Event> journal() const;
  std::size_t operationCount() const;
  void clearJournal();

 private:
  struct Node;
  class File;
  friend class File;

  // Counts the operation, applies a matching fault; the error to report, if any.
  std::optional<FileError> begin(FileOperation operation, const std::filesystem::path& path,
                                 const std::filesystem::path& other = {});
  std::optional<std::size_t> shortWriteFor(const std::filesystem::path& path);
  // A natural (not injected) failure of the current operation.
  FileError failure(FileError::Code code, FileOperation operation, const std::filesystem::path& path,
                    int errorNumber = 0);
  FileResult renameLocked(FileOperation operation, const std::filesystem::path& from,
                          const std::filesystem::path& to, bool replace);

  struct Lookup;
  Lookup find(const std::filesystem::path& path) const;
  Lookup findParent(const std::filesystem::path& path) const;

  struct ActiveFault {
    Fault fault;
    std::size_t seen = 0;
  };

  mutable std::mutex mutex_;
  std::shared_ptr<Node> root_;
  std::vector<ActiveFault> faults_;
  std::vector<Event> journal_;
};

}  // namespace orrery
