#include "Orrery/shell/CommandLine.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace orrery::app {

void CommandLine::describe(QCommandLineParser& parser) {
  parser.setApplicationDescription(
      QCoreApplication::translate("CommandLine", "A full-screen application launcher."));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addOption(
      {QStringLiteral("toggle"),
       QCoreApplication::translate(
           "CommandLine",
           "Show the overlay, or hide it when it is shown. Starts Orrery if it is not running.")});
  parser.addOption(
      {QStringLiteral("show-overlay"), QCoreApplication::translate("CommandLine", "Show the overlay.")});
  parser.addOption({QStringLiteral("show-folder"),
                    QCoreApplication::translate("CommandLine", "Show the overlay with the folder NAME open."),
                    QCoreApplication::translate("CommandLine", "NAME")});
  parser.addOption({QStringLiteral("open-settings"),
                    QCoreApplication::translate("CommandLine", "Open the settings window.")});
  parser.addOption(
      {QStringLiteral("list-apps"),
       QCoreApplication::translate(
           "CommandLine", "Print the apps Orrery shows, in their order (ID, name, file), and exit.")});
  parser.addOption(
      {QStringLiteral("all"),
       QCoreApplication::translate(
           "CommandLine", "With --list-apps: also print the entries that are not shown, with the reason.")});
  parser.addOption(
      {QStringLiteral("perf-test"),
       QCoreApplication::translate(
           "CommandLine",
           "Show the overlay, page through it and search, log how long each frame took, and quit.")});
  parser.addOption(
      {QStringLiteral("trigger-test"),
       QCoreApplication::translate(
           "CommandLine", "Run the checks of the hot corner and the shortcut, log each result, and quit.")});
}

CommandLine CommandLine::from(const QCommandLineParser& parser) {
  CommandLine line;
  line.toggle = parser.isSet(QStringLiteral("toggle"));
  line.showOverlay = parser.isSet(QStringLiteral("show-overlay"));
  if (parser.isSet(QStringLiteral("show-folder")))
    line.showFolder = parser.value(QStringLiteral("show-folder"));
  line.openSettings = parser.isSet(QStringLiteral("open-settings"));
  line.perfTest = parser.isSet(QStringLiteral("perf-test"));
  line.triggerTest = parser.isSet(QStringLiteral("trigger-test"));
  line.listApps = parser.isSet(QStringLiteral("list-apps"));
  line.all = parser.isSet(QStringLiteral("all"));
  return line;
}

std::expected<CommandLine, QString> CommandLine::read(const QStringList& arguments) {
  QCommandLineParser parser;
  describe(parser);
  if (!parser.parse(arguments)) return std::unexpected(parser.errorText());
  return from(parser);
}

}  // namespace orrery::app
