#include "tools/selection/SelectionMove.h"

#include "tools/selection/ShapeCost.h"

namespace orvanel {

void SelectionMove::moveTo(int dx, int dy) {
  const Surface* const mask = edit_.originalMask();
  if (mask == nullptr) return;
  edit_.show(shapeCost::ofMove(*mask, dx, dy), [dx, dy](const Document& document, Selection& selection) {
    const Surface original = *selection.maskTexture->texture;
    document.context().translateMask(original, selection.pixels(), dx, dy);
    selection.refreshFlags(document.context());
    return true;
  });
}

}  // namespace orvanel
