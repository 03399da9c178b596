#include "Orrery/drag/DragController.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Orrery/overlay/OverlayModel.h"
#include "OrreryCore/drag/DropZone.h"
#include "OrreryCore/overlay/EdgeAutoScroll.h"
#include "OrreryCore/overlay/ScrollGrid.h"

namespace orrery::app {

namespace {

double distance(Point a, Point b) { return std::hypot(a.x - b.x, a.y - b.y); }

}  // namespace

DragController::DragController(OverlayModel& model, Clock& clock, QObject* parent)
    : QObject(parent), model_(model), clock_(clock) {}

double DragController::seconds() const {
  return std::chrono::duration<double>(clock_.monotonicNow().time_since_epoch()).count();
}

// --- Gestures ---------------------------------------------------------------------

void DragController::changed(Point location, Point start, const std::function<Origin()>& originAt) {
  if (ignoredStart_ && *ignoredStart_ == start) return;
  // A press with another start means its gesture never ended (a release
  // lost to another window): end it without a drop.
  if (press_ && press_->start != start) finish();
  lastLocation_ = location;
  if (!press_) {
    ignoredStart_.reset();
    ++pressCount_;
    press_ = Press{start, originAt(), pressCount_};
    if (press_->origin.kind != Origin::Kind::none) scheduleLongPress(press_->token);
  }
  if (!lifted_) {
    if (distance(location, press_->start) > clickDistance) lift();
    if (!lifted_) return;
  }
  setPointer(location);
  updateHover();
}

void DragController::ended(Point location, Point start, const std::function<void(const Origin&)>& click) {
  if (ignoredStart_ && *ignoredStart_ == start) {
    ignoredStart_.reset();
    return;
  }
  if (!lifted_) {
    if (distance(location, press_ ? press_->start : start) <= clickDistance)
      click(press_ ? press_->origin : Origin::none());
  } else {
    if (location != pointer_) {
      setPointer(location);
      updateHover();
    }
    drop();
  }
  finish();
}

void DragController::gridChanged(Point location, Point start, Index slot) {
  changed(location, start, [slot] { return Origin::grid(slot); });
}

void DragController::gridEnded(Point location, Point start, Index slot) {
  (void)slot;
  ended(location, start, [this](const Origin& origin) { click(origin); });
}

void DragController::folderChanged(Point location, Point start, const Uuid& folder, Index appIndex) {
  changed(location, start, [&] { return Origin::inFolder(folder, appIndex); });
}

void DragController::folderEnded(Point location, Point start, const Uuid& folder, Index appIndex) {
  (void)folder;
  (void)appIndex;
  ended(location, start, [this](const Origin& origin) { click(origin); });
}

bool DragController::cancel() {
  if (!press_) return false;
  const bool wasLifted = lifted_.has_value();
  const Point start = press_->start;
  finish();
  ignoredStart_ = start;
  return wasLifted;
}

void DragController::pointerMoved(double x, double y, double startX, double startY) {
  const Point start{startX, startY};
  changed({x, y}, start, [this, start] { return originAt(start); });
}

void DragController::pointerReleased(double x, double y, double startX, double startY) {
  ended({x, y}, {startX, startY}, [this](const Origin& origin) { click(origin); });
}

void DragController::pointerCancelled() {
  if (press_) finish();
  ignoredStart_.reset();
}

DragController::Origin DragController::originAt(Point point) const {
  if (model_.isSearching()) return Origin::none();
  const Layout& layout = model_.arrangement().layout();
  if (!model_.openFolderID().isEmpty() && !folderHidden_) {
    // Over the open folder only its apps can be pressed; the grid lies
    // behind it.
    const auto id = Uuid::parse(model_.openFolderID().toStdString());
    if (!id) return Origin::none();
    const auto found = std::find_if(layout.items.begin(), layout.items.end(), [&](const LayoutItem& item) {
      return item.asFolder() != nullptr && item.asFolder()->id == *id;
    });
    if (found == layout.items.end()) return Origin::none();
    const std::size_t count = found->asFolder()->appIDs.size();
    const GridGeometry geometry = folderGeometry(count);
    const Point local{point.x - folderGridFrame_.minX(), point.y - folderGridFrame_.minY()};
    const std::optional<std::int64_t> slot = geometry.slot(local);
    if (!slot || *slot >= static_cast<std::int64_t>(count) || !geometry.hitFrame(*slot).contains(local))
      return Origin::none();
    return Origin::inFolder(*id, *slot);
  }
  if (!gridFrame_.contains(point)) return Origin::none();
  const GridGeometry geometry = gridGeometry();
  const Point origin = gridOrigin();
  const Point local{point.x - origin.x, point.y - origin.y};
  const std::optional<std::int64_t> slot = geometry.slot(local);
  if (!slot || baseIndex() + *slot >= static_cast<Index>(layout.items.size())) return Origin::none();
  // Between the tiles is the background, which hides the overlay.
  if (!geometry.hitFrame(*slot).contains(local)) return Origin::none();
  return Origin::grid(*slot);
}

void DragController::click(const Origin& origin) {
  const Layout& layout = model_.arrangement().layout();
  switch (origin.kind) {
    case Origin::Kind::grid: {
      const Index index = baseIndex() + origin.slot;
      if (index < 0 || index >= static_cast<Index>(layout.items.size())) return;
      const LayoutItem& item = layout.items[static_cast<std::size_t>(index)];
      if (const Folder* folder = item.asFolder())
        model_.openFolder(QString::fromStdString(folder->id.text()));
      else
        model_.launch(QString::fromStdString(*item.appID()));
      break;
    }
    case Origin::Kind::folder: {
      for (const LayoutItem& item : layout.items) {
        const Folder* folder = item.asFolder();
        if (folder == nullptr || folder->id != origin.folder) continue;
        if (origin.appIndex >= 0 && origin.appIndex < static_cast<Index>(folder->appIDs.size()))
          model_.launch(QString::fromStdString(folder->appIDs[static_cast<std::size_t>(origin.appIndex)]));
        return;
      }
      break;
    }
    case Origin::Kind::none:
      break;
  }
}

// --- Lifting ----------------------------------------------------------------------

void DragController::scheduleLongPress(std::int64_t token) {
  longPress_ = clock_.runAfter(longPress, [this, token] {
    // A press that ended, or a later one, is not this press.
    if (press_ && press_->token == token && !lifted_) lift();
  });
}

void DragController::lift() {
  if (!press_ || lifted_ || !model_.canRearrange()) return;
  const Layout& layout = model_.arrangement().layout();
  const Origin& origin = press_->origin;
  if (origin.kind == Origin::Kind::grid) {
    std::optional<GridDrag> drag = GridDrag::make(layout, GridDrag::Source::item(baseIndex() + origin.slot));
    if (!drag) return;
    const GridGeometry geometry = gridGeometry();
    const Rect cell = geometry.cellFrame(origin.slot);
    const Point gridAt = gridOrigin();
    grabOffset_ = {press_->start.x - (gridAt.x + cell.midX()), press_->start.y - (gridAt.y + cell.midY())};
    lifted_ = drag->dragged;
    const ArrangementListModel& items = model_.itemsModel();
    const QModelIndex row = items.index(static_cast<int>(baseIndex() + origin.slot));
    liftedTile_ = {
        {QStringLiteral("name"), items.data(row, ArrangementListModel::NameRole)},
        {QStringLiteral("icon"), items.data(row, ArrangementListModel::IconSourceRole)},
        {QStringLiteral("folderIcons"), items.data(row, ArrangementListModel::FolderIconSourcesRole)}};
    edge_ = EdgeFlipTimer{};
    setPointer(lastLocation_);
    emit liftedChanged();
    setGrid(std::move(drag));
    startTicker();
  } else if (origin.kind == Origin::Kind::folder) {
    const auto found = std::find_if(layout.items.begin(), layout.items.end(), [&](const LayoutItem& item) {
      return item.asFolder() != nullptr && item.asFolder()->id == origin.folder;
    });
    if (found == layout.items.end()) return;
    const Folder& folder = *found->asFolder();
    if (origin.appIndex < 0 || origin.appIndex >= static_cast<Index>(folder.appIDs.size())) return;
    const GridGeometry geometry = folderGeometry(folder.appIDs.size());
    const Rect cell = geometry.cellFrame(origin.appIndex);
    grabOffset_ = {press_->start.x - (folderGridFrame_.minX() + cell.midX()),
                   press_->start.y - (folderGridFrame_.minY() + cell.midY())};
    lifted_ = LayoutItem::app(folder.appIDs[static_cast<std::size_t>(origin.appIndex)]);
    const FolderAppsModel& apps = model_.folderAppsModel();
    const QModelIndex row = apps.index(static_cast<int>(origin.appIndex));
    liftedTile_ = {{QStringLiteral("name"), apps.data(row, FolderAppsModel::NameRole)},
                   {QStringLiteral("icon"), apps.data(row, FolderAppsModel::IconSourceRole)},
                   {QStringLiteral("folderIcons"), QStringList()}};
    edge_ = EdgeFlipTimer{};
    setPointer(lastLocation_);
    emit liftedChanged();
    const auto count = static_cast<Index>(folder.appIDs.size());
    setFolder(FolderReorder{folder.id, folder.appIDs, origin.appIndex, layout,
                            DragPreview(count - 1, origin.appIndex)});
    startTicker();
  }
}

// --- Hovering ---------------------------------------------------------------------

void DragController::updateHover() {
  if (folder_) {
    if (!folderPanelFrame_.contains(pointer_)) {
      leaveFolder();
      return;
    }
    FolderReorder reorder = *folder_;
    const GridGeometry geometry = folderGeometry(reorder.appIDs.size());
    const Point local{pointer_.x - folderGridFrame_.minX(), pointer_.y - folderGridFrame_.minY()};
    if (const std::optional<std::int64_t> slot = geometry.slot(local)) {
      const DropZone zone = classifyDropZone(local, geometry.cellFrame(*slot));
      reorder.preview.hover(*slot, zone, [](Index) { return false; });  // no folders inside folders
    }
    setFolder(std::move(reorder));
    return;
  }
  if (!grid_) return;
  Point at = pointer_;
  if (model_.scrollMode()) {
    // Above or below the visible rows still addresses the first or last.
    at.x = std::clamp(at.x, gridFrame_.minX(), std::max(gridFrame_.minX(), gridFrame_.maxX() - 1));
    at.y = std::clamp(at.y, gridFrame_.minY(), std::max(gridFrame_.minY(), gridFrame_.maxY() - 1));
  }
  const GridGeometry geometry = gridGeometry();
  const Point origin = gridOrigin();
  const Point local{at.x - origin.x, at.y - origin.y};
  GridDrag drag = *grid_;
  if (const std::optional<std::int64_t> slot = geometry.slot(local)) {
    drag.hover(baseIndex() + *slot, classifyDropZone(local, geometry.cellFrame(*slot)));
  } else {
    drag.hoverOutside(model_.page(), std::max(model_.columns(), 1) * std::max(model_.rows(), 1));
  }
  setGrid(std::move(drag));
}

void DragController::leaveFolder() {
  if (!folder_ || !lifted_) return;
  const std::string* appID = lifted_->appID();
  std::optional<GridDrag> drag = appID
                                     ? GridDrag::make(model_.arrangement().layout(),
                                                      GridDrag::Source::folderApp(*appID, folder_->folderID))
                                     : std::nullopt;
  if (!drag) {
    cancel();
    return;
  }
  setFolder(std::nullopt);
  setGrid(std::move(drag));
  setFolderHidden(true);
  updateHover();
}

// --- Ticker -----------------------------------------------------------------------

void DragController::startTicker() {
  lastTick_ = seconds();
  ticker_ = clock_.runAfter(tickInterval, [this] { tick(); });
}

void DragController::tick() {
  if (!lifted_) return;
  const double now = seconds();
  const double dt = std::min(now - lastTick_, maxTickStep);
  lastTick_ = now;
  if (grid_) {
    if (model_.scrollMode()) {
      const double velocity = EdgeAutoScroll::velocity(pointer_.y, gridFrame_.minY(), gridFrame_.maxY());
      if (velocity != 0) {
        const double before = model_.scrollOffset();
        model_.scroll(dt * velocity, false);
        if (model_.scrollOffset() != before) updateHover();
      }
    } else if (overlayWidth_ > 0) {
      if (const std::optional<int> flip = edge_.update(pointer_.x, 0, overlayWidth_, now)) {
        const int before = model_.page();
        model_.goTo(before + *flip);
        // Held at the edge, the pages keep turning one dwell apart.
        if (model_.page() != before) edge_ = EdgeFlipTimer{};
        updateHover();
      }
    }
  }
  if (lifted_) ticker_ = clock_.runAfter(tickInterval, [this] { tick(); });
}

// --- Dropping ---------------------------------------------------------------------

void DragController::drop() {
  ArrangementController& arrangement = model_.arrangement();
  if (folder_) {
    const FolderReorder& reorder = *folder_;
    if (arrangement.layout() == reorder.base && reorder.preview.gap != reorder.from) {
      const Uuid id = reorder.folderID;
      const Index from = reorder.from;
      const Index to = reorder.preview.gap;
      arrangement.mutate([&](Layout& layout) { layout.moveInFolder(id, from, to); });
    }
    return;
  }
  if (!grid_) return;
  const GridDrag drag = *grid_;
  const bool fromFolder = drag.source.isFolderApp();
  if (arrangement.layout() == drag.base) {
    Layout result = arrangement.layout();
    drag.apply(result);
    if (result != arrangement.layout()) {
      // A drop onto an app makes a folder: the one folder id the result
      // has and the start had not.
      std::optional<Uuid> made;
      if (const std::optional<Index> target = drag.preview.mergeTarget;
          target && *target < static_cast<Index>(drag.remaining.size()) &&
          drag.remaining[static_cast<std::size_t>(*target)].appID() != nullptr) {
        for (const LayoutItem& item : result.items) {
          const Folder* folder = item.asFolder();
          if (folder == nullptr) continue;
          const bool known =
              std::any_of(drag.base.items.begin(), drag.base.items.end(), [&](const LayoutItem& old) {
                return old.asFolder() != nullptr && old.asFolder()->id == folder->id;
              });
          if (!known) made = folder->id;
        }
      }
      arrangement.mutate([&](Layout& layout) { layout = result; });
      if (fromFolder) model_.closeFolder();
      if (made) emit folderMade(QString::fromStdString(made->text()));
      return;
    }
  }
  if (fromFolder) model_.closeFolder();
}

void DragController::finish() {
  longPress_.cancel();
  ticker_.cancel();
  press_.reset();
  const bool wasLifted = lifted_.has_value();
  lifted_.reset();
  setGrid(std::nullopt);
  setFolder(std::nullopt);
  setFolderHidden(false);
  edge_ = EdgeFlipTimer{};
  if (wasLifted) emit liftedChanged();
}

// --- State ------------------------------------------------------------------------

void DragController::setPointer(Point location) {
  if (location == pointer_) return;
  pointer_ = location;
  emit pointerChanged();
}

void DragController::setGrid(std::optional<GridDrag> drag) {
  if (drag == grid_) return;
  grid_ = std::move(drag);
  emit previewChanged();
}

void DragController::setFolder(std::optional<FolderReorder> reorder) {
  if (reorder == folder_) return;
  folder_ = std::move(reorder);
  emit previewChanged();
}

void DragController::setFolderHidden(bool hidden) {
  if (hidden == folderHidden_) return;
  folderHidden_ = hidden;
  emit folderHiddenChanged();
}

QString DragController::liftedKey() const {
  if (!lifted_) return {};
  if (const Folder* folder = lifted_->asFolder())
    return QStringLiteral("folder:") + QString::fromStdString(folder->id.text());
  return QStringLiteral("app:") + QString::fromStdString(*lifted_->appID());
}

int DragController::draggedIndex() const {
  if (!grid_) return -1;
  const Index* index = grid_->source.itemIndex();
  return index != nullptr ? static_cast<int>(*index) : -1;
}

int DragController::mergeSlot() const {
  if (!grid_) return -1;
  const std::optional<Index> slot = grid_->mergeTargetSlot();
  return slot ? static_cast<int>(*slot) : -1;
}

void DragController::setGridFrame(const QRectF& frame) {
  if (fromQt(frame) == gridFrame_) return;
  gridFrame_ = fromQt(frame);
  emit framesChanged();
}

void DragController::setFolderGridFrame(const QRectF& frame) {
  if (fromQt(frame) == folderGridFrame_) return;
  folderGridFrame_ = fromQt(frame);
  emit framesChanged();
}

void DragController::setFolderPanelFrame(const QRectF& frame) {
  if (fromQt(frame) == folderPanelFrame_) return;
  folderPanelFrame_ = fromQt(frame);
  emit framesChanged();
}

void DragController::setOverlayWidth(double width) {
  if (width == overlayWidth_) return;
  overlayWidth_ = width;
  emit framesChanged();
}

// --- Geometry ---------------------------------------------------------------------

GridGeometry DragController::gridGeometry() const {
  const std::int64_t columns = std::max(model_.columns(), 1);
  const std::int64_t rows = std::max(model_.rows(), 1);
  if (model_.scrollMode()) {
    // One more than the items: the gap may stand after the last one.
    const auto count = static_cast<std::int64_t>(model_.arrangement().layout().items.size()) + 1;
    return ScrollGrid::geometry(count, columns, rows, gridFrame_.size, model_.iconSize());
  }
  return GridGeometry(gridFrame_.size, columns, rows, model_.iconSize());
}

Index DragController::baseIndex() const {
  if (model_.scrollMode()) return 0;
  return static_cast<Index>(model_.page()) * std::max(model_.columns(), 1) * std::max(model_.rows(), 1);
}

Point DragController::gridOrigin() const {
  // The scrolled content starts above the frame by the scroll offset.
  return {gridFrame_.minX(), gridFrame_.minY() - (model_.scrollMode() ? model_.scrollOffset() : 0)};
}

GridGeometry DragController::folderGeometry(std::size_t appCount) const {
  const std::int64_t columns = std::max(model_.folderColumns(), 1);
  const auto count = static_cast<std::int64_t>(std::max<std::size_t>(appCount, 1));
  const std::int64_t rows = (count + columns - 1) / columns;
  return GridGeometry(folderGridFrame_.size, columns, rows, model_.iconSize());
}

}  // namespace orrery::app
