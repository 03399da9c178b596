#include "Orrery/triggers/TriggerStatus.h"

#include "OrreryCore/text/Localized.h"

namespace orrery::app {

namespace {
QString localized(std::string_view source, std::string_view comment) {
  return QString::fromStdString(text::localized(source, comment));
}
}  // namespace

QString TriggerStatus::alreadyUsedText() {
  return localized("This shortcut is already used by another app.",
                   "Shown next to the shortcut recorder when another program holds the combination");
}

QString TriggerStatus::notRegisteredText() {
  return localized("Couldn't register the shortcut.",
                   "Shown next to the shortcut recorder when the shortcut could not be set up");
}

QString TriggerStatus::hotCornerUnavailableText() {
  return localized(
      "Hot corners aren't available in this session: the compositor doesn't let apps follow the pointer "
      "across the desktop. Use a keyboard shortcut instead.",
      "Shown instead of the hot-corner choice on desktops (Wayland) where it can't work");
}

QString TriggerStatus::bindToggleText() {
  return localized(
      "This desktop doesn't let apps set a global shortcut. Bind the command “orrery --toggle” to a key "
      "in your desktop's keyboard settings.",
      "Shown next to the shortcut recorder where the program can't hold a shortcut itself");
}

void TriggerStatus::setHotKeyError(const QString& error) {
  if (error == hotKeyError_) return;
  hotKeyError_ = error;
  emit changed();
}

void TriggerStatus::setHotCornerAvailable(bool available) {
  if (available == hotCornerAvailable_) return;
  hotCornerAvailable_ = available;
  hotCornerNote_ = available ? QString() : hotCornerUnavailableText();
  emit changed();
}

void TriggerStatus::setShortcutNote(const QString& note) {
  if (note == shortcutNote_) return;
  shortcutNote_ = note;
  emit changed();
}

void TriggerStatus::setSystemCornerWarning(const QString& warning) {
  if (warning == systemCornerWarning_) return;
  systemCornerWarning_ = warning;
  emit changed();
}

}  // namespace orrery::app
