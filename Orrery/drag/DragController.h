// DragController: one pointer gesture in the overlay, from press to click or
// drop.
//
// Every press over the main grid or the open folder's panel comes here. A
// press that is released within 4 points of where it began is a click; one
// that moves farther, or is held still for 0.3 s, lifts the item under it.
// While lifted, the item follows the pointer at the offset where it was
// grabbed, and a GridDrag (main grid) or FolderReorder (inside the open
// folder) says where it would land; the views draw that preview. Dragging an
// app out of the folder panel hides the panel and continues over the main
// grid. A 16 ms ticker flips pages while the pointer is held at the left or
// right edge of the overlay (paged mode) and scrolls while it is held near
// the top or bottom of the grid (scroll mode).
//
// On release the drop becomes one arrangement change through the
// arrangement controller, or none; a drop onto an arrangement other than the
// one the drag started from (a rescan or a sync replaced it) is discarded,
// never applied to something the user did not see.
//
// The rules are the core's (DragPreview, GridDrag, DropZone, EdgeFlipTimer,
// EdgeAutoScroll); this type feeds them with positions and time and holds
// the gesture. Time comes from the injected Clock: the long press and the
// ticker are ScheduledActions, so a press that ended can never lift, and a
// stale long press is recognised by its token.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Orrery/base/Clock.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/base/Geometry.h"
#include "OrreryCore/base/Uuid.h"
#include "OrreryCore/drag/DragPreview.h"
#include "OrreryCore/drag/EdgeFlipTimer.h"
#include "OrreryCore/drag/GridDrag.h"
#include "OrreryCore/overlay/GridGeometry.h"

namespace orrery::app {

class OverlayModel;

// A reorder inside the open folder.
struct FolderReorder {
  Uuid folderID;
  std::vector<std::string> appIDs;  // the folder's apps when the drag started
  Index from = 0;                   // the dragged app's index in appIDs
  Layout base;                      // the arrangement when the drag started
  DragPreview preview{0, 0};        // over the folder's apps

  friend bool operator==(const FolderReorder&, const FolderReorder&) = default;
};

class DragController final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool lifted READ isLifted NOTIFY liftedChanged)
  Q_PROPERTY(QString liftedKey READ liftedKey NOTIFY liftedChanged)
  Q_PROPERTY(QVariantMap liftedTile READ liftedTile NOTIFY liftedChanged)
  Q_PROPERTY(double pointerX READ pointerX NOTIFY pointerChanged)
  Q_PROPERTY(double pointerY READ pointerY NOTIFY pointerChanged)
  Q_PROPERTY(double grabOffsetX READ grabOffsetX NOTIFY liftedChanged)
  Q_PROPERTY(double grabOffsetY READ grabOffsetY NOTIFY liftedChanged)
  Q_PROPERTY(bool gridDragging READ gridDragging NOTIFY previewChanged)
  Q_PROPERTY(int draggedIndex READ draggedIndex NOTIFY previewChanged)
  Q_PROPERTY(int gap READ gap NOTIFY previewChanged)
  Q_PROPERTY(int mergeSlot READ mergeSlot NOTIFY previewChanged)
  Q_PROPERTY(bool folderDragging READ folderDragging NOTIFY previewChanged)
  Q_PROPERTY(int folderFrom READ folderFrom NOTIFY previewChanged)
  Q_PROPERTY(int folderGap READ folderGap NOTIFY previewChanged)
  Q_PROPERTY(bool folderHidden READ folderHidden NOTIFY folderHiddenChanged)
  Q_PROPERTY(QRectF gridFrame READ gridFrameRect WRITE setGridFrame NOTIFY framesChanged)
  Q_PROPERTY(QRectF folderGridFrame READ folderGridFrameRect WRITE setFolderGridFrame NOTIFY framesChanged)
  Q_PROPERTY(QRectF folderPanelFrame READ folderPanelFrameRect WRITE setFolderPanelFrame NOTIFY framesChanged)
  Q_PROPERTY(double overlayWidth READ overlayWidth WRITE setOverlayWidth NOTIFY framesChanged)

 public:
  static constexpr double clickDistance = 4;  // points
  static constexpr std::chrono::milliseconds longPress{300};
  static constexpr std::chrono::milliseconds tickInterval{16};
  static constexpr double maxTickStep = 0.1;  // seconds

  // What a press began on.
  struct Origin {
    enum class Kind { grid, folder, none };
    Kind kind = Kind::none;
    Index slot = 0;      // grid: the slot on the shown page (or of the scrolled content)
    Uuid folder;         // folder: the open folder
    Index appIndex = 0;  // folder: the pressed app's index in it

    static Origin grid(Index slot) { return {Kind::grid, slot, {}, 0}; }
    static Origin inFolder(Uuid folder, Index appIndex) { return {Kind::folder, 0, folder, appIndex}; }
    static Origin none() { return {}; }
    friend bool operator==(const Origin&, const Origin&) = default;
  };

  struct Press {
    Point start;
    Origin origin;
    std::int64_t token = 0;
  };

  // `model` owns this controller and outlives it; `clock` too.
  DragController(OverlayModel& model, Clock& clock, QObject* parent = nullptr);

  // A pointer move of a gesture (the press itself included), with the
  // gesture's start point and what lies under it.
  void changed(Point location, Point start, const std::function<Origin()>& originAt);
  // The gesture ended at `location`; `click` runs when it was a click.
  void ended(Point location, Point start, const std::function<void(const Origin&)>& click);
  void gridChanged(Point location, Point start, Index slot);
  void gridEnded(Point location, Point start, Index slot);
  void folderChanged(Point location, Point start, const Uuid& folder, Index appIndex);
  void folderEnded(Point location, Point start, const Uuid& folder, Index appIndex);

  // Ends the gesture without a drop; its remaining events are ignored (Esc,
  // a search that begins). False when nothing was lifted.
  bool cancel();

  // The views' input: a gesture's pointer in overlay coordinates; the
  // origin is found from the frames below. A click opens what was clicked.
  Q_INVOKABLE void pointerMoved(double x, double y, double startX, double startY);
  Q_INVOKABLE void pointerReleased(double x, double y, double startX, double startY);
  // The gesture was taken away (window hidden, touch cancelled).
  Q_INVOKABLE void pointerCancelled();
  // What lies under a point of the overlay.
  Origin originAt(Point point) const;

  Clock& clock() { return clock_; }

  // State, for the views and tests.
  bool isLifted() const { return lifted_.has_value(); }
  const std::optional<LayoutItem>& lifted() const { return lifted_; }
  QString liftedKey() const;
  // What the lifted tile shows: "name", "icon" and "folderIcons", as the
  // list models give them.
  QVariantMap liftedTile() const { return liftedTile_; }
  Point pointer() const { return pointer_; }
  double pointerX() const { return pointer_.x; }
  double pointerY() const { return pointer_.y; }
  double grabOffsetX() const { return grabOffset_.width; }
  double grabOffsetY() const { return grabOffset_.height; }
  const std::optional<GridDrag>& grid() const { return grid_; }
  const std::optional<FolderReorder>& folder() const { return folder_; }
  bool folderHidden() const { return folderHidden_; }
  const std::optional<Press>& press() const { return press_; }
  // The preview in the shape the grid's tiles use: the top-level index that
  // left the grid (-1 when the item came from a folder), the gap slot and
  // the merge target's slot (-1 when none), all over the whole arrangement.
  bool gridDragging() const { return grid_.has_value(); }
  int draggedIndex() const;
  int gap() const { return grid_ ? static_cast<int>(grid_->preview.gap) : -1; }
  int mergeSlot() const;
  bool folderDragging() const { return folder_.has_value(); }
  int folderFrom() const { return folder_ ? static_cast<int>(folder_->from) : -1; }
  int folderGap() const { return folder_ ? static_cast<int>(folder_->preview.gap) : -1; }

  // Frames told by the view, in overlay coordinates. The folder grid's
  // frame covers all its rows (scrolled ones too).
  void setGridFrame(const QRectF& frame);
  void setFolderGridFrame(const QRectF& frame);
  void setFolderPanelFrame(const QRectF& frame);
  void setOverlayWidth(double width);
  const Rect& gridFrame() const { return gridFrame_; }
  QRectF gridFrameRect() const { return toQt(gridFrame_); }
  QRectF folderGridFrameRect() const { return toQt(folderGridFrame_); }
  QRectF folderPanelFrameRect() const { return toQt(folderPanelFrame_); }
  double overlayWidth() const { return overlayWidth_; }

 signals:
  void liftedChanged();
  void pointerChanged();
  void previewChanged();
  void folderHiddenChanged();
  void framesChanged();
  // A drop made a new folder (named with the default name).
  void folderMade(const QString& folderID);

 private:
  static QRectF toQt(const Rect& rect) { return {rect.minX(), rect.minY(), rect.width(), rect.height()}; }
  static Rect fromQt(const QRectF& rect) { return Rect{{rect.x(), rect.y()}, {rect.width(), rect.height()}}; }

  void scheduleLongPress(std::int64_t token);
  void lift();
  void updateHover();
  void leaveFolder();
  void startTicker();
  void tick();
  void drop();
  void finish();
  void setPointer(Point location);
  void setGrid(std::optional<GridDrag> drag);
  void setFolder(std::optional<FolderReorder> reorder);
  void setFolderHidden(bool hidden);
  void click(const Origin& origin);

  // The main grid's geometry (the whole scrolled content in scroll mode),
  // the first item index it shows and where its origin lies.
  GridGeometry gridGeometry() const;
  Index baseIndex() const;
  Point gridOrigin() const;
  GridGeometry folderGeometry(std::size_t appCount) const;
  double seconds() const;

  OverlayModel& model_;
  Clock& clock_;

  Point pointer_;
  std::optional<LayoutItem> lifted_;
  QVariantMap liftedTile_;
  std::optional<GridDrag> grid_;
  std::optional<FolderReorder> folder_;
  bool folderHidden_ = false;
  Size grabOffset_;
  Rect gridFrame_;
  Rect folderGridFrame_;
  Rect folderPanelFrame_;
  double overlayWidth_ = 0;
  std::optional<Press> press_;
  std::int64_t pressCount_ = 0;
  Point lastLocation_;
  std::optional<Point> ignoredStart_;
  EdgeFlipTimer edge_;
  ScheduledAction longPress_;
  ScheduledAction ticker_;
  double lastTick_ = 0;
};

}  // namespace orrery::app
