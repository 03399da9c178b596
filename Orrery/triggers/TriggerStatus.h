// TriggerStatus: what the settings window tells the user about the
// triggers: the last shortcut error, and what this desktop cannot do.
//
// hotKeyError is empty while the shortcut is fine (or none is set) and holds
// "This shortcut is already used by another app." or "Couldn't register the
// shortcut." after a failed registration. hotCornerAvailable is false where
// no program may follow the pointer across the desktop (Wayland): the
// settings then show hotCornerNote instead of offering a corner that would
// never fire. shortcutNote, when not empty, says how to bind
// `orrery --toggle` in the desktop's own settings, for desktops where this
// program cannot hold a shortcut itself. systemCornerWarning is not empty
// when the desktop itself acts on the chosen corner.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>
#include <QString>

namespace orrery::app {

class TriggerStatus final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString hotKeyError READ hotKeyError NOTIFY changed)
  Q_PROPERTY(bool hotCornerAvailable READ hotCornerAvailable NOTIFY changed)
  Q_PROPERTY(QString hotCornerNote READ hotCornerNote NOTIFY changed)
  Q_PROPERTY(QString shortcutNote READ shortcutNote NOTIFY changed)
  Q_PROPERTY(QString systemCornerWarning READ systemCornerWarning NOTIFY changed)

 public:
  using QObject::QObject;

  static QString alreadyUsedText();
  static QString notRegisteredText();
  static QString hotCornerUnavailableText();
  static QString bindToggleText();

  const QString& hotKeyError() const { return hotKeyError_; }
  bool hotCornerAvailable() const { return hotCornerAvailable_; }
  const QString& hotCornerNote() const { return hotCornerNote_; }
  const QString& shortcutNote() const { return shortcutNote_; }
  const QString& systemCornerWarning() const { return systemCornerWarning_; }

  void setHotKeyError(const QString& error);
  void setHotCornerAvailable(bool available);
  void setShortcutNote(const QString& note);
  void setSystemCornerWarning(const QString& warning);

 signals:
  void changed();

 private:
  QString hotKeyError_;
  bool hotCornerAvailable_ = true;
  QString hotCornerNote_;
  QString shortcutNote_;
  QString systemCornerWarning_;
};

}  // namespace orrery::app
