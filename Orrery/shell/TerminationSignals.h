// Ends the event loop on SIGTERM, SIGINT and SIGHUP, so that a logout, a
// service manager or Ctrl-C lets the program finish cleanly: settings
// flushed, the data folder's lock released. The signal handler only writes a
// byte into a pipe; the main thread reads it and quits.
//
// Thread rules: call once from the main thread after the application
// object exists.
#pragma once

namespace orrery::app {

void quitOnTerminationSignals();

}  // namespace orrery::app
