#include "cli/CommandLine.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>

#include "cli/CheckCommand.h"
#include "cli/ConvertCommand.h"
#include "cli/InfoCommand.h"
#include "cli/Output.h"
#include "cli/RecoverCommand.h"
#include "cli/RunCommand.h"

namespace orvanel {

namespace {

constexpr std::array table{
    Subcommand{"info", "FILE", "Describe a document or image as one JSON object", 1, 1, runInfo},
    Subcommand{"check", "FILE...", "Say of each document, entry by entry, whether it is whole", 1,
               std::numeric_limits<int>::max(), runCheck},
    Subcommand{"convert", "IN OUT",
               "Write IN as OUT in the format given by the extension of OUT:\n"
               "                        tessel, png, jpg, jpeg, tiff, tif, gif or bmp",
               2, 2, runConvert},
    Subcommand{"run", "SCRIPT IN [OUT]",
               "Run the steps of SCRIPT, a JSON array (- for standard input),\n"
               "                        on IN, a file or new:WIDTHxHEIGHT:MODE with MODE from 0 to\n"
               "                        3, and write OUT; --time prints the duration of each step",
               2, 3, runScript, "--time"},
    Subcommand{"recover", "[ID OUT]",
               "List what was left unsaved as a JSON array, or write the one\n"
               "                        with this ID to OUT; --discard ID removes it",
               0, 2, runRecover, "--discard", isRecoverUsage},
};

QString helpText() {
  QString text = QStringLiteral(
      "Usage: orvanel-cli COMMAND ARGUMENTS...\n"
      "Describes, converts and edits layered documents and images. Needs no display.\n\n");
  for (const Subcommand& command : table) {
    const std::string synopsis = std::string(command.name) + " " + std::string(command.arguments);
    text += QString::asprintf("  %-20s  %s\n", synopsis.c_str(), std::string(command.summary).c_str());
  }
  text += QStringLiteral(
      "  --help                Show this and exit\n"
      "  --version             Show the version and exit\n\n"
      "Exit status: 0 for success, 1 if a file can't be read or written, isn't whole\n"
      "or is restored only in part, or a step fails, 2 for invalid usage.\n");
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

/// Separates the options from the arguments of a subcommand; "--" ends the options. Returns nothing if the
/// subcommand doesn't support an option, which is stored in `unknown`.
std::optional<Invocation> invocationOf(const Subcommand& command, const QStringList& rest, QString& unknown) {
  Invocation invocation;
  bool takesOptions = true;
  for (const QString& argument : rest) {
    if (!takesOptions || !argument.startsWith(QStringLiteral("--"))) {
      invocation.arguments << argument;
    } else if (argument == QStringLiteral("--")) {
      takesOptions = false;
    } else if (!command.option.empty() && argument.toStdString() == command.option) {
      invocation.hasOption = true;
    } else {
      unknown = argument;
      return std::nullopt;
    }
  }
  return invocation;
}

}  // namespace

std::span<const Subcommand> subcommands() {
  return table;
}

ExitStatus runCommandLine(const QStringList& arguments) {
  const QStringList options = arguments.mid(0, arguments.indexOf(QStringLiteral("--")));
  if (options.contains(QStringLiteral("--help"))) return concluded(printText(helpText()));
  if (options.contains(QStringLiteral("--version"))) {
    return concluded(printText(QStringLiteral("orvanel-cli 0.1\n")));
  }
  if (arguments.isEmpty()) return wrongUsage(QStringLiteral("no command"));

  const std::string name = arguments.constFirst().toStdString();
  const auto command = std::find_if(table.begin(), table.end(),
                                    [&](const Subcommand& candidate) { return candidate.name == name; });
  if (command == table.end()) {
    return wrongUsage(QStringLiteral("unknown command \"%1\"").arg(arguments.constFirst()));
  }
  QString unknownOption;
  const std::optional<Invocation> invocation = invocationOf(*command, arguments.mid(1), unknownOption);
  if (!invocation) return wrongUsage(QStringLiteral("unknown option \"%1\"").arg(unknownOption));
  const qsizetype count = invocation->arguments.size();
  const bool isUsage = command->isUsage == nullptr || command->isUsage(*invocation);
  if (count < command->fewestArguments || count > command->mostArguments || !isUsage) {
    return wrongUsage(usageOf(*command));
  }
  return concluded(command->run(*invocation));
}

}  // namespace orvanel
