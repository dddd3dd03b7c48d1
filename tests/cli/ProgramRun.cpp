#include "cli/ProgramRun.h"

#include <gtest/gtest.h>

#include <QProcess>

namespace orvanel::test {

Outcome runProgram(const QStringList& arguments, const ProgramInput& input) {
  QProcess process;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "LANG"}) {
    environment.remove(QLatin1String(variable));
  }
  environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
  process.setProcessEnvironment(environment);
  if (!input.outputFile.isEmpty()) process.setStandardOutputFile(input.outputFile);
  process.start(QStringLiteral(ORVANEL_CLI_PATH), arguments);
  process.write(input.standardInput);
  process.closeWriteChannel();
  EXPECT_TRUE(process.waitForFinished(120000));
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError().toStdString()};
}

}  // namespace orvanel::test
