#include "canvas/CanvasContainerView.h"

#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QWheelEvent>

namespace orvanel {
namespace {

/// Tells assistive technology that the view is a picture to work in, in a group with its indicators.
QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
  if (auto* container = dynamic_cast<CanvasContainerView*>(object)) {
    return new QAccessibleWidget(container, QAccessible::Grouping);
  }
  auto* view = dynamic_cast<ScrollableMTKView*>(object);
  return view != nullptr ? new QAccessibleWidget(view, QAccessible::Canvas) : nullptr;
}

}  // namespace

CanvasContainerView::CanvasContainerView(CanvasRenderer& renderer, ToolState& toolState, QWidget* parent)
    : QWidget(parent),
      mtkView_(new ScrollableMTKView(renderer, toolState, this)),
      horizontalIndicator_(new OverlayScrollIndicator(Qt::Horizontal, this)),
      verticalIndicator_(new OverlayScrollIndicator(Qt::Vertical, this)) {
  [[maybe_unused]] static const bool isInstalled = [] {
    QAccessible::installFactory(makeAccessible);
    return true;
  }();
  setObjectName(QStringLiteral("canvas"));
  setAccessibleName(tr("canvas"));
  setFocusProxy(mtkView_);
  mtkView_->setAccessibleName(QCoreApplication::translate("canvas", "Canvas"));
  mtkView_->onScrollChanged = [this] { refreshIndicators(); };
  horizontalIndicator_->onValueChanged = [this](double) { scrollFromIndicators(); };
  verticalIndicator_->onValueChanged = [this](double) { scrollFromIndicators(); };
  horizontalIndicator_->installEventFilter(this);
  verticalIndicator_->installEventFilter(this);
  refreshIndicators();
}

void CanvasContainerView::setDocument(const std::shared_ptr<Document>& document) {
  changes_ = {};
  if (document_.lock() != document) {
    // A knob that is held belongs to the document it was pressed on.
    horizontalIndicator_->endDrag();
    verticalIndicator_->endDrag();
  }
  document_ = document;
  if (document != nullptr) {
    changes_ = document->changes().observe([this](const DocumentChanges& changes) {
      const bool isMoved =
          containsAny<change::ViewChanged>(changes, ViewProperty::zoom, ViewProperty::viewportOffset);
      if (isMoved || contains<change::CanvasChanged>(changes)) refreshIndicators();
    });
  }
  refreshIndicators();
}

void CanvasContainerView::refreshIndicators() {
  const auto refresh = [](OverlayScrollIndicator& indicator, const viewGeometry::IndicatorState& state) {
    indicator.setVisible(!state.isHidden);
    // While the knob is dragged, the pointer determines its position.
    if (!indicator.isDragging()) indicator.show(state.knobProportion, state.doubleValue);
  };
  const auto shown = document_.lock();
  if (shown == nullptr) {
    refresh(*horizontalIndicator_, {});
    refresh(*verticalIndicator_, {});
    return;
  }
  const QPointF offset = shown->viewportOffset.value();
  const QSizeF view = mtkView_->viewSize();
  refresh(*horizontalIndicator_,
          viewGeometry::indicatorState(view.width(), shown->canvasWidth.value(), offset.x(), shown->zoom()));
  refresh(*verticalIndicator_, viewGeometry::indicatorState(view.height(), shown->canvasHeight.value(),
                                                            offset.y(), shown->zoom()));
}

void CanvasContainerView::scrollFromIndicators() {
  const auto shown = document_.lock();
  if (shown == nullptr) return;
  const QSizeF view = mtkView_->viewSize();
  QPointF offset = shown->viewportOffset.value();
  if (horizontalIndicator_->isDragging()) {
    offset.setX(viewGeometry::offsetForIndicatorValue(horizontalIndicator_->doubleValue(), view.width(),
                                                      shown->canvasWidth.value(), shown->zoom()));
  }
  if (verticalIndicator_->isDragging()) {
    offset.setY(viewGeometry::offsetForIndicatorValue(verticalIndicator_->doubleValue(), view.height(),
                                                      shown->canvasHeight.value(), shown->zoom()));
  }
  mtkView_->scrollTo(offset);
}

void CanvasContainerView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  mtkView_->setGeometry(rect());
  horizontalIndicator_->setGeometry(3, height() - 13, width() - 19, 10);
  verticalIndicator_->setGeometry(width() - 13, 3, 10, height() - 19);
  refreshIndicators();
}

// The wheel also scrolls the canvas over the indicators.
bool CanvasContainerView::eventFilter(QObject* watched, QEvent* event) {
  const auto* indicator = dynamic_cast<const OverlayScrollIndicator*>(watched);
  if (indicator == nullptr || event->type() != QEvent::Wheel) return QWidget::eventFilter(watched, event);
  const auto& wheel = *static_cast<const QWheelEvent*>(event);
  QWheelEvent onCanvas(indicator->mapToParent(wheel.position()), wheel.globalPosition(), wheel.pixelDelta(),
                       wheel.angleDelta(), wheel.buttons(), wheel.modifiers(), wheel.phase(),
                       wheel.inverted());
  QCoreApplication::sendEvent(mtkView_, &onCanvas);
  return true;
}

}  // namespace orvanel
