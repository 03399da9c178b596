#include "Orrery/overlay/OverlayController.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickImageProvider>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QWheelEvent>

#include <cmath>
#include <utility>

#include "Orrery/appearance/IconCache.h"
#include "Orrery/base/Logging.h"

namespace orrery::app {

OverlayController::OverlayController(OverlayModel& model, Clock& clock, QQuickImageProvider* icons,
                                     WindowSystem* windows, QObject* parent)
    : QObject(parent),
      model_(model),
      clock_(clock),
      windows_(windows),
      view_(std::make_unique<QQuickView>()) {
  if (icons != nullptr) view_->engine()->addImageProvider(QLatin1String(IconCache::providerName), icons);
  view_->setTitle(QStringLiteral("Orrery"));
  view_->setFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
  view_->setColor(Qt::black);
  view_->setResizeMode(QQuickView::SizeRootObjectToView);
  view_->setInitialProperties(
      {{QStringLiteral("overlay"), QVariant::fromValue(static_cast<QObject*>(&model_))},
       {QStringLiteral("controller"), QVariant::fromValue(static_cast<QObject*>(this))}});
  view_->setSource(QUrl(QStringLiteral("qrc:/Orrery/qml/Overlay.qml")));
  for (const QQmlError& error : view_->errors())
    qCCritical(overlayLog, "Overlay-Ansicht fehlerhaft: %s", qPrintable(error.toString()));
  // Application-wide: a click into any of our windows decides whether the
  // user gave the keyboard away on purpose.
  qApp->installEventFilter(this);
  connect(qApp, &QGuiApplication::applicationStateChanged, this, &OverlayController::reevaluateFocus);
  connect(qApp, &QGuiApplication::focusWindowChanged, this, &OverlayController::reevaluateFocus);
  connect(view_.get(), &QQuickWindow::frameSwapped, this, [this] {
    if (!timingShow_) return;
    timingShow_ = false;
    const double milliseconds = static_cast<double>(showTimer_.nsecsElapsed()) / 1e6;
    qCInfo(overlayLog, "[%s] overlay shown in %.*f ms", qPrintable(showLabel_), 1, milliseconds);
    emit shown(milliseconds);
  });
}

OverlayController::~OverlayController() {
  // The window goes before this object's connections would: no focus
  // change may reach a controller that is half gone.
  disconnect(qApp, nullptr, this, nullptr);
  qApp->removeEventFilter(this);
  if (escape_ != nullptr) {
    escape_->setActive(false);
    escape_->setHandler({});
  }
}

void OverlayController::setEscapeFallback(EscapeFallback* fallback) {
  if (escape_ != nullptr) {
    escape_->setActive(false);
    escape_->setHandler({});
  }
  escape_ = fallback;
  if (escape_ != nullptr) escape_->setHandler([this] { escapeFromFallback(); });
  reevaluateFocus();
}

int OverlayController::iconPixelSize() const {
  const QScreen* screen = view_->screen() != nullptr ? view_->screen() : QGuiApplication::primaryScreen();
  const double ratio = screen != nullptr ? screen->devicePixelRatio() : 1.0;
  return static_cast<int>(std::lround(model_.iconSize() * ratio));
}

void OverlayController::show(QScreen* screen, const QString& label) {
  if (screen == nullptr) screen = QGuiApplication::screenAt(QCursor::pos());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  // A pending end of a fade-out must not unmap what is shown again now.
  ++generation_;
  finishHide_.cancel();
  showLabel_ = label;
  showTimer_.start();
  timingShow_ = true;
  visible_ = true;
  keyboardYielded_ = false;
  if (windows_ != nullptr && !view_->isVisible()) {
    // Whoever has the keyboard now gets it back when the overlay goes.
    const auto active = windows_->activeWindow();
    previous_ = active && *active != view_->winId() ? active : std::nullopt;
  }
  if (screen != nullptr && view_->screen() != screen) view_->setScreen(screen);
  if (screen != nullptr) view_->setGeometry(screen->geometry());
  // Window managers forget a window's states while it is hidden.
  if (windows_ != nullptr) windows_->prepareOverlay(*view_);
  view_->showFullScreen();
  view_->raise();
  if (windows_ != nullptr)
    windows_->activate(*view_);
  else
    view_->requestActivate();
  model_.setMessage({});
  model_.requestFocus();
  setRevealed(true);
  // The keyboard was just asked for; only the Esc fallback may be needed
  // until the window manager hands it over.
  updateEscapeFallback();
}

void OverlayController::hide() {
  if (!visible_) return;
  visible_ = false;
  const std::uint64_t generation = ++generation_;
  setRevealed(false);
  reevaluateFocus();
  if (!model_.animations()) {
    finishHide(generation);
    return;
  }
  finishHide_ = clock_.runAfter(fadeDuration, [this, generation] { finishHide(generation); });
}

void OverlayController::toggle() {
  if (visible_)
    hide();
  else
    show();
}

void OverlayController::finishHide(std::uint64_t generation) {
  if (generation != generation_) return;
  view_->hide();
  if (windows_ != nullptr && previous_) windows_->activate(*std::exchange(previous_, std::nullopt));
  emit hidden();
}

void OverlayController::setRevealed(bool revealed) {
  if (revealed == revealed_) return;
  revealed_ = revealed;
  emit revealedChanged();
}

bool OverlayController::eventFilter(QObject* watched, QEvent* event) {
  if (!visible_) return false;
  if (event->type() == QEvent::MouseButtonPress && watched->isWindowType()) {
    const auto button = static_cast<QMouseEvent*>(event)->button();
    if (button == Qt::LeftButton || button == Qt::RightButton) noteMouseDown(*static_cast<QWindow*>(watched));
    return false;
  }
  if (watched != view_.get()) return false;
  switch (event->type()) {
    case QEvent::KeyPress:
      return handleKey(*static_cast<QKeyEvent*>(event));
    case QEvent::Wheel:
      return handleWheel(fromWheelEvent(*static_cast<QWheelEvent*>(event)));
    default:
      return false;
  }
}

bool OverlayController::searchFieldHasFocus() const {
  const QQuickItem* focused = view_->activeFocusItem();
  return focused != nullptr && focused->objectName() == QLatin1String("searchInput");
}

bool OverlayController::composing() const {
  const QQuickItem* focused = view_->activeFocusItem();
  return focused != nullptr && focused->property("inputMethodComposing").toBool();
}

bool OverlayController::handleKey(const QKeyEvent& event) {
  if (composing()) return false;
  const bool searching = model_.isSearching();
  const bool scrolling = model_.scrollMode();
  switch (event.key()) {
    case Qt::Key_Escape:
      if (!model_.handleEscape()) hide();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      model_.launchOnEnter();
      return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
      // While searching the arrows belong to the text.
      if (searching || scrolling) return false;
      event.key() == Qt::Key_Left ? model_.previousPage() : model_.nextPage();
      return true;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Up:
    case Qt::Key_Down: {
      if (searching) return false;
      const bool back = event.key() == Qt::Key_PageUp || event.key() == Qt::Key_Up;
      if (scrolling)
        model_.scroll(back ? -model_.scrollPageStep() : model_.scrollPageStep(), true);
      else if (event.key() == Qt::Key_PageUp || event.key() == Qt::Key_PageDown)
        back ? model_.previousPage() : model_.nextPage();
      else
        return false;
      return true;
    }
    case Qt::Key_Home:
    case Qt::Key_End:
      if (searching) return false;
      if (scrolling)
        model_.scroll(event.key() == Qt::Key_Home ? -model_.scrollMetrics().contentHeight
                                                  : model_.scrollMetrics().contentHeight,
                      true);
      else
        model_.goTo(event.key() == Qt::Key_Home ? 0 : model_.pageCount() - 1);
      return true;
    default:
      break;
  }
  // Type-to-search: a printable key anywhere starts or continues the search.
  const QString text = event.text();
  const bool printable = !text.isEmpty() && text.at(0).isPrint() &&
                         !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
  if (!printable || searchFieldHasFocus()) return false;
  model_.setQuery(model_.query() + text);
  model_.requestFocus();
  return true;
}

bool OverlayController::handleWheel(const WheelInput& input) {
  if (model_.isSearching()) return false;
  if (model_.scrollMode()) {
    model_.scroll(-input.dy, false);
    return true;
  }
  if (const std::optional<int> delta = swipe_.pageDelta(input)) model_.goTo(model_.page() + *delta);
  return true;
}

}  // namespace orrery::app

namespace orrery::app {

KeyOwner OverlayController::keyOwner() const {
  const QWindow* key = QGuiApplication::focusWindow();
  if (key == nullptr) return KeyOwner::none;
  if (key == view_.get()) return KeyOwner::panel;
  for (const QWindow* parent = key->transientParent(); parent != nullptr; parent = parent->transientParent())
    if (parent == view_.get()) return KeyOwner::panelSheet;
  return KeyOwner::otherWindow;
}

OverlayFocus OverlayController::focus() const {
  return OverlayFocus{
      .isVisible = visible_,
      .takesFocus = true,
      .appActive = QGuiApplication::applicationState() == Qt::ApplicationActive,
      .keyOwner = keyOwner(),
      .yielded = keyboardYielded_,
  };
}

void OverlayController::noteMouseDown(const QWindow& window) {
  // A click in the overlay or in a sheet on it brings the keyboard home; a
  // click anywhere else of ours is the user choosing that window.
  bool inPanel = false;
  for (const QWindow* w = &window; w != nullptr && !inPanel; w = w->transientParent()) inPanel = w == view_.get();
  if (keyboardYielded_ == !inPanel) return;
  keyboardYielded_ = !inPanel;
  reevaluateFocus();
}

void OverlayController::reevaluateFocus() {
  updateEscapeFallback();
  if (!focus().shouldReclaimKey() || reclaimScheduled_) return;
  reclaimScheduled_ = true;
  // Later, not now: the window that just took the keyboard is often still
  // in the middle of being shown, and the situation may settle by itself.
  QMetaObject::invokeMethod(this, &OverlayController::reclaimKeyboard, Qt::QueuedConnection);
}

void OverlayController::reclaimKeyboard() {
  reclaimScheduled_ = false;
  if (!focus().shouldReclaimKey()) return;
  const QWindow* previous = QGuiApplication::focusWindow();
  const QString previousClass =
      previous != nullptr ? QString::fromLatin1(previous->metaObject()->className()) : QString();
  if (windows_ != nullptr)
    windows_->activate(*view_);
  else
    view_->requestActivate();
  model_.requestFocus();
  qCInfo(overlayLog, "Tastatur zurück ans Overlay (war: %s, Bildschirme: %ld)",
         previousClass.isEmpty() ? "keines" : qPrintable(previousClass),
         static_cast<long>(QGuiApplication::screens().size()));
  emit reclaimingKeyboard(previousClass);
  // Only the fallback: the window manager hands the keyboard over later, and
  // asking again before it has answered would spin; the change of key window
  // that follows re-evaluates anyway.
  updateEscapeFallback();
}

void OverlayController::updateEscapeFallback() {
  if (escape_ != nullptr) escape_->setActive(focus().needsEscapeFallback());
}

void OverlayController::escapeFromFallback() {
  if (!visible_) return;
  if (!model_.handleEscape()) hide();
}

}  // namespace orrery::app
