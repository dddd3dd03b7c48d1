// The root of the object graph: the open documents, the tools, the preferences and what outlives a run.
// One shared instance, made on first use and never destroyed; main thread only.
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
  /// A state of its own, as tests make it.
  explicit AppState(MetalContext& context);
  AppState(const AppState&) = delete;
  AppState& operator=(const AppState&) = delete;

  WindowState windowState;
  ToolState toolState;
  QProperty<AppPreferences> preferences;
  /// Shared by all documents: what is copied in one tab can be pasted in another.
  QProperty<std::optional<PixelClipboard>> pixelClipboard;
  MetalContext& metalContext;

  UserDefaults userDefaults;
  RecentDocuments recentDocuments;
};

}  // namespace orvanel
