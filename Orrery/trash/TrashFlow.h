// TrashFlow: the selection mode of the overlay and the road from ticked apps
// to apps in the Trash.
//
// Entering the mode fixes which apps may be ticked (TrashRules: entries in a
// folder the user may write, outside the system's locations); the others
// tell why not (protectedReason()). "Move to Trash …" builds a TrashRequest
// and shows the confirmation sheet with the apps still running named; only
// the sheet's "Move to Trash" performs it, through the platform's
// TrashService, one move at a time (`isTrashing`). What left is handed to the
// catalog as removed on purpose (onRemoved), so those apps leave the grid at
// the rescan that follows at once; what failed is reported, as a sheet while
// the overlay is shown, else through the stand-alone alert.
//
// Every enter and exit bumps the selection's session; a move's answer only
// ends the session it was started in.
//
// Thread rules: main thread only. The service may answer on any thread;
// the answer is brought back to the main thread here, and dropped when the
// flow is gone by then.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Orrery/catalog/ArrangementController.h"
#include "OrreryCore/catalog/AppInfo.h"
#include "OrreryCore/trash/TrashOutcome.h"
#include "OrreryCore/trash/TrashRequest.h"
#include "OrreryCore/trash/TrashRules.h"
#include "OrreryCore/trash/TrashSelection.h"
#include "OrreryCore/trash/TrashService.h"

namespace orrery::app {

class TrashFlow final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool available READ available NOTIFY availableChanged)
  Q_PROPERTY(bool selecting READ selecting NOTIFY selectionChanged)
  Q_PROPERTY(int selectedCount READ selectedCount NOTIFY selectionChanged)
  Q_PROPERTY(int revision READ revision NOTIFY selectionChanged)
  Q_PROPERTY(bool canMoveSelectionToFolder READ canMoveSelectionToFolder NOTIFY selectionChanged)
  Q_PROPERTY(bool isTrashing READ isTrashing NOTIFY trashingChanged)
  Q_PROPERTY(QString moveLabel READ moveLabel NOTIFY trashingChanged)
  Q_PROPERTY(bool sheetShown READ sheetShown NOTIFY sheetChanged)
  Q_PROPERTY(QString sheetTitle READ sheetTitle NOTIFY sheetChanged)
  Q_PROPERTY(QString sheetMessage READ sheetMessage NOTIFY sheetChanged)
  Q_PROPERTY(bool failureShown READ failureShown NOTIFY failureChanged)
  Q_PROPERTY(QString failureTitle READ failureTitle CONSTANT)
  Q_PROPERTY(QString failureMessage READ failureMessage NOTIFY failureChanged)

 public:
  using AppMap = std::unordered_map<std::string, AppInfo>;
  using RunningProbe = std::function<AppIDSet(const std::vector<AppInfo>&)>;

  // The program's own desktop entry: never offered.
  static constexpr const char* ownAppID = "orrery.desktop";

  // `arrangement` must outlive the flow.
  explicit TrashFlow(ArrangementController& arrangement, QObject* parent = nullptr);
  ~TrashFlow() override;

  // The platform's parts; without a service the mode cannot be entered.
  // The service must outlive the flow.
  void setService(TrashService* service);
  void setRunningProbe(RunningProbe probe) { running_ = std::move(probe); }
  // Whether the user may write a folder; the real file system by default.
  void setParentWritable(TrashRules::ParentWritable writable) { writable_ = std::move(writable); }
  // Whether the overlay is on screen: sheets hang on it only then.
  void setOverlayShown(std::function<bool()> shown) { overlayShown_ = std::move(shown); }
  // The apps that were moved: the catalog lets them go now.
  void setOnRemoved(std::function<void(const AppIDSet&)> removed) { onRemoved_ = std::move(removed); }
  // Failures while the overlay is hidden: a window of its own.
  void setStandaloneAlert(std::function<void(const QString& title, const QString& message)> alert) {
    standaloneAlert_ = std::move(alert);
  }

  // The installed apps changed: a session keeps only what still exists.
  void setApps(const AppMap& apps);

  bool available() const { return service_ != nullptr; }
  const TrashSelection& selection() const { return selection_; }
  bool selecting() const { return selection_.isActive; }
  int selectedCount() const { return static_cast<int>(selection_.count()); }
  // Bumped on every change of the ticks, for the tiles' bindings.
  int revision() const { return revision_; }
  bool isTrashing() const { return trashing_; }
  QString moveLabel() const;

  Q_INVOKABLE void enterSelection(const QString& preselect = {});
  // Ticks or unticks an app that may be moved; nothing for the others.
  Q_INVOKABLE void toggleSelection(const QString& appID);
  Q_INVOKABLE void exitSelection();
  Q_INVOKABLE bool isSelected(const QString& appID) const;
  // Why the app cannot be ticked; empty when it can (or outside the mode).
  Q_INVOKABLE QString protectedReason(const QString& appID) const;

  // "Move to Trash …": shows the confirmation sheet when the overlay is
  // shown, nothing else is asked, no move runs and something can be moved.
  Q_INVOKABLE void requestTrash();
  // The sheet's answer: true for "Move to Trash".
  Q_INVOKABLE void finishSheet(bool move);
  // Ends the selection session `session`, if it is still the current one.
  void finishTrash(std::int64_t session);
  Q_INVOKABLE void dismissFailure();

  // At least two ticked apps are in the grid: "Make Folder" can gather them.
  bool canMoveSelectionToFolder() const;
  // A folder of the ticked apps, in grid order, where the first was; the
  // mode ends. The new folder's ID, or nothing.
  std::optional<Uuid> makeFolderFromSelection();
  // The grid's folders by name, for moving the ticked apps into one:
  // entries {id, name}.
  Q_INVOKABLE QVariantList foldersByName() const;
  Q_INVOKABLE void moveSelectionToFolder(const QString& folderID);

  bool sheetShown() const { return request_.has_value(); }
  QString sheetTitle() const;
  QString sheetMessage() const { return sheetMessage_; }
  bool failureShown() const { return !failureMessage_.isEmpty(); }
  static QString failureTitle();
  QString failureMessage() const { return failureMessage_; }

 signals:
  void availableChanged();
  void selectionChanged();
  void trashingChanged();
  void sheetChanged();
  void failureChanged();
  // "Make Folder" made this folder; the overlay opens it.
  void folderMade(const QString& folderID);

 private:
  struct Mailbox;

  void moveToTrash(const ConfirmedTrash& confirmed, std::int64_t session);
  void moveFinished(const TrashOutcome& outcome, std::int64_t session);
  void reportFailures(const QString& message);
  void selectionEdited();
  bool isShown() const { return !overlayShown_ || overlayShown_(); }

  ArrangementController& arrangement_;
  TrashService* service_ = nullptr;
  RunningProbe running_;
  TrashRules::ParentWritable writable_;
  std::function<bool()> overlayShown_;
  std::function<void(const AppIDSet&)> onRemoved_;
  std::function<void(const QString&, const QString&)> standaloneAlert_;
  AppMap apps_;
  TrashSelection selection_;
  int revision_ = 0;
  bool trashing_ = false;
  std::optional<TrashRequest> request_;
  std::int64_t requestSession_ = 0;
  QString sheetMessage_;
  QString failureMessage_;
  std::shared_ptr<Mailbox> mailbox_;
};

}  // namespace orrery::app
