#include "Orrery/trash/TrashFlow.h"

#include <unistd.h>

#include <QMetaObject>

#include <algorithm>
#include <mutex>
#include <utility>

#include "Orrery/base/Logging.h"
#include "OrreryCore/text/Collation.h"

namespace orrery::app {

// The flow as the service's answer sees it: gone once the flow is.
struct TrashFlow::Mailbox {
  std::mutex mutex;
  TrashFlow* flow = nullptr;
};

namespace {

bool folderWritable(const std::string& folder) { return ::access(folder.c_str(), W_OK) == 0; }

}  // namespace

TrashFlow::TrashFlow(ArrangementController& arrangement, QObject* parent)
    : QObject(parent),
      arrangement_(arrangement),
      writable_(folderWritable),
      mailbox_(std::make_shared<Mailbox>()) {
  mailbox_->flow = this;
}

TrashFlow::~TrashFlow() {
  std::lock_guard lock(mailbox_->mutex);
  mailbox_->flow = nullptr;
}

void TrashFlow::setService(TrashService* service) {
  if (service == service_) return;
  service_ = service;
  emit availableChanged();
}

void TrashFlow::setApps(const AppMap& apps) {
  apps_ = apps;
  if (!selection_.isActive) return;
  const TrashSelection before = selection_;
  selection_.retain(apps_);
  if (selection_ != before) selectionEdited();
}

QString TrashFlow::moveLabel() const { return trashing_ ? tr("Moving to Trash …") : tr("Move to Trash …"); }

void TrashFlow::enterSelection(const QString& preselect) {
  if (service_ == nullptr) return;
  std::unordered_map<std::string, std::string> deletable;
  for (const auto& [id, app] : apps_)
    if (TrashRules::isDeletable(app.url, id, ownAppID, writable_)) deletable.emplace(id, app.url);
  std::optional<std::string> ticked;
  if (!preselect.isEmpty() && deletable.contains(preselect.toStdString())) ticked = preselect.toStdString();
  selection_.enter(std::move(deletable), ticked);
  selectionEdited();
}

void TrashFlow::toggleSelection(const QString& appID) {
  const std::string id = appID.toStdString();
  if (!selection_.isActive || !selection_.isDeletable(id)) return;
  selection_.toggle(id);
  selectionEdited();
}

void TrashFlow::exitSelection() {
  if (!selection_.isActive) return;
  selection_.exit();
  // A question about the session that ended has no one left to answer it.
  if (request_) {
    request_.reset();
    emit sheetChanged();
  }
  selectionEdited();
}

bool TrashFlow::isSelected(const QString& appID) const { return selection_.contains(appID.toStdString()); }

QString TrashFlow::protectedReason(const QString& appID) const {
  const std::string id = appID.toStdString();
  if (!selection_.isActive || selection_.isDeletable(id)) return {};
  const auto app = apps_.find(id);
  if (app == apps_.end()) return {};
  if (id == ownAppID) return tr("This is the launcher itself");
  if (TrashRules::isProtected(app->second.url, id, ownAppID)) return tr("Installed by the system");
  const std::optional<std::string> resolved = TrashRules::resolvingSymlinks(app->second.url);
  if (resolved && TrashRules::isProtected(*resolved, std::nullopt, ownAppID))
    return tr("Installed by the system");
  return tr("Its folder is read-only");
}

void TrashFlow::requestTrash() {
  if (!selection_.isActive || trashing_ || request_ || !isShown()) return;
  const AppIDSet movable = selection_.deletableSelected();
  const auto skipped = static_cast<std::int64_t>(selection_.count() - movable.size());
  TrashRequest request(movable, apps_, skipped);
  if (request.apps.empty()) return;
  const AppIDSet running = running_ ? running_(request.apps) : AppIDSet{};
  sheetMessage_ = QString::fromStdString(request.message(running));
  request_ = std::move(request);
  requestSession_ = selection_.session;
  emit sheetChanged();
}

QString TrashFlow::sheetTitle() const {
  return request_ ? QString::fromStdString(request_->title()) : QString();
}

void TrashFlow::finishSheet(bool move) {
  if (!request_) return;
  const TrashRequest request = std::move(*request_);
  request_.reset();
  emit sheetChanged();
  if (!move) return;
  qCInfo(trashLog, "Papierkorb: %d App(s) bestätigt", static_cast<int>(request.apps.size()));
  moveToTrash(request.confirmed(), requestSession_);
}

void TrashFlow::moveToTrash(const ConfirmedTrash& confirmed, std::int64_t session) {
  if (trashing_ || service_ == nullptr) return;
  trashing_ = true;
  emit trashingChanged();
  confirmed.perform(*service_, [mailbox = mailbox_, session](TrashOutcome outcome) {
    std::lock_guard lock(mailbox->mutex);
    if (mailbox->flow == nullptr) return;
    QMetaObject::invokeMethod(
        mailbox->flow,
        [flow = mailbox->flow, outcome = std::move(outcome), session] {
          flow->moveFinished(outcome, session);
        },
        Qt::QueuedConnection);
  });
}

void TrashFlow::moveFinished(const TrashOutcome& outcome, std::int64_t session) {
  trashing_ = false;
  emit trashingChanged();
  if (!outcome.trashedIDs.empty()) {
    qCInfo(trashLog, "%d App(s) in den Papierkorb verschoben", static_cast<int>(outcome.trashedIDs.size()));
    if (onRemoved_) onRemoved_(outcome.trashedIDs);
  }
  finishTrash(session);
  if (const std::optional<std::string> message = outcome.failureMessage())
    reportFailures(QString::fromStdString(*message));
}

void TrashFlow::finishTrash(std::int64_t session) {
  if (selection_.session != session) return;
  exitSelection();
}

void TrashFlow::reportFailures(const QString& message) {
  qCCritical(trashLog, "Papierkorb: %s", qUtf8Printable(message));
  if (isShown()) {
    failureMessage_ = message;
    emit failureChanged();
  } else if (standaloneAlert_) {
    standaloneAlert_(failureTitle(), message);
  }
}

void TrashFlow::dismissFailure() {
  if (failureMessage_.isEmpty()) return;
  failureMessage_.clear();
  emit failureChanged();
}

QString TrashFlow::failureTitle() { return QString::fromStdString(TrashOutcome::failureTitle()); }

bool TrashFlow::canMoveSelectionToFolder() const {
  if (!selection_.isActive || selection_.count() < 2) return false;
  const AppIDSet inGrid = arrangement_.layout().referencedAppIDs();
  return std::count_if(selection_.selected.begin(), selection_.selected.end(),
                       [&](const std::string& id) { return inGrid.contains(id); }) >= 2;
}

std::optional<Uuid> TrashFlow::makeFolderFromSelection() {
  if (!canMoveSelectionToFolder()) return std::nullopt;
  std::optional<Uuid> made;
  const AppIDSet ids = selection_.selected;
  arrangement_.mutate([&](Layout& layout) { made = layout.makeFolder(ids, Folder::defaultName()); });
  if (!made) return std::nullopt;
  exitSelection();
  emit folderMade(QString::fromStdString(made->text()));
  return made;
}

QVariantList TrashFlow::foldersByName() const {
  std::vector<const Folder*> folders;
  for (const LayoutItem& item : arrangement_.layout().items)
    if (const Folder* folder = item.asFolder()) folders.push_back(folder);
  std::ranges::sort(folders, [](const Folder* a, const Folder* b) {
    return text::nameOrderLess(a->name, a->id.text(), b->name, b->id.text());
  });
  QVariantList entries;
  for (const Folder* folder : folders)
    entries.push_back(QVariantMap{{QStringLiteral("id"), QString::fromStdString(folder->id.text())},
                                  {QStringLiteral("name"), QString::fromStdString(folder->name)}});
  return entries;
}

void TrashFlow::moveSelectionToFolder(const QString& folderID) {
  if (!selection_.isActive || selection_.selected.empty()) return;
  const std::optional<Uuid> folder = Uuid::parse(folderID.toStdString());
  if (!folder) return;
  const AppIDSet ids = selection_.selected;
  arrangement_.mutate([&](Layout& layout) { layout.move(ids, *folder); });
  exitSelection();
}

void TrashFlow::selectionEdited() {
  ++revision_;
  emit selectionChanged();
}

}  // namespace orrery::app
