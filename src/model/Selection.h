// What is selected: a mask of canvas size and two flags that summarise it. A document shows its own as `const`
// and lets commands alone change it. Main thread only.
// A kernel that can't run leaves the mask as it was; the flags change all the same.
#pragma once

#include <memory>
#include <span>

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
  explicit Selection(const std::shared_ptr<MaskTexture>& mask) : maskTexture(mask), mask_(mask) {}

  const std::shared_ptr<const MaskTexture> maskTexture;
  /// False: the mask is empty, and operations act on everything.
  Property<bool> hasSelection{false};
  /// True: all of the canvas is selected. Implies `hasSelection`.
  Property<bool> isFullSelection{false};

  /// The mask's pixels for writing; the writer brings the flags up to date.
  [[nodiscard]] Surface& pixels() { return mask_->pixels(); }
  [[nodiscard]] MaskTexture& mask() { return *mask_; }

  void selectAll(const MetalContext& context);
  void clear(const MetalContext& context);
  /// None becomes all, all becomes none, a partial selection stays partial.
  void invert(const MetalContext& context);

  // The shapes replace the whole mask. Units are document pixels; a feather of 0 keeps the edge hard.
  /// `rect` has no negative part; a side below 1 selects nothing.
  void setRect(const PixelRect& rect, float feather, const MetalContext& context);
  /// A radius that isn't positive selects nothing.
  void setEllipse(float centerX, float centerY, float radiusX, float radiusY, float feather,
                  const MetalContext& context);
  /// Two points or fewer change nothing at all.
  void setPolygon(std::span<const PolygonPoint> points, const MetalContext& context);

  /// True where the mask is above 0; false outside the canvas.
  [[nodiscard]] bool isPointSelected(int x, int y) const;

  [[nodiscard]] Flags flags() const { return {hasSelection.value(), isFullSelection.value()}; }
  void restoreFlags(const Flags& flags);
  /// Reads the flags off the mask, after a kernel wrote it.
  void refreshFlags(const MetalContext& context);

 private:
  std::shared_ptr<MaskTexture> mask_;
};

}  // namespace orvanel
