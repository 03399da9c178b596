#include "Orrery/shell/TerminationSignals.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>

#include "Orrery/base/Logging.h"

namespace orrery::app {

namespace {

int signalPipe[2] = {-1, -1};

void noteSignal(int) {
  const char byte = 1;
  // Nothing to do on failure: the pipe is full, so a quit is already on its way.
  [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

}  // namespace

void quitOnTerminationSignals() {
  if (signalPipe[0] >= 0) return;
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, signalPipe) != 0) {
    qCWarning(shellLog, "Signale können nicht abgefangen werden; Beenden nur hart möglich");
    return;
  }
  auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, QCoreApplication::instance());
  QObject::connect(notifier, &QSocketNotifier::activated, notifier, [] {
    char buffer[16];
    while (::read(signalPipe[0], buffer, sizeof buffer) > 0) {
    }
    QCoreApplication::quit();
  });

  struct sigaction action {};
  action.sa_handler = noteSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) ::sigaction(signal, &action, nullptr);
}

}  // namespace orrery::app
