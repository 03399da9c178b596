// orrery: the application launcher. Builds the application object and the
// AppDelegate, which makes and wires every service.
#include <QApplication>
#include <QCommandLineParser>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTimer>

#include <optional>

#include "Orrery/base/Logging.h"
#include "Orrery/platform/PlatformFactory.h"
#include "Orrery/shell/AppDelegate.h"
#include "Orrery/shell/SingleInstance.h"
#include "Orrery/shell/TerminationSignals.h"

int main(int argc, char* argv[]) {
  QApplication application(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Lumenfold"));
  QApplication::setOrganizationDomain(QStringLiteral("lumenfold.ch"));
  QApplication::setApplicationName(QStringLiteral("Orrery"));
  QApplication::setApplicationVersion(QStringLiteral(ORRERY_VERSION));
  // Runs in the background; later its windows come and go.
  QApplication::setQuitOnLastWindowClosed(false);

  QCommandLineParser commandLine;
  commandLine.setApplicationDescription(QStringLiteral("A full-screen application launcher."));
  commandLine.addHelpOption();
  commandLine.addVersionOption();
  const QCommandLineOption showOverlay(
      QStringLiteral("show-overlay"), QStringLiteral("Show the overlay as soon as the program has started."));
  commandLine.addOption(showOverlay);
  const QCommandLineOption showFolder(QStringLiteral("show-folder"),
                                      QStringLiteral("Show the overlay with the folder of this name open."),
                                      QStringLiteral("NAME"));
  commandLine.addOption(showFolder);
  const QCommandLineOption perfTest(
      QStringLiteral("perf-test"),
      QStringLiteral(
          "Show the overlay, page through it and search, log how long each frame took, and quit."));
  commandLine.addOption(perfTest);
  const QCommandLineOption triggerTest(
      QStringLiteral("trigger-test"),
      QStringLiteral("Run the checks of the hot corner and the shortcut, log each result, and quit."));
  commandLine.addOption(triggerTest);
  commandLine.process(application);

  const auto dataDirectory = orrery::app::AppDelegate::defaultDataDirectory();
  const auto claim = orrery::app::claimDataDirectory(dataDirectory);
  if (claim.anotherIsRunning) {
    qCInfo(orrery::app::shellLog, "Orrery läuft bereits für %s; dieser Start endet", dataDirectory.c_str());
    return 0;
  }
  if (!claim.lock) {
    // Saving will fail there too and be reported; the program still runs.
    qCWarning(orrery::app::shellLog, "Datenordner %s kann nicht gesperrt werden", dataDirectory.c_str());
  }
  orrery::app::quitOnTerminationSignals();
  // Before the first window: every Qt Quick window of the program draws the same way.
  if (orrery::platform::prefersSoftwareQuickRenderer()) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    qCInfo(orrery::app::shellLog, "Kein Grafikprozessor gefunden; Qt Quick zeichnet in Software");
  }

  orrery::app::AppDelegate delegate(dataDirectory);
  QTimer::singleShot(0, &delegate,
                     [&delegate, show = commandLine.isSet(showOverlay), perf = commandLine.isSet(perfTest),
                      folder = commandLine.isSet(showFolder) ? std::optional(commandLine.value(showFolder))
                                                             : std::nullopt,
                      trigger = commandLine.isSet(triggerTest)] {
                       delegate.launch();
                       if (perf)
                         delegate.runPerfTest();
                       else if (trigger)
                         delegate.runTriggerTest();
                       else if (folder)
                         delegate.showFolder(*folder);
                       else if (show)
                         delegate.showOverlay(QStringLiteral("--show-overlay"));
                     });
  return QApplication::exec();
}
