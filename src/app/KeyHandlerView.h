// An invisible view that makes single keys work wherever the keyboard focus is in its window. All of them
// share one filter of the application's key events. Owned by the root view; main thread only.
#pragma once

#include <QWidget>
#include <functional>

#include "app/AppState.h"
#include "app/GlobalKeyHandler.h"

namespace orvanel {

class KeyHandlerView : public QWidget {
  Q_OBJECT

 public:
  /// `appState` must outlive the view. The filter is installed with the first view.
  KeyHandlerView(AppState& appState, QWidget* parent);
  /// The filter is removed with the last view.
  ~KeyHandlerView() override;

  /// Offers a key to the gesture that is open, if any; true if it took the key.
  std::function<bool(const EventRecord&)> offerToGesture;
  /// Whether one is open, so that its keys are no shortcuts of the menus meanwhile.
  std::function<bool()> isGestureOpen;

  [[nodiscard]] static int viewsInWindows();
  [[nodiscard]] static bool isFilterInstalled();

  /// Carries out the key's command; false for a key that passes on.
  bool handleGlobalKey(const EventRecord& event);
  [[nodiscard]] KeySituation situation() const;

 private:
  class Filter;

  void carryOut(const KeyCommand& command);

  AppState& appState_;
};

}  // namespace orvanel
