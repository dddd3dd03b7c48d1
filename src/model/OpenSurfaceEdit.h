// An open edit of one layer's pixels, or of its mask: shown as often as wanted, each time from the pixels of
// the beginning, then kept under one record or taken back. Owned as `OpenEdit` says; main thread only.
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
  /// Which record keeps the result.
  enum class Purpose { transform, levels };

  /// Begins on a surface that the layer has; null, and told of, when the memory that it may need isn't there.
  /// Without memory to capture the surface the edit leaves no record.
  [[nodiscard]] static std::unique_ptr<OpenSurfaceEdit> begin(const DocumentPtr& document,
                                                              const std::shared_ptr<Layer>& layer,
                                                              SurfaceKind kind, Purpose purpose,
                                                              const QString& actionName);
  ~OpenSurfaceEdit() override;

  [[nodiscard]] const QUuid& layerID() const { return layer_->id; }
  /// The pixels of the beginning.
  [[nodiscard]] const Surface& original() const { return original_; }
  /// The same as the record has them; null when they couldn't be captured.
  [[nodiscard]] const std::shared_ptr<TextureSnapshot>& snapshotBefore() const { return snapshotBefore_; }

  /// Has `draw` write the surface, which stands as it was last shown.
  void show(const std::function<void(const Document& document, Surface& live)>& draw);
  /// Keeps what is shown, under one record.
  void keep();
  /// Puts back the pixels of the beginning; no record.
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
