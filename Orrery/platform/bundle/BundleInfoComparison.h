// BundleInfoComparison: holds BundleInfo's own readers to libplist on one
// Info.plist.
//
// Either reader may leave the bytes to libplist; whatever one of them reads
// itself must give libplist's strings for every key a bundle's record is
// made of. Used by the readers' tests and by their fuzz target.
//
// Thread rules: a pure function.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orrery::platform {

struct BundleInfoComparison {
  // Whether fromXml() or fromBinary() read the bytes rather than leaving
  // them to libplist.
  bool settled = false;
  // One readable line per string that differs from libplist's.
  std::vector<std::string> differences;
};

BundleInfoComparison compareWithLibplist(std::string_view bytes);

}  // namespace orrery::platform
