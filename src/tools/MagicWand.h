// The magic wand's choice of pixels like a seed, from press to release: as often as the tolerance changes,
// each time from the selection of the press. Owned by the tool or command that selects; main thread only.
#pragma once

#include <memory>
#include <optional>

#include "model/Document.h"
#include "tools/SelectionGesture.h"
#include "tools/ToolState.h"

namespace orvanel {

class MagicWand {
 public:
  /// Presses at a pixel. Null outside the canvas, and when there is nothing to sample: the active node is
  /// no layer.
  [[nodiscard]] static std::unique_ptr<MagicWand> press(const DocumentPtr& document, int x, int y,
                                                        SelectionMode mode,
                                                        const MagicWandSettings& settings);
  MagicWand(const MagicWand&) = delete;
  MagicWand& operator=(const MagicWand&) = delete;

  /// Selects what lies within the settings' tolerance. Without memory for it the selection of the press
  /// stands.
  void select(const MagicWandSettings& settings);
  /// Ends the gesture under its record.
  void release() { gesture_.close(); }
  /// False once it was released, or its document ended it.
  [[nodiscard]] bool isOpen() const { return gesture_.isOpen(); }

 private:
  MagicWand(const DocumentPtr& document, ConstTexture sample, int x, int y, SelectionMode mode);

  SelectionGesture gesture_;
  const MetalContext& context_;
  SelectionMode mode_;
  ConstTexture sample_;
  int seedX_;
  int seedY_;
};

}  // namespace orvanel
