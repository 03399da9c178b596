// The Finder-like name order: how app names are sorted everywhere a person
// sees a list (new apps appended by a scan, "Sort by Name", search ties).
//
// ICU collation at secondary strength (case-insensitive, accents count),
// with numeric ordering so "App 9" sorts before "App 10". The locale is
// always explicit: the application passes the user's at start-up
// (setDefaultLocale), and until then it is a real locale ("en_US"), never
// ICU's root rules or the C locale, so numeric ordering never silently
// depends on how the process happened to be started.
//
// Thread rules: a NameCollator is immutable after construction and may be
// shared by threads. compareNames() uses one collator per thread, made on
// the thread's first use from the default locale of that moment; set the
// default before any thread sorts.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class Collator;
U_NAMESPACE_END

namespace orrery::text {

// The ICU locale name names are sorted by when no other is given: "en_US"
// until the application sets the user's. An empty name keeps "en_US".
std::string defaultLocale();
void setDefaultLocale(std::string locale);

class NameCollator {
 public:
  explicit NameCollator(const std::string& locale = defaultLocale());
  ~NameCollator();
  NameCollator(NameCollator&&) noexcept;
  NameCollator& operator=(NameCollator&&) noexcept;

  // <0, 0 or >0 like strcmp, over UTF-8 text. Invalid UTF-8 compares as
  // replacement characters rather than failing.
  int compare(std::string_view a, std::string_view b) const;

  // A byte string whose plain order equals compare()'s order; build it once
  // per name when sorting many names.
  std::string sortKey(std::string_view name) const;

  const std::string& locale() const { return locale_; }

 private:
  std::string locale_;
  std::unique_ptr<icu::Collator> collator_;
};

// compare() with this thread's collator for defaultLocale().
int compareNames(std::string_view a, std::string_view b);

// Order of two named things: the names under compareNames(), ties broken by
// plain comparison of the identifiers.
bool nameOrderLess(std::string_view nameA, std::string_view idA, std::string_view nameB,
                   std::string_view idB);

}  // namespace orrery::text
