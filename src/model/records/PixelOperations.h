// Records of changes to the pixels of one layer or of its mask. If a few numbers describe the whole edit,
// redo runs its kernel again; otherwise the record keeps the result as a second snapshot. They name the layer
// by id, so a step does nothing while the layer, or the mask it worked on, is absent. Owned by the history;
// main thread only.
#pragma once

#include <QUuid>
#include <memory>
#include <optional>

#include "model/records/DocumentOperation.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {

/// The arguments common to all pixel records. `snapshotBefore` holds the whole surface before the change.
struct PixelEdit {
  QString actionName;
  DocumentPtr document;
  QUuid layerID;
  std::shared_ptr<TextureSnapshot> snapshotBefore;
};

class PixelOperation : public DocumentOperation {
 public:
  void redo() final;
  void undo() final;
  [[nodiscard]] std::int64_t memoryCost() const override { return snapshotBefore_->compressedSize(); }
  [[nodiscard]] StepCost costToStep() const final;
  void setReady(bool isReady) override { snapshotBefore_->setReady(isReady); }

 protected:
  /// `kind` selects the layer's surface that is the target.
  PixelOperation(PixelEdit edit, SurfaceKind kind);

  struct Target {
    Document& document;
    Surface& surface;
  };
  virtual void redoOn(Target target) = 0;
  virtual void undoOn(Target target);
  void restoreBefore(Target target) const;
  /// What a redo can take while the surface holds what it holds now.
  [[nodiscard]] virtual StepCost costToRedo(const Surface& standing) const = 0;
  [[nodiscard]] static StepCost costToRestore(const TextureSnapshot& snapshot, const Surface& standing);

  [[nodiscard]] bool useMask() const { return kind_ == SurfaceKind::mask; }

 private:
  /// The layer, if it and the surface are in the document.
  [[nodiscard]] std::shared_ptr<Layer> layerIn(const Document& document) const;
  void perform(void (PixelOperation::*step)(Target));

  QUuid layerID_;
  std::shared_ptr<TextureSnapshot> snapshotBefore_;
  SurfaceKind kind_;
};

// Replayed edits.

/// Fills the whole surface with one colour, or the whole mask with one value. Pushed before the change, which
/// its first redo makes.
class FillLayerOperation final : public PixelOperation {
 public:
  FillLayerOperation(PixelEdit edit, const Color4& fillColor, ColorMode colorMode);
  FillLayerOperation(PixelEdit edit, float maskFillValue);

 private:
  void redoOn(Target target) override;
  /// A uniform surface takes no memory.
  [[nodiscard]] StepCost costToRedo(const Surface& standing) const override;

  Color4 fillColor_{};
  ColorMode colorMode_ = ColorMode::rgb8;
  float maskFillValue_ = 0.0F;
};

/// Makes the whole layer transparent. Pushed after the change.
class ClearLayerOperation final : public PixelOperation {
 public:
  ClearLayerOperation(PixelEdit edit, ColorMode colorMode);

 private:
  void redoOn(Target target) override;
  /// A uniform surface takes no memory.
  [[nodiscard]] StepCost costToRedo(const Surface& standing) const override;

  ColorMode colorMode_;
};

/// Inverts colours, or a whole mask. Keeps the selection that applied, whatever happens to the document's.
/// Pushed after the change.
class InvertLayerOperation final : public PixelOperation {
 public:
  /// `selectionTexture` may be null.
  InvertLayerOperation(PixelEdit edit, ColorMode colorMode, Texture selectionTexture, SurfaceKind kind);
  [[nodiscard]] std::int64_t memoryCost() const override;

 private:
  void redoOn(Target target) override;
  [[nodiscard]] StepCost costToRedo(const Surface& standing) const override;

  ColorMode colorMode_;
  Texture selectionTexture_;
};

// Edits with a stored result. Pushed after the change.

class StoredResultOperation : public PixelOperation {
 public:
  [[nodiscard]] const std::shared_ptr<TextureSnapshot>& snapshotAfter() const { return snapshotAfter_; }
  /// Set once, when the edit is finished.
  void setSnapshotAfter(std::shared_ptr<TextureSnapshot> snapshot) { snapshotAfter_ = std::move(snapshot); }
  [[nodiscard]] std::int64_t memoryCost() const override;
  void setReady(bool isReady) override;

 protected:
  using PixelOperation::PixelOperation;
  void redoOn(Target target) override;
  [[nodiscard]] StepCost costToRedo(const Surface& standing) const override;

 private:
  std::shared_ptr<TextureSnapshot> snapshotAfter_;
};

class BrushStrokeOperation final : public StoredResultOperation {
 public:
  explicit BrushStrokeOperation(PixelEdit edit)
      : StoredResultOperation(std::move(edit), SurfaceKind::pixels) {}
};

class EraserStrokeOperation final : public StoredResultOperation {
 public:
  explicit EraserStrokeOperation(PixelEdit edit)
      : StoredResultOperation(std::move(edit), SurfaceKind::pixels) {}
};

/// Captures its result from the surface at the first undo: edits that are never undone don't pay for it.
class LazyResultOperation : public StoredResultOperation {
 protected:
  using StoredResultOperation::StoredResultOperation;

 private:
  void undoOn(Target target) override;
};

class FillSelectionOperation final : public LazyResultOperation {
 public:
  FillSelectionOperation(PixelEdit edit, SurfaceKind kind) : LazyResultOperation(std::move(edit), kind) {}
};

class LevelsOperation final : public LazyResultOperation {
 public:
  explicit LevelsOperation(PixelEdit edit) : LazyResultOperation(std::move(edit), SurfaceKind::pixels) {}
};

/// A move, scale, rotation or free transform of a layer's or mask's content.
class MoveLayerOperation final : public StoredResultOperation {
 public:
  MoveLayerOperation(PixelEdit edit, SurfaceKind kind) : StoredResultOperation(std::move(edit), kind) {}
  /// Named "Move". Captures the current surface; null without a surface or a snapshot of it.
  [[nodiscard]] static std::shared_ptr<MoveLayerOperation> create(const DocumentPtr& document,
                                                                  const Layer& layer, SurfaceKind kind);
};

}  // namespace orvanel
