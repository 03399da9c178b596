// Edits of the arrangement chosen by the input: every operation, with valid
// and invalid arguments, in any order. From a consistent arrangement every
// app keeps exactly one place and folders keep two or more apps; no edit
// other than a scan brings in an app that was not there (hide() may name
// any app). After every edit the arrangement survives its file form. From a
// damaged arrangement (duplicates, one-app folders) nothing is promised but
// that nothing crashes and the result can still be written and read.
#include <cstddef>
#include <cstdint>
#include <string>

#include "OrreryCore/arrangement/Layout.h"
#include "fuzz/FuzzSupport.h"

using namespace orrery;
using namespace orrery::fuzz;

namespace {

void requireRoundTrip(const Layout& layout, const std::string& context) {
  const std::string written = layout.encoded();
  const auto reread = Layout::decode(written);
  if (!reread || *reread != layout) fail("the arrangement does not survive its file form after " + context);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const bool damaged = input.below(8) == 0;
  Layout layout = damaged ? arbitraryLayout(input) : consistentLayout(input);
  for (int step = 0; step < 64 && !input.exhausted(); ++step) {
    const Layout before = layout;
    const std::string operation = applyOperation(layout, input, universe(), /*includeScans=*/true);
    const std::string context = operation + " at step " + std::to_string(step);
    requireRoundTrip(layout, context);
    if (damaged) continue;

    requireEveryAppOnce(layout, context, {&before});
    for (const auto& item : layout.items)
      if (const Folder* folder = item.asFolder(); folder && folder->appIDs.size() < 2)
        fail("a folder of fewer than two apps after " + context, {&before, &layout});
    if (operation.rfind("reconciled", 0) != 0) {
      const AppIDSet known = before.referencedAppIDs();
      for (const auto& [id, count] : occurrences(layout))
        if (!known.contains(id) && !layout.hidden.contains(id))
          fail(id + " appeared after " + context, {&before, &layout});
    }
  }
  return 0;
}
