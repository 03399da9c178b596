#include "Orrery/triggers/TriggerNotes.h"

#include <QStringList>

#include "Orrery/triggers/TriggerStatus.h"

namespace orrery::app {

TriggerNotes::TriggerNotes(const TriggerStatus& status, QWidget* parent) : QLabel(parent), status_(status) {
  setObjectName(QStringLiteral("triggerNotes"));
  setWordWrap(true);
  connect(&status_, &TriggerStatus::changed, this, &TriggerNotes::refresh);
  refresh();
}

void TriggerNotes::refresh() {
  QStringList notes;
  for (const QString& note : {status_.systemCornerWarning(), status_.hotCornerNote(), status_.shortcutNote()})
    if (!note.isEmpty()) notes << note;
  setText(notes.join(QStringLiteral("\n\n")));
  setAccessibleName(text());
  setVisible(!notes.isEmpty());
}

}  // namespace orrery::app
