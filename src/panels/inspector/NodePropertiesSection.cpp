#include "panels/inspector/NodePropertiesSection.h"

#include <QComboBox>
#include <QLabel>

#include "look/TranslatedName.h"
#include "model/OpenOpacityEdit.h"
#include "panels/controls/QuietComboBox.h"
#include "panels/controls/SliderDropdown.h"

namespace orvanel {

NodePropertiesSection::NodePropertiesSection(QWidget* parent) : InspectorSection(parent) {
  opacity_ = new SliderDropdown(tr("Opacity:"), 0.0, 1.0, SliderDropdown::Display::percent, this);
  opacity_->setToolTip(tr("How much the layer or folder covers what is below it"));
  opacity_->onEditingChanged = [this](bool isEditing) { opacityEditing(isEditing); };
  opacity_->onValueChanged = [this](float value) { opacityChanged(value); };
  addWideRow(opacity_);

  blendMode_ = new QuietComboBox(this);
  blendMode_->setAccessibleName(tr("Blend Mode"));
  blendMode_->setToolTip(tr("How the layer or folder mixes with what is below it"));
  for (const BlendMode mode : allBlendModes) {
    blendMode_->addItem(look::translatedName(displayName(mode)), rawValue(mode));
  }
  addRow(tr("Blend Mode"), blendMode_);
  connect(blendMode_, &QComboBox::activated, this, &NodePropertiesSection::blendModeChosen);
  hide();
}

NodePropertiesSection::~NodePropertiesSection() = default;

int NodePropertiesSection::labelWidth() const {
  return std::max(InspectorSection::labelWidth(), opacity_->labelWidth());
}

void NodePropertiesSection::setLabelWidth(int width) {
  InspectorSection::setLabelWidth(width);
  opacity_->setLabelWidth(width);
}

void NodePropertiesSection::setDocument(const DocumentPtr& document) {
  if (document != nullptr && document == document_.lock()) return;
  opacity_->endEditing();
  changes_ = {};
  document_ = document;
  if (document != nullptr) {
    changes_ = document->changes().observe([this](const DocumentChanges& changes) { follow(changes); });
  }
  showActiveNode();
}

std::optional<LayerNode> NodePropertiesSection::node() const {
  const DocumentPtr document = document_.lock();
  return document != nullptr ? document->findNode(nodeID_) : std::nullopt;
}

void NodePropertiesSection::follow(const DocumentChanges& changes) {
  if (contains<change::ActiveNodeChanged>(changes)) return showActiveNode();
  for (const DocumentChange& change : changes) {
    const auto* changed = std::get_if<change::NodePropertyChanged>(&change);
    if (changed == nullptr || changed->nodeID != nodeID_) continue;
    if (changed->property == NodeProperty::opacity) showOpacity();
    if (changed->property == NodeProperty::blendMode) showBlendMode();
  }
}

void NodePropertiesSection::showActiveNode() {
  // What was begun on the node before is still meant for that one.
  opacity_->endEditing();
  blendMode_->hidePopup();
  const DocumentPtr document = document_.lock();
  const std::optional<LayerNode> active = document != nullptr ? document->activeNode() : std::nullopt;
  nodeID_ = active ? active->id() : QUuid();
  if (active) {
    setTitle(active->folder() != nullptr ? tr("Folder") : tr("Layer"));
    showOpacity();
    showBlendMode();
  }
  setVisible(active.has_value());
}

void NodePropertiesSection::showOpacity() {
  if (const auto shown = node()) opacity_->setValue(shown->opacity().value());
}

void NodePropertiesSection::showBlendMode() {
  if (const auto shown = node()) {
    blendMode_->setCurrentIndex(blendMode_->findData(rawValue(shown->blendMode().value())));
  }
}

void NodePropertiesSection::opacityEditing(bool isEditing) {
  edit_.reset();
  const DocumentPtr document = document_.lock();
  if (isEditing && document != nullptr) edit_ = OpenOpacityEdit::begin(document, nodeID_);
}

void NodePropertiesSection::opacityChanged(float opacity) {
  if (edit_ != nullptr) edit_->show(opacity);
  // Without effect if the edit was refused or ended by something else, so the control must follow.
  showOpacity();
}

void NodePropertiesSection::blendModeChosen(int index) {
  const DocumentPtr document = document_.lock();
  const auto mode = blendModeFromRaw(blendMode_->itemData(index).toInt());
  if (document != nullptr && mode) document->setBlendMode(nodeID_, *mode);
  // Without effect if there wasn't the memory for it.
  showBlendMode();
}

}  // namespace orvanel
