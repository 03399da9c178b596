#include "Orrery/triggers/ShortcutRecorder.h"

#include "OrreryCore/triggers/EventFlags.h"
#include "OrreryCore/triggers/KeyCombo.h"

namespace orrery::app {

ShortcutRecorder::ShortcutRecorder(SettingsStore& settings, TriggerStatus& status, KeyboardLayout* layout,
                                   Suspend suspend, QObject* parent)
    : QObject(parent), settings_(settings), status_(status), layout_(layout), suspend_(std::move(suspend)) {
  connect(&settings_, &SettingsStore::settingsChanged, this, &ShortcutRecorder::changed);
  connect(&status_, &TriggerStatus::changed, this, &ShortcutRecorder::changed);
}

// A recorder that goes away while recording must not leave the shortcut off.
ShortcutRecorder::~ShortcutRecorder() {
  if (recording_ && suspend_) suspend_(false, std::nullopt);
}

QString ShortcutRecorder::shortcutText() const {
  const auto& key = settings_.settings().hotKey;
  if (!key) return {};
  KeyCombo::LayoutName names;
  if (layout_ != nullptr) names = [this](std::uint32_t code) { return layout_->character(code); };
  return QString::fromStdString(style_ == Style::symbols ? KeyCombo::display(*key, names)
                                                         : KeyCombo::displayInWords(*key, names));
}

std::uint64_t ShortcutRecorder::eventFlags(Qt::KeyboardModifiers modifiers) {
  std::uint64_t flags = 0;
  if (modifiers.testFlag(Qt::ShiftModifier)) flags |= EventFlags::shift;
  if (modifiers.testFlag(Qt::ControlModifier)) flags |= EventFlags::control;
  if (modifiers.testFlag(Qt::AltModifier)) flags |= EventFlags::option;
  if (modifiers.testFlag(Qt::MetaModifier)) flags |= EventFlags::command;
  return flags;
}

void ShortcutRecorder::startRecording() {
  if (recording_) return;
  recording_ = true;
  if (suspend_) suspend_(true, std::nullopt);
  emit changed();
}

void ShortcutRecorder::cancelRecording() {
  if (recording_) finish(std::nullopt);
}

void ShortcutRecorder::finish(const std::optional<TriggerSettings>& restoring) {
  recording_ = false;
  if (suspend_) suspend_(false, restoring);
  emit changed();
}

void ShortcutRecorder::clearShortcut() {
  Settings next = settings_.settings();
  next.hotKey.reset();
  settings_.setSettings(next);
}

bool ShortcutRecorder::keyPressed(int qtKey, int nativeScanCode, int qtModifiers) {
  if (!recording_) return false;
  std::optional<std::uint32_t> keyCode;
  if (layout_ != nullptr && nativeScanCode > 0)
    keyCode = layout_->keyCode(static_cast<std::uint32_t>(nativeScanCode));
  // Esc cancels even where the layout cannot be asked.
  if (!keyCode && qtKey == Qt::Key_Escape) keyCode = KeyCombo::escapeKeyCode;
  // Modifier keys alone and keys no shortcut can name: keep waiting.
  if (!keyCode || *keyCode > 0xFFFF) return true;

  const auto input =
      KeyCombo::interpret(static_cast<std::uint16_t>(*keyCode),
                          eventFlags(Qt::KeyboardModifiers::fromInt(static_cast<unsigned>(qtModifiers))));
  if (input.isCancel()) {
    finish(std::nullopt);
  } else if (const auto key = input.acceptedKey()) {
    Settings next = settings_.settings();
    next.hotKey = *key;
    // Stored first, so the end of the suspension finds the new shortcut.
    settings_.setSettings(next);
    finish(TriggerSettings::from(next));
  }
  return true;
}

}  // namespace orrery::app
