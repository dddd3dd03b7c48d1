// An open edit of one layer's pixels or mask: shown any number of times, each time from the original pixels,
// then kept under one record or taken back. Ownership as for `OpenEdit`; main thread only.
#pragma once

#include <QString>
#include <QUuid>
#include <functional>
#include <memory>

#include "model/OpenEdit.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {

class StoredResultOperation;

class OpenSurfaceEdit final : public OpenEdit {
 public:
  /// Selects the record that keeps the result.
  enum class Purpose { transform, levels };

  /// Begins on an existing surface of the layer. If the edit may need more memory than there is, reports a
  /// refusal and returns null. If the surface can't be captured, the edit leaves no record.
  [[nodiscard]] static std::unique_ptr<OpenSurfaceEdit> begin(const DocumentPtr& document,
                                                              const std::shared_ptr<Layer>& layer,
                                                              SurfaceKind kind, Purpose purpose,
                                                              const QString& actionName);
  ~OpenSurfaceEdit() override;

  [[nodiscard]] const QUuid& layerID() const { return layer_->id; }
  /// The original pixels.
  [[nodiscard]] const Surface& original() const { return original_; }
  /// The original pixels as the record holds them; null if they couldn't be captured.
  [[nodiscard]] const std::shared_ptr<TextureSnapshot>& snapshotBefore() const { return snapshotBefore_; }

  /// Calls `draw` to write the surface, which still holds what was last shown.
  void show(const std::function<void(const Document& document, Surface& live)>& draw);
  /// Keeps what is shown, under one record.
  void keep();
  /// Restores the original pixels; leaves no record.
  void takeBack();
  void end() override;

 private:
  OpenSurfaceEdit(const DocumentPtr& document, std::shared_ptr<Layer> layer, SurfaceKind kind,
                  Purpose purpose, const QString& actionName);

  std::shared_ptr<Layer> layer_;
  SurfaceKind kind_;
  Surface original_;
  std::shared_ptr<TextureSnapshot> snapshotBefore_;
  std::shared_ptr<StoredResultOperation> record_;
};

}  // namespace orvanel
