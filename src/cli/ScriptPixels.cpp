// Script commands on pixels and masks.
#include <QTransform>
#include <array>
#include <functional>
#include <utility>

#include "cli/ScriptCommands.h"
#include "model/LevelsAdjustment.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel {
namespace {

/// A command on the active layer, without arguments.
template <auto method>
ScriptAction onActiveLayer(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] {
    if (const std::shared_ptr<Layer> layer = run.document->activeLayer()) ((*run.document).*method)(layer);
  });
}

ScriptAction fill(ScriptRun& run, StepArguments& arguments) {
  const std::vector<double> color = arguments.numbers(QStringLiteral("color"), 4, {0.0, 1.0});
  return action([=, &run] {
    run.document->fillSelection({static_cast<float>(color[0]), static_cast<float>(color[1]),
                                 static_cast<float>(color[2]), static_cast<float>(color[3])});
  });
}

ScriptAction copy(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] {
    if (auto copied = run.document->copyPixels()) run.pixelClipboard = std::move(copied);
  });
}

ScriptAction cut(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] {
    if (auto copied = run.document->cutPixels()) run.pixelClipboard = std::move(copied);
  });
}

ScriptAction paste(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] {
    if (run.pixelClipboard) run.document->pastePixels(*run.pixelClipboard);
  });
}

ScriptAction levels(ScriptRun& run, StepArguments& arguments) {
  Levels levels;
  levels.blackPoint = static_cast<float>(arguments.number(QStringLiteral("black"), {0.0, 255.0}));
  levels.whitePoint = static_cast<float>(arguments.number(QStringLiteral("white"), {0.0, 255.0}));
  levels.gamma = static_cast<float>(arguments.number(QStringLiteral("gamma"), {0.1, 9.99}));
  return action([=, &run] {
    if (auto adjustment = LevelsAdjustment::begin(run.document)) {
      adjustment->apply(levels);
      adjustment->commit();
    }
  });
}

/// Performs one transform under one record; does nothing without content or on a locked layer.
void transformContent(const ScriptRun& run, const QString& actionName,
                      const std::function<void(LayerTransform&)>& change) {
  const std::unique_ptr<LayerTransform> transform = LayerTransform::begin(run.document, actionName);
  if (transform == nullptr) return;
  change(*transform);
  transform->commit();
}

ScriptAction move(ScriptRun& run, StepArguments& arguments) {
  const int dx = arguments.integer(QStringLiteral("dx"));
  const int dy = arguments.integer(QStringLiteral("dy"));
  return action([=, &run] {
    transformContent(run, QStringLiteral("Move"),
                     [&](LayerTransform& content) { content.translate(dx, dy); });
  });
}

ScriptAction scale(ScriptRun& run, StepArguments& arguments) {
  const std::vector<double> to = arguments.numbers(QStringLiteral("to"), 4);
  if (to[2] < 1.0 || to[3] < 1.0) {
    arguments.fail(QStringLiteral("\"to\" must have a width and height of at least 1"));
  }
  return action([=, &run] {
    transformContent(run, QStringLiteral("Scale"), [&](LayerTransform& content) {
      content.scaleTo({to[0], to[1], to[2], to[3]});
    });
  });
}

ScriptAction rotate(ScriptRun& run, StepArguments& arguments) {
  const double angle = arguments.number(QStringLiteral("angle"));
  return action([=, &run] {
    transformContent(run, QStringLiteral("Rotate"),
                     [&](LayerTransform& content) { content.rotate(static_cast<float>(angle)); });
  });
}

ScriptAction transform(ScriptRun& run, StepArguments& arguments) {
  const std::vector<double> m = arguments.numbers(QStringLiteral("matrix"), 6);
  const QTransform matrix(m[0], m[1], m[2], m[3], m[4], m[5]);
  if (!LayerTransform::canInvert(matrix)) arguments.fail(QStringLiteral("\"matrix\" can't be inverted"));
  return action([=, &run] {
    transformContent(run, QStringLiteral("Free Transform"),
                     [&](LayerTransform& content) { content.transform(matrix); });
  });
}

constexpr std::array table{
    NamedCommand{"fill", fill},
    NamedCommand{"clear", onDocument<&Document::clearActive>},
    NamedCommand{"invert", onDocument<&Document::invertActive>},
    NamedCommand{"copy", copy},
    NamedCommand{"cut", cut},
    NamedCommand{"paste", paste},
    NamedCommand{"levels", levels},
    NamedCommand{"addMask", onActiveLayer<&Document::addLayerMask>},
    NamedCommand{"applyMask", onActiveLayer<&Document::applyLayerMask>},
    NamedCommand{"removeMask", onActiveLayer<&Document::removeLayerMask>},
    NamedCommand{"move", move},
    NamedCommand{"scale", scale},
    NamedCommand{"rotate", rotate},
    NamedCommand{"transform", transform},
};

}  // namespace

std::span<const NamedCommand> pixelCommands() {
  return table;
}

}  // namespace orvanel
