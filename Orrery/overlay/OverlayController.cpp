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
  // Before the view exists: it tells the model where the search field is
  // while it is being built, and the sheets must hear of that.
  connect(&model_, &OverlayModel::searchTopChanged, this, &OverlayController::sortSheetChanged);
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
  connect(&model_, &OverlayModel::sortRequested, this, &OverlayController::confirmSortByName);
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
  // What was asked of the user no longer stands once the overlay goes; an
  // open folder closes too (keeping a name being edited), so the next show
  // starts at the grid.
  finishSortSheet(false);
  model_.trashFlow().finishSheet(false);
  model_.trashFlow().dismissFailure();
  model_.closeMenu();
  model_.closeFolder();
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

bool OverlayController::folderTitleHasFocus() const {
  const QQuickItem* focused = view_->activeFocusItem();
  return focused != nullptr && focused->objectName() == QLatin1String("folderTitle");
}

bool OverlayController::composing() const {
  const QQuickItem* focused = view_->activeFocusItem();
  return focused != nullptr && focused->property("inputMethodComposing").toBool();
}

bool OverlayController::handleMenuKey(const QKeyEvent& event) {
  switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
      model_.moveMenuSelection(event.key() == Qt::Key_Up ? -1 : 1);
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
      model_.chooseMenuEntry(model_.menuIndex());
      return true;
    case Qt::Key_Escape:
    case Qt::Key_Menu:
      model_.closeMenu();
      return true;
    default:
      // Anything else dismisses the menu and does what it does.
      model_.closeMenu();
      return false;
  }
}

bool OverlayController::handleKey(const QKeyEvent& event) {
  if (composing()) return false;
  if (sortSheetShown_) {
    // The sheet is modal: "Sort" is the default button, Esc cancels.
    if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter)
      finishSortSheet(true);
    else if (event.key() == Qt::Key_Escape)
      finishSortSheet(false);
    return true;
  }
  if (handleTrashSheetKey(event)) return true;
  // Delete in the selection mode: "Move to Trash …" from the keyboard (while
  // nothing is typed, so Delete still edits a search text).
  if (event.key() == Qt::Key_Delete && model_.trashFlow().selecting() && !model_.menuOpen() &&
      model_.query().isEmpty()) {
    model_.requestTrash();
    return true;
  }
  if (model_.menuOpen() && handleMenuKey(event)) return true;
  // The folder's title keeps what is typed into it; Esc still closes the
  // folder, which keeps the name.
  if (folderTitleHasFocus() && event.key() != Qt::Key_Escape) return false;
  const bool searching = model_.isSearching();
  const bool scrolling = model_.scrollMode();
  if (event.key() == Qt::Key_Menu || (event.key() == Qt::Key_F10 && event.modifiers() == Qt::ShiftModifier)) {
    model_.openMenuAtFocus();
    return true;
  }
  if (event.key() == Qt::Key_Z && event.modifiers() == Qt::ControlModifier && model_.canUndoSort()) {
    model_.undoSort();
    return true;
  }
  switch (event.key()) {
    case Qt::Key_Escape:
      if (!model_.handleEscape()) hide();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (!model_.activateFocused()) model_.launchOnEnter();
      return true;
    case Qt::Key_Space:
      if (model_.focusedIndex() < 0 || searching) break;
      model_.activateFocused();
      return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
      // While searching the arrows belong to the text.
      if (searching) return false;
      if (model_.moveFocus(event.key() == Qt::Key_Left ? -1 : 1, 0)) return true;
      if (scrolling) return false;
      event.key() == Qt::Key_Left ? model_.previousPage() : model_.nextPage();
      return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
      if (!searching && model_.moveFocus(0, event.key() == Qt::Key_Up ? -1 : 1)) return true;
      [[fallthrough]];
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: {
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
  // An open folder scrolls its own apps.
  if (model_.isSearching() || !model_.openFolderID().isEmpty()) return false;
  if (model_.scrollMode()) {
    model_.scroll(-input.dy, false);
    return true;
  }
  if (const std::optional<int> delta = swipe_.pageDelta(input)) model_.goTo(model_.page() + *delta);
  return true;
}

void OverlayController::confirmSortByName() {
  if (!visible_ || sortSheetShown_ || !model_.canSortByName()) return;
  model_.closeMenu();
  sortSheetShown_ = true;
  emit sortSheetChanged();
}

void OverlayController::finishSortSheet(bool sort) {
  if (!sortSheetShown_) return;
  sortSheetShown_ = false;
  emit sortSheetChanged();
  if (sort) model_.sortByName();
}

QString OverlayController::sortSheetMessage() { return tr("Sort all apps and folders by name?"); }

QString OverlayController::sortSheetText() const {
  QString text = tr("Folders come first, then apps, each from A to Z. You can undo it right afterwards.");
  if (model_.syncEnabled())
    text += QStringLiteral("\n\n") + tr("The arrangement also changes on your other computers.",
                                        "the other computers that share the arrangement through sync");
  return text;
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
  for (const QWindow* w = &window; w != nullptr && !inPanel; w = w->transientParent())
    inPanel = w == view_.get();
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

bool OverlayController::handleTrashSheetKey(const QKeyEvent& event) {
  TrashFlow& trash = model_.trashFlow();
  const bool accept = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
  // Both sheets are modal: they take every key. Return moves (the user
  // asked for exactly this a moment ago, and the Trash gives it back), Esc
  // cancels; the failure report goes with either.
  if (trash.sheetShown()) {
    if (accept || event.key() == Qt::Key_Escape) trash.finishSheet(accept);
    return true;
  }
  if (trash.failureShown()) {
    if (accept || event.key() == Qt::Key_Escape) trash.dismissFailure();
    return true;
  }
  return false;
}

void OverlayController::escapeFromFallback() {
  if (!visible_) return;
  if (model_.trashFlow().sheetShown()) {
    model_.trashFlow().finishSheet(false);
    return;
  }
  if (model_.trashFlow().failureShown()) {
    model_.trashFlow().dismissFailure();
    return;
  }
  if (!model_.handleEscape()) hide();
}

}  // namespace orrery::app
