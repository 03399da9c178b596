#include <gtest/gtest.h>

#include <vector>

#include "overlay/OverlayFocus.h"

namespace orrery {
namespace {

std::vector<OverlayFocus> everySituation() {
  std::vector<OverlayFocus> all;
  for (const bool visible : {false, true})
    for (const bool takesFocus : {false, true})
      for (const bool active : {false, true})
        for (const KeyOwner owner :
             {KeyOwner::none, KeyOwner::panel, KeyOwner::panelSheet, KeyOwner::otherWindow})
          for (const bool yielded : {false, true})
            all.push_back({visible, takesFocus, active, owner, yielded});
  return all;
}

TEST(OverlayFocus, NothingHappensWhileHiddenOrNotWantingTheKeyboard) {
  for (const OverlayFocus& focus : everySituation()) {
    if (focus.isVisible && focus.takesFocus) continue;
    EXPECT_FALSE(focus.shouldReclaimKey());
    EXPECT_FALSE(focus.needsEscapeFallback());
  }
}

TEST(OverlayFocus, APanelThatOwnsTheKeyboardIsNeverReclaimedFor) {
  for (const OverlayFocus& focus : everySituation()) {
    if (focus.keyOwner != KeyOwner::panel && focus.keyOwner != KeyOwner::panelSheet) continue;
    EXPECT_FALSE(focus.shouldReclaimKey());
    // With the panel key and us active, Esc reaches the panel itself.
    if (focus.appActive) {
      EXPECT_FALSE(focus.needsEscapeFallback());
    }
  }
}

TEST(OverlayFocus, AnotherActiveAppNeedsTheFallbackEvenWhenYielded) {
  for (const OverlayFocus& focus : everySituation()) {
    if (!focus.isVisible || !focus.takesFocus || focus.appActive) continue;
    EXPECT_TRUE(focus.needsEscapeFallback());
    EXPECT_FALSE(focus.shouldReclaimKey());  // never steal the keyboard from another app
  }
}

TEST(OverlayFocus, YieldingLeavesTheOtherWindowAlone) {
  const OverlayFocus yielded{true, true, true, KeyOwner::otherWindow, true};
  EXPECT_FALSE(yielded.shouldReclaimKey());
  EXPECT_FALSE(yielded.needsEscapeFallback());

  for (const KeyOwner owner : {KeyOwner::none, KeyOwner::otherWindow}) {
    const OverlayFocus lost{true, true, true, owner, false};
    EXPECT_TRUE(lost.shouldReclaimKey());
    EXPECT_TRUE(lost.needsEscapeFallback());
  }
}

TEST(OverlayFocus, ReclaimingAlwaysComesWithTheFallback) {
  // Until the reclaim has run, Esc must still work.
  for (const OverlayFocus& focus : everySituation())
    if (focus.shouldReclaimKey()) {
      EXPECT_TRUE(focus.needsEscapeFallback());
    }
}

}  // namespace
}  // namespace orrery
