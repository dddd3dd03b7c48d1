#include "tools/RandomCommands.h"

#include <QTransform>
#include <array>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "model/LevelsAdjustment.h"
#include "model/NodeWalk.h"
#include "model/OpenOpacityEdit.h"
#include "model/VisibilitySweep.h"
#include "tools/selection/MagicWand.h"
#include "tools/selection/SelectionGesture.h"
#include "tools/selection/ShapeCost.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel::test {
namespace {

constexpr int mostLayers = 7;
/// Three tiles.
constexpr int largestSide = 300;

using Command = void (*)(RandomCommands& commands);

void collectNodes(const LayerNodeList& list, std::vector<LayerNode>& nodes) {
  for (const LayerNode& node : list) {
    nodes.push_back(node);
    if (const auto folder = node.folder()) collectNodes(folder->children.value(), nodes);
  }
}

int side(RandomCommands& c) {
  return 1 + c.below(largestSide);
}

SelectionMode anyMode(RandomCommands& c) {
  constexpr std::array modes{SelectionMode::replace, SelectionMode::add, SelectionMode::subtract,
                             SelectionMode::intersect};
  return modes[static_cast<std::size_t>(c.below(4))];
}

void onActiveNode(RandomCommands& c, const std::function<void(const LayerNode&)>& change) {
  if (const auto node = c.document().activeNode()) change(*node);
}

void onActiveLayer(RandomCommands& c, const std::function<void(const std::shared_ptr<Layer>&)>& change) {
  if (const auto layer = c.document().activeLayer()) change(layer);
}

void moveIntoFolder(RandomCommands& c) {
  const auto node = c.anyNode();
  const auto target = c.anyNode();
  if (!node || !target || target->folder() == nullptr || target->id() == node->id()) return;
  const auto folder = node->folder();
  if (folder != nullptr && findNode(target->id(), folder->children.value())) return;
  c.movedNode = node->id();
  c.document().moveNode(node->id(), target->id());
}

/// Moves to the root or into a folder. A layer as the parent means the root; a parent inside the node means
/// no move.
void moveToIndex(RandomCommands& c) {
  const auto node = c.anyNode();
  const auto parent = c.anyNode();
  if (!node) return;
  c.movedNode = node->id();
  const auto parentID = c.below(3) == 0 ? std::nullopt : std::optional(parent->id());
  c.document().moveNode(node->id(), parentID, c.below(6) - 1);
}

/// Shows or hides several nodes at once, as dragging over the layer list does.
void showOrHideMany(RandomCommands& c) {
  std::vector<QUuid> nodeIDs;
  forEachNode(c.document().rootNodes.value(), [&](const LayerNode& node) {
    if (c.below(2) == 0) nodeIDs.push_back(node.id());
  });
  c.document().setVisible(nodeIDs, c.below(2) == 0);
}

void sweepVisibility(RandomCommands& c) {
  VisibilitySweep sweep(c.shared(), c.below(2) == 0);
  for (int i = c.below(4); i > 0; --i) {
    if (const auto node = c.anyNode()) sweep.add(node->id());
    c.stepped();
  }
  sweep.end();
}

void dragOpacity(RandomCommands& c) {
  const auto node = c.document().activeNode();
  const auto edit = node ? OpenOpacityEdit::begin(c.shared(), node->id()) : nullptr;
  if (edit == nullptr) return;
  for (int i = c.below(3); i > 0; --i) {
    edit->show(c.fraction());
    c.stepped();
  }
  if (c.below(4) == 0) {
    edit->takeBack();
  } else {
    edit->keep();
  }
}

void enableMask(RandomCommands& c) {
  onActiveLayer(c, [&](const auto& layer) { c.document().setMaskEnabled(layer->id, c.below(2) == 0); });
}

void expandFolder(RandomCommands& c) {
  if (const auto node = c.anyNode()) c.document().setExpanded(node->id(), c.below(2) == 0);
}

void selectRectangle(RandomCommands& c) {
  SelectionGesture gesture(c.shared(), QStringLiteral("Rectangle Select"));
  const PixelRect rect = drawnRect(c.document(), c.coordinate(c.document().canvasWidth.value()),
                                   c.coordinate(c.document().canvasHeight.value()), side(c), side(c));
  const float feather = c.below(3) == 0 ? 5.0F * c.fraction() : 0.0F;
  if (!rect.isEmpty()) {
    gesture.selectShape(
        anyMode(c), [&](Selection& shape) { shape.setRect(rect, feather, c.document().context()); },
        shapeCost::ofRect(c.document(), rect, feather));
    c.stepped();
  }
  gesture.close();
}

void selectEllipse(RandomCommands& c) {
  SelectionGesture gesture(c.shared(), QStringLiteral("Ellipse Select"));
  const float feather = c.below(3) == 0 ? 5.0F * c.fraction() : 0.0F;
  const auto centerX = static_cast<float>(c.coordinate(c.document().canvasWidth.value()));
  const auto centerY = static_cast<float>(c.coordinate(c.document().canvasHeight.value()));
  const float radiusX = 60.0F * c.fraction();
  const float radiusY = 60.0F * c.fraction();
  gesture.selectShape(
      anyMode(c),
      [&](Selection& shape) {
        shape.setEllipse(centerX, centerY, radiusX, radiusY, feather, c.document().context());
      },
      shapeCost::ofEllipse(c.document(), centerX, centerY, radiusX, radiusY, feather));
  c.stepped();
  if (c.below(4) == 0) {
    gesture.takeBack();
  } else {
    gesture.close();
  }
}

void selectPolygon(RandomCommands& c) {
  std::vector<PolygonPoint> points(static_cast<std::size_t>(3 + c.below(5)));
  for (PolygonPoint& point : points) {
    point = {static_cast<float>(c.coordinate(c.document().canvasWidth.value())),
             static_cast<float>(c.coordinate(c.document().canvasHeight.value()))};
  }
  SelectionGesture gesture(c.shared(), QStringLiteral("Polygonal Lasso Select"));
  gesture.selectShape(
      anyMode(c), [&](Selection& shape) { shape.setPolygon(points, c.document().context()); },
      shapeCost::ofPolygon(c.document(), points));
  gesture.close();
}

void selectWithWand(RandomCommands& c) {
  MagicWandSettings settings;
  settings.tolerance = 255.0F * c.fraction();
  settings.contiguous = c.below(2) == 0;
  settings.antialiased = c.below(2) == 0;
  settings.sampleAllLayers = c.below(2) == 0;
  const auto wand = MagicWand::press(c.shared(), c.coordinate(c.document().canvasWidth.value()),
                                     c.coordinate(c.document().canvasHeight.value()), anyMode(c), settings);
  if (wand == nullptr) return;
  c.stepped();
  settings.tolerance = 255.0F * c.fraction();
  wand->select(settings);
  c.stepped();
  wand->release();
}

void adjustLevels(RandomCommands& c) {
  auto adjustment = LevelsAdjustment::begin(c.shared());
  if (!adjustment) return;
  adjustment->apply({.blackPoint = 250.0F * c.fraction(), .whitePoint = 255.0F, .gamma = 2.0F});
  c.stepped();
  adjustment->apply({.blackPoint = 100.0F * c.fraction(),
                     .whitePoint = 130.0F + 100.0F * c.fraction(),
                     .gamma = 0.2F + 3.0F * c.fraction()});
  c.stepped();
  if (c.below(4) == 0) {
    adjustment->cancel();
  } else {
    adjustment->commit();
  }
}

bool showTransform(RandomCommands& c, LayerTransform& transform) {
  switch (c.below(4)) {
    case 0:
      return transform.translate(c.below(61) - 30, c.below(61) - 30);
    case 1:
      return transform.scaleTo(
          {-20.0 + c.below(60), -20.0 + c.below(60), 1.0 + c.below(150), 1.0 + c.below(150)});
    case 2:
      return transform.rotate(6.0F * c.fraction());
    default:
      return transform.transform(QTransform(1.0, 0.3, -0.2, 0.7, c.below(20), c.below(20)));
  }
}

void transformContent(RandomCommands& c) {
  const auto transform = LayerTransform::begin(c.shared(), QStringLiteral("Free Transform"));
  if (transform == nullptr) return;
  for (int i = c.below(3); i >= 0; --i) {
    showTransform(c, *transform);
    c.stepped();
  }
  if (c.below(5) == 0) {
    transform->cancel();
  } else {
    transform->commit();
  }
}

bool hasRoom(const RandomCommands& c) {
  return c.document().layerCount() < mostLayers;
}

// Names, shown in failures, and relative frequencies of the commands.
struct Entry {
  std::string_view name;
  int weight;
  Command run;
};

constexpr std::array table{
    Entry{"add layer", 2,
          [](RandomCommands& c) {
            if (hasRoom(c)) c.document().addLayer(QStringLiteral("New"));
          }},
    Entry{"add folder", 1,
          [](RandomCommands& c) {
            if (hasRoom(c)) c.document().addFolder(QStringLiteral("Group"));
          }},
    Entry{"remove node", 2,
          [](RandomCommands& c) {
            onActiveNode(c, [&](const LayerNode& node) { c.document().removeNode(node.id()); });
          }},
    Entry{"duplicate node", 2,
          [](RandomCommands& c) {
            if (hasRoom(c))
              onActiveNode(c, [&](const LayerNode& node) { c.document().duplicateNode(node.id()); });
          }},
    Entry{"move into folder", 3, moveIntoFolder},
    Entry{"move to index", 2, moveToIndex},
    Entry{"activate node", 8,
          [](RandomCommands& c) {
            if (const auto node = c.anyNode()) c.document().selectNode(node->id());
          }},
    Entry{"edit mask", 4,
          [](RandomCommands& c) {
            onActiveLayer(
                c, [&](const auto& layer) { c.document().setMaskSelected(layer->id, c.below(2) == 0); });
          }},
    Entry{"opacity", 4,
          [](RandomCommands& c) {
            onActiveNode(c, [&](const LayerNode& node) { c.document().setOpacity(node.id(), c.fraction()); });
          }},
    Entry{"opacity", 2, dragOpacity},
    Entry{"blend mode", 2,
          [](RandomCommands& c) {
            onActiveNode(c, [&](const LayerNode& node) {
              c.document().setBlendMode(node.id(), allBlendModes[static_cast<std::size_t>(c.below(8))]);
            });
          }},
    Entry{"rename", 1,
          [](RandomCommands& c) {
            onActiveNode(c, [&](const LayerNode& node) {
              c.document().rename(node.id(), QString::number(c.below(3)));
            });
          }},
    Entry{"visibility", 2,
          [](RandomCommands& c) {
            onActiveNode(c,
                         [&](const LayerNode& node) { c.document().setVisible(node.id(), c.below(2) == 0); });
          }},
    Entry{"visibility of many", 2, showOrHideMany},
    Entry{"sweep of visibility", 2, sweepVisibility},
    Entry{"expand folder", 1, expandFolder},
    Entry{"enable mask", 3, enableMask},
    Entry{"lock", 1,
          [](RandomCommands& c) {
            onActiveNode(c,
                         [&](const LayerNode& node) { c.document().setLocked(node.id(), c.below(3) == 0); });
          }},
    Entry{"fill", 5,
          [](RandomCommands& c) {
            c.document().fillSelection({c.fraction(), c.fraction(), c.fraction(), c.fraction()});
          }},
    Entry{"clear", 2, [](RandomCommands& c) { c.document().clearActive(); }},
    Entry{"invert", 3, [](RandomCommands& c) { c.document().invertActive(); }},
    Entry{"copy", 2,
          [](RandomCommands& c) {
            if (auto copied = c.document().copyPixels()) c.clipboard = std::move(copied);
          }},
    Entry{"cut", 2,
          [](RandomCommands& c) {
            if (auto copied = c.document().cutPixels()) c.clipboard = std::move(copied);
          }},
    Entry{"paste", 2,
          [](RandomCommands& c) {
            if (hasRoom(c) && c.clipboard) c.document().pastePixels(*c.clipboard);
          }},
    Entry{"flatten", 2, [](RandomCommands& c) { static_cast<void>(c.document().composite()); }},
    Entry{"levels", 3, adjustLevels},
    Entry{"transform", 5, transformContent},
    Entry{"select all", 1, [](RandomCommands& c) { c.document().selectAll(); }},
    Entry{"deselect", 2, [](RandomCommands& c) { c.document().deselect(); }},
    Entry{"invert selection", 2, [](RandomCommands& c) { c.document().invertSelection(); }},
    Entry{"select transparency", 1,
          [](RandomCommands& c) {
            onActiveLayer(c, [&](const auto& layer) { c.document().selectLayerTransparency(*layer); });
          }},
    Entry{"select channel", 1, [](RandomCommands& c) { c.document().selectChannel(c.below(4)); }},
    Entry{"select mask", 1,
          [](RandomCommands& c) {
            onActiveLayer(c, [&](const auto& layer) {
              if (layer->mask.value() != nullptr) c.document().selectMask(*layer->mask.value());
            });
          }},
    Entry{"rectangle", 3, selectRectangle},
    Entry{"ellipse", 3, selectEllipse},
    Entry{"polygon", 2, selectPolygon},
    Entry{"wand", 3, selectWithWand},
    Entry{"add mask", 4,
          [](RandomCommands& c) {
            onActiveLayer(c, [&](const auto& layer) { c.document().addLayerMask(layer); });
          }},
    Entry{"apply mask", 1,
          [](RandomCommands& c) {
            onActiveLayer(c, [&](const auto& layer) { c.document().applyLayerMask(layer); });
          }},
    Entry{"remove mask", 1,
          [](RandomCommands& c) {
            onActiveLayer(c, [&](const auto& layer) { c.document().removeLayerMask(layer); });
          }},
    Entry{"image size", 1,
          [](RandomCommands& c) {
            c.document().resizeImage(side(c), side(c), static_cast<ResampleMethod>(c.below(3)));
          }},
    Entry{"canvas size", 1,
          [](RandomCommands& c) {
            c.document().resizeCanvas(side(c), side(c), c.below(3) - 1, c.below(3) - 1);
          }},
    Entry{"crop", 1, [](RandomCommands& c) { c.document().cropToSelection(); }},
    Entry{"trim", 1, [](RandomCommands& c) { static_cast<void>(c.document().trim()); }},
    Entry{"color mode", 1,
          [](RandomCommands& c) {
            c.document().changeColorMode(allColorModes[static_cast<std::size_t>(c.below(4))]);
          }},
};

}  // namespace

RandomCommands::RandomCommands(DocumentPtr document, unsigned seed)
    : document_(std::move(document)), random_(seed) {}

int RandomCommands::below(int bound) {
  return static_cast<int>(random_() % static_cast<unsigned>(bound));
}

float RandomCommands::fraction() {
  return static_cast<float>(random_() % 1001U) / 1000.0F;
}

int RandomCommands::coordinate(int canvasSide) {
  return below(canvasSide + 20) - 10;
}

void RandomCommands::stepped() {
  if (onStep) onStep();
  if (below(3) != 0) return;
  document_->settle();
  if (onStep) onStep();
}

std::optional<LayerNode> RandomCommands::anyNode() {
  std::vector<LayerNode> nodes;
  collectNodes(document_->rootNodes.value(), nodes);
  if (nodes.empty()) return std::nullopt;
  return nodes[static_cast<std::size_t>(below(static_cast<int>(nodes.size())))];
}

std::string_view RandomCommands::runOne() {
  movedNode = std::nullopt;
  int total = 0;
  for (const Entry& entry : table) total += entry.weight;
  int drawn = below(total);
  for (const Entry& entry : table) {
    if ((drawn -= entry.weight) >= 0) continue;
    entry.run(*this);
    return entry.name;
  }
  return {};
}

bool changesOpacity(std::string_view command) {
  return command == "opacity";
}

bool keepsClean(std::string_view command) {
  return command == "move to index";
}

}  // namespace orvanel::test
