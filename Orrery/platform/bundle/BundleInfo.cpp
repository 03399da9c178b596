#include "platform/bundle/BundleInfo.h"

#include <cstdint>
#include <cstring>
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
  if (auto info = fromXml(bytes)) return std::move(*info);
  return fromLibplist(bytes);
}

std::optional<BundleInfo> BundleInfo::fromXml(std::string_view bytes) {
  // libplist cuts text at a NUL in places; such files are its own to read.
  if (std::memchr(bytes.data(), '\0', bytes.size()) != nullptr) return std::nullopt;
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
