// A gesture that shows or hides one node after the other, seen at once, and kept under a single record. Owned
// by the view in which the pointer sweeps; main thread only.
#pragma once

#include <QUuid>
#include <vector>

#include "model/OpenEdit.h"

namespace orvanel {

class VisibilitySweep final : public OpenEdit {
 public:
  /// Every node that is swept over becomes visible, or hidden.
  VisibilitySweep(const DocumentPtr& document, bool isVisible);
  ~VisibilitySweep() override;

  /// Gives the node the sweep's value at once. Each node counts once; one that has the value already stays as
  /// it is. The first node that there is no memory to show ends the sweep.
  void add(const QUuid& nodeID);
  void end() override;

 private:
  struct SweptNode {
    QUuid nodeID;
    bool oldValue = true;
  };

  bool isVisible_;
  std::vector<SweptNode> swept_;
};

}  // namespace orvanel
