#include "app/AppState.h"

namespace orvanel {

AppState& AppState::shared() {
  static auto* const state = new AppState(MetalContext::shared());
  return *state;
}

AppState::AppState(MetalContext& context)
    : windowState(toolState, context), metalContext(context), recentDocuments(userDefaults) {}

}  // namespace orvanel
