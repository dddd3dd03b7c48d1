// An open edit of the selection: changed any number of times, each time from the original selection, then
// kept under one record. Ownership as for `OpenEdit`; main thread only.
#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "model/OpenEdit.h"

namespace orvanel {

class SelectionChangeOperation;

class OpenSelectionEdit final : public OpenEdit {
 public:
  /// Makes a selection if there is none. Without memory for it or for the record, the edit has no effect.
  OpenSelectionEdit(const DocumentPtr& document, const QString& actionName);
  ~OpenSelectionEdit() override;

  /// Restores the original selection, then calls `write` to change its mask and flags. If it returns false
  /// the original selection stays, as if nothing had ever been shown. `bytes` is the most memory that it
  /// takes; if that isn't there, the refusal is reported and the edit has no effect from then on.
  void show(std::uint64_t bytes,
            const std::function<bool(const Document& document, Selection& selection)>& write);
  /// The mask of the original selection; null without memory for the edit.
  [[nodiscard]] const Surface* originalMask() const { return originalMask_ ? &*originalMask_ : nullptr; }
  /// Restores the original selection; leaves no record.
  void takeBack();
  /// Keeps what is shown. Leaves no record if nothing was selected before and nothing is now.
  void keep();
  /// Leaves no record if the edit never showed anything.
  void end() override;

 private:
  void restoreOriginal(Selection& selection) const;

  bool hadSelection_;
  std::optional<Surface> originalMask_;
  Selection::Flags originalFlags_;
  std::shared_ptr<SelectionChangeOperation> record_;
};

}  // namespace orvanel
