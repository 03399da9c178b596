#include "Orrery/overlay/FolderAppsModel.h"

#include <cstddef>
#include <utility>

#include "OrreryCore/arrangement/LayoutDiff.h"

namespace orrery::app {

namespace {

// A folder's apps as a top-level arrangement, so the arrangement's diff
// finds the fewest row changes between two versions of the folder.
Layout asLayout(const std::vector<std::string>& appIDs) {
  Layout layout;
  layout.items.reserve(appIDs.size());
  for (const std::string& appID : appIDs) layout.items.push_back(LayoutItem::app(appID));
  return layout;
}

}  // namespace

FolderAppsModel::FolderAppsModel(QObject* parent) : DiffReplayingListModel(parent) {}

void FolderAppsModel::show(const Folder* folder) {
  const std::vector<std::string> next = folder != nullptr ? folder->appIDs : std::vector<std::string>{};
  if (next == appIDs_) return;
  // Apps are matched by ID; the rows hold nothing else that could change.
  replayRows(appIDs_, diff(asLayout(appIDs_), asLayout(next)), next, [](Index, LayoutChange::Kind) {});
}

void FolderAppsModel::setApps(const std::unordered_map<std::string, AppInfo>& apps) {
  if (apps == apps_) return;
  const std::unordered_map<std::string, AppInfo> before = std::exchange(apps_, apps);
  for (std::size_t i = 0; i < appIDs_.size(); ++i) {
    const auto then = before.find(appIDs_[i]);
    const auto now = apps_.find(appIDs_[i]);
    const bool same = (then == before.end() || now == apps_.end())
                          ? (then == before.end()) == (now == apps_.end())
                          : then->second == now->second;
    if (!same)
      emit dataChanged(index(static_cast<int>(i)), index(static_cast<int>(i)), {NameRole, IconSourceRole});
  }
}

void FolderAppsModel::setIconSource(IconSource iconSource) {
  iconSource_ = std::move(iconSource);
  announceAll({IconSourceRole});
}

void FolderAppsModel::announceAll(const QList<int>& roles) {
  if (!appIDs_.empty()) emit dataChanged(index(0), index(static_cast<int>(appIDs_.size()) - 1), roles);
}

const AppInfo* FolderAppsModel::app(const std::string& appID) const {
  const auto found = apps_.find(appID);
  return found == apps_.end() ? nullptr : &found->second;
}

int FolderAppsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(appIDs_.size());
}

QVariant FolderAppsModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
  const std::string& appID = appIDs_[static_cast<std::size_t>(index.row())];
  const AppInfo* known = app(appID);
  switch (role) {
    case AppIDRole:
      return QString::fromStdString(appID);
    case NameRole:
    case Qt::DisplayRole:
      return QString::fromStdString(known != nullptr ? known->name : appID);
    case IconSourceRole:
      return known != nullptr && iconSource_ ? iconSource_(*known) : QString();
    default:
      return {};
  }
}

QHash<int, QByteArray> FolderAppsModel::roleNames() const {
  return {{AppIDRole, "appID"}, {NameRole, "name"}, {IconSourceRole, "iconSource"}};
}

}  // namespace orrery::app
