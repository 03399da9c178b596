#include "Orrery/overlay/ArrangementListModel.h"

#include <QStringList>

#include <cstddef>
#include <utility>

namespace orrery::app {

namespace {

QString keyText(const LayoutItem& item) {
  if (const std::string* appID = item.appID()) return QStringLiteral("app:") + QString::fromStdString(*appID);
  return QStringLiteral("folder:") + QString::fromStdString(item.asFolder()->id.text());
}

}  // namespace

ArrangementListModel::ArrangementListModel(ArrangementController& arrangement, QObject* parent)
    : DiffReplayingListModel(parent), items_(arrangement.layout().items) {
  connect(&arrangement, &ArrangementController::layoutChanged, this,
          [this, &arrangement](const LayoutDiff& diff) { replay(diff, arrangement.layout()); });
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

void ArrangementListModel::replay(const LayoutDiff& diff, const Layout& after) {
  replayRows(items_, diff, after.items, [this, &after](Index at, LayoutChange::Kind kind) {
    items_[static_cast<std::size_t>(at)] = after.items[static_cast<std::size_t>(at)];
    const QModelIndex changed = index(row(at));
    emit dataChanged(changed, changed,
                     kind == LayoutChange::Kind::renamed
                         ? QList<int>{FolderNameRole, NameRole}
                         : QList<int>{FolderAppIDsRole, FolderIconSourcesRole});
  });
}

}  // namespace orrery::app
