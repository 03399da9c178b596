#include "OrreryCore/storage/MemoryFileSystem.h"

#include <algorithm>
#include <cerrno>
#include <unordered_set>

namespace orrery {

namespace {

// Absolute, lexically normal, without a trailing separator; nothing for a
// relative path.
std::optional<std::filesystem::path> normalized(const std::filesystem::path& path) {
  if (!path.is_absolute()) return std::nullopt;
  std::filesystem::path normal = path.lexically_normal();
  if (!normal.has_filename() && normal != normal.root_path()) normal = normal.parent_path();
  return normal;
}

bool samePath(const std::filesystem::path& a, const std::filesystem::path& b) {
  const auto left = normalized(a);
  const auto right = normalized(b);
  return left && right && *left == *right;
}

}  // namespace

struct MemoryFileSystem::Node {
  bool directory = false;
  std::string data;
  std::string durableData;
  std::map<std::string, std::shared_ptr<Node>> entries;
  std::map<std::string, std::shared_ptr<Node>> durableEntries;

  static std::shared_ptr<Node> makeDirectory() {
    auto node = std::make_shared<Node>();
    node->directory = true;
    return node;
  }
};

struct MemoryFileSystem::Lookup {
  std::shared_ptr<Node> node;    // what is at the path, if anything
  std::shared_ptr<Node> parent;  // the folder holding it (findParent only)
  std::string name;              // its name in that folder
  std::optional<FileError::Code> error;
};

class MemoryFileSystem::File final : public WritableFile {
 public:
  File(MemoryFileSystem& fileSystem, std::shared_ptr<Node> node, std::filesystem::path path)
      : fileSystem_(fileSystem), node_(std::move(node)), path_(std::move(path)) {}

  Expected<std::size_t, FileError> write(std::string_view bytes) override {
    std::lock_guard lock(fileSystem_.mutex_);
    if (auto error = fileSystem_.begin(FileOperation::write, path_)) return Unexpected(*error);
    if (!open_)
      return Unexpected(fileSystem_.failure(FileError::Code::other, FileOperation::write, path_, EBADF));
    std::size_t count = bytes.size();
    if (auto limit = fileSystem_.shortWriteFor(path_)) count = std::min(count, *limit);
    node_->data.append(bytes.substr(0, count));
    return count;
  }

  FileResult sync() override {
    std::lock_guard lock(fileSystem_.mutex_);
    if (auto error = fileSystem_.begin(FileOperation::sync, path_)) return Unexpected(*error);
    if (!open_)
      return Unexpected(fileSystem_.failure(FileError::Code::other, FileOperation::sync, path_, EBADF));
    node_->durableData = node_->data;
    return fileOK();
  }

  FileResult close() override {
    std::lock_guard lock(fileSystem_.mutex_);
    const bool wasOpen = open_;
    open_ = false;  // closed even when the close reports an error, as with POSIX
    if (auto error = fileSystem_.begin(FileOperation::close, path_)) return Unexpected(*error);
    if (!wasOpen)
      return Unexpected(fileSystem_.failure(FileError::Code::other, FileOperation::close, path_, EBADF));
    return fileOK();
  }

 private:
  MemoryFileSystem& fileSystem_;
  std::shared_ptr<Node> node_;
  std::filesystem::path path_;
  bool open_ = true;
};

MemoryFileSystem::MemoryFileSystem() : root_(Node::makeDirectory()) {}
MemoryFileSystem::~MemoryFileSystem() = default;

// --- Bookkeeping -------------------------------------------------------------

std::optional<FileError> MemoryFileSystem::begin(FileOperation operation, const std::filesystem::path& path,
                                                 const std::filesystem::path& other) {
  journal_.push_back(Event{operation, path, false});
  std::optional<FileError> result;
  for (ActiveFault& active : faults_) {
    const Fault& fault = active.fault;
    if (fault.shortWrite) continue;  // counted by shortWriteFor
    if (fault.operation && *fault.operation != operation) continue;
    if (fault.path && !samePath(*fault.path, path) && (other.empty() || !samePath(*fault.path, other)))
      continue;
    ++active.seen;
    const bool hits =
        active.seen == fault.at || (fault.persistence == Persistence::fromThenOn && active.seen > fault.at);
    if (hits && !result) result = FileError{fault.code, operation, path, 0, "injected fault"};
  }
  if (result) journal_.back().failed = true;
  return result;
}

std::optional<std::size_t> MemoryFileSystem::shortWriteFor(const std::filesystem::path& path) {
  std::optional<std::size_t> limit;
  for (ActiveFault& active : faults_) {
    const Fault& fault = active.fault;
    if (!fault.shortWrite) continue;
    if (fault.path && !samePath(*fault.path, path)) continue;
    ++active.seen;
    const bool hits =
        active.seen == fault.at || (fault.persistence == Persistence::fromThenOn && active.seen > fault.at);
    if (hits && !limit) limit = *fault.shortWrite;
  }
  return limit;
}

FileError MemoryFileSystem::failure(FileError::Code code, FileOperation operation,
                                    const std::filesystem::path& path, int errorNumber) {
  if (!journal_.empty()) journal_.back().failed = true;
  return FileError{code, operation, path, errorNumber, {}};
}

MemoryFileSystem::Lookup MemoryFileSystem::find(const std::filesystem::path& path) const {
  Lookup lookup;
  const auto normal = normalized(path);
  if (!normal) {
    lookup.error = FileError::Code::notFound;
    return lookup;
  }
  std::shared_ptr<Node> node = root_;
  for (const auto& component : normal->relative_path()) {
    if (!node->directory) {
      lookup.error = FileError::Code::notADirectory;
      return lookup;
    }
    const auto entry = node->entries.find(component.string());
    if (entry == node->entries.end()) {
      lookup.error = FileError::Code::notFound;
      return lookup;
    }
    node = entry->second;
  }
  lookup.node = node;
  return lookup;
}

MemoryFileSystem::Lookup MemoryFileSystem::findParent(const std::filesystem::path& path) const {
  Lookup lookup;
  const auto normal = normalized(path);
  if (!normal || *normal == normal->root_path()) {
    lookup.error = normal ? FileError::Code::isADirectory : FileError::Code::notFound;
    return lookup;
  }
  Lookup parent = find(normal->parent_path());
  if (parent.error) return parent;
  if (!parent.node->directory) {
    lookup.error = FileError::Code::notADirectory;
    return lookup;
  }
  lookup.parent = parent.node;
  lookup.name = normal->filename().string();
  const auto entry = parent.node->entries.find(lookup.name);
  if (entry != parent.node->entries.end()) lookup.node = entry->second;
  return lookup;
}

// --- FileSystem -------------------------------------------------------------

Expected<std::string, FileError> MemoryFileSystem::readFile(const std::filesystem::path& path) {
  std::lock_guard lock(mutex_);
  if (auto error = begin(FileOperation::read, path)) return Unexpected(*error);
  const Lookup lookup = find(path);
  if (lookup.error) return Unexpected(failure(*lookup.error, FileOperation::read, path));
  if (lookup.node->directory)
    return Unexpected(failure(FileError::Code::isADirectory, FileOperation::read, path));
  return lookup.node->data;
}

Expected<std::unique_ptr<WritableFile>, FileError> MemoryFileSystem::createNew(
    const std::filesystem::path& path) {
  std::lock_guard lock(mutex_);
  if (auto error = begin(FileOperation::createNew, path)) return Unexpected(*error);
  const Lookup lookup = findParent(path);
  if (lookup.error) return Unexpected(failure(*lookup.error, FileOperation::createNew, path));
  if (lookup.node) return Unexpected(failure(FileError::Code::exists, FileOperation::createNew, path));
  auto node = std::make_shared<Node>();
  lookup.parent->entries[lookup.name] = node;
  return std::unique_ptr<WritableFile>(std::make_unique<File>(*this, std::move(node), path));
}

FileResult MemoryFileSystem::rename(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::lock_guard lock(mutex_);
  return renameLocked(FileOperation::rename, from, to, true);
}

FileResult MemoryFileSystem::renameNoReplace(const std::filesystem::path& from,
                                             const std::filesystem::path& to) {
  std::lock_guard lock(mutex_);
  return renameLocked(FileOperation::renameNoReplace, from, to, false);
}

FileResult MemoryFileSystem::renameLocked(FileOperation operation, const std::filesystem::path& from,
                                          const std::filesystem::path& to, bool replace) {
  if (auto error = begin(operation, from, to)) return Unexpected(*error);
  const Lookup source = findParent(from);
  if (source.error) return Unexpected(failure(*source.error, operation, from));
  if (!source.node) return Unexpected(failure(FileError::Code::notFound, operation, from));
  const Lookup target = findParent(to);
  if (target.error) return Unexpected(failure(*target.error, operation, from));
  if (target.node == source.node) return fileOK();  // the same entry: nothing to do, as with rename(2)
  if (target.node) {
    if (!replace) return Unexpected(failure(FileError::Code::exists, operation, from));
    if (target.node->directory && !source.node->directory)
      return Unexpected(failure(FileError::Code::isADirectory, operation, from));
    if (!target.node->directory && source.node->directory)
      return Unexpected(failure(FileError::Code::notADirectory, operation, from));
    if (target.node->directory && !target.node->entries.empty())
      return Unexpected(failure(FileError::Code::exists, operation, from));
  }
  if (source.node->directory) {
    // A folder cannot move into itself or below itself.
    const auto normalFrom = normalized(from);
    const auto normalTo = normalized(to);
    const auto relative = normalTo->lexically_relative(*normalFrom);
    if (!relative.empty() && *relative.begin() != "..")
      return Unexpected(failure(FileError::Code::other, operation, from, EINVAL));
  }
  target.parent->entries[target.name] = source.node;
  source.parent->entries.erase(source.name);
  return fileOK();
}

FileResult MemoryFileSystem::syncDirectory(const std::filesystem::path& path) {
  std::lock_guard lock(mutex_);
  if (auto error = begin(FileOperation::syncDirectory, path)) return Unexpected(*error);
  const Lookup lookup = find(path);
  if (lookup.error) return Unexpected(failure(*lookup.error, FileOperation::syncDirectory, path));
  if (!lookup.node->directory)
    return Unexpected(failure(FileError::Code::notADirectory, FileOperation::syncDirectory, path));
  lookup.node->durableEntries = lookup.node->entries;
  return fileOK();
}

Expected<std::vector<std::string>, FileError> MemoryFileSystem::listDirectory(
    const std::filesystem::path& path) {
  std::lock_guard lock(mutex_);
  if (auto error = begin(FileOperation::listDirectory, path)) return Unexpected(*error);
  const Lookup lookup = find(path);
  if (lookup.error) return Unexpected(failure(*lookup.error, FileOperation::listDirectory, path));
  if (!lookup.node->directory)
    return Unexpected(failure(FileError::Code::notADirectory, FileOperation::listDirectory, path));
  std::vector<std::string> result;
  for (const auto& [name, node] : lookup.node->entries) result.push_back(name);
  return result;
}

FileResult MemoryFileSystem::remove(const std::filesystem::path& path) {
  std::lock_guard lock(mutex_);
  if (auto error = begin(FileOperation::remove, path)) return Unexpected(*error);
  const Lookup lookup = findParent(path);
  if (lookup.error) return Unexpected(failure(*lookup.error, FileOperation::remove, path));
  if (!lookup.node) return Unexpected(failure(FileError::Code::notFound, FileOperation::remove, path));
  if (lookup.node->directory)
    return Unexpected(failure(FileError::Code::isADirectory, FileOperation::remove, path));
  lookup.parent->entries.erase(lookup.name);
  return fileOK();
}

FileResult MemoryFileSystem::createDirectories(const std::filesystem::path& path) {
  std::lock_guard lock(mutex_);
  if (auto error = begin(FileOperation::createDirectories, path)) return Unexpected(*error);
  const auto normal = normalized(path);
  if (!normal) return Unexpected(failure(FileError::Code::notFound, FileOperation::createDirectories, path));
  std::shared_ptr<Node> node = root_;
  for (const auto& component : normal->relative_path()) {
    auto& child = node->entries[component.string()];
    if (!child) {
      child = Node::makeDirectory();
      // Made durable at once, as the disk implementation flushes the parent.
      node->durableEntries = node->entries;
    } else if (!child->directory) {
      return Unexpected(failure(FileError::Code::notADirectory, FileOperation::createDirectories, path));
    }
    node = child;
  }
  return fileOK();
}

Expected<FileStatus, FileError> MemoryFileSystem::stat(const std::filesystem::path& path) {
  std::lock_guard lock(mutex_);
  if (auto error = begin(FileOperation::stat, path)) return Unexpected(*error);
  const Lookup lookup = find(path);
  if (lookup.error) return Unexpected(failure(*lookup.error, FileOperation::stat, path));
  FileStatus status;
  status.kind = lookup.node->directory ? FileStatus::Kind::directory : FileStatus::Kind::regular;
  status.size = lookup.node->directory ? 0 : lookup.node->data.size();
  return status;
}

// --- Faults and power loss ---------------------------------------------------

void MemoryFileSystem::inject(Fault fault) {
  std::lock_guard lock(mutex_);
  faults_.push_back(ActiveFault{std::move(fault), 0});
}

void MemoryFileSystem::clearFaults() {
  std::lock_guard lock(mutex_);
  faults_.clear();
}

void MemoryFileSystem::simulateCrash() {
  std::lock_guard lock(mutex_);
  // Flushed folder entries can in odd rename histories point back up the
  // tree, so nodes are visited once.
  std::unordered_set<const Node*> visited;
  std::vector<Node*> pending{root_.get()};
  while (!pending.empty()) {
    Node* node = pending.back();
    pending.pop_back();
    if (!visited.insert(node).second) continue;
    if (node->directory) {
      node->entries = node->durableEntries;
      for (const auto& [name, child] : node->entries) pending.push_back(child.get());
    } else {
      node->data = node->durableData;
    }
  }
}

// --- Setup and inspection ----------------------------------------------------

void MemoryFileSystem::makeDirectory(const std::filesystem::path& path) {
  std::lock_guard lock(mutex_);
  const auto normal = normalized(path);
  if (!normal) return;
  std::shared_ptr<Node> node = root_;
  for (const auto& component : normal->relative_path()) {
    auto& child = node->entries[component.string()];
    if (!child) child = Node::makeDirectory();
    if (!child->directory) return;
    node->durableEntries[component.string()] = child;
    node = child;
  }
}

void MemoryFileSystem::writeFile(const std::filesystem::path& path, std::string_view content) {
  const auto normal = normalized(path);
  if (!normal) return;
  makeDirectory(normal->parent_path());
  std::lock_guard lock(mutex_);
  const Lookup lookup = findParent(*normal);
  if (lookup.error || (lookup.node && lookup.node->directory)) return;
  auto node = lookup.node ? lookup.node : std::make_shared<Node>();
  node->data = std::string(content);
  node->durableData = node->data;
  lookup.parent->entries[lookup.name] = node;
  lookup.parent->durableEntries[lookup.name] = node;
}

std::optional<std::string> MemoryFileSystem::contents(const std::filesystem::path& path) const {
  std::lock_guard lock(mutex_);
  const Lookup lookup = find(path);
  if (lookup.error || lookup.node->directory) return std::nullopt;
  return lookup.node->data;
}

std::vector<std::string> MemoryFileSystem::names(const std::filesystem::path& directory) const {
  std::lock_guard lock(mutex_);
  const Lookup lookup = find(directory);
  std::vector<std::string> result;
  if (lookup.error || !lookup.node->directory) return result;
  for (const auto& [name, node] : lookup.node->entries) result.push_back(name);
  return result;
}

bool MemoryFileSystem::exists(const std::filesystem::path& path) const {
  std::lock_guard lock(mutex_);
  return !find(path).error;
}

std::vector<MemoryFileSystem::Event> MemoryFileSystem::journal() const {
  std::lock_guard lock(mutex_);
  return journal_;
}

std::size_t MemoryFileSystem::operationCount() const {
  std::lock_guard lock(mutex_);
  return journal_.size();
}

void MemoryFileSystem::clearJournal() {
  std::lock_guard lock(mutex_);
  journal_.clear();
}

}  // namespace orrery
