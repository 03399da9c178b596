#include "Orrery/overlay/ArrangementListModel.h"

#include <QStringList>

#include <cstddef>

#include "Orrery/overlay/DiffReplay.h"

namespace orrery::app {

namespace {

QString keyText(const LayoutItem& item) {
  if (const std::string* appID = item.appID()) return QStringLiteral("app:") + QString::fromStdString(*appID);
  return QStringLiteral("folder:") + QString::fromStdString(item.asFolder()->id.text());
}

int row(Index index) { return static_cast<int>(index); }
std::ptrdiff_t offset(Index index) { return static_cast<std::ptrdiff_t>(index); }

}  // namespace

ArrangementListModel::ArrangementListModel(ArrangementController& arrangement, QObject* parent)
    : QAbstractListModel(parent), items_(arrangement.layout().items) {
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
    case NameRole:
      return folder != nullptr ? QString::fromStdString(folder->name) : appName(*item.appID());
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
  return {{KeyRole, "itemKey"},       {IsFolderRole, "isFolder"},     {AppIDRole, "appID"},
          {FolderIDRole, "folderID"}, {FolderNameRole, "folderName"}, {FolderAppIDsRole, "folderAppIDs"}};
}

void ArrangementListModel::setApps(const std::unordered_map<std::string, AppInfo>& apps) {
  std::unordered_map<std::string, std::string> names;
  names.reserve(apps.size());
  for (const auto& [id, app] : apps) names.emplace(id, app.name);
  if (names == names_) return;
  std::swap(names_, names);
  // Only app rows can show another name; announce the span they cover.
  int first = -1;
  int last = -1;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const std::string* appID = items_[i].appID();
    if (appID == nullptr) continue;
    const auto before = names.find(*appID);
    const auto now = names_.find(*appID);
    const bool same = (before == names.end()) == (now == names_.end()) &&
                      (before == names.end() || before->second == now->second);
    if (same) continue;
    if (first < 0) first = static_cast<int>(i);
    last = static_cast<int>(i);
  }
  if (first >= 0) emit dataChanged(index(first), index(last), {NameRole});
}

QString ArrangementListModel::appName(const std::string& appID) const {
  const auto found = names_.find(appID);
  return QString::fromStdString(found == names_.end() ? appID : found->second);
}

void ArrangementListModel::replay(const LayoutDiff& diff, const Layout& after) {
  replayDiff(
      diff,
      [this](Index first, Index last) {
        beginRemoveRows({}, row(first), row(last));
        items_.erase(items_.begin() + offset(first), items_.begin() + offset(last) + 1);
        endRemoveRows();
      },
      [this](Index from, Index to) {
        // Qt counts the destination before the row leaves its place.
        beginMoveRows({}, row(from), row(from), {}, row(to > from ? to + 1 : to));
        rotateRow(items_, from, to);
        endMoveRows();
      },
      [this, &after](Index first, Index last) {
        beginInsertRows({}, row(first), row(last));
        items_.insert(items_.begin() + offset(first), after.items.begin() + offset(first),
                      after.items.begin() + offset(last) + 1);
        endInsertRows();
      },
      [this, &after](Index at, LayoutChange::Kind kind) {
        items_[static_cast<std::size_t>(at)] = after.items[static_cast<std::size_t>(at)];
        const QModelIndex changed = index(row(at));
        emit dataChanged(changed, changed,
                         kind == LayoutChange::Kind::renamed ? QList<int>{FolderNameRole, NameRole}
                                                             : QList<int>{FolderAppIDsRole});
      });
}

}  // namespace orrery::app
