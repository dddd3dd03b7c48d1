// A tool's change of the selection, from press to release, under one record. A shape replaces the selection
// or is combined with it. Owned by the tool or command that selects; main thread only.
#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

#include "model/OpenSelectionEdit.h"
#include "tools/EventRecord.h"

namespace orvanel {

enum class SelectionMode { replace, add, subtract, intersect };

/// Shift adds, Option subtracts, both intersect.
[[nodiscard]] SelectionMode selectionModeOf(std::uint32_t modifiers);

class SelectionGesture {
 public:
  /// Opens the record; makes a selection if there is none.
  SelectionGesture(const DocumentPtr& document, const QString& actionName) : edit_(document, actionName) {}

  /// `fill` writes the shape and its flags into the empty selection it is given, whose mask then takes at
  /// most `bytes`. If it returns false, if the shape covers no pixel, or if there is no memory for it, the
  /// original selection stays. Every shape starts from the original selection. With nothing selected, every
  /// mode replaces.
  template <typename Fill>
  void selectShape(SelectionMode mode, const Fill& fill, std::uint64_t bytes = 0) {
    if constexpr (std::is_void_v<std::invoke_result_t<Fill, Selection&>>) {
      showShape(
          mode,
          [&fill](Selection& shape) {
            fill(shape);
            return true;
          },
          bytes);
    } else {
      showShape(mode, fill, bytes);
    }
  }
  /// Selects nothing.
  void clear();

  /// Ends the gesture. Leaves no record if nothing has been shown, or nothing was selected before and nothing
  /// is now.
  void close() { edit_.end(); }
  /// Ends the gesture with the original selection and without a record.
  void takeBack() { edit_.takeBack(); }
  /// `callback` is called once when the gesture ends, whoever ends it; it must not destroy the gesture.
  void whenClosed(std::function<void()> callback) { edit_.onClosed = std::move(callback); }
  /// False once closed, or ended by the document.
  [[nodiscard]] bool isOpen() const { return edit_.isOpen(); }

 private:
  void showShape(SelectionMode mode, const std::function<bool(Selection&)>& fill, std::uint64_t bytes);

  OpenSelectionEdit edit_;
};

/// Combines a shape with a non-empty selection and updates the flags.
void combineMask(Selection& selection, const Surface& shapeMask, SelectionMode mode,
                 const MetalContext& context);

/// The whole pixels covered by a rectangle drawn from (x, y), in document coordinates: expanded to pixel
/// edges and clipped to the canvas; empty if it lies outside.
[[nodiscard]] PixelRect drawnRect(const Document& document, double x, double y, double width, double height);

}  // namespace orvanel
