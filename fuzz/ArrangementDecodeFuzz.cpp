// The arrangement file read from untrusted bytes: whatever is accepted must
// survive writing and reading again unchanged, byte for byte on the second
// write, and survive its JSON tree, the form records embed it in.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "OrreryCore/arrangement/Layout.h"
#include "fuzz/FuzzSupport.h"

using orrery::Layout;
using orrery::fuzz::fail;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto decoded = Layout::decode(bytes);
  if (!decoded) return 0;

  const std::string written = decoded->encoded();
  const auto reread = Layout::decode(written);
  if (!reread)
    fail("an accepted arrangement does not decode after encoding: " + reread.error().description());
  if (*reread != *decoded) fail("the arrangement changed through encoding", {&*decoded, &*reread});
  if (reread->encoded() != written) fail("encoding the same arrangement twice gave different bytes");

  const auto fromTree = Layout::fromJson(decoded->toJson());
  if (!fromTree || *fromTree != *decoded) fail("the arrangement does not survive its JSON tree");
  return 0;
}
