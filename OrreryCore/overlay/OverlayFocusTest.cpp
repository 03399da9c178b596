#include <gtest/gtest.h>

#include <vector>

#include "OrreryCore/overlay/OverlayFocus.h"

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

TEST(OverlayFocus, RulesOverEverySituation) {
  for (const OverlayFocus& focus : everySituation()) {
    if (!focus.isVisible || !focus.takesFocus) {
      EXPECT_FALSE(focus.shouldReclaimKey());
      EXPECT_FALSE(focus.needsEscapeFallback());
      continue;
    }
    const bool panelHasKeys = focus.keyOwner == KeyOwner::panel || focus.keyOwner == KeyOwner::panelSheet;
    // Nothing to reclaim while the panel or its sheet has the keyboard, and
    // never from another active application.
    if (panelHasKeys || !focus.appActive) {
      EXPECT_FALSE(focus.shouldReclaimKey());
    }
    // Esc must be caught globally over another active application, even when
    // the user yielded the keyboard.
    if (!focus.appActive) {
      EXPECT_TRUE(focus.needsEscapeFallback());
    }
    if (panelHasKeys && focus.appActive) {
      EXPECT_FALSE(focus.needsEscapeFallback());
    }
    // Until a reclaim has run, Esc must still work.
    if (focus.shouldReclaimKey()) {
      EXPECT_TRUE(focus.needsEscapeFallback());
    }
  }
}

TEST(OverlayFocus, YieldingLeavesTheOtherWindowAlone) {
  EXPECT_FALSE((OverlayFocus{true, true, true, KeyOwner::otherWindow, true}.shouldReclaimKey()));
  EXPECT_FALSE((OverlayFocus{true, true, true, KeyOwner::otherWindow, true}.needsEscapeFallback()));
  for (const KeyOwner owner : {KeyOwner::none, KeyOwner::otherWindow}) {
    const OverlayFocus lost{true, true, true, owner, false};
    EXPECT_TRUE(lost.shouldReclaimKey());
    EXPECT_TRUE(lost.needsEscapeFallback());
  }
}

}  // namespace
}  // namespace orrery
