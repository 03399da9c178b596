// SearchResultsModel: the apps the search field finds, best first, as a
// list model for the views.
//
// Each keystroke gives a new list; the model announces how it differs from
// the one on screen (rows removed, moved, inserted) instead of resetting, so
// a tile that stays in the results keeps its delegate and its icon, and
// typing one more letter into "fire" only removes the rows that stopped
// matching.
//
// Thread rules: main thread only.
#pragma once

#include <functional>
#include <vector>

#include "Orrery/overlay/DiffReplayingListModel.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::app {

class SearchResultsModel final : public DiffReplayingListModel {
  Q_OBJECT

 public:
  enum Role {
    AppIDRole = Qt::UserRole + 1,  // QString
    NameRole,                      // QString
    IconSourceRole,                // QString: the image source of the app's icon
  };

  using IconSource = std::function<QString(const AppInfo& app)>;

  explicit SearchResultsModel(QObject* parent = nullptr);

  // Shows `results`, announcing the difference to what was shown.
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
