// The saves that the user asked for, written one after the other in the order of the requests. Each takes
// the document as it is when its turn comes. Owned by the file commands; main thread only.
#pragma once

#include <QString>
#include <QUuid>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

#include "io/files/FileError.h"
#include "model/Document.h"

namespace orvanel {

/// One document to be written to one file.
struct SaveRequest {
  DocumentPtr document;
  QString path;
  /// The flat format to write; nothing for the document's own format.
  std::optional<Document::ImageFileFormat> flatFormat;

  friend bool operator==(const SaveRequest&, const SaveRequest&) = default;
};

/// Does what the queue decides.
class SaveQueueClient {
 public:
  using Done = std::function<void(const FileResult<void>&)>;

  SaveQueueClient() = default;
  SaveQueueClient(const SaveQueueClient&) = delete;
  SaveQueueClient& operator=(const SaveQueueClient&) = delete;
  virtual ~SaveQueueClient() = default;

  /// Writes the document as it is now. `done` is called once, on the main thread, after this has returned.
  virtual void beginSave(const SaveRequest& request, Done done) = 0;
  /// Called before the next save begins, which may be one of the same document.
  virtual void saveEnded(const SaveRequest& request, const FileResult<void>& result) = 0;
  /// Called after the next save has begun, because an alert keeps the caller waiting. One at a time. Not
  /// called for a save that the user has cancelled.
  virtual void reportFailedSave(const SaveRequest& request, const FileError& error) = 0;
};

class SaveQueue {
 public:
  /// `client` must outlive the queue.
  explicit SaveQueue(SaveQueueClient& client) : client_(client) {}

  /// Begins the save, or lets it wait for those asked for before. A request equal to one that still waits
  /// adds nothing; one equal to the running save waits, because the document may have changed since.
  void add(SaveRequest request);

  /// Ends the saves that have not begun as cancelled ones.
  void cancelWaiting();

  [[nodiscard]] bool isEmpty() const { return !running_ && waiting_.empty(); }
  /// Whether a save of this document runs or waits.
  [[nodiscard]] bool contains(const QUuid& documentID) const;

  // These process events until the saves have ended, except for the user's input.
  void settle(const QUuid& documentID) const;
  void settleAll() const;

 private:
  void beginNext();
  void end(const FileResult<void>& result);
  void reportFailures();

  SaveQueueClient& client_;
  std::optional<SaveRequest> running_;
  std::deque<SaveRequest> waiting_;
  /// Failures that the user has not been told of yet.
  std::deque<std::pair<SaveRequest, FileError>> failures_;
  bool isReporting_ = false;
};

/// Processes events, except for the user's input, as long as the condition holds.
void processEventsWhile(const std::function<bool()>& condition);

}  // namespace orvanel
