// An open edit of one node's opacity, as a slider makes it: written at each step, then kept under one record
// or taken back. Ownership as for `OpenEdit`; main thread only.
#pragma once

#include <QUuid>
#include <memory>

#include "model/OpenEdit.h"

namespace orvanel {

class OpenOpacityEdit final : public OpenEdit {
 public:
  /// Begins on a layer or a folder; null if there is no such node. If compositing it with another opacity may
  /// need more memory than there is, reports a refusal and returns null.
  [[nodiscard]] static std::unique_ptr<OpenOpacityEdit> begin(const DocumentPtr& document,
                                                              const QUuid& nodeID);
  ~OpenOpacityEdit() override;

  [[nodiscard]] const QUuid& nodeID() const { return nodeID_; }

  void show(float opacity);
  /// Keeps what is shown. Leaves no record if that is the opacity it began with.
  void keep();
  /// Restores the opacity it began with; leaves no record.
  void takeBack();
  void end() override { keep(); }

 private:
  OpenOpacityEdit(const DocumentPtr& document, const QUuid& nodeID, float opacity);

  QUuid nodeID_;
  float startValue_;
};

}  // namespace orvanel
