// The floating levels panel: previews a levels adjustment of the active layer, and keeps it or takes it back.
// The panel closes with its adjustment, whoever ends that. One for the program, owned by the main window;
// main thread only.
#pragma once

#include <QDialog>
#include <QUuid>
#include <memory>
#include <optional>

#include "model/LevelsAdjustment.h"
#include "model/ThumbnailManager.h"
#include "panels/levels/LevelsContentView.h"
#include "panels/levels/LevelsModel.h"

namespace orvanel {

class LevelsWindow : public QDialog {
  Q_OBJECT

 public:
  /// The panel floats above `parent`.
  explicit LevelsWindow(QWidget* parent);
  ~LevelsWindow() override;

  /// Begins on the document's active layer; does nothing if it isn't a layer with pixels. What an open panel
  /// shows of another layer is kept; on the same layer the panel only comes to the front.
  /// Never takes the keyboard.
  void openFor(const DocumentPtr& document);
  [[nodiscard]] bool isOpen() const { return adjustment_.has_value(); }
  /// The layer being adjusted; null when the panel is closed.
  [[nodiscard]] QUuid layerID() const { return adjustment_ ? adjustment_->layerID() : QUuid(); }

  [[nodiscard]] LevelsModel& model() { return model_; }
  [[nodiscard]] LevelsContentView& content() { return *content_; }

  /// Keeps the adjustment under one record, even if it changes nothing.
  void accept() override;
  /// Restores the layer. Closing the panel by its frame does the same.
  void reject() override;

 private:
  void applyLevels();
  void editingChanged(bool isEditing);
  void countBrightness(const DocumentPtr& document);
  void markThumbnails();
  /// The adjustment has been closed: the panel follows, soon.
  void adjustmentClosed();
  void closePanel();

  LevelsModel model_;
  LevelsContentView* content_;
  std::weak_ptr<Document> document_;
  std::optional<LevelsAdjustment> adjustment_;
  ThumbnailManager::Hold drag_;
  /// Tells apart the openings of the panel, for results that arrive late.
  int opening_ = 0;
};

}  // namespace orvanel
