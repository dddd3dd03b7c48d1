// Depth-first walks over a tree of nodes in list order, a folder before its children. They use an explicit
// stack, so that deep nesting can't overflow the thread's.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "model/Layer.h"

namespace orvanel {

enum class WalkStep {
  descend,  ///< into a folder, or past a layer
  skip,     ///< the folder's contents
  stop,     ///< the whole walk
};

/// Calls `enter(node, folder, index)` for each node, with its parent folder (null at the root) and its index
/// there, and `leave(folder)` after the children of every folder that was descended into. The tree must not
/// change during the walk.
template <typename Enter, typename Leave>
void walkNodes(const LayerNodeList& roots, const Enter& enter, const Leave& leave) {
  struct Level {
    const LayerNodeList* list;
    std::size_t next;
    std::shared_ptr<LayerFolder> folder;
  };
  std::vector<Level> levels{{&roots, 0, nullptr}};
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.list->size()) {
      const std::shared_ptr<LayerFolder> left = std::move(level.folder);
      levels.pop_back();
      if (left != nullptr) leave(*left);
      continue;
    }
    const std::size_t index = level.next++;
    const LayerNode& node = (*level.list)[index];
    const WalkStep step = enter(node, level.folder, static_cast<int>(index));
    if (step == WalkStep::stop) return;
    if (step == WalkStep::skip) continue;
    if (std::shared_ptr<LayerFolder> folder = node.folder()) {
      const LayerNodeList* children = &folder->children.value();
      levels.push_back({children, 0, std::move(folder)});
    }
  }
}

/// Calls `visit(node)` for each node.
template <typename Visit>
void forEachNode(const LayerNodeList& roots, const Visit& visit) {
  walkNodes(
      roots,
      [&](const LayerNode& node, const std::shared_ptr<LayerFolder>&, int) {
        visit(node);
        return WalkStep::descend;
      },
      [](const LayerFolder&) {});
}

/// The first node for which `matches(node)` holds.
template <typename Matches>
[[nodiscard]] std::optional<LayerNode> findNodeIf(const LayerNodeList& roots, const Matches& matches) {
  std::optional<LayerNode> found;
  walkNodes(
      roots,
      [&](const LayerNode& node, const std::shared_ptr<LayerFolder>&, int) {
        if (!matches(node)) return WalkStep::descend;
        found = node;
        return WalkStep::stop;
      },
      [](const LayerFolder&) {});
  return found;
}

}  // namespace orvanel
