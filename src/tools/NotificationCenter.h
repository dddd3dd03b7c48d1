// The command vocabulary: named notifications between the model, the tools and the views. One centre per
// process; main thread only. Observers are called in order of subscription.
#pragma once

#include <any>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "model/Signal.h"

namespace orvanel {

namespace notification {
inline constexpr std::string_view zoomIn = "zoomIn";
inline constexpr std::string_view zoomOut = "zoomOut";
inline constexpr std::string_view zoomActualSize = "zoomActualSize";
inline constexpr std::string_view zoomFitOnScreen = "zoomFitOnScreen";
inline constexpr std::string_view cycleNextTab = "cycleNextTab";
inline constexpr std::string_view cyclePreviousTab = "cyclePreviousTab";
inline constexpr std::string_view cycleNextDocument = "cycleNextDocument";
inline constexpr std::string_view cyclePreviousDocument = "cyclePreviousDocument";
inline constexpr std::string_view commitMRUCycle = "commitMRUCycle";
inline constexpr std::string_view toolChanged = "toolChanged";
inline constexpr std::string_view focusCanvas = "focusCanvas";
inline constexpr std::string_view fillWithForegroundColor = "fillWithForegroundColor";
inline constexpr std::string_view fillWithBackgroundColor = "fillWithBackgroundColor";
inline constexpr std::string_view clearSelection = "clearSelection";
inline constexpr std::string_view deselect = "deselect";
inline constexpr std::string_view undoRedoPerformed = "undoRedoPerformed";
inline constexpr std::string_view activeLayerChanged = "activeLayerChanged";
inline constexpr std::string_view freeTransform = "freeTransform";
inline constexpr std::string_view freeTransformApply = "freeTransformApply";
inline constexpr std::string_view freeTransformCancel = "freeTransformCancel";
inline constexpr std::string_view openedImageDocument = "openedImageDocument";
inline constexpr std::string_view createdNewDocument = "createdNewDocument";
inline constexpr std::string_view saveAsDocument = "saveAsDocument";
inline constexpr std::string_view recentDocumentsChanged = "recentDocumentsChanged";
inline constexpr std::string_view thumbnailsDidUpdate = "thumbnailsDidUpdate";
}  // namespace notification

class NotificationCenter {
 public:
  /// `object` is the poster's argument: a `std::shared_ptr<Document>`, or nothing.
  using Handler = Signal<const std::any&>::Handler;
  using Subscription = orvanel::Subscription;

  static NotificationCenter& standard();

  [[nodiscard]] Subscription observe(std::string_view name, Handler handler);
  void post(std::string_view name, const std::any& object = {}) const;

 private:
  std::map<std::string, Signal<const std::any&>, std::less<>> signals_;
};

}  // namespace orvanel
