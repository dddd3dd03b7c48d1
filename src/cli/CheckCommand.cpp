#include "cli/CheckCommand.h"

#include <algorithm>
#include <optional>

#include "cli/Output.h"
#include "io/document/DocumentCheck.h"
#include "raster/MetalContext.h"

namespace orvanel {

namespace {

/// Names of entries may contain anything; a line must stay one.
QString onOneLine(QString text) {
  for (QChar& character : text) {
    if (!character.isPrint()) character = u' ';
  }
  return text;
}

QString describe(const QString& file, const DocumentCheck& check) {
  QString text =
      onOneLine(file) + (check.isWhole() ? QStringLiteral(": whole\n") : QStringLiteral(": damaged\n"));
  for (const EntryCheck& entry : check.entries) {
    text += QStringLiteral("  %1  %2  %3\n")
                .arg(onOneLine(entry.path))
                .arg(entry.size)
                .arg(entry.reason.isEmpty() ? QStringLiteral("ok") : onOneLine(entry.reason));
  }
  for (const DroppedNode& node : check.dropped) {
    text += QStringLiteral("  node \"%1\"  %2\n").arg(onOneLine(node.name), node.reason);
  }
  return text;
}

/// Why the document isn't whole; nothing if it is.
std::optional<QString> reasonOf(const DocumentCheck& check) {
  if (!check.reason.isEmpty()) return check.reason;
  if (!check.dropped.empty()) {
    return QStringLiteral("Opening it leaves out %1 of its nodes, among them \"%2\".")
        .arg(check.dropped.size())
        .arg(onOneLine(check.dropped.front().name));
  }
  const auto damaged =
      std::ranges::find_if(check.entries, [](const EntryCheck& entry) { return !entry.reason.isEmpty(); });
  if (damaged == check.entries.end()) return std::nullopt;
  return QStringLiteral("%1: %2").arg(damaged->path, damaged->reason);
}

CommandResult checkFile(const QString& file) {
  const auto check = checkDocument(file, MetalContext::shared());
  if (!check) return tl::make_unexpected(CommandFailure{file, check.error()});
  if (auto printed = printText(describe(file, *check)); !printed) return printed;
  if (const auto reason = reasonOf(*check)) return tl::make_unexpected(CommandFailure{file, *reason});
  return {};
}

}  // namespace

CommandResult runCheck(const Invocation& invocation) {
  CommandResult result;
  for (const QString& file : invocation.arguments) {
    auto checked = checkFile(file);
    if (checked) continue;
    // Every file has its line; the caller prints that of the last.
    if (!result) printErrorLine(result.error().file + QStringLiteral(": ") + result.error().reason);
    result = std::move(checked);
  }
  return result;
}

}  // namespace orvanel
