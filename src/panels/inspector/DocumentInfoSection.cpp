#include "panels/inspector/DocumentInfoSection.h"

#include <QFileInfo>
#include <QLabel>

#include "look/Look.h"
#include "look/TranslatedName.h"
#include "panels/controls/ElidedLabel.h"

namespace orvanel {

DocumentInfoSection::DocumentInfoSection(QWidget* parent) : InspectorSection(parent) {
  setTitle(tr("Document"));
  const auto addValue = [this](const QString& label) {
    auto* value = new ElidedLabel(this);
    value->setFont(look::font(look::type::small));
    return std::pair(value, addRow(label, value));
  };
  size_ = addValue(tr("Size:")).first;
  colorMode_ = addValue(tr("Color Mode:")).first;
  std::tie(source_, sourceLabel_) = addValue(tr("Source:"));
  layers_ = addValue(tr("Layers:")).first;
  zoom_ = addValue(tr("Zoom:")).first;
}

QString DocumentInfoSection::sizeText() const {
  return size_->text();
}
QString DocumentInfoSection::colorModeText() const {
  return colorMode_->text();
}
QString DocumentInfoSection::sourceText() const {
  return source_->text();
}
QString DocumentInfoSection::layersText() const {
  return layers_->text();
}
QString DocumentInfoSection::zoomText() const {
  return zoom_->text();
}

void DocumentInfoSection::setDocument(const DocumentPtr& document) {
  if (document != nullptr && document == document_.lock()) return;
  changes_ = {};
  document_ = document;
  if (document == nullptr) return;
  changes_ = document->changes().observe([this](const DocumentChanges& changes) { follow(changes); });
  showCanvas();
  showSource();
  showLayers();
  showZoom();
}

void DocumentInfoSection::follow(const DocumentChanges& changes) {
  using change::FileStateChanged;
  using change::ViewChanged;
  // An earlier observer may have dropped the document.
  if (document_.expired()) return;
  if (contains<change::CanvasChanged>(changes)) showCanvas();
  if (containsAny<FileStateChanged>(changes, FileProperty::source)) showSource();
  if (contains<change::NodeInserted>(changes) || contains<change::NodeRemoved>(changes)) showLayers();
  if (containsAny<ViewChanged>(changes, ViewProperty::zoom)) showZoom();
}

void DocumentInfoSection::showCanvas() {
  const DocumentPtr document = document_.lock();
  size_->setText(
      QStringLiteral("%1 × %2").arg(document->canvasWidth.value()).arg(document->canvasHeight.value()));
  colorMode_->setText(look::translatedName(displayName(document->colorMode.value())));
}

void DocumentInfoSection::showSource() {
  const std::optional<QString>& path = document_.lock()->sourceFileURL.value();
  source_->setText(path ? QFileInfo(*path).fileName() : QString());
  source_->setVisible(path.has_value());
  sourceLabel_->setVisible(path.has_value());
}

void DocumentInfoSection::showLayers() {
  layers_->setText(QString::number(document_.lock()->layerCount()));
}

void DocumentInfoSection::showZoom() {
  zoom_->setText(document_.lock()->zoomDisplayString());
}

}  // namespace orvanel
