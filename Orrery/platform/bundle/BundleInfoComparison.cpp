#include "Orrery/platform/bundle/BundleInfoComparison.h"

#include <optional>

#include "Orrery/platform/bundle/BundleInfo.h"
#include "Orrery/platform/posix/QuotedBytes.h"

namespace orrery::platform {

namespace {

std::string shown(const std::optional<std::string>& value) {
  return value ? quotedBytes(*value) : std::string("nothing");
}

void compare(const std::string& reader, const BundleInfo& here, const BundleInfo& libplist,
             std::vector<std::string>& differences) {
  const auto one = [&](const char* key, const std::optional<std::string>& mine,
                       const std::optional<std::string>& theirs) {
    if (mine != theirs)
      differences.push_back(reader + " " + key + ": " + shown(mine) + " here, " + shown(theirs) +
                            " from libplist");
  };
  one("CFBundleDisplayName", here.displayName, libplist.displayName);
  one("CFBundleName", here.name, libplist.name);
  one("CFBundleIdentifier", here.identifier, libplist.identifier);
}

}  // namespace

BundleInfoComparison compareWithLibplist(std::string_view bytes) {
  BundleInfoComparison result;
  const std::optional<BundleInfo> binary = BundleInfo::fromBinary(bytes);
  const std::optional<BundleInfo> xml = BundleInfo::fromXml(bytes);
  result.settled = binary || xml;
  if (!result.settled) return result;
  const BundleInfo expected = BundleInfo::fromLibplist(bytes);
  if (binary) compare("fromBinary", *binary, expected, result.differences);
  if (xml) compare("fromXml", *xml, expected, result.differences);
  return result;
}

}  // namespace orrery::platform
