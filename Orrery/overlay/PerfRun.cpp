#include "Orrery/overlay/PerfRun.h"

#include <QQuickView>
#include <QTimer>

#include <algorithm>

#include "Orrery/base/Logging.h"

namespace orrery::app {

PerfRun::PerfRun(OverlayController& overlay, OverlayModel& model, QString query, int showCycles,
                 QObject* parent)
    : QObject(parent), overlay_(overlay), model_(model), query_(std::move(query)), showCycles_(showCycles) {}

void PerfRun::start() {
  script_.clear();
  const auto show = [this] { overlay_.show(nullptr, QStringLiteral("perf-test")); };
  script_.push_back({QStringLiteral("show"), show});
  for (int page = 1; page < model_.pageCount(); ++page)
    script_.push_back({QStringLiteral("page %1").arg(page), [this, page] { model_.goTo(page); }});
  if (model_.pageCount() > 1) script_.push_back({QStringLiteral("page 0"), [this] { model_.goTo(0); }});
  // The first frame of a folder's panel, for the largest folder there is.
  const Folder* largest = nullptr;
  for (const LayoutItem& item : model_.state().layout().items)
    if (const Folder* folder = item.asFolder();
        folder != nullptr && (largest == nullptr || folder->appIDs.size() > largest->appIDs.size()))
      largest = folder;
  if (largest != nullptr) {
    const QString id = QString::fromStdString(largest->id.text());
    const QString name = QStringLiteral("open folder of %1").arg(largest->appIDs.size());
    for (int cycle = 0; cycle < showCycles_; ++cycle) {
      script_.push_back({name, [this, id] { model_.openFolder(id); }});
      script_.push_back({QStringLiteral("close folder"), [this] { model_.closeFolder(); }});
    }
  }
  for (qsizetype length = 1; length <= query_.size(); ++length) {
    const QString text = query_.left(length);
    script_.push_back({QStringLiteral("type \"%1\"").arg(text), [this, text] { model_.setQuery(text); }});
  }
  for (qsizetype length = query_.size() - 1; length >= 0; --length) {
    const QString text = query_.left(length);
    script_.push_back({QStringLiteral("erase to \"%1\"").arg(text), [this, text] { model_.setQuery(text); }});
  }
  // Showing a window that was shown before is what the user does all day;
  // the first show above also pays for the scene's first build.
  for (int cycle = 0; cycle < showCycles_; ++cycle) {
    script_.push_back({QStringLiteral("hide"), [this] { overlay_.hide(); }, false});
    script_.push_back({QStringLiteral("show again"), show});
  }
  connect(overlay_.window(), &QQuickWindow::frameSwapped, this, &PerfRun::frameShown);
  connect(&overlay_, &OverlayController::hidden, this, &PerfRun::overlayHidden);
  position_ = 0;
  steps_.clear();
  next();
}

void PerfRun::next() {
  if (position_ == script_.size()) {
    std::vector<double> times;
    for (const Step& step : steps_) times.push_back(step.milliseconds);
    std::sort(times.begin(), times.end());
    const double median = times.empty() ? 0 : times[times.size() / 2];
    const double worst = times.empty() ? 0 : times.back();
    qCInfo(overlayLog, "perf-test: %ld Schritte, Median %.1f ms, langsamster %.1f ms",
           static_cast<long>(steps_.size()), median, worst);
    disconnect(overlay_.window(), &QQuickWindow::frameSwapped, this, &PerfRun::frameShown);
    disconnect(&overlay_, &OverlayController::hidden, this, &PerfRun::overlayHidden);
    emit finished();
    return;
  }
  if (!script_[position_].measured) {
    waitingForHide_ = true;
    script_[position_].run();
    return;
  }
  waiting_ = true;
  timer_.start();
  script_[position_].run();
  // A step that changed nothing on screen still gets a frame to wait for.
  overlay_.window()->update();
}

void PerfRun::frameShown() {
  if (!waiting_) return;
  waiting_ = false;
  const double milliseconds = static_cast<double>(timer_.nsecsElapsed()) / 1e6;
  const QString& name = script_[position_].name;
  steps_.push_back({name, milliseconds});
  qCInfo(overlayLog, "perf-test: %s: %.1f ms", qPrintable(name), milliseconds);
  ++position_;
  // Let the frame settle before the next change, as a person would.
  QTimer::singleShot(16, this, &PerfRun::next);
}

void PerfRun::overlayHidden() {
  if (!waitingForHide_) return;
  waitingForHide_ = false;
  ++position_;
  // A user does not reopen the overlay within a frame of closing it.
  QTimer::singleShot(100, this, &PerfRun::next);
}

}  // namespace orrery::app
