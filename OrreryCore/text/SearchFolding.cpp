#include "OrreryCore/text/SearchFolding.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

namespace orrery::text {

namespace {

bool marksAreAccents(UScriptCode script) {
  return script == USCRIPT_LATIN || script == USCRIPT_GREEK || script == USCRIPT_CYRILLIC;
}

bool isAscii(std::string_view text) {
  for (const char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

}  // namespace

std::string searchFolded(std::string_view text) {
  // Most app names are plain ASCII; fold those without a trip through UTF-16.
  if (isAscii(text)) {
    std::string out(text);
    for (char& c : out)
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
  }

  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
  const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
  if (U_FAILURE(status)) return std::string(text);

  icu::UnicodeString folded =
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  folded.foldCase(U_FOLD_CASE_DEFAULT);
  const icu::UnicodeString decomposed = nfd->normalize(folded, status);
  if (U_FAILURE(status)) return std::string(text);

  icu::UnicodeString kept;
  UScriptCode baseScript = USCRIPT_COMMON;
  for (int32_t i = 0; i < decomposed.length();) {
    const UChar32 c = decomposed.char32At(i);
    i += U16_LENGTH(c);
    if (u_charType(c) == U_NON_SPACING_MARK) {
      if (marksAreAccents(baseScript)) continue;
    } else {
      UErrorCode scriptStatus = U_ZERO_ERROR;
      baseScript = uscript_getScript(c, &scriptStatus);
    }
    kept.append(c);
  }

  const icu::UnicodeString composed = nfc->normalize(kept, status);
  std::string out;
  (U_FAILURE(status) ? kept : composed).toUTF8String(out);
  return out;
}

}  // namespace orrery::text
