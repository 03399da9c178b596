#include "Orrery/overlay/OverlayModel.h"

#include <algorithm>
#include <utility>

namespace orrery::app {

namespace {

bool isBlank(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
}

}  // namespace

OverlayModel::OverlayModel(ArrangementController& arrangement, QObject* parent)
    : QObject(parent), state_(Layout::empty(), {}, 1, 1), arrangement_(arrangement), items_(arrangement) {}

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
      forEachItemModel([this](ArrangementListModel& model) { model.setApps(apps_); });
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
  // What the user types is about apps, wherever they are: a folder in the
  // way closes.
  if (isSearching()) closeFolder();
  refreshResults();
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
}

void OverlayModel::goTo(int page) {
  const std::int64_t oldPage = state_.page();
  state_.goTo(page);
  announcePaging(oldPage, state_.pageCount());
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
  const auto id = Uuid::parse(folderID.toStdString());
  if (!id || folderID == openFolderID_) return;
  const Layout& layout = state_.layout();
  const bool exists = std::any_of(layout.items.begin(), layout.items.end(), [&](const LayoutItem& item) {
    return item.asFolder() != nullptr && item.asFolder()->id == *id;
  });
  if (!exists) return;
  openFolderID_ = QString::fromStdString(id->text());
  emit openFolderIDChanged();
}

void OverlayModel::closeFolder() {
  if (openFolderID_.isEmpty()) return;
  openFolderID_.clear();
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
  if (!openFolderID_.isEmpty()) {
    closeFolder();
    return true;
  }
  // The search text stays: Esc hides the overlay, the query is still there
  // next time.
  return false;
}

void OverlayModel::launchOnEnter() {
  if (const std::optional<AppInfo> app = state_.appToLaunchOnEnter()) emit launchRequested(*app);
}

void OverlayModel::launch(const QString& appID) {
  const auto found = apps_.find(appID.toStdString());
  if (found != apps_.end()) emit launchRequested(found->second);
}

void OverlayModel::setMessage(const QString& message) {
  if (message == message_) return;
  message_ = message;
  emit messageChanged();
}

}  // namespace orrery::app
