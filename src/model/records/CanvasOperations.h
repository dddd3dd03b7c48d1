// Records of changes to every surface of a document at once: its size or its colour mode. Both sides are kept
// as snapshots, so that a step is exact and nothing is resampled twice. Each step makes new surfaces and
// skips layers that are no longer in the tree. Pushed after the change. Only small documents are kept ready
// for the next step as a whole. Owned by the history; main thread only.
#pragma once

#include <QUuid>
#include <memory>
#include <vector>

#include "model/records/DocumentOperation.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {

struct LayerSnapshot {
  QUuid layerID;
  std::shared_ptr<TextureSnapshot> snapshot;
};
/// In tree order. Surfaces that can't be captured are omitted.
using SnapshotList = std::vector<LayerSnapshot>;

[[nodiscard]] SnapshotList snapshotsOfLayers(const Document& document);
[[nodiscard]] SnapshotList snapshotsOfMasks(const Document& document);

/// One side of a change of size.
struct CanvasState {
  int width = 0;
  int height = 0;
  SnapshotList layers;
  SnapshotList masks;

  [[nodiscard]] static CanvasState of(const Document& document);
  void setReady(bool isReady) const;
};

/// A step drops the selection, which would no longer fit, and gives every mask a new identity.
class ResizeOperation : public DocumentOperation {
 public:
  void redo() final { apply(after_); }
  void undo() final { apply(before_); }
  [[nodiscard]] std::int64_t memoryCost() const final;
  [[nodiscard]] StepCost costToStep() const final;
  void setReady(bool isReady) final;

 protected:
  ResizeOperation(QString actionName, const DocumentPtr& document, CanvasState before, CanvasState after);

 private:
  void apply(const CanvasState& state) const;

  ColorMode colorMode_;
  CanvasState before_;
  CanvasState after_;
};

class CanvasSizeOperation final : public ResizeOperation {
 public:
  CanvasSizeOperation(QString actionName, const DocumentPtr& document, CanvasState before, CanvasState after)
      : ResizeOperation(std::move(actionName), document, std::move(before), std::move(after)) {}
};

class CropOperation final : public ResizeOperation {
 public:
  CropOperation(QString actionName, const DocumentPtr& document, CanvasState before, CanvasState after)
      : ResizeOperation(std::move(actionName), document, std::move(before), std::move(after)) {}
};

/// Masks and the selection don't depend on the mode and stay as they are.
class ChangeColorModeOperation final : public DocumentOperation {
 public:
  /// One side of the change.
  struct State {
    ColorMode colorMode = ColorMode::rgb8;
    SnapshotList layers;

    [[nodiscard]] static State of(const Document& document);
    void setReady(bool isReady) const;
  };

  ChangeColorModeOperation(const DocumentPtr& document, State before, State after);

  void redo() override { apply(after_); }
  void undo() override { apply(before_); }
  [[nodiscard]] std::int64_t memoryCost() const override;
  [[nodiscard]] StepCost costToStep() const override;
  void setReady(bool isReady) override;

 private:
  void apply(const State& state) const;

  int canvasWidth_;
  int canvasHeight_;
  State before_;
  State after_;
};

}  // namespace orvanel
