// Info.plist files read from untrusted bytes, XML or binary. The
// hand-written readers may hand any file over to libplist; a file one of
// them reads itself must give libplist's strings for CFBundleDisplayName,
// CFBundleName and CFBundleIdentifier.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Orrery/platform/bundle/BundleInfoComparison.h"
#include "Orrery/platform/posix/QuotedBytes.h"
#include "fuzz/FuzzSupport.h"

using orrery::fuzz::fail;
using orrery::platform::compareWithLibplist;
using orrery::platform::quotedBytes;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto comparison = compareWithLibplist(bytes);
  if (comparison.differences.empty()) return 0;
  std::string message = "the Info.plist reader answers otherwise than libplist on " + quotedBytes(bytes);
  for (const std::string& difference : comparison.differences) message += "\n  " + difference;
  fail(message);
}
