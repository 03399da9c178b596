// ShortcutRecorder: the model behind the shortcut field of the settings:
// records a new global shortcut from the next key press and stores it.
//
// startRecording() suspends the registered shortcut (so pressing the old
// combination reaches the field instead of toggling the overlay); each key
// press is read with the keyboard layout (its native scan code) and
// KeyCombo::interpret: Esc cancels, a key without Command, Option or Control
// is ignored and recording goes on, anything else becomes the shortcut in
// the settings, which ends the suspension with the new trigger settings.
// The text shows the stored shortcut with the layout's key names, in words
// as Linux desktops write shortcuts ("Ctrl+Alt+Space", KeyCombo::
// displayInWords) or in symbols as macOS does ("⌃⌥Space",
// KeyCombo::display), as the platform says; error forwards the
// TriggerStatus message.
//
// Qt's modifiers map onto the event flags as the desktop names them: Ctrl
// is Control, Alt is Option, Meta (the Super or Windows key) is Command.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <optional>

#include "Orrery/settings/SettingsStore.h"
#include "Orrery/triggers/KeyboardLayout.h"
#include "Orrery/triggers/TriggerController.h"
#include "Orrery/triggers/TriggerStatus.h"

namespace orrery::app {

class ShortcutRecorder final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool recording READ recording NOTIFY changed)
  Q_PROPERTY(QString shortcutText READ shortcutText NOTIFY changed)
  Q_PROPERTY(QString error READ error NOTIFY changed)

 public:
  // (suspended, trigger settings to restore) — AppDelegate::setHotKeySuspended.
  using Suspend = std::function<void(bool suspended, const std::optional<TriggerSettings>& restoring)>;

  // `settings` and `status` must outlive the recorder; `layout` may be
  // null (no key is then recognised but Esc).
  ShortcutRecorder(SettingsStore& settings, TriggerStatus& status, KeyboardLayout* layout, Suspend suspend,
                   QObject* parent = nullptr);
  ~ShortcutRecorder() override;

  bool recording() const { return recording_; }
  // How shortcutText() writes modifiers and special keys; words unless set.
  enum class Style { words, symbols };
  void setStyle(Style style) { style_ = style; }
  QString shortcutText() const;
  QString error() const { return status_.hotKeyError(); }

  Q_INVOKABLE void startRecording();
  Q_INVOKABLE void cancelRecording();
  // Removes the shortcut from the settings.
  Q_INVOKABLE void clearShortcut();
  // A key press in the field; true when the recorder used it (while
  // recording, every press is used).
  Q_INVOKABLE bool keyPressed(int qtKey, int nativeScanCode, int qtModifiers);

  static std::uint64_t eventFlags(Qt::KeyboardModifiers modifiers);

 signals:
  void changed();

 private:
  void finish(const std::optional<TriggerSettings>& restoring);

  SettingsStore& settings_;
  TriggerStatus& status_;
  KeyboardLayout* layout_;
  Suspend suspend_;
  Style style_ = Style::words;
  bool recording_ = false;
};

}  // namespace orrery::app
