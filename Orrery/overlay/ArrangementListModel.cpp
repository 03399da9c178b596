#include "Orrery/overlay/ArrangementListModel.h"

#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace orrery::app {

namespace {

QString keyText(const LayoutItem& item) {
  if (const std::string* appID = item.appID()) return QStringLiteral("app:") + QString::fromStdString(*appID);
  return QStringLiteral("folder:") + QString::fromStdString(item.asFolder()->id.text());
}

LayoutDiff diffOfItems(const std::vector<LayoutItem>& before, const std::vector<LayoutItem>& after) {
  Layout then;
  then.items = before;
  Layout now;
  now.items = after;
  return diff(then, now);
}

}  // namespace

ArrangementListModel::ArrangementListModel(ArrangementController& arrangement, QObject* parent)
    : DiffReplayingListModel(parent), arrangement_(arrangement), items_(arrangement.layout().items) {
  connect(&arrangement, &ArrangementController::layoutChanged, this,
          [this](const LayoutDiff& diff) { follow(diff, arrangement_.layout()); });
}

void ArrangementListModel::setWindow(Index first, Index count) {
  const Window window{std::max<Index>(first, 0), std::max<Index>(count, 0)};
  if (window_ && window_->first == window.first && window_->count == window.count) return;
  window_ = window;
  std::vector<LayoutItem> after = windowOf(arrangement_.layout().items);
  replay(diffOfItems(items_, after), after);
}

std::vector<LayoutItem> ArrangementListModel::windowOf(const std::vector<LayoutItem>& items) const {
  if (!window_) return items;
  const auto size = static_cast<Index>(items.size());
  const Index first = std::min(window_->first, size);
  const Index last = std::min(window_->first + window_->count, size);
  return {items.begin() + offset(first), items.begin() + offset(last)};
}

void ArrangementListModel::follow(const LayoutDiff& diff, const Layout& after) {
  if (!window_) {
    replay(diff, after.items);
    return;
  }
  // The whole list's script does not fit a window (an insertion before it
  // pushes one item in and another out), so the window is compared anew;
  // it is one page, a few dozen items.
  std::vector<LayoutItem> shown = windowOf(after.items);
  replay(diffOfItems(items_, shown), shown);
}

int ArrangementListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(items_.size());
}

QVariant ArrangementListModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
  const LayoutItem& item = items_[static_cast<std::size_t>(index.row())];
  const Folder* folder = item.asFolder();
  switch (role) {
    case KeyRole:
      return keyText(item);
    case IsFolderRole:
      return folder != nullptr;
    case AppIDRole:
      return folder != nullptr ? QString() : QString::fromStdString(*item.appID());
    case FolderIDRole:
      return folder != nullptr ? QString::fromStdString(folder->id.text()) : QString();
    case FolderNameRole:
      return folder != nullptr ? QString::fromStdString(folder->name) : QString();
    case NameRole: {
      if (folder != nullptr) return QString::fromStdString(folder->name);
      const AppInfo* known = app(*item.appID());
      return QString::fromStdString(known != nullptr ? known->name : *item.appID());
    }
    case IconSourceRole:
      return folder != nullptr ? QString() : iconSource(*item.appID());
    case FolderIconSourcesRole: {
      QStringList sources;
      if (folder != nullptr)
        for (const std::string& appID : folder->appIDs) sources.push_back(iconSource(appID));
      return sources;
    }
    case FolderAppIDsRole: {
      QStringList appIDs;
      if (folder != nullptr) {
        appIDs.reserve(static_cast<qsizetype>(folder->appIDs.size()));
        for (const std::string& appID : folder->appIDs) appIDs.push_back(QString::fromStdString(appID));
      }
      return appIDs;
    }
    default:
      return {};
  }
}

QHash<int, QByteArray> ArrangementListModel::roleNames() const {
  return {{KeyRole, "itemKey"},
          {IsFolderRole, "isFolder"},
          {AppIDRole, "appID"},
          {FolderIDRole, "folderID"},
          {FolderNameRole, "folderName"},
          {FolderAppIDsRole, "folderAppIDs"},
          {NameRole, "name"},
          {IconSourceRole, "iconSource"},
          {FolderIconSourcesRole, "folderIconSources"}};
}

void ArrangementListModel::setApps(const std::unordered_map<std::string, AppInfo>& apps) {
  if (apps == apps_) return;
  const std::unordered_map<std::string, AppInfo> before = std::exchange(apps_, apps);
  const auto same = [&](const std::string& appID) {
    const auto then = before.find(appID);
    const auto now = apps_.find(appID);
    if (then == before.end() || now == apps_.end()) return (then == before.end()) == (now == apps_.end());
    return then->second == now->second;
  };
  // Announce the span of rows whose apps changed, folders with such apps
  // included.
  int first = -1;
  int last = -1;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    bool changed = false;
    if (const std::string* appID = items_[i].appID())
      changed = !same(*appID);
    else
      for (const std::string& member : items_[i].asFolder()->appIDs) changed = changed || !same(member);
    if (!changed) continue;
    if (first < 0) first = static_cast<int>(i);
    last = static_cast<int>(i);
  }
  if (first >= 0)
    emit dataChanged(index(first), index(last), {NameRole, IconSourceRole, FolderIconSourcesRole});
}

void ArrangementListModel::setIconSource(IconSource iconSource) {
  iconSource_ = std::move(iconSource);
  if (!items_.empty())
    emit dataChanged(index(0), index(static_cast<int>(items_.size()) - 1),
                     {IconSourceRole, FolderIconSourcesRole});
}

const AppInfo* ArrangementListModel::app(const std::string& appID) const {
  const auto found = apps_.find(appID);
  return found == apps_.end() ? nullptr : &found->second;
}

QString ArrangementListModel::iconSource(const std::string& appID) const {
  const AppInfo* known = app(appID);
  return known != nullptr && iconSource_ ? iconSource_(*known) : QString();
}

void ArrangementListModel::replay(const LayoutDiff& diff, const std::vector<LayoutItem>& after) {
  replayRows(items_, diff, after, [this, &after](Index at, LayoutChange::Kind kind) {
    items_[static_cast<std::size_t>(at)] = after[static_cast<std::size_t>(at)];
    const QModelIndex changed = index(row(at));
    emit dataChanged(changed, changed,
                     kind == LayoutChange::Kind::renamed
                         ? QList<int>{FolderNameRole, NameRole}
                         : QList<int>{FolderAppIDsRole, FolderIconSourcesRole});
  });
}

}  // namespace orrery::app
