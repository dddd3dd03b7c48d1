// What is selected: a mask of canvas size and two flags that summarise it. Owned by its document.
// Main thread only.
#pragma once

#include <QProperty>
#include <memory>

#include "model/Layer.h"

namespace orvanel {

class Selection {
 public:
  /// The part of a selection's state that undo needs beside the pixels.
  struct Flags {
    bool hasSelection = false;
    bool isFullSelection = false;
    friend bool operator==(const Flags&, const Flags&) = default;
  };

  /// Nothing selected; null when the mask's surface can't be made.
  [[nodiscard]] static std::shared_ptr<Selection> create(int width, int height, const MetalContext& context);
  explicit Selection(std::shared_ptr<MaskTexture> mask) : maskTexture(std::move(mask)) {}

  const std::shared_ptr<MaskTexture> maskTexture;
  /// False: the mask is empty, and operations act on everything.
  QProperty<bool> hasSelection{false};
  /// True: all of the canvas is selected. Implies `hasSelection`.
  QProperty<bool> isFullSelection{false};

  [[nodiscard]] Flags flags() const { return {hasSelection.value(), isFullSelection.value()}; }
  void restoreFlags(const Flags& flags);
};

}  // namespace orvanel
