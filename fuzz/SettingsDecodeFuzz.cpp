// The settings record as stored: untrusted bytes, since the store may hold a
// record from another version or a damaged one. An accepted record (already
// clamped to its ranges) must encode and decode back to itself.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "OrreryCore/settings/Settings.h"
#include "OrreryCore/sync/SyncedSettings.h"
#include "fuzz/FuzzSupport.h"

using orrery::Settings;
using orrery::SyncedSettings;
using orrery::fuzz::fail;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto decoded = Settings::decode(bytes);
  if (decoded) {
    const auto written = decoded->encoded();
    if (!written) fail("a decoded settings record cannot be encoded");
    const auto reread = Settings::decode(*written);
    if (!reread) fail("a settings record does not decode after encoding: " + reread.error().description());
    if (*reread != *decoded) fail("the settings record changed through encoding: " + *written);
    if (reread->encoded() != written) fail("encoding the same settings twice gave different bytes");
    // The shared part, as it travels inside the snapshot.
    const SyncedSettings shared = decoded->synced();
    const auto sharedBack = SyncedSettings::fromJson(shared.toJson());
    if (!sharedBack || !(*sharedBack == shared)) fail("the shared settings do not survive their JSON form");
    if (!(decoded->applying(shared) == *decoded)) fail("applying a record's own shared part changed it");
  }

  // The synced part is read by its own strict rules from the same bytes.
  const auto tree = nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr, /*allow_exceptions=*/false);
  if (tree.is_discarded()) return 0;
  const auto shared = SyncedSettings::fromJson(tree);
  if (shared) {
    const auto back = SyncedSettings::fromJson(shared->toJson());
    if (!back || !(*back == *shared)) fail("accepted shared settings do not survive their JSON form");
  }
  return 0;
}
