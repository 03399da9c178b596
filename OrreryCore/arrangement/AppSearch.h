// AppSearch: the filter behind the overlay's search field.
//
// Query and names are compared in their search-folded form (case and Latin,
// Greek and Cyrillic accents ignored, see text/SearchFolding.h), the query
// trimmed of surrounding whitespace. A name matches in one of three ranks:
//   0  the name starts with the query            ("Pro" → "Pro Tools")
//   1  a later word of the name starts with it   ("pro" → "Logic Pro")
//   2  the name contains it anywhere else        ("pro" → "Improv")
// Matches come in rank order, within a rank in the Finder-like name order,
// equal names by app ID. A blank query matches every app, in the order given.
// Matching works on the code points of the folded text, so a query that ends
// in a base letter already matches a name where that letter carries a mark
// the folding keeps (Japanese か matches が only when typed as が).
//
// The search runs on every keystroke over every installed app. filter()
// folds and orders from scratch on each call; an Index does that work once
// for a list of apps (rebuild it when the list changes) and then answers each
// query with one pass over the folded names and no sorting. search() over a
// shared Index returns Results that point into it instead of copying every
// matching record, which is what keeps a one-letter query over ten thousand
// apps cheap.
//
// Thread rules: filter() and search() are pure functions. An Index is
// immutable after construction and may be shared by threads; so may Results.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::AppSearch {

// The apps that match the query, in rank order.
std::vector<AppInfo> filter(const std::vector<AppInfo>& apps, std::string_view query);

class Index {
 public:
  Index() = default;
  // Folds every name and fixes the name order once.
  explicit Index(std::vector<AppInfo> apps);

  const std::vector<AppInfo>& apps() const { return apps_; }

  // Positions in apps() of the matching apps, in rank order; every position,
  // in order, for a blank query.
  std::vector<std::size_t> matches(std::string_view query) const;
  // The same as AppSearch::filter(apps(), query).
  std::vector<AppInfo> filter(std::string_view query) const;

 private:
  struct Entry {
    std::size_t app;    // position in apps_
    std::size_t begin;  // the folded name is folded_[begin, begin + length)
    std::size_t length;
    std::size_t wordsBegin;  // its later words start at words_[wordsBegin, wordsEnd)
    std::size_t wordsEnd;
  };

  std::vector<AppInfo> apps_;
  std::vector<Entry> entries_;  // in name order (ties by ID)
  // All folded names back to back, so a query walks one block of memory.
  std::string folded_;
  // Offsets, within its name, of every word after a name's first, where
  // rank 1 looks.
  std::vector<std::size_t> words_;
};

// The apps a query found, in rank order, read in place from the Index they
// keep alive.
class Results {
 public:
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = AppInfo;
    using difference_type = std::ptrdiff_t;
    using pointer = const AppInfo*;
    using reference = const AppInfo&;

    Iterator() = default;
    reference operator*() const { return (*apps_)[*position_]; }
    pointer operator->() const { return &**this; }
    Iterator& operator++() {
      ++position_;
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++position_;
      return before;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) { return a.position_ == b.position_; }

   private:
    friend class Results;
    Iterator(const std::vector<AppInfo>* apps, std::vector<std::size_t>::const_iterator position)
        : apps_(apps), position_(position) {}
    const std::vector<AppInfo>* apps_ = nullptr;
    std::vector<std::size_t>::const_iterator position_;
  };

  Results() = default;
  Results(std::shared_ptr<const Index> index, std::vector<std::size_t> positions);

  std::size_t size() const { return positions_.size(); }
  bool empty() const { return positions_.empty(); }
  const AppInfo& operator[](std::size_t i) const { return index_->apps()[positions_[i]]; }
  const AppInfo& front() const { return (*this)[0]; }
  Iterator begin() const { return Iterator(index_ ? &index_->apps() : nullptr, positions_.begin()); }
  Iterator end() const { return Iterator(index_ ? &index_->apps() : nullptr, positions_.end()); }

  // Copies of the records, for callers that keep them beyond the index.
  std::vector<AppInfo> toVector() const;

  // Equal when they list equal records in the same order.
  friend bool operator==(const Results& a, const Results& b);

 private:
  std::shared_ptr<const Index> index_;
  std::vector<std::size_t> positions_;
};

// index->matches(query) as Results.
Results search(const std::shared_ptr<const Index>& index, std::string_view query);

}  // namespace orrery::AppSearch
