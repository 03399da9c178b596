// This machine's sync bookkeeping file, read from untrusted bytes (it may be
// damaged or come from another version). An accepted record must encode and
// decode back to itself, the embedded base snapshot included.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "OrreryCore/sync/SyncState.h"
#include "fuzz/FuzzSupport.h"

using orrery::SyncState;
using orrery::fuzz::fail;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto decoded = SyncState::decode(bytes);
  if (!decoded) return 0;
  const std::string written = decoded->encoded();
  const auto reread = SyncState::decode(written);
  if (!reread) fail("a sync state does not decode after encoding: " + reread.error().description());
  if (!(*reread == *decoded)) fail("the sync state changed through encoding: " + written);
  if (reread->encoded() != written) fail("encoding the same sync state twice gave different bytes");
  if (decoded->engineState) {
    const auto back = orrery::decodeBase64(orrery::encodeBase64(*decoded->engineState));
    if (!back || *back != *decoded->engineState) fail("engine data does not survive base64");
  }
  return 0;
}
