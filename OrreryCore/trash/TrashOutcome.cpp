#include "OrreryCore/trash/TrashOutcome.h"

#include <algorithm>

#include "OrreryCore/text/Localized.h"

namespace orrery {

std::string TrashOutcome::failureTitle() {
  return text::localized("Not all apps could be moved to the Trash",
                         "Title of the message after moving apps to the Trash failed");
}

std::string TrashOutcome::systemOwnedReason() {
  return text::localized("Owned by the system.", "Reason why an app could not be moved to the Trash");
}

std::string TrashOutcome::adminRequiredReason() {
  return text::localized(
      "These apps belong to the system, not to your user. Deleting them requires your administrator "
      "password: open the “Applications” folder in the Finder, drag the app to the Trash and enter the "
      "password.",
      "How to delete apps that belong to the system");
}

std::string TrashOutcome::unknownReason() {
  return text::localized("The system gave no reason.",
                         "Reason why an app could not be moved to the Trash, when the system names none");
}

std::optional<std::string> TrashOutcome::failureMessage() const {
  if (failures.empty()) return std::nullopt;
  const std::string lineFormat =
      text::localized("%1: %2",
                      "One line of the list of apps that could not be moved to the Trash: "
                      "the app's name and the reason");
  std::string message;
  for (const Failure& failure : failures) {
    if (!message.empty()) message += '\n';
    message += text::arg(lineFormat, {failure.name, failure.reason});
  }
  const std::string systemOwned = systemOwnedReason();
  if (std::ranges::any_of(failures, [&](const Failure& failure) { return failure.reason == systemOwned; }))
    message += "\n\n" + adminRequiredReason();
  return message;
}

}  // namespace orrery
