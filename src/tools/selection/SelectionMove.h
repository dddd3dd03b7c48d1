// The selection while it is dragged: moved any number of times, each time from where it was at the press, so
// that nothing is lost at the canvas's edges before the release. Owned by the tool; main thread only.
#pragma once

#include <functional>
#include <utility>

#include "model/OpenSelectionEdit.h"

namespace orvanel {

class SelectionMove {
 public:
  /// The document has a selection.
  explicit SelectionMove(const DocumentPtr& document) : edit_(document, QStringLiteral("Move Selection")) {}

  /// The offset from the original position, in pixels.
  void moveTo(int dx, int dy);
  /// Ends the move and records it, even if the selection is where it was.
  void close() { edit_.keep(); }
  /// Ends the move with the selection where it was and without a record.
  void takeBack() { edit_.takeBack(); }
  /// `callback` is called once when the move ends, whoever ends it; it must not destroy the move.
  void whenClosed(std::function<void()> callback) { edit_.onClosed = std::move(callback); }
  /// False once closed, or ended by the document.
  [[nodiscard]] bool isOpen() const { return edit_.isOpen(); }

 private:
  OpenSelectionEdit edit_;
};

}  // namespace orvanel
