#include "cli/ConvertCommand.h"

#include "cli/DocumentAccess.h"

namespace orvanel {

CommandResult runConvert(const Invocation& invocation) {
  const QString& destination = invocation.arguments.at(1);
  // Check the destination's name first, so that a large file isn't read for nothing.
  if (CommandResult name = checkWritableName(destination); !name) return name;
  const auto document = readDocument(invocation.arguments.at(0));
  if (!document) return tl::make_unexpected(document.error());
  return writeDocument(**document, destination);
}

}  // namespace orvanel
