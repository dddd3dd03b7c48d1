// One change of the selection by a tool, from press to release, under one record. A shape replaces what is
// selected, or is combined with it. Owned by the tool or command that selects; main thread only.
#pragma once

#include <QString>
#include <functional>
#include <type_traits>

#include "model/OpenSelectionEdit.h"

namespace orvanel {

enum class SelectionMode { replace, add, subtract, intersect };

class SelectionGesture {
 public:
  /// Opens the record; makes the selection if there is none.
  SelectionGesture(const DocumentPtr& document, const QString& actionName) : edit_(document, actionName) {}

  /// `fill` writes the shape, and its flags, into the selection it is given; one that answers false has failed,
  /// and the selection of the beginning stands. With nothing selected every mode is a replacement. Each shape
  /// starts from the selection of the beginning. Without memory for a shape to combine, nothing changes.
  template <typename Fill>
  void selectShape(SelectionMode mode, const Fill& fill) {
    if constexpr (std::is_void_v<std::invoke_result_t<Fill, Selection&>>) {
      showShape(mode, [&fill](Selection& shape) {
        fill(shape);
        return true;
      });
    } else {
      showShape(mode, fill);
    }
  }
  /// Selects nothing.
  void clear();

  /// Ends the gesture. It leaves a record unless nothing was selected before and nothing is now.
  void close() { edit_.keep(); }
  /// False once it was closed, or its document ended it.
  [[nodiscard]] bool isOpen() const { return edit_.isOpen(); }

 private:
  void showShape(SelectionMode mode, const std::function<bool(Selection&)>& fill);

  OpenSelectionEdit edit_;
};

/// Combines a shape with a selection that isn't empty, and brings the flags up to date.
void combineMask(Selection& selection, const Surface& shapeMask, SelectionMode mode,
                 const MetalContext& context);

/// The whole pixels under a rectangle that was drawn from (x, y): grown to pixel edges, clipped to the
/// canvas; empty when it lies outside. Document coordinates.
[[nodiscard]] PixelRect drawnRect(const Document& document, double x, double y, double width, double height);

}  // namespace orvanel
