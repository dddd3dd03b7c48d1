// The command line of the headless program: runs the requested subcommand and turns its result into an exit
// status and at most one line on standard error. Needs no display.
#pragma once

#include <QString>
#include <QStringList>
#include <span>
#include <string_view>
#include <tl/expected.hpp>

namespace orvanel {

enum class ExitStatus { success = 0, failure = 1, wrongUsage = 2 };

/// The reason of a failure and the file concerned; printed as one line.
struct CommandFailure {
  QString file;
  QString reason;
};
using CommandResult = tl::expected<void, CommandFailure>;

/// The arguments given to a subcommand.
struct Invocation {
  QStringList arguments;
  /// Whether the subcommand's option is given.
  bool hasOption = false;
};

struct Subcommand {
  std::string_view name;
  /// The arguments as shown in the help text, for example "IN OUT".
  std::string_view arguments;
  std::string_view summary;
  /// Minimum and maximum number of arguments.
  int fewestArguments = 0;
  int mostArguments = 0;
  CommandResult (*run)(const Invocation& invocation) = nullptr;
  /// The only option it supports; empty for none.
  std::string_view option = {};
  /// Whether the option and the number of arguments go together; null if they always do.
  bool (*isUsage)(const Invocation& invocation) = nullptr;
};

/// All subcommands, in the order of the help text.
[[nodiscard]] std::span<const Subcommand> subcommands();

/// `arguments` excludes the program's name.
[[nodiscard]] ExitStatus runCommandLine(const QStringList& arguments);

}  // namespace orvanel
