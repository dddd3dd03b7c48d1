// The record of a changed selection: mask and flags before and after. A step rewrites the document's current
// selection, which a change of the canvas may have replaced. Owned by the history; main thread only.
#pragma once

#include <memory>
#include <optional>

#include "model/records/DocumentOperation.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {

class SelectionChangeOperation final : public DocumentOperation {
 public:
  /// Captures the state before; null if the document has no selection or it can't be captured.
  [[nodiscard]] static std::shared_ptr<SelectionChangeOperation> create(QString actionName,
                                                                        const DocumentPtr& document);
  /// Captures the state after, replacing an earlier one. Does nothing without a selection.
  void captureAfter();

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override;
  [[nodiscard]] StepCost costToStep() const override;
  void setReady(bool isReady) override;

 private:
  struct State {
    std::shared_ptr<TextureSnapshot> snapshot;
    Selection::Flags flags;
  };
  SelectionChangeOperation(QString actionName, const DocumentPtr& document, State before);
  [[nodiscard]] static std::optional<State> currentState(const Document& document);
  void apply(const State& state) const;

  State before_;
  std::optional<State> after_;
};

}  // namespace orvanel
