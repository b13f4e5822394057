#include <gtest/gtest.h>

#include <QApplication>

#include "ui/Texts.h"

int main(int argumentCount, char** arguments) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argumentCount, arguments);
  const QApplication application(argumentCount, arguments);
  zolvar::EnglishPlurals plurals;
  QCoreApplication::installTranslator(&plurals);
  return RUN_ALL_TESTS();
}
