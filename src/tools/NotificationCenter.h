// The command vocabulary: named notifications between the model, the tools and the views. One centre per
// process; main thread only. Observers are called in order of subscription.
#pragma once

#include <any>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

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
  using Handler = std::function<void(const std::any& object)>;

  /// Ends when destroyed; an ended subscription is never called again, even during a post.
  class Subscription {
   public:
    Subscription() = default;
    Subscription(Subscription&& other) noexcept;
    Subscription& operator=(Subscription&& other) noexcept;
    ~Subscription();

   private:
    friend class NotificationCenter;
    Subscription(NotificationCenter* center, std::uint64_t id) : center_(center), id_(id) {}
    NotificationCenter* center_ = nullptr;
    std::uint64_t id_ = 0;
  };

  static NotificationCenter& standard();

  [[nodiscard]] Subscription observe(std::string_view name, Handler handler);
  void post(std::string_view name, const std::any& object = {});

 private:
  struct Observer {
    std::string name;
    Handler handler;
  };
  void end(std::uint64_t id) { observers_.erase(id); }

  std::map<std::uint64_t, Observer> observers_;
  std::uint64_t nextID_ = 1;
};

}  // namespace orvanel
