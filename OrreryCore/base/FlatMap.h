// FlatMap: an insert-only hash map kept in two flat arrays.
//
// The arrangement passes (folding a machine's view back, merging, checking
// that every app has one place) build a table over every item, use it once
// and drop it. std::unordered_map allocates a node per entry, which at ten
// thousand items costs more than the rest of the pass. FlatMap keeps its
// entries in one vector, in insertion order, and an open-addressing index of
// 32-bit positions beside it; nothing is ever erased.
//
// Keys are usually views (std::string_view into the arrangement), so the
// strings they refer to must outlive the map. Pointers returned by find()
// and tryEmplace() stay valid until the next insertion.
//
// Thread rules: a plain value; no sharing between threads while inserting.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace orrery {

template <typename Key, typename Value, typename Hash = std::hash<Key>>
class FlatMap {
 public:
  // Sized so that `expected` entries fit without growing.
  explicit FlatMap(std::size_t expected = 0) {
    entries_.reserve(expected);
    resizeIndex(std::bit_ceil(expected * 2 + 2));
  }

  // The value for `key`, or nullptr.
  const Value* find(const Key& key) const {
    for (std::size_t slot = hash(key) & mask_;; slot = (slot + 1) & mask_) {
      const std::uint32_t at = index_[slot];
      if (at == 0) return nullptr;
      if (entries_[at - 1].first == key) return &entries_[at - 1].second;
    }
  }
  Value* find(const Key& key) { return const_cast<Value*>(std::as_const(*this).find(key)); }
  bool contains(const Key& key) const { return find(key) != nullptr; }

  // Inserts `value` under `key` unless the key is there; the stored value and
  // whether it was inserted.
  std::pair<Value*, bool> tryEmplace(const Key& key, Value value) {
    if ((entries_.size() + 1) * 2 > index_.size()) resizeIndex(index_.size() * 2);
    std::size_t slot = hash(key) & mask_;
    for (;; slot = (slot + 1) & mask_) {
      const std::uint32_t at = index_[slot];
      if (at == 0) break;
      if (entries_[at - 1].first == key) return {&entries_[at - 1].second, false};
    }
    entries_.emplace_back(key, std::move(value));
    index_[slot] = static_cast<std::uint32_t>(entries_.size());
    return {&entries_.back().second, true};
  }

  std::size_t size() const { return entries_.size(); }

 private:
  std::size_t hash(const Key& key) const {
    // Spread the bits: std::hash of an integer or a pointer is the identity.
    return static_cast<std::size_t>(static_cast<std::uint64_t>(Hash()(key)) * 0x9E3779B97F4A7C15ull >> 16);
  }

  void resizeIndex(std::size_t size) {
    index_.assign(size, 0);
    mask_ = size - 1;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      std::size_t slot = hash(entries_[i].first) & mask_;
      while (index_[slot] != 0) slot = (slot + 1) & mask_;
      index_[slot] = static_cast<std::uint32_t>(i + 1);
    }
  }

  std::vector<std::pair<Key, Value>> entries_;
  std::vector<std::uint32_t> index_;  // 0 = empty, else position in entries_ + 1
  std::size_t mask_ = 0;
};

}  // namespace orrery
