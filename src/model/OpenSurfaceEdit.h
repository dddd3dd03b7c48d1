// An open edit of one layer's pixels or mask: shown any number of times, each time from the original pixels,
// then kept under one record or taken back. What is shown is a value, evaluated where somebody looks; the
// surface is written when the edit is kept, or when somebody is about to read it (`Document::settle`).
// Ownership as for `OpenEdit`; main thread only.
#pragma once

#include <QString>
#include <QUuid>
#include <memory>
#include <optional>
#include <vector>

#include "model/OpenEdit.h"
#include "raster/SurfaceChange.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {

class DocumentEdit;

class OpenSurfaceEdit final : public OpenEdit {
 public:
  /// Selects the record that keeps the result. A transform of a layer's pixels carries its mask along if the
  /// mask is linked; a mask that is the same everywhere stays, because it has nothing to carry.
  enum class Purpose { transform, levels };

  /// Begins on an existing surface of the layer. If there isn't the memory for moving it by whole pixels, or
  /// for levels, reports a refusal and returns null. If the surface can't be captured, the edit leaves no
  /// record.
  [[nodiscard]] static std::unique_ptr<OpenSurfaceEdit> begin(const DocumentPtr& document,
                                                              const std::shared_ptr<Layer>& layer,
                                                              SurfaceKind kind, Purpose purpose,
                                                              const QString& actionName);
  ~OpenSurfaceEdit() override;

  [[nodiscard]] const QUuid& layerID() const { return layer_->id; }
  /// The original pixels.
  [[nodiscard]] const Surface& original() const { return parts_.front().original; }
  /// The original pixels as the record holds them; null if they couldn't be captured.
  [[nodiscard]] const std::shared_ptr<TextureSnapshot>& snapshotBefore() const {
    return parts_.front().snapshotBefore;
  }

  /// Shows the original pixels with this change, and a mask that is carried along with the other one. False
  /// if the edit is closed, or if there isn't the memory for what the change makes: what was shown before
  /// then stays, and the first refusal is reported.
  bool show(const SurfaceChange& change, const SurfaceChange& changeOfMask);
  bool show(const SurfaceChange& change) { return show(change, change); }
  /// Keeps what is shown, under one record; leaves none if all that was to be shown was refused.
  void keep();
  /// Restores the original pixels; leaves no record.
  void takeBack();
  void end() override;
  void settle() override;
  [[nodiscard]] bool isSettled() const override;
  [[nodiscard]] std::optional<ShownSurface> shown(const Layer& layer, SurfaceKind kind) const override;

 private:
  /// One of the surfaces that the edit changes.
  struct Part {
    SurfaceKind kind;
    Surface original;
    std::shared_ptr<TextureSnapshot> snapshotBefore;
    /// What is shown and not written yet.
    std::optional<SurfaceChange> change;
  };

  OpenSurfaceEdit(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                  const std::vector<SurfaceKind>& kinds, Purpose purpose, QString actionName);
  [[nodiscard]] const SurfaceChange& changeOf(const Part& part, const SurfaceChange& change,
                                              const SurfaceChange& changeOfMask) const {
    return &part == &parts_.front() ? change : changeOfMask;
  }
  [[nodiscard]] bool admits(DocumentEdit& edit, const Document& document, const SurfaceChange& change,
                            const SurfaceChange& changeOfMask);
  /// Writes to the surfaces what is shown.
  void write(DocumentEdit& edit);
  void record(const DocumentPtr& document, DocumentEdit& edit);

  std::shared_ptr<Layer> layer_;
  Purpose purpose_;
  std::vector<Part> parts_;  ///< the edited surface, then the mask that is carried along
  /// Whether there is the memory for whatever may be shown.
  bool isAdmittedAnywhere_ = true;
  bool isRefused_ = false;
};

}  // namespace orvanel
