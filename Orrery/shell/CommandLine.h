// CommandLine: the options of the orrery program and what a start asked
// for.
//
// The same options are read twice: by the program that was started, and,
// when a program already runs in the session, by that running program from
// the arguments the new start handed over. read() never exits the process
// (unlike QCommandLineParser::process), so a bad forwarded line is logged
// by the receiver and nothing else happens.
//
// Thread rules: a value; build and read on any thread.
#pragma once

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

class QCommandLineParser;

namespace orrery::app {

struct CommandLine {
  bool toggle = false;
  bool showOverlay = false;
  std::optional<QString> showFolder{};
  bool openSettings = false;
  bool perfTest = false;
  bool triggerTest = false;
  bool listApps = false;
  bool all = false;  // with listApps: the entries that are not shown too

  // Asks the program to do something visible; a start without any of these
  // is a plain re-launch.
  bool hasAction() const {
    return toggle || showOverlay || showFolder || openSettings || perfTest || triggerTest;
  }

  // Adds every option (and --help, --version) to `parser`.
  static void describe(QCommandLineParser& parser);
  // What a parser that has parsed a line found.
  static CommandLine from(const QCommandLineParser& parser);
  // Parses a whole line (program name first); the parser's message on error.
  static std::expected<CommandLine, QString> read(const QStringList& arguments);
};

}  // namespace orrery::app
