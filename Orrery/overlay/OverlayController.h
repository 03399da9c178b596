// OverlayController: the overlay's window, shown and hidden, and the input
// that reaches it.
//
// One borderless, full-screen, always-on-top Qt Quick window is built at
// start-up, hidden, and reused for every show, so showing costs one frame
// rather than a window and a scene. show() puts it on the screen under the
// pointer and fades it in over 0.18 s; hide() fades it out and only then
// unmaps it. Every hide bumps a generation counter and the unmap after the
// fade checks it, so a show that comes during a fade-out is never undone by
// the stale end of that fade. When it hides, the keyboard goes back to the
// window that had it before (through the WindowSystem), and the first frame
// after a show is timed and logged.
//
// Keys and wheel events of the window pass through here before any item
// sees them: Esc, Return, the arrows, Page Up/Down, Home/End, wheel and
// touchpad paging, and type-to-search (a printable key anywhere goes to the
// search field). While an input method composes, keys are left alone.
// With a tile focused the arrows walk the tiles, Return and Space open it
// and the Menu key opens its context menu; an open menu takes the arrows,
// Return and Esc, and the sort's confirmation sheet takes every key.
//
// "Sort by Name …" asks first (confirmSortByName()): a sheet below the
// search field with the question, what the sort does and, when the
// arrangement is synced, that other machines follow; "Sort" sorts through
// the model, "Cancel" and Esc leave everything as it is.
//
// While it is up the overlay keeps the keyboard: when another of our windows
// takes it without the user having clicked there (a window that raised
// itself), the overlay takes it back; when the user did click into another
// window, it is left there. Whenever the overlay's window cannot hear Esc, a
// desktop-wide Esc (the EscapeFallback) stands in for it.
//
// Thread rules: main thread only.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

#include "Orrery/base/Clock.h"
#include "Orrery/overlay/EscapeFallback.h"
#include "Orrery/overlay/OverlayModel.h"
#include "Orrery/overlay/SwipeTracker.h"
#include "Orrery/overlay/WindowSystem.h"
#include "OrreryCore/overlay/OverlayFocus.h"

class QKeyEvent;
class QQuickImageProvider;
class QQuickView;
class QScreen;
class QWheelEvent;
class QWindow;

namespace orrery::app {

class OverlayController final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool revealed READ revealed NOTIFY revealedChanged)
  Q_PROPERTY(bool sortSheetShown READ sortSheetShown NOTIFY sortSheetChanged)
  Q_PROPERTY(QString sortSheetMessage READ sortSheetMessage CONSTANT)
  Q_PROPERTY(QString sortSheetText READ sortSheetText NOTIFY sortSheetChanged)
  Q_PROPERTY(double sheetTop READ sheetTop NOTIFY sortSheetChanged)

 public:
  static constexpr std::chrono::milliseconds fadeDuration{180};

  // `model` and `clock` must outlive the controller. The window is built
  // here, hidden; `icons`, when given, serves the tiles' icon images (the
  // window's engine takes it over).
  // `windows`, when given, keeps the window out of task bars and hands the
  // keyboard back to the window that had it; it must outlive the controller.
  OverlayController(OverlayModel& model, Clock& clock, QQuickImageProvider* icons = nullptr,
                    WindowSystem* windows = nullptr, QObject* parent = nullptr);
  ~OverlayController() override;

  // The desktop-wide Esc used while the overlay's window cannot hear keys;
  // none where the window system offers none. It must outlive the
  // controller.
  void setEscapeFallback(EscapeFallback* fallback);

  // Shows the overlay on `screen`, or on the screen under the pointer.
  // `label` names the occasion in the show-time log line.
  void show(QScreen* screen = nullptr, const QString& label = QStringLiteral("show"));
  Q_INVOKABLE void hide();
  Q_INVOKABLE void toggle();

  // Shown, or fading in: what a toggle looks at.
  bool isVisible() const { return visible_; }
  // The content is (being) faded in; the view binds its opacity to this.
  bool revealed() const { return revealed_; }
  std::uint64_t visibilityGeneration() const { return generation_; }
  QQuickView* window() const { return view_.get(); }
  // The pixels of one icon on the overlay's screen.
  int iconPixelSize() const;

  // Input of the overlay window; true when it was used. Public so tests can
  // drive the key table without a window system.
  bool handleKey(const QKeyEvent& event);
  bool handleWheel(const WheelInput& input);

  // The keyboard situation now, as the focus rules see it.
  OverlayFocus focus() const;
  // The user clicked into another of our windows and keeps the keyboard
  // there until they click into the overlay again.
  bool keyboardYielded() const { return keyboardYielded_; }

  // Shows the sort's confirmation sheet, when the overlay is shown, no
  // sheet is open and the model can sort.
  Q_INVOKABLE void confirmSortByName();
  // The sheet's answer: true for "Sort".
  Q_INVOKABLE void finishSortSheet(bool sort);
  bool sortSheetShown() const { return sortSheetShown_; }
  static QString sortSheetMessage();
  QString sortSheetText() const;
  // Where sheets hang: 60 points below the search field's top.
  double sheetTop() const { return model_.searchTop() + 60; }

 signals:
  void revealedChanged();
  // The first frame after a show reached the screen.
  void shown(double milliseconds);
  // The overlay asks for the keyboard back from `previous` (a window class,
  // or empty when no window had it); the window system hands it over later.
  void reclaimingKeyboard(const QString& previous);
  void hidden();
  void sortSheetChanged();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void setRevealed(bool revealed);
  void finishHide(std::uint64_t generation);
  bool searchFieldHasFocus() const;
  bool folderTitleHasFocus() const;
  bool handleMenuKey(const QKeyEvent& event);
  bool handleTrashSheetKey(const QKeyEvent& event);
  bool composing() const;
  KeyOwner keyOwner() const;
  // A mouse button went down in one of our windows while the overlay is up.
  void noteMouseDown(const QWindow& window);
  // Applies the focus rules to the situation now: the Esc fallback on or
  // off, and a reclaim of the keyboard scheduled when it is due.
  void reevaluateFocus();
  void reclaimKeyboard();
  void updateEscapeFallback();
  void escapeFromFallback();

  OverlayModel& model_;
  Clock& clock_;
  WindowSystem* windows_;
  EscapeFallback* escape_ = nullptr;
  std::unique_ptr<QQuickView> view_;
  // The window that had the keyboard before the overlay showed.
  std::optional<WindowSystem::WindowId> previous_;
  SwipeTracker swipe_;
  bool visible_ = false;
  bool revealed_ = false;
  std::uint64_t generation_ = 0;
  ScheduledAction finishHide_;
  QElapsedTimer showTimer_;
  QString showLabel_;
  bool timingShow_ = false;
  bool keyboardYielded_ = false;
  bool reclaimScheduled_ = false;
  bool sortSheetShown_ = false;
};

}  // namespace orrery::app
