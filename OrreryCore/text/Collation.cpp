#include "OrreryCore/text/Collation.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

namespace orrery::text {

namespace {

std::mutex defaultLocaleMutex;
std::string& defaultLocaleName() {
  static std::string name = "en_US";
  return name;
}

}  // namespace

std::string defaultLocale() {
  std::lock_guard lock(defaultLocaleMutex);
  return defaultLocaleName();
}

void setDefaultLocale(std::string locale) {
  if (locale.empty()) locale = "en_US";
  std::lock_guard lock(defaultLocaleMutex);
  defaultLocaleName() = std::move(locale);
}

NameCollator::NameCollator(const std::string& locale) : locale_(locale) {
  UErrorCode status = U_ZERO_ERROR;
  collator_.reset(icu::Collator::createInstance(icu::Locale(locale.c_str()), status));
  if (U_FAILURE(status) || !collator_) {
    // ICU always has root rules; a failure here means a broken ICU install.
    status = U_ZERO_ERROR;
    collator_.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
  }
  if (!collator_) std::abort();
  status = U_ZERO_ERROR;
  collator_->setStrength(icu::Collator::SECONDARY);
  collator_->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
  collator_->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
}

NameCollator::~NameCollator() = default;
NameCollator::NameCollator(NameCollator&&) noexcept = default;
NameCollator& NameCollator::operator=(NameCollator&&) noexcept = default;

int NameCollator::compare(std::string_view a, std::string_view b) const {
  UErrorCode status = U_ZERO_ERROR;
  const UCollationResult result =
      collator_->compareUTF8(icu::StringPiece(a.data(), static_cast<int32_t>(a.size())),
                             icu::StringPiece(b.data(), static_cast<int32_t>(b.size())), status);
  if (U_FAILURE(status)) return a.compare(b);
  return static_cast<int>(result);
}

std::string NameCollator::sortKey(std::string_view name) const {
  const icu::UnicodeString text =
      icu::UnicodeString::fromUTF8(icu::StringPiece(name.data(), static_cast<int32_t>(name.size())));
  std::vector<uint8_t> key(64);
  int32_t length = collator_->getSortKey(text, key.data(), static_cast<int32_t>(key.size()));
  if (length > static_cast<int32_t>(key.size())) {
    key.resize(static_cast<std::size_t>(length));
    length = collator_->getSortKey(text, key.data(), length);
  }
  // The key ends with a NUL that carries no order; drop it so keys can be
  // concatenated or compared as std::string.
  if (length > 0 && key[static_cast<std::size_t>(length) - 1] == 0) --length;
  return std::string(reinterpret_cast<const char*>(key.data()), static_cast<std::size_t>(length));
}

int compareNames(std::string_view a, std::string_view b) {
  thread_local const NameCollator collator;
  return collator.compare(a, b);
}

bool nameOrderLess(std::string_view nameA, std::string_view idA, std::string_view nameB,
                   std::string_view idB) {
  const int order = compareNames(nameA, nameB);
  if (order != 0) return order < 0;
  return idA < idB;
}

}  // namespace orrery::text
