// orrery: the application launcher. Builds the application object and the
// AppDelegate, which makes and wires every service; or, when Orrery already
// runs in this session, hands the command line to it and ends.
#include <QApplication>
#include <QCommandLineParser>
#include <QLibraryInfo>
#include <QLocale>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTimer>
#include <QTranslator>

#include <iostream>
#include <optional>
#include <thread>

#include "Orrery/base/Logging.h"
#include "Orrery/platform/PlatformFactory.h"
#include "Orrery/shell/AppDelegate.h"
#include "Orrery/shell/AppListing.h"
#include "Orrery/shell/CommandLine.h"
#include "Orrery/shell/SingleInstance.h"
#include "Orrery/shell/TerminationSignals.h"
#include "OrreryCore/storage/LayoutStore.h"
#include "OrreryCore/text/Collation.h"

int main(int argc, char* argv[]) {
  // First of all: the fonts are read while Qt starts.
  const std::jthread fonts = orrery::platform::warmFontsInBackground();
  QApplication application(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Lumenfold"));
  QApplication::setOrganizationDomain(QStringLiteral("lumenfold.ch"));
  QApplication::setApplicationName(QStringLiteral("Orrery"));
  QApplication::setApplicationVersion(QStringLiteral(ORRERY_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("ch.lumenfold.Orrery"));
  // Runs in the background; its windows come and go.
  QApplication::setQuitOnLastWindowClosed(false);

  // The user's language, and Qt's own texts (the colour dialog) in it.
  QTranslator ownTexts;
  if (ownTexts.load(QLocale(), QStringLiteral("orrery"), QStringLiteral("_"), QStringLiteral(":/i18n"))) {
    QApplication::installTranslator(&ownTexts);
  }
  QTranslator qtTexts;
  if (qtTexts.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                   QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QApplication::installTranslator(&qtTexts);
  }

  QCommandLineParser parser;
  orrery::app::CommandLine::describe(parser);
  parser.process(application);
  const auto commandLine = orrery::app::CommandLine::from(parser);
  if (commandLine.listApps) {
    // A look at the disk only: no running program is asked, nothing written.
    orrery::text::setDefaultLocale(orrery::platform::collationLocale());
    return orrery::app::listApps(
        orrery::platform::makeAppScanner(),
        orrery::app::AppDelegate::defaultDataDirectory() / orrery::LayoutStore::mainFileName, commandLine.all,
        std::cout, std::cerr);
  }

  const auto location = orrery::platform::instanceLocation();
  auto instance = orrery::app::InstanceChannel::claim(QApplication::arguments(),
                                                      {location.sessionBus, location.runtimeFolder});
  if (instance.handedOver) {
    qCInfo(orrery::app::shellLog, "Orrery läuft bereits; die Befehlszeile wurde übergeben");
    return 0;
  }
  if (!instance.channel) {
    qCWarning(orrery::app::shellLog, "Kein Kanal für weitere Starts: %s", qUtf8Printable(instance.problem));
  }

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
  if (instance.channel) {
    QObject::connect(instance.channel.get(), &orrery::app::InstanceChannel::commandLineReceived, &delegate,
                     &orrery::app::AppDelegate::handleLaterStart);
  }
  QTimer::singleShot(0, &delegate, [&delegate, commandLine] { delegate.start(commandLine); });
  return QApplication::exec();
}
