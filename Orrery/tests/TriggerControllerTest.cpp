// The shortcut and the trigger settings over a fake grab service: what is
// registered when, what survives a failure, what the status tells, and
// the Esc fallback over the same grabs.
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <vector>

#include "Orrery/tests/ManualClock.h"
#include "Orrery/triggers/TriggerController.h"

namespace orrery::app {
namespace {

using testing::ManualClock;

const HotKey kOptionSpace{49, HotKey::kOption};
const HotKey kCommandO{31, HotKey::kCommand};
const HotKey kControlK{40, HotKey::kControl};

struct Ledger {
  std::vector<HotKey> grabbed;  // every grab asked for, in order
  std::map<KeyGrabService::GrabId, HotKey> held;
  std::vector<std::pair<HotKey, KeyGrabService::Outcome>> refused;
  int watchCalls = 0;
};

class FakeGrabs final : public KeyGrabService {
 public:
  explicit FakeGrabs(Ledger& ledger) : ledger_(ledger) {}
  Result grab(const HotKey& key) override {
    ledger_.grabbed.push_back(key);
    for (const auto& [refusedKey, outcome] : ledger_.refused)
      if (refusedKey == key) return {outcome, 0, outcome == Outcome::taken ? 10 : 2};
    const GrabId id = next_++;
    ledger_.held[id] = key;
    return {Outcome::grabbed, id, 0};
  }
  void release(GrabId id) override { ledger_.held.erase(id); }
  // A press on the keyboard: reaches whoever holds the combination.
  void press(const HotKey& key) const {
    for (const auto& [id, held] : ledger_.held)
      if (held == key) pressed(id);
  }

 private:
  Ledger& ledger_;
  GrabId next_ = 1;
};

class IdlePointer final : public GlobalPointer {
 public:
  explicit IdlePointer(Ledger& ledger) : ledger_(ledger) {}
  void watchMotion(std::function<void()>) override { ++ledger_.watchCalls; }
  Point position() override { return {500, 500}; }
  std::vector<Rect> screens() override { return {Rect{{0, 0}, {1440, 900}}}; }
  std::uint64_t modifierFlags() override { return 0; }
  std::uint32_t buttons() override { return 0; }

 private:
  Ledger& ledger_;
};

class TriggerControllerTest : public ::testing::Test {
 protected:
  std::unique_ptr<TriggerController> make(bool withPointer = true, bool withGrabs = true) {
    TriggerController::Platform platform;
    if (withPointer) platform.pointer = std::make_unique<IdlePointer>(ledger);
    if (withGrabs) {
      auto fake = std::make_unique<FakeGrabs>(ledger);
      this->grabs = fake.get();
      platform.grabs = std::move(fake);
    }
    platform.systemUsesCorner = [](Corner corner) { return corner == Corner::topLeft; };
    platform.systemCornerWarning = QStringLiteral("the desktop uses it");
    return std::make_unique<TriggerController>(
        clock, std::move(platform), [this](TriggerSource source) { triggered.push_back(source); },
        [this] { return stored; });
  }

  ManualClock clock;
  Ledger ledger;
  FakeGrabs* grabs = nullptr;
  std::vector<TriggerSource> triggered;
  TriggerSettings stored;
};

TEST_F(TriggerControllerTest, AFailedShortcutKeepsTheOldOneWorkingAndSaysWhy) {
  auto triggers = make();
  ASSERT_TRUE(triggers->applyHotKey(kOptionSpace));
  ASSERT_TRUE(triggers->applyHotKey(kOptionSpace));
  EXPECT_EQ(ledger.grabbed.size(), 1U) << "the same combination again is a no-op";
  EXPECT_EQ(ledger.held.size(), 1U);

  ledger.refused.emplace_back(kCommandO, KeyGrabService::Outcome::taken);
  EXPECT_FALSE(triggers->applyHotKey(kCommandO));
  EXPECT_EQ(triggers->status().hotKeyError(),
            QStringLiteral("This shortcut is already used by another app."));
  EXPECT_EQ(triggers->hotKey()->currentKey(), kOptionSpace);
  grabs->press(kOptionSpace);
  EXPECT_EQ(triggered, std::vector{TriggerSource::hotKey}) << "the old shortcut still works";

  ledger.refused.emplace_back(kControlK, KeyGrabService::Outcome::failed);
  EXPECT_FALSE(triggers->applyHotKey(kControlK));
  EXPECT_EQ(triggers->status().hotKeyError(), QStringLiteral("Couldn't register the shortcut."));

  // Only a success clears the message; the new key then replaces the old.
  ASSERT_TRUE(triggers->applyHotKey(HotKey{0, HotKey::kControl | HotKey::kShift}));
  EXPECT_TRUE(triggers->status().hotKeyError().isEmpty());
  ASSERT_EQ(ledger.held.size(), 1U);
  EXPECT_EQ(ledger.held.begin()->second, (HotKey{0, HotKey::kControl | HotKey::kShift}));

  EXPECT_TRUE(triggers->applyHotKey(std::nullopt));
  EXPECT_TRUE(ledger.held.empty());
}

TEST_F(TriggerControllerTest, AppliesOnlyWhatChanged) {
  auto triggers = make();
  triggers->applyTriggers({Corner::bottomRight, CornerModifier::none, kOptionSpace});
  ASSERT_EQ(ledger.grabbed.size(), 1U);
  ASSERT_EQ(ledger.watchCalls, 1);

  triggers->applyTriggers({Corner::bottomLeft, CornerModifier::shift, kOptionSpace});
  EXPECT_EQ(ledger.grabbed.size(), 1U) << "a new corner leaves the shortcut alone";
  EXPECT_EQ(triggers->hotCorner()->detector().corner, Corner::bottomLeft);
  EXPECT_EQ(triggers->hotCorner()->detector().modifier, CornerModifier::shift);

  triggers->applyTriggers({Corner::bottomLeft, CornerModifier::shift, kCommandO});
  EXPECT_EQ(ledger.grabbed.size(), 2U);
  EXPECT_EQ(ledger.watchCalls, 1) << "a new shortcut leaves the corner alone";

  // The status follows the corner the desktop itself uses.
  QSignalSpy changed(&triggers->status(), &TriggerStatus::changed);
  triggers->applyTriggers({Corner::topLeft, CornerModifier::shift, kCommandO});
  EXPECT_EQ(triggers->status().systemCornerWarning(), QStringLiteral("the desktop uses it"));
  triggers->applyTriggers({Corner::topRight, CornerModifier::shift, kCommandO});
  EXPECT_TRUE(triggers->status().systemCornerWarning().isEmpty());
  EXPECT_EQ(changed.count(), 2);
}

TEST_F(TriggerControllerTest, RecordingSuspendsTheShortcutAndEndingRestoresIt) {
  auto triggers = make();
  stored = {Corner::none, CornerModifier::none, kOptionSpace};
  triggers->applyTriggers(stored);

  triggers->setHotKeySuspended(true);
  EXPECT_EQ(triggers->keyBeforeSuspend(), kOptionSpace);
  EXPECT_TRUE(ledger.held.empty());
  grabs->press(kOptionSpace);
  EXPECT_TRUE(triggered.empty()) << "the old shortcut reaches the recorder, not the overlay";
  // A settings change while recording waits for the end of it.
  triggers->applyTriggers({Corner::none, CornerModifier::none, kControlK});
  EXPECT_TRUE(ledger.held.empty());

  // Cancelled: the stored settings come back.
  triggers->setHotKeySuspended(false);
  ASSERT_EQ(ledger.held.size(), 1U);
  EXPECT_EQ(ledger.held.begin()->second, kOptionSpace);

  // Recorded: the new shortcut is in force at once.
  triggers->setHotKeySuspended(true);
  triggers->setHotKeySuspended(false, TriggerSettings{Corner::none, CornerModifier::none, kCommandO});
  ASSERT_EQ(ledger.held.size(), 1U);
  EXPECT_EQ(ledger.held.begin()->second, kCommandO);
  grabs->press(kCommandO);
  EXPECT_EQ(triggered.size(), 1U);
}

TEST_F(TriggerControllerTest, TheEscapeFallbackHoldsBareEscOnlyWhileActive) {
  auto triggers = make();
  triggers->applyHotKey(kOptionSpace);
  EscapeKeyGrab& escape = triggers->escapeFallback();
  QSignalSpy pressed(&escape, &EscapeKeyGrab::escapePressed);
  const HotKey bareEscape{53, 0};

  grabs->press(bareEscape);
  EXPECT_EQ(pressed.count(), 0);
  ASSERT_TRUE(escape.grab(true));
  EXPECT_TRUE(escape.isActive());
  grabs->press(bareEscape);
  EXPECT_EQ(pressed.count(), 1);
  EXPECT_TRUE(triggered.empty()) << "Esc is not the shortcut";
  grabs->press(kOptionSpace);
  EXPECT_EQ(triggered.size(), 1U) << "and the shortcut is not Esc";

  ASSERT_TRUE(escape.grab(false));
  EXPECT_EQ(ledger.held.size(), 1U);
  grabs->press(bareEscape);
  EXPECT_EQ(pressed.count(), 1);
}

TEST_F(TriggerControllerTest, WithoutPointerOrGrabsTheStatusSaysWhatToDoInstead) {
  auto triggers = make(false, false);
  EXPECT_FALSE(triggers->status().hotCornerAvailable());
  EXPECT_FALSE(triggers->status().hotCornerNote().isEmpty());
  EXPECT_TRUE(triggers->status().shortcutNote().contains(QStringLiteral("orrery --toggle")));
  EXPECT_FALSE(triggers->applyHotKey(kOptionSpace));
  triggers->applyTriggers({Corner::topLeft, CornerModifier::none, kOptionSpace});
  EXPECT_FALSE(triggers->escapeFallback().grab(true));

  auto x11 = make(true, true);
  EXPECT_TRUE(x11->status().hotCornerAvailable());
  EXPECT_TRUE(x11->status().hotCornerNote().isEmpty());
  EXPECT_TRUE(x11->status().shortcutNote().isEmpty());
}

}  // namespace
}  // namespace orrery::app
