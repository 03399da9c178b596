// The shared record from the cloud: bytes written by any machine, any version.
// A readable snapshot must encode and decode back to itself; the strict shape
// reading (which ignores the format number) must survive its JSON tree too.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "OrreryCore/sync/SharedSnapshot.h"
#include "fuzz/FuzzSupport.h"

using orrery::SharedSnapshot;
using orrery::fuzz::fail;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto decoded = SharedSnapshot::decode(bytes);
  if (decoded) {
    if (decoded->format > SharedSnapshot::currentFormat) fail("a snapshot of a newer format was accepted");
    const std::string written = decoded->encoded();
    const auto reread = SharedSnapshot::decode(written);
    if (!reread) fail("a snapshot does not decode after encoding: " + written);
    if (!(*reread == *decoded)) fail("the snapshot changed through encoding: " + written);
    if (reread->encoded() != written) fail("encoding the same snapshot twice gave different bytes");
  }

  const auto tree = nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr, /*allow_exceptions=*/false);
  if (tree.is_discarded()) return 0;
  const auto shaped = SharedSnapshot::fromJson(tree);
  if (decoded && !shaped) fail("a readable snapshot fails the strict shape");
  if (shaped) {
    const auto back = SharedSnapshot::fromJson(shaped->toJson());
    if (!back || !(*back == *shaped)) fail("a snapshot does not survive its JSON tree");
  }
  return 0;
}
