#include "Orrery/overlay/SearchResultsModel.h"

#include <cstddef>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/arrangement/LayoutDiff.h"

namespace orrery::app {

namespace {

// A result list as an arrangement of apps, so the arrangement's diff finds
// the fewest row changes between two lists.
Layout asLayout(const std::vector<AppInfo>& apps) {
  Layout layout;
  layout.items.reserve(apps.size());
  for (const AppInfo& app : apps) layout.items.push_back(LayoutItem::app(app.id));
  return layout;
}

}  // namespace

SearchResultsModel::SearchResultsModel(QObject* parent) : DiffReplayingListModel(parent) {}

void SearchResultsModel::setResults(std::vector<AppInfo> results) {
  const LayoutDiff changes = diff(asLayout(results_), asLayout(results));
  // Results are matched by app ID; a changed record is handled below.
  replayRows(results_, changes, results, [](Index, LayoutChange::Kind) {});
  // The same app may come back renamed or updated by a scan.
  for (std::size_t i = 0; i < results.size(); ++i) {
    if (results_[i] == results[i]) continue;
    results_[i] = std::move(results[i]);
    emit dataChanged(index(static_cast<int>(i)), index(static_cast<int>(i)));
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
