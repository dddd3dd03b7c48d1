// The middle of the main window: the canvas of the active document, or a placeholder if none is open. Main
// thread only.
#pragma once

#include <QStringList>
#include <QWidget>
#include <functional>
#include <memory>

#include "canvas/CanvasView.h"
#include "canvas/NoDocumentView.h"

namespace orvanel {

class CanvasPaneView : public QWidget {
 public:
  /// `context` and `toolState` must outlive the pane.
  CanvasPaneView(MetalContext& context, ToolState& toolState, QWidget* parent = nullptr);

  /// Opens files dropped on the pane and reports failures to the user.
  std::function<void(const QStringList&)> openFiles;

  /// Shows the document, or the placeholder for null.
  void setDocument(const std::shared_ptr<Document>& document);

  [[nodiscard]] CanvasView& canvasView() { return canvasView_; }
  [[nodiscard]] NoDocumentView& noDocumentView() { return *noDocumentView_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  CanvasView canvasView_;
  NoDocumentView* noDocumentView_;
};

}  // namespace orvanel
