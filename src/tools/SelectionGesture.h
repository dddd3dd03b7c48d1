// One change of the selection by a tool, from press to release, under one record. A shape replaces what is
// selected, or is combined with it. Owned by the tool or command that selects; main thread only.
#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "model/Document.h"

namespace orvanel {

class SelectionChangeOperation;

enum class SelectionMode { replace, add, subtract, intersect };

class SelectionGesture {
 public:
  /// Opens the record; makes the selection if there is none.
  SelectionGesture(const DocumentPtr& document, const QString& actionName);
  /// An open gesture is dropped without a record.
  ~SelectionGesture();
  SelectionGesture(const SelectionGesture&) = delete;
  SelectionGesture& operator=(const SelectionGesture&) = delete;

  /// `fill` writes the shape, and its flags, into the selection it is given. With nothing selected every mode
  /// is a replacement. Without memory for a shape to combine, nothing changes.
  void selectShape(SelectionMode mode, const std::function<void(Selection&)>& fill);
  /// Selects nothing.
  void clear();

  /// Ends the gesture. It leaves a record unless nothing was selected before and nothing is now.
  void close();

 private:
  DocumentPtr document_;
  bool hadSelection_;
  std::shared_ptr<SelectionChangeOperation> activeOp_;
};

/// Combines a shape with a selection that isn't empty, and brings the flags up to date.
void combineMask(Selection& selection, const Surface& shapeMask, SelectionMode mode,
                 const MetalContext& context);

/// The whole pixels under a rectangle that was drawn from (x, y): grown to pixel edges, clipped to the
/// canvas; empty when it lies outside. Document coordinates.
[[nodiscard]] PixelRect drawnRect(const Document& document, double x, double y, double width, double height);

}  // namespace orvanel
