#include "cli/CommandLine.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "cli/ConvertCommand.h"
#include "cli/InfoCommand.h"
#include "cli/Output.h"

namespace orvanel {

namespace {

constexpr std::array table{
    Subcommand{"info", "FILE", "Print a document's or image's facts as one JSON object", 1, 1, runInfo},
    Subcommand{"convert", "IN OUT",
               "Write IN as OUT; the extension of OUT says how:\n"
               "                    tessel, png, jpg, jpeg, tiff, tif, gif or bmp",
               2, 2, runConvert},
};

QString helpText() {
  QString text = QStringLiteral(
      "Usage: orvanel-cli COMMAND ARGUMENTS...\n"
      "Reads, describes and converts layered documents and images. Needs no display.\n\n");
  for (const Subcommand& command : table) {
    const std::string synopsis = std::string(command.name) + " " + std::string(command.arguments);
    text += QString::asprintf("  %-16s  %s\n", synopsis.c_str(), std::string(command.summary).c_str());
  }
  text += QStringLiteral(
      "  --help            Show this and exit\n"
      "  --version         Show the version and exit\n\n"
      "Exit status: 0 when all went well, 1 when a file couldn't be read or written, 2 for wrong usage.\n");
  return text;
}

ExitStatus wrongUsage(const QString& reason) {
  printErrorLine(QStringLiteral("orvanel-cli: %1; see orvanel-cli --help").arg(reason));
  return ExitStatus::wrongUsage;
}

ExitStatus concluded(const CommandResult& result) {
  if (result) return ExitStatus::success;
  printErrorLine(result.error().file + QStringLiteral(": ") + result.error().reason);
  return ExitStatus::failure;
}

QString usageOf(const Subcommand& command) {
  return QStringLiteral("usage: orvanel-cli %1 %2")
      .arg(QString::fromStdString(std::string(command.name)),
           QString::fromStdString(std::string(command.arguments)));
}

}  // namespace

std::span<const Subcommand> subcommands() {
  return table;
}

ExitStatus runCommandLine(const QStringList& arguments) {
  if (arguments.contains(QStringLiteral("--help"))) return concluded(printText(helpText()));
  if (arguments.contains(QStringLiteral("--version"))) {
    return concluded(printText(QStringLiteral("orvanel-cli 0.1\n")));
  }
  if (arguments.isEmpty()) return wrongUsage(QStringLiteral("no command"));

  const std::string name = arguments.constFirst().toStdString();
  const auto command = std::find_if(table.begin(), table.end(),
                                    [&](const Subcommand& candidate) { return candidate.name == name; });
  if (command == table.end()) {
    return wrongUsage(QStringLiteral("unknown command \"%1\"").arg(arguments.constFirst()));
  }
  const QStringList rest = arguments.mid(1);
  for (const QString& argument : rest) {
    if (argument.startsWith(QStringLiteral("--"))) {
      return wrongUsage(QStringLiteral("unknown option \"%1\"").arg(argument));
    }
  }
  if (rest.size() < command->fewestArguments || rest.size() > command->mostArguments) {
    return wrongUsage(usageOf(*command));
  }
  return concluded(command->run(rest));
}

}  // namespace orvanel
