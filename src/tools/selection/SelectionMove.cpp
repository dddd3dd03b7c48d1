#include "tools/selection/SelectionMove.h"

namespace orvanel {

void SelectionMove::moveTo(int dx, int dy) {
  edit_.show([dx, dy](const Document& document, Selection& selection) {
    const Surface original = *selection.maskTexture->texture;
    document.context().translateMask(original, selection.pixels(), dx, dy);
    selection.refreshFlags(document.context());
    return true;
  });
}

}  // namespace orvanel
