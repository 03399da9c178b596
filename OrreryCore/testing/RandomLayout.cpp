#include "OrreryCore/testing/RandomLayout.h"

#include <cstdio>

#include "OrreryCore/testing/LayoutChoices.h"

namespace orrery::testing {

namespace {

// Choices drawn from the engine, one byte per draw.
class EngineChoices final : public Choices {
 public:
  explicit EngineChoices(Random& random) : random_(random) {}
  std::uint8_t byte() override { return static_cast<std::uint8_t>(random_()); }

 private:
  Random& random_;
};

}  // namespace

std::vector<std::string> appUniverse(std::size_t count) {
  std::vector<std::string> ids;
  ids.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "app%03zu", i);
    ids.emplace_back(buffer);
  }
  return ids;
}

AppIDSet randomSubset(Random& random, const std::vector<std::string>& universe, double p) {
  AppIDSet subset;
  for (const auto& id : universe)
    if (std::bernoulli_distribution(p)(random)) subset.insert(id);
  return subset;
}

Layout randomLayout(Random& random, const std::vector<std::string>& universe) {
  EngineChoices choices(random);
  return consistentLayout(choices, universe);
}

std::string applyRandomOperation(Layout& layout, Random& random, const std::vector<std::string>& universe,
                                 bool includeScans) {
  EngineChoices choices(random);
  return applyOperation(layout, choices, universe, includeScans);
}

}  // namespace orrery::testing
