// One adjustment of a layer's levels, from its beginning to its end: previewed as often as wanted, each time
// from the pixels of the beginning, then kept under one record or taken back. Owned by the window or command
// that adjusts; main thread only. Works on the layer's colours, never on its mask.
#pragma once

#include <QUuid>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "model/Document.h"
#include "model/OpenSurfaceEdit.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {

struct Levels {
  float blackPoint = 0.0F;    ///< 0 to 255, on the scale of 8 bits
  float whitePoint = 255.0F;  ///< 0 to 255
  float gamma = 1.0F;         ///< 0.1 to 9.99
  friend bool operator==(const Levels&, const Levels&) = default;
};

/// How many pixels have each brightness, on the scale of 8 bits.
using LevelsHistogram = std::array<std::int64_t, 256>;

/// Over all pixels of a layer's surface, or a grid of about 500000 of them; alpha isn't considered. For any
/// thread that holds its own copy of the surface.
[[nodiscard]] LevelsHistogram levelsHistogram(const Surface& pixels);

class LevelsAdjustment {
 public:
  /// Begins on the active layer; nothing when the active node has no pixels of its own.
  [[nodiscard]] static std::optional<LevelsAdjustment> begin(const DocumentPtr& document);

  [[nodiscard]] const QUuid& layerID() const { return edit_->layerID(); }
  /// The pixels at the beginning.
  [[nodiscard]] const std::shared_ptr<TextureSnapshot>& snapshotBefore() const {
    return edit_->snapshotBefore();
  }
  /// False once it was kept, taken back or ended by the document. Then each of these does nothing.
  [[nodiscard]] bool isOpen() const { return edit_->isOpen(); }

  /// Shows the levels within the selection, or everywhere without one.
  void apply(const Levels& levels);
  /// Keeps what is shown, under one record.
  void commit() { edit_->keep(); }
  /// Puts back the pixels of the beginning; no record.
  void cancel() { edit_->takeBack(); }

 private:
  explicit LevelsAdjustment(std::unique_ptr<OpenSurfaceEdit> edit) : edit_(std::move(edit)) {}

  std::unique_ptr<OpenSurfaceEdit> edit_;
};

}  // namespace orvanel
