#include "app/WindowAccessor.h"

namespace orvanel {

namespace {

std::optional<QSize>& remembered() {
  static std::optional<QSize> size;
  return size;
}

}  // namespace

bool WindowCloseDelegate::windowShouldClose() {
  const DocumentPtr active = windowState_.activeDocument();
  if (!active) return true;
  windowState_.closeDocument(active->id);
  return false;
}

std::optional<QSize> WindowAccessor::rememberedContentSize() {
  return remembered();
}

void WindowAccessor::rememberContentSize(const QSize& size) {
  remembered() = size;
}

}  // namespace orvanel
