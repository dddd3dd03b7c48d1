#include "cli/RunCommand.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>

#include "cli/DocumentAccess.h"
#include "cli/Output.h"
#include "cli/Script.h"
#include "cli/ScriptCommands.h"

namespace orvanel {
namespace {

/// More than enough for a million steps.
constexpr qint64 mostScriptBytes = 256LL << 20;

tl::unexpected<CommandFailure> failed(const QString& file, const QString& reason) {
  return tl::make_unexpected(CommandFailure{file, reason});
}

tl::expected<QByteArray, CommandFailure> readScript(const QString& path) {
  QFile file(path);
  const bool isOpen =
      path == QStringLiteral("-") ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
  if (!isOpen) return failed(path, file.errorString());
  QByteArray text = file.read(mostScriptBytes + 1);
  if (file.error() != QFileDevice::NoError) return failed(path, file.errorString());
  if (text.size() > mostScriptBytes) return failed(path, QStringLiteral("The script is too long."));
  return text;
}

/// A blank document for new:WIDTHxHEIGHT:MODE, otherwise the file's.
tl::expected<DocumentPtr, CommandFailure> readInput(const QString& path, const QString& destination) {
  if (!path.startsWith(QStringLiteral("new:"))) return readDocument(path, destination);
  static const QRegularExpression form(QStringLiteral("^new:(\\d{1,5})x(\\d{1,5}):([0-3])\\z"));
  const QRegularExpressionMatch match = form.match(path);
  const int width = match.captured(1).toInt();
  const int height = match.captured(2).toInt();
  if (!match.hasMatch() || width < 1 || height < 1 || width > maximumCanvasSide ||
      height > maximumCanvasSide) {
    return failed(path,
                  QStringLiteral("A new document must be new:WIDTHxHEIGHT:MODE, with sides of 1 to %1 pixels "
                                 "and a mode of 0 to 3.")
                      .arg(maximumCanvasSide));
  }
  const auto mode = colorModeFromRaw(match.captured(3).toInt()).value_or(ColorMode::rgb8);
  return Document::create(QStringLiteral("Untitled"), width, height, mode, MetalContext::shared());
}

void printTime(std::size_t number, const QString& command, const QElapsedTimer& timer) {
  printErrorLine(QStringLiteral("step %1 %2: %3 ms")
                     .arg(number)
                     .arg(command)
                     .arg(static_cast<double>(timer.nsecsElapsed()) / 1e6, 0, 'f', 3));
}

}  // namespace

CommandResult runScript(const Invocation& invocation) {
  const QString& scriptPath = invocation.arguments.at(0);
  const std::optional<QString> destination =
      invocation.arguments.size() > 2 ? std::optional(invocation.arguments.at(2)) : std::nullopt;
  if (destination) {
    if (CommandResult name = checkWritableName(*destination); !name) return name;
  }
  const auto text = readScript(scriptPath);
  if (!text) return tl::make_unexpected(text.error());
  const auto steps = parseScript(*text);
  if (!steps) return failed(scriptPath, steps.error());
  const auto document = readInput(invocation.arguments.at(1), destination.value_or(QString()));
  if (!document) return tl::make_unexpected(document.error());

  ScriptRun run(*document);
  std::size_t number = 0;
  for (const ScriptStep& step : *steps) {
    ++number;
    QElapsedTimer timer;
    timer.start();
    const StepResult result = performStep(run, step);
    if (!result) return failed(scriptPath, QStringLiteral("step %1: %2").arg(number).arg(result.error()));
    if (invocation.hasOption) printTime(number, step.command, timer);
  }
  return destination ? writeDocument(*run.document, *destination) : CommandResult{};
}

}  // namespace orvanel
