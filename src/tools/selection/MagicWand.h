// A magic wand gesture: selects pixels similar to a seed, any number of times as the tolerance changes,
// always starting from the selection at the press. Owned by the tool or command that selects; main thread
// only.
#pragma once

#include <memory>
#include <optional>

#include "model/Document.h"
#include "raster/WandMatch.h"
#include "tools/ToolState.h"
#include "tools/selection/SelectionGesture.h"

namespace orvanel {

class MagicWand {
 public:
  /// Starts a gesture at a pixel. Null outside the canvas, or if there is nothing to sample because the
  /// active node isn't a layer.
  [[nodiscard]] static std::unique_ptr<MagicWand> press(const DocumentPtr& document, int x, int y,
                                                        SelectionMode mode,
                                                        const MagicWandSettings& settings);
  MagicWand(const MagicWand&) = delete;
  MagicWand& operator=(const MagicWand&) = delete;

  /// Selects the pixels within the settings' tolerance. If memory runs out, the selection at the press is
  /// kept.
  void select(const MagicWandSettings& settings);
  /// Ends the gesture and records it.
  void release() { gesture_.close(); }
  /// Ends the gesture with the selection at the press and without a record.
  void takeBack() { gesture_.takeBack(); }
  /// False once released, or ended by the document.
  [[nodiscard]] bool isOpen() const { return gesture_.isOpen(); }

 private:
  MagicWand(const DocumentPtr& document, WandMatch match, int x, int y, SelectionMode mode);

  SelectionGesture gesture_;
  SelectionMode mode_;
  WandMatch match_;
  int seedX_;
  int seedY_;
  Color4 seed_;
};

}  // namespace orvanel
