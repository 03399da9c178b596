#include "Orrery/platform/qt/QtWindowSystem.h"

#include <QWindow>

namespace orrery::platform {

std::optional<app::WindowSystem::WindowId> QtWindowSystem::activeWindow() { return std::nullopt; }

void QtWindowSystem::activate(WindowId /*window*/) {}

void QtWindowSystem::activate(QWindow& ours) { ours.requestActivate(); }

void QtWindowSystem::prepareOverlay(QWindow& overlay) {
  overlay.setFlags(overlay.flags() | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
  // show() keeps a state set beforehand, so the caller's plain show() asks
  // for full screen.
  overlay.setWindowStates((overlay.windowStates() & ~(Qt::WindowMinimized | Qt::WindowMaximized)) |
                          Qt::WindowFullScreen);
}

void QtWindowSystem::setBlurBehind(QWindow&, bool) {}

}  // namespace orrery::platform
