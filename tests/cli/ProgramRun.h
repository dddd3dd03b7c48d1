// Runs the command-line program as a process.
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
  /// Redirects standard output, so that the outcome has none.
  QString outputFile;
};

/// Runs it without a display, in a locale without UTF-8.
[[nodiscard]] Outcome runProgram(const QStringList& arguments, const ProgramInput& input = {});

}  // namespace orvanel::test
