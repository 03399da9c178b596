// ArrangementListModel: the top-level items of the visible arrangement as a
// list model for the views, one row per app or folder, in grid order.
//
// It follows an ArrangementController and replays each change it announces
// (LayoutDiff) as row removals, moves, insertions and data changes, never a
// reset: a delegate keeps its state while other rows come and go, and a
// rescan that changes nothing on screen redraws nothing. Neighbouring
// insertions and removals are announced as one range.
//
// The rows carry the arrangement's own facts (keys, folder names and
// contents); what depends on the installed apps (names, icons) is joined
// in by the views' models on top of this one.
//
// Thread rules: main thread only.
#pragma once

#include <QAbstractListModel>

#include <vector>

#include "Orrery/catalog/ArrangementController.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/arrangement/LayoutDiff.h"

namespace orrery::app {

class ArrangementListModel final : public QAbstractListModel {
  Q_OBJECT

 public:
  enum Role {
    KeyRole = Qt::UserRole + 1,  // QString: "app:<id>" or "folder:<UUID>", stable for the item's life
    IsFolderRole,                // bool
    AppIDRole,                   // QString: the app's ID; empty for a folder
    FolderIDRole,                // QString: the folder's UUID; empty for an app
    FolderNameRole,              // QString: the folder's name; empty for an app
    FolderAppIDsRole,            // QStringList: the folder's apps in order; empty for an app
  };

  // Shows `arrangement`'s visible layout and follows it; `arrangement`
  // must outlive the model.
  explicit ArrangementListModel(ArrangementController& arrangement, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  // The items as the model shows them now.
  const std::vector<LayoutItem>& items() const { return items_; }

 private:
  void replay(const LayoutDiff& diff, const Layout& after);

  std::vector<LayoutItem> items_;
};

}  // namespace orrery::app
