// Script commands on nodes: the active one, the tree, properties.
#include <array>
#include <functional>
#include <utility>

#include "cli/ScriptCommands.h"
#include "model/NodeWalk.h"

namespace orvanel {
namespace {

/// Finds a node by its id or, depth first, by its name; fails the step if there is none.
std::optional<LayerNode> nodeOf(const ScriptRun& run, StepArguments& arguments, const QString& argument) {
  const QString text = arguments.text(argument);
  const QUuid id = uuidFromText(text);
  std::optional<LayerNode> node = id.isNull() ? std::nullopt : run.document->findNode(id);
  if (!node) {
    node = findNodeIf(run.document->rootNodes.value(),
                      [&](const LayerNode& candidate) { return candidate.name().value() == text; });
  }
  if (!node) arguments.fail(QStringLiteral("unknown node \"%1\"").arg(text));
  return node;
}

std::optional<QUuid> folderOf(const ScriptRun& run, StepArguments& arguments, const QString& argument) {
  const std::optional<LayerNode> node = nodeOf(run, arguments, argument);
  if (node && node->folder() == nullptr) {
    arguments.fail(QStringLiteral("\"%1\" must be a folder").arg(argument));
  }
  return node ? std::optional(node->id()) : std::nullopt;
}

/// Whether `id` is the node itself or one of its descendants.
bool holds(const LayerNode& node, const QUuid& id) {
  if (node.id() == id) return true;
  const std::shared_ptr<LayerFolder> folder = node.folder();
  return folder != nullptr && findNode(id, folder->children.value()).has_value();
}

ScriptAction select(ScriptRun& run, StepArguments& arguments) {
  const std::optional<LayerNode> node = nodeOf(run, arguments, QStringLiteral("node"));
  return action([=, &run] { run.document->selectNode(node->id()); });
}

ScriptAction editMask(ScriptRun& run, StepArguments& arguments) {
  const bool on = arguments.boolean(QStringLiteral("on"));
  return action([=, &run] {
    if (const std::shared_ptr<Layer> layer = run.document->activeLayer()) {
      run.document->setMaskSelected(layer->id, on);
    }
  });
}

ScriptAction addLayer(ScriptRun& run, StepArguments& arguments) {
  const QString name = arguments.text(QStringLiteral("name"));
  return action([=, &run] { run.document->addLayer(name); });
}

ScriptAction addFolder(ScriptRun& run, StepArguments& arguments) {
  const QString name = arguments.text(QStringLiteral("name"));
  return action([=, &run] { run.document->addFolder(name); });
}

ScriptAction removeNode(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] {
    if (const std::optional<LayerNode> node = run.document->activeNode())
      run.document->removeNode(node->id());
  });
}

ScriptAction duplicateNode(ScriptRun& run, StepArguments& /*arguments*/) {
  return action([&run] {
    if (const std::optional<LayerNode> node = run.document->activeNode()) {
      run.document->duplicateNode(node->id());
    }
  });
}

ScriptAction moveNode(ScriptRun& run, StepArguments& arguments) {
  const std::optional<LayerNode> node = nodeOf(run, arguments, QStringLiteral("node"));
  std::optional<QUuid> folder;
  std::optional<int> index;
  if (arguments.has(QStringLiteral("into"))) {
    folder = folderOf(run, arguments, QStringLiteral("into"));
  } else {
    if (!arguments.isNull(QStringLiteral("parent"))) {
      folder = folderOf(run, arguments, QStringLiteral("parent"));
    }
    index = arguments.integer(QStringLiteral("index"));
  }
  if (node && folder && holds(*node, *folder)) {
    arguments.fail(QStringLiteral("a folder can't be moved into itself"));
  }
  return action([=, &run] {
    if (index) {
      run.document->moveNode(node->id(), folder, *index);
    } else {
      run.document->moveNode(node->id(), *folder);
    }
  });
}

ScriptAction set(ScriptRun& run, StepArguments& arguments) {
  Document& document = *run.document;
  const std::optional<LayerNode> node = document.activeNode();
  std::vector<std::function<void(const LayerNode&)>> changes;
  if (arguments.has(QStringLiteral("name"))) {
    changes.emplace_back([&, value = arguments.text(QStringLiteral("name"))](const LayerNode& target) {
      document.rename(target.id(), value);
    });
  }
  if (arguments.has(QStringLiteral("opacity"))) {
    const auto value = static_cast<float>(arguments.number(QStringLiteral("opacity"), {0.0, 1.0}));
    changes.emplace_back([&, value](const LayerNode& target) { document.setOpacity(target.id(), value); });
  }
  if (arguments.has(QStringLiteral("blendMode"))) {
    const int raw =
        arguments.integer(QStringLiteral("blendMode"), 0, static_cast<int>(allBlendModes.size()) - 1);
    changes.emplace_back([&, value = allBlendModes[static_cast<std::size_t>(raw)]](const LayerNode& target) {
      document.setBlendMode(target.id(), value);
    });
  }
  if (arguments.has(QStringLiteral("isVisible"))) {
    const bool value = arguments.boolean(QStringLiteral("isVisible"));
    changes.emplace_back([&, value](const LayerNode& target) { document.setVisible(target.id(), value); });
  }
  if (arguments.has(QStringLiteral("isLocked"))) {
    const bool value = arguments.boolean(QStringLiteral("isLocked"));
    changes.emplace_back([&, value](const LayerNode& target) { document.setLocked(target.id(), value); });
  }
  if (arguments.has(QStringLiteral("maskEnabled"))) {
    const bool value = arguments.boolean(QStringLiteral("maskEnabled"));
    changes.emplace_back(
        [&, value](const LayerNode& target) { document.setMaskEnabled(target.id(), value); });
  }
  return action([=] {
    if (node) {
      for (const auto& change : changes) change(*node);
    }
  });
}

constexpr std::array table{
    NamedCommand{"select", select},         NamedCommand{"editMask", editMask},
    NamedCommand{"addLayer", addLayer},     NamedCommand{"addFolder", addFolder},
    NamedCommand{"removeNode", removeNode}, NamedCommand{"duplicateNode", duplicateNode},
    NamedCommand{"moveNode", moveNode},     NamedCommand{"set", set},
};

}  // namespace

std::span<const NamedCommand> treeCommands() {
  return table;
}

}  // namespace orvanel
