#include "fuzz/FuzzSupport.h"

#include <cstdio>
#include <cstdlib>

namespace orrery::fuzz {

void fail(std::string_view what, const std::vector<const Layout*>& layouts) {
  std::fprintf(stderr, "property failed: %.*s\n", static_cast<int>(what.size()), what.data());
  for (const Layout* layout : layouts) std::fprintf(stderr, "  %s\n", shape(*layout).c_str());
  std::fflush(stderr);
  std::abort();
}

const std::vector<std::string>& universe() {
  static const std::vector<std::string> ids = [] {
    std::vector<std::string> made;
    for (int i = 0; i < 16; ++i) made.push_back(std::string("app") + char('0' + i / 10) + char('0' + i % 10));
    return made;
  }();
  return ids;
}

void requireEveryAppOnce(const Layout& layout, std::string_view context,
                         const std::vector<const Layout*>& inputs) {
  for (const auto& [id, count] : occurrences(layout)) {
    if (count != 1) {
      std::vector<const Layout*> shown = inputs;
      shown.push_back(&layout);
      fail(std::string(context) + ": " + id + " has " + std::to_string(count) + " places", shown);
    }
  }
}

}  // namespace orrery::fuzz
