#include "OrreryCore/catalog/ScanGuard.h"

namespace orrery {

ScanDecision ScanGuard::decide(std::size_t scanned, std::size_t baseline, bool confirming) {
  if (scanned == 0) return ScanDecision::discard;
  if (baseline < minimumBaseline) return ScanDecision::apply;
  // baseline > 2 × scanned, written so that it cannot overflow.
  const bool lessThanHalf = baseline > scanned && baseline - scanned > scanned;
  if (lessThanHalf && !confirming) return ScanDecision::needsConfirmation;
  return ScanDecision::apply;
}

}  // namespace orrery
