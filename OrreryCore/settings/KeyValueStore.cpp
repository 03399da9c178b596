#include "OrreryCore/settings/KeyValueStore.h"

#include <utility>

namespace orrery {

std::optional<std::string> MemoryKeyValueStore::data(const std::string& key) const {
  const auto found = values_.find(key);
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

void MemoryKeyValueStore::setData(const std::string& key, std::string bytes) {
  values_.insert_or_assign(key, std::move(bytes));
  ++writeCount_;
}

void MemoryKeyValueStore::remove(const std::string& key) { values_.erase(key); }

}  // namespace orrery
