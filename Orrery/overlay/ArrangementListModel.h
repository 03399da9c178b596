// ArrangementListModel: the top-level items of the visible arrangement as a
// list model for the views, one row per app or folder, in grid order.
//
// It follows an ArrangementController and replays each change it announces
// (LayoutDiff) as row removals, moves, insertions and data changes, never a
// reset: a delegate keeps its state while other rows come and go, and a
// rescan that changes nothing on screen redraws nothing. Neighbouring
// insertions and removals are announced as one range.
//
// A model may show a window of the list instead (setWindow: the items of
// one page of the grid); it then replays what changed inside its window,
// items that slide in from a neighbouring page included.
//
// The rows carry the arrangement's facts (keys, folder names and contents)
// joined with the installed apps' names (setApps), so a tile shows an app's
// name as the last scan found it.
//
// Thread rules: main thread only.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Orrery/catalog/ArrangementController.h"
#include "Orrery/overlay/DiffReplayingListModel.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/arrangement/LayoutDiff.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::app {

class ArrangementListModel final : public DiffReplayingListModel {
  Q_OBJECT

 public:
  enum Role {
    KeyRole = Qt::UserRole + 1,  // QString: "app:<id>" or "folder:<UUID>", stable for the item's life
    IsFolderRole,                // bool
    AppIDRole,                   // QString: the app's ID; empty for a folder
    FolderIDRole,                // QString: the folder's UUID; empty for an app
    FolderNameRole,              // QString: the folder's name; empty for an app
    FolderAppIDsRole,            // QStringList: the folder's apps in order; empty for an app
    NameRole,                    // QString: the app's name (its ID while unknown) or the folder's name
    IconSourceRole,              // QString: the image source of the app's icon; empty for a folder
    FolderIconSourcesRole,       // QStringList: the icons of the folder's apps, in order
  };

  // The image source that shows an app's icon.
  using IconSource = std::function<QString(const AppInfo& app)>;

  // Shows `arrangement`'s visible layout and follows it; `arrangement`
  // must outlive the model.
  explicit ArrangementListModel(ArrangementController& arrangement, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  // The installed apps, for the names and icons of the rows. Rows whose app
  // changed (renamed, updated) announce it; nothing moves.
  void setApps(const std::unordered_map<std::string, AppInfo>& apps);
  void setIconSource(IconSource iconSource);

  // Shows only the items at [first, first + count) of the arrangement,
  // announced as row changes from what it showed before.
  void setWindow(Index first, Index count);

  // The items as the model shows them now.
  const std::vector<LayoutItem>& items() const { return items_; }

 private:
  struct Window {
    Index first = 0;
    Index count = 0;
  };

  void follow(const LayoutDiff& diff, const Layout& after);
  void replay(const LayoutDiff& diff, const std::vector<LayoutItem>& after);
  std::vector<LayoutItem> windowOf(const std::vector<LayoutItem>& items) const;

  const AppInfo* app(const std::string& appID) const;
  QString iconSource(const std::string& appID) const;

  ArrangementController& arrangement_;
  std::optional<Window> window_;
  std::vector<LayoutItem> items_;
  std::unordered_map<std::string, AppInfo> apps_;
  IconSource iconSource_;
};

}  // namespace orrery::app
