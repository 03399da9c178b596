// FolderAppsModel: the apps of the open folder as a list model for the
// folder panel, in their order inside the folder.
//
// The overlay model hands it the open folder after every change of the
// arrangement (show()); the model announces how the folder's apps differ
// from the rows on screen (removed, moved, inserted), never a reset, so an
// app taken out of the folder leaves its neighbours' delegates alone and a
// panel that stays open keeps its scroll position. Showing no folder
// removes every row.
//
// Thread rules: main thread only.
#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Orrery/overlay/DiffReplayingListModel.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::app {

class FolderAppsModel final : public DiffReplayingListModel {
  Q_OBJECT

 public:
  enum Role {
    AppIDRole = Qt::UserRole + 1,  // QString
    NameRole,                      // QString: the app's name, its ID while unknown
    IconSourceRole,                // QString: the image source of the app's icon
  };

  using IconSource = std::function<QString(const AppInfo& app)>;

  explicit FolderAppsModel(QObject* parent = nullptr);

  // Shows the apps of `folder`, or none when it is null.
  void show(const Folder* folder);
  const std::vector<std::string>& appIDs() const { return appIDs_; }

  // The installed apps, for names and icons; rows whose app changed say so.
  void setApps(const std::unordered_map<std::string, AppInfo>& apps);
  void setIconSource(IconSource iconSource);

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 private:
  const AppInfo* app(const std::string& appID) const;
  void announceAll(const QList<int>& roles);

  std::vector<std::string> appIDs_;
  std::unordered_map<std::string, AppInfo> apps_;
  IconSource iconSource_;
};

}  // namespace orrery::app
