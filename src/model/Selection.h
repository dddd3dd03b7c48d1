// The selection: a mask of canvas size and two flags that summarise it. A document exposes its own as
// `const`; only commands change it. If a kernel can't run, the mask stays as it was but the flags still
// change. Main thread only.
#pragma once

#include <memory>
#include <span>

#include "model/Layer.h"

namespace orvanel {

class Selection {
 public:
  /// The part of a selection's state that undo needs besides the pixels.
  struct Flags {
    bool hasSelection = false;
    bool isFullSelection = false;
    friend bool operator==(const Flags&, const Flags&) = default;
  };

  /// An empty selection; null if the mask's surface can't be made.
  [[nodiscard]] static std::shared_ptr<Selection> create(int width, int height, const MetalContext& context);
  explicit Selection(const std::shared_ptr<MaskTexture>& mask) : maskTexture(mask), mask_(mask) {}

  const std::shared_ptr<const MaskTexture> maskTexture;
  /// If false, the mask is empty and operations apply to everything.
  Property<bool> hasSelection{false};
  /// If true, the whole canvas is selected. Implies `hasSelection`.
  Property<bool> isFullSelection{false};

  /// The mask's pixels for writing; the writer must update the flags.
  [[nodiscard]] Surface& pixels() { return mask_->pixels(); }
  [[nodiscard]] MaskTexture& mask() { return *mask_; }

  void selectAll(const MetalContext& context);
  void clear(const MetalContext& context);
  /// None becomes all, all becomes none, a partial selection stays partial.
  void invert(const MetalContext& context);

  // The shapes replace the whole mask. Units are document pixels; a feather of 0 keeps the edge hard.
  /// `rect` must not have negative coordinates; a side below 1 selects nothing.
  void setRect(const PixelRect& rect, float feather, const MetalContext& context);
  /// A radius that isn't positive selects nothing.
  void setEllipse(float centerX, float centerY, float radiusX, float radiusY, float feather,
                  const MetalContext& context);
  /// Does nothing with two points or fewer.
  void setPolygon(std::span<const PolygonPoint> points, const MetalContext& context);

  /// True where the mask is above 0; false outside the canvas.
  [[nodiscard]] bool isPointSelected(int x, int y) const;

  [[nodiscard]] Flags flags() const { return {hasSelection.value(), isFullSelection.value()}; }
  void restoreFlags(const Flags& flags);
  /// Derives the flags from the mask, after a kernel wrote it.
  void refreshFlags(const MetalContext& context);

 private:
  std::shared_ptr<MaskTexture> mask_;
};

}  // namespace orvanel
