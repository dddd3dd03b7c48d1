#include "panels/levels/LevelsWindow.h"

#include <QPointer>
#include <QScreen>
#include <QVBoxLayout>
#include <utility>

#include "model/BackgroundCall.h"

namespace orvanel {

LevelsWindow::LevelsWindow(QWidget* parent)
    : QDialog(parent, Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      content_(new LevelsContentView(model_, this)) {
  setObjectName(QStringLiteral("levels"));
  setWindowTitle(tr("Levels"));
  // The keys stay with the canvas until the user turns to the panel.
  setAttribute(Qt::WA_ShowWithoutActivating);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(content_);
  column->setSizeConstraint(QLayout::SetFixedSize);
  content_->onChanged = [this] { applyLevels(); };
  content_->onEditingChanged = [this](bool isEditing) { editingChanged(isEditing); };
  content_->onOK = [this] { accept(); };
  content_->onCancel = [this] { reject(); };
}

LevelsWindow::~LevelsWindow() {
  if (adjustment_) adjustment_->setOnClosed(nullptr);
  // A field that loses the keyboard takes over what was typed, so it must go before the model.
  delete content_;
}

void LevelsWindow::openFor(const DocumentPtr& document) {
  const std::shared_ptr<Layer> layer = document->activeLayer();
  if (layer == nullptr) return;
  if (adjustment_ && adjustment_->isOpen() && adjustment_->layerID() == layer->id &&
      document_.lock() == document) {
    raise();
    return;
  }
  closePanel();
  adjustment_ = LevelsAdjustment::begin(document);
  if (!adjustment_) return;
  document_ = document;
  model_.reset();
  adjustment_->setOnClosed([this, opening = ++opening_] {
    QMetaObject::invokeMethod(
        this,
        [this, opening] {
          if (opening == opening_) adjustmentClosed();
        },
        Qt::QueuedConnection);
  });
  countBrightness(document);
  adjustSize();
  move(screen()->availableGeometry().center() - rect().center());
  show();
}

void LevelsWindow::countBrightness(const DocumentPtr& document) {
  const std::shared_ptr<Layer> layer = document->activeLayer();
  const auto pixels = std::make_shared<const Surface>(*layer->texture.value());
  runInBackground([pixels, guard = QPointer(this), opening = opening_] {
    runOnMainThread([guard, opening, histogram = levelsHistogram(*pixels)] {
      if (!guard.isNull() && guard->opening_ == opening) guard->model_.histogram = histogram;
    });
  });
}

void LevelsWindow::applyLevels() {
  if (adjustment_) adjustment_->apply(model_.levels());
}

void LevelsWindow::editingChanged(bool isEditing) {
  const DocumentPtr document = document_.lock();
  if (isEditing && document != nullptr) {
    drag_ = ThumbnailManager::editingContinuously(document);
  } else {
    drag_ = {};
    markThumbnails();
  }
}

void LevelsWindow::markThumbnails() {
  const DocumentPtr document = document_.lock();
  if (document != nullptr && adjustment_) document->thumbnailManager->markDirty(adjustment_->layerID());
}

void LevelsWindow::accept() {
  if (adjustment_) adjustment_->commit();
  closePanel();
}

void LevelsWindow::reject() {
  if (adjustment_) adjustment_->cancel();
  closePanel();
}

void LevelsWindow::adjustmentClosed() {
  if (adjustment_ && !adjustment_->isOpen()) closePanel();
}

void LevelsWindow::closePanel() {
  drag_ = {};
  ++opening_;
  // An adjustment that is still open is kept, as a change of tool would keep it.
  adjustment_.reset();
  document_.reset();
  hide();
}

}  // namespace orvanel
