// The arrangement file and the arrangement inside shared records, read from
// untrusted bytes. The file goes through the streaming decoder, records
// through the JSON tree: both must accept and reject the same documents and
// agree on the value, and whatever is accepted must survive writing and
// reading again unchanged, byte for byte on the second write.
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
  const auto streamed = Layout::decode(bytes);
  const auto tree = nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr, /*allow_exceptions=*/false);
  const auto viaTree = tree.is_discarded() ? std::optional<Layout>() : [&]() -> std::optional<Layout> {
    auto decoded = Layout::fromJson(tree);
    if (!decoded) return std::nullopt;
    return std::move(*decoded);
  }();
  if (streamed.has_value() != viaTree.has_value())
    fail(streamed ? "the streaming decoder accepts what the tree decoder rejects"
                  : "the tree decoder accepts what the streaming decoder rejects: " +
                        streamed.error().description());
  if (!streamed) return 0;
  if (*streamed != *viaTree) fail("the two decoders disagree on the value", {&*streamed, &*viaTree});

  const std::string written = streamed->encoded();
  const auto reread = Layout::decode(written);
  if (!reread)
    fail("an accepted arrangement does not decode after encoding: " + reread.error().description());
  if (*reread != *streamed) fail("the arrangement changed through encoding", {&*streamed, &*reread});
  if (reread->encoded() != written) fail("encoding the same arrangement twice gave different bytes");

  const auto fromTree = Layout::fromJson(streamed->toJson());
  if (!fromTree || *fromTree != *streamed) fail("the arrangement does not survive its JSON tree");
  return 0;
}
