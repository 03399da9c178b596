#include "Orrery/platform/bundle/BundleInfo.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include <plist/plist.h>

namespace orrery::platform {

namespace {

// Deeper nesting than this is left to libplist; Info.plist files nest a few
// levels at most.
constexpr int kMaxDepth = 16;

// The prologues property-list writers put before <plist>.
constexpr std::string_view kDeclarations[] = {
    R"(<?xml version="1.0" encoding="UTF-8"?>)",
    R"(<?xml version="1.0" encoding="utf-8"?>)",
    R"(<?xml version="1.0"?>)",
};
constexpr std::string_view kDocumentTypes[] = {
    R"(<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">)",
    R"(<!DOCTYPE plist PUBLIC "-//Apple Computer//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">)",
};

// A reader of the shape most Info.plist files have: the prologue, then
// <plist> around a dictionary whose values are strings, booleans, decimal
// integers, arrays and dictionaries, with no comments, CDATA sections,
// attributes or character references. Every failure means "not this
// shape", never "not a property list".
class PlainXmlReader {
 public:
  explicit PlainXmlReader(std::string_view text) : text_(text) {}

  std::optional<BundleInfo> document() {
    skipSpace();
    for (const std::string_view declaration : kDeclarations)
      if (take(declaration)) break;
    skipSpace();
    for (const std::string_view documentType : kDocumentTypes)
      if (take(documentType)) break;
    skipSpace();
    if (!take("<plist>") && !take(R"(<plist version="1.0">)")) return std::nullopt;
    skipSpace();
    BundleInfo info;
    if (!dictionary(0, &info)) return std::nullopt;
    skipSpace();
    if (!take("</plist>")) return std::nullopt;
    skipSpace();
    if (at_ != text_.size()) return std::nullopt;
    return info;
  }

 private:
  // White space between tags, as libplist skips it.
  void skipSpace() {
    while (at_ < text_.size() &&
           (text_[at_] == ' ' || text_[at_] == '\t' || text_[at_] == '\n' || text_[at_] == '\r'))
      ++at_;
  }

  bool take(std::string_view literal) {
    if (text_.substr(at_, literal.size()) != literal) return false;
    at_ += literal.size();
    return true;
  }

  // The text up to the next "<", with the five predefined entities
  // replaced; false for any other "&". White space is kept, as libplist
  // keeps it.
  bool characters(std::string* out) {
    const std::size_t end = text_.find('<', at_);
    if (end == std::string_view::npos) return false;
    const std::string_view raw = text_.substr(at_, end - at_);
    at_ = end;
    if (out != nullptr) out->clear();
    std::size_t from = 0;
    for (;;) {
      const std::size_t amp = raw.find('&', from);
      if (out != nullptr) out->append(raw.substr(from, amp == std::string_view::npos ? amp : amp - from));
      if (amp == std::string_view::npos) return true;
      static constexpr std::pair<std::string_view, char> kEntities[] = {
          {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
      bool known = false;
      for (const auto& [entity, character] : kEntities) {
        if (raw.substr(amp, entity.size()) != entity) continue;
        if (out != nullptr) *out += character;
        from = amp + entity.size();
        known = true;
        break;
      }
      if (!known) return false;
    }
  }

  // One value; `string` receives a string value's text, and is reset for
  // any other value.
  bool value(int depth, std::optional<std::string>* string) {
    if (string != nullptr) string->reset();
    if (take("<string/>")) {
      if (string != nullptr) string->emplace();
      return true;
    }
    if (take("<string>")) {
      std::string text;
      if (!characters(string != nullptr ? &text : nullptr) || !take("</string>")) return false;
      if (string != nullptr) *string = std::move(text);
      return true;
    }
    if (take("<true/>") || take("<false/>")) return true;
    if (take("<integer>")) {
      if (at_ < text_.size() && text_[at_] == '-') ++at_;
      const std::size_t digits = at_;
      while (at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9') ++at_;
      return at_ > digits && take("</integer>");
    }
    if (depth >= kMaxDepth) return false;
    if (text_.substr(at_).starts_with("<dict")) return dictionary(depth + 1, nullptr);
    if (take("<array/>")) return true;
    if (!take("<array>")) return false;
    for (;;) {
      skipSpace();
      if (take("</array>")) return true;
      if (!value(depth + 1, nullptr)) return false;
    }
  }

  // A dictionary; at the top, `info` receives the keys it is read for, the
  // last of a repeated key winning as in libplist.
  bool dictionary(int depth, BundleInfo* info) {
    if (take("<dict/>")) return true;
    if (!take("<dict>")) return false;
    std::string key;
    std::optional<std::string> string;
    for (;;) {
      skipSpace();
      if (take("</dict>")) return true;
      if (!take("<key>") || !characters(info != nullptr ? &key : nullptr) || !take("</key>")) return false;
      skipSpace();
      std::optional<std::string>* slot = nullptr;
      if (info != nullptr) {
        if (key == "CFBundleDisplayName")
          slot = &info->displayName;
        else if (key == "CFBundleName")
          slot = &info->name;
        else if (key == "CFBundleIdentifier")
          slot = &info->identifier;
      }
      if (!value(depth, slot != nullptr ? &string : nullptr)) return false;
      // Only non-empty strings count.
      if (slot != nullptr) *slot = string && !string->empty() ? std::move(string) : std::nullopt;
    }
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

// A reader of binary property lists ("bplist00") made of what Info.plist
// files hold: dictionaries with ASCII keys, arrays, ASCII strings,
// booleans and integers of up to eight bytes. Every offset in the file is
// checked, not only those on the way to the three keys, so a file libplist
// would refuse is never read here; anything else (UTF-16 strings, data,
// dates, reals, nesting deeper than a plist needs, a key given twice)
// means "not this shape".
class PlainBinaryReader {
 public:
  explicit PlainBinaryReader(std::string_view bytes) : bytes_(bytes) {}

  std::optional<BundleInfo> document() {
    constexpr std::size_t kTrailer = 32;
    if (bytes_.size() < 8 + kTrailer || !bytes_.starts_with("bplist00")) return std::nullopt;
    const std::size_t trailer = bytes_.size() - kTrailer;
    offsetSize_ = byte(trailer + 6);
    referenceSize_ = byte(trailer + 7);
    const std::uint64_t objects = number(trailer + 8, 8);
    const std::uint64_t top = number(trailer + 16, 8);
    const std::uint64_t table = number(trailer + 24, 8);
    if (!isIntegerSize(offsetSize_) || !isIntegerSize(referenceSize_)) return std::nullopt;
    if (objects == 0 || top >= objects || table < 8 || table > trailer) return std::nullopt;
    if (objects > (trailer - table) / offsetSize_) return std::nullopt;
    objects_ = static_cast<std::size_t>(objects);
    table_ = static_cast<std::size_t>(table);
    for (std::size_t i = 0; i < objects_; ++i) {
      const std::uint64_t offset = number(table_ + i * offsetSize_, offsetSize_);
      if (offset < 8 || offset >= table_) return std::nullopt;
    }

    const std::size_t at = offsetOf(static_cast<std::size_t>(top));
    if (byte(at) >> 4 != 0xD) return std::nullopt;
    BundleInfo info;
    if (!object(static_cast<std::size_t>(top), 0, &info, nullptr)) return std::nullopt;
    return info;
  }

 private:
  static bool isIntegerSize(unsigned size) { return size == 1 || size == 2 || size == 4 || size == 8; }

  unsigned byte(std::size_t at) const { return static_cast<unsigned char>(bytes_[at]); }

  // The big-endian unsigned number of `size` bytes at `at`, known to be in
  // the file.
  std::uint64_t number(std::size_t at, unsigned size) const {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i) value = value << 8 | byte(at + i);
    return value;
  }

  std::size_t offsetOf(std::size_t object) const {
    return static_cast<std::size_t>(number(table_ + object * offsetSize_, offsetSize_));
  }

  // The element count of the object whose marker is at `at`, and where its
  // contents start; false when it runs past the objects.
  bool count(std::size_t& at, std::size_t& items) const {
    items = byte(at) & 0xF;
    ++at;
    if (items != 0xF) return true;
    if (at >= table_ || byte(at) >> 4 != 0x1) return false;
    const unsigned size = 1u << (byte(at) & 0xF);
    if (size > 8 || at + 1 + size > table_) return false;
    const std::uint64_t value = number(at + 1, size);
    if (value > table_) return false;
    items = static_cast<std::size_t>(value);
    at += 1 + size;
    return true;
  }

  // The object `index`, which must be of a kind this reader knows, with
  // everything in it. A string's text goes to `string`; a dictionary at the
  // top fills `info`.
  bool object(std::size_t index, int depth, BundleInfo* info, std::string* string) const {
    if (depth > kMaxDepth) return false;
    std::size_t at = offsetOf(index);
    const unsigned marker = byte(at);
    switch (marker >> 4) {
      case 0x0:
        return marker == 0x08 || marker == 0x09;
      case 0x1: {
        const unsigned size = 1u << (marker & 0xF);
        return size <= 8 && at + 1 + size <= table_;
      }
      case 0x5: {
        std::size_t length = 0;
        if (!count(at, length) || length > table_ - at) return false;
        const std::string_view text = bytes_.substr(at, length);
        // Plain ASCII only: libplist has its own ideas about the rest.
        const bool ascii = std::all_of(text.begin(), text.end(), [](char c) {
          const auto code = static_cast<unsigned char>(c);
          return code != 0 && code < 0x80;
        });
        if (!ascii) return false;
        if (string != nullptr) string->assign(text);
        return true;
      }
      case 0xA:
      case 0xD: {
        const bool dictionary = marker >> 4 == 0xD;
        std::size_t items = 0;
        if (!count(at, items)) return false;
        const std::size_t references = dictionary ? 2 * items : items;
        if (references > (table_ - at) / referenceSize_) return false;
        std::string key;
        std::optional<std::string> value;
        bool seen[3] = {false, false, false};
        for (std::size_t i = 0; i < items; ++i) {
          const std::uint64_t valueIndex =
              number(at + (dictionary ? items + i : i) * referenceSize_, referenceSize_);
          if (valueIndex >= objects_) return false;
          std::optional<std::string>* slot = nullptr;
          if (dictionary) {
            const std::uint64_t keyIndex = number(at + i * referenceSize_, referenceSize_);
            if (keyIndex >= objects_ || byte(offsetOf(static_cast<std::size_t>(keyIndex))) >> 4 != 0x5)
              return false;
            if (!object(static_cast<std::size_t>(keyIndex), depth + 1, nullptr,
                        info != nullptr ? &key : nullptr))
              return false;
            if (info != nullptr) {
              const int which = key == "CFBundleDisplayName"  ? 0
                                : key == "CFBundleName"       ? 1
                                : key == "CFBundleIdentifier" ? 2
                                                              : -1;
              if (which >= 0) {
                // Which of two equal keys libplist finds is its own business.
                if (seen[which]) return false;
                seen[which] = true;
                slot = which == 0 ? &info->displayName : which == 1 ? &info->name : &info->identifier;
              }
            }
          }
          const auto valueAt = static_cast<std::size_t>(valueIndex);
          const bool isString = byte(offsetOf(valueAt)) >> 4 == 0x5;
          std::string text;
          if (!object(valueAt, depth + 1, nullptr, slot != nullptr && isString ? &text : nullptr))
            return false;
          // Only non-empty strings count.
          if (slot != nullptr && isString && !text.empty()) *slot = std::move(text);
        }
        return true;
      }
      default:
        return false;
    }
  }

  std::string_view bytes_;
  unsigned offsetSize_ = 0;
  unsigned referenceSize_ = 0;
  std::size_t objects_ = 0;
  std::size_t table_ = 0;
};

struct PlistFree {
  void operator()(plist_t plist) const { plist_free(plist); }
};
using Plist = std::unique_ptr<void, PlistFree>;

std::optional<std::string> nonEmptyString(plist_t dictionary, const char* key) {
  const plist_t node = plist_dict_get_item(dictionary, key);
  if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
  uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  if (text == nullptr || length == 0) return std::nullopt;
  return std::string(text, static_cast<std::size_t>(length));
}

}  // namespace

BundleInfo BundleInfo::read(std::string_view bytes) {
  if (auto info = fromBinary(bytes)) return std::move(*info);
  if (auto info = fromXml(bytes)) return std::move(*info);
  return fromLibplist(bytes);
}

std::optional<BundleInfo> BundleInfo::fromBinary(std::string_view bytes) {
  return PlainBinaryReader(bytes).document();
}

std::optional<BundleInfo> BundleInfo::fromXml(std::string_view bytes) {
  // libplist cuts text at a NUL in places; such files are its own to read.
  // (find rather than memchr: an empty view may have no data pointer at all.)
  if (bytes.find('\0') != std::string_view::npos) return std::nullopt;
  return PlainXmlReader(bytes).document();
}

BundleInfo BundleInfo::fromLibplist(std::string_view bytes) {
  BundleInfo info;
  if (bytes.empty() || bytes.size() > UINT32_MAX) return info;
  const auto length = static_cast<uint32_t>(bytes.size());
  plist_t root = nullptr;
  if (plist_is_binary(bytes.data(), length))
    plist_from_bin(bytes.data(), length, &root);
  else
    plist_from_xml(bytes.data(), length, &root);
  const Plist plist(root);
  if (!plist || plist_get_node_type(plist.get()) != PLIST_DICT) return info;
  info.displayName = nonEmptyString(plist.get(), "CFBundleDisplayName");
  info.name = nonEmptyString(plist.get(), "CFBundleName");
  info.identifier = nonEmptyString(plist.get(), "CFBundleIdentifier");
  return info;
}

}  // namespace orrery::platform
