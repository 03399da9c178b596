// ShortcutField: the settings window's control for the global shortcut,
// over a ShortcutRecorder.
//
// A button shows the stored shortcut; pressing it starts recording (the
// registered shortcut is suspended meanwhile, so pressing the old one is
// recorded rather than toggling the overlay), and the next combination
// pressed while the button has the keyboard becomes the shortcut. Esc or
// taking the keyboard elsewhere cancels. "Clear" removes the shortcut. A
// combination the system refuses shows the recorder's error beneath.
//
// Thread rules: main thread only.
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace orrery::app {

class ShortcutRecorder;

class ShortcutField final : public QWidget {
  Q_OBJECT

 public:
  // `recorder` must outlive the field.
  explicit ShortcutField(ShortcutRecorder& recorder, QWidget* parent = nullptr);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void refresh();

  ShortcutRecorder& recorder_;
  QPushButton* record_ = nullptr;
  QPushButton* clear_ = nullptr;
  QLabel* error_ = nullptr;
};

}  // namespace orrery::app
