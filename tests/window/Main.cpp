// Runs the tests of the window: GoogleTest with an application that draws to memory, so that no display is needed.

#include <gmock/gmock.h>

#include <QApplication>

int main(int pCount, char** pArguments) {
  // A test that is looked at on a screen names another platform itself.
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(pCount, pArguments);
  testing::InitGoogleMock(&pCount, pArguments);
  return RUN_ALL_TESTS();
}
