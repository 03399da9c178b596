#include "OrreryCore/trash/TrashRequest.h"

#include <algorithm>

#include "OrreryCore/text/Collation.h"
#include "OrreryCore/text/Localized.h"

namespace orrery {

TrashRequest::TrashRequest(const AppIDSet& ids, const std::unordered_map<std::string, AppInfo>& catalog,
                           std::int64_t skippedCount)
    : skipped(skippedCount) {
  for (const std::string& id : ids) {
    const auto found = catalog.find(id);
    if (found != catalog.end()) apps.push_back(found->second);
  }
  std::ranges::sort(apps, [](const AppInfo& a, const AppInfo& b) {
    return text::nameOrderLess(a.name, a.id, b.name, b.id);
  });
}

std::string TrashRequest::title() const {
  return text::arg(text::localized("Move %1 apps to the Trash?",
                                   "Title of the confirmation before moving apps to the Trash"),
                   {std::to_string(static_cast<std::int64_t>(apps.size()))});
}

std::string TrashRequest::message(const AppIDSet& runningIDs) const {
  std::vector<std::string> paragraphs;

  std::string list;
  const std::size_t listed = std::min(apps.size(), maxListedNames);
  for (std::size_t i = 0; i < listed; ++i) {
    if (!list.empty()) list += '\n';
    list += "• " + apps[i].name;
  }
  if (apps.size() > maxListedNames)
    list += '\n' + text::arg(text::localized("… and %1 more", "End of a shortened list of app names"),
                             {std::to_string(static_cast<std::int64_t>(apps.size() - listed))});
  if (!list.empty()) paragraphs.push_back(std::move(list));

  std::string running;
  for (const AppInfo& app : apps) {
    if (!runningIDs.contains(app.id)) continue;
    if (!running.empty()) running += ", ";
    running += app.name;
  }
  if (!running.empty())
    paragraphs.push_back(text::arg(text::localized("Still open: %1. Please quit these apps first.",
                                                   "Warning about apps that are still running"),
                                   {running}));

  if (skipped >= 1)
    paragraphs.push_back(text::arg(text::localized("%1 selected apps stay; they can't be moved to the Trash.",
                                                   "Protected apps that were selected but are skipped"),
                                   {std::to_string(skipped)}));

  paragraphs.push_back(restoreHint());

  std::string out;
  for (const std::string& paragraph : paragraphs) {
    if (!out.empty()) out += "\n\n";
    out += paragraph;
  }
  return out;
}

std::string TrashRequest::restoreHint() {
  return text::localized("You can restore them from the Trash.",
                         "Last line of the confirmation before moving apps to the Trash");
}

}  // namespace orrery
