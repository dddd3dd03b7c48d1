#include "cli/RecoverCommand.h"

#include "cli/DocumentAccess.h"
#include "cli/Output.h"
#include "io/document/Json.h"
#include "recovery/RecoveryStore.h"

namespace orvanel {
namespace {

QString describeAsJson(const OrphanList& orphans) {
  JsonWriter json;
  const auto stringOrNull = [&json](const char* key, const QString& text, bool isKnown) {
    json.key(key);
    if (isKnown) {
      json.string(text);
    } else {
      json.null();
    }
  };
  json.openArray();
  for (const Orphan& orphan : orphans) {
    json.openObject();
    json.key("bytes");
    json.integer(orphan.bytes);
    json.key("id");
    json.string(orphan.id);
    stringOrNull("name", orphan.name, orphan.obstacle.isEmpty());
    stringOrNull("obstacle", orphan.obstacle, !orphan.obstacle.isEmpty());
    stringOrNull("path", orphan.path, !orphan.path.isEmpty());
    json.key("time");
    json.string(orphan.time.toUTC().toString(Qt::ISODate));
    json.closeObject();
  }
  json.closeArray();
  return QString::fromUtf8(json.text()) + QLatin1Char('\n');
}

}  // namespace

bool isRecoverUsage(const Invocation& invocation) {
  const qsizetype count = invocation.arguments.size();
  return invocation.hasOption ? count == 1 : count != 1;
}

CommandResult runRecover(const Invocation& invocation) {
  const RecoveryStore store{RecoverySettings()};
  if (invocation.arguments.isEmpty()) return printText(describeAsJson(store.orphans()));
  const QString& id = invocation.arguments.constFirst();
  if (!invocation.hasOption) {
    if (CommandResult name = checkWritableName(invocation.arguments.at(1)); !name) return name;
  }
  if (invocation.hasOption) {
    const auto discarded = store.discard(id);
    if (!discarded) return tl::make_unexpected(CommandFailure{id, discarded.error()});
    return {};
  }
  const auto orphan = store.claim(id);
  if (!orphan) return tl::make_unexpected(CommandFailure{id, orphan.error()});
  MetalContext& context = MetalContext::shared();
  const auto contents = orphan->restore(context, {});
  if (!contents) return tl::make_unexpected(CommandFailure{id, contents.error()});
  CommandResult written = writeDocument(*buildRestored(*contents, context), invocation.arguments.at(1));
  if (written && !contents->loss.isEmpty()) return tl::make_unexpected(CommandFailure{id, contents->loss});
  return written;
}

}  // namespace orvanel
