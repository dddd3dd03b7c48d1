// The column at the right of the main window: what there is to know about the document, the active node's
// properties, and the layer panel below them. Owned by the window; main thread only.
#pragma once

#include <QWidget>

#include "model/Document.h"

class QLabel;
class QVBoxLayout;

namespace orvanel {

class DocumentInfoSection;
class NodePropertiesSection;

class InspectorPane : public QWidget {
  Q_OBJECT

 public:
  explicit InspectorPane(QWidget* parent = nullptr);

  [[nodiscard]] DocumentPtr document() const { return document_.lock(); }
  void setDocument(const DocumentPtr& document);
  /// Takes over the panel, which gets all the room that the sections leave.
  void setLayerPanel(QWidget* panel);

  [[nodiscard]] DocumentInfoSection& documentInfo() { return *documentInfo_; }
  [[nodiscard]] NodePropertiesSection& nodeProperties() { return *nodeProperties_; }
  [[nodiscard]] QLabel& noDocument() { return *noDocument_; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  std::weak_ptr<Document> document_;
  QLabel* noDocument_;
  DocumentInfoSection* documentInfo_;
  NodePropertiesSection* nodeProperties_;
  /// Where the layer panel comes.
  QVBoxLayout* layerPanelSlot_;
};

}  // namespace orvanel
