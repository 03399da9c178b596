#include "Orrery/overlay/OverlayModel.h"

#include <algorithm>
#include <utility>

#include "Orrery/base/QtClock.h"

namespace orrery::app {

namespace {

bool isBlank(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
}

}  // namespace

OverlayModel::OverlayModel(ArrangementController& arrangement, QObject* parent)
    : OverlayModel(arrangement, *new QtClock, parent) {
  ownClock_.reset(&drag_->clock());
}

OverlayModel::OverlayModel(ArrangementController& arrangement, Clock& clock, QObject* parent)
    : QObject(parent),
      state_(Layout::empty(), {}, 1, 1),
      arrangement_(arrangement),
      items_(arrangement),
      trash_(arrangement),
      drag_(std::make_unique<DragController>(*this, clock)) {
  connect(&arrangement_, &ArrangementController::layoutChanged, this, &OverlayModel::arrangementChanged);
  connect(&trash_, &TrashFlow::selectionChanged, this, [this, selecting = false]() mutable {
    if (std::exchange(selecting, trash_.selecting()) != trash_.selecting()) emit canRearrangeChanged();
  });
  connect(&trash_, &TrashFlow::folderMade, this, &OverlayModel::openFolder);
  // A folder made by a drop opens with its name ready to be typed over.
  connect(drag_.get(), &DragController::folderMade, this, [this](const QString& folderID) {
    openFolder(folderID);
    ++renameRequest_;
    emit renameRequestChanged();
  });
}

// The drag controller goes first: it refers to the clock and to this model.
OverlayModel::~OverlayModel() { drag_.reset(); }

QObject* OverlayModel::pageItems(int page) {
  page = std::max(page, 0);
  auto& model = pages_[page];
  if (model == nullptr) {
    model = new ArrangementListModel(arrangement_, this);
    model->setApps(apps_);
    if (iconSource_) model->setIconSource(iconSource_);
    const Index perPage = state_.perPage();
    model->setWindow(page * perPage, perPage);
  }
  return model;
}

void OverlayModel::forEachItemModel(const std::function<void(ArrangementListModel&)>& action) {
  action(items_);
  for (auto& [page, model] : pages_) action(*model);
}

std::vector<AppInfo> OverlayModel::appList() const {
  std::vector<AppInfo> apps;
  apps.reserve(apps_.size());
  for (const auto& [id, app] : apps_) apps.push_back(app);
  return apps;
}

void OverlayModel::sync(const Layout& layout, const AppMap& apps, const Settings& settings) {
  const std::int64_t oldPage = state_.page();
  const std::int64_t oldCount = state_.pageCount();
  const bool searching = isSearching();

  const bool gridChanges =
      settings.columns != columns_ || settings.rows != rows_ || settings.iconSize != iconSize_;
  const bool appsChange = apps != apps_;
  if (appsChange || gridChanges || layout != state_.layout()) {
    if (appsChange) {
      apps_ = apps;
      trash_.setApps(apps_);
      forEachItemModel([this](ArrangementListModel& model) { model.setApps(apps_); });
      folderApps_.setApps(apps_);
    }
    state_.update(layout, appList(), settings.columns, settings.rows);
    const Index perPage = state_.perPage();
    for (auto& [page, model] : pages_) model->setWindow(page * perPage, perPage);
    refreshResults();
  }
  if (gridChanges) {
    columns_ = settings.columns;
    rows_ = settings.rows;
    iconSize_ = settings.iconSize;
    emit gridChanged();
  }
  if (settings.animations != animations_) {
    animations_ = settings.animations;
    emit animationsChanged();
  }
  if (settings.layoutMode != layoutMode_) {
    layoutMode_ = settings.layoutMode;
    emit scrollModeChanged();
  }
  // A folder that went away (dissolved, merged elsewhere) cannot stay open.
  if (!openFolderID_.isEmpty()) {
    const auto open = Uuid::parse(openFolderID_.toStdString());
    const bool exists =
        open && std::any_of(layout.items.begin(), layout.items.end(), [&](const LayoutItem& item) {
          return item.asFolder() != nullptr && item.asFolder()->id == *open;
        });
    if (!exists) closeFolder();
  }
  announcePaging(oldPage, oldCount);
  if (searching != isSearching()) emit isSearchingChanged();
  if (gridChanges) emit folderColumnsChanged();
  refreshSortAbility();
}

void OverlayModel::setQuery(const QString& query) {
  std::string text = query.toStdString();
  if (text == state_.query()) return;
  const bool wasSearching = isSearching();
  state_.setQuery(std::move(text));
  emit queryChanged();
  if (isSearching() != wasSearching) {
    emit isSearchingChanged();
    emit canRearrangeChanged();
  }
  // What the user types is about apps, wherever they are: a folder or a
  // menu in the way closes, and the keyboard is the search field's.
  if (isSearching()) {
    drag_->cancel();
    closeMenu();
    closeFolder();
    setFocusedIndex(-1);
  }
  refreshResults();
  refreshSortAbility();
}

bool OverlayModel::isSearching() const { return !isBlank(state_.query()); }

void OverlayModel::refreshResults() {
  std::vector<AppInfo> results;
  if (isSearching()) {
    // The results fill one page of the grid, best first; building tiles for
    // the hundreds of apps a single letter matches would cost frames for
    // nothing anyone sees.
    const AppSearch::Results found = state_.searchResults();
    const auto shown = static_cast<std::size_t>(state_.perPage());
    for (auto result = found.begin(); result != found.end() && results.size() < shown; ++result)
      results.push_back(*result);
  }
  const std::size_t before = searchResults_.results().size();
  searchResults_.setResults(std::move(results));
  if (searchResults_.results().size() != before) emit resultCountChanged();
}

void OverlayModel::setIconSource(const std::function<QString(const AppInfo&)>& iconSource) {
  iconSource_ = iconSource;
  forEachItemModel([&](ArrangementListModel& model) { model.setIconSource(iconSource); });
  searchResults_.setIconSource(iconSource);
  folderApps_.setIconSource(iconSource);
}

void OverlayModel::goTo(int page) {
  const std::int64_t oldPage = state_.page();
  state_.goTo(page);
  announcePaging(oldPage, state_.pageCount());
  // A focused tile left behind on another page is no longer where the
  // keys act.
  if (openFolderID_.isEmpty() && !scrollMode() && focusedIndex_ >= 0 &&
      focusedIndex_ / static_cast<int>(state_.perPage()) != this->page())
    setFocusedIndex(-1);
}

void OverlayModel::announcePaging(std::int64_t oldPage, std::int64_t oldCount) {
  if (state_.pageCount() != oldCount) emit pageCountChanged();
  if (state_.page() != oldPage) emit pageChanged();
}

void OverlayModel::requestFocus() {
  ++focusRequest_;
  emit focusRequestChanged();
}

void OverlayModel::openFolder(const QString& folderID) {
  const Folder* folder = findFolder(folderID);
  if (folder == nullptr) return;
  const QString id = QString::fromStdString(folder->id.text());
  if (id == openFolderID_) return;
  closeFolder();
  // Closing may have renamed the other folder, which moves no item; look
  // this one up again all the same.
  folder = findFolder(id);
  if (folder == nullptr) return;
  setFolderNameDraft(QString::fromStdString(folder->name));
  openFolderID_ = id;
  folderApps_.show(folder);
  setFocusedIndex(-1);
  emit openFolderIDChanged();
  emit folderColumnsChanged();
}

void OverlayModel::closeFolder() {
  if (openFolderID_.isEmpty()) return;
  commitFolderName();
  openFolderID_.clear();
  folderApps_.show(nullptr);
  setFocusedIndex(-1);
  emit openFolderIDChanged();
}

void OverlayModel::setViewport(double viewportHeight, double contentHeight) {
  if (viewportHeight == scroll_.viewportHeight && contentHeight == scroll_.contentHeight) return;
  scroll_.viewportHeight = viewportHeight;
  scroll_.contentHeight = contentHeight;
  setScrollOffset(scroll_.offset, false);
  emit scrollChanged();
}

void OverlayModel::scroll(double by, bool animated) { setScrollOffset(scroll_.offset + by, animated); }

void OverlayModel::resetScroll() { setScrollOffset(0, false); }

double OverlayModel::scrollPageStep() const {
  return ScrollGrid::pageStep(scroll_.viewportHeight, std::max<std::int64_t>(rows_, 1));
}

void OverlayModel::setScrollOffset(double offset, bool animated) {
  const double clamped = ScrollGrid::clampedOffset(offset, scroll_.contentHeight, scroll_.viewportHeight);
  if (clamped == scroll_.offset && animated == scrollAnimated_) return;
  scroll_.offset = clamped;
  scrollAnimated_ = animated;
  emit scrollChanged();
}

bool OverlayModel::handleEscape() {
  // A lifted item goes back; the release that follows is no click.
  if (drag_->isLifted()) {
    drag_->cancel();
    return true;
  }
  if (menuOpen()) {
    closeMenu();
    return true;
  }
  if (!openFolderID_.isEmpty()) {
    closeFolder();
    return true;
  }
  if (trash_.selecting()) {
    exitSelection();
    return true;
  }
  // The search text stays: Esc hides the overlay, the query is still there
  // next time.
  return false;
}

void OverlayModel::launchOnEnter() {
  if (trash_.selecting()) return;
  if (const std::optional<AppInfo> app = state_.appToLaunchOnEnter()) emit launchRequested(*app);
}

void OverlayModel::launch(const QString& appID) {
  // While ticking apps, a click ticks.
  if (trash_.selecting()) {
    trash_.toggleSelection(appID);
    return;
  }
  const auto found = apps_.find(appID.toStdString());
  if (found != apps_.end()) emit launchRequested(found->second);
}

void OverlayModel::setMessage(const QString& message) {
  if (message == message_) return;
  message_ = message;
  emit messageChanged();
}

// --- Folders ---------------------------------------------------------------------

const Folder* OverlayModel::findFolder(const QString& folderID) const {
  const auto id = Uuid::parse(folderID.toStdString());
  if (!id) return nullptr;
  for (const LayoutItem& item : arrangement_.layout().items)
    if (const Folder* folder = item.asFolder(); folder != nullptr && folder->id == *id) return folder;
  return nullptr;
}

void OverlayModel::setFolderNameDraft(const QString& draft) {
  if (draft == folderNameDraft_) return;
  folderNameDraft_ = draft;
  emit folderNameDraftChanged();
}

void OverlayModel::commitFolderName() {
  const Folder* folder = currentFolder();
  if (folder == nullptr) return;
  const std::string name = Folder::normalizedName(folderNameDraft_.toStdString());
  setFolderNameDraft(QString::fromStdString(name));
  if (name == folder->name) return;
  const Uuid id = folder->id;
  arrangement_.mutate([&](Layout& layout) { layout.renameFolder(id, name); });
}

int OverlayModel::folderColumns() const {
  const auto apps = static_cast<std::int64_t>(folderApps_.appIDs().size());
  return static_cast<int>(std::clamp<std::int64_t>(apps, 1, std::max<std::int64_t>(columns_, 1)));
}

void OverlayModel::arrangementChanged() {
  const Folder* folder = currentFolder();
  if (!openFolderID_.isEmpty() && folder == nullptr) {
    // Dissolved, emptied by a hide, or gone with a scan: nothing left to show.
    closeFolder();
  } else if (folder != nullptr) {
    const int columns = folderColumns();
    folderApps_.show(folder);
    if (columns != folderColumns()) emit folderColumnsChanged();
  }
  // Any change other than the sort itself ends the offer to undo it.
  if (sortUndo_ && !sortUndo_->canUndo(arrangement_.layout())) {
    sortUndo_.reset();
    emit canUndoSortChanged();
  }
  if (focusedIndex_ >= focusCount()) setFocusedIndex(focusCount() - 1);
  refreshSortAbility();
}

// --- Edits ------------------------------------------------------------------------

void OverlayModel::hide(const QString& appID) {
  const std::string id = appID.toStdString();
  arrangement_.mutate([&](Layout& layout) { layout.hide(id); });
}

void OverlayModel::removeFromFolder(const QString& appID) {
  const Folder* folder = currentFolder();
  if (folder == nullptr) return;
  const Uuid id = folder->id;
  const std::string app = appID.toStdString();
  arrangement_.mutate([&](Layout& layout) { layout.takeOut(app, id); });
}

void OverlayModel::dissolveFolder(const QString& folderID) {
  const Folder* folder = findFolder(folderID);
  if (folder == nullptr) return;
  const Uuid id = folder->id;
  arrangement_.mutate([&](Layout& layout) { layout.dissolveFolder(id); });
}

// --- Sorting ----------------------------------------------------------------------

bool OverlayModel::canSortByName() const {
  // A sort of one item is no sort; while searching the grid is not shown.
  return canRearrange() && arrangement_.layout().items.size() >= 2;
}

void OverlayModel::refreshSortAbility() {
  if (canSortByName() == canSort_) return;
  canSort_ = !canSort_;
  emit canSortByNameChanged();
}

void OverlayModel::sortByName() {
  if (!canSortByName()) return;
  const Layout before = arrangement_.layout();
  const Layout sorted = before.sortedByName([this](const std::string& appID) -> std::optional<std::string> {
    const auto found = apps_.find(appID);
    if (found == apps_.end()) return std::nullopt;
    return found->second.name;
  });
  arrangement_.mutate([&](Layout& layout) { layout = sorted; });
  // What the arrangement became is what undo compares with later.
  const bool offered = sortUndo_.has_value();
  sortUndo_ = SortUndo{before, arrangement_.layout()};
  if (!offered) emit canUndoSortChanged();
}

void OverlayModel::undoSort() {
  if (!sortUndo_) return;
  const std::optional<Layout> restored = sortUndo_->restored(arrangement_.layout());
  sortUndo_.reset();
  emit canUndoSortChanged();
  if (restored) arrangement_.mutate([&](Layout& layout) { layout = *restored; });
}

// --- Keyboard focus on tiles ------------------------------------------------------

int OverlayModel::focusCount() const {
  if (!openFolderID_.isEmpty()) return static_cast<int>(folderApps_.appIDs().size());
  if (isSearching()) return 0;
  return static_cast<int>(arrangement_.layout().items.size());
}

void OverlayModel::setFocusedIndex(int index) {
  if (index < -1) index = -1;
  if (index == focusedIndex_) return;
  focusedIndex_ = index;
  emit focusedIndexChanged();
}

bool OverlayModel::moveFocus(int across, int down) {
  if (isSearching() || menuOpen()) return false;
  const int count = focusCount();
  if (count == 0) return false;
  const bool inFolder = !openFolderID_.isEmpty();
  const int perRow = inFolder ? folderColumns() : std::max(this->columns(), 1);
  // Pages bound the walk up and down; in a folder or a scrolling grid the
  // whole list is one page.
  const bool paged = !inFolder && !scrollMode();
  const int perPage = paged ? static_cast<int>(state_.perPage()) : count;
  if (focusedIndex_ < 0) {
    // From the search field, Down enters the grid at the top left of what
    // is shown; the other keys keep their meaning, except over an open
    // folder, where every arrow enters it.
    if (down <= 0 && !inFolder) return false;
    setFocusedIndex(paged ? std::min(page() * perPage, count - 1) : 0);
    return true;
  }
  const int current = focusedIndex_;
  int target = current;
  if (across != 0) {
    // Left and right run on through the rows and over to the next page.
    target = std::clamp(current + across, 0, count - 1);
  } else if (down != 0) {
    const int pageStart = current / perPage * perPage;
    const int pageEnd = std::min(pageStart + perPage, count);  // one past the last tile of the page
    const int slot = current - pageStart;
    const int row = slot / perRow;
    const int lastRow = (pageEnd - pageStart - 1) / perRow;
    const int newRow = row + down;
    if (newRow < 0) {
      // Up from the top row gives the keyboard back to the search field.
      setFocusedIndex(-1);
      return true;
    }
    if (newRow > lastRow) return true;  // the bottom of the page: stay
    target = std::min(pageStart + newRow * perRow + slot % perRow, pageEnd - 1);
  }
  setFocusedIndex(target);
  if (paged && target / perPage != page()) {
    const std::int64_t oldPage = state_.page();
    state_.goTo(target / perPage);
    announcePaging(oldPage, state_.pageCount());
  }
  if (!inFolder && scrollMode() && scroll_.viewportHeight > 0) {
    // Keep the focused row in view.
    const double rowHeight = ScrollGrid::rowHeight(scroll_.viewportHeight, std::max<std::int64_t>(rows_, 1));
    const double top = (target / perRow) * rowHeight;
    if (top < scroll_.offset)
      setScrollOffset(top, true);
    else if (top + rowHeight > scroll_.offset + scroll_.viewportHeight)
      setScrollOffset(top + rowHeight - scroll_.viewportHeight, true);
  }
  return true;
}

bool OverlayModel::activateFocused() {
  if (focusedIndex_ < 0 || isSearching()) return false;
  const auto index = static_cast<std::size_t>(focusedIndex_);
  if (!openFolderID_.isEmpty()) {
    if (index < folderApps_.appIDs().size()) launch(QString::fromStdString(folderApps_.appIDs()[index]));
    return true;
  }
  const Layout& layout = arrangement_.layout();
  if (index >= layout.items.size()) return false;
  if (const Folder* folder = layout.items[index].asFolder())
    openFolder(QString::fromStdString(folder->id.text()));
  else
    launch(QString::fromStdString(*layout.items[index].appID()));
  return true;
}

// --- Context menus ----------------------------------------------------------------

namespace {

// "Move to Trash …" starts the selection mode with the app ticked; where
// the platform cannot trash, it shows but cannot be chosen.
OverlayModel::MenuEntry trashEntry(bool available) {
  return {OverlayModel::tr("Move to Trash …"), OverlayModel::MenuAction::moveToTrash, available};
}

}  // namespace

void OverlayModel::makeFolderFromSelection() { trash_.makeFolderFromSelection(); }

void OverlayModel::openItemMenu(int index, double x, double y) {
  const Layout& layout = arrangement_.layout();
  if (index < 0 || static_cast<std::size_t>(index) >= layout.items.size() || isSearching()) return;
  const LayoutItem& item = layout.items[static_cast<std::size_t>(index)];
  if (const Folder* folder = item.asFolder()) {
    menuTarget_ = {{}, QString::fromStdString(folder->id.text())};
    showMenu({{tr("Open"), MenuAction::open, true},
              {tr("Rename"), MenuAction::rename, true},
              {tr("Dissolve Folder"), MenuAction::dissolveFolder, true}},
             x, y, false);
  } else {
    menuTarget_ = {*item.appID(), {}};
    showMenu({{tr("Open"), MenuAction::open, true},
              {tr("Hide"), MenuAction::hide, true},
              trashEntry(trash_.available())},
             x, y, false);
  }
}

void OverlayModel::openFolderAppMenu(int index, double x, double y) {
  const std::vector<std::string>& apps = folderApps_.appIDs();
  if (openFolderID_.isEmpty() || index < 0 || static_cast<std::size_t>(index) >= apps.size()) return;
  menuTarget_ = {apps[static_cast<std::size_t>(index)], openFolderID_};
  showMenu({{tr("Open"), MenuAction::open, true},
            {tr("Hide"), MenuAction::hide, true},
            {tr("Remove from Folder"), MenuAction::removeFromFolder, true},
            trashEntry(trash_.available())},
           x, y, false);
}

void OverlayModel::openResultMenu(int index, double x, double y) {
  const std::vector<AppInfo>& results = searchResults_.results();
  if (!isSearching() || index < 0 || static_cast<std::size_t>(index) >= results.size()) return;
  menuTarget_ = {results[static_cast<std::size_t>(index)].id, {}};
  showMenu({{tr("Open"), MenuAction::open, true},
            {tr("Hide"), MenuAction::hide, true},
            trashEntry(trash_.available())},
           x, y, false);
}

void OverlayModel::openGridMenu(double x, double y) {
  if (!openFolderID_.isEmpty() || isSearching()) return;
  menuTarget_ = {};
  showMenu({{tr("Sort by Name …"), MenuAction::sortByName, canSortByName()}}, x, y, false);
}

void OverlayModel::openMenuAtFocus() {
  if (isSearching()) {
    openResultMenu(0, 0, 0);
  } else if (focusedIndex_ >= 0) {
    if (!openFolderID_.isEmpty())
      openFolderAppMenu(focusedIndex_, 0, 0);
    else
      openItemMenu(focusedIndex_, 0, 0);
  } else {
    openGridMenu(0, 0);
  }
  if (menuOpen()) {
    menuAtFocus_ = focusedIndex_ >= 0 || isSearching();
    emit menuChanged();
  }
}

void OverlayModel::showMenu(std::vector<MenuEntry> entries, double x, double y, bool atFocus) {
  menu_ = std::move(entries);
  const auto enabled =
      std::find_if(menu_.begin(), menu_.end(), [](const MenuEntry& entry) { return entry.enabled; });
  menuIndex_ = enabled == menu_.end() ? -1 : static_cast<int>(enabled - menu_.begin());
  menuX_ = x;
  menuY_ = y;
  menuAtFocus_ = atFocus;
  emit menuChanged();
}

void OverlayModel::closeMenu() {
  if (!menuOpen()) return;
  menu_.clear();
  menuTarget_ = {};
  emit menuChanged();
}

void OverlayModel::moveMenuSelection(int by) {
  if (!menuOpen() || by == 0) return;
  const int count = static_cast<int>(menu_.size());
  int index = menuIndex_;
  for (int step = 0; step < count; ++step) {
    index = ((index + (by > 0 ? 1 : -1)) % count + count) % count;
    if (menu_[static_cast<std::size_t>(index)].enabled) break;
  }
  if (index < 0 || !menu_[static_cast<std::size_t>(index)].enabled || index == menuIndex_) return;
  menuIndex_ = index;
  emit menuChanged();
}

QVariantList OverlayModel::menuEntries() const {
  QVariantList entries;
  for (const MenuEntry& entry : menu_)
    entries.push_back(
        QVariantMap{{QStringLiteral("title"), entry.title}, {QStringLiteral("enabled"), entry.enabled}});
  return entries;
}

void OverlayModel::chooseMenuEntry(int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= menu_.size()) return;
  const MenuEntry entry = menu_[static_cast<std::size_t>(index)];
  const MenuTarget target = menuTarget_;
  closeMenu();
  if (!entry.enabled) return;
  const QString appID = QString::fromStdString(target.appID);
  switch (entry.action) {
    case MenuAction::open:
      if (!appID.isEmpty())
        launch(appID);
      else
        openFolder(target.folderID);
      break;
    case MenuAction::hide:
      hide(appID);
      break;
    case MenuAction::removeFromFolder:
      removeFromFolder(appID);
      break;
    case MenuAction::moveToTrash:
      // An open folder stays: its apps are ticked where they are.
      enterSelection(target.appID);
      break;
    case MenuAction::rename:
      openFolder(target.folderID);
      ++renameRequest_;
      emit renameRequestChanged();
      break;
    case MenuAction::dissolveFolder:
      dissolveFolder(target.folderID);
      break;
    case MenuAction::sortByName:
      emit sortRequested();
      break;
  }
}

void OverlayModel::setSearchTop(double top) {
  if (top == searchTop_) return;
  searchTop_ = top;
  emit searchTopChanged();
}

}  // namespace orrery::app
