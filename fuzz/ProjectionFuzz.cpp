// One machine's view of a shared arrangement and the way its edits fold back.
// Unedited, the view folds back to exactly the shared arrangement. After
// edits of the view, the result holds every app exactly once: the edited
// view's apps plus the shared apps this machine does not have, and seen from
// this machine again it is the edit (up to folders the edit left with one
// visible app, which the view shows collapsed).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"
#include "fuzz/FuzzSupport.h"

using namespace orrery;
using namespace orrery::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  Layout shared = consistentLayout(input);
  const std::size_t sharedEdits = input.below(8);
  for (std::size_t i = 0; i < sharedEdits; ++i) applyOperation(shared, input, universe(), true);
  AppIDSet installed;
  for (const auto& id : universe())
    if (input.below(3) != 0) installed.insert(id);

  const LayoutProjection projection = shared.projected(installed);
  const Layout unedited = shared.embedding(projection.visible, projection, installed);
  if (unedited != shared)
    fail("the unedited view does not fold back to the shared arrangement", {&shared, &unedited});

  std::vector<std::string> installedList(installed.begin(), installed.end());
  std::sort(installedList.begin(), installedList.end());
  if (installedList.empty()) return 0;
  Layout edited = projection.visible;
  for (int step = 0; step < 24 && !input.exhausted(); ++step)
    applyOperation(edited, input, installedList, /*includeScans=*/false);
  const Layout result = shared.embedding(edited, projection, installed);

  // Not normalized: a folder may be left holding only apps this machine does
  // not have, and it keeps its identity for the machines that do.
  requireEveryAppOnce(result, "embedding an edited view", {&shared, &projection.visible, &edited});
  AppIDSet expected = edited.referencedAppIDs();
  for (const auto& id : shared.referencedAppIDs())
    if (!installed.contains(id)) expected.insert(id);
  if (result.referencedAppIDs() != expected)
    fail("the embedding lost or invented apps", {&shared, &edited, &result});
  Layout normalizedEdit = edited;
  normalizedEdit.normalizeFolders();
  const Layout seenAgain = result.projected(installed).visible;
  if (shape(seenAgain) != shape(normalizedEdit))
    fail("seen from this machine, the result is not the edit", {&shared, &edited, &result, &seenAgain});
  return 0;
}
