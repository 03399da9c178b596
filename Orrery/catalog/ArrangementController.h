// ArrangementController: the one owner of the user's arrangement while the
// program runs.
//
// Everything that changes the arrangement comes through here: user edits
// (mutate), arrangements received from other machines (applyShared) and
// scans the catalog accepted (reconcile). Each change is applied in memory
// at once, announced item by item, and handed to the LayoutSaver, which
// writes it on its own thread; the caller never waits for the disk.
//
// With sync on, two arrangements are kept: `shared`, covering the apps of
// all the user's machines, which is what is saved and synced, and `layout`,
// its projection onto the apps installed here (as of the last scan), which
// is what the views show. An app missing here is then hidden from view but
// never removed from the shared arrangement. With sync off both are the
// same.
//
// Views follow `layout` through layoutChanged(), which carries the steps
// from the previous visible arrangement to the new one (see LayoutDiff.h),
// so list models move, insert and remove rows instead of resetting.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Orrery/catalog/LayoutSaver.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/arrangement/LayoutDiff.h"
#include "OrreryCore/catalog/AppInfo.h"
#include "OrreryCore/storage/LayoutStore.h"

namespace orrery::app {

class ArrangementController final : public QObject {
  Q_OBJECT

 public:
  using Edit = std::function<void(Layout&)>;

  // Loads the arrangement from `store` at once.
  ArrangementController(LayoutStore store, bool syncEnabled, QObject* parent = nullptr);
  // The last save finishes first.
  ~ArrangementController() override;

  const Layout& layout() const { return layout_; }
  const Layout& shared() const { return shared_; }
  bool syncEnabled() const { return syncEnabled_; }
  // The installed ids the visible arrangement was projected on; absent
  // until the first scan was applied.
  const std::optional<AppIDSet>& projectionIDs() const { return projectionIDs_; }
  // A sentence about the arrangement file for the user; nothing when all is
  // well. Follows the outcome of the latest save that finished.
  const std::optional<std::string>& storageProblem() const { return storageProblem_; }

  // The one way for user edits to change the arrangement: `edit` changes a
  // copy of the visible arrangement, which then replaces it (folded into the
  // shared one when sync is on) and is saved. userChanged() follows when the
  // arrangement really changed; it is saved either way.
  void mutate(const Edit& edit);

  // Installs an arrangement received from another machine and saves it.
  void applyShared(Layout layout);

  // Aligns the arrangement with a scan the catalog accepted: `installed`
  // are the apps present now, `keeping` the missing ones still within their
  // grace period. Saves only when the shared arrangement changed.
  void reconcile(const std::vector<AppInfo>& installed, const AppIDSet& keeping);

  // Returns once every change is on disk and storageProblem() tells its
  // outcome. For quitting and for tests; edits never need it.
  void flush();

  // The saver, for observing its work (tests and benchmarks).
  const LayoutSaver& saver() const { return saver_; }

 signals:
  // `layout` changed; `diff` leads from the previous one to the new one.
  void layoutChanged(const orrery::LayoutDiff& diff);
  // A user edit changed the arrangement.
  void userChanged();
  void storageProblemChanged();

 private:
  void setLayout(Layout layout);
  void persist();
  void saveFinished(const LayoutSaver::Outcome& outcome);
  void setStorageProblem(std::optional<std::string> problem);

  Layout layout_;
  Layout shared_;
  std::optional<AppIDSet> projectionIDs_;
  std::optional<std::string> storageProblem_;
  bool syncEnabled_;
  LayoutSaver saver_;
};

}  // namespace orrery::app
