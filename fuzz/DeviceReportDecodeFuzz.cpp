// Another machine's report of its installed apps, read from the cloud. An
// accepted report must encode and decode back to itself, in the same bytes.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "OrreryCore/sync/DeviceReport.h"
#include "fuzz/FuzzSupport.h"

using orrery::DeviceReport;
using orrery::fuzz::fail;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto decoded = DeviceReport::decode(bytes);
  if (!decoded) return 0;
  const std::string written = decoded->encoded();
  const auto reread = DeviceReport::decode(written);
  if (!reread) fail("a device report does not decode after encoding: " + reread.error().description());
  if (!(*reread == *decoded)) fail("the device report changed through encoding: " + written);
  if (reread->encoded() != written) fail("encoding the same report twice gave different bytes");
  return 0;
}
