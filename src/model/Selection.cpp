#include "model/Selection.h"

namespace orvanel {

std::shared_ptr<Selection> Selection::create(int width, int height, const MetalContext& context) {
  std::shared_ptr<MaskTexture> mask = MaskTexture::create(width, height, context);
  if (mask == nullptr) return nullptr;
  return std::make_shared<Selection>(std::move(mask));
}

void Selection::restoreFlags(const Flags& flags) {
  hasSelection = flags.hasSelection;
  isFullSelection = flags.isFullSelection;
}

}  // namespace orvanel
