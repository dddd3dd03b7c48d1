#include "cli/ConvertCommand.h"

#include "cli/DocumentAccess.h"

namespace orvanel {

CommandResult runConvert(const Invocation& invocation) {
  const QString& destination = invocation.arguments.at(1);
  // Checked first, so that no large file is read in vain.
  if (CommandResult name = checkWritableName(destination); !name) return name;
  const auto document = readDocument(invocation.arguments.at(0), destination);
  if (!document) return tl::make_unexpected(document.error());
  return writeDocument(**document, destination);
}

}  // namespace orvanel
