// The middle of the main window: the canvas of the active document, the place of one that is being read, or a
// placeholder if none is open. Main thread only.
#pragma once

#include <QStringList>
#include <QWidget>
#include <functional>
#include <memory>

#include "canvas/CanvasView.h"
#include "canvas/LoadingView.h"
#include "canvas/NoDocumentView.h"

namespace orvanel {

class CanvasPaneView : public QWidget {
 public:
  /// `context` and `toolState` must outlive the pane.
  CanvasPaneView(MetalContext& context, ToolState& toolState, QWidget* parent = nullptr);

  /// Opens files dropped on the pane and reports failures to the user.
  std::function<void(const QStringList&)> openFiles;

  /// What stands in the place of a document.
  enum class Instead { placeholder, loadingView };
  /// Shows the document, or what stands instead of it for null.
  void setDocument(const std::shared_ptr<Document>& document, Instead instead = Instead::placeholder);

  [[nodiscard]] CanvasView& canvasView() { return canvasView_; }
  [[nodiscard]] LoadingView& loadingView() { return *loadingView_; }
  [[nodiscard]] NoDocumentView& noDocumentView() { return *noDocumentView_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  CanvasView canvasView_;
  LoadingView* loadingView_;
  NoDocumentView* noDocumentView_;
};

}  // namespace orvanel
