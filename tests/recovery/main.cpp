#include <gtest/gtest.h>

#include <QCoreApplication>
#include <cstring>

#include "recovery/JournalChild.h"

// Timers and queued calls need an application object, but no display.
int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  if (argc == 4 && std::strcmp(argv[1], orvanel::testing::runUntilKilledArgument) == 0) {
    orvanel::testing::runUntilKilled(QString::fromLocal8Bit(argv[2]),
                                     static_cast<unsigned>(std::atoi(argv[3])));
  }
  if (argc == 4 && std::strcmp(argv[1], orvanel::testing::dieInSaveArgument) == 0) {
    orvanel::testing::dieInSave(QString::fromLocal8Bit(argv[2]), static_cast<unsigned>(std::atoi(argv[3])));
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
