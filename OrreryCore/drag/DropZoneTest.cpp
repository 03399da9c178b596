#include <gtest/gtest.h>

#include "OrreryCore/drag/DropZone.h"

namespace orrery {
namespace {

// A cell away from the origin, so a rule that forgets the tile's position
// shows up. Its middle ninth is x in [130, 160), y in [220, 240).
const Rect kTile{{100, 200}, {90, 60}};

TEST(DropZone, MiddleNinthMergesAsAHalfOpenRectangle) {
  EXPECT_EQ(classifyDropZone({145, 230}, kTile), DropZone::merge);
  EXPECT_EQ(classifyDropZone({130, 220}, kTile), DropZone::merge);
  EXPECT_EQ(classifyDropZone({159.9, 239.9}, kTile), DropZone::merge);
  // The far edges of the centre belong to the outer zones.
  EXPECT_EQ(classifyDropZone({160, 230}, kTile), DropZone::after);
  EXPECT_EQ(classifyDropZone({140, 240}, kTile), DropZone::before);
  EXPECT_EQ(classifyDropZone({129.9, 230}, kTile), DropZone::before);
}

TEST(DropZone, OutsideTheCentreSplitsAtTheHorizontalMiddle) {
  EXPECT_EQ(classifyDropZone({101, 201}, kTile), DropZone::before);
  EXPECT_EQ(classifyDropZone({144.9, 205}, kTile), DropZone::before);
  EXPECT_EQ(classifyDropZone({145, 205}, kTile), DropZone::after);  // the middle itself is after
  EXPECT_EQ(classifyDropZone({189, 259}, kTile), DropZone::after);
  // A pointer just outside the tile still gets a side.
  EXPECT_EQ(classifyDropZone({95, 230}, kTile), DropZone::before);
  EXPECT_EQ(classifyDropZone({195, 230}, kTile), DropZone::after);
}

}  // namespace
}  // namespace orrery
