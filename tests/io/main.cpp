#include <gtest/gtest.h>

#include <QCoreApplication>
#include <cstring>

#include "io/document/EndlessSaver.h"

// Image plugins and queued calls need an application object, but no display.
int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  if (argc == 4 && std::strcmp(argv[1], orvanel::testing::saveForeverArgument) == 0) {
    using orvanel::testing::Versions;
    const auto kind = std::strcmp(argv[2], "0") == 0 ? Versions::separate : Versions::edited;
    orvanel::testing::saveForever(kind, QString::fromLocal8Bit(argv[3]));
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
