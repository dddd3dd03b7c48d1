// A levels adjustment of a layer: previewed any number of times, each time from the original pixels, then
// committed under one record or cancelled. Owned by the window or command that performs it; main thread only.
// Changes the layer's colours, never its mask.
#pragma once

#include <QUuid>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "model/Document.h"
#include "model/OpenSurfaceEdit.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {

struct Levels {
  float blackPoint = 0.0F;    ///< 0 to 255, on the 8-bit scale
  float whitePoint = 255.0F;  ///< 0 to 255
  float gamma = 1.0F;         ///< 0.1 to 9.99
  friend bool operator==(const Levels&, const Levels&) = default;
};

/// Number of pixels for each brightness, on the 8-bit scale.
using LevelsHistogram = std::array<std::int64_t, 256>;

/// Counts all pixels of a layer's surface, or a grid of about 500000 of them; alpha is ignored. Any thread
/// that holds its own copy of the surface.
[[nodiscard]] LevelsHistogram levelsHistogram(const Surface& pixels);

class LevelsAdjustment {
 public:
  /// Begins on the active layer; none if the active node has no pixels of its own.
  [[nodiscard]] static std::optional<LevelsAdjustment> begin(const DocumentPtr& document);

  [[nodiscard]] const QUuid& layerID() const { return edit_->layerID(); }
  /// The original pixels.
  [[nodiscard]] const std::shared_ptr<TextureSnapshot>& snapshotBefore() const {
    return edit_->snapshotBefore();
  }
  /// False once committed, cancelled or ended by the document; the operations below then do nothing.
  [[nodiscard]] bool isOpen() const { return edit_->isOpen(); }

  /// `closed` is called once when the adjustment closes, whoever closes it; must not destroy the adjustment.
  void setOnClosed(std::function<void()> closed) { edit_->onClosed = std::move(closed); }

  /// Previews the levels within the selection, or everywhere without one. If the selection has changed and
  /// there is no memory for what it covers now, reports a refusal, and keeps the preview until it changes
  /// again.
  void apply(const Levels& levels);
  /// Keeps the preview under one record.
  void commit() { edit_->keep(); }
  /// Restores the original pixels; leaves no record.
  void cancel() { edit_->takeBack(); }

 private:
  LevelsAdjustment(const DocumentPtr& document, std::unique_ptr<OpenSurfaceEdit> edit);
  void followSelection(Document& document);

  std::weak_ptr<Document> document_;
  std::unique_ptr<OpenSurfaceEdit> edit_;
  /// The selection that there was last, null without one; its tiles are shared.
  std::shared_ptr<const Surface> weight_;
  bool isAdmitted_ = true;
};

}  // namespace orvanel
