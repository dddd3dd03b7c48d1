// Seeded random commands on a document: every command that leaves a record, and unrecorded changes by the
// user in between.
#pragma once

#include <functional>
#include <optional>
#include <random>
#include <string_view>

#include "model/Document.h"

namespace orvanel::test {

class RandomCommands {
 public:
  RandomCommands(DocumentPtr document, unsigned seed);

  /// Runs one command and returns its name.
  std::string_view runOne();
  [[nodiscard]] int below(int bound);

  // Random choices for the commands.
  [[nodiscard]] Document& document() const { return *document_; }
  [[nodiscard]] const DocumentPtr& shared() const { return document_; }
  [[nodiscard]] float fraction();
  [[nodiscard]] int coordinate(int canvasSide);
  [[nodiscard]] std::optional<LayerNode> anyNode();

  /// To be called by a command between the steps of its gesture: what is shown may be written meanwhile.
  void stepped();
  /// Called then.
  std::function<void()> onStep;

  std::optional<PixelClipboard> clipboard;
  /// The node moved by the last command, if any.
  std::optional<QUuid> movedNode;

 private:
  DocumentPtr document_;
  std::mt19937 random_;
};

/// Whether the command changes the opacity of the active node.
[[nodiscard]] bool changesOpacity(std::string_view command);
/// Whether the command leaves a record but doesn't make the document dirty.
[[nodiscard]] bool keepsClean(std::string_view command);

}  // namespace orvanel::test
