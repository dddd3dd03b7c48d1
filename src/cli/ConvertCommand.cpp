#include "cli/ConvertCommand.h"

#include "cli/DocumentAccess.h"

namespace orvanel {

CommandResult runConvert(const Invocation& invocation) {
  const QString& destination = invocation.arguments.at(1);
  // A name that can't be written is said before a large file is read for nothing.
  if (CommandResult name = checkWritableName(destination); !name) return name;
  const auto document = readDocument(invocation.arguments.at(0));
  if (!document) return tl::make_unexpected(document.error());
  return writeDocument(**document, destination);
}

}  // namespace orvanel
