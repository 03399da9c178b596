// PerfRun: the scripted run behind "--perf-test". It shows the overlay,
// turns every page, types a query letter by letter and deletes it again,
// opens and closes its largest folder a few times (when it has one),
// then hides and shows the overlay a few times, and measures for each step
// how long it took from the request to the next frame on screen. The figures go to the log, one line a step
// and a summary, and the program quits when the run is over.
//
// Steps wait for the frame of the previous one, so each figure is the cost
// of one change, not of a queue of them. A hide is not measured: it has no
// frame to wait for, so the run waits until the window is gone.
//
// Thread rules: main thread only.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <functional>
#include <vector>

#include "Orrery/overlay/OverlayController.h"
#include "Orrery/overlay/OverlayModel.h"

namespace orrery::app {

class PerfRun final : public QObject {
  Q_OBJECT

 public:
  struct Step {
    QString name;
    double milliseconds = 0;
  };

  // Both must outlive the run.
  PerfRun(OverlayController& overlay, OverlayModel& model, QString query = QStringLiteral("settings"),
          int showCycles = 5, QObject* parent = nullptr);

  // Starts the run; finished() follows.
  void start();
  const std::vector<Step>& steps() const { return steps_; }

 signals:
  void finished();

 private:
  struct Action {
    QString name;
    std::function<void()> run;
    // False for a hide, which ends when the window is gone, not with a frame.
    bool measured = true;
  };

  void next();
  void frameShown();
  void overlayHidden();

  OverlayController& overlay_;
  OverlayModel& model_;
  QString query_;
  int showCycles_;
  std::vector<Action> script_;
  std::size_t position_ = 0;
  std::vector<Step> steps_;
  QElapsedTimer timer_;
  bool waiting_ = false;
  bool waitingForHide_ = false;
};

}  // namespace orrery::app
