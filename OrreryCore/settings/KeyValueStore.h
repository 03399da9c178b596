// KeyValueStore: where a machine keeps small preference values between runs.
//
// The settings record is stored as one binary value (its JSON bytes) under
// one key. The application binds this interface to its platform settings
// storage; MemoryKeyValueStore keeps the values in memory, for tests and for
// runs that must not touch the user's preferences.
//
// Thread rules: implementations are used from the main thread only.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>

namespace orrery {

class KeyValueStore {
 public:
  virtual ~KeyValueStore() = default;

  // The bytes stored under the key, or nothing when the key holds no value.
  virtual std::optional<std::string> data(const std::string& key) const = 0;
  // Replaces whatever the key held.
  virtual void setData(const std::string& key, std::string bytes) = 0;

 protected:
  KeyValueStore() = default;
  KeyValueStore(const KeyValueStore&) = default;
  KeyValueStore& operator=(const KeyValueStore&) = default;
};

class MemoryKeyValueStore final : public KeyValueStore {
 public:
  std::optional<std::string> data(const std::string& key) const override;
  void setData(const std::string& key, std::string bytes) override;

  void remove(const std::string& key);
  // How many times setData() was called, so callers can tell "saved again"
  // from "not saved" even when the bytes did not change.
  std::size_t writeCount() const { return writeCount_; }

 private:
  std::map<std::string, std::string, std::less<>> values_;
  std::size_t writeCount_ = 0;
};

}  // namespace orrery
