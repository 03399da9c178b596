// The app-layer tests run inside a Qt application object: the services use
// queued calls, a thread pool and file-system notifications, and the overlay
// builds its window (offscreen, drawn in software).
#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
