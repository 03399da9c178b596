// SearchResultsModel: the apps the search field finds, best first, as a
// list model for the views.
//
// Each keystroke gives a new list of at most a page. The tiles stand in
// fixed places, so the model keeps its rows by position instead of by app:
// a row whose app changed announces new data (its tile stays and shows the
// other app), and only the rows beyond the shorter list are inserted or
// removed. A keystroke that replaces most results thus builds no tiles,
// and the model never resets.
//
// Thread rules: main thread only.
#pragma once

#include <functional>
#include <vector>

#include <QAbstractListModel>
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::app {

class SearchResultsModel final : public QAbstractListModel {
  Q_OBJECT

 public:
  enum Role {
    AppIDRole = Qt::UserRole + 1,  // QString
    NameRole,                      // QString
    IconSourceRole,                // QString: the image source of the app's icon
  };

  using IconSource = std::function<QString(const AppInfo& app)>;

  explicit SearchResultsModel(QObject* parent = nullptr);

  // Shows `results`, announcing row by row what differs from what was shown.
  void setResults(std::vector<AppInfo> results);
  const std::vector<AppInfo>& results() const { return results_; }
  void setIconSource(IconSource iconSource);

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 private:
  std::vector<AppInfo> results_;
  IconSource iconSource_;
};

}  // namespace orrery::app
