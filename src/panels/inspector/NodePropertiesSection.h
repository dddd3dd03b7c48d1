// The active node's opacity and blend mode; layers and folders have both alike. It edits through the
// document's commands and follows its changes. Main thread only.
#pragma once

#include <QUuid>
#include <memory>

#include "model/Document.h"
#include "panels/inspector/InspectorSection.h"

class QComboBox;

namespace orvanel {

class OpenOpacityEdit;
class SliderDropdown;

class NodePropertiesSection : public InspectorSection {
  Q_OBJECT

 public:
  explicit NodePropertiesSection(QWidget* parent = nullptr);
  ~NodePropertiesSection() override;

  /// Shows the document's active node; the section is hidden without one.
  void setDocument(const DocumentPtr& document);

  [[nodiscard]] std::optional<LayerNode> node() const;
  [[nodiscard]] SliderDropdown& opacity() { return *opacity_; }
  [[nodiscard]] QComboBox& blendMode() { return *blendMode_; }

  [[nodiscard]] int labelWidth() const override;
  void setLabelWidth(int width) override;

 private:
  void follow(const DocumentChanges& changes);
  void showActiveNode();
  void showOpacity();
  void showBlendMode();
  void opacityEditing(bool isEditing);
  void opacityChanged(float opacity);
  void blendModeChosen(int index);

  std::weak_ptr<Document> document_;
  ChangeStream::Subscription changes_;
  QUuid nodeID_;
  SliderDropdown* opacity_;
  QComboBox* blendMode_;
  /// While the user edits the opacity.
  std::unique_ptr<OpenOpacityEdit> edit_;
};

}  // namespace orvanel
