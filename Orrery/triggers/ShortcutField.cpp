#include "Orrery/triggers/ShortcutField.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "Orrery/triggers/ShortcutRecorder.h"

namespace orrery::app {

ShortcutField::ShortcutField(ShortcutRecorder& recorder, QWidget* parent)
    : QWidget(parent), recorder_(recorder) {
  record_ = new QPushButton;
  record_->setObjectName(QStringLiteral("recordShortcut"));
  record_->setAccessibleName(tr("Record a new keyboard shortcut"));
  record_->installEventFilter(this);
  clear_ = new QPushButton(tr("Clear"));
  clear_->setObjectName(QStringLiteral("clearShortcut"));
  clear_->setAccessibleName(tr("Remove the keyboard shortcut"));
  error_ = new QLabel;
  error_->setObjectName(QStringLiteral("shortcutError"));
  error_->setWordWrap(true);
  QPalette warning = error_->palette();
  warning.setColor(QPalette::WindowText, QColor(0xc0, 0x1c, 0x28));
  error_->setPalette(warning);

  auto* buttons = new QHBoxLayout;
  buttons->setContentsMargins(0, 0, 0, 0);
  buttons->addWidget(record_, 1);
  buttons->addWidget(clear_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addLayout(buttons);
  column->addWidget(error_);

  connect(record_, &QPushButton::clicked, &recorder_, [this] {
    if (recorder_.recording())
      recorder_.cancelRecording();
    else
      recorder_.startRecording();
  });
  connect(clear_, &QPushButton::clicked, &recorder_, &ShortcutRecorder::clearShortcut);
  connect(&recorder_, &ShortcutRecorder::changed, this, &ShortcutField::refresh);
  refresh();
}

void ShortcutField::refresh() {
  const QString stored = recorder_.shortcutText();
  record_->setText(recorder_.recording() ? tr("Press the new shortcut …")
                   : stored.isEmpty()    ? tr("Record Shortcut")
                                         : stored);
  clear_->setEnabled(!recorder_.recording() && !stored.isEmpty());
  error_->setText(recorder_.error());
  error_->setVisible(!recorder_.error().isEmpty());
}

bool ShortcutField::eventFilter(QObject* watched, QEvent* event) {
  if (watched != record_ || !recorder_.recording()) return QWidget::eventFilter(watched, event);
  switch (event->type()) {
    case QEvent::ShortcutOverride:
      // Every key belongs to the recording, window shortcuts included.
      event->accept();
      return true;
    case QEvent::KeyPress: {
      const auto* key = static_cast<QKeyEvent*>(event);
      recorder_.keyPressed(key->key(), static_cast<int>(key->nativeScanCode()),
                           static_cast<int>(key->modifiers().toInt()));
      return true;
    }
    case QEvent::FocusOut:
      recorder_.cancelRecording();
      return false;
    default:
      return QWidget::eventFilter(watched, event);
  }
}

}  // namespace orrery::app
