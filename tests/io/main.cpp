#include <gtest/gtest.h>

#include <QCoreApplication>
#include <cstring>

#include "io/document/EndlessSaver.h"

// Image plugins and queued calls need an application object, but no display.
int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  if (argc == 3 && std::strcmp(argv[1], orvanel::testing::saveForeverArgument) == 0) {
    orvanel::testing::saveForever(QString::fromLocal8Bit(argv[2]));
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
