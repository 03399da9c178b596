// Three machines edit their own copies of the arrangement and exchange
// snapshots through one shared record, in random order, following
// SyncPlan::incoming exactly as the engine does. Once the edits stop and
// every machine has synced, all hold the shared arrangement, and no app is
// gone that no machine removed.
#include <gtest/gtest.h>

#include <array>

#include "OrreryCore/sync/SyncPlan.h"
#include "OrreryCore/testing/LayoutBuilders.h"
#include "OrreryCore/testing/RandomLayout.h"

namespace orrery {
namespace {

using testing::describe;

struct Machine {
  Uuid id = Uuid::random();
  Layout layout;
  SyncedSettings settings;
  std::optional<SharedSnapshot> base;
  Date localModified;

  SharedSnapshot snapshot() const {
    return SharedSnapshot{SharedSnapshot::currentFormat, layout, settings, localModified, id};
  }
};

struct World {
  std::array<Machine, 3> machines;
  std::optional<SharedSnapshot> shared;
  Date now = dateFromReferenceSeconds(800'000'000);
  AppIDSet everSeen;
  AppIDSet removedBySomeone;

  void edit(Machine& machine, testing::Random& random, const std::vector<std::string>& universe) {
    now += std::chrono::seconds(1);
    machine.localModified = now;
    if (std::bernoulli_distribution(0.15)(random)) {
      machine.settings.corner = allCorners[random() % allCorners.size()];
      return;
    }
    const AppIDSet before = machine.layout.referencedAppIDs();
    testing::applyRandomOperation(machine.layout, random, universe);
    const AppIDSet after = machine.layout.referencedAppIDs();
    for (const auto& id : before)
      if (!after.contains(id)) removedBySomeone.insert(id);
    everSeen.insert(after.begin(), after.end());
  }

  // One exchange with the shared record; true when it uploaded.
  bool sync(Machine& machine) {
    now += std::chrono::seconds(1);
    const SyncPlan::Incoming decision = SyncPlan::incoming(machine.base, machine.snapshot(), *shared, true);
    EXPECT_EQ(decision.kind(), SyncPlan::Incoming::Kind::merge) << "every machine has a base";
    const SharedSnapshot& result = decision.snapshot();
    machine.layout = result.layout;
    machine.settings = result.settings;
    machine.localModified = result.modified;
    if (decision.sendBack()) {
      EXPECT_TRUE(SyncPlan::maySendShared(machine.base, SyncPlan::RemoteShared::readable));
      shared = result;
      shared->writer = machine.id;
    }
    machine.base = shared;
    return decision.sendBack();
  }
};

TEST(SyncConvergence, ThreeMachinesEndWithTheSameArrangementAndLoseNothing) {
  const auto universe = testing::appUniverse(30);
  for (std::uint64_t seed = 0; seed < 300; ++seed) {
    testing::Random random(seed);
    World world;
    const Layout initial = testing::randomLayout(random, universe);
    world.shared =
        SharedSnapshot{SharedSnapshot::currentFormat, initial, {}, world.now, world.machines[0].id};
    for (Machine& machine : world.machines) {
      machine.layout = initial;
      machine.base = world.shared;
      machine.localModified = world.now;
    }
    const AppIDSet initialApps = initial.referencedAppIDs();
    world.everSeen = initialApps;

    // Edits and exchanges interleaved at random.
    for (int step = 0; step < 80; ++step) {
      Machine& machine = world.machines[random() % 3];
      if (std::bernoulli_distribution(0.6)(random)) {
        world.edit(machine, random, universe);
      } else {
        world.sync(machine);
      }
    }

    // No more edits: exchanges in random order until every machine has synced
    // since the last upload.
    std::array<bool, 3> current{};
    int exchanges = 0;
    while (!(current[0] && current[1] && current[2])) {
      ASSERT_LT(++exchanges, 500) << "seed " << seed << ": no convergence";
      const std::size_t pick = random() % 3;
      if (world.sync(world.machines[pick])) current = {};
      current[pick] = true;
    }

    SCOPED_TRACE("seed " + std::to_string(seed) + ", shared: " + describe(world.shared->layout));
    for (const Machine& machine : world.machines) {
      ASSERT_EQ(machine.layout, world.shared->layout) << describe(machine.layout);
      ASSERT_EQ(machine.settings, world.shared->settings);
    }
    const AppIDSet final = world.shared->layout.referencedAppIDs();
    for (const auto& id : world.everSeen) {
      if (!world.removedBySomeone.contains(id)) {
        ASSERT_TRUE(final.contains(id)) << id << " was lost";
      }
    }
    for (const auto& id : final) ASSERT_TRUE(world.everSeen.contains(id)) << id << " came from nowhere";
    for (const auto& [id, count] : testing::appOccurrences(world.shared->layout)) ASSERT_EQ(count, 1) << id;
  }
}

}  // namespace
}  // namespace orrery
