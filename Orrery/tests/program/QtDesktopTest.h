// QtDesktopTest: a test fixture whose test program is itself a Qt client of
// a desktop session of its own (Xvfb and openbox, DesktopSession), for
// adapters that talk to the X server through Qt or beside it.
//
// Qt connects to one display per process, so the session and the
// QGuiApplication are made once per test suite; under ctest every test is a
// process of its own and so has its own desktop. The session's waits pump
// Qt's events.
//
// Thread rules: the test's thread only, like Qt's GUI.
#pragma once

#include <QCoreApplication>
#include <QGuiApplication>

#include <gtest/gtest.h>

#include <string>

#include "Orrery/tests/program/DesktopSession.h"

namespace orrery::testing {

class QtDesktopTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    auto started = DesktopSession::start();
    ASSERT_TRUE(started) << started.error();
    session = std::move(*started).release();
    display = session->display();
    static char name[] = "orrery_qt_desktop_test";
    static char platformOption[] = "-platform";
    static char platform[] = "xcb";
    static char displayOption[] = "-display";
    static char* arguments[] = {name, platformOption, platform, displayOption, display.data(), nullptr};
    static int count = 5;
    application = new QGuiApplication(count, arguments);
    session->setPump([] { QCoreApplication::processEvents(); });
  }
  static void TearDownTestSuite() {
    // Qt first: it ends the program when its server goes away under it.
    delete application;
    application = nullptr;
    delete session;
    session = nullptr;
  }

  static inline std::string display;
  static inline DesktopSession* session = nullptr;
  static inline QGuiApplication* application = nullptr;
};

}  // namespace orrery::testing
