#include "app/SidePanels.h"

namespace orvanel {

namespace {

DisplayColor colorOf(const Document& document, Swatch swatch) {
  return swatch == Swatch::foreground ? document.foregroundColor.value() : document.backgroundColor.value();
}

}  // namespace

SidePanels::SidePanels(AppState& appState, QWidget* parent)
    : options(new ToolOptionsPane(appState.toolState, parent)),
      palette(new ToolPalettePane(appState.toolState, parent)),
      inspector(new InspectorPane(parent)),
      layers(new LayerPanelView),
      appState_(appState),
      parent_(parent) {
  inspector->setLayerPanel(layers);
  layers->setThumbnailSize(appState.userDefaults.layerThumbnailSize());
  const auto onActive = [&window = appState.windowState](const auto& command) {
    return [&window, command] {
      if (const DocumentPtr active = window.activeDocument()) command(*active);
    };
  };
  layers->onAddLayer = onActive([](Document& document) { document.addLayer(tr("Layer")); });
  layers->onAddFolder = onActive([](Document& document) { document.addFolder(tr("Folder")); });
  layers->onDeleteNode = [&window = appState.windowState](const QUuid& id) {
    if (const DocumentPtr active = window.activeDocument()) active->removeNode(id);
  };
  palette->onChooseColor = [this](Swatch swatch) { chooseColor(swatch); };
}

void SidePanels::setDocument(const DocumentPtr& document) {
  // A colour that is being chosen belongs to the document that was active.
  if (colorPicker_ != nullptr && colorPicker_->isVisible() &&
      (document == nullptr || document != palette->document())) {
    colorPicker_->accept();
  }
  options->setDocument(document);
  palette->setDocument(document);
  inspector->setDocument(document);
  layers->setDocument(document);
}

ColorPickerWindow& SidePanels::colorPicker() {
  if (colorPicker_ == nullptr) colorPicker_ = new ColorPickerWindow(parent_);  // a child of its parent
  return *colorPicker_;
}

void SidePanels::chooseColor(Swatch swatch) {
  const DocumentPtr document = appState_.windowState.activeDocument();
  if (!document) return;
  const bool isForeground = swatch == Swatch::foreground;
  const std::weak_ptr<Document> edited = document;
  colorPicker().open(isForeground ? tr("Foreground Color") : tr("Background Color"),
                     colorOf(*document, swatch), [isForeground, edited](const DisplayColor& color) {
                       const DocumentPtr still = edited.lock();
                       if (!still) return;
                       if (isForeground) {
                         still->setForegroundColor(color);
                       } else {
                         still->setBackgroundColor(color);
                       }
                     });
  // The eyedropper and the keys go on working meanwhile.
  colorChanges_ = document->changes().observe([this, swatch, edited](const DocumentChanges& changes) {
    const DocumentPtr still = edited.lock();
    if (!still || !containsAny<change::ViewChanged>(changes, ViewProperty::colors)) return;
    colorPicker().follow(colorOf(*still, swatch));
  });
}

}  // namespace orvanel
