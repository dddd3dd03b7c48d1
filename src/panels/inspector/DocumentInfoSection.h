// What the inspector tells about the whole document: size, colour mode, file, layers and zoom. It follows the
// document's changes, and only the values that changed are drawn again. Main thread only.
#pragma once

#include "model/Document.h"
#include "panels/inspector/InspectorSection.h"

namespace orvanel {

class ElidedLabel;

class DocumentInfoSection : public InspectorSection {
  Q_OBJECT

 public:
  explicit DocumentInfoSection(QWidget* parent = nullptr);

  void setDocument(const DocumentPtr& document);

  [[nodiscard]] QString sizeText() const;
  [[nodiscard]] QString colorModeText() const;
  /// The file's name; empty without a file, when the row isn't shown.
  [[nodiscard]] QString sourceText() const;
  [[nodiscard]] QString layersText() const;
  [[nodiscard]] QString zoomText() const;

 private:
  void follow(const DocumentChanges& changes);
  void showCanvas();
  void showSource();
  void showLayers();
  void showZoom();

  std::weak_ptr<Document> document_;
  ChangeStream::Subscription changes_;
  ElidedLabel* size_;
  ElidedLabel* colorMode_;
  ElidedLabel* source_;
  QLabel* sourceLabel_;
  ElidedLabel* layers_;
  ElidedLabel* zoom_;
};

}  // namespace orvanel
