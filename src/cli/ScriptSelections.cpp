// Script commands that select.
#include <array>
#include <cmath>

#include "cli/ScriptCommands.h"
#include "tools/selection/MagicWand.h"
#include "tools/selection/SelectionGesture.h"
#include "tools/selection/ShapeCost.h"

namespace orvanel {
namespace {

constexpr double largestFeather = 1000.0;
/// Far beyond every canvas; up to here the slopes of edges stay accurate to a fraction of a pixel.
constexpr NumberRange polygonRange{-1e6, 1e6};

float featherOf(StepArguments& arguments) {
  const QString name = QStringLiteral("feather");
  return arguments.has(name) ? static_cast<float>(arguments.number(name, {0.0, largestFeather})) : 0.0F;
}

SelectionMode modeOf(StepArguments& arguments) {
  const QString name = QStringLiteral("mode");
  if (!arguments.has(name)) return SelectionMode::replace;
  constexpr std::array modes{SelectionMode::replace, SelectionMode::add, SelectionMode::subtract,
                             SelectionMode::intersect};
  const int choice = arguments.choice(name, {QStringLiteral("new"), QStringLiteral("add"),
                                             QStringLiteral("subtract"), QStringLiteral("intersect")});
  return modes[static_cast<std::size_t>(choice)];
}

bool flagOf(StepArguments& arguments, const QString& name, bool standard) {
  return arguments.has(name) ? arguments.boolean(name) : standard;
}

ScriptAction rectangle(ScriptRun& run, StepArguments& arguments) {
  const double x = arguments.number(QStringLiteral("x"));
  const double y = arguments.number(QStringLiteral("y"));
  const double width = arguments.number(QStringLiteral("width"));
  const double height = arguments.number(QStringLiteral("height"));
  const float feather = featherOf(arguments);
  const SelectionMode mode = modeOf(arguments);
  return action([=, &run] {
    SelectionGesture gesture(run.document, QStringLiteral("Rectangle Select"));
    const PixelRect rect = drawnRect(*run.document, x, y, width, height);
    if (!rect.isEmpty()) {
      gesture.selectShape(
          mode, [&](Selection& shape) { shape.setRect(rect, feather, run.document->context()); },
          shapeCost::ofRect(*run.document, rect, feather));
    }
    gesture.close();
  });
}

ScriptAction ellipse(ScriptRun& run, StepArguments& arguments) {
  const auto cx = static_cast<float>(arguments.number(QStringLiteral("cx")));
  const auto cy = static_cast<float>(arguments.number(QStringLiteral("cy")));
  const NumberRange radius{.least = 0.0};
  const auto rx = static_cast<float>(arguments.number(QStringLiteral("rx"), radius));
  const auto ry = static_cast<float>(arguments.number(QStringLiteral("ry"), radius));
  const float feather = featherOf(arguments);
  const SelectionMode mode = modeOf(arguments);
  return action([=, &run] {
    SelectionGesture gesture(run.document, QStringLiteral("Ellipse Select"));
    gesture.selectShape(
        mode, [&](Selection& shape) { shape.setEllipse(cx, cy, rx, ry, feather, run.document->context()); },
        shapeCost::ofEllipse(*run.document, cx, cy, rx, ry, feather));
    gesture.close();
  });
}

ScriptAction polygon(ScriptRun& run, StepArguments& arguments) {
  std::vector<PolygonPoint> points;
  for (const auto& [x, y] : arguments.points(QStringLiteral("points"), polygonRange)) {
    points.push_back({static_cast<float>(x), static_cast<float>(y)});
  }
  const SelectionMode mode = modeOf(arguments);
  return action([=, &run] {
    SelectionGesture gesture(run.document, QStringLiteral("Polygonal Lasso Select"));
    if (points.size() > 2) {
      gesture.selectShape(
          mode, [&](Selection& shape) { shape.setPolygon(points, run.document->context()); },
          shapeCost::ofPolygon(*run.document, points));
    }
    gesture.close();
  });
}

ScriptAction wand(ScriptRun& run, StepArguments& arguments) {
  constexpr NumberRange pixels{-1e9, 1e9};
  const auto x = static_cast<int>(std::floor(arguments.number(QStringLiteral("x"), pixels)));
  const auto y = static_cast<int>(std::floor(arguments.number(QStringLiteral("y"), pixels)));
  MagicWandSettings settings;
  if (arguments.has(QStringLiteral("tolerance"))) {
    settings.tolerance = static_cast<float>(arguments.number(QStringLiteral("tolerance"), {0.0, 255.0}));
  }
  settings.contiguous = flagOf(arguments, QStringLiteral("contiguous"), settings.contiguous);
  settings.antialiased = flagOf(arguments, QStringLiteral("antialiased"), settings.antialiased);
  settings.sampleAllLayers = flagOf(arguments, QStringLiteral("sampleAllLayers"), settings.sampleAllLayers);
  const SelectionMode mode = modeOf(arguments);
  return action([=, &run] {
    if (const std::unique_ptr<MagicWand> pressed = MagicWand::press(run.document, x, y, mode, settings)) {
      pressed->release();
    }
  });
}

ScriptAction selectTransparency(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] {
    if (const std::shared_ptr<Layer> layer = run.document->activeLayer()) {
      run.document->selectLayerTransparency(*layer);
    }
  });
}

ScriptAction selectMask(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] {
    const std::shared_ptr<Layer> layer = run.document->activeLayer();
    if (layer != nullptr && layer->mask.value() != nullptr) run.document->selectMask(*layer->mask.value());
  });
}

ScriptAction selectChannel(ScriptRun& run, StepArguments& arguments) {
  const int index = arguments.integer(QStringLiteral("index"), 0, 3);
  return action([=, &run] { run.document->selectChannel(index); });
}

constexpr std::array table{
    NamedCommand{"rectangle", rectangle},
    NamedCommand{"ellipse", ellipse},
    NamedCommand{"polygon", polygon},
    NamedCommand{"wand", wand},
    NamedCommand{"selectAll", onDocument<&Document::selectAll>},
    NamedCommand{"deselect", onDocument<&Document::deselect>},
    NamedCommand{"invertSelection", onDocument<&Document::invertSelection>},
    NamedCommand{"selectTransparency", selectTransparency},
    NamedCommand{"selectMask", selectMask},
    NamedCommand{"selectChannel", selectChannel},
};

}  // namespace

std::span<const NamedCommand> selectionCommands() {
  return table;
}

}  // namespace orvanel
