// TriggerNotes: what the settings window's Trigger pane must tell about the
// triggers on this desktop, beneath the corner and shortcut controls: that
// the desktop already acts on the chosen corner, that no hot corner can work
// in this session (Wayland), or how to bind "orrery --toggle" where the
// program cannot hold a shortcut. Hidden while there is nothing to say.
//
// Thread rules: main thread only.
#pragma once

#include <QLabel>

namespace orrery::app {

class TriggerStatus;

class TriggerNotes final : public QLabel {
  Q_OBJECT

 public:
  // `status` must outlive the label.
  explicit TriggerNotes(const TriggerStatus& status, QWidget* parent = nullptr);

 private:
  void refresh();

  const TriggerStatus& status_;
};

}  // namespace orrery::app
