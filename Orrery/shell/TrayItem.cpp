#include "Orrery/shell/TrayItem.h"

#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QSystemTrayIcon>

namespace orrery::app {

namespace {

QPixmap drawGrid(int size, const QColor& colour) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  // Three squares and two gaps per side inside a margin of an eighth; the
  // gap is half a square so the grid still reads at 16 pixels.
  const double margin = size / 8.0;
  const double square = (size - 2 * margin) / 4.0;
  const double gap = square / 2.0;
  const double radius = square / 4.0;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      painter.drawRoundedRect(
          QRectF(margin + column * (square + gap), margin + row * (square + gap), square, square), radius,
          radius);
    }
  }
  return pixmap;
}

}  // namespace

TrayItem::TrayItem(SettingsStore& settings, Availability trayAvailable, bool darkPanel, QObject* parent)
    : QObject(parent), settings_(settings), trayAvailable_(std::move(trayAvailable)), darkPanel_(darkPanel) {
  connect(&settings_, &SettingsStore::settingsChanged, this, &TrayItem::follow);
  follow();
}

TrayItem::~TrayItem() = default;

bool TrayItem::isShown() const { return settings_.settings().showMenuBarIcon && trayAvailable(); }

QIcon TrayItem::gridSymbol(bool forDarkPanel) {
  const QColor colour = forDarkPanel ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x2e, 0x34, 0x36);
  QIcon icon;
  for (const int size : {16, 22, 24, 32, 48, 64}) icon.addPixmap(drawGrid(size, colour));
  return icon;
}

void TrayItem::follow() {
  // Shown whenever wanted, tray or not: Qt puts the icon into a tray that
  // appears later (a panel started after Orrery).
  const bool wanted = settings_.settings().showMenuBarIcon;
  if (!wanted) {
    if (icon_) icon_->hide();
    return;
  }
  if (!icon_) {
    menu_ = std::make_unique<QMenu>();
    connect(menu_->addAction(tr("Show Orrery")), &QAction::triggered, this, &TrayItem::showRequested);
    connect(menu_->addAction(tr("Settings …")), &QAction::triggered, this, &TrayItem::settingsRequested);
    menu_->addSeparator();
    connect(menu_->addAction(tr("Quit Orrery")), &QAction::triggered, this, &TrayItem::quitRequested);
    icon_ = std::make_unique<QSystemTrayIcon>(gridSymbol(darkPanel_));
    icon_->setToolTip(QStringLiteral("Orrery"));
    icon_->setContextMenu(menu_.get());
    connect(icon_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
      if (reason == QSystemTrayIcon::Trigger) emit toggleRequested();
    });
  }
  icon_->show();
}

}  // namespace orrery::app
