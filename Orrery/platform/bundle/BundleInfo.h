// BundleInfo: the Info.plist strings a bundle's record is made of.
//
// libplist builds a tree of every node of a property list, each allocated
// on its own, and its XML reader costs several times more than the rest of
// a bundle's record together. Most Info.plist files are of one plain shape,
// XML or binary, so fromXml() and fromBinary() read that shape themselves,
// without a tree, and give the same strings libplist would; for anything
// outside it (comments, CDATA, character references, UTF-16 strings, other
// value types, unusual prologues) they give nothing and read() asks
// libplist. Tests hold them to libplist's answers.
//
// Thread rules: a value; the functions are pure.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orrery::platform {

struct BundleInfo {
  // The non-empty string values of these keys in the top dictionary, each
  // absent when the key is missing or holds something else.
  std::optional<std::string> displayName;  // CFBundleDisplayName
  std::optional<std::string> name;         // CFBundleName
  std::optional<std::string> identifier;   // CFBundleIdentifier

  friend bool operator==(const BundleInfo&, const BundleInfo&) = default;

  // The strings of an Info.plist, XML or binary. Bytes that are not a
  // property list with a dictionary at the top give no strings.
  static BundleInfo read(std::string_view bytes);

  // The strings of an XML property list in the common shape, or nothing
  // when the bytes are anything else.
  static std::optional<BundleInfo> fromXml(std::string_view bytes);

  // The strings of a binary property list of the common kinds, or nothing
  // when the bytes are anything else.
  static std::optional<BundleInfo> fromBinary(std::string_view bytes);

  // The strings as libplist reads them.
  static BundleInfo fromLibplist(std::string_view bytes);
};

}  // namespace orrery::platform
