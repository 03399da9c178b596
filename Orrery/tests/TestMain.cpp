// The app-layer tests run inside a Qt application object: the services use
// queued calls, a thread pool and file-system notifications.
#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
