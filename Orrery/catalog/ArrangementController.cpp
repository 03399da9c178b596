#include "Orrery/catalog/ArrangementController.h"

#include "Orrery/base/Logging.h"
#include "OrreryCore/text/Localized.h"

namespace orrery::app {

namespace {

std::string unreadableFileText() {
  return text::localized("layout.json can't be read (check access permissions).",
                         "Error after saving the arrangement failed: the existing file cannot be read");
}

}  // namespace

ArrangementController::ArrangementController(LayoutStore store, bool syncEnabled, QObject* parent)
    : QObject(parent), syncEnabled_(syncEnabled), saver_(store) {
  // Loading happens before the saver's first save; after this the saver is
  // the only one to touch the folder.
  LayoutStore::LoadResult loaded = store.loadWithStatus();
  layout_ = loaded.layout;
  shared_ = std::move(loaded.layout);
  if (loaded.mainUnreadable) {
    storageProblem_ = unreadableFileText();
    qCCritical(catalogLog, "layout.json nicht lesbar; Anordnung kann nicht gespeichert werden");
  }
  connect(&saver_, &LayoutSaver::saved, this, &ArrangementController::saveFinished);
}

ArrangementController::~ArrangementController() = default;

void ArrangementController::mutate(const Edit& edit) {
  Layout edited = layout_;
  edit(edited);
  const bool arrangementChanged = edited != layout_;
  if (!projectionIDs_ || !syncEnabled_) {
    shared_ = edited;
    setLayout(std::move(edited));
  } else {
    const LayoutProjection projection = shared_.projected(*projectionIDs_);
    shared_ = shared_.embedding(edited, projection, *projectionIDs_);
    setLayout(shared_.projected(*projectionIDs_).visible);
  }
  persist();
  if (arrangementChanged) emit userChanged();
}

void ArrangementController::applyShared(Layout layout) {
  shared_ = std::move(layout);
  setLayout(projectionIDs_ ? shared_.projected(*projectionIDs_).visible : shared_);
  persist();
}

void ArrangementController::reconcile(const std::vector<AppInfo>& installed, const AppIDSet& keeping) {
  AppIDSet ids;
  ids.reserve(installed.size());
  for (const AppInfo& app : installed) ids.insert(app.id);

  Layout newShared;
  Layout newLayout;
  if (!syncEnabled_) {
    newShared = layout_.reconciled(installed, keeping);
    newLayout = newShared;
  } else {
    const LayoutProjection projection = shared_.projected(ids);
    const Layout reconciled = projection.visible.reconciled(installed, keeping);
    newShared = shared_.embedding(reconciled, projection, ids);
    newLayout = newShared.projected(ids).visible;
  }
  projectionIDs_ = std::move(ids);
  setLayout(std::move(newLayout));
  if (newShared != shared_) {
    shared_ = std::move(newShared);
    persist();
  }
}

void ArrangementController::flush() { saver_.flush(); }

void ArrangementController::setLayout(Layout layout) {
  if (layout == layout_) return;
  const LayoutDiff changes = diff(layout_, layout);
  layout_ = std::move(layout);
  emit layoutChanged(changes);
}

void ArrangementController::persist() { saver_.save(shared_); }

void ArrangementController::saveFinished(const LayoutSaver::Outcome& outcome) {
  if (!outcome) {
    const std::string description = outcome.error().description();
    qCCritical(catalogLog, "Layout konnte nicht gespeichert werden: %s", description.c_str());
    setStorageProblem(description);
    return;
  }
  setStorageProblem(std::nullopt);
}

void ArrangementController::setStorageProblem(std::optional<std::string> problem) {
  if (problem == storageProblem_) return;
  storageProblem_ = std::move(problem);
  emit storageProblemChanged();
}

}  // namespace orrery::app
