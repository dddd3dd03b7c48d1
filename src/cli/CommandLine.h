// The headless program: finds the requested subcommand and reports its result as an exit status and at most
// one line on standard error. Needs no display.
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

/// The arguments of a subcommand.
struct Invocation {
  QStringList arguments;
  /// Whether the subcommand's option was given.
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
  /// The only option it accepts; empty for none.
  std::string_view option = {};
};

/// All subcommands, in the order of the help text.
[[nodiscard]] std::span<const Subcommand> subcommands();

/// `arguments` excludes the program's name.
[[nodiscard]] ExitStatus runCommandLine(const QStringList& arguments);

}  // namespace orvanel
