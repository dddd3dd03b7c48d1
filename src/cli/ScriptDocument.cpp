// Script commands on the document as a whole: canvas, history, file and state.
#include <array>
#include <utility>

#include "cli/DocumentAccess.h"
#include "cli/DocumentFacts.h"
#include "cli/Output.h"
#include "cli/ScriptCommands.h"
#include "io/files/FileName.h"

namespace orvanel {
namespace {

StepResult failed(const QString& reason) {
  return tl::make_unexpected(reason);
}

int sideOf(StepArguments& arguments, const QString& name) {
  return arguments.integer(name, 1, maximumCanvasSide);
}

ScriptAction imageSize(ScriptRun& run, StepArguments& arguments) {
  const int width = sideOf(arguments, QStringLiteral("width"));
  const int height = sideOf(arguments, QStringLiteral("height"));
  const int method = arguments.integer(QStringLiteral("method"), 0, 2);
  return action([=, &run] { run.document->resizeImage(width, height, static_cast<ResampleMethod>(method)); });
}

ScriptAction canvasSize(ScriptRun& run, StepArguments& arguments) {
  const int width = sideOf(arguments, QStringLiteral("width"));
  const int height = sideOf(arguments, QStringLiteral("height"));
  const int anchorX = arguments.integer(QStringLiteral("anchorX"), -1, 1);
  const int anchorY = arguments.integer(QStringLiteral("anchorY"), -1, 1);
  return action([=, &run] { run.document->resizeCanvas(width, height, anchorX, anchorY); });
}

ScriptAction trim(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] {
    // The editor would beep here; a script ignores the result.
    static_cast<void>(run.document->trim());
  });
}

ScriptAction changeColorMode(ScriptRun& run, StepArguments& arguments) {
  const int mode = arguments.integer(QStringLiteral("mode"), 0, static_cast<int>(allColorModes.size()) - 1);
  return action([=, &run] { run.document->changeColorMode(allColorModes[static_cast<std::size_t>(mode)]); });
}

int countOf(StepArguments& arguments) {
  constexpr int mostSteps = 1'000'000;
  const QString name = QStringLiteral("count");
  return arguments.has(name) ? arguments.integer(name, 1, mostSteps) : 1;
}

ScriptAction undo(ScriptRun& run, StepArguments& arguments) {
  const int count = countOf(arguments);
  return action([=, &run] {
    for (int i = 0; i < count; ++i) run.document->undo();
  });
}

ScriptAction redo(ScriptRun& run, StepArguments& arguments) {
  const int count = countOf(arguments);
  return action([=, &run] {
    for (int i = 0; i < count; ++i) run.document->redo();
  });
}

ScriptAction save(ScriptRun& run, StepArguments& arguments) {
  const QString path = arguments.text(QStringLiteral("path"));
  return [=, &run]() -> StepResult {
    CommandResult written = checkWritableName(path);
    if (written) written = writeDocument(*run.document, path);
    if (!written) return failed(path + QStringLiteral(": ") + written.error().reason);
    // Saving a flat copy is an export and leaves the document unsaved.
    if (isDocumentName(path)) run.document->setDirty(false);
    return {};
  };
}

void writeOptionalText(JsonWriter& json, const std::optional<QString>& text) {
  if (text) {
    json.string(*text);
  } else {
    json.null();
  }
}

QByteArray describeState(const Document& document) {
  TextureSnapshot::waitForCompression();
  const std::shared_ptr<const Selection>& selection = document.selection.value();
  const Selection::Flags flags = selection != nullptr ? selection->flags() : Selection::Flags{};
  const UndoStack& history = document.undoStack;
  JsonWriter json(JsonWriter::Layout::oneLine);
  json.openObject();
  json.key("canvasWidth");
  json.integer(document.canvasWidth.value());
  json.key("canvasHeight");
  json.integer(document.canvasHeight.value());
  json.key("colorMode");
  json.integer(rawValue(document.colorMode.value()));
  json.key("selectedNodeID");
  writeOptionalID(json, document.selectedNodeID.value());
  json.key("hasSelection");
  json.boolean(flags.hasSelection);
  json.key("isFullSelection");
  json.boolean(flags.isFullSelection);
  json.key("selectionBounds");
  writeBounds(json, flags.hasSelection ? document.context().selectionBounds(*selection->maskTexture->texture)
                                       : std::nullopt);
  json.key("undoActionName");
  writeOptionalText(json, history.undoActionName());
  json.key("redoActionName");
  writeOptionalText(json, history.redoActionName());
  json.key("operations");
  json.integer(std::ssize(history.operations()));
  json.key("currentIndex");
  json.integer(history.currentIndex.value());
  json.key("totalMemoryCost");
  json.integer(history.totalMemoryCost());
  json.key("isDirty");
  json.boolean(document.isDirty.value());
  json.key("nodes");
  writeNodes(json, document);
  json.closeObject();
  return json.text() + '\n';
}

ScriptAction state(ScriptRun& run, StepArguments& /*arguments*/) {
  return [&run]() -> StepResult {
    const CommandResult printed = printText(QString::fromUtf8(describeState(*run.document)));
    if (!printed) return failed(printed.error().file + QStringLiteral(": ") + printed.error().reason);
    return {};
  };
}

constexpr std::array table{
    NamedCommand{"imageSize", imageSize},
    NamedCommand{"canvasSize", canvasSize},
    NamedCommand{"crop", onDocument<&Document::cropToSelection>},
    NamedCommand{"trim", trim},
    NamedCommand{"colorMode", changeColorMode},
    NamedCommand{"undo", undo},
    NamedCommand{"redo", redo},
    NamedCommand{"save", save},
    NamedCommand{"state", state},
};

}  // namespace

std::span<const NamedCommand> documentCommands() {
  return table;
}

}  // namespace orvanel
