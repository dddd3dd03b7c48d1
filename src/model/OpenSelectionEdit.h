// An open edit of the selection: changed as often as wanted, each time from the selection of the beginning,
// then kept under one record. Owned as `OpenEdit` says; main thread only.
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "model/OpenEdit.h"

namespace orvanel {

class SelectionChangeOperation;

class OpenSelectionEdit final : public OpenEdit {
 public:
  /// Makes the selection if there is none. Without memory for it the edit can change nothing.
  OpenSelectionEdit(const DocumentPtr& document, const QString& actionName);
  ~OpenSelectionEdit() override;

  /// Puts back the selection of the beginning, then has `write` change it, mask and flags.
  void show(const std::function<void(const Document& document, Selection& selection)>& write);
  /// Keeps what is shown. It leaves a record unless nothing was selected before and nothing is now.
  void keep();
  /// An edit that never showed anything leaves no record.
  void end() override;

 private:
  bool hadSelection_;
  bool hasShown_ = false;
  std::optional<Surface> originalMask_;
  Selection::Flags originalFlags_;
  std::shared_ptr<SelectionChangeOperation> record_;
};

}  // namespace orvanel
