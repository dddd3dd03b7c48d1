// The canvas with two overlaid scroll indicators. Owned by the canvas pane; main thread only.
#pragma once

#include <QCoreApplication>
#include <QWidget>
#include <memory>

#include "canvas/OverlayScrollIndicator.h"
#include "canvas/ScrollableMTKView.h"

namespace orvanel {

class CanvasContainerView : public QWidget {
  Q_DECLARE_TR_FUNCTIONS(orvanel::CanvasContainerView)

 public:
  /// Both must outlive the container.
  CanvasContainerView(CanvasRenderer& renderer, ToolState& toolState, QWidget* parent = nullptr);

  [[nodiscard]] ScrollableMTKView& mtkView() { return *mtkView_; }
  [[nodiscard]] OverlayScrollIndicator& horizontalIndicator() { return *horizontalIndicator_; }
  [[nodiscard]] OverlayScrollIndicator& verticalIndicator() { return *verticalIndicator_; }

  void setDocument(const std::shared_ptr<Document>& document);
  /// Shows or hides the indicators and updates them to the view's position.
  void refreshIndicators();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void scrollFromIndicators();

  std::weak_ptr<Document> document_;
  ScrollableMTKView* mtkView_;
  OverlayScrollIndicator* horizontalIndicator_;
  OverlayScrollIndicator* verticalIndicator_;
  ChangeStream::Subscription changes_;
};

}  // namespace orvanel
