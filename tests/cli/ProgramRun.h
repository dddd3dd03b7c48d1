// Runs the headless program as a process, as it is installed.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <string>

namespace orvanel::test {

struct Outcome {
  int status = -1;
  QByteArray output;
  std::string errors;
};

struct ProgramInput {
  QByteArray standardInput;
  /// Takes the standard output away from the outcome.
  QString outputFile;
};

/// Without a display, in a locale that knows no UTF-8.
[[nodiscard]] Outcome runProgram(const QStringList& arguments, const ProgramInput& input = {});

}  // namespace orvanel::test
