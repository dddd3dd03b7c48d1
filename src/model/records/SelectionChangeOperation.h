// The record of a changed selection: mask and flags before and after. It rewrites the document's selection
// of the moment, which a change of the canvas may have replaced. Owned by the history; main thread only.
#pragma once

#include <memory>
#include <optional>

#include "undo/TextureSnapshot.h"
#include "model/records/DocumentOperation.h"

namespace orvanel {

class SelectionChangeOperation final : public DocumentOperation {
 public:
  /// Takes the state before; null when the document has no selection or it can't be captured.
  [[nodiscard]] static std::shared_ptr<SelectionChangeOperation> create(QString actionName,
                                                                        const DocumentPtr& document);
  /// Takes the state after, in the place of an earlier one. Without a selection nothing.
  void captureAfter();

  void redo() override;
  void undo() override;
  [[nodiscard]] std::int64_t memoryCost() const override;
  [[nodiscard]] std::uint64_t bytesToStep() const override;
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
