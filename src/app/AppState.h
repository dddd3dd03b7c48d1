// The root of the object graph: open documents, tools, preferences and persistent settings. One shared
// instance, created on first use and never destroyed; main thread only.
#pragma once

#include <QProperty>
#include <optional>

#include "app/AppPreferences.h"
#include "app/RecentDocuments.h"
#include "app/UserDefaults.h"
#include "app/WindowState.h"
#include "model/PixelClipboard.h"
#include "raster/MetalContext.h"
#include "tools/ToolState.h"

namespace orvanel {

class AppState {
 public:
  static AppState& shared();
  /// An independent state, for tests.
  explicit AppState(MetalContext& context);
  AppState(const AppState&) = delete;
  AppState& operator=(const AppState&) = delete;

  WindowState windowState;
  ToolState toolState;
  QProperty<AppPreferences> preferences;
  /// Shared by all documents, so that pixels can be copied from one tab to another.
  QProperty<std::optional<PixelClipboard>> pixelClipboard;
  MetalContext& metalContext;

  UserDefaults userDefaults;
  RecentDocuments recentDocuments;
};

}  // namespace orvanel
