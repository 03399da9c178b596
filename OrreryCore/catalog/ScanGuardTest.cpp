#include <gtest/gtest.h>

#include <limits>

#include "OrreryCore/catalog/ScanGuard.h"

namespace orrery {
namespace {

TEST(ScanGuard, DiscardsEmptyScansAndTrustsSmallCatalogs) {
  EXPECT_EQ(ScanGuard::decide(0, 0, true), ScanDecision::discard);
  EXPECT_EQ(ScanGuard::decide(0, 500, false), ScanDecision::discard);
  EXPECT_EQ(ScanGuard::decide(1, 19, false), ScanDecision::apply);
  EXPECT_EQ(ScanGuard::decide(1, 0, false), ScanDecision::apply);
}

TEST(ScanGuard, AScanBelowHalfTheBaselineNeedsASecondScan) {
  EXPECT_EQ(ScanGuard::decide(10, 20, false), ScanDecision::apply);  // 20 is not more than 2 × 10
  EXPECT_EQ(ScanGuard::decide(10, 21, false), ScanDecision::needsConfirmation);
  EXPECT_EQ(ScanGuard::decide(10, 21, true), ScanDecision::apply);
  EXPECT_EQ(ScanGuard::decide(1, 1000, true), ScanDecision::apply);
  EXPECT_EQ(ScanGuard::decide(500, 1000, false), ScanDecision::apply);
  EXPECT_EQ(ScanGuard::decide(499, 1000, false), ScanDecision::needsConfirmation);
  EXPECT_EQ(ScanGuard::decide(2000, 1000, false), ScanDecision::apply);

  // Twice the scan is never computed, so huge counts cannot wrap around.
  constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(ScanGuard::decide(most / 2 + 1, most, false), ScanDecision::apply);
  EXPECT_EQ(ScanGuard::decide(most / 2, most, false), ScanDecision::needsConfirmation);
}

}  // namespace
}  // namespace orrery
