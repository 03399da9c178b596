// The app-layer tests run inside a Qt application object: the services use
// queued calls, a thread pool and file-system notifications, and the overlay
// builds its window (offscreen, drawn in software), and the settings window
// and the tray menu are widgets.
#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
