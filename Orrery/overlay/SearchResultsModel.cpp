#include "Orrery/overlay/SearchResultsModel.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace orrery::app {

SearchResultsModel::SearchResultsModel(QObject* parent) : QAbstractListModel(parent) {}

void SearchResultsModel::setResults(std::vector<AppInfo> results) {
  const std::size_t kept = std::min(results_.size(), results.size());
  if (results_.size() > kept) {
    beginRemoveRows({}, static_cast<int>(kept), static_cast<int>(results_.size()) - 1);
    results_.resize(kept);
    endRemoveRows();
  }
  // Neighbouring changed rows are announced together.
  std::size_t i = 0;
  while (i < kept) {
    if (results_[i] == results[i]) {
      ++i;
      continue;
    }
    const std::size_t first = i;
    for (; i < kept && !(results_[i] == results[i]); ++i) results_[i] = std::move(results[i]);
    emit dataChanged(index(static_cast<int>(first)), index(static_cast<int>(i) - 1));
  }
  if (results.size() > kept) {
    beginInsertRows({}, static_cast<int>(kept), static_cast<int>(results.size()) - 1);
    results_.insert(results_.end(),
                    std::make_move_iterator(results.begin() + static_cast<std::ptrdiff_t>(kept)),
                    std::make_move_iterator(results.end()));
    endInsertRows();
  }
}

void SearchResultsModel::setIconSource(IconSource iconSource) {
  iconSource_ = std::move(iconSource);
  if (!results_.empty())
    emit dataChanged(index(0), index(static_cast<int>(results_.size()) - 1), {IconSourceRole});
}

int SearchResultsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(results_.size());
}

QVariant SearchResultsModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
  const AppInfo& app = results_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case AppIDRole:
      return QString::fromStdString(app.id);
    case NameRole:
    case Qt::DisplayRole:
      return QString::fromStdString(app.name);
    case IconSourceRole:
      return iconSource_ ? iconSource_(app) : QString();
    default:
      return {};
  }
}

QHash<int, QByteArray> SearchResultsModel::roleNames() const {
  return {{AppIDRole, "appID"}, {NameRole, "name"}, {IconSourceRole, "iconSource"}};
}

}  // namespace orrery::app
