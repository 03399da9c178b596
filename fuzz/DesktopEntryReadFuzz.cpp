// Desktop entries read from untrusted bytes. The hand-written reader may
// hand any file over to GLib's key-file parser; a file it reads itself
// must get GLib's answer to every question the scanner asks (group, has,
// string, boolean and list of each key, the translated names included),
// and the program the scanner takes from the Exec line must be the one
// g_shell_parse_argv() finds, whichever parser gave the line.
#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Orrery/platform/posix/QuotedBytes.h"
#include "Orrery/platform/xdg/DesktopEntryComparison.h"
#include "fuzz/FuzzSupport.h"

using orrery::fuzz::fail;
using orrery::platform::compareWithGLib;
using orrery::platform::quotedBytes;

namespace {

// Translations are only kept for the message languages, so the run needs
// a few, with a region and an encoding, before GLib first looks them up.
bool setLanguages() {
  setenv("LANGUAGE", "de_CH.UTF-8:fr", 1);
  setenv("LC_ALL", "", 1);
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  [[maybe_unused]] static const bool languagesSet = setLanguages();
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto comparison = compareWithGLib(bytes);
  if (comparison.differences.empty()) return 0;
  std::string message = "the desktop-entry reader answers otherwise than GLib on " + quotedBytes(bytes);
  for (const std::string& difference : comparison.differences) message += "\n  " + difference;
  fail(message);
}
