#include "Orrery/overlay/ArrangementListModel.h"

#include <QStringList>

#include <algorithm>
#include <cstddef>

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

void ArrangementListModel::replay(const LayoutDiff& diff, const Layout& after) {
  const std::vector<LayoutChange>& changes = diff.changes;
  std::size_t i = 0;
  while (i < changes.size()) {
    const LayoutChange& change = changes[i];
    switch (change.kind) {
      case LayoutChange::Kind::removed: {
        // Removals come last position first: a run of them one below the
        // other is one range.
        std::size_t end = i + 1;
        while (end < changes.size() && changes[end].kind == LayoutChange::Kind::removed &&
               changes[end].from == changes[end - 1].from - 1)
          ++end;
        const Index first = changes[end - 1].from;
        beginRemoveRows({}, row(first), row(change.from));
        items_.erase(items_.begin() + offset(first), items_.begin() + offset(change.from) + 1);
        endRemoveRows();
        i = end;
        continue;
      }
      case LayoutChange::Kind::moved: {
        // Qt counts the destination before the row leaves its place.
        const Index destination = change.to > change.from ? change.to + 1 : change.to;
        beginMoveRows({}, row(change.from), row(change.from), {}, row(destination));
        const auto from = items_.begin() + offset(change.from);
        const auto to = items_.begin() + offset(change.to);
        if (change.to > change.from)
          std::rotate(from, from + 1, to + 1);
        else
          std::rotate(to, from, from + 1);
        endMoveRows();
        break;
      }
      case LayoutChange::Kind::inserted: {
        std::size_t end = i + 1;
        while (end < changes.size() && changes[end].kind == LayoutChange::Kind::inserted &&
               changes[end].to == changes[end - 1].to + 1)
          ++end;
        const Index last = changes[end - 1].to;
        beginInsertRows({}, row(change.to), row(last));
        items_.insert(items_.begin() + offset(change.to), after.items.begin() + offset(change.to),
                      after.items.begin() + offset(last) + 1);
        endInsertRows();
        i = end;
        continue;
      }
      case LayoutChange::Kind::folderChanged:
      case LayoutChange::Kind::renamed: {
        items_[static_cast<std::size_t>(change.to)] = after.items[static_cast<std::size_t>(change.to)];
        const QModelIndex changed = index(row(change.to));
        const QList<int> roles = change.kind == LayoutChange::Kind::renamed ? QList<int>{FolderNameRole}
                                                                            : QList<int>{FolderAppIDsRole};
        emit dataChanged(changed, changed, roles);
        break;
      }
    }
    ++i;
  }
}

}  // namespace orrery::app
