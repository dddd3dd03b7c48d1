#include "cli/InfoCommand.h"

#include "cli/DocumentAccess.h"
#include "cli/DocumentFacts.h"
#include "cli/Output.h"
#include "io/document/Json.h"

namespace orvanel {

QByteArray describeAsJson(const Document& document) {
  JsonWriter json;
  json.openObject();
  json.key("backgroundColor");
  json.string(document.backgroundColor.value().hexText());
  json.key("canvasHeight");
  json.integer(document.canvasHeight.value());
  json.key("canvasWidth");
  json.integer(document.canvasWidth.value());
  json.key("colorMode");
  json.integer(rawValue(document.colorMode.value()));
  json.key("foregroundColor");
  json.string(document.foregroundColor.value().hexText());
  json.key("memoryUsage");
  json.integer(document.memoryUsage());
  json.key("name");
  json.string(document.name.value());
  json.key("nodes");
  writeNodes(json, document);
  json.key("selectedNodeID");
  writeOptionalID(json, document.selectedNodeID.value());
  json.closeObject();
  return json.text() + '\n';
}

CommandResult runInfo(const Invocation& invocation) {
  const auto document = readDocument(invocation.arguments.at(0));
  if (!document) return tl::make_unexpected(document.error());
  return printText(QString::fromUtf8(describeAsJson(**document)));
}

}  // namespace orvanel
