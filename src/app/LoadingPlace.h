// Gives the file that is being opened a place in the window while it is read: no document is active while it
// stands in front, so that nothing acts on one that isn't seen. It is no document yet, and appears in no list
// of them. Owned by the content view; main thread only.
#pragma once

#include <QObject>
#include <QTimer>
#include <functional>
#include <set>
#include <utility>

#include "app/DocumentFiles.h"
#include "app/WindowState.h"

namespace orvanel {

class LoadingPlace : public QObject {
  Q_OBJECT

 public:
  /// Both must outlive this object.
  LoadingPlace(WindowState& windowState, DocumentFiles& files, QObject* parent = nullptr);
  ~LoadingPlace() override;

  /// Called when something else is to be shown.
  std::function<void()> onChanged;

  /// Null while nothing is being read, and at first, so that quick files don't flicker.
  [[nodiscard]] LoadingFilePtr file() const;
  /// Whether the file's place is shown rather than a document or nothing.
  [[nodiscard]] bool isInFront() const;
  /// Shows the file's place; the active document keeps its tab.
  void bringForward();
  /// Shows the last active document instead; false if the file's place isn't shown, or there is no document.
  bool leave();
  /// Cancels the request that the file belongs to.
  void cancel();
  /// Adds a document that has been read. One that isn't the awaited file leaves that in front.
  void add(const DocumentPtr& document);

 private:
  void loadingChanged();
  bool showLastDocument();

  WindowState& windowState_;
  DocumentFiles& files_;
  /// The files that have come to the front. One that is still being read when another has opened doesn't push
  /// that aside.
  std::set<std::pair<FileActivity::Work, QString>> seen_;
  QTimer appearance_;
  bool isShown_ = false;
};

}  // namespace orvanel
